#include "qrnglutils/BBoxUtils.h"

#include "qrngl/CameraHelper.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsgutils/InstanceWalker.h"

#include <vector>

namespace qrnglutils {

using qrnmath::Vec3;
using qrnsg::BBox;
using qrnsg::RTState;

namespace {

BBox transformed(const BBox& box, const qrnmath::Mat4& m) {
    BBox out;
    for (int i = 0; i < 8; ++i)
        out.add(qrnmath::MatrixUtils::transformPoint(
            m, Vec3((i & 1) ? box.max()[0] : box.min()[0], (i & 2) ? box.max()[1] : box.min()[1],
                    (i & 4) ? box.max()[2] : box.min()[2])));
    return out;
}

// Adds the boxes of one kind of primitive; the drawables' own boxes are worked out once.
template <class Drawable>
void addPrimitives(const std::vector<Drawable>& drawables, const RTState& state, bool visibleOnly,
                   BBox& box) {
    std::vector<BBox> local(drawables.size());
    std::vector<bool> known(drawables.size(), false);
    qrnsgutils::InstanceWalker::walk(
        state, drawables.size(),
        [&](const qrnsgutils::InstanceWalker::Instance& instance) {
            const auto d = static_cast<std::size_t>(instance.drawable);
            if (!known[d]) {
                local[d] = drawables[d].bbox();
                known[d] = true;
            }
            if (!local[d].isEmpty())
                box.add(instance.transform ? transformed(local[d], *instance.transform) : local[d]);
        },
        visibleOnly);
}

} // namespace

BBox BBoxUtils::get(const qrnsg::SCScene& scene, const qrnsg::SCSceneRT& rt, bool visibleOnly) {
    BBox box;
    addPrimitives(scene.meshes, rt.meshes, visibleOnly, box);
    addPrimitives(scene.polylines, rt.polylines, visibleOnly, box);
    addPrimitives(scene.texts, rt.texts, visibleOnly, box);
    return box;
}

BBox BBoxUtils::get(const qrnsg::SCSceneRes& resources, const qrnsg::SCSceneRT& rt,
                    bool visibleOnly) {
    BBox box;
    addPrimitives(resources.meshes, rt.meshes, visibleOnly, box);
    addPrimitives(resources.polylines, rt.polylines, visibleOnly, box);
    return box;
}

bool BBoxUtils::getSphere(const BBox& box, Vec3& centre, float& radius) {
    if (box.isEmpty())
        return false;
    centre = box.center();
    radius = 0.5f * box.diagonal();
    return true;
}

void BBoxUtils::updateCameraPosition(const std::shared_ptr<qrngl::Camera>& camera, const BBox& box,
                                     const qrnmath::Mat4& rotation, float& radius) {
    if (camera && !box.isEmpty())
        radius = qrngl::CameraHelper::getFitRadius(camera, box, rotation);
}

qrnsg::BBox BBoxUtils::getRoot(const std::shared_ptr<qrn::IDocument>& document) {
    auto scene = qrn::component<qrnsg::SCScene>(document, qrnsg::SCHEMA_SCENE);
    auto rt = qrn::component<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT);
    auto resources = qrn::component<qrnsg::SCSceneRes>(document, qrnsg::SCHEMA_SCENE_RES);
    if (!scene || !rt)
        return qrnsg::BBox();
    if (!scene->meshes.empty() || !scene->polylines.empty() || !resources)
        return get(*scene, *rt, false);
    return resources->empty() ? qrnsg::BBox() : get(*resources, *rt, false);
}

} // namespace qrnglutils
