#include "GLTest.h"
#include "TestDocument.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/IPreRenderer.h"
#include "qrngl/frame/Canvas.h"
#include "qrngl/frame/EmptyCanvas.h"
#include "qrnglutils/MeshStripEntry.h"
#include "qrnglutils/ViewRenderer.h"
#include "qrnmath/MatrixUtils.h"

#include <array>

namespace qrntest {
namespace {

using qrnmath::MatrixUtils;
using qrnmath::Vec3;

const Rgba kGrey{230, 230, 230, 255};
const Rgba kRed{255, 0, 0, 255};
const Rgba kGreen{0, 255, 0, 255};
const Rgba kBlue{0, 0, 255, 255};
const Rgba kYellow{255, 255, 0, 255};

class CanvasGLTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        canvas = std::make_shared<qrngl::Canvas>(context, doc.document);
        ASSERT_TRUE(canvas->OnCreate());
        canvas->OnSize(0, 0, width(), height());
    }
    // Draws a frame through the canvas, then makes the context current again for reading.
    void paint(bool invalidate = true) {
        if (invalidate)
            canvas->Invalidate();
        canvas->OnDraw();
        context->activate();
    }

    TestDocument doc;
    std::shared_ptr<qrngl::Canvas> canvas;
};

TEST_F(CanvasGLTest, DrawsOneFramePerInvalidateWithEverythingItNeeds) {
    fill(1.0f, 0.0f, 0.0f);
    paint(false);
    EXPECT_EQ(pixel(5, 5), kRed) << "drawn before the first Invalidate";

    // Without the scene: made current (deactivate presented red) but not drawn or presented.
    auto scene = doc.document->getSchema(qrnsg::SCHEMA_SCENE);
    ASSERT_TRUE(doc.document->removeSchema(qrnsg::SCHEMA_SCENE));
    context->deactivate();
    canvas->setFlag(1);
    canvas->Invalidate();
    canvas->OnDraw();
    EXPECT_EQ(canvas->flag(), 0);
    EXPECT_EQ(presentedPixel(5, 5), kRed);
    fill(0.0f, 1.0f, 0.0f); // works only if OnDraw left the context current
    EXPECT_EQ(pixel(5, 5), kGreen);

    // The next paint draws the pending frame, presents it and releases the context.
    doc.document->setSchema(scene);
    canvas->setFlag(1);
    canvas->OnDraw();
    EXPECT_TRUE(near(presentedPixel(5, 5), kGrey) && near(presentedPixel(63, 63), kGrey));
    EXPECT_EQ(canvas->flag(), 0);
    context->activate();
    // A second paint without Invalidate leaves the last image alone and tells the host nothing.
    fill(1.0f, 0.0f, 0.0f);
    canvas->setFlag(1);
    paint(false);
    EXPECT_EQ(pixel(5, 5), kRed);
    EXPECT_EQ(canvas->flag(), 1);

    // The other components are needed too, and a ready renderer (which tells the host nothing).
    for (short type : {qrnsg::SCHEMA_PMI, qrnsg::SCHEMA_SCENE_RT, qrnsg::SCHEMA_STRIP_RENDERER,
                       qrnsg::SCHEMA_RENDERER}) {
        auto kept = doc.document->getSchema(type);
        if (type == qrnsg::SCHEMA_RENDERER)
            doc.renderer->setReady(false);
        else
            doc.document->removeSchema(type);
        fill(1.0f, 0.0f, 0.0f);
        canvas->setFlag(1);
        paint();
        EXPECT_EQ(pixel(5, 5), kRed) << "drew without component " << type;
        EXPECT_EQ(canvas->flag(), type == qrnsg::SCHEMA_RENDERER ? 1 : 0);
        doc.renderer->setReady(true);
        doc.document->setSchema(kept);
        paint(false);
        EXPECT_TRUE(near(pixel(5, 5), kGrey)) << "pending frame lost for " << type;
        EXPECT_EQ(canvas->flag(), 0);
    }
}

