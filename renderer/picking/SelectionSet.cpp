#include "qrngl/picking/SelectionSet.h"

#include <algorithm>

namespace qrngl {

unsigned short SelectionSet::mask() const {
    switch (m_mode) {
    case FACE:
        return 1;
    case EDGE:
        return 2;
    case VERTEX:
        return 4;
    case ANY:
        return 7 | 8 | 16; // PMI lines too
    default:
        return 1; // a part is taken by its faces
    }
}

bool SelectionSet::isSelected(unsigned int name) const {
    return std::find(m_selected.begin(), m_selected.end(), name) != m_selected.end();
}

bool SelectionSet::replace(const std::vector<unsigned int>& names) {
    std::vector<unsigned int> next;
    for (unsigned int n : names)
        if (n != 0 && std::find(next.begin(), next.end(), n) == next.end())
            next.push_back(n);
    if (next == m_selected)
        return false;
    m_selected = std::move(next);
    return true;
}

bool SelectionSet::add(const std::vector<unsigned int>& names) {
    bool changed = false;
    for (unsigned int n : names)
        if (n != 0 && !isSelected(n)) {
            m_selected.push_back(n);
            changed = true;
        }
    return changed;
}

bool SelectionSet::toggle(unsigned int name) {
    if (name == 0)
        return false;
    auto found = std::find(m_selected.begin(), m_selected.end(), name);
    if (found == m_selected.end())
        m_selected.push_back(name);
    else
        m_selected.erase(found);
    return true;
}

bool SelectionSet::clear() {
    if (m_selected.empty())
        return false;
    m_selected.clear();
    return true;
}

bool SelectionSet::setHovered(unsigned int name) {
    if (name == m_hovered)
        return false;
    m_hovered = name;
    return true;
}

} // namespace qrngl
