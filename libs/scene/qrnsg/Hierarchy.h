#pragma once

#include "qrnsg/qrnsg_export.h"

#include <functional>
#include <unordered_map>
#include <vector>

namespace qrnsg {

// A forest of int-keyed nodes (the assembly tree). Children keep the order they were added in.
class QRNSG_EXPORT Hierarchy {
public:
    enum : int { NONE = -1 };

    // False when id is taken or the parent (other than NONE) is unknown.
    bool add(int id, int parent = NONE);
    // Removes the node and its whole subtree; false when unknown.
    bool remove(int id);
    bool contains(int id) const { return m_nodes.count(id) != 0; }
    int parent(int id) const; // NONE for a root or an unknown id
    const std::vector<int>& children(int id) const;
    const std::vector<int>& roots() const { return m_roots; }
    // Number of edges from the node's root (0 for a root, -1 for an unknown id).
    int depth(int id) const;
    // The node and all below it, parents before children, in child order.
    std::vector<int> subtree(int id) const;
    void visit(const std::function<void(int id, int depth)>& f) const;
    std::size_t size() const { return m_nodes.size(); }
    void clear();

private:
    struct Node {
        int parent = NONE;
        std::vector<int> children;
    };
    void visitFrom(int id, int depth, const std::function<void(int, int)>& f) const;

    std::unordered_map<int, Node> m_nodes;
    std::vector<int> m_roots;
};

} // namespace qrnsg
