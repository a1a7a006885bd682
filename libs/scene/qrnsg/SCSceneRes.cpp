#include "qrnsg/SCSceneRes.h"

namespace qrnsg {

SCSceneRes::SCSceneRes() : Schema(SCHEMA_SCENE_RES) {}

std::shared_ptr<Schema> SCSceneRes::clone() const {
    return std::make_shared<SCSceneRes>(*this);
}

void SCSceneRes::clear() {
    meshes.clear();
    polylines.clear();
}

} // namespace qrnsg
