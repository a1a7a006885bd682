#pragma once

#include "qrngldata/qrngldata_export.h"

#include <utility>
#include <vector>

namespace qrngl {

// One pick hit: the depth range of what was hit and the names that identify the entity.
class QRNGLDATA_EXPORT PickResult {
public:
    PickResult() = default;
    PickResult(float minDepth, float maxDepth, std::vector<unsigned int> names)
        : m_minDepth(minDepth), m_maxDepth(maxDepth), m_names(std::move(names)) {}

    float minDepth() const { return m_minDepth; }
    float maxDepth() const { return m_maxDepth; }
    const std::vector<unsigned int>& names() const { return m_names; }
    std::vector<unsigned int>::const_iterator begin() const { return m_names.begin(); }
    std::vector<unsigned int>::const_iterator end() const { return m_names.end(); }

private:
    float m_minDepth = 0.0f;
    float m_maxDepth = 0.0f;
    std::vector<unsigned int> m_names;
};

} // namespace qrngl
