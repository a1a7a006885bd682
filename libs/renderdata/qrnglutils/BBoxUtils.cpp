#include "qrnglutils/BBoxUtils.h"

#include "qrngl/CameraHelper.h"
#include "qrnmath/MatrixUtils.h"

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
    for (const auto& entry : state.transforms) {
        const unsigned char* flags = state.flags.find(entry.first);
        const unsigned char f = flags ? *flags : 0;
        if (visibleOnly && !(f & RTState::VISIBLE))
            continue;
        const int drawable = entry.second.second;
        if (drawable < 0 || static_cast<std::size_t>(drawable) >= drawables.size())
            continue;
        const auto d = static_cast<std::size_t>(drawable);
        if (!known[d]) {
            local[d] = drawables[d].bbox();
            known[d] = true;
        }
        if (local[d].isEmpty())
            continue;
        box.add((f & RTState::HAS_TRANSFORM) ? transformed(local[d], entry.second.first)
                                             : local[d]);
    }
}

} // namespace

BBox BBoxUtils::get(const qrnsg::SCScene& scene, const qrnsg::SCSceneRT& rt, bool visibleOnly) {
    BBox box;
    addPrimitives(scene.meshes, rt.meshes, visibleOnly, box);
    addPrimitives(scene.polylines, rt.polylines, visibleOnly, box);
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

} // namespace qrnglutils
