#include "CameraTestUtil.h"

#include "qrngl/CameraHelper.h"
#include "qrnmath/QuatUtils.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

using qrngl::Camera;
using qrngl::CameraHelper;
using qrngltest::fromWindow;
using qrngltest::obliqueCamera;
using qrngltest::toWindow;
using M = qrnmath::MatrixUtils;
using Q = qrnmath::QuatUtils;
using qrnmath::Vec3;

namespace {

const Camera::Projection kProjections[] = {Camera::PERSPECTIVE, Camera::ORTHOGRAPHIC};
const float kPi = 3.14159265f;

::testing::AssertionResult samePixel(const Vec3& a, const Vec3& b, float eps = 2e-3f) {
    if (std::abs(a[0] - b[0]) <= eps && std::abs(a[1] - b[1]) <= eps)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "(" << a[0] << ", " << a[1] << ") != (" << b[0] << ", " << b[1] << ")";
}

// A camera that has been moved about: turned, panned and zoomed.
std::shared_ptr<Camera> movedCamera(Camera::Projection projection) {
    auto c = obliqueCamera(projection, 640, 480);
    CameraHelper::rotate(c, 30, -12);
    CameraHelper::translate(c, 25, 40);
    c->setZoomFactor(0.6f);
    return c;
}

} // namespace

TEST(CameraHelper, ZoomPanAndRotateKeepWhatTheyTurnAbout) {
    for (auto projection : kProjections) {
        SCOPED_TRACE(projection);
        auto c = movedCamera(projection);
        // A point at the sphere centre's depth under the cursor at (150, 390).
        const Vec3 p = fromWindow(c, 150.0f, 390.0f, c->sphereCentre());
        ASSERT_TRUE(samePixel(toWindow(c, p), Vec3(150.0f, 390.0f, 0.0f)));
        const float zoom = c->zoomFactor();
        CameraHelper::zoom(c, 150, 390, 1.25f, true);
        EXPECT_FLOAT_EQ(c->zoomFactor(), zoom / 1.25f);
        EXPECT_TRUE(samePixel(toWindow(c, p), Vec3(150.0f, 390.0f, 0.0f)));
        CameraHelper::zoom(c, 150, 390, 1.02f, false);
        CameraHelper::zoom(c, 150, 390, 1.02f, false);
        EXPECT_FLOAT_EQ(c->zoomFactor(), zoom / 1.25f * 1.02f * 1.02f);
        EXPECT_TRUE(samePixel(toWindow(c, p), Vec3(150.0f, 390.0f, 0.0f)));
        // The view's middle stays put when zooming there, other points move away from it.
        const Vec3 q = fromWindow(c, 400.0f, 100.0f, c->sphereCentre());
        CameraHelper::zoom(c, 320, 240, 2.0f, true);
        EXPECT_TRUE(samePixel(toWindow(c, q), Vec3(480.0f, -40.0f, 0.0f)));
        if (projection == Camera::ORTHOGRAPHIC) {
            // Without perspective, any depth under the cursor stays.
            const Vec3 deep = fromWindow(c, 10.0f, 20.0f, c->eye() + c->direction() * 3.0f);
            CameraHelper::zoom(c, 10, 20, 3.0f, true);
            EXPECT_TRUE(samePixel(toWindow(c, deep), Vec3(10.0f, 20.0f, 0.0f)));
        }
        const qrnmath::Mat4 unzoomed = CameraHelper::getModelToScreen(c);
        CameraHelper::zoom(c, 10, 20, 0.0f, true);
        EXPECT_EQ(CameraHelper::getModelToScreen(c), unzoomed);

        // A pan: the point under the pointer follows it.
        c = movedCamera(projection);
        const Vec3 grabbed = fromWindow(c, 200.0f, 100.0f, c->sphereCentre());
        CameraHelper::translate(c, 17, -9);
        EXPECT_TRUE(samePixel(toWindow(c, grabbed), Vec3(217.0f, 91.0f, 0.0f)));
        CameraHelper::translate(c, -300, 250);
        EXPECT_TRUE(samePixel(toWindow(c, grabbed), Vec3(-83.0f, 341.0f, 0.0f)));
        // The depth of the sphere is not the pan's business.
        EXPECT_EQ(c->modelTranslation()[2], 0.0f);

        // A turn about the sphere's centre.
        c = movedCamera(projection);
        const Vec3 centre = toWindow(c, c->sphereCentre());
        // The sphere's point nearest the eye.
        const Vec3 front = c->sphereCentre() - c->direction() * c->sphereRadius();
        const Vec3 before = toWindow(c, front);
        CameraHelper::rotate(c, 40, 0);
        EXPECT_TRUE(samePixel(toWindow(c, c->sphereCentre()), centre));
        EXPECT_GT(toWindow(c, front)[0], before[0] + 10.0f) << "a drag right turns it right";
        const Vec3 mid = toWindow(c, front);
        CameraHelper::rotate(c, 0, 30);
        EXPECT_GT(toWindow(c, front)[1], mid[1] + 10.0f) << "a drag down turns it down";
        EXPECT_TRUE(samePixel(toWindow(c, c->sphereCentre()), centre));

        // A drag across the smaller extent turns half round.
        const qrnmath::Vec4 start = Q::create(c->modelRotation());
        CameraHelper::rotate(c, 0, 480);
        EXPECT_NEAR(Q::angleBetween(start, Q::create(c->modelRotation())), kPi, 1e-3f);
        CameraHelper::rotate(c, 0, 0);
        EXPECT_NEAR(Q::angleBetween(start, Q::create(c->modelRotation())), kPi, 1e-3f);
    }
}

