#include "qrnsg/SCPmi.h"

namespace qrnsg {

SCPmi::SCPmi() : Schema(SCHEMA_PMI) {}

std::shared_ptr<Schema> SCPmi::clone() const {
    return std::make_shared<SCPmi>(*this);
}

void SCPmi::clear() {
    items.clear();
    sections.clear();
}

} // namespace qrnsg
