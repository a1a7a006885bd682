#pragma once

#include "qrnimport/ModelData.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Polyline.h"

#include <vector>

namespace qrnimport {

// Vertex normals for triangles that come without them (mesh formats, faces with no surface).
class MeshNormals {
public:
    static constexpr float kCreaseAngle = 0.7f; // radians

    // Triangles in smooth regions: those meeting across an edge flatter than the crease angle
    // share one, points at the same place counting as one.
    struct Regions {
        std::vector<unsigned int> indices; // the valid triangles, region by region
        std::vector<unsigned int> sizes;   // triangles per region, regions in order of first use
    };
    static Regions regions(const std::vector<qrnmath::Vec3>& points,
                           const std::vector<unsigned int>& indices,
                           float creaseAngle = kCreaseAngle);
    // Per vertex, the area-weighted mean of the normals of the triangles around it.
    static std::vector<qrnmath::Vec3> smooth(const std::vector<qrnmath::Vec3>& points,
                                             const std::vector<unsigned int>& indices);
    // Appends the triangles to the mesh with normals that stay smooth across edges flatter
    // than the crease angle (radians) and break at sharper ones: a vertex on a crease is
    // repeated once per side.
    static void appendWithCreases(const std::vector<qrnmath::Vec3>& points,
                                  const std::vector<unsigned int>& indices, qrnsg::Mesh& mesh,
                                  float creaseAngle = kCreaseAngle);
    // The edges a drawing of the triangles shows: where they meet at more than the crease
    // angle, and where only one triangle has an edge (an open border); joined into strips.
    static qrnsg::Polyline featureEdges(const std::vector<qrnmath::Vec3>& points,
                                        const std::vector<unsigned int>& indices,
                                        float creaseAngle = kCreaseAngle);
    // Gives each part read as triangles only (no edges) its feature edges, each strip an edge
    // entity that picks name (straight where it is one segment).
    static void addFeatureEdges(ModelData& model);
};

} // namespace qrnimport
