#include "qrnsg/SCScene.h"

namespace qrnsg {

SCScene::SCScene() : Schema(SCHEMA_SCENE) {}

std::shared_ptr<Schema> SCScene::clone() const {
    return std::make_shared<SCScene>(*this);
}

void SCScene::clear() {
    *this = SCScene();
}

BBox SCScene::bbox() const {
    BBox b;
    for (const auto& m : meshes)
        b.add(m.bbox());
    for (const auto& p : polylines)
        b.add(p.bbox());
    for (const auto& s : points)
        for (const auto& p : s.points)
            b.add(p);
    return b;
}

} // namespace qrnsg
