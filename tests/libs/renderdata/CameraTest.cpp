#include "CameraTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using qrngl::Camera;
using qrngltest::obliqueCamera;
using qrngltest::toNdc;
using qrnmath::Vec3;

namespace {

const Camera::Projection kProjections[] = {Camera::PERSPECTIVE, Camera::ORTHOGRAPHIC};

} // namespace

TEST(Camera, TheSphereFillsTheSmallerExtentAtZoomOne) {
    for (auto projection : kProjections)
        for (unsigned int width : {800u, 300u}) {
            SCOPED_TRACE(testing::Message() << projection << " " << width);
            auto c = obliqueCamera(projection, width, 500);
            const Vec3 centre = c->sphereCentre();
            const float r = c->sphereRadius();
            const Vec3 ndc = toNdc(*c, centre);
            EXPECT_NEAR(ndc[0], 0.0f, 1e-5f);
            EXPECT_NEAR(ndc[1], 0.0f, 1e-5f);
            // In the plane through the centre the sphere's radius reaches the nearer edges.
            if (width >= 500) {
                EXPECT_NEAR(toNdc(*c, centre + c->up() * r)[1], 1.0f, 1e-4f);
                EXPECT_NEAR(toNdc(*c, centre - c->right() * (r * c->aspect()))[0], -1.0f, 1e-4f);
            } else {
                EXPECT_NEAR(toNdc(*c, centre + c->right() * r)[0], 1.0f, 1e-4f);
                EXPECT_NEAR(toNdc(*c, centre - c->up() * (r / c->aspect()))[1], -1.0f, 1e-4f);
            }

            // Zooming in by 4 shows a quarter of that.
            c->setZoomFactor(0.25f);
            const Vec3 edge = width >= 500 ? c->up() * (0.25f * r) : c->right() * (0.25f * r);
            EXPECT_NEAR(toNdc(*c, centre + edge)[width >= 500 ? 1 : 0], 1.0f, 1e-4f);
            EXPECT_FLOAT_EQ(c->halfHeight() / c->halfWidth(), 500.0f / float(width));

            // unitsPerPixel world units make one pixel, both ways.
            const float px = 37.0f;
            EXPECT_NEAR(toNdc(*c, centre + c->up() * (c->unitsPerPixel() * px))[1] * 250.0f, px,
                        1e-2f);
            EXPECT_NEAR(toNdc(*c, centre + c->right() * (c->unitsPerPixel() * px))[0] * width *
                            0.5f,
                        px, 1e-2f);
        }
}

TEST(Camera, PanMovesTheViewInViewSpaceAndEyeTargetAndUpFollow) {
    using M = qrnmath::MatrixUtils;
    for (auto projection : kProjections) {
        auto c = obliqueCamera(projection);
        const Vec3 centre = c->sphereCentre();
        c->setModelTranslation(Vec3(1.5f, -0.5f, 0.0f));
        const Vec3 ndc = toNdc(*c, centre);
        EXPECT_NEAR(ndc[0], 1.5f / c->halfWidth(), 1e-5f);
        EXPECT_NEAR(ndc[1], -0.5f / c->halfHeight(), 1e-5f);
        // The target is what the middle of the view shows.
        const Vec3 middle = toNdc(*c, c->target());
        EXPECT_NEAR(middle[0], 0.0f, 1e-5f);
        EXPECT_NEAR(middle[1], 0.0f, 1e-5f);
        const qrnmath::Mat4 view = c->getViewMatrix();
        c->setModelTranslation(Vec3(1.5f, -0.5f, 40.0f));
        EXPECT_EQ(c->getViewMatrix(), view);
    }

    // Eye, target and up follow the rotation and the pan.
    auto c = obliqueCamera(Camera::PERSPECTIVE);
    c->setModelTranslation(Vec3(0.7f, 1.1f, 0.0f));
    // The view puts the eye at the origin and the target straight ahead at the eye distance.
    EXPECT_TRUE(
        qrnmath::nearlyEqual(M::transformPoint(c->getViewMatrix(), c->eye()), Vec3(0.0f), 1e-4f));
    EXPECT_TRUE(qrnmath::nearlyEqual(M::transformPoint(c->getViewMatrix(), c->target()),
                                     Vec3(0.0f, 0.0f, -c->viewDistance()), 1e-4f));
    EXPECT_NEAR(c->eye().distance(c->target()), c->viewDistance(), 1e-4f);
    EXPECT_TRUE(qrnmath::nearlyEqual(c->direction(),
                                     (Vec3(1, 2, -1) - Vec3(12, 9, 20)).normalized(), 1e-5f));
    EXPECT_NEAR(c->up().dot(c->direction()), 0.0f, 1e-6f);
    EXPECT_GT(c->up().dot(Vec3(0.2f, 1.0f, 0.1f)), 0.9f);
    // A 40 degree field of view: the radius at distance r / tan(20 degrees).
    EXPECT_NEAR(c->viewDistance(), 4.0f / std::tan(20.0f * 3.14159265f / 180.0f), 1e-4f);
}

