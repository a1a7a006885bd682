#pragma once

#include "qrngl/IRenderContext.h"
#include "qrnimage/Image.h"

#include <memory>

namespace qrnviewer {

// Wraps a window's context so that a frame can be read back: when asked, the next frame's
// back buffer is read before it is presented (after the swap its content is undefined).
class ScreenshotContext : public qrngl::IRenderContext {
public:
    explicit ScreenshotContext(std::shared_ptr<qrngl::IRenderContext> context);

    bool create() override { return m_context->create(); }
    void destroy() override { m_context->destroy(); }
    void activate() override { m_context->activate(); }
    void deactivate() override;
    qrngl::HDC currentDC() const override { return m_context->currentDC(); }
    qrngl::HGLRC currentGLRC() const override { return m_context->currentGLRC(); }

    void grabNextFrame() { m_armed = true; }
    // The last frame grabbed; empty before the first.
    const qrnimage::Image& image() const { return m_image; }

private:
    std::shared_ptr<qrngl::IRenderContext> m_context;
    bool m_armed = false;
    qrnimage::Image m_image;
};

} // namespace qrnviewer
