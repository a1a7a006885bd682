#include "GLTest.h"
#include "TestDocument.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCListRenderer.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/frame/Canvas.h"
#include "qrngl/section/BasicClipProfiler.h"
#include "qrngl/section/ClipManipulator.h"
#include "qrngl/section/SectionActivator.h"
#include "qrngl/section/SectionStateActivator.h"
#include "qrnglutils/ClipplaneUtils.h"
#include "qrnglutils/ViewRenderer.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnmath/PlaneUtils.h"

namespace qrntest {
namespace {

using qrngl::ClipManipulator;
using qrngl::SCClipping;
using qrnmath::Vec3;

struct App : qrn::IApplication {
    void showResult(const std::wstring& text, bool) override { said = text; }
    std::wstring said;
};

// Box A (half size 10, red) at the origin, seen along -z, orthographic, 1.5 pixels a unit:
// it covers pixels 65 to 95 across and 45 to 75 down.
class SectionGLTest : public GLTest {
protected:
    unsigned int width() const override { return 160; }
    unsigned int height() const override { return 120; }

    void SetUp() override {
        GLTest::SetUp();
        for (short type : {qrnsg::SCHEMA_SCENE_RES, qrnsg::SCHEMA_INFO, qrnsg::SCHEMA_MEASURE})
            doc.document->addSchema(type);
        clipping =
            std::dynamic_pointer_cast<SCClipping>(doc.document->addSchema(qrnsg::SCHEMA_CLIPPING));
        clipping->profiler = std::make_shared<qrngl::BasicClipProfiler>(doc.document, 1e-4f);
        red = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0.8f, 0.1f, 0.1f), false);
        doc.addLineMaterial(qrnsg::PLMaterial());
        a = doc.addBoxPart(L"A", Vec3(0, 0, 0), 10.0f, red);
        auto camera = doc.renderer->camera;
        camera->setProjection(qrngl::Camera::ORTHOGRAPHIC);
        qrngl::CameraHelper::lookAt(camera, Vec3(0, 0, 100), Vec3(0, 0, 0), Vec3(0, 1, 0));
        qrngl::CameraHelper::lookAt(camera, Vec3(0, 0, 0), 40.0f);
        doc.renderer->viewRenderer = std::make_shared<qrnglutils::ViewRenderer>(camera);
        canvas = std::make_shared<qrngl::Canvas>(context, doc.document);
        canvas->OnSize(0, 0, width(), height());
        cursor->setHook([this](qrngl::Cursor::Handle h) { shown = h; });
        clip = std::make_shared<ClipManipulator>(doc.document, cursor);
        doc.renderer->addManipulator(clip);
    }
    void draw() {
        canvas->Invalidate();
        canvas->OnDraw();
        context->activate();
    }
    float depth(int x, int y) const {
        float d = 0.0f;
        glReadPixels(x, static_cast<GLint>(height()) - 1 - y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT,
                     &d);
        return d;
    }
    // Window depth of a point on the view axis.
    float depthOf(float z) const {
        auto camera = doc.renderer->camera;
        const auto p = qrnmath::MatrixUtils::transformPoint(
            qrngl::CameraHelper::getModelToScreen(camera), Vec3(0, 0, z));
        return p[2];
    }
    int stencil(int x, int y) const {
        GLubyte s = 0;
        glReadPixels(x, static_cast<GLint>(height()) - 1 - y, 1, 1, GL_STENCIL_INDEX,
                     GL_UNSIGNED_BYTE, &s);
        return s;
    }
    float planeX() const { return qrnmath::PlaneUtils::pointOn(clipping->planes.front())[0]; }
    float along() const { // the plane's place along its current normal
        const auto& p = clipping->planes.front();
        return -p[3] / Vec3(p[0], p[1], p[2]).length();
    }

    TestDocument doc;
    std::shared_ptr<SCClipping> clipping;
    std::shared_ptr<qrngl::Canvas> canvas;
    std::shared_ptr<qrngl::Cursor> cursor = std::make_shared<qrngl::Cursor>();
    qrngl::Cursor::Handle shown = nullptr;
    std::shared_ptr<ClipManipulator> clip;
    int red = -1, a = -1;
};

