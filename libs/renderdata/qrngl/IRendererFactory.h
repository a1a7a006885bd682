#pragma once

#include "qrngldata/qrngldata_export.h"

#include <memory>

namespace qrnsg {
struct Mesh;
struct PointSet;
struct Polyline;
struct Text3D;
} // namespace qrnsg

namespace qrngl {

class IRenderer;

// Makes the renderers of single pieces of geometry that tools and overlays draw themselves
// (leaders, measurement geometry, clip planes). Each returned renderer draws in the current
// matrices and material; it may keep display lists, so it is made and released with the
// context current.
class QRNGLDATA_EXPORT IRendererFactory {
public:
    virtual ~IRendererFactory();
    virtual std::shared_ptr<IRenderer> createMeshRenderer(const qrnsg::Mesh& mesh) = 0;
    virtual std::shared_ptr<IRenderer> createPointRenderer(const qrnsg::PointSet& points) = 0;
    // A text in glyph outlines, at `scale` world units to the em.
    virtual std::shared_ptr<IRenderer>
    createTextRenderer(const std::shared_ptr<qrnsg::Text3D>& text, float scale) = 0;
    virtual std::shared_ptr<IRenderer> createPolylineRenderer(const qrnsg::Polyline& polyline) = 0;
};

} // namespace qrngl
