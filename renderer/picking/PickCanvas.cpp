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
    if (m_size > 0)
        pass(m_x, m_y, m_size, m_size, true);
}

void PickCanvas::OnDrawPickBox(int x, int y, int width, int height) {
    if (width <= 0 || height <= 0)
        return;
    pass(x + width * 0.5, y + height * 0.5, width, height, false);
}

void PickCanvas::pass(double cx, double cy, double width, double height, bool fromTop) const {
    PickPass pick(m_document);
    if (!pick.ready())
        return;
    if (m_context)
        m_context->activate();
    if (fromTop) {
        GLint viewport[4] = {0, 0, 0, 0};
        glGetIntegerv(GL_VIEWPORT, viewport);
        cy = pick.camera()->viewportHeight() - cy + viewport[1];
    }
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    GLint count = -1;
    // An overflowing buffer returns -1: the pass is drawn again into a larger one.
    while (true) {
        glSelectBuffer(static_cast<GLsizei>(m_buffer.size()), m_buffer.data());
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
        count = glRenderMode(GL_RENDER);
        if (count >= 0 || m_buffer.size() >= static_cast<std::size_t>(MAX_BUFFER_SIZE))
            break;
        m_buffer.assign(m_buffer.size() * 4, 0u);
    }
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    if (m_context)
        m_context->deactivate();
    processHits(count);
}

} // namespace qrngl
