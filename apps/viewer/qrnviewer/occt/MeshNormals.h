#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/Mesh.h"

#include <vector>

namespace qrnviewer {

// Vertex normals for triangles that come without them (mesh formats, faces with no surface).
class MeshNormals {
public:
    // Per vertex, the area-weighted mean of the normals of the triangles around it.
    static std::vector<qrnmath::Vec3> smooth(const std::vector<qrnmath::Vec3>& points,
                                             const std::vector<unsigned int>& indices);
    // Appends the triangles to the mesh with normals that stay smooth across edges flatter
    // than the crease angle (radians) and break at sharper ones: a vertex on a crease is
    // repeated once per side.
    static void appendWithCreases(const std::vector<qrnmath::Vec3>& points,
                                  const std::vector<unsigned int>& indices, qrnsg::Mesh& mesh,
                                  float creaseAngle = 0.7f);
};

} // namespace qrnviewer
