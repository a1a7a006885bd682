#pragma once

#include "qrngl/IRenderer.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/PointSet.h"
#include "qrnsg/Polyline.h"

#include <vector>

namespace qrnglutils {

// Draws the line strips of a polyline from client memory in the current matrices, without
// lighting: the lines take the current colour, as the strip entries' lines do. Like
// MeshRenderer it owns no GL objects, for overlays rebuilt on every mouse motion.
class QRNGLUTILS_EXPORT PolylineRenderer : public qrngl::IRenderer {
public:
    explicit PolylineRenderer(const qrnsg::Polyline& polyline);
    // The points of a point set, at its size.
    explicit PolylineRenderer(const qrnsg::PointSet& points);
    void render() const override;

private:
    float m_pointSize = 0.0f; // points when above 0
    std::vector<float> m_points;
    std::vector<int> m_firsts;
    std::vector<int> m_counts;
};

} // namespace qrnglutils
