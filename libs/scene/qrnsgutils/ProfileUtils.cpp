#include "qrnsgutils/ProfileUtils.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnsgutils/InstanceWalker.h"

#include <cmath>
#include <map>
#include <tuple>

namespace qrnsgutils {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;
using qrnmath::Vec3;
using qrnmath::Vec4;

ProfileUtils::ProfileUtils(const std::vector<qrnsg::Mesh>& meshes, const qrnsg::SCSceneRT& rt,
                           const qrnsg::SCSceneTopo& topology, float tolerance, const Vec4& plane,
                           std::shared_ptr<const qrnsg::IPairFunctor> visibility)
    : m_meshes(meshes), m_rt(rt), m_topology(topology), m_tolerance(std::max(tolerance, 1e-7f)),
      m_plane(plane), m_visibility(std::move(visibility)) {}

void ProfileUtils::intersectMesh(const qrnsg::Mesh& mesh, const Vec4& plane, float tolerance,
                                 const Mat4* transform, std::vector<Vec3>& segments) {
    const Vec3 n(plane[0], plane[1], plane[2]);
    const float length = n.length();
    if (length <= 0.0f)
        return;
    // Distances in the plane's own unit, one per vertex, so each is computed once.
    std::vector<float> distance(mesh.vertices.size());
    bool below = false, above = false;
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
        distance[i] = (n.dot(mesh.vertices[i]) + plane[3]) / length;
        below = below || distance[i] < tolerance;
        above = above || distance[i] > -tolerance;
    }
    if (!below || !above)
        return;
    auto side = [&](unsigned v) {
        const float d = distance[v];
        return d > tolerance ? 1 : d < -tolerance ? -1 : 0;
    };
    auto place = [&](const Vec3& p) {
        segments.push_back(transform ? MatrixUtils::transformPoint(*transform, p) : p);
    };
    const std::size_t count = mesh.vertices.size();
    for (std::size_t t = 0; t + 2 < mesh.indices.size(); t += 3) {
        const unsigned v[3] = {mesh.indices[t], mesh.indices[t + 1], mesh.indices[t + 2]};
        if (v[0] >= count || v[1] >= count || v[2] >= count)
            continue;
        const int s[3] = {side(v[0]), side(v[1]), side(v[2])};
        const int zeros = (s[0] == 0) + (s[1] == 0) + (s[2] == 0);
        if (zeros == 3 || (s[0] >= 0 && s[1] >= 0 && s[2] >= 0 && zeros == 0) ||
            (s[0] <= 0 && s[1] <= 0 && s[2] <= 0 && zeros == 0))
            continue;
        if (zeros == 2) {
            // An edge on the plane is shared with the neighbour across it: only the triangle
            // above the plane reports it.
            const int third = s[0] != 0 ? 0 : s[1] != 0 ? 1 : 2;
            if (s[third] < 0)
                continue;
            place(mesh.vertices[v[(third + 1) % 3]]);
            place(mesh.vertices[v[(third + 2) % 3]]);
            continue;
        }
        Vec3 points[2];
        int found = 0;
        for (int i = 0; i < 3 && found < 2; ++i) {
            const int j = (i + 1) % 3;
            if (s[i] == 0) {
                points[found++] = mesh.vertices[v[i]];
            } else if (s[i] * s[j] < 0) {
                const float di = distance[v[i]], dj = distance[v[j]];
                const float f = di / (di - dj);
                const Vec3& a = mesh.vertices[v[i]];
                points[found++] = a + (mesh.vertices[v[j]] - a) * f;
            }
        }
        // One vertex touching the plane with the others on one side makes no segment.
        if (found == 2) {
            place(points[0]);
            place(points[1]);
        }
    }
}

bool ProfileUtils::intersect(int node, std::vector<float>& vertices, std::vector<int>& indices) {
    vertices.clear();
    indices.clear();
    m_bound = qrnsg::BBox();
    if (node < 0 || static_cast<std::size_t>(node) >= m_topology.nodes.size())
        return false;
    std::vector<Vec3> segments;
    for (int id : m_topology.nodes[static_cast<std::size_t>(node)].meshIds) {
        InstanceWalker::Instance instance;
        if (!InstanceWalker::visible(m_rt.meshes, id, m_meshes.size(), instance, false))
            continue;
        if (m_visibility) {
            unsigned char flags = instance.flags;
            m_visibility->apply(id, *m_rt.meshes.transforms.find(id), flags);
            if (!(flags & qrnsg::RTState::VISIBLE))
                continue;
        } else if (!(instance.flags & qrnsg::RTState::VISIBLE)) {
            continue;
        }
        // The plane in the mesh's own coordinates: for a placement M, plane . (M p) equals
        // (M^T plane) . p, so only the points found need placing.
        Vec4 local = m_plane;
        if (instance.transform) {
            const Mat4& m = *instance.transform;
            for (int c = 0; c < 4; ++c)
                local[c] = m[4 * c] * m_plane[0] + m[4 * c + 1] * m_plane[1] +
                           m[4 * c + 2] * m_plane[2] + m[4 * c + 3] * m_plane[3];
        }
        // A placement that scales by s shrinks world distances to local ones by 1/s.
        const float scale = Vec3(local[0], local[1], local[2]).length() /
                            std::max(Vec3(m_plane[0], m_plane[1], m_plane[2]).length(), 1e-30f);
        intersectMesh(m_meshes[static_cast<std::size_t>(instance.drawable)], local,
                      m_tolerance / std::max(scale, 1e-30f), instance.transform, segments);
    }
    // Welds points closer than the tolerance, so that the segments join into closed lines.
    std::map<std::tuple<long long, long long, long long>, int> welded;
    const double cell = m_tolerance;
    for (std::size_t i = 0; i + 1 < segments.size(); i += 2) {
        int ends[2];
        for (int e = 0; e < 2; ++e) {
            const Vec3& p = segments[i + static_cast<std::size_t>(e)];
            const auto key = std::make_tuple(std::llround(p[0] / cell), std::llround(p[1] / cell),
                                             std::llround(p[2] / cell));
            auto found = welded.find(key);
            if (found == welded.end()) {
                found = welded.emplace(key, static_cast<int>(vertices.size() / 3)).first;
                vertices.insert(vertices.end(), {p[0], p[1], p[2]});
                m_bound.add(p);
            }
            ends[e] = found->second;
        }
        if (ends[0] != ends[1])
            indices.insert(indices.end(), {ends[0], ends[1]});
    }
    return !indices.empty();
}

void ProfileUtils::getProfileBound(qrnsg::BBox& bound) const {
    if (!m_bound.isEmpty())
        bound = m_bound;
}

} // namespace qrnsgutils
