#include "qrngl/interaction/CameraManipulator.h"

#include "ManipulatorTestSupport.h"
#include "qrngl/overlays/ZoomboxRenderer.h"
#include "qrnmath/QuatUtils.h"
#include "qrnplatform/Settings.h"
#include "qrnplatform/WindowTimer.h"
#include "qrnsg/SCInfo.h"

#include <cmath>
#include <utility>
#include <vector>

namespace {

using qrngl::CHANGED;
using qrngl::UNCHANGED;
using qrnmath::Vec3;
using IE = qrngl::IEventInterpreter;
using Q = qrnmath::QuatUtils;
using Path = std::vector<std::pair<int, int>>;

const unsigned int L = qrngl::KEY_LBUTTON, R = qrngl::KEY_RBUTTON;

class CameraManipulatorTest : public qrntest::ManipulatorTest {
protected:
    void SetUp() override {
        ManipulatorTest::SetUp();
        qrntest::clearOperationSettings();
        info = std::dynamic_pointer_cast<qrnsg::SCInfo>(
            frame->document->addSchema(qrnsg::SCHEMA_INFO));
    }
    void TearDown() override {
        qrntest::clearOperationSettings();
        ManipulatorTest::TearDown();
    }

    std::shared_ptr<qrngl::CameraManipulator> make() {
        return std::make_shared<qrngl::CameraManipulator>(frame, viewState, cursor);
    }
    // Press at the first point, move through all, release at the last.
    static qrngl::FrameStatus drag(qrngl::CameraManipulator& m, qrngl::MouseButton button,
                                   unsigned int flags, const Path& path) {
        m.mouseButtonDown(UNCHANGED, flags, button, path.front().first, path.front().second);
        for (const auto& p : path)
            m.mouseMotion(flags, p.first, p.second);
        return m.mouseButtonUp(UNCHANGED, 0, button, path.back().first, path.back().second);
    }
    bool hasZoombox() const {
        for (const auto& r : renderer->postRenderers)
            if (auto box = std::dynamic_pointer_cast<qrngl::ZoomboxRenderer>(r))
                return box->fill() && box->outline();
        return false;
    }

    std::shared_ptr<qrnsg::SCInfo> info;
    std::shared_ptr<qrngl::Cursor> cursor = std::make_shared<qrngl::Cursor>();
};

TEST_F(CameraManipulatorTest, DragsMoveTheCameraAndRecordOneUndoStepEach) {
    auto m = make();
    ASSERT_EQ(m->getOperation(), IE::ROTATE) << "no stored operation";
    // A drag may cull until released, then the full frame is asked for.
    int updates = 0;
    renderer->updateNotifier = [&] { ++updates; };
    m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 100, 100);
    EXPECT_FALSE(renderer->sizeCulling);
    m->mouseMotion(L, 130, 110);
    EXPECT_TRUE(renderer->sizeCulling);
    m->mouseMotion(L, 160, 120);
    EXPECT_EQ(m->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, 160, 120), CHANGED);
    EXPECT_FALSE(renderer->sizeCulling);
    EXPECT_GE(updates, 1);
    EXPECT_NE(camera->modelRotation(), qrnmath::MatrixUtils::identity());
    ASSERT_EQ(frame->undo->size(), 1u);
    frame->undo->undo();
    EXPECT_EQ(camera->modelRotation(), qrnmath::MatrixUtils::identity());

    // Pan: the model under the pointer follows it.
    m->setOperation(IE::PAN);
    Vec3 grabbed = qrntest::underPixel(camera, 100.0f, 100.0f);
    drag(*m, qrngl::LEFT, L, {{100, 100}, {140, 90}, {180, 140}});
    qrntest::expectShownAt(camera, grabbed, 180.0f, 140.0f);

    // A right drag zooms about the press point, in going down.
    grabbed = qrntest::underPixel(camera, 300.0f, 100.0f);
    drag(*m, qrngl::RIGHT, R, {{300, 100}, {300, 105}, {301, 110}, {301, 115}});
    EXPECT_NEAR(camera->zoomFactor(), 1.0f / std::pow(1.02f, 3.0f), 1e-5f);
    qrntest::expectShownAt(camera, grabbed, 300.0f, 100.0f);
    EXPECT_EQ(frame->undo->size(), 2u);

    // No step for a drag back to its press point, a consumed press or a touch press; the
    // last two leave the pan, which a PAN drag would change, alone.
    drag(*m, qrngl::LEFT, L, {{50, 50}, {90, 60}, {50, 50}});
    const Vec3 pan = camera->modelTranslation();
    EXPECT_EQ(m->mouseButtonDown(CHANGED, L, qrngl::LEFT, 10, 10), CHANGED);
    EXPECT_EQ(m->mouseMotion(L, 40, 40), UNCHANGED);
    m->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, 40, 40);
    qrntest::setTouchInput(true);
    EXPECT_EQ(drag(*m, qrngl::LEFT, L, {{10, 10}, {40, 40}}), UNCHANGED);
    EXPECT_EQ(camera->modelTranslation(), pan);
    EXPECT_EQ(frame->undo->size(), 2u);
}

