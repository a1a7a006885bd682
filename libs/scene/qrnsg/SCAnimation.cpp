#include "qrnsg/SCAnimation.h"

namespace qrnsg {

SCAnimation::SCAnimation() : Schema(SCHEMA_ANIMATION) {}

std::shared_ptr<Schema> SCAnimation::clone() const {
    return std::make_shared<SCAnimation>(*this);
}

void SCAnimation::clear() {}

} // namespace qrnsg
