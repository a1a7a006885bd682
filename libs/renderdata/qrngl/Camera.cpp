#include "qrngl/Camera.h"

#include "qrnmath/MatrixUtils.h"

#include <algorithm>
#include <cmath>

namespace qrngl {

using qrnmath::Mat4;
using qrnmath::Vec3;

namespace {

bool positive(float v) {
    return std::isfinite(v) && v > 0.0f;
}

// Row i of the rotation: the world vector that view axis i looks along.
Vec3 row(const Mat4& r, int i) {
    return Vec3(r[i], r[4 + i], r[8 + i]);
}

} // namespace

Camera::Camera()
    : m_centre(0.0f, 0.0f, 0.0f), m_radius(1.0f), m_rotation(qrnmath::MatrixUtils::identity()),
      m_translation(0.0f, 0.0f, 0.0f), m_zoom(1.0f), m_projection(PERSPECTIVE), m_fovy(30.0f),
      m_width(1), m_height(1), m_sceneCentre(0.0f, 0.0f, 0.0f), m_sceneRadius(0.0f) {}

void Camera::setSphere(const Vec3& centre, float radius) {
    m_centre = centre;
    if (positive(radius))
        m_radius = radius;
}

void Camera::setZoomFactor(float zoom) {
    if (positive(zoom))
        m_zoom = std::min(maxZoomFactor(), std::max(minZoomFactor(), zoom));
}

// A million times in or out of the fitted view: far past any use, and float depth and pan
// arithmetic stay well inside their precision.
float Camera::minZoomFactor() {
    return 1e-6f;
}

float Camera::maxZoomFactor() {
    return 1e6f;
}

void Camera::setModelRotation(const Mat4& rotation) {
    // A rotation as good as float holds is kept to the bit (a restored view is exact).
    const Vec3 rx = row(rotation, 0), ry = row(rotation, 1), rz = row(rotation, 2);
    const float e = 2e-6f;
    if (std::abs(rx.length() - 1.0f) < e && std::abs(ry.length() - 1.0f) < e &&
        std::abs(rz.length() - 1.0f) < e && std::abs(rx.dot(ry)) < e && std::abs(rx.dot(rz)) < e &&
        std::abs(ry.dot(rz)) < e && qrnmath::cross(rx, ry).dot(rz) > 0.0f) {
        m_rotation = rotation;
        return;
    }
    // Gram-Schmidt on the rows (the view axes in world space), z first: the view direction
    // keeps its way, x is made square to it, y completes a right-handed frame.
    Vec3 z = row(rotation, 2), x = row(rotation, 0);
    const float zLength = z.length();
    if (!positive(zLength))
        return;
    z = z * (1.0f / zLength);
    x = x - z * x.dot(z);
    const float xLength = x.length();
    if (!positive(xLength))
        return;
    x = x * (1.0f / xLength);
    const Vec3 y = qrnmath::cross(z, x);
    Mat4 r = qrnmath::MatrixUtils::identity();
    for (int i = 0; i < 3; ++i) {
        r[4 * i + 0] = x[i];
        r[4 * i + 1] = y[i];
        r[4 * i + 2] = z[i];
    }
    m_rotation = r;
}

void Camera::setFieldOfView(float degrees) {
    if (std::isfinite(degrees))
        m_fovy = std::min(170.0f, std::max(1.0f, degrees));
}

void Camera::setViewport(unsigned int width, unsigned int height) {
    m_width = std::max(1u, width);
    m_height = std::max(1u, height);
}

float Camera::aspect() const {
    return static_cast<float>(m_width) / static_cast<float>(m_height);
}

void Camera::setSceneSphere(const Vec3& centre, float radius) {
    m_sceneCentre = centre;
    m_sceneRadius = positive(radius) ? radius : 0.0f;
}

float Camera::viewDistance() const {
    const float pi = 3.14159265358979f;
    return m_radius / std::tan(m_fovy * pi / 360.0f);
}

float Camera::halfWidth() const {
    float a = aspect();
    return m_radius * m_zoom * (a >= 1.0f ? a : 1.0f);
}

float Camera::halfHeight() const {
    float a = aspect();
    return m_radius * m_zoom * (a >= 1.0f ? 1.0f : 1.0f / a);
}

float Camera::unitsPerPixel() const {
    return 2.0f * halfHeight() / static_cast<float>(m_height);
}

void Camera::depthRange(float& n, float& f) const {
    // A point's depth is the eye's distance less its offset from the centre towards the eye.
    const float d = viewDistance();
    n = d - m_radius * 1.05f;
    f = d + m_radius * 1.05f;
    if (m_sceneRadius > 0.0f) {
        const float s = d - row(m_rotation, 2).dot(m_sceneCentre - m_centre);
        n = std::min(n, s - m_sceneRadius * 1.05f);
        f = std::max(f, s + m_sceneRadius * 1.05f);
    }
    // In perspective: in front of the eye, and close enough to the far plane for the depth
    // buffer's precision (an eye inside the scene loses what is right in front of it).
    if (m_projection != ORTHOGRAPHIC)
        n = std::max(n, f * 1e-4f);
}

float Camera::nearPlane() const {
    float n = 0.0f, f = 0.0f;
    depthRange(n, f);
    return n;
}

float Camera::farPlane() const {
    float n = 0.0f, f = 0.0f;
    depthRange(n, f);
    return f;
}

Mat4 Camera::getViewMatrix() const {
    // T(pan, -distance) * R * T(-centre), with the pan's z left out.
    Mat4 m = m_rotation;
    m[3] = m[7] = m[11] = 0.0f;
    m[15] = 1.0f;
    const Vec3 rc = qrnmath::MatrixUtils::transformVector(m_rotation, m_centre);
    m[12] = m_translation[0] - rc[0];
    m[13] = m_translation[1] - rc[1];
    m[14] = -viewDistance() - rc[2];
    return m;
}

Mat4 Camera::getProjectionMatrix() const {
    float n = 0.0f, f = 0.0f;
    depthRange(n, f);
    const float w = halfWidth(), h = halfHeight();
    if (m_projection == ORTHOGRAPHIC)
        return qrnmath::MatrixUtils::ortho(-w, w, -h, h, n, f);
    // The frustum through the view's rectangle at the centre's depth: zooming narrows the
    // lens while the eye stays where it is.
    const float d = viewDistance();
    Mat4 m;
    m[0] = d / w;
    m[5] = d / h;
    m[10] = (f + n) / (n - f);
    m[11] = -1.0f;
    m[14] = 2.0f * f * n / (n - f);
    return m;
}

Vec3 Camera::eye() const {
    return target() + row(m_rotation, 2) * viewDistance();
}

Vec3 Camera::target() const {
    return m_centre - row(m_rotation, 0) * m_translation[0] - row(m_rotation, 1) * m_translation[1];
}

Vec3 Camera::direction() const {
    return -row(m_rotation, 2).normalized();
}

Vec3 Camera::up() const {
    return row(m_rotation, 1).normalized();
}

Vec3 Camera::right() const {
    return row(m_rotation, 0).normalized();
}

} // namespace qrngl
