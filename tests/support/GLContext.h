#pragma once

#include "qrngl/IRenderContext.h"

#include <memory>

namespace qrntest {

// The OpenGL tests' context: width x height, drawn without a visible window, whose
// deactivate() presents the frame into a memory image with a Windows DIB's layout (24-bit
// blue, green, red pixels, rows bottom-up, each padded to four bytes) and releases the context.
// On Linux it is the bitmap context (headless EGL). Under Wine a bitmap DC takes no OpenGL
// context, so on Windows it is a helper context on a hidden window, its frame copied from the
// back buffer before the swap.
std::shared_ptr<qrngl::IRenderContext> makeGLContext(unsigned int width, unsigned int height);

// The memory image of a context from makeGLContext; null before create().
const unsigned char* presentedImage(const qrngl::IRenderContext& context);

} // namespace qrntest
