#include "qrnimport/MeshNormals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_map>

namespace qrnimport {

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

// Disjoint sets of triangles.
struct Sets {
    explicit Sets(std::size_t n) : parent(n) {
        for (std::size_t i = 0; i < n; ++i)
            parent[i] = static_cast<unsigned int>(i);
    }
    unsigned int find(unsigned int i) {
        while (parent[i] != i)
            i = parent[i] = parent[parent[i]];
        return i;
    }
    void join(unsigned int a, unsigned int b) { parent[find(a)] = find(b); }
    std::vector<unsigned int> parent;
};

struct PointKeyHash {
    std::size_t operator()(const std::array<std::uint32_t, 3>& k) const {
        return (k[0] * 73856093u) ^ (k[1] * 19349663u) ^ (k[2] * 83492791u);
    }
};

// One id per place: mesh formats repeat a point where its normal or texture coordinate
// changes, which must not cut a region.
std::vector<unsigned int> weld(const std::vector<Vec3>& points) {
    std::unordered_map<std::array<std::uint32_t, 3>, unsigned int, PointKeyHash> ids;
    ids.reserve(points.size());
    std::vector<unsigned int> out(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::array<std::uint32_t, 3> key{};
        for (int c = 0; c < 3; ++c) {
            const float v = points[i][c] + 0.0f; // -0 as 0
            std::memcpy(&key[static_cast<std::size_t>(c)], &v, sizeof v);
        }
        out[i] = ids.emplace(key, static_cast<unsigned int>(ids.size())).first->second;
    }
    return out;
}

} // namespace

MeshNormals::Regions MeshNormals::regions(const std::vector<Vec3>& points,
                                          const std::vector<unsigned int>& indices,
                                          float creaseAngle) {
    std::vector<unsigned int> triangles; // valid ones, by their first index
    for (std::size_t t = 0; t + 2 < indices.size(); t += 3)
        if (valid(points, &indices[t]))
            triangles.push_back(static_cast<unsigned int>(t));
    const std::size_t n = triangles.size();
    std::vector<Vec3> unit(n);
    for (std::size_t i = 0; i < n; ++i)
        unit[i] = unitOr(areaNormal(points, &indices[triangles[i]]), Vec3());

    // Triangles by the edges they have, an edge named by its two welded ends.
    const std::vector<unsigned int> place = weld(points);
    std::vector<std::pair<std::uint64_t, unsigned int>> edges;
    edges.reserve(n * 3);
    for (std::size_t i = 0; i < n; ++i)
        for (unsigned int c = 0; c < 3; ++c) {
            std::uint64_t a = place[indices[triangles[i] + c]];
            std::uint64_t b = place[indices[triangles[i] + (c + 1) % 3]];
            if (a != b)
                edges.emplace_back(std::min(a, b) << 32 | std::max(a, b),
                                   static_cast<unsigned int>(i));
        }
    std::sort(edges.begin(), edges.end());

    // Across flat enough edges; triangles without area take a neighbour's region, as they have
    // no normal to judge by, and only then one another's.
    const float cosCrease = std::cos(creaseAngle);
    const auto flat = [&](unsigned int a) { return unit[a].lengthSquared() > 0.5f; };
    Sets sets(n);
    std::vector<char> placed(n);
    for (std::size_t i = 0; i < n; ++i)
        placed[i] = flat(static_cast<unsigned int>(i)) ? 1 : 0;
    const auto eachShared = [&](auto&& visit) {
        for (std::size_t r = 0; r < edges.size();) {
            std::size_t end = r + 1;
            while (end < edges.size() && edges[end].first == edges[r].first)
                ++end;
            for (std::size_t i = r; i < end; ++i)
                for (std::size_t j = i + 1; j < end; ++j)
                    visit(edges[i].second, edges[j].second);
            r = end;
        }
    };
    eachShared([&](unsigned int a, unsigned int b) {
        if (flat(a) && flat(b) && unit[a].dot(unit[b]) >= cosCrease)
            sets.join(a, b);
    });
    for (bool changed = true; changed;) {
        changed = false;
        eachShared([&](unsigned int a, unsigned int b) {
            if (placed[a] != placed[b]) {
                sets.join(placed[a] ? b : a, placed[a] ? a : b);
                placed[a] = placed[b] = 1;
                changed = true;
            }
        });
    }
    eachShared([&](unsigned int a, unsigned int b) {
        if (!placed[a] && !placed[b])
            sets.join(a, b);
    });

    // Regions in order of their first triangle, each keeping its triangles' order.
    std::vector<unsigned int> regionOf(n), regionIndex(n, ~0u);
    Regions out;
    for (std::size_t i = 0; i < n; ++i) {
        unsigned int& r = regionIndex[sets.find(static_cast<unsigned int>(i))];
        if (r == ~0u) {
            r = static_cast<unsigned int>(out.sizes.size());
            out.sizes.push_back(0);
        }
        regionOf[i] = r;
        ++out.sizes[r];
    }
    std::vector<unsigned int> next(out.sizes.size(), 0);
    for (std::size_t r = 1; r < next.size(); ++r)
        next[r] = next[r - 1] + out.sizes[r - 1];
    out.indices.resize(n * 3);
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t to = std::size_t(next[regionOf[i]]++) * 3;
        std::copy_n(&indices[triangles[i]], 3, &out.indices[to]);
    }
    return out;
}

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

