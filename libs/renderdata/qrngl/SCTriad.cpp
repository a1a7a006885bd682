#include "qrngl/SCTriad.h"

namespace qrngl {

SCTriad::SCTriad() : qrnsg::Schema(qrnsg::SCHEMA_TRIAD) {}

std::shared_ptr<qrnsg::Schema> SCTriad::clone() const {
    return std::make_shared<SCTriad>(*this);
}

void SCTriad::clear() {
    *this = SCTriad();
}

} // namespace qrngl
