#include "CameraTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

using qrngl::Camera;
using qrngltest::toNdc;
using qrnmath::Vec3;

namespace {

// Oblique, with an up vector not orthogonal to the view direction.
Camera obliqueCamera(Camera::Projection projection) {
    Camera c;
    c.setEye(Vec3(12.0f, 9.0f, 20.0f));
    c.setTarget(Vec3(1.0f, 2.0f, -1.0f));
    c.setUp(Vec3(0.2f, 1.0f, 0.1f));
    c.setProjection(projection);
    c.setFieldOfView(40.0f);
    c.setViewHeight(7.0f);
    c.setViewport(800, 500);
    c.setSceneSphere(Vec3(1.0f, 2.0f, -1.0f), 4.0f);
    return c;
}

} // namespace

TEST(Camera, TargetCentredAndViewHeightSpansTheViewport) {
    for (auto projection : {Camera::PERSPECTIVE, Camera::ORTHOGRAPHIC}) {
        SCOPED_TRACE(projection);
        const Camera c = obliqueCamera(projection);
        const Vec3 right = qrnmath::cross(c.direction(), c.up()).normalized();
        const Vec3 up = qrnmath::cross(right, c.direction());
        const float h = c.viewHeight() * 0.5f;
        const Vec3 t = c.target();
        EXPECT_TRUE(qrnmath::nearlyEqual(toNdc(c, t), Vec3(0.0f, 0.0f, toNdc(c, t)[2]), 1e-5f));
        EXPECT_NEAR(toNdc(c, t + up * h)[1], 1.0f, 1e-4f);
        EXPECT_NEAR(toNdc(c, t - up * h)[1], -1.0f, 1e-4f);
        EXPECT_NEAR(toNdc(c, t + right * (h * c.aspect()))[0], 1.0f, 1e-4f);

        // zoomFactor world units make one pixel, both ways.
        const float px = 37.0f;
        EXPECT_NEAR(toNdc(c, t + up * (c.zoomFactor() * px))[1] * 250.0f, px, 1e-2f);
        EXPECT_NEAR(toNdc(c, t + right * (c.zoomFactor() * px))[0] * 400.0f, px, 1e-2f);
    }
    EXPECT_FLOAT_EQ(obliqueCamera(Camera::ORTHOGRAPHIC).zoomFactor(), 7.0f / 500.0f);
}

TEST(Camera, NearAndFarEncloseTheSceneSphere) {
    struct Case {
        Camera::Projection projection;
        Vec3 center;
        float radius;
    };
    const Case cases[] = {
        {Camera::PERSPECTIVE, Vec3(1.0f, 2.0f, -1.0f), 4.0f},
        {Camera::PERSPECTIVE, Vec3(-3.0f, 5.0f, 2.0f), 6.0f}, // off the view axis
        {Camera::PERSPECTIVE, Vec3(0.0f), 1e-3f},
        {Camera::ORTHOGRAPHIC, Vec3(1.0f, 2.0f, -1.0f), 4.0f},
        {Camera::ORTHOGRAPHIC, Vec3(10.0f, 8.0f, 18.0f), 30.0f}, // the eye inside
    };
    for (const Case& k : cases) {
        Camera c = obliqueCamera(k.projection);
        c.setSceneSphere(k.center, k.radius);
        EXPECT_LT(c.nearPlane(), c.farPlane());
        if (k.projection == Camera::PERSPECTIVE) {
            EXPECT_GT(c.nearPlane(), 0.0f);
        }
        for (const Vec3& p : qrngltest::spherePoints(k.center, k.radius))
            EXPECT_LE(std::abs(toNdc(c, p)[2]), 1.0f) << k.radius;
    }

    Camera c;
    c.setViewport(0, 0);
    EXPECT_EQ(c.viewportWidth(), 1u);
    EXPECT_EQ(c.viewportHeight(), 1u);
    c.setSceneSphere(Vec3(0.0f), 0.0f);
    EXPECT_LT(c.nearPlane(), c.farPlane());
}