TEST(CameraHelper, LookAtRoundTripsAndZoomBoxFillsTheViewport) {
    for (auto projection : kProjections) {
        SCOPED_TRACE(projection);
        auto c = movedCamera(projection);
        Vec3 eye, target, direction, up;
        CameraHelper::getEyeTargetUp(c, eye, target, direction, up, false);
        EXPECT_NEAR(direction.length(), 1.0f, 1e-5f);
        EXPECT_NEAR(up.length(), 1.0f, 1e-5f);
        EXPECT_NEAR(direction.dot(up), 0.0f, 1e-5f);
        EXPECT_NEAR(eye.distance(target), c->viewDistance(), 1e-3f);
        EXPECT_TRUE(qrnmath::nearlyEqual((target - eye).normalized(), direction, 1e-5f));

        // Looking from there again shows the same picture.
        auto copy = std::make_shared<Camera>(*c);
        copy->setModelRotation(M::identity());
        copy->setSphere(Vec3(50.0f, 0.0f, 0.0f), c->sphereRadius());
        ASSERT_TRUE(CameraHelper::lookAt(copy, eye, target, up));
        for (const Vec3& p : {c->sphereCentre(), Vec3(3.0f, -1.0f, 2.0f), Vec3(-2.0f, 5.0f, 0.0f)})
            EXPECT_TRUE(samePixel(toWindow(copy, p), toWindow(c, p), 5e-3f));
        EXPECT_EQ(copy->sphereCentre(), target);
        EXPECT_EQ(copy->modelTranslation(), Vec3(0.0f));

        // The orthographic form stands back as far as the zoomed view reaches.
        Vec3 eye2, target2, direction2, up2;
        CameraHelper::getEyeTargetUp(c, eye2, target2, direction2, up2, true);
        EXPECT_EQ(target2, target);
        EXPECT_NEAR(eye2.distance(target2), c->viewDistance() * c->zoomFactor(), 1e-3f);

        // Impossible requests change nothing.
        const qrnmath::Mat4 view = copy->getViewMatrix();
        EXPECT_FALSE(CameraHelper::lookAt(copy, target, target, up));
        EXPECT_FALSE(CameraHelper::lookAt(copy, eye, target, direction * 2.0f));
        EXPECT_EQ(copy->getViewMatrix(), view);

        // A zoom box of the viewport's shape, dragged from lower right, fills the viewport.
        c = movedCamera(projection);
        const Vec3 at = c->sphereCentre();
        const Vec3 a = fromWindow(c, 100.0f, 60.0f, at), b = fromWindow(c, 260.0f, 180.0f, at);
        CameraHelper::zoomBox(c, 260, 180, 100, 60);
        EXPECT_TRUE(samePixel(toWindow(c, a), Vec3(0.0f, 0.0f, 0.0f), 1e-2f));
        EXPECT_TRUE(samePixel(toWindow(c, b), Vec3(640.0f, 480.0f, 0.0f), 1e-2f));

        // A tall one fills the height and is centred across.
        const Vec3 t0 = fromWindow(c, 300.0f, 40.0f, at), t1 = fromWindow(c, 330.0f, 280.0f, at);
        CameraHelper::zoomBox(c, 300, 40, 330, 280);
        EXPECT_NEAR(toWindow(c, t0)[1], 0.0f, 1e-2f);
        EXPECT_NEAR(toWindow(c, t1)[1], 480.0f, 1e-2f);
        EXPECT_NEAR(toWindow(c, t0)[0] + toWindow(c, t1)[0], 640.0f, 1e-2f);
        EXPECT_NEAR(toWindow(c, t1)[0] - toWindow(c, t0)[0], 60.0f, 1e-2f);

        // A click is no box.
        const float zoom = c->zoomFactor();
        CameraHelper::zoomBox(c, 5, 5, 5, 5);
        EXPECT_EQ(c->zoomFactor(), zoom);
    }
}

