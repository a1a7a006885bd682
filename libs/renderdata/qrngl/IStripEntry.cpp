#include "qrngl/IStripEntry.h"

namespace qrngl {

IStripEntry::~IStripEntry() = default;

void IStripEntry::renderRanges(const std::vector<Range>& ranges,
                               const std::function<void(std::size_t)>& before) const {
    if (ranges.empty())
        return;
    if (before)
        before(0);
    render();
}

void IStripEntry::release() {}

} // namespace qrngl
