#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"

#include <vector>

namespace qrnsg {

// An indexed triangle mesh with per-vertex normals (and texture coordinates when textured).
struct Mesh {
    std::vector<qrnmath::Vec3> vertices;
    std::vector<qrnmath::Vec3> normals;
    std::vector<qrnmath::Tuple<float, 2>> texCoords;
    std::vector<unsigned int> indices; // three per triangle
    // Fewer triangles over the same vertices, drawn instead while the camera moves and the
    // full mesh would not keep up; empty when there is none.
    std::vector<unsigned int> coarseIndices;
    // The triangles bound a solid (alone or with the part's other meshes): their back faces
    // are never seen unless the solid is cut open.
    bool closed = false;

    std::size_t triangleCount() const { return indices.size() / 3; }
    BBox bbox() const {
        BBox b;
        for (const auto& v : vertices)
            b.add(v);
        return b;
    }
};

} // namespace qrnsg
