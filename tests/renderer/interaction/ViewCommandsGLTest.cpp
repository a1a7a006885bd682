#include "qrngl/interaction/CameraManipulator.h"

#include "GLTest.h"
#include "TestDocument.h"
#include "qrngl/GL.h"
#include "qrngl/frame/Canvas.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrngl/picking/PickingHelper.h"
#include "qrngl/picking/RBOPickCanvas.h"
#include "qrnglutils/ViewRenderer.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>
#include <vector>

// Last: on Windows it brings <windows.h>, whose macros clash with names in the scene headers.
#include "ManipulatorTestSupport.h"

namespace qrntest {
namespace {

using qrngl::UNCHANGED;
using qrnmath::Vec3;
using qrnsg::EntityNames;
using Mode = qrngl::SCRenderer::RENDERMODE;
using IE = qrngl::IEventInterpreter;

const unsigned int L = qrngl::KEY_LBUTTON;
const Rgba kBackground{230, 230, 230, 255};

struct Recorder : qrngl::ISelector {
    void select(unsigned int, const qrngl::FilterResult& result) override {
        names = result.names();
    }
    std::vector<unsigned int> names;
};

// Box parts seen along -z, orthographic, 4/3 pixel a unit, the origin at pixel (80, 60): grey A
// (half size 10) at the origin, pixels 67 to 93; blue B (10) behind A to the right, seen from
// pixel 94 to 109; red C (3) on the left at pixel 40. Picks go through a colour-id canvas.
class ViewCommandsGLTest : public GLTest {
protected:
    unsigned int width() const override { return 160; }
    unsigned int height() const override { return 120; }

    void SetUp() override {
        GLTest::SetUp();
        clearOperationSettings();
        auto material = [&](float r, float g, float b) {
            return doc.addMeshMaterial(qrnsg::MMaterial::fromColor(r, g, b), false);
        };
        const int grey = material(0.6f, 0.6f, 0.6f);
        const int blue = material(0.1f, 0.2f, 0.9f);
        const int red = material(0.9f, 0.1f, 0.1f);
        doc.addLineMaterial(qrnsg::PLMaterial());
        a = doc.addBoxPart(L"A", Vec3(0, 0, 0), 10.0f, grey);
        b = doc.addBoxPart(L"B", Vec3(12, 0, -30), 10.0f, blue);
        c = doc.addBoxPart(L"C", Vec3(-30, 0, 0), 3.0f, red);
        doc.document->addSchema(qrnsg::SCHEMA_VIEW);
        camera = doc.renderer->camera;
        camera->setProjection(qrngl::Camera::ORTHOGRAPHIC);
        look(Vec3(0, 0, 100), Vec3(0, 1, 0), 45.0f);
        doc.renderer->viewRenderer = std::make_shared<qrnglutils::ViewRenderer>(camera);
        // Faces pushed back behind their edges, as the viewer's lights do; unlit.
        doc.renderer->sceneSetupRenderer = calling([] { glPolygonOffset(1.0f, 1.0f); });

        canvas = std::make_shared<qrngl::Canvas>(context, doc.document);
        canvas->OnSize(0, 0, width(), height());
        doc.renderer->canvases.push_back(canvas);
        picker = std::make_shared<qrngl::RBOPickCanvas>(context, doc.document);
        ASSERT_TRUE(picker->OnCreate());
        picker->OnSize(0, 0, width(), height());
        doc.renderer->pickCanvas = picker;

        frame->document = doc.document;
        viewState = std::make_shared<qrngl::ViewState>(window, doc.document, nullptr);
        m = std::make_shared<qrngl::CameraManipulator>(frame, viewState,
                                                       std::make_shared<qrngl::Cursor>());
    }
    void TearDown() override {
        m.reset();
        viewState.reset();
        context->activate();
        picker->OnDestroy();
        clearOperationSettings();
        GLTest::TearDown();
    }

