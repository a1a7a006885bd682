#include "qrngl/overlays/CrossHairRenderer.h"

#include "qrngl/PLMaterialRenderer.h"
#include "qrngl/overlays/PixelSpace.h"

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
    // Over the scene whatever its depth; the frame's own state afterwards.
    PixelSpace pixels;
    PLMaterialRenderer material(m_material);
    m_figure->render();
}

short CrossHairRenderer::order() const {
    return ORDER;
}

void CrossHairRenderer::pick(std::shared_ptr<NamesInitializer>,
                             std::shared_ptr<qrnsg::IPairVisitor>) {}

void CrossHairRenderer::choose(const FilterResult&) const {}

} // namespace qrngl
