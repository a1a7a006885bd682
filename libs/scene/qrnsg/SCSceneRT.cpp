#include "qrnsg/SCSceneRT.h"

#include "qrnsg/VisibilityFunctor.h"

#include "qrnmath/MatrixUtils.h"

#include <algorithm>

namespace qrnsg {

void RTState::add(int id, int drawable, int material, unsigned char extraFlags) {
    // Adding an id again replaces its state; it is still drawn once.
    if (!transforms.contains(id))
        drawOrder.push_back(id);
    transforms.set(id, TransformPair(qrnmath::MatrixUtils::identity(), drawable));
    flags.set(id, static_cast<unsigned char>(VISIBLE | extraFlags));
    materials.set(id, material);
}

bool RTState::setVisible(int id, bool shown) {
    unsigned char* current = flags.find(id);
    if (!current)
        return false;
    if (auto visibility = std::dynamic_pointer_cast<VisibilityFunctor>(functor)) {
        if (shown)
            visibility->show(id);
        else
            visibility->hide(id);
    }
    const auto next = static_cast<unsigned char>(shown ? *current | VISIBLE : *current & ~VISIBLE);
    if (next == *current)
        return false;
    *current = next;
    return true;
}

void RTState::clear() {
    transforms.clear();
    flags.clear();
    materials.clear();
    drawOrder.clear();
}

SCSceneRT::SCSceneRT() : Schema(SCHEMA_SCENE_RT) {}

std::shared_ptr<Schema> SCSceneRT::clone() const {
    return std::make_shared<SCSceneRT>(*this);
}

void SCSceneRT::clear() {
    *this = SCSceneRT();
}

int SCSceneRT::addMeshMaterial(int sceneMaterial, bool transparent, int texture) {
    meshSceneMaterials.push_back(sceneMaterial);
    meshTextures.push_back(texture);
    MeshMaterialRecord r;
    if (transparent)
        r.bytes[0] = MeshMaterialRecord::TRANSPARENT;
    meshMaterialRecords.push_back(r);
    return static_cast<int>(meshSceneMaterials.size()) - 1;
}

void SCSceneRT::sortMeshDrawOrder() {
    auto key = [this](int id) {
        const int* m = meshes.materials.find(id);
        int mat = m ? *m : -1;
        bool transparent = mat >= 0 && static_cast<std::size_t>(mat) < meshMaterialRecords.size() &&
                           meshMaterialRecords[static_cast<std::size_t>(mat)].isTransparent();
        return std::make_pair(transparent ? 1 : 0, mat);
    };
    std::stable_sort(meshes.drawOrder.begin(), meshes.drawOrder.end(),
                     [&](int a, int b) { return key(a) < key(b); });
}

} // namespace qrnsg
