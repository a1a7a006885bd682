#pragma once

#include "qrnimport/DocumentBuilder.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/PartEntities.h"

#include <cstddef>
#include <vector>

namespace qrnimport {

// Prepares a part's meshes for drawing once, at load: triangles reordered for the vertex
// cache inside each face (a face stays the triangle range that picks name), vertices
// renumbered in the order the triangles first use them, and a coarse index list over the
// same vertices for frames drawn while the camera moves.
class MeshOptimizer {
public:
    using Options = DocumentBuilder::Options;
    struct Stats {
        std::size_t triangles = 0;
        std::size_t coarseTriangles = 0; // of the meshes that have a coarse version
        std::size_t coarseMeshes = 0;
        Stats& operator+=(const Stats& other);
    };

    // `meshes` are one part's, in the order its faces name them.
    static Stats optimize(std::vector<qrnsg::Mesh>& meshes, const qrnsg::PartEntities& entities,
                          const Options& options);
    static Stats optimize(qrnsg::Mesh& mesh, const std::vector<qrnsg::PartEntities::Face>& faces,
                          const Options& options);
};

} // namespace qrnimport