TEST_F(CameraManipulatorTest, EveryChangeOfAChordDragIsUndoable) {
    auto m = make();
    const qrngl::Camera start = *camera;
    m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 100, 100);
    m->mouseMotion(L, 130, 100); // rotates
    m->mouseButtonDown(UNCHANGED, L | R, qrngl::RIGHT, 130, 100);
    EXPECT_EQ(m->mouseMotion(L | R, 150, 120), CHANGED); // left and right pan
    m->mouseButtonUp(UNCHANGED, L, qrngl::RIGHT, 150, 120);
    const qrngl::Camera afterChord = *camera;
    // The left drag goes on, back to where the right button was pressed.
    EXPECT_EQ(m->mouseMotion(L, 130, 100), CHANGED);
    m->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, 130, 100);
    // The turn before the chord, the chord's pan, the turn after it.
    ASSERT_EQ(frame->undo->size(), 3u);
    frame->undo->undo();
    EXPECT_EQ(camera->modelRotation(), afterChord.modelRotation());
    frame->undo->undo();
    frame->undo->undo();
    EXPECT_EQ(camera->modelRotation(), start.modelRotation());
    EXPECT_EQ(camera->modelTranslation(), start.modelTranslation());

    // A release that a predecessor consumed ends the drag all the same, with its undo step;
    // a consumed click does not use up the one-shot normal view.
    m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 10, 10);
    m->mouseMotion(L, 20, 20);
    EXPECT_EQ(m->mouseButtonUp(CHANGED, 0, qrngl::LEFT, 20, 20), CHANGED);
    EXPECT_TRUE(frame->undo->canUndo());
    EXPECT_EQ(m->mouseMotion(L, 40, 40), UNCHANGED);
    m->setOperation(IE::NORMALVIEW);
    m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 40, 40);
    EXPECT_EQ(m->mouseButtonUp(CHANGED, 0, qrngl::LEFT, 40, 40), CHANGED);
    EXPECT_EQ(m->getOperation(), IE::NORMALVIEW);
    // init forgets a drag in progress and every masked operation.
    m->setAvailOperations(0);
    m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 10, 10);
    m->init();
    EXPECT_EQ(m->getAvailOperations(), static_cast<unsigned int>(IE::ALL_OPERATIONS));
    EXPECT_EQ(m->mouseMotion(L, 40, 40), UNCHANGED);
}

TEST_F(CameraManipulatorTest, WheelZoomStopsAtItsBoundsWithAFiniteView) {
    auto m = make();
    m->mouseMotion(0, 300, 100);
    auto finite = [&] {
        for (const auto& matrix : {camera->getProjectionMatrix(), camera->getViewMatrix()})
            for (int i = 0; i < 16; ++i)
                if (!std::isfinite(matrix[i]))
                    return false;
        return std::isfinite(camera->modelTranslation().length());
    };
    // The zoom stops at its bounds with a finite view; a notch changing nothing records none.
    for (const int delta : {120, -120}) {
        for (int i = 0; i < 3000; ++i)
            m->mouseWheel(0, delta, 1.25f);
        EXPECT_FLOAT_EQ(camera->zoomFactor(), delta > 0 ? qrngl::Camera::minZoomFactor()
                                                        : qrngl::Camera::maxZoomFactor());
        EXPECT_TRUE(finite());
        const std::size_t steps = frame->undo->size();
        m->mouseWheel(0, delta, 1.25f);
        EXPECT_EQ(frame->undo->size(), steps);
    }
}

