#include "qrnglutils/SceneBuilder.h"

#include "qrnglutils/MeshStripEntry.h"
#include "qrnglutils/PolylineStripEntry.h"
#include "qrnglutils/TextStripEntry.h"

namespace qrnglutils {

void SceneBuilder::buildDrawables(const qrnsg::SCScene& scene, qrngl::SCStripRenderer& strips,
                                  const std::wstring& face, const std::wstring& fallback) {
    buildDrawables(scene, strips);
    if (scene.texts.empty())
        return;
    auto font = std::make_shared<TextFont>(face, fallback);
    strips.texts.reserve(scene.texts.size());
    for (const auto& t : scene.texts)
        strips.texts.push_back(std::make_shared<TextStripEntry>(t, font));
}

void SceneBuilder::buildDrawables(const qrnsg::SCScene& scene, qrngl::SCStripRenderer& strips) {
    strips.meshes.clear();
    strips.coarseMeshes.clear();
    strips.polylines.clear();
    strips.points.clear();
    strips.texts.clear();
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
    for (const auto& e : strips.texts)
        if (auto t = std::dynamic_pointer_cast<TextStripEntry>(e))
            t->prepare();
}

} // namespace qrnglutils
