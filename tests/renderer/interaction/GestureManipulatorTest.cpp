#include "qrngl/interaction/GestureManipulator.h"
// Before the support header, which brings windows.h (and its TRANSPARENT) on Windows.
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/Placements.h"

#include "ManipulatorTestSupport.h"
#include "qrnmath/QuatUtils.h"
#include "qrnsg/SCAnimation.h"
#include "qrnui/Updater.h"

#include <vector>

namespace {

using qrngl::CHANGED;
using qrngl::UNCHANGED;
using qrnmath::Vec3;
using qrnsg::SCView;
using Q = qrnmath::QuatUtils;

const unsigned int L = qrngl::KEY_LBUTTON;

class GestureManipulatorTest : public qrntest::ManipulatorTest {
protected:
    void SetUp() override {
        ManipulatorTest::SetUp();
        auto updater = std::make_shared<qrnui::Updater>();
        updater->addListener([this](const qrnui::Hint& hint) { hints.push_back(hint.code()); });
        frame->updater = updater;
        gestures = std::make_shared<qrngl::GestureManipulator>(frame, viewState, nullptr);
    }
    std::vector<short> hints;
    std::shared_ptr<qrngl::GestureManipulator> gestures;
};

TEST_F(GestureManipulatorTest, TouchDragsRotateGesturesPanAndZoomATwoFingerTapGoesHome) {
    EXPECT_EQ(gestures->mouseButtonDown(CHANGED, L, qrngl::LEFT, 10, 10), CHANGED);
    gestures->mouseMotion(L, 40, 30);
    EXPECT_EQ(camera->modelRotation(), qrnmath::MatrixUtils::identity());
    qrntest::setTouchInput(true);
    EXPECT_EQ(gestures->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 40, 30), UNCHANGED);
    auto expected = std::make_shared<qrngl::Camera>(*camera);
    qrngl::CameraHelper::rotate(expected, 20, 0);
    EXPECT_EQ(gestures->mouseMotion(L, 60, 30), UNCHANGED);
    EXPECT_EQ(camera->modelRotation(), expected->modelRotation());

    EXPECT_EQ(gestures->OnGesturePan(UNCHANGED, 50, 60, 50, 60), UNCHANGED);
    EXPECT_TRUE(gestures->getNoMotion());
    gestures->mouseMotion(0, 200, 100);
    EXPECT_FALSE(gestures->getNoMotion());
    const Vec3 grabbed = qrntest::underPixel(camera, 50.0f, 60.0f);
    EXPECT_EQ(gestures->OnGesturePan(UNCHANGED, 50, 60, 80, 40), CHANGED);
    qrntest::expectShownAt(camera, grabbed, 80.0f, 40.0f);

    // Zooms about where the pointer rested before the gesture.
    EXPECT_EQ(gestures->OnGestureZoom(UNCHANGED, 10, 10, 0), UNCHANGED);
    EXPECT_EQ(camera->zoomFactor(), 1.0f);
    const Vec3 under = qrntest::underPixel(camera, 200.0f, 100.0f);
    EXPECT_EQ(gestures->OnGestureZoom(UNCHANGED, 10, 10, -30), UNCHANGED);
    EXPECT_NEAR(camera->zoomFactor(), 1.0f / 1.01f, 1e-6f);
    qrntest::expectShownAt(camera, under, 200.0f, 100.0f);

    // A two-finger tap animates home over 32 frames, given the scene state components.
    EXPECT_EQ(gestures->OnGestureTwoFingerTap(UNCHANGED, 5, 5), CHANGED);
    EXPECT_EQ(timer(), 0u);
    EXPECT_TRUE(hints.empty());

    auto rt = std::dynamic_pointer_cast<qrnsg::SCSceneRT>(
        frame->document->addSchema(qrnsg::SCHEMA_SCENE_RT));
    auto topology = std::dynamic_pointer_cast<qrnsg::SCSceneTopo>(
        frame->document->addSchema(qrnsg::SCHEMA_SCENE_TOPO));
    frame->document->setSchema(std::make_shared<qrnsg::SCAnimation>());
    // A part moved away (an exploded view): the home view puts it back.
    topology->nodes.resize(2);
    topology->nodes[1].parent = 0;
    topology->nodes[1].meshIds = {5};
    rt->meshes.add(5, 0, -1, qrnsg::RTState::HAS_TRANSFORM);
    qrnsgutils::Placements::translate(*topology, *rt, {Vec3(), Vec3(7, 0, 0)}, 1.0f);
    ASSERT_EQ(rt->meshes.transforms.find(5)->first[12], 7.0f);
    ASSERT_EQ(rt->nodeMoved[1], 1);
    qrngl::CameraHelper::setRotation(camera, views->rotation(SCView::TOP));
    const auto left = [&] {
        return Q::angleBetween(Q::create(views->rotation(SCView::ISOMETRIC)),
                               Q::create(camera->modelRotation()));
    };
    const float turn = left();
    ASSERT_GT(turn, 0.5f);
    EXPECT_EQ(gestures->OnGestureTwoFingerTap(UNCHANGED, 5, 5), CHANGED);
    EXPECT_EQ(timer(), 30u);
    EXPECT_EQ(hints, std::vector<short>{19});
    EXPECT_EQ(rt->meshes.transforms.find(5)->first[12], 0.0f);
    EXPECT_EQ(rt->nodeMoved, (std::vector<unsigned char>{0, 0}));
    EXPECT_EQ(rt->nodeShown, (std::vector<unsigned char>{0xFF, 0xFF}));
    for (int i = 0; i < 16; ++i)
        viewState->animate();
    EXPECT_NEAR(left(), turn / 2.0f, 1e-3f) << "half way after 16 ticks";
    for (int i = 0; i < 16; ++i)
        viewState->animate();
    EXPECT_NEAR(left(), 0.0f, 1e-3f);
    // The timer ends on the next tick, or at a touch press.
    ASSERT_EQ(timer(), 30u);
    qrntest::setTouchInput(true);
    gestures->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 1, 1);
    EXPECT_EQ(timer(), 0u);
}

} // namespace