TEST_F(CanvasGLTest, OnSizeIgnoresAnEmptyWindowAndNeedsTheRenderer) {
    std::vector<GLint> viewport(4);
    canvas->OnSize(0, 0, 0, 10);
    canvas->OnSize(0, 0, 10, 0);
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    EXPECT_EQ(viewport, (std::vector<GLint>{0, 0, 64, 64}));
    canvas->OnSize(7, 9, 32, 16); // the position is not used
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    EXPECT_EQ(viewport, (std::vector<GLint>{0, 0, 32, 16}));
    EXPECT_EQ(doc.renderer->camera->viewportWidth(), 32u);
    EXPECT_EQ(doc.renderer->camera->viewportHeight(), 16u);
    // Without a renderer component nothing changes and nothing is drawn.
    doc.document->removeSchema(qrnsg::SCHEMA_RENDERER);
    canvas->OnSize(0, 0, 20, 20);
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    EXPECT_EQ(viewport[2], 32);
    fill(1.0f, 0.0f, 0.0f);
    paint();
    EXPECT_EQ(pixel(5, 5), kRed);
}

// A drawable and a texture that note that they drew.
struct LoggedEntry : qrngl::IStripEntry {
    LoggedEntry(std::string name, std::shared_ptr<CallLog> log) : name(name), log(log) {}
    void render() const override { log->push_back(name); }
    std::string name;
    std::shared_ptr<CallLog> log;
};

struct LoggedTexture : qrngl::ITexture {
    explicit LoggedTexture(std::shared_ptr<CallLog> log) : log(log) {}
    void bind() const override { log->push_back("texture"); }
    std::shared_ptr<CallLog> log;
};

TEST_F(CanvasGLTest, PreRenderersThenLinesTextsAndMeshesThenPostRenderers) {
    // Pre-renderers highest order first, equal ones as added; post-renderers lowest first.
    auto log = std::make_shared<CallLog>();
    doc.renderer->addPreRenderer(preFill(5, "pre5", 0, 0, 1, log));
    doc.renderer->addPreRenderer(preFill(10, "pre10", 1, 0, 0, log));
    doc.renderer->addPreRenderer(preFill(5, "pre5b", 0, 1, 0, log));
    const int textured = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    const int pastTheEnd = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    doc.rt->meshTextures = {0, 5};
    doc.renderer->textures = {std::make_shared<LoggedTexture>(log)};
    doc.strips->meshes.push_back(std::make_shared<LoggedEntry>("mesh", log));
    const int mesh = static_cast<int>(doc.strips->meshes.size()) - 1;
    doc.addMeshInstance(mesh, textured, MatrixUtils::identity(), 0);
    doc.addMeshInstance(mesh, pastTheEnd, MatrixUtils::identity(), 0);
    doc.addMesh(rectangle(-0.25f, -0.25f, 0.25f, 0.25f), textured);
    qrnsg::Polyline line;
    line.addStrip({{-1.0f, 0.9f, 0.0f}, {1.0f, 0.9f, 0.0f}});
    doc.addPolyline(line, doc.addLineMaterial(qrnsg::PLMaterial()));
    doc.strips->polylines.back() = std::make_shared<LoggedEntry>("line", log);
    doc.addText(qrnsg::Text(), std::make_shared<LoggedEntry>("text", log), 0, 0);
    paint();
    // Nothing is bound for the texture index past the renderer's; the red square binds again.
    EXPECT_EQ(*log, (CallLog{"pre10", "pre5", "pre5b", "line", "text", "texture", "mesh", "mesh",
                             "texture"}));
    // The scene draws over what the pre-renderers left.
    EXPECT_EQ(pixel(32, 32), kRed);
    EXPECT_EQ(pixel(3, 60), kGreen);
    GLint texture = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    EXPECT_EQ(texture, 0);

    doc.renderer->addPostRenderer(postFill(10, "post10", 1, 1, 0, log));
    doc.renderer->addPostRenderer(postFill(5, "post5", 0, 0, 1, log));
    log->clear();
    paint();
    EXPECT_EQ(CallLog(log->end() - 2, log->end()), (CallLog{"post5", "post10"}));
    EXPECT_EQ(pixel(30, 30), kYellow);
}

