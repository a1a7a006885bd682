#include "qrngl/picking/EntityFilter.h"

#include "qrnsg/EntityNames.h"

#include <unordered_set>

namespace qrngl {

using qrnsg::EntityNames;

bool EntityFilter::wanted(unsigned int name) const {
    switch (EntityNames::kindOf(name)) {
    case EntityNames::FACE:
        return (m_type & 1) != 0;
    case EntityNames::EDGE:
        return (m_type & 2) != 0;
    case EntityNames::POINT:
        return (m_type & 4) != 0;
    case EntityNames::EDGE_LIKE:
        return (m_type & 8) && (m_type & 16);
    default:
        return false;
    }
}

void EntityFilter::filter(const std::vector<PickResult>& hits) {
    m_result.clear();
    const PickResult* nearest = nullptr;
    unsigned int nearestName = 0;
    std::unordered_set<unsigned int> seen;
    for (const PickResult& hit : hits) {
        // The innermost name is the entity's.
        if (hit.names().empty() || !wanted(hit.names().back()))
            continue;
        const unsigned int name = hit.names().back();
        if (m_mode == ALL) {
            if (seen.insert(name).second)
                m_result.add(name, hit.minDepth());
        } else if (!nearest || hit.minDepth() < nearest->minDepth()) {
            nearest = &hit;
            nearestName = name;
        }
    }
    if (nearest)
        m_result.add(nearestName, nearest->minDepth());
}

} // namespace qrngl
