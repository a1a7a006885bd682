#include "qrnsgutils/ChildNodeFinder.h"

namespace qrnsgutils {

ChildNodeFinder::ChildNodeFinder(const qrnsg::SCSceneTopo& topology)
    : m_topology(topology), m_children(topology.nodes.size()) {
    for (std::size_t i = 0; i < topology.nodes.size(); ++i) {
        const int parent = topology.nodes[i].parent;
        if (parent >= 0 && static_cast<std::size_t>(parent) < m_children.size())
            m_children[static_cast<std::size_t>(parent)].push_back(static_cast<int>(i));
    }
}

std::vector<int> ChildNodeFinder::find(int root) const {
    std::vector<int> found;
    if (root < 0) {
        for (std::size_t i = 0; i < m_topology.nodes.size(); ++i)
            found.push_back(static_cast<int>(i));
        return found;
    }
    if (static_cast<std::size_t>(root) >= m_children.size())
        return found;
    found.push_back(root);
    for (std::size_t next = 0; next < found.size(); ++next)
        for (int child : m_children[static_cast<std::size_t>(found[next])])
            found.push_back(child);
    return found;
}

std::vector<int> ChildNodeFinder::findWithMeshes(int root) const {
    std::vector<int> found;
    for (int node : find(root))
        if (!m_topology.nodes[static_cast<std::size_t>(node)].meshIds.empty())
            found.push_back(node);
    return found;
}

} // namespace qrnsgutils
