#pragma once

#include "qrngl/Camera.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/SCView.h"

#include <memory>

namespace qrnglutils {

// Shows a saved view of the view component: the camera looks from the view's eye at its
// target with its up, and the view's height at the target fills the viewport's height. A view
// without a height keeps the extent that the camera's field of view has at the target from
// the view's eye. Pan cleared, zoom factor 1; the camera's projection stays as it is.
class QRNGLUTILS_EXPORT ViewActivator {
public:
    // False, changing nothing, for an index out of range, an empty camera, or a view whose eye
    // and target coincide or whose up lies along its direction.
    static bool apply(const qrnsg::SCView& views, int index,
                      const std::shared_ptr<qrngl::Camera>& camera);
};

} // namespace qrnglutils