TEST_F(SectionGLTest, CapsFillTheCutOfClosedSolidsOnly) {
    const Rgba partRed{204, 26, 26, 255}, capMaterial{191, 51, 51, 255};
    struct Row {
        bool closed;
        SCClipping::CapMode mode;
        bool capped;
        bool cap; // a cap shows at the middle
        Rgba colour;
    } rows[] = {{true, SCClipping::PART_COLOURS, true, true, partRed},
                {true, SCClipping::SINGLE, true, true, capMaterial},
                {false, SCClipping::PART_COLOURS, true, false, {}},
                {true, SCClipping::PART_COLOURS, false, false, {}}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "closed " << row.closed << " mode " << row.mode
                                        << " capped " << row.capped);
        doc.scene->meshes[0].closed = row.closed;
        clip->setClipType(SCClipping::XY); // through the middle, the near half cut away
        clipping->capMode = row.mode;
        clipping->capped = row.capped;
        draw();
        EXPECT_EQ(clip->getClipType(), SCClipping::XY);
        // The near half is gone: what shows at the middle is the cap at z = 0 or, without
        // one, the inside of the back face at z = -10.
        EXPECT_NEAR(depth(80, 60), depthOf(row.cap ? 0.0f : -10.0f), 1e-3);
        if (row.cap) {
            EXPECT_TRUE(near(pixel(80, 60), row.colour, 3)) << pixel(80, 60);
        }
        // Beside the box the plane's quad shows, no cap.
        EXPECT_FALSE(near(pixel(64, 60), row.cap ? row.colour : partRed, 30)) << pixel(64, 60);
        // The frame leaves no capping state behind, and the plane off for what comes next.
        GLboolean mask[4] = {GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE};
        glGetBooleanv(GL_COLOR_WRITEMASK, mask);
        EXPECT_TRUE(mask[0] && mask[1] && mask[2] && mask[3]);
        EXPECT_FALSE(glIsEnabled(GL_STENCIL_TEST));
        EXPECT_FALSE(glIsEnabled(GL_VERTEX_ARRAY));
        EXPECT_FALSE(glIsEnabled(GL_CLIP_PLANE0));
        EXPECT_EQ(clip->preRenderer()->openCutNodes(),
                  row.closed ? std::vector<int>{} : std::vector<int>{a});
    }
    clip->setClipType(SCClipping::NONE);
    draw();
    EXPECT_NEAR(depth(80, 60), depthOf(10.0f), 1e-3) << "whole again";
}

TEST_F(SectionGLTest, ThePreRendererTouchesOnlyWhatTheCutNeeds) {
    auto pre = clip->preRenderer();
    auto start = [&] {
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        glClearStencil(2);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
        doc.renderer->viewRenderer->render();
    };
    // No plane: no clip plane, the stencil as it was, the post-renderer draws nothing.
    start();
    pre->render();
    clip->postRenderer()->render();
    EXPECT_FALSE(glIsEnabled(GL_CLIP_PLANE0));
    EXPECT_EQ(stencil(80, 60), 2);
    EXPECT_EQ(countPixels(Rgba{0, 0, 0, 255}), std::size_t(width()) * height());
    // Capped off: the clip plane only.
    clip->setClipType(SCClipping::XY);
    clipping->capped = false;
    start();
    pre->render();
    EXPECT_TRUE(glIsEnabled(GL_CLIP_PLANE0));
    EXPECT_EQ(stencil(80, 60), 2);
    EXPECT_EQ(countPixels(Rgba{0, 0, 0, 255}), std::size_t(width()) * height());
    // Capped: the stencil is cleared before counting, so only the cut is filled; the
    // strip renderer's meshes, or the list renderer's without it.
    clipping->capped = true;
    clipping->capMode = SCClipping::SINGLE;
    auto lists = std::dynamic_pointer_cast<qrngl::SCListRenderer>(
        doc.document->addSchema(qrnsg::SCHEMA_LIST_RENDERER));
    lists->build(doc.scene->meshes);
    for (bool strips : {true, false}) {
        SCOPED_TRACE(strips ? "strips" : "lists");
        if (!strips)
            doc.document->removeSchema(qrnsg::SCHEMA_STRIP_RENDERER);
        start();
        pre->render();
        EXPECT_TRUE(near(pixel(80, 60), Rgba{191, 51, 51, 255}, 3)) << pixel(80, 60);
        EXPECT_TRUE(near(pixel(64, 60), Rgba{0, 0, 0, 255})) << pixel(64, 60);
    }
    lists->release();
    glDisable(GL_CLIP_PLANE0);
}

