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

enum : std::size_t { kClusterVertices = 128, kClusterTriangles = 256 };

// Reorders the triangles of [first, end) into clusters of neighbours whose normals agree
// (meshlets), and appends the triangle count of each to `sizes`.
void clusterOrder(qrnsg::Mesh& mesh, std::size_t first, std::size_t end,
                  std::vector<std::size_t>& sizes) {
    const std::size_t indexCount = (end - first) * 3;
    const std::size_t bound =
        meshopt_buildMeshletsBound(indexCount, kClusterVertices, kClusterTriangles);
    std::vector<meshopt_Meshlet> meshlets(bound);
    std::vector<unsigned int> vertices(bound * kClusterVertices);
    std::vector<unsigned char> triangles(bound * kClusterTriangles * 3);
    const std::size_t n = meshopt_buildMeshlets(
        meshlets.data(), vertices.data(), triangles.data(), mesh.indices.data() + first * 3,
        indexCount, mesh.vertices[0].data(), mesh.vertices.size(), sizeof(qrnmath::Vec3),
        kClusterVertices, kClusterTriangles, 0.5f);
    unsigned int* out = mesh.indices.data() + first * 3;
    for (std::size_t m = 0; m < n; ++m) {
        const meshopt_Meshlet& meshlet = meshlets[m];
        for (std::size_t k = 0; k < meshlet.triangle_count * 3; ++k)
            *out++ = vertices[meshlet.vertex_offset + triangles[meshlet.triangle_offset + k]];
        sizes.push_back(meshlet.triangle_count);
    }
}

// The clusters' bounds, from their sizes in triangle order.
void clusterBounds(qrnsg::Mesh& mesh, const std::vector<std::size_t>& sizes) {
    mesh.clusters.clear();
    mesh.clusters.reserve(sizes.size());
    std::size_t first = 0;
    for (std::size_t size : sizes) {
        const meshopt_Bounds b = meshopt_computeClusterBounds(
            mesh.indices.data() + first * 3, size * 3, mesh.vertices[0].data(),
            mesh.vertices.size(), sizeof(qrnmath::Vec3));
        qrnsg::Mesh::Cluster c;
        c.firstTriangle = static_cast<unsigned int>(first);
        c.triangleCount = static_cast<unsigned int>(size);
        c.centre = qrnmath::Vec3(b.center[0], b.center[1], b.center[2]);
        c.radius = b.radius;
        c.coneApex = qrnmath::Vec3(b.cone_apex[0], b.cone_apex[1], b.cone_apex[2]);
        c.coneAxis = qrnmath::Vec3(b.cone_axis[0], b.cone_axis[1], b.cone_axis[2]);
        c.coneCutoff = b.cone_cutoff;
        mesh.clusters.push_back(c);
        first += size;
    }
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

    const bool clustered = options.clusters && triangles >= options.clustersFrom;
    mesh.clusters.clear();
    if ((options.cacheOrder && triangles >= options.cacheOrderFrom) || clustered) {
        // Each face in turn, and whatever lies between faces as ranges of its own.
        std::vector<std::pair<std::size_t, std::size_t>> ranges;
        for (const Face& face : faces) {
            const std::size_t first = std::min<std::size_t>(face.firstTriangle, triangles);
            ranges.emplace_back(first,
                                std::min<std::size_t>(first + face.triangleCount, triangles));
        }
        std::sort(ranges.begin(), ranges.end());
        std::vector<std::pair<std::size_t, std::size_t>> runs;
        std::size_t at = 0;
        for (const auto& [first, end] : ranges) {
            if (first < at)
                return stats; // overlapping faces: leave the order as the reader made it
            if (first > at)
                runs.emplace_back(at, first);
            runs.emplace_back(first, end);
            at = end;
        }
        if (at < triangles)
            runs.emplace_back(at, triangles);
        // Large faces become clusters of their own; small ones are drawn in the cache's order
        // and gathered whole into clusters of their neighbours.
        std::vector<std::size_t> sizes;
        std::size_t gathered = 0;
        for (const auto& [first, end] : runs) {
            const std::size_t size = end - first;
            if (clustered && size >= options.clusterFaceFrom) {
                if (gathered)
                    sizes.push_back(gathered);
                gathered = 0;
                clusterOrder(mesh, first, end, sizes);
                continue;
            }
            cacheOrder(mesh.indices, first, end, vertexCount);
            if (gathered && gathered + size > kClusterTriangles)
                sizes.push_back(gathered), gathered = 0;
            gathered += size;
        }
        if (gathered)
            sizes.push_back(gathered);

        std::vector<unsigned int> table(vertexCount);
        const std::size_t used = meshopt_optimizeVertexFetchRemap(table.data(), mesh.indices.data(),
                                                                  mesh.indices.size(), vertexCount);
        meshopt_remapIndexBuffer(mesh.indices.data(), mesh.indices.data(), mesh.indices.size(),
                                 table.data());
        remap(mesh.vertices, table, used);
        remap(mesh.normals, table, used);
        remap(mesh.texCoords, table, used);
        if (clustered)
            clusterBounds(mesh, sizes);
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
