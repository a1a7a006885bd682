#include "GLTest.h"
#include "TestDocument.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/SCClipping.h"
#include "qrngl/frame/Canvas.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrngl/picking/PBOPickCanvas.h"
#include "qrngl/picking/PickCanvas.h"
#include "qrngl/picking/PickingHelper.h"
#include "qrngl/picking/RBOPickCanvas.h"
#include "qrngl/section/BasicClipProfiler.h"
#include "qrngl/section/ClipManipulator.h"
#include "qrnglutils/ViewRenderer.h"

#include <functional>
#include <set>
#include <tuple>

namespace qrntest {
namespace {

using qrnsg::EntityNames;

enum Kind { SELECTION, RBO, PBO };

// Records what a pick chose.
struct Recorder : qrngl::ISelector {
    void select(unsigned int, const qrngl::FilterResult& result) override {
        ++calls;
        names = result.names();
    }
    int calls = 0;
    std::vector<unsigned int> names;
};

// Box A at the origin, box B behind it to the right, seen along -z, orthographic, 1.5 pixels
// a unit: A covers pixels 65 to 95 across and 45 to 75 down; B 83 to 113 across, behind A.
class PickingGLTest : public GLTest, public ::testing::WithParamInterface<Kind> {
protected:
    unsigned int width() const override { return 160; }
    unsigned int height() const override { return 120; }

    void SetUp() override {
        GLTest::SetUp();
        qrnsg::MMaterial grey = qrnsg::MMaterial::fromColor(0.6f, 0.6f, 0.6f, 0.0f);
        const int material = doc.addMeshMaterial(grey, false);
        qrnsg::PLMaterial black;
        doc.addLineMaterial(black);
        a = doc.addBoxPart(L"A", qrnmath::Vec3(0, 0, 0), 10.0f, material);
        b = doc.addBoxPart(L"B", qrnmath::Vec3(12, 0, -30), 10.0f, material);
        auto camera = doc.renderer->camera;
        camera->setProjection(qrngl::Camera::ORTHOGRAPHIC);
        qrngl::CameraHelper::lookAt(camera, qrnmath::Vec3(0, 0, 100), qrnmath::Vec3(0, 0, 0),
                                    qrnmath::Vec3(0, 1, 0));
        qrngl::CameraHelper::lookAt(camera, qrnmath::Vec3(0, 0, 0), 40.0f);
        doc.renderer->viewRenderer = std::make_shared<qrnglutils::ViewRenderer>(camera);
        if (GetParam() == SELECTION)
            canvas = std::make_shared<qrngl::PickCanvas>(context, doc.document);
        else if (GetParam() == RBO)
            canvas = std::make_shared<qrngl::RBOPickCanvas>(context, doc.document);
        else
            canvas = std::make_shared<qrngl::PBOPickCanvas>(context, doc.document);
        ASSERT_TRUE(canvas->OnCreate());
        canvas->OnSize(0, 0, width(), height());
        doc.renderer->pickCanvas = canvas;
    }
    void TearDown() override {
        context->activate();
        canvas->OnDestroy();
        GLTest::TearDown();
    }
    // The entity picked nearest at a window point, as (node, kind, index); kind 0 for none.
    EntityNames::Entity pickAt(int x, int y, unsigned short type, int size = 4) {
        auto filter = std::make_shared<qrngl::EntityFilter>(type, qrngl::EntityFilter::NEAREST);
        auto recorder = std::make_shared<Recorder>();
        qrngl::PickingHelper::pick(canvas, filter, recorder, 0, x, y, size);
        EXPECT_EQ(recorder->calls, 1);
        return recorder->names.empty() ? EntityNames::Entity()
                                       : doc.topology->resolve(recorder->names.front());
    }
    std::set<unsigned int> boxPick(int x0, int y0, int x1, int y1, unsigned short type) {
        auto filter = std::make_shared<qrngl::EntityFilter>(type, qrngl::EntityFilter::ALL);
        auto recorder = std::make_shared<Recorder>();
        qrngl::PickingHelper::pickbox(doc.renderer, filter, recorder, 0, x0, y0, x1, y1);
        return std::set<unsigned int>(recorder->names.begin(), recorder->names.end());
    }
    unsigned int name(int node, unsigned kind, int index) const {
        return doc.topology->name(node, kind, index);
    }

