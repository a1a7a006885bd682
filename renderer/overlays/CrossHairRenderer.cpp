#include "qrngl/overlays/CrossHairRenderer.h"

#include "qrngl/GL.h"
#include "qrngl/PLMaterialRenderer.h"

namespace qrngl {

CrossHairRenderer::CrossHairRenderer() {
    m_material.color = qrnmath::Vec4(0.0f, 0.0f, 0.0f, 1.0f);
    m_material.width = 1.5f;
    m_material.stippleFactor = 0; // solid: stipple stays off
}

CrossHairRenderer::CrossHairRenderer(const CrossHairRenderer& other) = default;
CrossHairRenderer& CrossHairRenderer::operator=(const CrossHairRenderer& other) = default;
CrossHairRenderer::~CrossHairRenderer() = default;

void CrossHairRenderer::set(std::shared_ptr<IRenderer> figure) {
    m_figure = std::move(figure);
}

void CrossHairRenderer::reset(std::shared_ptr<IRenderer> figure) {
    m_figure = std::move(figure);
}

void CrossHairRenderer::render() const {
    if (!m_figure)
        return;
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);

    // One unit a pixel, origin at the lower-left corner.
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0.0, viewport[2], 0.0, viewport[3]);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();

    // Over the scene whatever its depth.
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    PLMaterialRenderer material(m_material);
    m_figure->render();

    // The frame's own state, whatever it was before.
    glEnable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

short CrossHairRenderer::order() const {
    return ORDER;
}

void CrossHairRenderer::pick(std::shared_ptr<NamesInitializer>,
                             std::shared_ptr<qrnsg::IPairVisitor>) {}

void CrossHairRenderer::choose(const FilterResult&) const {}

} // namespace qrngl
