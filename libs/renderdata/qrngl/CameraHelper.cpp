#include "qrngl/CameraHelper.h"

#include "qrnmath/MatrixUtils.h"

#include <algorithm>
#include <cmath>

namespace qrngl {

void CameraHelper::setViewport(unsigned int width, unsigned int height,
                               const std::shared_ptr<Camera>& camera) {
    if (camera)
        camera->setViewport(width, height);
}

qrnmath::Mat4 CameraHelper::getBillboardRotation(const std::shared_ptr<Camera>& camera) {
    if (!camera)
        return qrnmath::MatrixUtils::identity();
    qrnmath::Mat4 r = qrnmath::MatrixUtils::transpose(camera->getViewMatrix());
    r[3] = r[7] = r[11] = 0.0f; // the transpose carried the translation into the last row
    r[12] = r[13] = r[14] = 0.0f;
    r[15] = 1.0f;
    return r;
}

void CameraHelper::fit(const std::shared_ptr<Camera>& camera, const qrnmath::Vec3& center,
                       float radius) {
    if (!camera)
        return;
    if (radius <= 0.0f)
        radius = 1.0f;
    qrnmath::Vec3 dir = camera->direction();
    if (dir.lengthSquared() == 0.0f)
        dir = qrnmath::Vec3(0.0f, 0.0f, -1.0f);
    const float pi = 3.14159265358979f;
    // The sphere must fit the smaller of the two view extents.
    float halfAngle = camera->fieldOfView() * pi / 360.0f;
    float aspect = std::min(1.0f, camera->aspect());
    float dist = radius / std::sin(std::atan(std::tan(halfAngle) * aspect));
    camera->setTarget(center);
    camera->setEye(center - dir * dist);
    camera->setViewHeight(2.0f * radius / aspect);
    camera->setSceneSphere(center, radius);
}

} // namespace qrngl
