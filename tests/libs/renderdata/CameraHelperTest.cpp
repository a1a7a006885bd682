#include "CameraTestUtil.h"

#include "qrngl/CameraHelper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

using qrngl::Camera;
using qrngl::CameraHelper;
using M = qrnmath::MatrixUtils;
using qrnmath::Vec3;

TEST(CameraHelper, BillboardFacesTheViewer) {
    auto cam = std::make_shared<Camera>();
    cam->setEye(Vec3(7.0f, -3.0f, 4.0f));
    cam->setTarget(Vec3(-1.0f, 2.0f, 0.5f));
    cam->setUp(Vec3(0.0f, 0.3f, 1.0f));
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
}

TEST(CameraHelper, FitShowsTheWholeSphereSnugly) {
    const Vec3 center(5.0f, -2.0f, 3.0f);
    const float radius = 2.5f;
    for (auto projection : {Camera::PERSPECTIVE, Camera::ORTHOGRAPHIC})
        for (unsigned int width : {1000u, 300u}) {
            SCOPED_TRACE(testing::Message() << projection << " " << width);
            auto cam = std::make_shared<Camera>();
            cam->setProjection(projection);
            cam->setTarget(Vec3(-1.0f, -2.0f, -3.0f));
            const Vec3 dir = cam->direction();
            CameraHelper::setViewport(width, 600, cam);
            CameraHelper::fit(cam, center, radius);
            EXPECT_TRUE(qrnmath::nearlyEqual(cam->direction(), dir, 1e-5f));

            float extent = 0.0f;
            for (const Vec3& p : qrngltest::spherePoints(center, radius)) {
                const Vec3 ndc = qrngltest::toNdc(*cam, p);
                for (int i = 0; i < 3; ++i)
                    EXPECT_LE(std::abs(ndc[i]), 1.0f + 1e-5f) << i;
                extent = std::max({extent, std::abs(ndc[0]), std::abs(ndc[1])});
            }
            EXPECT_GT(extent, 0.95f); // fitted, not merely far away
        }
}
