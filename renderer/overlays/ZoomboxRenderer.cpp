#include "qrngl/overlays/ZoomboxRenderer.h"

#include "qrngl/GL.h"
#include "qrngl/MMaterialRenderer.h"
#include "qrngl/PLMaterialRenderer.h"

namespace qrngl {

ZoomboxRenderer::ZoomboxRenderer() {
    // Black at 30 % opacity: the box darkens what lies under it. MMaterialRenderer takes the
    // alpha it issues from the transparency, so that says the same 30 %.
    m_fillMaterial.diffuse = qrnmath::Vec4(0.0f, 0.0f, 0.0f, 0.3f);
    m_fillMaterial.specular = qrnmath::Vec4(0.0f, 0.0f, 0.0f, 0.3f);
    m_fillMaterial.transparency = 0.7f;
    m_outlineMaterial.color = qrnmath::Vec4(0.6f, 0.5f, 0.4f, 1.0f);
    m_outlineMaterial.width = 2.0f;
    m_outlineMaterial.stippleFactor = 1; // solid: stipple stays off
}

ZoomboxRenderer::ZoomboxRenderer(const ZoomboxRenderer& other) = default;
ZoomboxRenderer& ZoomboxRenderer::operator=(const ZoomboxRenderer& other) = default;
ZoomboxRenderer::~ZoomboxRenderer() = default;

void ZoomboxRenderer::set(std::shared_ptr<IRenderer> fill, std::shared_ptr<IRenderer> outline) {
    m_fill = std::move(fill);
    m_outline = std::move(outline);
}

void ZoomboxRenderer::resetBox() {
    m_fill.reset();
    m_outline.reset();
}

void ZoomboxRenderer::render() const {
    if (!m_fill || !m_outline)
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

    // The fill is lit by its material; over the scene whatever its depth.
    glEnable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    MMaterialRenderer fillMaterial(m_fillMaterial);
    m_fill->render();
    PLMaterialRenderer outlineMaterial(m_outlineMaterial);
    m_outline->render();

    // The frame's own state, whatever it was before.
    glEnable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_LIGHTING);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

void ZoomboxRenderer::pick(std::shared_ptr<NamesInitializer>,
                           std::shared_ptr<qrnsg::IPairVisitor>) {}

void ZoomboxRenderer::choose(const FilterResult&) const {}

} // namespace qrngl
