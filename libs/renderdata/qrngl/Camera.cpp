#include "qrngl/Camera.h"

#include "qrnmath/MatrixUtils.h"

#include <algorithm>
#include <cmath>

namespace qrngl {

using qrnmath::Vec3;

Camera::Camera()
    : m_eye(0.0f, 0.0f, 10.0f), m_target(0.0f, 0.0f, 0.0f), m_up(0.0f, 1.0f, 0.0f),
      m_projection(PERSPECTIVE), m_fovy(30.0f), m_viewHeight(2.0f), m_width(1), m_height(1),
      m_sceneCenter(0.0f, 0.0f, 0.0f), m_sceneRadius(1.0f) {}

Vec3 Camera::direction() const {
    return (m_target - m_eye).normalized();
}

float Camera::distance() const {
    return m_eye.distance(m_target);
}

float Camera::viewHeight() const {
    if (m_projection == ORTHOGRAPHIC)
        return m_viewHeight;
    const float pi = 3.14159265358979f;
    return 2.0f * distance() * std::tan(m_fovy * pi / 360.0f);
}

void Camera::setViewport(unsigned int width, unsigned int height) {
    m_width = std::max(1u, width);
    m_height = std::max(1u, height);
}

float Camera::aspect() const {
    return static_cast<float>(m_width) / static_cast<float>(m_height);
}

void Camera::setSceneSphere(const Vec3& center, float radius) {
    m_sceneCenter = center;
    m_sceneRadius = radius > 0.0f ? radius : 1.0f;
}

float Camera::nearPlane() const {
    // Distance along the view direction to the sphere's near side, with a margin.
    float d = (m_sceneCenter - m_eye).dot(direction());
    float n = d - m_sceneRadius * 1.05f;
    if (m_projection == ORTHOGRAPHIC)
        return n;
    // A perspective near plane must stay in front of the eye; keep the depth range bounded.
    return std::max(n, std::max(farPlane() * 1e-4f, 1e-6f));
}

float Camera::farPlane() const {
    float d = (m_sceneCenter - m_eye).dot(direction());
    float f = d + m_sceneRadius * 1.05f;
    return std::max(f, 1e-5f);
}

qrnmath::Mat4 Camera::getViewMatrix() const {
    return qrnmath::MatrixUtils::lookAt(m_eye, m_target, m_up);
}

qrnmath::Mat4 Camera::getProjectionMatrix() const {
    float n = nearPlane(), f = farPlane();
    if (f <= n)
        f = n + 1.0f;
    if (m_projection == PERSPECTIVE)
        return qrnmath::MatrixUtils::perspective(m_fovy, aspect(), n, f);
    float h = m_viewHeight * 0.5f, w = h * aspect();
    return qrnmath::MatrixUtils::ortho(-w, w, -h, h, n, f);
}

float Camera::zoomFactor() const {
    return viewHeight() / static_cast<float>(m_height);
}

} // namespace qrngl