    TestDocument doc;
    int a = -1, b = -1;
    std::shared_ptr<qrngl::IPickCanvas> canvas;
};

void expectEntity(const EntityNames::Entity& e, int node, unsigned kind, int index) {
    EXPECT_EQ(std::make_tuple(e.node, e.kind, e.index), std::make_tuple(node, kind, index));
}

TEST_P(PickingGLTest, APixelGivesTheFaceEdgeOrVertexDrawnThere) {
    // Front faces (+z is face 4), the nearer one where they overlap, nothing beside them.
    expectEntity(pickAt(80, 60, 1), a, EntityNames::FACE, 4);
    expectEntity(pickAt(110, 60, 1), b, EntityNames::FACE, 4);
    expectEntity(pickAt(92, 60, 1), a, EntityNames::FACE, 4);
    EXPECT_FALSE(pickAt(150, 10, 7).valid());
    EXPECT_FALSE(pickAt(80, 60, 2).valid()) << "no edge within reach of the middle of A";
    // Edges and vertices when asked for: A's top front edge (+z, corner 6 to 7: edge 6), its
    // top-left front corner (vertex 6).
    expectEntity(pickAt(80, 46, 2), a, EntityNames::EDGE, 6);
    expectEntity(pickAt(66, 46, 4), a, EntityNames::POINT, 6);
    if (GetParam() == SELECTION)
        return;
    // Colour-id canvases prefer a near edge to the face, and miss B's vertex behind A.
    expectEntity(pickAt(80, 47, 3), a, EntityNames::EDGE, 6);
    expectEntity(pickAt(80, 60, 3), a, EntityNames::FACE, 4);
    expectEntity(pickAt(88, 56, 1), a, EntityNames::FACE, 4);
}

TEST_P(PickingGLTest, ABoxPickReturnsTheEntitiesInside) {
    // The left part of A: its face and top, bottom and left edges; not B, hidden behind A.
    const std::set<unsigned int> visible{
        name(a, EntityNames::FACE, 4), name(a, EntityNames::EDGE, 4), name(a, EntityNames::EDGE, 6),
        name(a, EntityNames::EDGE, 7)};
    auto got = boxPick(60, 40, 93, 80, 3);
    if (GetParam() == SELECTION) {
        // The selection buffer sees through: hidden B and A's back are in it as well.
        for (unsigned int n : visible)
            EXPECT_TRUE(got.count(n)) << std::hex << n;
        EXPECT_TRUE(got.count(name(b, EntityNames::FACE, 4)));
    } else {
        EXPECT_EQ(got, visible);
        // The same rectangle dragged the other way round.
        EXPECT_EQ(boxPick(93, 80, 60, 40, 3), visible);
    }
}

TEST_P(PickingGLTest, BoxesPastTheWindowOrOverManyEntitiesReturnAllTheyHold) {
    // Dragged out far past the window: cut to it, not sized from it.
    std::set<unsigned int> far, inside;
    EXPECT_NO_THROW(far = boxPick(60, 40, 100000, 100000, 3));
    inside = boxPick(60, 40, 160, 120, 3);
    EXPECT_EQ(far, inside);
    EXPECT_TRUE(far.count(name(a, EntityNames::FACE, 4)));
    // The colour-id canvases have no point square yet: no hits, not the box's.
    if (GetParam() != SELECTION) {
        EXPECT_TRUE(canvas->Get().empty());
    }
    // 30 more boxes: 806 entities, far more than 512 selection-buffer entries hold.
    for (int i = 0; i < 30; ++i)
        doc.addBoxPart(L"small", qrnmath::Vec3(-35.0f + 2.5f * i, -30.0f, 0.0f), 1.0f, 0);
    const auto all = boxPick(0, 0, 160, 120, 7);
    if (GetParam() == SELECTION)
        EXPECT_EQ(all.size(), 32u * 26u) << "every face, edge and vertex, hidden ones too";
    else
        EXPECT_GT(all.size(), 30u * 2u);
}

TEST_P(PickingGLTest, APickLeavesTheFrameAndTheStateAsTheyWere) {
    auto frame = std::make_shared<qrngl::Canvas>(context, doc.document);
    frame->OnSize(0, 0, width(), height());
    auto draw = [&] {
        frame->Invalidate();
        frame->OnDraw();
        context->activate();
        std::vector<Rgba> pixels;
        for (unsigned y = 0; y < height(); y += 3)
            for (unsigned x = 0; x < width(); x += 3)
                pixels.push_back(pixel(x, y));
        return pixels;
    };
    const auto before = draw();
    glEnable(GL_BLEND);
    glEnable(GL_LIGHTING);
    glClearColor(0.25f, 0.5f, 0.75f, 1.0f);
    GLint binding = -1, after = -2, viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &binding);

