#include "qrnimport/SolidCheck.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <unordered_map>

namespace qrnimport {

namespace {

struct KeyHash {
    std::size_t operator()(const std::array<std::uint32_t, 3>& k) const {
        return (static_cast<std::size_t>(k[0]) * 73856093u) ^
               (static_cast<std::size_t>(k[1]) * 19349663u) ^
               (static_cast<std::size_t>(k[2]) * 83492791u);
    }
};

// Corners are joined when their coordinates are the same floats (-0 and +0 alike): meshers
// give the faces on either side of an edge the very same points.
std::array<std::uint32_t, 3> keyOf(const qrnmath::Vec3& v) {
    std::array<std::uint32_t, 3> key{};
    for (int i = 0; i < 3; ++i) {
        const float f = v[i] == 0.0f ? 0.0f : v[i];
        std::memcpy(&key[static_cast<std::size_t>(i)], &f, sizeof f);
    }
    return key;
}

} // namespace

bool SolidCheck::closed(const std::vector<qrnsg::Mesh>& meshes) {
    std::unordered_map<std::array<std::uint32_t, 3>, std::uint32_t, KeyHash> ids;
    std::vector<std::uint64_t> edges; // (lower, higher) with the direction in the lowest bit
    std::size_t triangles = 0;
    double volume = 0.0;
    for (const auto& mesh : meshes)
        triangles += mesh.triangleCount();
    if (triangles < 4)
        return false;
    edges.reserve(triangles * 3);
    for (const auto& mesh : meshes) {
        std::vector<std::uint32_t> joined(mesh.vertices.size());
        for (std::size_t i = 0; i < mesh.vertices.size(); ++i)
            joined[i] = ids.emplace(keyOf(mesh.vertices[i]), static_cast<std::uint32_t>(ids.size()))
                            .first->second;
        for (std::size_t t = 0; t + 2 < mesh.indices.size(); t += 3) {
            std::uint32_t c[3];
            for (std::size_t k = 0; k < 3; ++k) {
                if (mesh.indices[t + k] >= joined.size())
                    return false;
                c[k] = joined[mesh.indices[t + k]];
            }
            if (c[0] == c[1] || c[1] == c[2] || c[2] == c[0])
                continue; // no area, no sides
            for (int k = 0; k < 3; ++k) {
                const std::uint32_t a = c[k], b = c[(k + 1) % 3];
                edges.push_back((static_cast<std::uint64_t>(std::min(a, b)) << 33) |
                                (static_cast<std::uint64_t>(std::max(a, b)) << 1) |
                                (a < b ? 1u : 0u));
            }
            const auto& p = mesh.vertices[mesh.indices[t]];
            const auto& q = mesh.vertices[mesh.indices[t + 1]];
            const auto& r = mesh.vertices[mesh.indices[t + 2]];
            volume += (static_cast<double>(p[0]) * (q[1] * r[2] - q[2] * r[1]) -
                       static_cast<double>(p[1]) * (q[0] * r[2] - q[2] * r[0]) +
                       static_cast<double>(p[2]) * (q[0] * r[1] - q[1] * r[0])) /
                      6.0;
        }
    }
    if (edges.empty() || !(volume > 0.0))
        return false;
    std::sort(edges.begin(), edges.end());
    // Each edge twice: once each way, so that sorted, the pairs are (edge, 0), (edge, 1).
    if (edges.size() % 2 != 0)
        return false;
    for (std::size_t i = 0; i < edges.size(); i += 2)
        if ((edges[i] | 1u) != edges[i + 1] || (edges[i] & 1u) != 0 ||
            (i + 2 < edges.size() && (edges[i + 2] >> 1) == (edges[i] >> 1)))
            return false;
    return true;
}

} // namespace qrnimport