TEST(Camera, NearAndFarEncloseTheViewAndSceneSpheres) {
    for (auto projection : kProjections) {
        SCOPED_TRACE(projection);
        auto c = obliqueCamera(projection);
        for (float zoom : {1.0f, 0.01f, 20.0f}) {
            c->setZoomFactor(zoom);
            c->setModelTranslation(Vec3(3.0f * zoom, -2.0f * zoom, 0.0f));
            EXPECT_LT(c->nearPlane(), c->farPlane());
            // Every point of the sphere stays inside the depth range, however far zoomed.
            for (const Vec3& p : qrngltest::spherePoints(c->sphereCentre(), c->sphereRadius()))
                EXPECT_LE(std::abs(toNdc(*c, p)[2]), 1.0f) << zoom;
        }
        // A scene much larger than the view sphere (a zoomed detail) stays inside too, as far
        // as it lies in front of the eye.
        c->setSceneSphere(Vec3(-4.0f, 0.0f, 3.0f), 9.0f);
        for (const Vec3& p : qrngltest::spherePoints(Vec3(-4.0f, 0.0f, 3.0f), 9.0f)) {
            const float depth = -qrnmath::MatrixUtils::transformPoint(c->getViewMatrix(), p)[2];
            if (projection == Camera::ORTHOGRAPHIC || depth > c->farPlane() * 1e-4f) {
                EXPECT_LE(std::abs(toNdc(*c, p)[2]), 1.0f);
            }
        }
        EXPECT_LT(c->nearPlane(), c->viewDistance() - 4.0f);
        if (projection == Camera::PERSPECTIVE) {
            // The eye inside the scene: the near plane stays in front of it.
            c->setSceneSphere(c->eye(), 100.0f);
            EXPECT_GT(c->nearPlane(), 0.0f);
            EXPECT_LT(c->nearPlane(), c->viewDistance() - c->sphereRadius());
            EXPECT_GT(c->farPlane(), 100.0f); // the scene reaches that far beyond the eye
        }
        c->setSceneSphere(Vec3(), 0.0f);
        EXPECT_EQ(c->sceneRadius(), 0.0f);
    }
}

TEST(Camera, RejectsValuesThatWouldBreakTheView) {
    Camera c;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    c.setZoomFactor(0.5f);
    for (float bad : {0.0f, -1.0f, nan, std::numeric_limits<float>::infinity()}) {
        c.setZoomFactor(bad);
        c.setSphere(Vec3(1.0f, 2.0f, 3.0f), bad);
    }
    EXPECT_EQ(c.zoomFactor(), 0.5f);
    EXPECT_EQ(c.sphereRadius(), 1.0f);
    EXPECT_EQ(c.sphereCentre(), Vec3(1.0f, 2.0f, 3.0f)); // the centre still moves
    c.setFieldOfView(0.0f);
    EXPECT_EQ(c.fieldOfView(), 1.0f);
    c.setFieldOfView(400.0f);
    EXPECT_EQ(c.fieldOfView(), 170.0f);
    c.setFieldOfView(nan);
    EXPECT_EQ(c.fieldOfView(), 170.0f);
    c.setViewport(0, 0);
    EXPECT_EQ(c.viewportWidth(), 1u);
    EXPECT_EQ(c.viewportHeight(), 1u);

    // The zoom stays where the projection is finite.
    c.setZoomFactor(1e-30f);
    EXPECT_EQ(c.zoomFactor(), Camera::minZoomFactor());
    c.setZoomFactor(1e30f);
    EXPECT_EQ(c.zoomFactor(), Camera::maxZoomFactor());

    // A rotation is kept to the bit; a drifted one (scaled, skewed) is made a rotation again
    // that looks the same way; one that is none at all is ignored.
    using M = qrnmath::MatrixUtils;
    const qrnmath::Mat4 turn = M::rotation(Vec3(1.0f, 2.0f, 0.5f), 0.7f);
    c.setModelRotation(turn);
    EXPECT_EQ(c.modelRotation(), turn);
    const Vec3 direction = c.direction();
    qrnmath::Mat4 drifted = turn;
    for (int k = 0; k < 3; ++k) {
        drifted[4 * k] += 0.05f * turn[4 * k + 2];
        for (int i = 0; i < 3; ++i)
            drifted[4 * k + i] *= 1.01f;
    }
    c.setModelRotation(drifted);
    const qrnmath::Mat4 product = M::multiply(c.modelRotation(), M::transpose(c.modelRotation()));
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(product[i], M::identity()[i], 1e-6f) << i;
    EXPECT_NEAR(qrnmath::cross(c.right(), c.up()).dot(c.direction()), -1.0f, 1e-6f);
    EXPECT_TRUE(qrnmath::nearlyEqual(c.direction(), direction, 1e-6f));
    const qrnmath::Mat4 repaired = c.modelRotation();
    qrnmath::Mat4 broken = M::identity();
    broken[0] = nan;
    c.setModelRotation(broken);
    c.setModelRotation(qrnmath::Mat4());
    EXPECT_EQ(c.modelRotation(), repaired);
}
