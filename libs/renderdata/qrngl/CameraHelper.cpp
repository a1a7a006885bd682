#include "qrngl/CameraHelper.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnmath/QuatUtils.h"

#include <algorithm>
#include <cmath>

namespace qrngl {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;
using qrnmath::QuatUtils;
using qrnmath::Vec3;

namespace {

const float kPi = 3.14159265358979f;
// The border lookAt(box) leaves, so that the model does not touch the window's edges.
const float kFitMargin = 1.05f;

// The window point's offset from the view's middle on the sphere centre's plane, in world
// units along the view's right and up.
void windowOffset(const Camera& c, float x, float y, float& ox, float& oy) {
    const float upp = c.unitsPerPixel();
    ox = (x - 0.5f * static_cast<float>(c.viewportWidth())) * upp;
    oy = (0.5f * static_cast<float>(c.viewportHeight()) - y) * upp;
}

// The view's half extents per unit of sphere radius.
void extentFactors(const Camera& c, float& ax, float& ay) {
    const float a = c.aspect();
    ax = a >= 1.0f ? a : 1.0f;
    ay = a >= 1.0f ? 1.0f : 1.0f / a;
}

} // namespace

void CameraHelper::setViewport(unsigned int width, unsigned int height, const CameraPtr& camera) {
    if (camera)
        camera->setViewport(width, height);
}

Mat4 CameraHelper::getBillboardRotation(const CameraPtr& camera) {
    if (!camera)
        return MatrixUtils::identity();
    Mat4 r = MatrixUtils::transpose(camera->modelRotation());
    r[3] = r[7] = r[11] = 0.0f;
    r[12] = r[13] = r[14] = 0.0f;
    r[15] = 1.0f;
    return r;
}

void CameraHelper::rotate(const CameraPtr& camera, int dx, int dy) {
    if (!camera || (dx == 0 && dy == 0))
        return;
    const float fx = static_cast<float>(dx), fy = static_cast<float>(dy);
    const float extent =
        static_cast<float>(std::min(camera->viewportWidth(), camera->viewportHeight()));
    const float angle = kPi * std::sqrt(fx * fx + fy * fy) / extent;
    // In view space: a drag to the right turns the near side right (about +y), a drag down
    // turns it down (about +x, window y growing downwards).
    const Mat4 turn = MatrixUtils::rotation(Vec3(fy, fx, 0.0f), angle);
    camera->setModelRotation(MatrixUtils::multiply(turn, camera->modelRotation()));
}

void CameraHelper::translate(const CameraPtr& camera, int dx, int dy) {
    if (!camera)
        return;
    const float upp = camera->unitsPerPixel();
    Vec3 t = camera->modelTranslation();
    t[0] += static_cast<float>(dx) * upp;
    t[1] -= static_cast<float>(dy) * upp;
    camera->setModelTranslation(t);
}

void CameraHelper::zoom(const CameraPtr& camera, int x, int y, float factor, bool in) {
    if (!camera || !std::isfinite(factor) || factor <= 0.0f)
        return;
    // At the zoom's bounds a notch changes nothing, the pan included.
    const float zoom = camera->zoomFactor();
    const float wanted = zoom * (in ? 1.0f / factor : factor);
    const float ratio =
        std::min(Camera::maxZoomFactor(), std::max(Camera::minZoomFactor(), wanted)) / zoom;
    if (ratio == 1.0f)
        return;
    float ox = 0.0f, oy = 0.0f;
    windowOffset(*camera, static_cast<float>(x), static_cast<float>(y), ox, oy);
    // The point under the cursor sits at offset o; with every offset scaled by 1 / ratio on
    // screen, moving the pan by o (ratio - 1) brings it back under the cursor.
    Vec3 t = camera->modelTranslation();
    t[0] += ox * (ratio - 1.0f);
    t[1] += oy * (ratio - 1.0f);
    camera->setModelTranslation(t);
    camera->setZoomFactor(camera->zoomFactor() * ratio);
}

void CameraHelper::zoomBox(const CameraPtr& camera, int x0, int y0, int x1, int y1) {
    if (!camera)
        return;
    const float w = static_cast<float>(std::abs(x1 - x0));
    const float h = static_cast<float>(std::abs(y1 - y0));
    const float ratio = std::max(w / static_cast<float>(camera->viewportWidth()),
                                 h / static_cast<float>(camera->viewportHeight()));
    if (ratio <= 0.0f)
        return;
    float ox = 0.0f, oy = 0.0f;
    windowOffset(*camera, 0.5f * static_cast<float>(x0 + x1), 0.5f * static_cast<float>(y0 + y1),
                 ox, oy);
    // The rectangle's middle to the view's middle, then zoom about the middle.
    Vec3 t = camera->modelTranslation();
    t[0] -= ox;
    t[1] -= oy;
    camera->setModelTranslation(t);
    camera->setZoomFactor(camera->zoomFactor() * ratio);
}

void CameraHelper::rotateBy(const CameraPtr& camera, const qrnmath::Vec4& q) {
    if (camera)
        camera->setModelRotation(
            MatrixUtils::multiply(camera->modelRotation(), QuatUtils::toMatrix(q)));
}

void CameraHelper::translateBy(const CameraPtr& camera, const Vec3& translation,
                               const Vec3& centreStep, float radiusStep) {
    if (!camera)
        return;
    camera->setModelTranslation(camera->modelTranslation() + translation);
    camera->setSphere(camera->sphereCentre() + centreStep, camera->sphereRadius() + radiusStep);
}

void CameraHelper::zoomBy(const CameraPtr& camera, float step) {
    if (camera)
        camera->setZoomFactor(camera->zoomFactor() + step);
}

void CameraHelper::setRotation(const CameraPtr& camera, const Mat4& rotation) {
    if (camera)
        camera->setModelRotation(rotation);
}

bool CameraHelper::lookAt(const CameraPtr& camera, const Vec3& eye, const Vec3& target,
                          const Vec3& up) {
    if (!camera)
        return false;
    const Vec3 dir = (target - eye).normalized();
    const Vec3 right = qrnmath::cross(dir, up.normalized());
    if (dir.lengthSquared() == 0.0f || right.lengthSquared() < 1e-10f)
        return false;
    const Vec3 r = right.normalized();
    const Vec3 u = qrnmath::cross(r, dir).normalized();
    // Rows: the world vectors that view x, y and z (towards the eye) stand for.
    Mat4 m = MatrixUtils::identity();
    for (int i = 0; i < 3; ++i) {
        m[4 * i] = r[i];
        m[4 * i + 1] = u[i];
        m[4 * i + 2] = -dir[i];
    }
    camera->setModelRotation(m);
    camera->setSphere(target, camera->sphereRadius());
    camera->setModelTranslation(Vec3(0.0f, 0.0f, 0.0f));
    return true;
}

void CameraHelper::lookAt(const CameraPtr& camera, const Vec3& centre, float radius) {
    if (!camera)
        return;
    camera->setSphere(centre, radius);
    camera->setModelTranslation(Vec3(0.0f, 0.0f, 0.0f));
    camera->setZoomFactor(1.0f);
}

void CameraHelper::lookAt(const CameraPtr& camera, const qrnsg::BBox& box) {
    if (!camera || box.isEmpty())
        return;
    camera->setSceneSphere(box.center(), 0.5f * box.diagonal());
    lookAt(camera, box.center(), getFitRadius(camera, box, camera->modelRotation()));
}

float CameraHelper::getFitRadius(const CameraPtr& camera, const qrnsg::BBox& box,
                                 const Mat4& rotation) {
    if (!camera || box.isEmpty())
        return 1.0f;
    float ax = 1.0f, ay = 1.0f;
    extentFactors(*camera, ax, ay);
    const Vec3 c = box.center();
    const bool ortho = camera->isOrthographic();
    const float tanHalf = std::tan(camera->fieldOfView() * kPi / 360.0f);
    float radius = 0.0f, distance = 0.0f;
    for (int i = 0; i < 8; ++i) {
        const Vec3 corner((i & 1) ? box.max()[0] : box.min()[0],
                          (i & 2) ? box.max()[1] : box.min()[1],
                          (i & 4) ? box.max()[2] : box.min()[2]);
        const Vec3 v = MatrixUtils::transformVector(rotation, corner - c);
        const float x = std::abs(v[0]) * kFitMargin, y = std::abs(v[1]) * kFitMargin;
        if (ortho) {
            radius = std::max({radius, x / ax, y / ay});
        } else {
            // A corner nearer the eye (positive z) needs the eye farther back to fit.
            distance = std::max({distance, v[2] + x / (tanHalf * ax), v[2] + y / (tanHalf * ay)});
        }
    }
    if (!ortho)
        radius = distance * tanHalf;
    return std::isfinite(radius) && radius > 0.0f ? radius : 1.0f;
}

void CameraHelper::getSphere(const CameraPtr& camera, Vec3& centre, float& radius) {
    if (!camera)
        return;
    centre = camera->sphereCentre();
    radius = camera->sphereRadius();
}

void CameraHelper::getEyeTargetUp(const CameraPtr& camera, Vec3& eye, Vec3& target, Vec3& direction,
                                  Vec3& up, bool orthographic) {
    if (!camera)
        return;
    target = camera->target();
    direction = camera->direction();
    up = camera->up();
    const float distance = camera->viewDistance() * (orthographic ? camera->zoomFactor() : 1.0f);
    eye = target - direction * distance;
}

Mat4 CameraHelper::getModelToScreen(const CameraPtr& camera) {
    if (!camera)
        return MatrixUtils::identity();
    const float w = static_cast<float>(camera->viewportWidth());
    const float h = static_cast<float>(camera->viewportHeight());
    // Normalised device coordinates to the window: y flipped, depth to [0, 1].
    Mat4 window = MatrixUtils::identity();
    window[0] = 0.5f * w;
    window[5] = -0.5f * h;
    window[10] = 0.5f;
    window[12] = 0.5f * w;
    window[13] = 0.5f * h;
    window[14] = 0.5f;
    return MatrixUtils::multiply(
        window, MatrixUtils::multiply(camera->getProjectionMatrix(), camera->getViewMatrix()));
}

} // namespace qrngl
