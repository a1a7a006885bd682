#pragma once

#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <vector>

namespace qrnsgutils {

// The nodes at and below a root node of the model's structure, parents before children.
class QRNSGUTILS_EXPORT ChildNodeFinder {
public:
    explicit ChildNodeFinder(const qrnsg::SCSceneTopo& topology);
    // root -1: every node of the model. An unknown root finds nothing.
    std::vector<int> find(int root) const;
    // Only those that place meshes.
    std::vector<int> findWithMeshes(int root) const;

private:
    const qrnsg::SCSceneTopo& m_topology;
    std::vector<std::vector<int>> m_children;
};

} // namespace qrnsgutils