TEST_F(CanvasGLTest, SingleRenderersFrameTheSceneAndEmptyCanvasDrawsOnlyThem) {
    auto log = std::make_shared<CallLog>();
    // The opening renderer leaves a projection behind; the frame must reset it.
    doc.renderer->openingRenderer = calling([log] {
        log->push_back("opening");
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixf(MatrixUtils::scaling(Vec3(5, 5, 5)).data());
        glShadeModel(GL_FLAT);
    });
    doc.renderer->viewRenderer = noting(log, "view");
    // The scene set-up sees the cleared frame and the state every frame draws with.
    Rgba cleared;
    std::string off = "not called"; // what of that state is off
    doc.renderer->sceneSetupRenderer = calling([&, log] {
        log->push_back("setup");
        cleared = pixel(3, 3);
        off.clear();
        const std::pair<GLenum, const char*> states[] = {
            {GL_DEPTH_TEST, "depth test "},
            {GL_NORMALIZE, "normalisation "},
            {GL_MULTISAMPLE, "multisampling "},
            {GL_POLYGON_OFFSET_FILL, "polygon offset "}};
        for (const auto& [state, name] : states)
            if (!glIsEnabled(state))
                off += name;
    });
    GLint mode = 0, shade = 0;
    qrnmath::Mat4 projection;
    doc.renderer->closingRenderer = calling([&, log] {
        log->push_back("closing");
        glGetIntegerv(GL_MATRIX_MODE, &mode);
        glGetIntegerv(GL_SHADE_MODEL, &shade);
        glGetFloatv(GL_PROJECTION_MATRIX, projection.data());
        const float blue[3] = {0, 0, 1};
        fillViewport(blue);
    });
    doc.renderer->addPreRenderer(preFill(1, "pre", 0, 1, 0, log));
    doc.renderer->addPostRenderer(postFill(1, "post", 0, 0, 1, log));
    paint();
    EXPECT_EQ(*log, (CallLog{"opening", "view", "setup", "pre", "post", "closing"}));
    // 0.9 of 255 lies half-way: Mesa clears to 230, NVIDIA to 229.
    EXPECT_TRUE(near(cleared, kGrey, 1)) << cleared;
    EXPECT_EQ(off, "");
    EXPECT_EQ(mode, GL_MODELVIEW);
    EXPECT_EQ(shade, GL_FLAT) << "the opening renderer runs after the shade model is set";
    EXPECT_EQ(projection, MatrixUtils::identity());
    EXPECT_FALSE(glIsEnabled(GL_MULTISAMPLE)) << "multisampling is switched off after the frame";
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));

    // The empty canvas draws on every paint, without Invalidate, and only when ready.
    log->clear();
    cleared = Rgba();
    off = "not called";
    qrngl::EmptyCanvas empty(context, doc.document);
    EXPECT_TRUE(empty.OnCreate());
    empty.setFlag(1);
    empty.OnDraw();
    EXPECT_EQ(*log, (CallLog{"opening", "view", "setup", "closing"}));
    // 0.9 of 255 lies half-way: Mesa clears to 230, NVIDIA to 229.
    EXPECT_TRUE(near(cleared, kGrey, 1)) << cleared;
    EXPECT_EQ(off, "");
    EXPECT_EQ(presentedPixel(3, 3), kBlue);
    EXPECT_EQ(empty.flag(), 0);
    empty.OnDraw();
    EXPECT_EQ(log->size(), 8u);
    context->activate();
    EXPECT_FALSE(glIsEnabled(GL_MULTISAMPLE)) << "switched off after the frame";
    doc.renderer->setReady(false);
    empty.OnDraw();
    EXPECT_EQ(log->size(), 8u);
    context->activate();
}

