#pragma once

#include "qrngl/Camera.h"
#include "qrngldata/qrngldata_export.h"

#include <memory>

namespace qrngl {

// All camera arithmetic goes through here.
class QRNGLDATA_EXPORT CameraHelper {
public:
    static void setViewport(unsigned int width, unsigned int height,
                            const std::shared_ptr<Camera>& camera);
    // The rotation that turns a text drawn in its own XY plane to face the viewer: the inverse
    // of the view's rotation.
    static qrnmath::Mat4 getBillboardRotation(const std::shared_ptr<Camera>& camera);
    // Places the camera to see the whole sphere from its current direction.
    static void fit(const std::shared_ptr<Camera>& camera, const qrnmath::Vec3& center,
                    float radius);
};

} // namespace qrngl