TEST(CameraHelper, LookAtFitsTheBoxSnugly) {
    const qrnsg::BBox box(Vec3(-2.0f, 10.0f, 1.0f), Vec3(6.0f, 11.0f, 3.0f)); // flat and wide
    for (auto projection : kProjections)
        for (unsigned int width : {800u, 300u}) {
            SCOPED_TRACE(testing::Message() << projection << " " << width);
            auto c = movedCamera(projection);
            CameraHelper::setViewport(width, 500, c);
            CameraHelper::lookAt(c, box);
            EXPECT_EQ(c->sphereCentre(), box.center());
            EXPECT_EQ(c->modelTranslation(), Vec3(0.0f));
            EXPECT_EQ(c->zoomFactor(), 1.0f);
            float extent = 0.0f;
            for (int i = 0; i < 8; ++i) {
                const Vec3 p((i & 1) ? 6.0f : -2.0f, (i & 2) ? 11.0f : 10.0f,
                             (i & 4) ? 3.0f : 1.0f);
                const Vec3 ndc = qrngltest::toNdc(*c, p);
                for (int k = 0; k < 3; ++k)
                    EXPECT_LE(std::abs(ndc[k]), 1.0f) << i << " " << k;
                extent = std::max({extent, std::abs(ndc[0]), std::abs(ndc[1])});
            }
            // Filled up to the small border, not merely inside.
            EXPECT_GT(extent, 0.94f);
            EXPECT_FLOAT_EQ(c->sphereRadius(),
                            CameraHelper::getFitRadius(c, box, c->modelRotation()));
        }
    auto c = movedCamera(Camera::PERSPECTIVE);
    const qrnmath::Mat4 view = c->getViewMatrix();
    CameraHelper::lookAt(c, qrnsg::BBox());
    EXPECT_EQ(c->getViewMatrix(), view);
    EXPECT_EQ(CameraHelper::getFitRadius(c, qrnsg::BBox(), view), 1.0f);
}

