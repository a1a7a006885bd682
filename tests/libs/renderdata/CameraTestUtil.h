#pragma once

#include "qrngl/Camera.h"
#include "qrngl/CameraHelper.h"
#include "qrnmath/MatrixUtils.h"

#include <cmath>
#include <memory>
#include <vector>

namespace qrngltest {

inline qrnmath::Vec3 toNdc(const qrngl::Camera& c, const qrnmath::Vec3& p) {
    using M = qrnmath::MatrixUtils;
    return M::transformPoint(M::multiply(c.getProjectionMatrix(), c.getViewMatrix()), p);
}

// Where a world point shows in the window: pixels from the top-left corner, and depth.
inline qrnmath::Vec3 toWindow(const std::shared_ptr<qrngl::Camera>& c, const qrnmath::Vec3& p) {
    return qrnmath::MatrixUtils::transformPoint(qrngl::CameraHelper::getModelToScreen(c), p);
}

// The world point shown at window pixel (x, y) at the depth where the world point `at` shows.
inline qrnmath::Vec3 fromWindow(const std::shared_ptr<qrngl::Camera>& c, float x, float y,
                                const qrnmath::Vec3& at) {
    qrnmath::Mat4 inv;
    qrnmath::MatrixUtils::invert(qrngl::CameraHelper::getModelToScreen(c), inv);
    return qrnmath::MatrixUtils::transformPoint(inv, qrnmath::Vec3(x, y, toWindow(c, at)[2]));
}

// Points spread over a sphere's surface, poles included.
inline std::vector<qrnmath::Vec3> spherePoints(const qrnmath::Vec3& center, float radius) {
    std::vector<qrnmath::Vec3> out;
    const float step = 3.14159265f / 24.0f;
    for (int i = 0; i <= 24; ++i)
        for (int j = 0; j < 48; ++j) {
            const float t = step * static_cast<float>(i), p = step * static_cast<float>(j);
            out.push_back(center + qrnmath::Vec3(std::sin(t) * std::cos(p), std::cos(t),
                                                 std::sin(t) * std::sin(p)) *
                                       radius);
        }
    return out;
}

// An oblique camera: looking from (12, 9, 20) at the sphere's centre with a slanted up vector.
inline std::shared_ptr<qrngl::Camera> obliqueCamera(qrngl::Camera::Projection projection,
                                                    unsigned int width = 800,
                                                    unsigned int height = 500) {
    auto c = std::make_shared<qrngl::Camera>();
    c->setProjection(projection);
    c->setFieldOfView(40.0f);
    c->setViewport(width, height);
    qrngl::CameraHelper::lookAt(c, qrnmath::Vec3(12.0f, 9.0f, 20.0f),
                                qrnmath::Vec3(1.0f, 2.0f, -1.0f), qrnmath::Vec3(0.2f, 1.0f, 0.1f));
    qrngl::CameraHelper::lookAt(c, qrnmath::Vec3(1.0f, 2.0f, -1.0f), 4.0f);
    return c;
}

} // namespace qrngltest
