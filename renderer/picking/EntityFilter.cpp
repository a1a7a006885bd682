#include "qrngl/picking/EntityFilter.h"

#include "qrngl/picking/PickingHelper.h"
#include "qrnsg/EntityNames.h"

#include <unordered_set>

namespace qrngl {

using qrnsg::EntityNames;

namespace {
// Keeps the filtered names.
class Collect : public ISelector {
public:
    explicit Collect(std::vector<unsigned int>& names) : m_names(names) {}
    void select(unsigned int, const FilterResult& result) override { m_names = result.names(); }

private:
    std::vector<unsigned int>& m_names;
};
} // namespace

unsigned int EntityFilter::nearest(const std::shared_ptr<IPickCanvas>& canvas, unsigned short type,
                                   int x, int y, int size) {
    std::vector<unsigned int> names;
    PickingHelper::pick(canvas, std::make_shared<EntityFilter>(type, NEAREST),
                        std::make_shared<Collect>(names), 0, x, y, size);
    return names.empty() ? 0u : names.front();
}

std::vector<unsigned int> EntityFilter::inside(std::shared_ptr<SCRenderer>& renderer,
                                               unsigned short type, int x0, int y0, int x1,
                                               int y1) {
    std::vector<unsigned int> names;
    PickingHelper::pickbox(renderer, std::make_shared<EntityFilter>(type, ALL),
                           std::make_shared<Collect>(names), 0, x0, y0, x1, y1);
    return names;
}

bool EntityFilter::wanted(unsigned int name) const {
    switch (EntityNames::kindOf(name)) {
    case EntityNames::FACE:
    case EntityNames::PART: // a cut part's cap
        return (m_type & 1) != 0;
    case EntityNames::TOOL:
        return (m_type & 32) != 0;
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
