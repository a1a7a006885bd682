#include "qrnsg/SCInfo.h"

namespace qrnsg {

SCInfo::SCInfo() : Schema(SCHEMA_INFO) {}

std::shared_ptr<Schema> SCInfo::clone() const {
    return std::make_shared<SCInfo>(*this);
}

void SCInfo::clear() {
    *this = SCInfo();
}

} // namespace qrnsg
