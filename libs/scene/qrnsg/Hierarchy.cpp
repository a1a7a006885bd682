#include "qrnsg/Hierarchy.h"

#include <algorithm>

namespace qrnsg {

bool Hierarchy::add(int id, int parent) {
    if (m_nodes.count(id) || (parent != NONE && !m_nodes.count(parent)))
        return false;
    m_nodes[id].parent = parent;
    if (parent == NONE)
        m_roots.push_back(id);
    else
        m_nodes[parent].children.push_back(id);
    return true;
}

bool Hierarchy::remove(int id) {
    auto it = m_nodes.find(id);
    if (it == m_nodes.end())
        return false;
    int parent = it->second.parent;
    auto& siblings = parent == NONE ? m_roots : m_nodes[parent].children;
    siblings.erase(std::remove(siblings.begin(), siblings.end(), id), siblings.end());
    for (int n : subtree(id))
        m_nodes.erase(n);
    return true;
}

int Hierarchy::parent(int id) const {
    auto it = m_nodes.find(id);
    return it == m_nodes.end() ? NONE : it->second.parent;
}

const std::vector<int>& Hierarchy::children(int id) const {
    static const std::vector<int> none;
    auto it = m_nodes.find(id);
    return it == m_nodes.end() ? none : it->second.children;
}

int Hierarchy::depth(int id) const {
    if (!contains(id))
        return -1;
    int d = 0;
    for (int p = parent(id); p != NONE; p = parent(p))
        ++d;
    return d;
}

std::vector<int> Hierarchy::subtree(int id) const {
    std::vector<int> out;
    if (!contains(id))
        return out;
    out.push_back(id);
    for (std::size_t i = 0; i < out.size(); ++i) {
        // Depth-first order: insert the children right after their parent.
        const auto& c = children(out[i]);
        out.insert(out.begin() + static_cast<std::ptrdiff_t>(i) + 1, c.begin(), c.end());
    }
    return out;
}

void Hierarchy::visitFrom(int id, int depth, const std::function<void(int, int)>& f) const {
    f(id, depth);
    for (int c : children(id))
        visitFrom(c, depth + 1, f);
}

void Hierarchy::visit(const std::function<void(int id, int depth)>& f) const {
    for (int r : m_roots)
        visitFrom(r, 0, f);
}

void Hierarchy::clear() {
    m_nodes.clear();
    m_roots.clear();
}

} // namespace qrnsg
