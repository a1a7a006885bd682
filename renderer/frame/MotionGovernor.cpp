#include "qrngl/frame/MotionGovernor.h"

#include "qrngl/GL.h"
#include "qrnsgutils/InstanceWalker.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qrngl {

namespace {

constexpr float kNever = std::numeric_limits<float>::max();
// Parts that look larger than this share of the view's height never disappear while moving.
constexpr float kLargestCulled = 0.02f;
// The share of the budget aimed at, for frames that vary a little.
constexpr double kMargin = 0.85;

qrnmath::Vec3 apply(const float* m, const qrnmath::Vec3& p) {
    return {m[0] * p[0] + m[4] * p[1] + m[8] * p[2] + m[12],
            m[1] * p[0] + m[5] * p[1] + m[9] * p[2] + m[13],
            m[2] * p[0] + m[6] * p[1] + m[10] * p[2] + m[14]};
}

// The largest length a unit vector takes under the matrix's linear part (about).
float largestScale(const float* m) {
    float s = 0.0f;
    for (int c = 0; c < 3; ++c)
        s = std::max(s, std::sqrt(m[c * 4] * m[c * 4] + m[c * 4 + 1] * m[c * 4 + 1] +
                                  m[c * 4 + 2] * m[c * 4 + 2]));
    return s;
}

template <class Points>
void boundPoints(const Points& points, qrnmath::Vec3& centre, float& radius) {
    if (points.empty())
        return;
    qrnmath::Vec3 lo = points.front(), hi = points.front();
    for (const auto& p : points)
        for (int i = 0; i < 3; ++i) {
            lo[i] = std::min(lo[i], p[i]);
            hi[i] = std::max(hi[i], p[i]);
        }
    float d = 0.0f;
    for (int i = 0; i < 3; ++i) {
        centre[i] = 0.5f * (lo[i] + hi[i]);
        d += (hi[i] - lo[i]) * (hi[i] - lo[i]);
    }
    radius = 0.5f * std::sqrt(d);
}

} // namespace

void MotionGovernor::cacheSpheres(const qrnsg::SCScene& scene) {
    if (m_scene == &scene && m_meshSpheres.size() == scene.meshes.size() &&
        m_polylineSpheres.size() == scene.polylines.size())
        return;
    m_scene = &scene;
    m_meshSpheres.assign(scene.meshes.size(), Sphere());
    for (std::size_t i = 0; i < scene.meshes.size(); ++i)
        boundPoints(scene.meshes[i].vertices, m_meshSpheres[i].centre, m_meshSpheres[i].radius);
    m_polylineSpheres.assign(scene.polylines.size(), Sphere());
    for (std::size_t i = 0; i < scene.polylines.size(); ++i)
        boundPoints(scene.polylines[i].points, m_polylineSpheres[i].centre,
                    m_polylineSpheres[i].radius);
}

float MotionGovernor::pixelRadius(const Sphere& sphere, const qrnmath::Mat4* transform) const {
    if (sphere.radius < 0.0f)
        return kNever;
    qrnmath::Vec3 centre = sphere.centre;
    float radius = sphere.radius;
    if (transform) {
        centre = apply(transform->data(), centre);
        radius *= largestScale(transform->data());
    }
    const qrnmath::Vec3 eye = apply(m_modelview, centre);
    const float* p = m_projection;
    const float w = p[3] * eye[0] + p[7] * eye[1] + p[11] * eye[2] + p[15];
    if (w <= 1e-6f)
        return kNever; // at or behind the eye
    return radius * largestScale(m_modelview) * std::fabs(p[5]) * m_halfHeight / w;
}

double MotionGovernor::trianglesWithin(double budget) const {
    if (m_full.triangles <= 0.0 || m_full.milliseconds <= 0.0)
        return std::numeric_limits<double>::max(); // nothing learnt yet
    double perTriangle = m_full.milliseconds / m_full.triangles;
    double fixed = 0.0;
    const double fewer = m_full.triangles - m_reduced.triangles;
    if (m_reduced.triangles > 0.0 && fewer > 0.1 * m_full.triangles &&
        m_full.milliseconds > m_reduced.milliseconds) {
        perTriangle = (m_full.milliseconds - m_reduced.milliseconds) / fewer;
        fixed = std::max(0.0, m_full.milliseconds - perTriangle * m_full.triangles);
    }
    return std::max(0.0, (budget * kMargin - fixed) / perTriangle);
}

