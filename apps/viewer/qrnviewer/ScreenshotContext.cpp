#include "qrnviewer/ScreenshotContext.h"

#include "qrngl/GL.h"

#include <vector>

namespace qrnviewer {

ScreenshotContext::ScreenshotContext(std::shared_ptr<qrngl::IRenderContext> context)
    : m_context(std::move(context)) {}

void ScreenshotContext::deactivate() {
    if (m_armed) {
        m_armed = false;
        GLint viewport[4] = {0, 0, 0, 0};
        glGetIntegerv(GL_VIEWPORT, viewport);
        const auto width = static_cast<unsigned int>(viewport[2]);
        const auto height = static_cast<unsigned int>(viewport[3]);
        std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height * 4);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadBuffer(GL_BACK);
        glReadPixels(viewport[0], viewport[1], static_cast<GLsizei>(width),
                     static_cast<GLsizei>(height), GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        // What the window shows is opaque, whatever blending left in the alpha channel.
        for (std::size_t i = 3; i < pixels.size(); i += 4)
            pixels[i] = 255;
        m_image = qrnimage::Image::fromBottomUpRGBA(pixels.data(), width, height);
    }
    m_context->deactivate();
}

} // namespace qrnviewer