TEST_F(CameraManipulatorTest, BoxSelectAndRubberBandShowTheRectangleAndActAtRelease) {
    auto m = make();
    std::vector<int> selected;
    m->setBoxSelectHandler([&](int x0, int y0, int x1, int y1, unsigned int flags) {
        selected = {x0, y0, x1, y1, static_cast<int>(flags)};
    });
    m->setOperation(IE::BOXSELECT);
    const qrngl::Camera before = *camera;
    m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 40, 30);
    EXPECT_EQ(m->mouseMotion(L, 90, 70), CHANGED);
    EXPECT_TRUE(hasZoombox());
    EXPECT_TRUE(selected.empty());
    EXPECT_EQ(m->mouseButtonUp(UNCHANGED, qrngl::KEY_SHIFT, qrngl::LEFT, 90, 70), UNCHANGED);
    EXPECT_EQ(selected, (std::vector<int>{40, 30, 90, 70, static_cast<int>(qrngl::KEY_SHIFT)}));
    EXPECT_FALSE(hasZoombox());
    EXPECT_EQ(camera->modelRotation(), before.modelRotation());
    EXPECT_EQ(camera->zoomFactor(), before.zoomFactor());

    // The rubber band zooms to the box at release, one undo step.
    const std::size_t steps = frame->undo->size();
    m->setOperation(IE::ZOOMBOX);
    const Vec3 middle = qrntest::underPixel(camera, 130.0f, 85.0f);
    m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 100, 50);
    EXPECT_EQ(m->mouseMotion(L, 160, 120), CHANGED);
    EXPECT_TRUE(hasZoombox());
    // Window rows 50 to 120 of 300 are rows 179 to 250 from the bottom.
    EXPECT_EQ(m->getZoomboxFill().bbox().min(), Vec3(100.0f, 179.0f, 0.0f));
    EXPECT_EQ(m->getZoomboxFill().bbox().max(), Vec3(161.0f, 250.0f, 0.0f));
    EXPECT_EQ(camera->zoomFactor(), 1.0f) << "the camera waits for the release";
    EXPECT_EQ(m->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, 160, 120), CHANGED);
    EXPECT_FALSE(hasZoombox());
    EXPECT_NEAR(camera->zoomFactor(), 70.0f / 300.0f, 1e-5f);
    qrntest::expectShownAt(camera, middle, 200.0f, 150.0f);
    EXPECT_EQ(frame->undo->size(), steps + 1);
}

std::uint64_t g_clock = 0;

TEST_F(CameraManipulatorTest, NormalViewIsOneShotAndSpinKeepsTurning) {
    void* shown = nullptr;
    cursor->set(IE::ROTATE, &shown);
    cursor->setHook([&](void* c) { shown = c; });
    auto m = make();
    m->setOperation(IE::NORMALVIEW);
    EXPECT_FALSE(m->setCursor());
    testing::internal::CaptureStdout();
    EXPECT_EQ(drag(*m, qrngl::LEFT, L, {{10, 10}, {20, 20}, {30, 30}}), CHANGED);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "interpret normalview\ninterpret normalview\n");
    EXPECT_EQ(m->getOperation(), IE::NORMALVIEW) << "only a click uses it up";
    EXPECT_EQ(drag(*m, qrngl::LEFT, L, {{30, 30}}), CHANGED);
    EXPECT_EQ(m->getOperation(), IE::ROTATE);
    EXPECT_TRUE(m->setCursor());
    EXPECT_EQ(shown, &shown);

    // Each tick repeats the last step of a spin drag, until a press.
    m->setOperation(IE::SPIN);
    drag(*m, qrngl::LEFT, L, {{50, 50}, {60, 50}, {70, 54}});
    const qrnmath::Mat4 released = camera->modelRotation();
    EXPECT_EQ(m->spin(), CHANGED);
    EXPECT_NE(camera->modelRotation(), released);
    drag(*m, qrngl::LEFT, L, {{70, 54}});
    EXPECT_EQ(m->spin(), UNCHANGED);
    EXPECT_TRUE(renderer->postRenderers.empty());

    // A spin goes on only when released in motion.
    qrnplatform::WindowTimer::setClock([] { return g_clock; });
    for (const std::uint64_t rest : {20u, 200u}) {
        g_clock = 1000;
        m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, 50, 50);
        for (int x = 55; x <= 70; x += 5) {
            g_clock += 10;
            m->mouseMotion(L, x, 50);
        }
        g_clock += rest;
        m->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, 70, 50);
        EXPECT_EQ(m->isSpinning(), rest < 100) << rest << " ms at rest";
    }
    qrnplatform::WindowTimer::setClock(nullptr);
}