TEST(CameraHelper, AnimationStepsAddUp) {
    auto c = movedCamera(Camera::PERSPECTIVE);
    const qrnmath::Mat4 start = c->modelRotation();
    // rotateBy turns about a world axis: the world's up vector as the view shows it stays.
    const Vec3 up = c->up();
    const Vec3 direction = c->direction();
    CameraHelper::rotateBy(c, Q::create(up, 90.0f));
    EXPECT_TRUE(qrnmath::nearlyEqual(c->up(), up, 1e-5f));
    EXPECT_NEAR(c->direction().dot(direction), 0.0f, 1e-5f);
    CameraHelper::rotateBy(c, Q::create(up, -90.0f));
    EXPECT_TRUE(qrnmath::nearlyEqual(c->modelRotation(), start, 1e-5f));

    const Vec3 centre = c->sphereCentre();
    const Vec3 pan = c->modelTranslation();
    CameraHelper::translateBy(c, Vec3(1.0f, 2.0f, 3.0f), Vec3(0.5f, 0.0f, -0.5f), 1.5f);
    EXPECT_EQ(c->modelTranslation(), pan + Vec3(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(c->sphereCentre(), centre + Vec3(0.5f, 0.0f, -0.5f));
    EXPECT_FLOAT_EQ(c->sphereRadius(), 5.5f);
    CameraHelper::translateBy(c, Vec3(), Vec3(), -10.0f); // the radius must stay positive
    EXPECT_FLOAT_EQ(c->sphereRadius(), 5.5f);

    CameraHelper::zoomBy(c, 0.15f);
    EXPECT_FLOAT_EQ(c->zoomFactor(), 0.75f);
    CameraHelper::zoomBy(c, -0.75f);
    EXPECT_FLOAT_EQ(c->zoomFactor(), 0.75f);

    CameraHelper::setRotation(c, start);
    EXPECT_EQ(c->modelRotation(), start);
    CameraHelper::lookAt(c, Vec3(1.0f, 1.0f, 1.0f), 2.0f);
    Vec3 sc;
    float sr = 0.0f;
    CameraHelper::getSphere(c, sc, sr);
    EXPECT_EQ(sc, Vec3(1.0f, 1.0f, 1.0f));
    EXPECT_EQ(sr, 2.0f);
    EXPECT_EQ(c->modelTranslation(), Vec3(0.0f));
    EXPECT_EQ(c->zoomFactor(), 1.0f);
}

TEST(CameraHelper, ModelToScreenBillboardAndEmptyCamera) {
    auto c = obliqueCamera(Camera::ORTHOGRAPHIC, 640, 480);
    // The centre in the middle, the sphere's top on the top edge, depth inside [0, 1].
    const Vec3 middle = toWindow(c, c->sphereCentre());
    EXPECT_TRUE(samePixel(middle, Vec3(320.0f, 240.0f, 0.0f)));
    EXPECT_GT(middle[2], 0.0f);
    EXPECT_LT(middle[2], 1.0f);
    EXPECT_TRUE(
        samePixel(toWindow(c, c->sphereCentre() + c->up() * c->sphereRadius()), Vec3(320, 0, 0)));

    // The billboard rotation faces the viewer.
    auto cam = movedCamera(Camera::PERSPECTIVE);
    const qrnmath::Mat4 bb = CameraHelper::getBillboardRotation(cam);
    const qrnmath::Mat4 vb = M::multiply(cam->getViewMatrix(), bb);
    for (const Vec3& axis : {Vec3(1.0f, 0.0f, 0.0f), Vec3(0.0f, 1.0f, 0.0f)})
        EXPECT_TRUE(qrnmath::nearlyEqual(M::transformVector(vb, axis), axis, 1e-5f));
    // A pure rotation: no translation, no projective row.
    for (int i : {3, 7, 11, 12, 13, 14})
        EXPECT_EQ(bb[i], 0.0f) << i;
    EXPECT_EQ(bb[15], 1.0f);

    EXPECT_EQ(CameraHelper::getBillboardRotation(nullptr), M::identity());
    CameraHelper::setViewport(640, 0, cam);
    EXPECT_EQ(cam->viewportWidth(), 640u);
    EXPECT_EQ(cam->viewportHeight(), 1u);

    std::shared_ptr<Camera> none;
    Vec3 centre(7.0f, 7.0f, 7.0f), eye, target, direction, up;
    float radius = 7.0f;
    CameraHelper::rotate(none, 3, 4);
    CameraHelper::translate(none, 3, 4);
    CameraHelper::zoom(none, 3, 4, 1.1f, true);
    CameraHelper::zoomBox(none, 0, 0, 3, 4);
    CameraHelper::rotateBy(none, Q::identity());
    CameraHelper::translateBy(none, Vec3(), Vec3(), 1.0f);
    CameraHelper::zoomBy(none, 1.0f);
    CameraHelper::setRotation(none, M::identity());
    EXPECT_FALSE(CameraHelper::lookAt(none, Vec3(), Vec3(1, 0, 0), Vec3(0, 1, 0)));
    CameraHelper::lookAt(none, Vec3(), 1.0f);
    CameraHelper::lookAt(none, qrnsg::BBox(Vec3(), Vec3(1.0f)));
    CameraHelper::getSphere(none, centre, radius);
    CameraHelper::getEyeTargetUp(none, eye, target, direction, up, true);
    EXPECT_EQ(centre, Vec3(7.0f));
    EXPECT_EQ(radius, 7.0f);
    EXPECT_EQ(CameraHelper::getModelToScreen(none), M::identity());
}
