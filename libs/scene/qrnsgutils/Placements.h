#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <vector>

namespace qrnsgutils {

// Where the model's nodes stand. Each node keeps its placement in its parent (local) and the
// one it was read with (initial); the run-time component keeps every primitive's placement in
// the model, which update() recomputes for a subtree in one pass over the nodes (stored
// parents first), so that frames, picks and bounds read placements as before.
class QRNSGUTILS_EXPORT Placements {
public:
    // A node's placement in the model from its local placement and its parents'.
    static qrnmath::Mat4 world(const qrnsg::SCSceneTopo& topology, int node);
    // The same with the initial placements.
    static qrnmath::Mat4 initialWorld(const qrnsg::SCSceneTopo& topology, int node);
    // Recomputes the model placements of the node's subtree (-1: all) into the primitives.
    static void update(const qrnsg::SCSceneTopo& topology, qrnsg::SCSceneRT& rt, int node = -1);
    // Moves each node by a translation in the model (its own, not its parents'), times the
    // fraction (0 where it was read, 1 the whole way), its subtree with it; then updates all.
    static void translate(qrnsg::SCSceneTopo& topology, qrnsg::SCSceneRT& rt,
                          const std::vector<qrnmath::Vec3>& own, float fraction);
    // Every node back where it was read.
    static void reset(qrnsg::SCSceneTopo& topology, qrnsg::SCSceneRT& rt);
};

} // namespace qrnsgutils
