#include "qrngl/SCMeasure.h"

namespace qrngl {

SCMeasure::SCMeasure() : qrnsg::Schema(qrnsg::SCHEMA_MEASURE) {}

std::shared_ptr<qrnsg::Schema> SCMeasure::clone() const {
    return std::make_shared<SCMeasure>(*this);
}

void SCMeasure::clear() {
    clearAll();
}

void SCMeasure::clearAll() {
    measures.clear();
}

} // namespace qrngl
