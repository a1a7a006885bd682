#include "CameraTestUtil.h"

#include "qrnglutils/CameraState.h"
#include "qrnglutils/ViewActivator.h"

#include <gtest/gtest.h>

#include <cmath>

using qrngl::Camera;
using qrngl::CameraHelper;
using qrnmath::Vec3;

TEST(CameraState, RestorePutsTheCameraBackAndTheViewActivatorShowsASavedView) {
    auto camera = qrngltest::obliqueCamera(Camera::PERSPECTIVE, 640, 480);
    CameraHelper::translate(camera, 10, 20);
    const qrnmath::Mat4 view = camera->getViewMatrix();
    const qrnmath::Mat4 projection = camera->getProjectionMatrix();
    qrnglutils::CameraState state(camera);

    CameraHelper::rotate(camera, 50, 80);
    CameraHelper::zoom(camera, 100, 100, 1.5f, true);
    camera->setProjection(Camera::ORTHOGRAPHIC);
    ASSERT_NE(camera->getViewMatrix(), view);
    state.restore();
    EXPECT_EQ(camera->getViewMatrix(), view);
    EXPECT_EQ(camera->getProjectionMatrix(), projection);
    EXPECT_EQ(state.state().getViewMatrix(), view);

    CameraHelper::setViewport(300, 200, camera);
    CameraHelper::rotate(camera, 50, 80);
    state.restore();
    EXPECT_EQ(camera->getViewMatrix(), view);
    EXPECT_EQ(camera->viewportWidth(), 300u);
    EXPECT_EQ(camera->viewportHeight(), 200u);

    camera.reset();
    state.restore(); // the camera is gone: nothing to do
    qrnglutils::CameraState none(nullptr);
    none.restore();

    // The view activator shows a saved view.
    qrnsg::SCView views;
    qrnsg::SCView::View v;
    v.eye = Vec3(5.0f, -50.0f, 5.0f);
    v.target = Vec3(5.0f, 0.0f, 0.0f);
    v.up = Vec3(0.0f, 0.0f, 1.0f);
    v.viewHeight = 12.0f;
    views.views.push_back(v);
    v.viewHeight = 0.0f; // a perspective view gives none: its distance does
    v.orthographic = false;
    views.views.push_back(v);

    camera = qrngltest::obliqueCamera(Camera::ORTHOGRAPHIC, 640, 480);
    CameraHelper::translate(camera, 30, 30);
    ASSERT_TRUE(qrnglutils::ViewActivator::apply(views, 0, camera));
    EXPECT_TRUE(qrnmath::nearlyEqual(camera->direction(), (v.target - v.eye).normalized(), 1e-6f));
    EXPECT_GT(camera->up().dot(v.up), 0.99f);
    EXPECT_EQ(camera->sphereCentre(), v.target);
    EXPECT_EQ(camera->modelTranslation(), Vec3(0.0f));
    EXPECT_EQ(camera->zoomFactor(), 1.0f);
    // 12 units fill the height of the window.
    EXPECT_FLOAT_EQ(2.0f * camera->halfHeight(), 12.0f);
    EXPECT_EQ(camera->projection(), Camera::ORTHOGRAPHIC);

    ASSERT_TRUE(qrnglutils::ViewActivator::apply(views, 1, camera));
    const float distance = v.eye.distance(v.target);
    EXPECT_NEAR(camera->halfHeight(),
                distance * std::tan(camera->fieldOfView() * 3.14159265f / 360.0f), 1e-3f);

    // Refused: nothing changes.
    const qrnmath::Mat4 shown = camera->getViewMatrix();
    views.views[0].eye = views.views[0].target;
    views.views[1].up = views.views[1].target - views.views[1].eye;
    for (int index : {-1, 0, 1, 2})
        EXPECT_FALSE(qrnglutils::ViewActivator::apply(views, index, camera)) << index;
    EXPECT_FALSE(qrnglutils::ViewActivator::apply(views, 0, nullptr));
    EXPECT_EQ(camera->getViewMatrix(), shown);
}