TEST_F(CameraManipulatorTest, WheelZoomsAboutThePointerAndArrowKeysTurnTheView) {
    auto m = make();
    m->mouseMotion(0, 300, 100);
    const Vec3 under = qrntest::underPixel(camera, 300.0f, 100.0f);
    EXPECT_EQ(m->mouseWheel(0, 120, 1.25f), CHANGED);
    EXPECT_NEAR(camera->zoomFactor(), 0.8f, 1e-6f);
    qrntest::expectShownAt(camera, under, 300.0f, 100.0f);
    ASSERT_EQ(frame->undo->size(), 1u);
    frame->undo->undo();
    m->setAvailOperations(~static_cast<unsigned int>(IE::ZOOM));
    EXPECT_EQ(m->mouseWheel(0, -120, 1.25f), UNCHANGED);
    EXPECT_EQ(camera->zoomFactor(), 1.0f);

    // 0.068 of 10 degrees: Up about the view's right, Left about its up, Down and Right back.
    const std::pair<unsigned int, Vec3> keys[] = {
        {38, camera->right()}, {40, -camera->right()}, {37, camera->up()}, {39, -camera->up()}};
    const qrnmath::Mat4 unturned = camera->modelRotation();
    for (const auto& k : keys) {
        const qrnmath::Vec4 before = Q::create(camera->modelRotation());
        EXPECT_EQ(m->keyDown(UNCHANGED, k.first, 0, 0), CHANGED);
        Vec3 axis;
        float angle = 0.0f;
        Q::toAxisAngle(Q::multiply(Q::conjugate(before), Q::create(camera->modelRotation())), axis,
                       angle);
        EXPECT_NEAR(angle, 0.68f * 3.14159265f / 180.0f, 1e-4f) << k.first;
        EXPECT_TRUE(qrnmath::nearlyEqual(axis, k.second, 1e-3f)) << k.first;
    }
    EXPECT_TRUE(renderer->motion);
    // Each press is an undo step.
    EXPECT_EQ(frame->undo->size(), 4u);
    for (int i = 0; i < 4; ++i)
        frame->undo->undo();
    EXPECT_EQ(camera->modelRotation(), unturned);
}

TEST_F(CameraManipulatorTest, EscapeStopsTheAnimationAndEndsZooming) {
    qrnplatform::Settings(L"Settings\\Tools").writeDword(L"Operation", IE::SPIN);
    auto m = make();
    EXPECT_EQ(m->getOperation(), IE::SPIN);
    m->setOperation(IE::PAN);
    m->next();
    ASSERT_EQ(timer(), 30u);
    EXPECT_EQ(m->keyDown(UNCHANGED, 27, 0, 0), UNCHANGED);
    EXPECT_EQ(timer(), 0u);
    EXPECT_TRUE(m->getEscapePressed());
    EXPECT_EQ(m->getOperation(), IE::PAN);

    // Zooming gives way to the default: the stored one, PAN in a drawing, ROTATE in 2D.
    m->setOperation(IE::ZOOMBOX);
    EXPECT_EQ(m->keyDown(UNCHANGED, 27, 0, 0), CHANGED);
    EXPECT_EQ(m->getOperation(), IE::SPIN);
    info->documentType = qrnsg::SCInfo::DRAWING;
    m->setOperation(IE::ZOOM);
    m->keyDown(UNCHANGED, 27, 0, 0);
    EXPECT_EQ(m->getOperation(), IE::PAN);
    info->documentType = qrnsg::SCInfo::MODEL;
    frame->is2D = true;
    auto sheet = make();
    EXPECT_EQ(sheet->getOperation(), IE::PAN);
    sheet->setOperation(IE::ZOOM);
    sheet->keyDown(UNCHANGED, 27, 0, 0);
    EXPECT_EQ(sheet->getOperation(), IE::ROTATE);
}

} // namespace