    // Looks at the origin from `from`, the view sphere's radius given.
    void look(const Vec3& from, const Vec3& up, float radius) {
        qrngl::CameraHelper::lookAt(camera, from, Vec3(0, 0, 0), up);
        qrngl::CameraHelper::lookAt(camera, Vec3(0, 0, 0), radius);
    }
    void paint() {
        canvas->Invalidate();
        canvas->OnDraw();
        context->activate();
    }
    void finishAnimation() {
        for (int i = 0; i < 500 && animating(); ++i)
            viewState->animate();
    }
    bool animating() const {
        return qrnplatform::WindowTimer::interval(window, qrngl::ViewState::TIMER_ID) != 0;
    }
    Vec3 onScreen(const Vec3& p) const {
        return qrnmath::MatrixUtils::transformPoint(qrngl::CameraHelper::getModelToScreen(camera),
                                                    p);
    }
    // The face seen at a window point.
    EntityNames::Entity pickAt(int x, int y) {
        auto recorder = std::make_shared<Recorder>();
        qrngl::PickingHelper::pick(
            picker, std::make_shared<qrngl::EntityFilter>(1, qrngl::EntityFilter::NEAREST),
            recorder, 0, x, y, 2);
        return recorder->names.empty() ? EntityNames::Entity()
                                       : doc.topology->resolve(recorder->names.front());
    }
    unsigned int face(int node, int index) const {
        return doc.topology->name(node, EntityNames::FACE, index);
    }
    void click(int x, int y) {
        m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, x, y);
        m->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, x, y);
    }
    // Whether a pixel within one of (x, y) passes the test.
    bool anyNear(const Vec3& at, const std::function<bool(const Rgba&)>& test) const {
        const int x = static_cast<int>(at[0]), y = static_cast<int>(at[1]);
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (test(pixel(static_cast<unsigned>(x + dx), static_cast<unsigned>(y + dy))))
                    return true;
        return false;
    }

    TestDocument doc;
    int a = -1, b = -1, c = -1;
    std::shared_ptr<qrngl::Camera> camera;
    std::shared_ptr<qrngl::Canvas> canvas;
    std::shared_ptr<qrngl::IPickCanvas> picker;
    std::shared_ptr<TestFrame> frame = std::make_shared<TestFrame>();
    TestWindow testWindow;
    const qrngl::HWND window = testWindow.handle();
    std::shared_ptr<qrngl::ViewState> viewState;
    std::shared_ptr<qrngl::CameraManipulator> m;
};

bool dark(const Rgba& p) {
    return std::max({p.r, p.g, p.b}) < 80;
}
bool blank(const Rgba& p) {
    for (int i = 0; i < 3; ++i)
        if (std::abs(p[i] - kBackground[i]) > 3)
            return false;
    return true;
}
bool bluish(const Rgba& p) {
    return p.b > p.r + 40;
}
bool greyish(const Rgba& p) {
    return !blank(p) && !dark(p) && std::abs(p.b - p.r) < 10;
}

TEST_F(ViewCommandsGLTest, NormalViewClickTurnsToLookStraightAtAPlanarFace) {
    look(Vec3(60, 40, 100), Vec3(0, 1, 0), 45.0f);
    const Vec3 oldUp = camera->up();
    const Vec3 at = onScreen(Vec3(10, 2, 3)); // on A's +x face
    const int x = static_cast<int>(at[0]), y = static_cast<int>(at[1]);
    ASSERT_EQ(pickAt(x, y).index, 0) << "A's +x face is seen there";

    // Nothing for a curved face or empty space; the tool is used up all the same.
    const qrngl::Camera start = *camera;
    doc.topology->parts[0].entities.faces[0].surface.type = qrnsg::PartEntities::Surface::CYLINDER;
    m->setOperation(IE::NORMALVIEW);
    click(x, y);
    m->setOperation(IE::NORMALVIEW);
    click(2, 2);
    EXPECT_FALSE(animating());
    EXPECT_EQ(camera->modelRotation(), start.modelRotation());
    EXPECT_EQ(m->getOperation(), IE::ROTATE);

    doc.topology->parts[0].entities.faces[0].surface.type = qrnsg::PartEntities::Surface::PLANE;
    m->setOperation(IE::NORMALVIEW);
    click(x, y);
    EXPECT_TRUE(animating());
    finishAnimation();
    const Vec3 direction = camera->direction(), up = camera->up();
    EXPECT_NEAR(direction[0], -1.0f, 1e-5f);
    EXPECT_NEAR(std::abs(up[0]), 0.0f, 1e-5f);
    // Of the ups square to the new view, the one nearest the old.
    EXPECT_NEAR(up.dot(oldUp), std::sqrt(1.0f - oldUp[0] * oldUp[0]), 1e-5f);
    const Vec3 middle = onScreen(Vec3(10, 0, 0));
    const EntityNames::Entity seen =
        pickAt(static_cast<int>(middle[0]), static_cast<int>(middle[1]));
    EXPECT_EQ(seen.node, a);
    EXPECT_EQ(seen.index, 0);
}

