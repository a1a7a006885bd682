#include "qrnsg/SCPmi.h"

#include <algorithm>

namespace qrnsg {

SCPmi::SCPmi() : Schema(SCHEMA_PMI) {}

std::shared_ptr<Schema> SCPmi::clone() const {
    return std::make_shared<SCPmi>(*this);
}

void SCPmi::clear() {
    items.clear();
    sections.clear();
}

int SCPmi::itemOf(int primitiveId) const {
    for (std::size_t i = 0; i < items.size(); ++i)
        for (const auto* ids : {&items[i].polylineIds, &items[i].textIds, &items[i].meshIds})
            if (std::find(ids->begin(), ids->end(), primitiveId) != ids->end())
                return static_cast<int>(i);
    return -1;
}

} // namespace qrnsg
