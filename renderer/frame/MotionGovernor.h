#pragma once

#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"

#include <cstddef>
#include <vector>

namespace qrngl {

// Keeps frames drawn while the camera moves within the renderer's budget: it leaves out the
// mesh instances that look smallest and, when that is not enough, draws coarse meshes. Frame
// time is modelled as a fixed cost plus a cost per triangle, learnt from the frames it sees.
// Still frames draw everything.
class MotionGovernor {
public:
    // Decides this frame's plan; needs the frame's matrices and viewport in GL state. Without
    // leaving parts out, it may only draw coarse meshes (a capped cut: a part left out would
    // leave its cap behind).
    void plan(const qrnsg::SCScene& scene, const qrnsg::SCSceneRT& rt,
              const SCStripRenderer& strips, const SCRenderer& renderer, bool leaveOut = true);
    // Whether an instance of a mesh or polyline drawable is left out.
    bool culledMesh(int drawable, const qrnmath::Mat4* transform) const;
    bool culledPolyline(int drawable, const qrnmath::Mat4* transform) const;
    bool coarse() const { return m_coarse; }
    bool active() const { return m_cullRadius > 0.0f || m_coarse; }
    // Learns from the frame just drawn and leaves the figures in `stats`.
    void record(double milliseconds, std::size_t trianglesDrawn, SCRenderer::FrameStats& stats);

private:
    struct Sphere {
        qrnmath::Vec3 centre;
        float radius = -1.0f; // negative: unknown, never left out
    };
    void cacheSpheres(const qrnsg::SCScene& scene);
    float pixelRadius(const Sphere& sphere, const qrnmath::Mat4* transform) const;
    double trianglesWithin(double budget) const;

    const qrnsg::SCScene* m_scene = nullptr;
    std::vector<Sphere> m_meshSpheres;
    std::vector<Sphere> m_polylineSpheres;
    float m_modelview[16] = {};
    float m_projection[16] = {};
    float m_halfHeight = 0.0f;
    float m_cullRadius = 0.0f;
    bool m_coarse = false;
    bool m_inMotion = false;
    std::size_t m_culled = 0;
    std::size_t m_coarseInstances = 0;
    std::size_t m_instances = 0;
    // Two recent frames with different triangle counts fit the model.
    struct Sample {
        double milliseconds = 0.0;
        double triangles = 0.0;
    };
    Sample m_full;    // the last frame drawn with everything
    Sample m_reduced; // the last frame drawn with less
};

} // namespace qrngl
