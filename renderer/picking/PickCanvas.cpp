#include "qrngl/picking/PickCanvas.h"

#include "qrngl/Camera.h"
#include "qrngl/GL.h"
#include "qrngl/picking/PickPass.h"

namespace qrngl {

PickCanvas::PickCanvas(std::shared_ptr<IRenderContext> context,
                       std::shared_ptr<qrn::IDocument> document)
    : OGLPickCanvas(std::move(context), std::move(document)) {}

PickCanvas::~PickCanvas() = default;

void PickCanvas::OnDraw() const {
    PickPass probe(m_document);
    if (!probe.ready() || m_size <= 0)
        return;
    GLint viewport[4] = {0, 0, 0, 0};
    if (m_context)
        m_context->activate();
    glGetIntegerv(GL_VIEWPORT, viewport);
    if (m_context)
        m_context->deactivate();
    const double height = probe.camera()->viewportHeight();
    pass(m_x, height - m_y + viewport[1], m_size, m_size);
}

void PickCanvas::OnDrawPickBox(int x, int y, int width, int height) {
    if (width <= 0 || height <= 0)
        return;
    pass(x + width * 0.5, y + height * 0.5, width, height);
}

void PickCanvas::pass(double cx, double cy, double width, double height) const {
    PickPass pick(m_document);
    if (!pick.ready())
        return;
    if (m_context)
        m_context->activate();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glSelectBuffer(BUFFER_SIZE, m_buffer.data());
    glRenderMode(GL_SELECT);
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glDisable(GL_LIGHTING);
    glDisable(GL_BLEND);
    pick.loadMatrices(cx, cy, width, height);
    pick.draw(NamesInitializer::SELECTION, m_type);
    glPopAttrib();
    const GLint count = glRenderMode(GL_RENDER);
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    if (m_context)
        m_context->deactivate();
    // An overflowing buffer returns -1, which gives no hits.
    processHits(count);
}

} // namespace qrngl