TEST_F(ViewCommandsGLTest, RotationAboutThePickedPointKeepsItUnderThePointer) {
    using Path = std::vector<std::pair<int, int>>;
    const Path onA{{70, 50}, {80, 55}, {95, 62}, {110, 70}};
    const Path empty{{150, 110}, {140, 100}, {125, 90}};
    // The camera that plain turns about the sphere's centre give.
    auto turned = [&](const Path& path) {
        auto expected = std::make_shared<qrngl::Camera>(*camera);
        for (std::size_t i = 1; i < path.size(); ++i)
            qrngl::CameraHelper::rotate(expected, path[i].first - path[i - 1].first,
                                        path[i].second - path[i - 1].second);
        return expected;
    };
    auto drag = [&](const Path& path, const std::function<void()>& eachStep) {
        m->mouseButtonDown(UNCHANGED, L, qrngl::LEFT, path.front().first, path.front().second);
        for (const auto& p : path) {
            m->mouseMotion(L, p.first, p.second);
            eachStep();
        }
        m->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, path.back().first, path.back().second);
    };

    // Off by default: the sphere's centre, as ever.
    EXPECT_FALSE(m->getRotateAboutPickedPoint());
    auto expected = turned(onA);
    drag(onA, [] {});
    EXPECT_EQ(camera->modelRotation(), expected->modelRotation());
    EXPECT_EQ(camera->modelTranslation(), expected->modelTranslation());

    m->setRotateAboutPickedPoint(true);
    for (auto projection : {qrngl::Camera::ORTHOGRAPHIC, qrngl::Camera::PERSPECTIVE}) {
        look(Vec3(0, 0, 100), Vec3(0, 1, 0), 45.0f);
        camera->setProjection(projection);
        Vec3 grabbed;
        ASSERT_TRUE(m->viewCommands().getPointInWorld(70, 50, grabbed));
        EXPECT_NEAR(grabbed[2], 10.0f, 1e-3f) << "on A's front face";
        EXPECT_FALSE(m->viewCommands().getPointInWorld(150, 110, grabbed));
        drag(onA, [&] { expectShownAt(camera, grabbed, 70.0f, 50.0f); });
        EXPECT_NE(camera->modelRotation(), qrnmath::MatrixUtils::identity());
    }

    // A drag that starts on empty space turns about the centre.
    look(Vec3(0, 0, 100), Vec3(0, 1, 0), 45.0f);
    expected = turned(empty);
    drag(empty, [] {});
    EXPECT_EQ(camera->modelRotation(), expected->modelRotation());
    EXPECT_EQ(camera->modelTranslation(), expected->modelTranslation());
}

TEST_F(ViewCommandsGLTest, ZoomToSelectionFitsTheEntitiesAndIsOneUndoStep) {
    // The extent of a set of points on screen, as a share of the window's height.
    auto shownHeight = [&](const std::vector<Vec3>& points) {
        float lowest = 1e9f, highest = -1e9f;
        for (const Vec3& p : points) {
            const Vec3 s = onScreen(p);
            EXPECT_GE(s[0], 0.0f);
            EXPECT_LE(s[0], static_cast<float>(width()));
            lowest = std::min(lowest, s[1]);
            highest = std::max(highest, s[1]);
        }
        return (highest - lowest) / static_cast<float>(height());
    };
    const std::vector<Vec3> cCorners{{-33, -3, 3}, {-27, 3, 3}, {-33, 3, -3}, {-27, -3, -3}};

    EXPECT_LT(shownHeight(cCorners), 0.2f);
    const qrngl::Camera start = *camera;
    ASSERT_TRUE(m->viewCommands().zoomToSelection({EntityNames::part(c)}));
    EXPECT_GT(shownHeight(cCorners), 0.9f);
    paint();
    EXPECT_TRUE(anyNear(Vec3(80, 60, 0), [](const Rgba& p) { return p.r > p.b + 40; }))
        << "C in the middle";
    EXPECT_EQ(pickAt(80, 60).node, c);
    EXPECT_EQ(pickAt(30, 60).node, c) << "and far across the window";

    ASSERT_EQ(frame->undo->size(), 1u);
    frame->undo->undo();
    EXPECT_EQ(camera->sphereRadius(), start.sphereRadius());
    EXPECT_EQ(camera->sphereCentre(), start.sphereCentre());

    // A face and an edge of A: the face's top and bottom edges reach the window's.
    ASSERT_TRUE(m->viewCommands().zoomToSelection(
        {face(a, 4), doc.topology->name(a, EntityNames::EDGE, 0)}));
    EXPECT_GT(shownHeight({{-10, -10, 10}, {10, 10, 10}}), 0.9f);
    EXPECT_FALSE(m->viewCommands().zoomToSelection({}));
}

