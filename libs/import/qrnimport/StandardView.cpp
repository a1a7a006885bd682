#include "qrnimport/StandardView.h"

#include "qrngl/CameraHelper.h"

#include <algorithm>

namespace qrnimport {

using qrnsg::SCView;

namespace {
struct Named {
    const char* name;
    SCView::ORIENTATION orientation;
};
const Named kViews[] = {
    {"iso", SCView::ISOMETRIC}, {"front", SCView::FRONT}, {"back", SCView::BACK},
    {"left", SCView::LEFT},     {"right", SCView::RIGHT}, {"top", SCView::TOP},
    {"bottom", SCView::BOTTOM},
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

bool StandardView::orientation(const std::string& name, SCView::ORIENTATION& orientation) {
    auto it = std::find_if(std::begin(kViews), std::end(kViews),
                           [&](const Named& v) { return name == v.name; });
    if (it == std::end(kViews))
        return false;
    orientation = it->orientation;
    return true;
}

bool StandardView::apply(const std::string& name, const qrnsg::BBox& box,
                         const std::shared_ptr<qrngl::Camera>& camera) {
    SCView::ORIENTATION o = SCView::ISOMETRIC;
    if (!orientation(name, o) || !camera)
        return false;
    qrngl::CameraHelper::setRotation(camera, SCView::standardRotation(o));
    if (box.isEmpty())
        qrngl::CameraHelper::lookAt(camera, qrnmath::Vec3(0.0f, 0.0f, 0.0f), 1.0f);
    else
        qrngl::CameraHelper::lookAt(camera, box);
    return true;
}

} // namespace qrnimport