    expectEntity(pickAt(80, 60, 1), a, EntityNames::FACE, 4);
    boxPick(10, 10, 150, 110, 7);
    context->activate();
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
    GLfloat clear[4];
    glGetFloatv(GL_COLOR_CLEAR_VALUE, clear);
    EXPECT_FLOAT_EQ(clear[2], 0.75f);
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &after);
    EXPECT_EQ(after, binding);
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], static_cast<GLint>(width()));
    glDisable(GL_BLEND);
    glDisable(GL_LIGHTING);
    EXPECT_TRUE(draw() == before) << "the frame after the pick differs";
}

TEST_P(PickingGLTest, ACutModelIsPickedAsItIsSeen) {
    for (short type : {qrnsg::SCHEMA_SCENE_RES, qrnsg::SCHEMA_INFO})
        doc.document->addSchema(type);
    auto clipping = std::dynamic_pointer_cast<qrngl::SCClipping>(
        doc.document->addSchema(qrnsg::SCHEMA_CLIPPING));
    clipping->profiler = std::make_shared<qrngl::BasicClipProfiler>(doc.document, 1e-4f);
    auto clip = std::make_shared<qrngl::ClipManipulator>(doc.document, nullptr);
    // Seen along -z, the plane through the middle of both boxes (z = -15) cuts A away.
    clip->setClipType(qrngl::SCClipping::XY);
    const unsigned short faces = 1, faceOrTool = 1 | 32;
    // PBO: the first pick in a view draws its square, the next ones read the kept view.
    for (int twice = 0; twice < 2; ++twice) {
        EXPECT_FALSE(pickAt(72, 60, faces).valid()) << "A is cut away";
        expectEntity(pickAt(88, 60, faces), b, EntityNames::FACE, 4);
    }
    EXPECT_EQ(pickAt(72, 60, faceOrTool).kind, EntityNames::TOOL);
    EXPECT_TRUE(doc.renderer->planePicked) << "the plane is named and chosen";
    EXPECT_FALSE(pickAt(150, 10, faceOrTool).valid());
    EXPECT_FALSE(doc.renderer->planePicked);

    // Moved to z = 5 the plane cuts A open: the id passes see its cap, the selection pass A's
    // back face through it; the pixel-buffer canvas no longer answers from the view it kept.
    for (int twice = 0; twice < 2; ++twice)
        EXPECT_NE(pickAt(80, 60, faces).node, a);
    clip->offsetSection(20.0, false);
    if (GetParam() == SELECTION)
        expectEntity(pickAt(80, 60, faces), a, EntityNames::FACE, 5);
    else
        expectEntity(pickAt(80, 60, faces), a, EntityNames::PART, -1);
    // The profile's segments are named; A's outline is segment 0.
    clip->showProfile();
    ASSERT_TRUE(clip->isProfile());
    EXPECT_EQ(pickAt(65, 60, 32).kind, EntityNames::TOOL);
    EXPECT_EQ(clipping->selectedProfile, 0);
    EXPECT_FALSE(doc.renderer->planePicked);
    clip->init();
    expectEntity(pickAt(80, 60, faces), a, EntityNames::FACE, 4);
}

INSTANTIATE_TEST_SUITE_P(Canvases, PickingGLTest, ::testing::Values(SELECTION, RBO, PBO),
                         [](const ::testing::TestParamInfo<Kind>& info) {
                             return std::string(info.param == SELECTION ? "Selection"
                                                : info.param == RBO     ? "RenderBuffer"
                                                                        : "PixelBuffer");
                         });

} // namespace
} // namespace qrntest
