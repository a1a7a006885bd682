#include "qrngl/picking/PBOPickCanvas.h"

#include "qrngl/Camera.h"
#include "qrngl/GL.h"
#include "qrngl/NamesInitializer.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/picking/PickPass.h"
#include "qrngl/picking/PickingHelper.h"

#include <algorithm>

namespace qrngl {

PBOPickCanvas::PBOPickCanvas(std::shared_ptr<IRenderContext> context,
                             std::shared_ptr<qrn::IDocument> document)
    : UCPickCanvas(std::move(context), std::move(document)) {}

PBOPickCanvas::~PBOPickCanvas() = default;

// The frame and pixel buffers are made on the first pass.
bool PBOPickCanvas::OnCreate() {
    return true;
}

void PBOPickCanvas::OnDestroy() {
    releaseFrameBuffer();
    if (m_pbo && glDeleteBuffers)
        glDeleteBuffers(1, &m_pbo);
    m_pbo = 0;
    m_names.clear();
    m_stale = true;
}

void PBOPickCanvas::OnSize(unsigned int x, unsigned int y, unsigned int width,
                           unsigned int height) {
    UCPickCanvas::OnSize(x, y, width, height);
    m_stale = true;
}

bool PBOPickCanvas::currentView(ViewKey& view) const {
    PickPass pass(m_document);
    if (!pass.ready())
        return false;
    const auto& camera = *pass.camera();
    const qrnmath::Mat4 projection = camera.getProjectionMatrix();
    const qrnmath::Mat4 modelView = camera.getViewMatrix();
    std::copy(projection.data(), projection.data() + 16, view.begin());
    std::copy(modelView.data(), modelView.data() + 16, view.begin() + 16);
    view[32] = static_cast<float>(camera.viewportWidth());
    view[33] = static_cast<float>(camera.viewportHeight());
    // Vertices and tools' drawables are drawn only for a mask that asks for them.
    view[34] = ((m_type & 4) ? 1.0f : 0.0f) + ((m_type & PickingHelper::TOOL_TYPE) ? 2.0f : 0.0f);
    // A plane created, moved, flipped or removed changes what can be hit.
    std::fill(view.begin() + 35, view.end(), 0.0f);
    if (auto clipping =
            std::dynamic_pointer_cast<SCClipping>(m_document->getSchema(qrnsg::SCHEMA_CLIPPING)))
        if (clipping->hasPlane()) {
            std::copy(clipping->planes.front().data(), clipping->planes.front().data() + 4,
                      view.begin() + 35);
            view[39] = (clipping->capped ? 1.0f : 0.0f) + (clipping->showProfile ? 2.0f : 0.0f);
            view[40] = static_cast<float>(clipping->planeClipData.empty()
                                              ? 0
                                              : clipping->planeClipData.front()->nodes.size());
        }
    // Measurement labels come and go.
    if (auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE))
        view[41] = static_cast<float>(measure->revision);
    return true;
}

bool PBOPickCanvas::refresh() const {
    PickPass pass(m_document);
    ViewKey view{};
    if (!currentView(view))
        return false;
    const auto& camera = *pass.camera();
    if (!m_stale && view == m_view && !m_names.empty())
        return true;
    const bool drawn = idPass(nullptr, [&] {
        m_width = static_cast<int>(camera.viewportWidth());
        m_height = static_cast<int>(camera.viewportHeight());
        const auto bytes = static_cast<GLsizeiptr>(m_width) * m_height * 4;
        m_names.assign(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height), 0u);
        if (!glGenBuffers || !glMapBuffer) {
            // Without pixel-pack buffers the pixels come straight to memory.
            readNames(0, 0, m_width, m_height, m_names);
            return;
        }
        if (!m_pbo)
            glGenBuffers(1, &m_pbo);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, m_pbo);
        glBufferData(GL_PIXEL_PACK_BUFFER, bytes, nullptr, GL_STREAM_READ);
        glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glPixelStorei(GL_PACK_ROW_LENGTH, 0);
        glReadPixels(0, 0, m_width, m_height, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glPopClientAttrib();
        if (const auto* pixels = static_cast<const unsigned char*>(
                glMapBuffer(GL_PIXEL_PACK_BUFFER, GL_READ_ONLY))) {
            for (std::size_t i = 0; i < m_names.size(); ++i)
                m_names[i] = NamesInitializer::fromColour(pixels + 4 * i);
            glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
        }
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    });
    if (!drawn) {
        m_names.clear();
        return false;
    }
    m_view = view;
    m_stale = false;
    return true;
}

void PBOPickCanvas::copy(int x, int y, int width, int height,
                         std::vector<std::uint32_t>& out) const {
    out.assign(static_cast<std::size_t>(std::max(width, 0)) *
                   static_cast<std::size_t>(std::max(height, 0)),
               0u);
    for (int row = std::max(y, 0); row < std::min(y + height, m_height); ++row)
        for (int col = std::max(x, 0); col < std::min(x + width, m_width); ++col)
            out[static_cast<std::size_t>(row - y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(col - x)] =
                m_names[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                        static_cast<std::size_t>(col)];
}

void PBOPickCanvas::Invalidate() {
    UCPickCanvas::Invalidate();
    m_squareDrawn = false;
}

void PBOPickCanvas::OnDraw() const {
    ViewKey view{};
    if (m_size <= 0 || !currentView(view))
        return;
    const int a = m_size;
    const bool kept = !m_stale && view == m_view && !m_names.empty();
    if (!kept && !(m_squareDrawn && view == m_squareView)) {
        // The first pick in a view draws only its square, as cheap as a render-buffer pick;
        // a second one there (hovering) has the whole view read and kept.
        m_squareDrawn = true;
        m_squareView = view;
        const int height = static_cast<int>(view[33]);
        const int square[4] = {m_x - a, height - m_y - a, 2 * a, 2 * a};
        idPass(square, [&] { readNames(square[0], square[1], square[2], square[3], m_square); });
        return;
    }
    if (!refresh())
        return;
    copy(m_x - a, m_height - m_y - a, 2 * a, 2 * a, m_square);
}

void PBOPickCanvas::OnDrawPickBox(int x, int y, int width, int height) {
    if (width <= 0 || height <= 0 || !refresh())
        return;
    copy(x, y, width, height, m_boxNames);
}

bool PBOPickCanvas::isAdvancePointFilterSupported() const {
    return true;
}

void PBOPickCanvas::GetPoints(int x, int y, std::vector<PickResult>& hits) const {
    hits.clear();
    if (m_size <= 0 || m_names.empty() || m_stale)
        return;
    std::vector<std::uint32_t> square;
    const int a = m_size;
    copy(x - a, m_height - y - a, 2 * a, 2 * a, square);
    walk(square, a, hits);
}

} // namespace qrngl
