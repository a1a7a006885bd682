#include "qrngl/interaction/ViewState.h"

#include "qrnmath/QuatUtils.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnui/Hint.h"

#include <deque>
#include <tuple>
#include <vector>

// Last: on Windows it brings <windows.h>, whose macros clash with names in the scene headers.
#include "ManipulatorTestSupport.h"

namespace {

using qrngl::Camera;
using qrngl::CameraHelper;
using qrngl::ViewState;
using qrnmath::Mat4;
using qrnmath::Vec3;
using qrnplatform::WindowTimer;
using qrnsg::SCView;
using qrntest::TestWindow;
using Q = qrnmath::QuatUtils;

class CountingCanvas : public qrngl::ICanvas {
public:
    bool OnCreate() override { return true; }
    void OnDestroy() override {}
    void OnDraw() const override {}
    void OnSize(unsigned int, unsigned int, unsigned int, unsigned int) override {}
    void Invalidate() override { ++invalidated; }
    int invalidated = 0;
};

class RecordingUpdater : public qrn::IUpdater {
public:
    void update(const qrnui::Hint& hint) override {
        codes.push_back(hint.code());
        EXPECT_EQ(hint.document(), document);
    }
    std::vector<short> codes;
    std::shared_ptr<qrn::IDocument> document;
};

// What the view shows: everything that places the picture.
using Pose = std::tuple<Mat4, Vec3, float, Vec3, float>;
Pose poseOf(const Camera& c) {
    return Pose{c.modelRotation(), c.sphereCentre(), c.sphereRadius(), c.modelTranslation(),
                c.zoomFactor()};
}

qrnsg::Mesh boxMesh(const Vec3& lo, const Vec3& hi) {
    qrnsg::Mesh m;
    for (int i = 0; i < 8; ++i)
        m.vertices.push_back(
            Vec3((i & 1) ? hi[0] : lo[0], (i & 2) ? hi[1] : lo[1], (i & 4) ? hi[2] : lo[2]));
    m.indices = {0, 1, 2, 5, 6, 7};
    return m;
}

float angleTo(const Mat4& a, const Mat4& b) {
    return Q::angleBetween(Q::create(a), Q::create(b));
}

// A flat box, and a hidden one far off that must not count, shown through two canvases.
class ViewStateTest : public qrntest::ManipulatorTest {
protected:
    void SetUp() override {
        ManipulatorTest::SetUp();
        document = frame->document;
        scene = std::dynamic_pointer_cast<qrnsg::SCScene>(document->addSchema(qrnsg::SCHEMA_SCENE));
        auto rt = std::dynamic_pointer_cast<qrnsg::SCSceneRT>(
            document->addSchema(qrnsg::SCHEMA_SCENE_RT));
        auto topology = std::dynamic_pointer_cast<qrnsg::SCSceneTopo>(
            document->addSchema(qrnsg::SCHEMA_SCENE_TOPO));
        document->addSchema(qrnsg::SCHEMA_INFO);
        scene->meshes.push_back(boxMesh(Vec3(0.0f, 0.0f, 0.0f), Vec3(8.0f, 3.0f, 1.0f)));
        scene->meshes.push_back(boxMesh(Vec3(100.0f), Vec3(101.0f)));
        rt->meshes.add(1, 0, -1);
        rt->meshes.add(2, 1, -1);
        *rt->meshes.flags.find(2) = 0;
        qrnsg::SCSceneTopo::Node node;
        node.meshIds = {1, 2};
        topology->nodes.push_back(node);
        box = qrnsg::BBox(Vec3(0.0f, 0.0f, 0.0f), Vec3(8.0f, 3.0f, 1.0f));

        renderer->canvases = {first, second};
        updater->document = document;
        viewState = std::make_shared<ViewState>(window, document, updater);
        CameraHelper::setRotation(camera, views->rotation(SCView::ISOMETRIC));
        viewState->zoomFit();
        WindowTimer::takeInvalidated();
    }

    // The camera the orientation shows when the box is fitted there.
    Pose fitted(SCView::ORIENTATION orientation) const {
        auto c = std::make_shared<Camera>(*camera);
        CameraHelper::setRotation(c, views->rotation(orientation));
        CameraHelper::lookAt(c, box);
        return poseOf(*c);
    }
    // One tick; true when it moved the camera.
    bool tick() {
        const Pose before = poseOf(*camera);
        viewState->animate();
        return poseOf(*camera) != before;
    }
    // Ticks until the timer stops; how many, and how many moved the camera.
    std::pair<int, int> runOut() {
        int ticks = 0, moved = 0;
        for (; ticks < 1000 && timer() != 0; ++ticks)
            moved += tick() ? 1 : 0;
        return {ticks, moved};
    }