void MotionGovernor::plan(const qrnsg::SCScene& scene, const qrnsg::SCSceneRT& rt,
                          const SCStripRenderer& strips, const SCRenderer& renderer,
                          bool leaveOut) {
    m_cullRadius = 0.0f;
    m_coarse = false;
    m_culled = m_coarseInstances = m_instances = 0;
    if (!renderer.sizeCulling || renderer.frameBudget <= 0.0)
        return;
    cacheSpheres(scene);
    glGetFloatv(GL_MODELVIEW_MATRIX, m_modelview);
    glGetFloatv(GL_PROJECTION_MATRIX, m_projection);
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);
    m_halfHeight = 0.5f * static_cast<float>(viewport[3]);

    struct Item {
        float radius;
        double full;
        double coarse;
    };
    std::vector<Item> items;
    double full = 0.0, coarse = 0.0;
    qrnsgutils::InstanceWalker::walk(
        rt.meshes, strips.meshes.size(), [&](const qrnsgutils::InstanceWalker::Instance& i) {
            const auto d = static_cast<std::size_t>(i.drawable);
            if (d >= scene.meshes.size())
                return;
            Item item{pixelRadius(m_meshSpheres[d], i.transform),
                      static_cast<double>(scene.meshes[d].triangleCount()), 0.0};
            const bool hasCoarse = d < strips.coarseMeshes.size() && strips.coarseMeshes[d];
            item.coarse = hasCoarse ? static_cast<double>(scene.meshes[d].coarseIndices.size() / 3)
                                    : item.full;
            full += item.full;
            coarse += item.coarse;
            items.push_back(item);
        });
    m_instances = items.size();
    const double target = trianglesWithin(renderer.frameBudget);
    if (full <= target)
        return;
    if (!leaveOut) {
        m_coarse = true;
        for (const Item& item : items)
            m_coarseInstances += item.coarse < item.full ? 1 : 0;
        return;
    }
    std::sort(items.begin(), items.end(),
              [](const Item& a, const Item& b) { return a.radius < b.radius; });
    const float largest = kLargestCulled * 2.0f * m_halfHeight;
    // Leaves out the smallest until the rest fits; coarse meshes only when that is not enough.
    auto cull = [&](bool useCoarse, double total) {
        std::size_t k = 0;
        while (total > target && k < items.size() && items[k].radius < largest) {
            total -= useCoarse ? items[k].coarse : items[k].full;
            ++k;
        }
        // Equal sizes go together, so that the same radius always decides.
        while (k > 0 && k < items.size() && items[k].radius == items[k - 1].radius)
            ++k;
        return std::make_pair(k, total);
    };
    auto [k, left] = cull(false, full);
    if (left > target) {
        m_coarse = true;
        std::tie(k, left) = cull(true, coarse);
        for (std::size_t i = k; i < items.size(); ++i)
            m_coarseInstances += items[i].coarse < items[i].full ? 1 : 0;
    }
    m_culled = k;
    m_cullRadius = k > 0 ? std::nextafter(items[k - 1].radius, kNever) : 0.0f;
}

bool MotionGovernor::culledMesh(int drawable, const qrnmath::Mat4* transform) const {
    if (m_cullRadius <= 0.0f || drawable < 0 ||
        static_cast<std::size_t>(drawable) >= m_meshSpheres.size())
        return false;
    return pixelRadius(m_meshSpheres[static_cast<std::size_t>(drawable)], transform) < m_cullRadius;
}

bool MotionGovernor::culledPolyline(int drawable, const qrnmath::Mat4* transform) const {
    if (m_cullRadius <= 0.0f || drawable < 0 ||
        static_cast<std::size_t>(drawable) >= m_polylineSpheres.size())
        return false;
    return pixelRadius(m_polylineSpheres[static_cast<std::size_t>(drawable)], transform) <
           m_cullRadius;
}

void MotionGovernor::record(double milliseconds, std::size_t trianglesDrawn,
                            SCRenderer::FrameStats& stats) {
    if (trianglesDrawn > 0) {
        Sample sample{milliseconds, static_cast<double>(trianglesDrawn)};
        (active() ? m_reduced : m_full) = sample;
    }
    stats.milliseconds = milliseconds;
    stats.triangles = trianglesDrawn;
    stats.culled = m_culled;
    stats.coarse = m_coarseInstances;
    stats.instances = m_instances;
    stats.cullRadius = m_cullRadius;
}

} // namespace qrngl
