#include "qrnglutils/ViewActivator.h"

#include "qrngl/CameraHelper.h"

#include <cmath>

namespace qrnglutils {

bool ViewActivator::apply(const qrnsg::SCView& views, int index,
                          const std::shared_ptr<qrngl::Camera>& camera) {
    if (!camera || index < 0 || static_cast<std::size_t>(index) >= views.views.size())
        return false;
    const qrnsg::SCView::View& view = views.views[static_cast<std::size_t>(index)];
    const float pi = 3.14159265358979f;
    float height = view.viewHeight;
    if (!(height > 0.0f))
        height =
            2.0f * view.eye.distance(view.target) * std::tan(camera->fieldOfView() * pi / 360.0f);
    // The sphere spans the viewport's smaller extent; a tall viewport's height is larger.
    const float a = camera->aspect();
    const float radius = 0.5f * height * (a >= 1.0f ? 1.0f : a);
    if (!std::isfinite(radius) || radius <= 0.0f)
        return false;
    if (!qrngl::CameraHelper::lookAt(camera, view.eye, view.target, view.up))
        return false;
    qrngl::CameraHelper::lookAt(camera, view.target, radius);
    return true;
}

} // namespace qrnglutils
