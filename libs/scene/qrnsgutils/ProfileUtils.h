#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"
#include "qrnsg/IPairFunctor.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <memory>
#include <vector>

namespace qrnsgutils {

// Where a plane meets the mesh instances of one node: line segments in world coordinates,
// as a vertex array (x y z per vertex, shared vertices welded) and an index array of pairs.
class QRNSGUTILS_EXPORT ProfileUtils {
public:
    // meshes: the geometry the run-time component's drawable indices name (the scene's or
    // the resources'); plane (a, b, c, d) in world coordinates; tolerance: distances below it
    // count as on the plane, and welded vertices lie closer than it. Instances the
    // visibility functor clears the visible bit of are left out.
    ProfileUtils(const std::vector<qrnsg::Mesh>& meshes, const qrnsg::SCSceneRT& rt,
                 const qrnsg::SCSceneTopo& topology, float tolerance, const qrnmath::Vec4& plane,
                 std::shared_ptr<const qrnsg::IPairFunctor> visibility);

    // Replaces both arrays with the node's profile; false when the node has none.
    bool intersect(int node, std::vector<float>& vertices, std::vector<int>& indices);
    // The box of the last profile; unchanged when it was empty.
    void getProfileBound(qrnsg::BBox& bound) const;

    // The segments of one mesh cut by a plane in the mesh's own coordinates, appended; each
    // point is moved by transform when one is given.
    static void intersectMesh(const qrnsg::Mesh& mesh, const qrnmath::Vec4& plane, float tolerance,
                              const qrnmath::Mat4* transform, std::vector<qrnmath::Vec3>& segments);

private:
    const std::vector<qrnsg::Mesh>& m_meshes;
    const qrnsg::SCSceneRT& m_rt;
    const qrnsg::SCSceneTopo& m_topology;
    float m_tolerance;
    qrnmath::Vec4 m_plane;
    std::shared_ptr<const qrnsg::IPairFunctor> m_visibility;
    qrnsg::BBox m_bound;
};

} // namespace qrnsgutils