TEST_F(CanvasGLTest, SuppressionFlagHidesLinesAndTextsUnlessDisplayModeIsOne) {
    qrnsg::Polyline line;
    line.addStrip({{-1.0f, 0.0f, 0.0f}, {1.0f, 0.0f, 0.0f}});
    doc.addPolyline(line, doc.addLineMaterial(qrnsg::PLMaterial()));
    qrnsg::PLMaterial blue;
    blue.color = qrnmath::Vec4(0.0f, 0.0f, 1.0f, 1.0f);
    qrnsg::Text text; // a square at the top left
    text.position = Vec3(-0.9f, 0.5f, 0.0f);
    doc.addText(text, std::make_shared<SquareEntry>(0.25f), doc.addLineMaterial(blue),
                qrnsg::RTState::ANCHORED);
    doc.addMesh(rectangle(0.5f, -0.9f, 0.9f, -0.5f),
                doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0, 1, 0), false));

    struct Case {
        bool suppress;
        int mode;
        bool linesDrawn;
    };
    for (Case c : {Case{false, 0, true}, Case{true, 1, true}, Case{true, 0, false},
                   Case{true, 2, false}, Case{false, 2, true}}) {
        doc.renderer->suppressLinesAndTexts = c.suppress;
        doc.renderer->displayMode = c.mode;
        paint();
        SCOPED_TRACE(testing::Message() << "suppress " << c.suppress << " mode " << c.mode);
        const Rgba black{0, 0, 0, 255};
        EXPECT_EQ(near(pixel(10, 31), black) || near(pixel(10, 32), black), c.linesDrawn);
        EXPECT_EQ(near(pixel(5, 12), kBlue), c.linesDrawn);
        EXPECT_EQ(pixel(55, 55), kGreen) << "meshes are drawn in any case";
    }
}

TEST_F(CanvasGLTest, BlendingStartsAtTheFirstTransparentMaterialAndStaysOn) {
    // Half transparent colours, but only the middle material's record says transparent.
    int a = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0, 0.5f), false);
    int b = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0, 0, 1, 0.5f), true);
    int c = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0, 1, 0, 0.5f), false);
    doc.addMesh(rectangle(-1.0f, -1.0f, -0.4f, 1.0f), a);
    doc.addMesh(rectangle(-0.3f, -1.0f, 0.3f, 1.0f), b);
    doc.addMesh(rectangle(0.4f, -1.0f, 1.0f, 1.0f), c);
    paint();
    EXPECT_EQ(pixel(5, 30), kRed) << "blended before the first transparent material";
    EXPECT_TRUE(near(pixel(32, 30), Rgba{115, 115, 242, 255}, 3)) << pixel(32, 30);
    EXPECT_TRUE(near(pixel(58, 30), Rgba{115, 242, 115, 255}, 3)) << pixel(58, 30);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
}

TEST_F(CanvasGLTest, MeshesDrawUnderTheirOwnTransforms) {
    int red = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    doc.addMesh(rectangle(-0.1f, -0.1f, 0.1f, 0.1f), red);
    // An instance with its own transform, one whose matrix must be ignored, one hidden.
    doc.addMeshInstance(0, red, MatrixUtils::translation(Vec3(0.6f, 0, 0)),
                        qrnsg::RTState::HAS_TRANSFORM);
    doc.addMeshInstance(0, red, MatrixUtils::translation(Vec3(0, 0.6f, 0)), 0);
    int hidden = doc.addMeshInstance(0, red, MatrixUtils::translation(Vec3(-0.6f, 0, 0)),
                                     qrnsg::RTState::HAS_TRANSFORM);
    *doc.rt->meshes.flags.find(hidden) = qrnsg::RTState::HAS_TRANSFORM;
    paint();
    EXPECT_EQ(pixel(32, 32), kRed);
    EXPECT_EQ(pixel(51, 32), kRed);             // x = 0.6 in the viewport
    EXPECT_TRUE(near(pixel(32, 13), kGrey));    // the ignored matrix
    EXPECT_TRUE(near(pixel(13, 32), kGrey));    // the hidden instance
    EXPECT_EQ(countPixels(kRed), 2u * 6u * 6u); // two squares of 0.2 x 0.2: 6.4 pixels a side
    float m[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    EXPECT_EQ(qrnmath::Mat4(m), MatrixUtils::identity()) << "matrix stack unbalanced";

    for (auto& f : doc.rt->meshes.flags)
        f.second = 0;
    paint();
    EXPECT_EQ(countPixels(kRed), 0u);
}

// A mesh of many batches: every triangle is drawn, whole or by ranges, across batch ends.
TEST_F(CanvasGLTest, ALargeMeshDrawsEveryTriangleAcrossItsBatches) {
    int red = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    // Thin strips side by side, each its own two triangles: 3.5 batches.
    const std::size_t strips = qrnglutils::MeshStripEntry::BATCH_TRIANGLES * 7 / 4;
    qrnsg::Mesh grid;
    for (std::size_t i = 0; i < strips; ++i) {
        const float x0 = -0.5f + static_cast<float>(i) / static_cast<float>(strips);
        const float x1 = -0.5f + static_cast<float>(i + 1) / static_cast<float>(strips);
        const qrnsg::Mesh strip = rectangle(x0, -0.5f, x1, 0.5f);
        const auto base = static_cast<unsigned int>(grid.vertices.size());
        grid.vertices.insert(grid.vertices.end(), strip.vertices.begin(), strip.vertices.end());
        grid.normals.insert(grid.normals.end(), strip.normals.begin(), strip.normals.end());
        for (unsigned int index : strip.indices)
            grid.indices.push_back(base + index);
    }
    doc.addMesh(grid, red);
    paint();
    EXPECT_EQ(countPixels(kRed), 32u * 32u) << "the square of half the viewport's side, whole";
    // Half the strips in ranges that cross the batch ends.
    context->activate();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glColor3f(1, 0, 0);
    glDisable(GL_LIGHTING);
    std::vector<qrngl::IStripEntry::Range> ranges;
    for (unsigned int t = 0; t < grid.triangleCount(); t += 4000)
        ranges.push_back({t, 2000});
    doc.strips->meshes[0]->renderRanges(ranges, nullptr);
    // Each range is a band 1,000 strips wide, give or take a column at each side.
    const double bands = static_cast<double>(ranges.size());
    EXPECT_NEAR(static_cast<double>(countPixels(kRed)),
                bands * 1000.0 / static_cast<double>(strips) * 32.0 * 32.0, bands * 32.0);
    EXPECT_NO_GL_ERROR();
}

// A rectangle whose triangles wind the other way: it faces -z.
qrnsg::Mesh backwards(qrnsg::Mesh mesh) {
    for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3)
        std::swap(mesh.indices[i + 1], mesh.indices[i + 2]);
    return mesh;
}

