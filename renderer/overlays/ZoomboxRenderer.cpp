#include "qrngl/overlays/ZoomboxRenderer.h"

#include "qrngl/GL.h"
#include "qrngl/MMaterialRenderer.h"
#include "qrngl/PLMaterialRenderer.h"
#include "qrngl/overlays/PixelSpace.h"

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
    // Over the scene whatever its depth, the fill lit by its material; the frame's own state
    // afterwards, lighting off.
    PixelSpace pixels;
    glEnable(GL_LIGHTING);
    {
        MMaterialRenderer fillMaterial(m_fillMaterial);
        m_fill->render();
        PLMaterialRenderer outlineMaterial(m_outlineMaterial);
        m_outline->render();
    }
    glDisable(GL_LIGHTING);
}

void ZoomboxRenderer::pick(std::shared_ptr<NamesInitializer>,
                           std::shared_ptr<qrnsg::IPairVisitor>) {}

void ZoomboxRenderer::choose(const FilterResult&) const {}

} // namespace qrngl
