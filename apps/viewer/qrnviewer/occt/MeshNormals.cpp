#include "qrnviewer/occt/MeshNormals.h"

#include <cmath>

namespace qrnviewer {

using qrnmath::Vec3;

namespace {

// Twice the triangle's area along its normal.
Vec3 areaNormal(const std::vector<Vec3>& points, const unsigned int* t) {
    const Vec3& a = points[t[0]];
    return qrnmath::cross(points[t[1]] - a, points[t[2]] - a);
}

bool valid(const std::vector<Vec3>& points, const unsigned int* t) {
    return t[0] < points.size() && t[1] < points.size() && t[2] < points.size();
}

Vec3 unitOr(const Vec3& v, const Vec3& fallback) {
    const float l = v.length();
    return l > 0.0f && std::isfinite(l) ? v / l : fallback;
}

} // namespace

std::vector<Vec3> MeshNormals::smooth(const std::vector<Vec3>& points,
                                      const std::vector<unsigned int>& indices) {
    std::vector<Vec3> sums(points.size());
    for (std::size_t t = 0; t + 2 < indices.size(); t += 3) {
        if (!valid(points, &indices[t]))
            continue;
        const Vec3 n = areaNormal(points, &indices[t]);
        for (int c = 0; c < 3; ++c)
            sums[indices[t + static_cast<std::size_t>(c)]] += n;
    }
    for (auto& n : sums)
        n = unitOr(n, Vec3(0.0f, 0.0f, 1.0f));
    return sums;
}

void MeshNormals::appendWithCreases(const std::vector<Vec3>& points,
                                    const std::vector<unsigned int>& indices, qrnsg::Mesh& mesh,
                                    float creaseAngle) {
    const std::size_t triangles = indices.size() / 3;
    std::vector<Vec3> weighted(triangles), unit(triangles);
    std::vector<char> ok(triangles, 0);
    // Triangles around each vertex, as corners (triangle * 3 + corner), in compressed rows.
    std::vector<unsigned int> first(points.size() + 1, 0);
    for (std::size_t t = 0; t < triangles; ++t) {
        if (!valid(points, &indices[t * 3]))
            continue;
        ok[t] = 1;
        weighted[t] = areaNormal(points, &indices[t * 3]);
        unit[t] = unitOr(weighted[t], Vec3());
        for (int c = 0; c < 3; ++c)
            ++first[indices[t * 3 + static_cast<std::size_t>(c)] + 1];
    }
    for (std::size_t v = 0; v < points.size(); ++v)
        first[v + 1] += first[v];
    std::vector<unsigned int> corners(first.back()), fill(first.begin(), first.end() - 1);
    for (std::size_t t = 0; t < triangles; ++t)
        if (ok[t])
            for (unsigned int c = 0; c < 3; ++c)
                corners[fill[indices[t * 3 + c]]++] = static_cast<unsigned int>(t * 3 + c);

    const float cosCrease = std::cos(creaseAngle);
    std::vector<unsigned int> cornerVertex(triangles * 3, 0);
    std::vector<std::pair<Vec3, unsigned int>> emitted; // of the current vertex
    for (std::size_t v = 0; v < points.size(); ++v) {
        emitted.clear();
        for (unsigned int i = first[v]; i < first[v + 1]; ++i) {
            const std::size_t t = corners[i] / 3;
            Vec3 sum;
            Vec3 all;
            for (unsigned int j = first[v]; j < first[v + 1]; ++j) {
                const std::size_t u = corners[j] / 3;
                all += weighted[u];
                if (u == t || unit[t].dot(unit[u]) >= cosCrease)
                    sum += weighted[u];
            }
            const Vec3 n = unitOr(sum, unitOr(all, Vec3(0.0f, 0.0f, 1.0f)));
            unsigned int index = 0;
            bool found = false;
            for (const auto& e : emitted)
                if (e.first.dot(n) > 0.9999f) {
                    index = e.second;
                    found = true;
                    break;
                }
            if (!found) {
                index = static_cast<unsigned int>(mesh.vertices.size());
                mesh.vertices.push_back(points[v]);
                mesh.normals.push_back(n);
                emitted.emplace_back(n, index);
            }
            cornerVertex[corners[i]] = index;
        }
    }
    for (std::size_t t = 0; t < triangles; ++t)
        if (ok[t])
            for (std::size_t c = 0; c < 3; ++c)
                mesh.indices.push_back(cornerVertex[t * 3 + c]);
}

} // namespace qrnviewer
