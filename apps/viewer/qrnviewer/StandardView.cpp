#include "qrnviewer/StandardView.h"

#include "qrngl/CameraHelper.h"

#include <algorithm>

namespace qrnviewer {

using qrnmath::Vec3;

namespace {
struct View {
    const char* name;
    Vec3 direction; // from the eye towards the model
    Vec3 up;
};
const View kViews[] = {
    {"iso", Vec3(-1, 1, -1), Vec3(0, 0, 1)},   {"front", Vec3(0, 1, 0), Vec3(0, 0, 1)},
    {"back", Vec3(0, -1, 0), Vec3(0, 0, 1)},   {"left", Vec3(1, 0, 0), Vec3(0, 0, 1)},
    {"right", Vec3(-1, 0, 0), Vec3(0, 0, 1)},  {"top", Vec3(0, 0, -1), Vec3(0, 1, 0)},
    {"bottom", Vec3(0, 0, 1), Vec3(0, -1, 0)},
};
} // namespace

const std::vector<std::string>& StandardView::names() {
    static const std::vector<std::string> n = [] {
        std::vector<std::string> v;
        for (const auto& view : kViews)
            v.emplace_back(view.name);
        return v;
    }();
    return n;
}

bool StandardView::apply(const std::string& name, const qrnsg::BBox& box,
                         const std::shared_ptr<qrngl::Camera>& camera) {
    auto it = std::find_if(std::begin(kViews), std::end(kViews),
                           [&](const View& v) { return name == v.name; });
    if (it == std::end(kViews) || !camera)
        return false;
    Vec3 center = box.isEmpty() ? Vec3() : box.center();
    float radius = box.isEmpty() ? 1.0f : std::max(box.diagonal() * 0.5f, 1e-3f);
    Vec3 dir = it->direction.normalized();
    camera->setTarget(center);
    camera->setEye(center - dir * radius * 3.0f);
    camera->setUp(it->up);
    qrngl::CameraHelper::fit(camera, center, radius);
    return true;
}

} // namespace qrnviewer
