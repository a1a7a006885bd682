#include "qrnimport/MeshOptimizer.h"

#include <meshoptimizer.h>

#include <algorithm>

namespace qrnimport {

namespace {

using Face = qrnsg::PartEntities::Face;

// Reorders the triangles of [first, end) for the post-transform cache.
void cacheOrder(std::vector<unsigned int>& indices, std::size_t first, std::size_t end,
                std::size_t vertexCount) {
    if (end - first < 2)
        return;
    unsigned int* range = indices.data() + first * 3;
    meshopt_optimizeVertexCache(range, range, (end - first) * 3, vertexCount);
}

template <class T>
void remap(std::vector<T>& values, const std::vector<unsigned int>& table, std::size_t count) {
    if (values.size() != table.size())
        return;
    std::vector<T> out(count);
    meshopt_remapVertexBuffer(out.data(), values.data(), values.size(), sizeof(T), table.data());
    values.swap(out);
}

} // namespace

MeshOptimizer::Stats& MeshOptimizer::Stats::operator+=(const Stats& other) {
    triangles += other.triangles;
    coarseTriangles += other.coarseTriangles;
    coarseMeshes += other.coarseMeshes;
    return *this;
}

MeshOptimizer::Stats MeshOptimizer::optimize(std::vector<qrnsg::Mesh>& meshes,
                                             const qrnsg::PartEntities& entities,
                                             const Options& options) {
    Stats stats;
    for (std::size_t m = 0; m < meshes.size(); ++m) {
        std::vector<Face> faces;
        for (const Face& face : entities.faces)
            if (face.mesh == static_cast<int>(m))
                faces.push_back(face);
        stats += optimize(meshes[m], faces, options);
    }
    return stats;
}

MeshOptimizer::Stats MeshOptimizer::optimize(qrnsg::Mesh& mesh, const std::vector<Face>& faces,
                                             const Options& options) {
    Stats stats;
    const std::size_t triangles = mesh.triangleCount();
    const std::size_t vertexCount = mesh.vertices.size();
    stats.triangles = triangles;
    if (triangles == 0 || mesh.indices.size() != triangles * 3 ||
        std::any_of(mesh.indices.begin(), mesh.indices.end(),
                    [&](unsigned int i) { return i >= vertexCount; }))
        return stats;

    if (options.cacheOrder && triangles >= options.cacheOrderFrom) {
        // Each face in turn, and whatever lies between faces as ranges of its own.
        std::vector<std::pair<std::size_t, std::size_t>> ranges;
        for (const Face& face : faces) {
            const std::size_t first = std::min<std::size_t>(face.firstTriangle, triangles);
            ranges.emplace_back(first,
                                std::min<std::size_t>(first + face.triangleCount, triangles));
        }
        std::sort(ranges.begin(), ranges.end());
        std::size_t at = 0;
        for (const auto& [first, end] : ranges) {
            if (first < at)
                return stats; // overlapping faces: leave the order as the reader made it
            cacheOrder(mesh.indices, at, first, vertexCount);
            cacheOrder(mesh.indices, first, end, vertexCount);
            at = end;
        }
        cacheOrder(mesh.indices, at, triangles, vertexCount);

        std::vector<unsigned int> table(vertexCount);
        const std::size_t used = meshopt_optimizeVertexFetchRemap(table.data(), mesh.indices.data(),
                                                                  mesh.indices.size(), vertexCount);
        meshopt_remapIndexBuffer(mesh.indices.data(), mesh.indices.data(), mesh.indices.size(),
                                 table.data());
        remap(mesh.vertices, table, used);
        remap(mesh.normals, table, used);
        remap(mesh.texCoords, table, used);
    }

    mesh.coarseIndices.clear();
    if (options.coarse && triangles >= options.coarseFrom) {
        static_assert(sizeof(qrnmath::Vec3) == 3 * sizeof(float), "positions are packed floats");
        const std::size_t target =
            static_cast<std::size_t>(static_cast<float>(triangles) * options.coarseRatio) * 3;
        std::vector<unsigned int> coarse(mesh.indices.size());
        const std::size_t n = meshopt_simplify(
            coarse.data(), mesh.indices.data(), mesh.indices.size(), mesh.vertices[0].data(),
            mesh.vertices.size(), sizeof(qrnmath::Vec3), target, options.coarseError, 0, nullptr);
        // Worth a second index list only when it saves a good share of the work.
        if (n > 0 && n * 2 <= mesh.indices.size()) {
            coarse.resize(n);
            if (options.cacheOrder)
                meshopt_optimizeVertexCache(coarse.data(), coarse.data(), n, mesh.vertices.size());
            mesh.coarseIndices.swap(coarse);
            stats.coarseMeshes = 1;
            stats.coarseTriangles = n / 3;
        }
    }
    return stats;
}

} // namespace qrnimport