qrnsg::Polyline MeshNormals::featureEdges(const std::vector<Vec3>& points,
                                          const std::vector<unsigned int>& indices,
                                          float creaseAngle) {
    // Each edge with the triangles on it, named by its two welded ends.
    const std::vector<unsigned int> place = weld(points);
    std::vector<Vec3> at; // a point of each place
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (place[i] >= at.size())
            at.resize(place[i] + 1);
        at[place[i]] = points[i];
    }
    std::vector<std::pair<std::uint64_t, unsigned int>> edges;
    edges.reserve(indices.size());
    std::vector<Vec3> unit;
    for (std::size_t t = 0; t + 2 < indices.size(); t += 3) {
        if (!valid(points, &indices[t]))
            continue;
        const auto triangle = static_cast<unsigned int>(unit.size());
        unit.push_back(unitOr(areaNormal(points, &indices[t]), Vec3()));
        for (unsigned int c = 0; c < 3; ++c) {
            const std::uint64_t a = place[indices[t + c]], b = place[indices[t + (c + 1) % 3]];
            if (a != b)
                edges.emplace_back(std::min(a, b) << 32 | std::max(a, b), triangle);
        }
    }
    std::sort(edges.begin(), edges.end());
    const float cosCrease = std::cos(creaseAngle);
    std::vector<std::pair<unsigned int, unsigned int>> shown;
    for (std::size_t r = 0; r < edges.size();) {
        std::size_t end = r + 1;
        while (end < edges.size() && edges[end].first == edges[r].first)
            ++end;
        // A border (one triangle), a crease (two at an angle); where more than two meet, the
        // mesh is no surface there and the edge shows too.
        const bool feature =
            end - r != 2 || unit[edges[r].second].dot(unit[edges[r + 1].second]) < cosCrease;
        if (feature)
            shown.emplace_back(static_cast<unsigned int>(edges[r].first >> 32),
                               static_cast<unsigned int>(edges[r].first & 0xFFFFFFFFu));
        r = end;
    }
    // Joined into strips: from each end, on while the next edge is the only one left there.
    std::unordered_map<unsigned int, std::vector<std::size_t>> around;
    for (std::size_t e = 0; e < shown.size(); ++e) {
        around[shown[e].first].push_back(e);
        around[shown[e].second].push_back(e);
    }
    std::vector<char> used(shown.size(), 0);
    qrnsg::Polyline lines;
    auto next = [&](unsigned int p) -> long long {
        for (std::size_t e : around[p])
            if (!used[e])
                return static_cast<long long>(e);
        return -1;
    };
    for (std::size_t e = 0; e < shown.size(); ++e) {
        if (used[e])
            continue;
        used[e] = 1;
        std::vector<unsigned int> strip{shown[e].first, shown[e].second};
        for (long long n = next(strip.back()); n >= 0; n = next(strip.back())) {
            used[static_cast<std::size_t>(n)] = 1;
            const auto& s2 = shown[static_cast<std::size_t>(n)];
            strip.push_back(s2.first == strip.back() ? s2.second : s2.first);
        }
        std::vector<Vec3> strip3;
        strip3.reserve(strip.size());
        for (unsigned int p : strip)
            strip3.push_back(at[p]);
        lines.addStrip(strip3);
    }
    return lines;
}

void MeshNormals::addFeatureEdges(ModelData& model) {
    for (auto& part : model.parts) {
        if (part.edges.stripCount() > 0 || part.meshes.empty())
            continue;
        std::vector<Vec3> points;
        std::vector<unsigned int> indices;
        for (const auto& mesh : part.meshes) {
            const auto base = static_cast<unsigned int>(points.size());
            points.insert(points.end(), mesh.vertices.begin(), mesh.vertices.end());
            for (unsigned int i : mesh.indices)
                indices.push_back(base + i);
        }
        part.edges = featureEdges(points, indices);
        const auto& lines = part.edges;
        for (unsigned int strip = 0; strip < lines.stripCount(); ++strip) {
            const std::size_t first = lines.strips[strip];
            const std::size_t end =
                strip + 1 < lines.stripCount() ? lines.strips[strip + 1] : lines.points.size();
            qrnsg::PartEntities::Edge edge;
            edge.strip = strip;
            for (std::size_t i = first; i + 1 < end; ++i)
                edge.curve.length += lines.points[i].distance(lines.points[i + 1]);
            if (end - first == 2) {
                edge.curve.type = qrnsg::PartEntities::Curve::LINE;
                edge.curve.origin = lines.points[first];
                edge.curve.axis = (lines.points[first + 1] - lines.points[first]).normalized();
            } else {
                edge.curve.type = qrnsg::PartEntities::Curve::OTHER;
            }
            part.entities.edges.push_back(edge);
        }
    }
}

} // namespace qrnimport
