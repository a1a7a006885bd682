#include "qrngl/frame/PrintCanvas.h"

#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"

#include <algorithm>

namespace qrngl {

PrintCanvas::PrintCanvas(std::shared_ptr<IRenderContext> context,
                         std::shared_ptr<qrn::IDocument> document, std::shared_ptr<ICanvas> frame)
    : CanvasBase(std::move(context), std::move(document)), m_frame(std::move(frame)) {}

bool PrintCanvas::OnCreate() {
    return m_frame && m_frame->OnCreate();
}

void PrintCanvas::OnDestroy() {
    if (m_frame)
        m_frame->OnDestroy();
}

void PrintCanvas::OnSize(unsigned int x, unsigned int y, unsigned int width, unsigned int height) {
    if (m_frame)
        m_frame->OnSize(x, y, width, height);
}

void PrintCanvas::Invalidate() {
    if (m_frame)
        m_frame->Invalidate();
}

bool PrintCanvas::drawOn(float background, std::vector<unsigned char>& rgba) const {
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    if (!m_frame || !m_context || !renderer)
        return false;
    const auto own = renderer->background;
    if (background >= 0.0f)
        renderer->background = {{background, background, background}};
    // A canvas clears its flag when it draws a frame: a frame it could not draw (a renderer
    // that is not ready, components missing) is no picture.
    m_frame->setFlag(1);
    m_frame->Invalidate();
    m_frame->OnDraw();
    renderer->background = own;
    if (m_frame->flag() != 0)
        return false;

    // Off-screen contexts keep the frame after deactivate(): read it with the context current.
    m_context->activate();
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    const bool drawn = viewport[2] > 0 && viewport[3] > 0;
    if (drawn) {
        m_width = static_cast<unsigned int>(viewport[2]);
        m_height = static_cast<unsigned int>(viewport[3]);
        const std::size_t row = static_cast<std::size_t>(m_width) * 4;
        rgba.assign(row * m_height, 0);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(viewport[0], viewport[1], viewport[2], viewport[3], GL_RGBA, GL_UNSIGNED_BYTE,
                     rgba.data());
        // OpenGL's rows run bottom-up.
        for (std::size_t y = 0; y < m_height / 2; ++y)
            std::swap_ranges(rgba.begin() + static_cast<std::ptrdiff_t>(y * row),
                             rgba.begin() + static_cast<std::ptrdiff_t>((y + 1) * row),
                             rgba.begin() + static_cast<std::ptrdiff_t>((m_height - 1 - y) * row));
    }
    m_context->deactivate();
    return drawn;
}

void PrintCanvas::OnDraw() const {
    m_pixels.clear();
    if (!m_transparent) {
        std::vector<unsigned char> frame;
        if (drawOn(-1.0f, frame)) {
            for (std::size_t i = 3; i < frame.size(); i += 4)
                frame[i] = 255;
            m_pixels.swap(frame);
        }
        return;
    }
    std::vector<unsigned char> black, white;
    if (!drawOn(0.0f, black) || !drawOn(1.0f, white) || black.size() != white.size())
        return;
    for (std::size_t i = 0; i < black.size(); i += 4) {
        // On black a pixel is alpha x colour; on white alpha x colour + (1 - alpha).
        int shown = 0;
        for (std::size_t c = 0; c < 3; ++c)
            shown += std::max(0, white[i + c] - black[i + c]);
        const int alpha = std::clamp(255 - (shown + 1) / 3, 0, 255);
        for (std::size_t c = 0; c < 3; ++c)
            black[i + c] = static_cast<unsigned char>(
                alpha ? std::min(255, (black[i + c] * 255 + alpha / 2) / alpha) : 0);
        black[i + 3] = static_cast<unsigned char>(alpha);
    }
    m_pixels.swap(black);
}

} // namespace qrngl