    std::shared_ptr<qrn::Document> document;
    std::shared_ptr<qrnsg::SCScene> scene;
    qrnsg::BBox box;
    std::shared_ptr<CountingCanvas> first = std::make_shared<CountingCanvas>();
    std::shared_ptr<CountingCanvas> second = std::make_shared<CountingCanvas>();
    std::shared_ptr<RecordingUpdater> updater = std::make_shared<RecordingUpdater>();
};

TEST_F(ViewStateTest, SinglePlayEndsExactlyOnTheTargetAndKillsTheTimer) {
    CameraHelper::translate(camera, 40, -25);
    CameraHelper::zoom(camera, 300, 100, 1.5f, true);
    renderer->motion = true;
    const Mat4 start = camera->modelRotation();
    const Pose target = fitted(SCView::TOP);
    const float turn = angleTo(start, std::get<0>(target));
    ASSERT_GT(turn, 0.5f);

    viewState->play(SCView::TOP, 50);
    EXPECT_FALSE(viewState->isPlaying()) << "a single play is no loop";
    for (int i = 1; i <= 50; ++i) {
        ASSERT_EQ(timer(), 30u) << i;
        ASSERT_TRUE(tick()) << i;
        // Every tick repaints the first canvas and the window.
        ASSERT_EQ(WindowTimer::takeInvalidated(), std::vector<void*>{window}) << i;
        if (i == 25) { // equal steps
            EXPECT_NEAR(angleTo(start, camera->modelRotation()), 0.5f * turn, 1e-3f);
        }
    }
    EXPECT_TRUE(renderer->motion);
    // The next tick ends it: the timer goes and the camera lands on the target exactly.
    viewState->animate();
    EXPECT_EQ(timer(), 0u);
    EXPECT_TRUE(poseOf(*camera) == target);
    EXPECT_EQ(camera->modelRotation(), views->rotation(SCView::TOP));
    EXPECT_FALSE(renderer->motion);
    EXPECT_EQ(first->invalidated, 51);
    EXPECT_EQ(second->invalidated, 0);
    EXPECT_TRUE(updater->codes.empty());
}

TEST_F(ViewStateTest, ATargetThatNeedsNoMotionStartsNoTimer) {
    viewState->set(SCView::FRONT);
    viewState->zoomFit();
    // The pan's z takes no part in the view: it is not animated away.
    for (float z : {0.0f, 5.0f}) {
        camera->setModelTranslation(Vec3(0.0f, 0.0f, z));
        viewState->play(SCView::FRONT, 50);
        EXPECT_EQ(timer(), 0u) << z;
    }
    // Any visible difference is.
    camera->setModelTranslation(Vec3(0.001f, 0.0f, 5.0f));
    viewState->play(SCView::FRONT, 50);
    EXPECT_EQ(timer(), 30u);
    viewState->reset();
    EXPECT_EQ(timer(), 0u);
    camera->setModelTranslation(Vec3(0.0f));
    CameraHelper::rotateBy(camera, Q::create(Vec3(0.0f, 0.0f, 1.0f), 0.01f));
    viewState->play(SCView::FRONT, 50);
    EXPECT_EQ(timer(), 30u) << "a hundredth of a degree is a turn";

    // Without topology only the rotation moves.
    document->removeSchema(qrnsg::SCHEMA_SCENE_TOPO);
    CameraHelper::lookAt(camera, Vec3(1.0f, 2.0f, 3.0f), 7.0f);
    viewState->play(SCView::BACK, 10);
    EXPECT_EQ(runOut().first, 10 + 1);
    EXPECT_EQ(camera->modelRotation(), views->rotation(SCView::BACK));
    EXPECT_EQ(camera->sphereCentre(), Vec3(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(camera->sphereRadius(), 7.0f);
}

TEST_F(ViewStateTest, ALoopingSequenceAlternatesWithPausesUntilReset) {
    viewState->play(std::deque<SCView::ORIENTATION>{SCView::FRONT, SCView::TOP}, 10, true);
    EXPECT_TRUE(viewState->isPlaying());
    const SCView::ORIENTATION expected[] = {SCView::FRONT, SCView::TOP};
    for (int t = 1; t <= 250; ++t) {
        // Ten ticks of motion, then 50 at rest, over and over.
        ASSERT_EQ(tick(), (t - 1) % 60 < 10) << "tick " << t;
        ASSERT_EQ(timer(), 30u) << t;
        ASSERT_TRUE(viewState->isPlaying()) << "in motion and at rest alike, tick " << t;
        if (t % 60 == 10) {
            EXPECT_NEAR(angleTo(camera->modelRotation(), views->rotation(expected[(t / 60) % 2])),
                        0.0f, 1e-3f)
                << t;
        }
    }
    viewState->reset();
    EXPECT_FALSE(viewState->isPlaying());
    EXPECT_EQ(timer(), 0u);
    for (int t = 0; t < 120; ++t)
        ASSERT_FALSE(tick()) << t;

    // A sequence skips views that need no motion and ends after its last pause.
    viewState->set(SCView::FRONT);
    viewState->zoomFit();
    viewState->play(std::deque<SCView::ORIENTATION>{SCView::FRONT, SCView::RIGHT}, 5, false);
    EXPECT_FALSE(viewState->isPlaying());
    EXPECT_EQ(runOut(), std::make_pair(5 + 50 + 1, 5));
    EXPECT_NEAR(angleTo(camera->modelRotation(), views->rotation(SCView::RIGHT)), 0.0f, 1e-3f);
}

TEST_F(ViewStateTest, SavedViewsAreAnimatedWithHint20) {
    SCView::View saved;
    saved.eye = Vec3(4.0f, -40.0f, 0.5f);
    saved.target = Vec3(4.0f, 1.5f, 0.5f);
    saved.up = Vec3(0.0f, 0.0f, 1.0f);
    saved.viewHeight = 6.0f;
    views->views.push_back(saved);
    CameraHelper::translate(camera, 10, 10);
    const Mat4 screen = CameraHelper::getModelToScreen(camera);

    viewState->play(0, 20);
    EXPECT_EQ(timer(), 30u);
    EXPECT_EQ(updater->codes, std::vector<short>{20});
    // Visiting the view to learn where it is leaves the camera where it was.
    const Mat4 after = CameraHelper::getModelToScreen(camera);
    for (const Vec3& p : {Vec3(0.0f), Vec3(8.0f, 3.0f, 1.0f)}) {
        const Vec3 a = qrnmath::MatrixUtils::transformPoint(screen, p);
        const Vec3 b = qrnmath::MatrixUtils::transformPoint(after, p);
        EXPECT_NEAR(a[0], b[0], 1e-2f);
        EXPECT_NEAR(a[1], b[1], 1e-2f);
    }
    EXPECT_EQ(runOut().first, 20 + 1);
    EXPECT_TRUE(
        qrnmath::nearlyEqual(camera->direction(), (saved.target - saved.eye).normalized(), 1e-5f));
    EXPECT_GT(camera->up().dot(saved.up), 0.999f);
    EXPECT_EQ(camera->sphereCentre(), saved.target);
    EXPECT_NEAR(2.0f * camera->halfHeight(), 6.0f, 1e-4f);

    // A view that cannot be shown starts nothing and says nothing.
    viewState->play(5, 20);
    EXPECT_EQ(timer(), 0u);
    EXPECT_EQ(updater->codes.size(), 1u);

    // A sequence of views starts when the first pause has run out, then pauses again.
    saved.eye = Vec3(4.0f, 1.5f, 30.0f);
    saved.up = Vec3(0.0f, 1.0f, 0.0f);
    views->views[0] = saved;
    viewState->play(std::vector<int>{0}, 10, false);
    EXPECT_EQ(updater->codes.size(), 1u);
    for (int t = 1; t <= 111; ++t)
        ASSERT_EQ(tick(), t > 50 && t <= 60) << t;
    EXPECT_EQ(updater->codes, (std::vector<short>{20, 20}));
    EXPECT_EQ(timer(), 0u);
}

TEST_F(ViewStateTest, SetAndZoomFitAndWhatIsLeftWithoutInformationOrRenderer) {
    viewState->set(SCView::LEFT);
    EXPECT_EQ(camera->modelRotation(), views->rotation(SCView::LEFT));
    CameraHelper::translate(camera, 40, 40);
    CameraHelper::zoom(camera, 0, 0, 3.0f, true);
    // Further views of the document are refreshed with the main window.
    TestWindow split;
    std::dynamic_pointer_cast<qrnsg::SCInfo>(document->getSchema(qrnsg::SCHEMA_INFO))->views = {
        split.handle()};
    viewState->zoomFit();
    EXPECT_TRUE(poseOf(*camera) == fitted(SCView::LEFT));
    EXPECT_EQ(WindowTimer::takeInvalidated(), (std::vector<void*>{split.handle(), window}));

    // Geometry held as resources is fitted the same way.
    auto resources =
        std::dynamic_pointer_cast<qrnsg::SCSceneRes>(document->addSchema(qrnsg::SCHEMA_SCENE_RES));
    resources->meshes.push_back(boxMesh(Vec3(20.0f), Vec3(22.0f, 26.0f, 21.0f)));
    scene->meshes.clear();
    viewState->zoomFit();
    EXPECT_EQ(camera->sphereCentre(), Vec3(21.0f, 23.0f, 20.5f));

    // Without the document information nothing is fitted.
    document->removeSchema(qrnsg::SCHEMA_INFO);
    CameraHelper::translate(camera, 40, 40);
    const Pose moved = poseOf(*camera);
    viewState->zoomFit();
    EXPECT_TRUE(poseOf(*camera) == moved);

    // Without a renderer only the timer and the window are served.
    document->removeSchema(qrnsg::SCHEMA_RENDERER);
    viewState->play(SCView::TOP, 10);
    EXPECT_EQ(timer(), 0u);
    viewState->play(std::vector<int>{0, 1}, 10, true);
    EXPECT_EQ(timer(), 30u);
    WindowTimer::takeInvalidated();
    viewState->animate();
    EXPECT_EQ(WindowTimer::takeInvalidated(), std::vector<void*>{window});
    viewState->reset();
    EXPECT_EQ(timer(), 0u);
    // The destructor stops the timer as well.
    viewState->play(std::vector<int>{0}, 10, false);
    EXPECT_EQ(timer(), 30u);
    viewState.reset();
    EXPECT_EQ(timer(), 0u);
}

} // namespace
