#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/ExplosionNode.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <memory>
#include <vector>

namespace qrnsgutils {

// One level of an assembly (the children of one node), in order, each node with the level
// below it: what an explosion lays out.
class QRNSGUTILS_EXPORT ExplosionGraph {
public:
    // The levels under a node of the model's structure (-1: under its roots), each node with
    // its box in the model from the shown and hidden meshes of its subtree; meshes are what
    // the run-time component's drawable indices name. Nodes without geometry are left out.
    static std::shared_ptr<ExplosionGraph> build(const qrnsg::SCSceneTopo& topology,
                                                 const qrnsg::SCSceneRT& rt,
                                                 const std::vector<qrnsg::Mesh>& meshes,
                                                 int root = -1);

    // The direction of an axis index (0 x, 1 y, 2 z); false for another index.
    static bool getExplosionDir(int axis, const std::shared_ptr<qrnsg::SCSceneTopo>& topology,
                                const std::shared_ptr<qrnsg::SCInfo>& info,
                                const std::shared_ptr<qrnsg::SCSceneRes>& resources,
                                qrnmath::Vec3& direction);
    // Records a node's explode translation and distance, scaled (1: just clear of its
    // neighbours).
    void setTransform(const std::shared_ptr<ExplosionNode>& node, const qrnmath::Vec3& translation,
                      float distance, float scale,
                      const std::shared_ptr<qrnsg::SCSceneTopo>& topology,
                      const std::shared_ptr<qrnsg::SCSceneRes>& resources);

    // Per node of the structure: its translation in the model, its own and its levels'
    // above it together; zero for a node the graph does not hold.
    void translations(std::size_t nodeCount, std::vector<qrnmath::Vec3>& out) const;
    // The boxes of the top level, each moved by its translation.
    qrnsg::BBox explodedBox() const;
    std::size_t size() const { return nodes.size(); }

    std::vector<std::shared_ptr<ExplosionNode>> nodes;

private:
    void add(const qrnmath::Vec3& above, std::vector<qrnmath::Vec3>& out) const;
};

} // namespace qrnsgutils