TEST_F(CanvasGLTest, ClosedSolidsShowFrontFacesUnlessCutOpenOrTransparent) {
    // A camera on +z looking down -z.
    doc.renderer->viewRenderer = calling([] {
        glMatrixMode(GL_PROJECTION);
        glOrtho(-1, 1, -1, 1, -10, 10);
        glMatrixMode(GL_MODELVIEW);
    });
    int red = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    int glass = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0, 0, 1, 0.5f), true);
    doc.addMesh(rectangle(-0.9f, 0.5f, -0.5f, 0.9f), red);            // 0: faces the camera
    doc.addMesh(backwards(rectangle(-0.2f, 0.5f, 0.2f, 0.9f)), red);  // 1: turned away
    doc.addMesh(backwards(rectangle(0.5f, 0.5f, 0.9f, 0.9f)), glass); // 2: turned away
    // 3: faces the camera, placed mirrored about x = 0: it winds the other way on screen.
    const int mirrored = doc.addMesh(rectangle(0.5f, -0.9f, 0.9f, -0.5f), red);
    doc.rt->meshes.transforms.find(mirrored)->first = MatrixUtils::scaling(Vec3(-1, 1, 1));
    *doc.rt->meshes.flags.find(mirrored) |= qrnsg::RTState::HAS_TRANSFORM;
    // 4: turned away, after the transparent one in the draw order.
    doc.addMesh(backwards(rectangle(-0.2f, -0.9f, 0.2f, -0.5f)), red);
    for (auto& mesh : doc.scene->meshes)
        mesh.closed = true;
    auto frame = [&] {
        paint();
        std::vector<bool> shown;
        for (auto p : {std::make_pair(10, 10), {32, 10}, {54, 10}, {10, 54}, {32, 54}})
            shown.push_back(!near(pixel(p.first, p.second), kGrey));
        return shown;
    };
    GLint twoSided = -1, front = 0;
    glGetIntegerv(GL_LIGHT_MODEL_TWO_SIDE, &twoSided);
    EXPECT_EQ(frame(), (std::vector<bool>{true, false, true, true, false}))
        << "only the closed opaque solids turned away are left out";
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    GLint after = -1;
    glGetIntegerv(GL_LIGHT_MODEL_TWO_SIDE, &after);
    EXPECT_EQ(after, twoSided);
    glGetIntegerv(GL_FRONT_FACE, &front);
    EXPECT_EQ(front, GL_CCW);

    // A clip plane enabled by a pre-renderer (as sectioning does) shows the insides.
    doc.renderer->addPreRenderer(calling<qrngl::IPreRenderer>(
        [] {
            const GLdouble keepAll[4] = {0.0, 0.0, 1.0, 100.0};
            glClipPlane(GL_CLIP_PLANE3, keepAll);
            glEnable(GL_CLIP_PLANE3);
        },
        600));
    EXPECT_EQ(frame(), (std::vector<bool>{true, true, true, true, true}));
    glDisable(GL_CLIP_PLANE3);
    doc.renderer->preRenderers.clear();

    // An open shell keeps both sides.
    doc.scene->meshes[1].closed = false;
    EXPECT_EQ(frame(), (std::vector<bool>{true, true, true, true, false}));
}

