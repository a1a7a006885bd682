#include "CameraTestUtil.h"

#include "qrnglutils/BBoxUtils.h"
#include "qrnsg/SCView.h"

#include <gtest/gtest.h>

using qrnglutils::BBoxUtils;
using qrnmath::Vec3;
using qrnsg::RTState;

namespace {

qrnsg::Mesh cube(float lo, float hi) {
    qrnsg::Mesh m;
    m.vertices = {Vec3(lo, lo, lo), Vec3(hi, hi, hi), Vec3(lo, hi, lo)};
    m.indices = {0, 1, 2};
    return m;
}

} // namespace

TEST(BBoxUtils, BoxOfThePlacedVisiblePrimitivesItsSphereAndCameraFit) {
    qrnsg::SCScene scene;
    qrnsg::SCSceneRT rt;
    scene.meshes.push_back(cube(0.0f, 1.0f));
    qrnsg::Polyline line;
    line.addStrip({Vec3(-5.0f, 0.0f, 0.0f), Vec3(-4.0f, 0.0f, 2.0f)});
    scene.polylines.push_back(line);

    // Mesh 0 placed twice: once moved by its transform, once where it is without the flag.
    rt.meshes.add(10, 0, -1, RTState::HAS_TRANSFORM);
    rt.meshes.transforms.find(10)->first =
        qrnmath::MatrixUtils::translation(Vec3(10.0f, 0.0f, 0.0f));
    rt.meshes.add(11, 0, -1);
    rt.meshes.transforms.find(11)->first =
        qrnmath::MatrixUtils::translation(Vec3(0.0f, 50.0f, 0.0f)); // not flagged: not applied
    rt.polylines.add(12, 0, -1);
    rt.meshes.add(13, 7, -1); // no such drawable
    qrnsg::BBox box = BBoxUtils::get(scene, rt, true);
    EXPECT_EQ(box.min(), Vec3(-5.0f, 0.0f, 0.0f));
    EXPECT_EQ(box.max(), Vec3(11.0f, 1.0f, 2.0f));

    // A rotated placement moves the box's corners, not just its centre.
    rt.meshes.transforms.find(10)->first = qrnmath::MatrixUtils::multiply(
        qrnmath::MatrixUtils::translation(Vec3(10.0f, 0.0f, 0.0f)),
        qrnmath::MatrixUtils::rotation(Vec3(0.0f, 0.0f, 1.0f), 3.14159265f / 2.0f));
    box = BBoxUtils::get(scene, rt, true);
    EXPECT_NEAR(box.max()[0], 10.0f, 1e-5f);

    // Hidden primitives count only when asked for everything.
    *rt.meshes.flags.find(10) = RTState::HAS_TRANSFORM;
    *rt.polylines.flags.find(12) = 0;
    box = BBoxUtils::get(scene, rt, true);
    EXPECT_EQ(box.min(), Vec3(0.0f, 0.0f, 0.0f));
    EXPECT_EQ(box.max(), Vec3(1.0f, 1.0f, 1.0f));
    box = BBoxUtils::get(scene, rt, false);
    EXPECT_EQ(box.min()[0], -5.0f);
    EXPECT_NEAR(box.max()[0], 10.0f, 1e-5f);

    // The resource form reads the same drawable indices from the resources.
    qrnsg::SCSceneRes res;
    res.meshes.push_back(cube(2.0f, 3.0f));
    box = BBoxUtils::get(res, rt, true);
    EXPECT_EQ(box.min(), Vec3(2.0f));
    EXPECT_EQ(box.max(), Vec3(3.0f));
    EXPECT_TRUE(BBoxUtils::get(qrnsg::SCSceneRes(), rt, false).isEmpty());

    // The sphere around a box, and the camera fitted to it.
    box = qrnsg::BBox(Vec3(0.0f, 0.0f, 0.0f), Vec3(6.0f, 2.0f, 3.0f));
    Vec3 centre(9.0f);
    float radius = 9.0f;
    EXPECT_FALSE(BBoxUtils::getSphere(qrnsg::BBox(), centre, radius));
    EXPECT_EQ(radius, 9.0f);
    ASSERT_TRUE(BBoxUtils::getSphere(box, centre, radius));
    EXPECT_EQ(centre, Vec3(3.0f, 1.0f, 1.5f));
    EXPECT_FLOAT_EQ(radius, 3.5f);

    auto camera = qrngltest::obliqueCamera(qrngl::Camera::ORTHOGRAPHIC, 400, 400);
    // Seen from the front (looking along +Y, Z up) the box shows 6 wide and 3 high.
    const qrnmath::Mat4 front = qrnsg::SCView::standardRotation(qrnsg::SCView::FRONT);
    BBoxUtils::updateCameraPosition(camera, box, front, radius);
    EXPECT_NEAR(radius, 3.0f * 1.05f, 1e-5f);
    BBoxUtils::updateCameraPosition(camera, qrnsg::BBox(), front, radius);
    EXPECT_NEAR(radius, 3.0f * 1.05f, 1e-5f);
}
