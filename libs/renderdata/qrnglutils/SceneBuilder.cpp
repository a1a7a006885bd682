#include "qrnglutils/SceneBuilder.h"

#include "qrnglutils/MeshStripEntry.h"
#include "qrnglutils/PolylineStripEntry.h"

namespace qrnglutils {

void SceneBuilder::buildDrawables(const qrnsg::SCScene& scene, qrngl::SCStripRenderer& strips) {
    strips.meshes.clear();
    strips.coarseMeshes.clear();
    strips.polylines.clear();
    strips.points.clear();
    strips.meshes.reserve(scene.meshes.size());
    for (const auto& m : scene.meshes) {
        auto entry = std::make_shared<MeshStripEntry>(m);
        if (entry->coarseTriangleCount() > 0) {
            strips.coarseMeshes.resize(scene.meshes.size());
            strips.coarseMeshes[strips.meshes.size()] =
                std::make_shared<MeshStripEntry::Coarse>(entry);
        }
        strips.meshes.push_back(std::move(entry));
    }
    for (const auto& p : scene.polylines)
        strips.polylines.push_back(std::make_shared<PolylineStripEntry>(p));
    for (const auto& p : scene.points)
        strips.points.push_back(std::make_shared<PolylineStripEntry>(p));
}

void SceneBuilder::prepare(const qrngl::SCStripRenderer& strips) {
    for (const auto& e : strips.meshes)
        if (auto m = std::dynamic_pointer_cast<MeshStripEntry>(e))
            m->prepare();
    for (const auto* list : {&strips.polylines, &strips.points})
        for (const auto& e : *list)
            if (auto p = std::dynamic_pointer_cast<PolylineStripEntry>(e))
                p->prepare();
}

} // namespace qrnglutils
