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
    // Runs of triangles that a frame draws or leaves out together: in order, covering every
    // triangle, each inside one face or made of whole faces; the sphere around each and the
    // cone of its normals (cut-off the cosine of half its angle) with the cone's apex.
    struct Cluster {
        unsigned int firstTriangle = 0;
        unsigned int triangleCount = 0;
        qrnmath::Vec3 centre;
        float radius = 0.0f;
        qrnmath::Vec3 coneApex;
        qrnmath::Vec3 coneAxis;
        float coneCutoff = 1.0f;
    };
    std::vector<Cluster> clusters; // empty for meshes too small to pay

    std::size_t triangleCount() const { return indices.size() / 3; }
    BBox bbox() const {
        BBox b;
        for (const auto& v : vertices)
            b.add(v);
        return b;
    }
};

} // namespace qrnsg
