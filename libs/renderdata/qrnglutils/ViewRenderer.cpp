#include "qrnglutils/ViewRenderer.h"

#include "qrngl/GL.h"

namespace qrnglutils {

ViewRenderer::ViewRenderer(std::shared_ptr<qrngl::Camera> camera) : m_camera(std::move(camera)) {}

void ViewRenderer::render() const {
    if (!m_camera)
        return;
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixf(m_camera->getProjectionMatrix().data());
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(m_camera->getViewMatrix().data());
}

} // namespace qrnglutils
