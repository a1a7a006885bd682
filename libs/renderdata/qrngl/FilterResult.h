#pragma once

#include "qrngldata/qrngldata_export.h"

#include <cstddef>
#include <vector>

namespace qrngl {

// What a filter kept of a pick: the chosen entities' names, the most wanted first, each with
// the depth it was hit at (0 where the pass gives none).
class QRNGLDATA_EXPORT FilterResult {
public:
    void add(unsigned int name, float depth = 0.0f);
    void clear();
    bool empty() const { return m_names.empty(); }
    std::size_t size() const { return m_names.size(); }
    unsigned int name(std::size_t i) const { return m_names[i]; }
    float depth(std::size_t i) const { return m_depths[i]; }
    const std::vector<unsigned int>& names() const { return m_names; }

private:
    std::vector<unsigned int> m_names;
    std::vector<float> m_depths;
};

} // namespace qrngl