TEST_F(ViewCommandsGLTest, HideShowAndIsolateChangeWhatIsDrawnAndPicked) {
    paint();
    ASSERT_TRUE(greyish(pixel(70, 60))) << pixel(70, 60);
    ASSERT_TRUE(greyish(pixel(92, 60))) << "A in front of B";

    ASSERT_TRUE(m->viewCommands().hideSelected({face(a, 2)}));
    paint();
    EXPECT_TRUE(blank(pixel(70, 60))) << pixel(70, 60);
    EXPECT_TRUE(bluish(pixel(92, 60))) << pixel(92, 60);
    EXPECT_FALSE(pickAt(70, 60).valid());
    EXPECT_EQ(pickAt(92, 60).node, b);
    EXPECT_FALSE(m->viewCommands().hideSelected({EntityNames::part(a)})) << "already hidden";

    // One undo step each.
    ASSERT_EQ(frame->undo->size(), 1u);
    frame->undo->undo();
    paint();
    EXPECT_TRUE(greyish(pixel(70, 60)));
    EXPECT_EQ(pickAt(92, 60).node, a);
    frame->undo->redo();
    EXPECT_TRUE(m->viewCommands().showAll());
    paint();
    EXPECT_TRUE(greyish(pixel(70, 60)));
    EXPECT_FALSE(m->viewCommands().showAll());

    ASSERT_TRUE(m->viewCommands().isolate({face(b, 4)}));
    paint();
    EXPECT_TRUE(blank(pixel(70, 60)));
    EXPECT_TRUE(blank(pixel(40, 60))) << "C hidden as well";
    EXPECT_TRUE(bluish(pixel(92, 60)));
    EXPECT_EQ(pickAt(92, 60).node, b);
    EXPECT_FALSE(pickAt(40, 60).valid());
    EXPECT_FALSE(m->viewCommands().isolate({})) << "isolating nothing would empty the view";
    EXPECT_EQ(frame->undo->size(), 3u);
}

TEST_F(ViewCommandsGLTest, RenderModesDrawFacesAndEdgesAsNamed) {
    ASSERT_TRUE(m->viewCommands().isolate({EntityNames::part(a)}));
    look(Vec3(100, 100, 100), Vec3(0, 0, 1), 20.0f);
    // On A, seen from its +x +y +z corner: inside the +x face; on the edge between +x and +z;
    // on the hidden edge from the far corner up, behind the +z face.
    const Vec3 faceAt = onScreen(Vec3(10, 5, -5));
    const Vec3 edgeAt = onScreen(Vec3(10, 0, 10));
    const Vec3 hiddenAt = onScreen(Vec3(-10, -10, 0));
    auto face = [&] {
        return pixel(static_cast<unsigned>(faceAt[0]), static_cast<unsigned>(faceAt[1]));
    };

    EXPECT_EQ(m->viewCommands().getRenderMode(), qrngl::SCRenderer::SHADED_WITH_EDGES);
    struct Case {
        Mode mode;
        bool faces, edges, hidden;
    };
    for (const Case& k : {Case{qrngl::SCRenderer::SHADED_WITH_EDGES, true, true, false},
                          Case{qrngl::SCRenderer::SHADED, true, false, false},
                          Case{qrngl::SCRenderer::WIREFRAME, false, true, true},
                          Case{qrngl::SCRenderer::HIDDEN_LINE, false, true, false}}) {
        m->viewCommands().changeRenderMode(k.mode);
        EXPECT_EQ(doc.renderer->renderMode, k.mode);
        paint();
        EXPECT_EQ(!blank(face()), k.faces) << "mode " << k.mode << ": " << face();
        EXPECT_EQ(anyNear(edgeAt, dark), k.edges) << "mode " << k.mode;
        EXPECT_EQ(anyNear(hiddenAt, dark), k.hidden) << "mode " << k.mode;
    }
}

TEST_F(ViewCommandsGLTest, ProjectionToggleKeepsTheScaleAtTheCentre) {
    const Vec3 p(10, 5, 0); // in the plane of the view sphere's centre
    const Vec3 before = onScreen(p);
    m->viewCommands().changeProjection();
    EXPECT_FALSE(camera->isOrthographic());
    expectShownAt(camera, p, before[0], before[1]);
    paint();
    EXPECT_TRUE(greyish(pixel(80, 60)));
    m->viewCommands().changeProjection();
    EXPECT_TRUE(camera->isOrthographic());
    ASSERT_EQ(frame->undo->size(), 2u);
    frame->undo->undo();
    EXPECT_FALSE(camera->isOrthographic());
}

} // namespace
} // namespace qrntest
