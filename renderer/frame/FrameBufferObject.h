#pragma once

#include "qrngl/GL.h"

namespace qrngl {

// A frame buffer object with a colour and a depth(-stencil) render buffer: where the Linux
// off-screen contexts draw (the bitmap context's every frame, the pixel buffer's multisampled
// ones), and where a canvas keeps its model's image.
struct FrameBufferObject {
    GLuint framebuffer = 0;
    GLuint color = 0;
    GLuint depthStencil = 0;

    // Made with the context current, with `samples` samples (0: single-sampled), left bound
    // when `bind` says so; false, with nothing left, where the driver cannot make it.
    bool create(unsigned int width, unsigned int height, int samples, bool bind,
                GLenum colourFormat = GL_RGBA8, GLenum depthFormat = GL_DEPTH24_STENCIL8);
    // With its context current.
    void destroy();
};

} // namespace qrngl