TEST_F(CanvasGLTest, FramesInMotionLeaveOutTheSmallestThenDrawCoarseUntilTheCameraStops) {
    int red = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    // A large square, coarse as one of its triangles, and eight 1.6-pixel squares below.
    qrnsg::Mesh big = rectangle(-0.6f, -0.6f, 0.6f, 0.6f);
    big.coarseIndices.assign(big.indices.begin(), big.indices.begin() + 3);
    doc.addMesh(big, red);
    doc.strips->coarseMeshes = {std::make_shared<qrnglutils::MeshStripEntry::Coarse>(
        std::dynamic_pointer_cast<qrnglutils::MeshStripEntry>(doc.strips->meshes[0]))};
    for (int i = 0; i < 8; ++i) {
        const float x = -0.95f + 0.2f * static_cast<float>(i);
        doc.addMesh(rectangle(x, -0.95f, x + 0.05f, -0.9f), red);
    }
    // No frame keeps within this: whatever may go, goes.
    doc.renderer->frameBudget = 1e-6;
    auto frame = [&] {
        paint();
        return countPixels(kRed);
    };
    const std::size_t still = frame();
    const auto& stats = doc.renderer->lastFrame;
    EXPECT_EQ(stats.triangles, 18u);
    EXPECT_EQ(stats.culled, 0u);

    doc.renderer->sizeCulling = true;
    const std::size_t moving = frame();
    EXPECT_EQ(stats.instances, 9u);
    EXPECT_EQ(stats.culled, 8u) << "the small squares go, the large one stays";
    EXPECT_EQ(stats.coarse, 1u);
    EXPECT_EQ(stats.triangles, 1u);
    EXPECT_GT(stats.cullRadius, 1.0f);
    EXPECT_NEAR(static_cast<double>(moving), 38.4 * 38.4 / 2, 60.0) << "one triangle of it";

    // The still frame is whole again, and so is every frame without a budget.
    doc.renderer->sizeCulling = false;
    EXPECT_EQ(frame(), still);
    doc.renderer->sizeCulling = true;
    doc.renderer->frameBudget = 0.0;
    EXPECT_EQ(frame(), still);
    EXPECT_EQ(stats.culled + stats.coarse, 0u);
}

// Texts anchored at a point and turned to the viewer, optionally kept at one size on screen.
class CanvasTextGLTest : public CanvasGLTest {
protected:
    void SetUp() override {
        CanvasGLTest::SetUp();
        auto camera = doc.renderer->camera;
        camera->setProjection(qrngl::Camera::ORTHOGRAPHIC);
        // Oblique: an unturned square would skew.
        qrngl::CameraHelper::lookAt(camera, Vec3(10, 7, 10), Vec3(0, 0, 0), Vec3(0, 1, 0));
        // The 64-pixel view spans the sphere's 64-unit diameter: one world unit per pixel.
        qrngl::CameraHelper::lookAt(camera, Vec3(0, 0, 0), 32.0f);
        doc.renderer->viewRenderer = std::make_shared<qrnglutils::ViewRenderer>(camera);
        qrnsg::PLMaterial blue;
        blue.color = qrnmath::Vec4(0, 0, 1, 1);
        material = doc.addLineMaterial(blue);
    }
    // The bounding box of the blue pixels: x0, y0, x1, y1 (inclusive), and their count.
    std::array<int, 5> blueBox() const {
        std::array<int, 5> box{1000, 1000, -1, -1, 0};
        for (unsigned y = 0; y < height(); ++y)
            for (unsigned x = 0; x < width(); ++x)
                if (near(pixel(x, y), kBlue)) {
                    box[0] = std::min(box[0], int(x));
                    box[1] = std::min(box[1], int(y));
                    box[2] = std::max(box[2], int(x));
                    box[3] = std::max(box[3], int(y));
                    ++box[4];
                }
        return box;
    }
    // The square drawn at a world point has its lower-left corner at the point's pixel.
    void expectCornerAt(const Vec3& p) const {
        auto camera = doc.renderer->camera;
        auto m = MatrixUtils::multiply(camera->getProjectionMatrix(), camera->getViewMatrix());
        auto ndc = MatrixUtils::transformPoint(m, p);
        auto box = blueBox();
        EXPECT_EQ(box[4], 100) << "not an upright square";
        EXPECT_NEAR(box[0], (ndc[0] + 1.0f) * 0.5f * float(width()), 1.0f);
        EXPECT_NEAR(box[3] + 1, (1.0f - ndc[1]) * 0.5f * float(height()), 1.0f);
    }
    int material = -1;
};