TEST_F(SectionGLTest, TheProfileOutlinesEachCutPartTheSelectedOneInItsColour) {
    const int b = doc.addBoxPart(L"B", Vec3(30, 0, 0), 10.0f, red);
    clip->setClipType(SCClipping::XY);
    clip->showProfile();
    ASSERT_TRUE(clip->isProfile());
    ASSERT_EQ(clipping->planeClipData.size(), 1u);
    const auto& plane = *clipping->planeClipData.front();
    ASSERT_EQ(plane.nodes, (std::vector<int>{a, b}));
    // Segment 0 is A's outline: 80 long, on the plane.
    const auto& node = *plane.nodeClipData.front();
    const auto& v = node.vertexArrays.front();
    const auto& i = node.indexArrays.front();
    float length = 0.0f;
    for (std::size_t k = 0; k + 1 < i.size(); k += 2) {
        const auto p = static_cast<std::size_t>(3 * i[k]),
                   q = static_cast<std::size_t>(3 * i[k + 1]);
        length += Vec3(v[p], v[p + 1], v[p + 2]).distance(Vec3(v[q], v[q + 1], v[q + 2]));
        EXPECT_FLOAT_EQ(v[p + 2], 0.0f);
    }
    EXPECT_NEAR(length, 80.0f, 1e-3);

    clipping->selectedProfile = 0;
    // The camera takes both in: B's left side is at x = 20.
    qrngl::CameraHelper::lookAt(doc.renderer->camera, Vec3(15, 0, 0), 40.0f);
    draw();
    const auto& settings = doc.renderer->clip;
    auto rgb = [](const std::array<float, 4>& c) {
        return Rgba{static_cast<std::uint8_t>(c[0] * 255 + 0.5f),
                    static_cast<std::uint8_t>(c[1] * 255 + 0.5f),
                    static_cast<std::uint8_t>(c[2] * 255 + 0.5f), 255};
    };
    // A's left side at x = -10 is pixel 42, B's at x = 20 pixel 87.
    EXPECT_TRUE(near(pixel(42, 60), rgb(settings.selectedProfileColour), 3)) << pixel(42, 60);
    EXPECT_TRUE(near(pixel(87, 60), rgb(settings.profileColour), 3)) << pixel(87, 60);
    clip->showProfile();
    EXPECT_FALSE(clip->isProfile());
    EXPECT_TRUE(clipping->planeClipData.empty());
}

TEST_F(SectionGLTest, TheGrabbedPlaneMovesWithinTheModelsSphere) {
    auto app = std::make_shared<App>();
    clip->setApp(app);
    clip->setClipType(SCClipping::YZ); // x = 0, normal +x: across the view
    const float radius = 10.0f * std::sqrt(3.0f), step = 0.01f * radius;
    using qrngl::CHANGED;
    using qrngl::UNCHANGED;
    // Not grabbed: neither a drag nor an arrow moves it.
    EXPECT_EQ(clip->mouseButtonDown(UNCHANGED, qrngl::KEY_LBUTTON, qrngl::LEFT, 80, 60), UNCHANGED);
    EXPECT_EQ(clip->mouseMotion(qrngl::KEY_LBUTTON, 95, 60), UNCHANGED);
    EXPECT_EQ(clip->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, 95, 60), UNCHANGED);
    EXPECT_EQ(clip->keyDown(UNCHANGED, ClipManipulator::KEY_UP, 0, 0), UNCHANGED);
    EXPECT_FLOAT_EQ(planeX(), 0.0f);

    // Grabbed: the press is the plane's, 15 pixels right are 10 units along +x; a step out
    // of the sphere (radius 17.3) is refused, the next one back inwards taken.
    doc.renderer->planePicked = true;
    auto measure =
        std::dynamic_pointer_cast<qrngl::SCMeasure>(doc.document->getSchema(qrnsg::SCHEMA_MEASURE));
    measure->add(
        std::make_shared<qrngl::MeasureRT>(qrngl::MeasureRT::DISTANCE, qrngl::MeasureRT::SAVED));
    EXPECT_EQ(clip->mouseButtonDown(UNCHANGED, qrngl::KEY_LBUTTON, qrngl::LEFT, 80, 60), CHANGED);
    EXPECT_EQ(measure->records.size(), 1u);
    EXPECT_EQ(clip->mouseMotion(qrngl::KEY_LBUTTON, 95, 60), CHANGED);
    EXPECT_TRUE(measure->records.empty()) << "a move clears the measurements as it starts";
    EXPECT_NEAR(planeX(), 10.0f, 0.02f);
    EXPECT_EQ(clip->mouseMotion(qrngl::KEY_LBUTTON, 110, 60), CHANGED);
    EXPECT_NEAR(planeX(), 10.0f, 0.02f) << "20 is out of the sphere";
    EXPECT_EQ(clip->mouseMotion(qrngl::KEY_LBUTTON, 104, 60), CHANGED);
    EXPECT_NEAR(planeX(), 6.0f, 0.02f);
    EXPECT_TRUE(app->said.empty());
    EXPECT_EQ(clip->mouseButtonUp(UNCHANGED, 0, qrngl::LEFT, 104, 60), CHANGED);
    EXPECT_EQ(app->said, L"Offset: 6.00 mm");
    // A release an earlier tool took leaves no button held: the pointer moving on moves
    // nothing.
    EXPECT_EQ(clip->mouseButtonDown(UNCHANGED, qrngl::KEY_LBUTTON, qrngl::LEFT, 104, 60), CHANGED);
    clip->mouseMotion(0, 110, 60);
    EXPECT_NEAR(planeX(), 6.0f, 0.02f);

    // Arrows: up and down by 1 % of the radius along the normal, reversed when flipped and,
    // for the plane of type 0, once more; left and right only consume the key.
    struct Row {
        SCClipping::PLANETYPE type;
        bool flipped;
        unsigned int key;
        float moved; // along the plane's normal, in steps
    } rows[] = {{SCClipping::YZ, false, ClipManipulator::KEY_UP, 1},
                {SCClipping::YZ, false, ClipManipulator::KEY_DOWN, -1},
                {SCClipping::YZ, true, ClipManipulator::KEY_UP, -1},
                {SCClipping::XY, false, ClipManipulator::KEY_UP, -1},
                {SCClipping::XY, true, ClipManipulator::KEY_UP, 1},
                {SCClipping::YZ, false, ClipManipulator::KEY_LEFT, 0},
                {SCClipping::YZ, false, ClipManipulator::KEY_RIGHT, 0}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message()
                     << "type " << row.type << " flipped " << row.flipped << " key " << row.key);
        clipping->flipped = false;
        clip->setClipType(row.type);
        if (row.flipped)
            clip->flip();
        doc.renderer->planePicked = true;
        measure->add(std::make_shared<qrngl::MeasureRT>(qrngl::MeasureRT::DISTANCE,
                                                        qrngl::MeasureRT::SAVED));
        const float before = along();
        EXPECT_EQ(clip->keyDown(UNCHANGED, row.key, 0, 0), CHANGED);
        EXPECT_NEAR(along() - before, row.moved * step, 1e-4f);
        EXPECT_TRUE(measure->records.empty()) << "a move clears the measurements";
        EXPECT_EQ(clip->keyUp(UNCHANGED, row.key, 0, 0), CHANGED);
    }
    // Not while the host keeps the arrows.
    std::dynamic_pointer_cast<qrnsg::SCInfo>(doc.document->getSchema(qrnsg::SCHEMA_INFO))
        ->arrowKeysReserved = true;
    const float before = along();
    EXPECT_EQ(clip->keyDown(UNCHANGED, ClipManipulator::KEY_UP, 0, 0), UNCHANGED);
    EXPECT_FLOAT_EQ(along(), before);
}

