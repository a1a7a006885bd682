#pragma once

#include "qrngl/IRendererFactory.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// The library's renderer factory: meshes, points and polylines drawn from client memory (no GL
// objects, so they are cheap to make on every mouse motion), texts as FontRenderer lists.
class QRNGL_EXPORT RendererFactory : public IRendererFactory {
public:
    std::shared_ptr<IRenderer> createMeshRenderer(const qrnsg::Mesh& mesh) override;
    std::shared_ptr<IRenderer> createPointRenderer(const qrnsg::PointSet& points) override;
    std::shared_ptr<IRenderer> createTextRenderer(const std::shared_ptr<qrnsg::Text3D>& text,
                                                  float scale) override;
    std::shared_ptr<IRenderer> createPolylineRenderer(const qrnsg::Polyline& polyline) override;
};

// The factory that tools and overlays are given.
QRNGL_EXPORT std::shared_ptr<IRendererFactory> createRendererFactory();

} // namespace qrngl