TEST_F(CanvasTextGLTest, AnchoredTextsFaceTheViewerAtTheirAnchorAndRestoreCulling) {
    qrnsg::Text text;
    doc.addText(text, std::make_shared<SquareEntry>(10.0f), material, qrnsg::RTState::ANCHORED);
    paint();
    // A 10 x 10 square with its lower-left corner at the anchor, the viewport centre.
    auto box = blueBox();
    EXPECT_EQ(box, (std::array<int, 5>{32, 22, 41, 31, 100}));

    // The square follows the anchor, and the text's own transform in world space.
    doc.scene->texts[0].position = Vec3(3, 9, -4);
    paint();
    expectCornerAt(Vec3(3, 9, -4));
    int id = doc.rt->texts.drawOrder[0];
    doc.rt->texts.transforms.find(id)->first = MatrixUtils::translation(Vec3(-20, 0, 0));
    *doc.rt->texts.flags.find(id) |= qrnsg::RTState::HAS_TRANSFORM;
    paint();
    expectCornerAt(Vec3(-17, 9, -4));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));

    // Culling set up by the frame is given back as it was.
    doc.renderer->openingRenderer = calling([] {
        glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT_AND_BACK);
        glFrontFace(GL_CW);
    });
    paint();
    GLint mode = 0, front = 0;
    glGetIntegerv(GL_CULL_FACE_MODE, &mode);
    glGetIntegerv(GL_FRONT_FACE, &front);
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_EQ(mode, GL_FRONT_AND_BACK);
    EXPECT_EQ(front, GL_CW);
}

TEST_F(CanvasTextGLTest, ConstantSizeTextsKeepTheirSizeWhenZooming) {
    // 10 world units as the fitted view shows them (one unit a pixel): 10 pixels at any zoom.
    doc.addText(qrnsg::Text(), std::make_shared<SquareEntry>(10.0f), material,
                qrnsg::RTState::ANCHORED | qrnsg::RTState::CONSTANT_SIZE);
    auto camera = doc.renderer->camera;
    // A smaller view sphere shows two pixels a unit when fitted: 20 pixels at any zoom.
    for (float radius : {32.0f, 16.0f})
        for (float zoom : {1.0f, 0.25f, 3.125f}) {
            qrngl::CameraHelper::lookAt(camera, Vec3(0, 0, 0), radius);
            camera->setZoomFactor(zoom);
            paint();
            const auto box = blueBox();
            EXPECT_EQ(box[4], radius == 32.0f ? 100 : 400) << radius << " at zoom " << zoom;
            EXPECT_EQ(box[0], 32);
        }
    // Without the flag the square grows as the view zooms in: 20 pixels at zoom 0.5.
    qrngl::CameraHelper::lookAt(camera, Vec3(0, 0, 0), 32.0f);
    *doc.rt->texts.flags.find(doc.rt->texts.drawOrder[0]) =
        static_cast<unsigned char>(qrnsg::RTState::VISIBLE | qrnsg::RTState::ANCHORED);
    camera->setZoomFactor(0.5f);
    paint();
    EXPECT_EQ(blueBox()[4], 400);
}

} // namespace
} // namespace qrntest