TEST_F(SectionGLTest, FlipCursorAndSectionsSwitchThePlane) {
    EXPECT_FALSE(clip->setCursor()) << "no plane";
    cursor->set(1, reinterpret_cast<void*>(0x51));
    clip->setClipType(SCClipping::YZ);
    EXPECT_TRUE(clip->setCursor());
    EXPECT_EQ(shown, reinterpret_cast<void*>(0x51));
    // Flipping keeps the plane where it is and keeps the other half.
    clip->offsetSection(3.0, true);
    const auto before = clipping->planes.front();
    clip->flip();
    EXPECT_TRUE(clip->isFlipped());
    for (int k = 0; k < 4; ++k)
        EXPECT_FLOAT_EQ(clipping->planes.front()[k], -before[k]);
    std::wstring text;
    qrnglutils::ClipplaneUtils::getOffsetDist(clipping, nullptr, text, 2);
    EXPECT_EQ(text, L"Offset: 3.00 mm") << "flipping does not change the offset";

    // A section view of the document: its plane through its point, its own cap setting.
    auto section = std::make_shared<qrnsg::Section>();
    section->point = Vec3(0, 0, 4);
    section->normal = Vec3(0, 0, 1);
    section->capped = false;
    doc.pmi->sections.push_back(section);
    qrngl::SectionActivator activator(doc.renderer, doc.pmi);
    EXPECT_TRUE(activator.execute(0));
    EXPECT_EQ(clip->getClipType(), SCClipping::SECTION);
    EXPECT_NEAR(qrnmath::PlaneUtils::signedDistance(clipping->planes.front(), section->point), 0.0f,
                1e-5f);
    EXPECT_FALSE(clipping->capped);
    EXPECT_FALSE(clip->setCursor()) << "no cursor for a section's plane";
    EXPECT_TRUE(activator.execute(5)) << "past the sections: removed";
    EXPECT_EQ(clip->getClipType(), SCClipping::NONE);
    EXPECT_TRUE(clipping->planes.empty());
    EXPECT_FALSE(qrngl::SectionActivator(doc.renderer, nullptr).execute(0));

    qrngl::SectionStateActivator state(doc.renderer);
    EXPECT_TRUE(state.execute(section));
    EXPECT_EQ(clip->getClipType(), SCClipping::SECTION);
    EXPECT_TRUE(state.execute(nullptr));
    EXPECT_EQ(clip->getClipType(), SCClipping::NONE);
}

} // namespace
} // namespace qrntest
