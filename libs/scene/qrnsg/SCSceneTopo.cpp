#include "qrnsg/SCSceneTopo.h"

namespace qrnsg {

SCSceneTopo::SCSceneTopo() : Schema(SCHEMA_SCENE_TOPO) {}

std::shared_ptr<Schema> SCSceneTopo::clone() const {
    return std::make_shared<SCSceneTopo>(*this);
}

void SCSceneTopo::clear() {
    nodes.clear();
}

} // namespace qrnsg
