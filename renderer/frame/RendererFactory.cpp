#include "qrngl/frame/RendererFactory.h"

#include "qrngl/overlays/FontRenderer.h"
#include "qrnglutils/MeshRenderer.h"
#include "qrnglutils/PolylineRenderer.h"

namespace qrngl {

std::shared_ptr<IRenderer> RendererFactory::createMeshRenderer(const qrnsg::Mesh& mesh) {
    return std::make_shared<qrnglutils::MeshRenderer>(mesh);
}

std::shared_ptr<IRenderer> RendererFactory::createPointRenderer(const qrnsg::PointSet& points) {
    return std::make_shared<qrnglutils::PolylineRenderer>(points);
}

std::shared_ptr<IRenderer>
RendererFactory::createTextRenderer(const std::shared_ptr<qrnsg::Text3D>& text, float scale) {
    return std::make_shared<FontRenderer>(text, scale);
}

std::shared_ptr<IRenderer>
RendererFactory::createPolylineRenderer(const qrnsg::Polyline& polyline) {
    return std::make_shared<qrnglutils::PolylineRenderer>(polyline);
}

std::shared_ptr<IRendererFactory> createRendererFactory() {
    return std::make_shared<RendererFactory>();
}

} // namespace qrngl
