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

namespace qrntest {
namespace {

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
    void paint() {
        canvas->OnDraw();
        context->activate();
    }

    TestDocument doc;
    std::shared_ptr<qrngl::Canvas> canvas;
};

TEST_F(CanvasGLTest, DrawsOneFramePerInvalidate) {
    fill(1.0f, 0.0f, 0.0f);
    paint();
    EXPECT_EQ(pixel(5, 5), kRed) << "drawn before the first Invalidate";

    canvas->setFlag(1);
    canvas->Invalidate();
    canvas->OnDraw();
    // The frame was presented into the memory image and the context released.
    EXPECT_TRUE(near(presentedPixel(5, 5), kGrey)) << presentedPixel(5, 5);
    EXPECT_TRUE(near(presentedPixel(63, 63), kGrey));
    EXPECT_EQ(canvas->flag(), 0);
    context->activate();
    EXPECT_TRUE(near(pixel(30, 30), kGrey));

    // A second paint without Invalidate leaves the window's last image alone, and the host
    // is not told of a frame.
    fill(1.0f, 0.0f, 0.0f);
    canvas->setFlag(1);
    paint();
    EXPECT_EQ(pixel(5, 5), kRed);
    EXPECT_EQ(canvas->flag(), 1);
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, MissingComponentLeavesTheFramePending) {
    auto scene = doc.document->getSchema(qrnsg::SCHEMA_SCENE);
    ASSERT_TRUE(doc.document->removeSchema(qrnsg::SCHEMA_SCENE));
    context->deactivate();  // so that the test sees whether OnDraw activates
    fill(1.0f, 0.0f, 0.0f); // no context: does nothing
    canvas->setFlag(1);
    canvas->Invalidate();
    canvas->OnDraw();
    EXPECT_EQ(canvas->flag(), 0);
    // Activated but not presented: the memory image still holds nothing.
    EXPECT_EQ(presentedPixel(5, 5), (Rgba{0, 0, 0, 255}));
    fill(1.0f, 0.0f, 0.0f); // works only if OnDraw left the context current
    EXPECT_EQ(pixel(5, 5), kRed);

    // The next paint, with no new Invalidate, draws the pending frame.
    doc.document->setSchema(scene);
    paint();
    EXPECT_TRUE(near(pixel(5, 5), kGrey));

    // Each of the other three is required as well.
    for (short type : {qrnsg::SCHEMA_PMI, qrnsg::SCHEMA_SCENE_RT, qrnsg::SCHEMA_STRIP_RENDERER}) {
        auto kept = doc.document->getSchema(type);
        doc.document->removeSchema(type);
        fill(1.0f, 0.0f, 0.0f);
        canvas->Invalidate();
        paint();
        EXPECT_EQ(pixel(5, 5), kRed) << "drew without component " << type;
        doc.document->setSchema(kept);
        paint();
        EXPECT_TRUE(near(pixel(5, 5), kGrey)) << "pending frame lost for " << type;
    }
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, RendererThatIsNotReadyDrawsNothing) {
    doc.renderer->setReady(false);
    fill(1.0f, 0.0f, 0.0f);
    canvas->setFlag(1);
    canvas->Invalidate();
    paint();
    EXPECT_EQ(pixel(5, 5), kRed) << "not even the clear colour may be drawn";
    EXPECT_EQ(canvas->flag(), 1);

    doc.renderer->setReady(true);
    paint();
    EXPECT_TRUE(near(pixel(5, 5), kGrey));
    EXPECT_EQ(canvas->flag(), 0);

    // Without a renderer component there is nothing to draw with.
    doc.document->removeSchema(qrnsg::SCHEMA_RENDERER);
    fill(1.0f, 0.0f, 0.0f);
    canvas->Invalidate();
    paint();
    EXPECT_EQ(pixel(5, 5), kRed);
}

TEST_F(CanvasGLTest, PreRenderersHighestFirstPostRenderersLowestFirst) {
    auto log = std::make_shared<CallLog>();
    doc.renderer->addPreRenderer(std::make_shared<FillPreRenderer>(5, "pre5", 1, 0, 0, log));
    doc.renderer->addPreRenderer(std::make_shared<FillPreRenderer>(10, "pre10", 0, 1, 0, log));
    canvas->Invalidate();
    paint();
    EXPECT_EQ(*log, (CallLog{"pre10", "pre5"}));
    EXPECT_EQ(pixel(30, 30), kRed); // order 5 drew last

    auto post10 = std::make_shared<FillPostRenderer>(10, "post10", 1, 1, 0, log);
    doc.renderer->addPostRenderer(post10);
    doc.renderer->addPostRenderer(std::make_shared<FillPostRenderer>(5, "post5", 0, 0, 1, log));
    log->clear();
    canvas->Invalidate();
    paint();
    EXPECT_EQ(*log, (CallLog{"pre10", "pre5", "post5", "post10"}));
    EXPECT_EQ(pixel(30, 30), kYellow); // order 10 drew last

    // Equal orders draw in insertion order, and a removed renderer no longer draws.
    doc.renderer->removePostRenderer(post10);
    doc.renderer->addPostRenderer(std::make_shared<FillPostRenderer>(5, "post5b", 0, 1, 0, log));
    doc.renderer->addPostRenderer(std::make_shared<FillPostRenderer>(5, "post5c", 1, 0, 0, log));
    log->clear();
    canvas->Invalidate();
    paint();
    EXPECT_EQ(*log, (CallLog{"pre10", "pre5", "post5", "post5b", "post5c"}));
    EXPECT_EQ(pixel(30, 30), kRed);
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, SuppressionFlagHidesLinesAndTextsUnlessDisplayModeIsOne) {
    qrnsg::PLMaterial black;
    int lineMaterial = doc.addLineMaterial(black);
    qrnsg::Polyline line;
    line.addStrip({{-1.0f, 0.0f, 0.0f}, {1.0f, 0.0f, 0.0f}});
    doc.addPolyline(line, lineMaterial);
    qrnsg::PLMaterial blue;
    blue.color = qrnmath::Vec4(0.0f, 0.0f, 1.0f, 1.0f);
    qrnsg::Text text;
    text.position = qrnmath::Vec3(-0.9f, 0.5f, 0.0f);
    doc.addText(text, std::make_shared<SquareEntry>(0.25f), doc.addLineMaterial(blue),
                qrnsg::RTState::ANCHORED);
    int green = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0, 1, 0), false);
    doc.addMesh(rectangle(0.5f, -0.9f, 0.9f, -0.5f), green);

    struct Case {
        bool suppress;
        int mode;
        bool linesDrawn;
    };
    for (Case c : {Case{false, 0, true}, Case{true, 1, true}, Case{true, 0, false},
                   Case{true, 2, false}, Case{false, 2, true}}) {
        doc.renderer->suppressLinesAndTexts = c.suppress;
        doc.renderer->displayMode = c.mode;
        canvas->Invalidate();
        paint();
        SCOPED_TRACE(testing::Message() << "suppress " << c.suppress << " mode " << c.mode);
        // The line crosses the middle row; the text square sits top left.
        bool line =
            near(pixel(10, 31), Rgba{0, 0, 0, 255}) || near(pixel(10, 32), Rgba{0, 0, 0, 255});
        EXPECT_EQ(line, c.linesDrawn);
        EXPECT_EQ(near(pixel(5, 12), kBlue), c.linesDrawn);
        EXPECT_EQ(pixel(55, 55), kGreen) << "meshes are drawn in any case";
    }
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, BlendingStartsAtTheFirstTransparentMaterialAndStaysOn) {
    // Half transparent colours, but only the middle material's record says transparent.
    int a = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0, 0.5f), false);
    int b = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0, 0, 1, 0.5f), true);
    int c = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0, 1, 0, 0.5f), false);
    doc.addMesh(rectangle(-1.0f, -1.0f, -0.4f, 1.0f), a);
    doc.addMesh(rectangle(-0.3f, -1.0f, 0.3f, 1.0f), b);
    doc.addMesh(rectangle(0.4f, -1.0f, 1.0f, 1.0f), c);
    canvas->Invalidate();
    paint();
    EXPECT_EQ(pixel(5, 30), kRed) << "blended before the first transparent material";
    EXPECT_TRUE(near(pixel(32, 30), Rgba{115, 115, 242, 255}, 3)) << pixel(32, 30);
    EXPECT_TRUE(near(pixel(58, 30), Rgba{115, 242, 115, 255}, 3))
        << "blending switched off after the transparent material: " << pixel(58, 30);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLint texture = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    EXPECT_EQ(texture, 0);
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, MeshesDrawUnderTheirOwnTransforms) {
    int red = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    int id = doc.addMesh(rectangle(-0.1f, -0.1f, 0.1f, 0.1f), red);
    const auto shift = qrnmath::MatrixUtils::translation(qrnmath::Vec3(0.6f, 0.0f, 0.0f));
    // An instance with its own transform, one whose matrix must be ignored, one hidden.
    doc.addMeshInstance(0, red, shift, qrnsg::RTState::HAS_TRANSFORM);
    doc.addMeshInstance(0, red, qrnmath::MatrixUtils::translation(qrnmath::Vec3(0, 0.6f, 0)), 0);
    int hidden =
        doc.addMeshInstance(0, red, qrnmath::MatrixUtils::translation(qrnmath::Vec3(-0.6f, 0, 0)),
                            qrnsg::RTState::HAS_TRANSFORM);
    *doc.rt->meshes.flags.find(hidden) = qrnsg::RTState::HAS_TRANSFORM;
    (void)id;
    canvas->Invalidate();
    paint();
    EXPECT_EQ(pixel(32, 32), kRed);
    EXPECT_EQ(pixel(51, 32), kRed);             // x = 0.6 in the viewport
    EXPECT_TRUE(near(pixel(32, 13), kGrey));    // the ignored matrix
    EXPECT_TRUE(near(pixel(13, 32), kGrey));    // the hidden instance
    EXPECT_EQ(countPixels(kRed), 2u * 6u * 6u); // two squares of 0.2 x 0.2: 6.4 pixels a side
    float m[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    EXPECT_EQ(qrnmath::Mat4(m), qrnmath::MatrixUtils::identity()) << "matrix stack unbalanced";

    // A hidden-everything pass draws nothing at all.
    for (auto& f : doc.rt->meshes.flags)
        f.second = 0;
    canvas->Invalidate();
    paint();
    EXPECT_EQ(countPixels(kRed), 0u);
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
    doc.renderer->viewRenderer = std::make_shared<FunctionRenderer>([] {
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
    doc.rt->meshes.transforms.find(mirrored)->first =
        qrnmath::MatrixUtils::scaling(qrnmath::Vec3(-1, 1, 1));
    *doc.rt->meshes.flags.find(mirrored) |= qrnsg::RTState::HAS_TRANSFORM;
    // 4: turned away, after the transparent one in the draw order.
    doc.addMesh(backwards(rectangle(-0.2f, -0.9f, 0.2f, -0.5f)), red);
    for (auto& mesh : doc.scene->meshes)
        mesh.closed = true;
    auto frame = [&] {
        canvas->Invalidate();
        paint();
        return std::vector<bool>{!near(pixel(10, 10), kGrey), !near(pixel(32, 10), kGrey),
                                 !near(pixel(54, 10), kGrey), !near(pixel(10, 54), kGrey),
                                 !near(pixel(32, 54), kGrey)};
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

    // A clip plane enabled by a pre-renderer, as sectioning does, that cuts nothing here:
    // still a solid may show its inside.
    struct ClipPlane : qrngl::IPreRenderer {
        void render() const override {
            const GLdouble keepAll[4] = {0.0, 0.0, 1.0, 100.0};
            glClipPlane(GL_CLIP_PLANE3, keepAll);
            glEnable(GL_CLIP_PLANE3);
        }
        short order() const override { return 600; }
    };
    auto clip = std::make_shared<ClipPlane>();
    doc.renderer->addPreRenderer(clip);
    EXPECT_EQ(frame(), (std::vector<bool>{true, true, true, true, true}));
    glDisable(GL_CLIP_PLANE3);
    doc.renderer->preRenderers.clear();

    // An open shell keeps both sides.
    doc.scene->meshes[1].closed = false;
    EXPECT_EQ(frame(), (std::vector<bool>{true, true, true, true, false}));
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, FramesInMotionLeaveOutTheSmallestThenDrawCoarseUntilTheCameraStops) {
    int red = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    // A large square whose coarse version is one of its triangles, and eight small squares
    // (about 1.6 pixels wide) below it.
    qrnsg::Mesh big = rectangle(-0.6f, -0.6f, 0.6f, 0.6f);
    big.coarseIndices.assign(big.indices.begin(), big.indices.begin() + 3);
    doc.addMesh(big, red);
    doc.strips->coarseMeshes = {std::make_shared<qrnglutils::MeshStripEntry::Coarse>(
        std::dynamic_pointer_cast<qrnglutils::MeshStripEntry>(doc.strips->meshes[0]))};
    for (int i = 0; i < 8; ++i)
        doc.addMesh(rectangle(-0.95f + 0.2f * static_cast<float>(i), -0.95f,
                              -0.9f + 0.2f * static_cast<float>(i), -0.9f),
                    red);
    // No frame keeps within this: whatever may go, goes.
    doc.renderer->frameBudget = 1e-6;
    auto frame = [&] {
        canvas->Invalidate();
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
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, FrameStateAndMatrices) {
    // The opening renderer leaves a projection behind; the frame must reset it.
    doc.renderer->openingRenderer = std::make_shared<FunctionRenderer>([] {
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixf(qrnmath::MatrixUtils::scaling(qrnmath::Vec3(5, 5, 5)).data());
        glShadeModel(GL_FLAT);
    });
    struct Seen {
        GLint mode = 0, shade = 0;
        bool depth = false, normalize = false, multisample = false, offset = false;
        float projection[16] = {};
    };
    auto seen = std::make_shared<Seen>();
    auto log = std::make_shared<CallLog>();
    doc.renderer->viewRenderer =
        std::make_shared<FunctionRenderer>([log] { log->push_back("view"); });
    doc.renderer->sceneSetupRenderer =
        std::make_shared<FunctionRenderer>([log] { log->push_back("setup"); });
    doc.renderer->closingRenderer = std::make_shared<FunctionRenderer>([log, seen] {
        log->push_back("closing");
        glGetIntegerv(GL_MATRIX_MODE, &seen->mode);
        glGetIntegerv(GL_SHADE_MODEL, &seen->shade);
        seen->depth = glIsEnabled(GL_DEPTH_TEST);
        seen->normalize = glIsEnabled(GL_NORMALIZE);
        seen->multisample = glIsEnabled(GL_MULTISAMPLE);
        seen->offset = glIsEnabled(GL_POLYGON_OFFSET_FILL);
        glGetFloatv(GL_PROJECTION_MATRIX, seen->projection);
    });
    doc.renderer->addPreRenderer(std::make_shared<FillPreRenderer>(1, "pre", 0, 1, 0, log));
    doc.renderer->addPostRenderer(std::make_shared<FillPostRenderer>(1, "post", 0, 0, 1, log));
    canvas->Invalidate();
    paint();
    EXPECT_EQ(*log, (CallLog{"view", "setup", "pre", "post", "closing"}));
    EXPECT_EQ(seen->mode, GL_MODELVIEW);
    EXPECT_EQ(seen->shade, GL_FLAT) << "the opening renderer runs after the shade model is set";
    EXPECT_TRUE(seen->depth && seen->normalize && seen->multisample && seen->offset);
    EXPECT_EQ(qrnmath::Mat4(seen->projection), qrnmath::MatrixUtils::identity());
    EXPECT_FALSE(glIsEnabled(GL_MULTISAMPLE)) << "multisampling is switched off after the frame";
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, OnSizeIgnoresAnEmptyWindow) {
    GLint viewport[4];
    canvas->OnSize(0, 0, 0, 10);
    canvas->OnSize(0, 0, 10, 0);
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 64);
    EXPECT_EQ(viewport[3], 64);
    EXPECT_EQ(doc.renderer->camera->viewportWidth(), 64u);

    canvas->OnSize(7, 9, 32, 16); // the position is not used
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[0], 0);
    EXPECT_EQ(viewport[1], 0);
    EXPECT_EQ(viewport[2], 32);
    EXPECT_EQ(viewport[3], 16);
    EXPECT_EQ(doc.renderer->camera->viewportWidth(), 32u);
    EXPECT_EQ(doc.renderer->camera->viewportHeight(), 16u);

    // Without a renderer component nothing changes.
    doc.document->removeSchema(qrnsg::SCHEMA_RENDERER);
    canvas->OnSize(0, 0, 20, 20);
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 32);
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasGLTest, EmptyCanvasDrawsOnlyTheSingleRenderersOnEveryPaint) {
    auto log = std::make_shared<CallLog>();
    float blue[3] = {0, 0, 1};
    doc.renderer->openingRenderer =
        std::make_shared<FunctionRenderer>([log] { log->push_back("opening"); });
    doc.renderer->viewRenderer =
        std::make_shared<FunctionRenderer>([log] { log->push_back("view"); });
    // The scene set-up sees the cleared frame and the state every frame draws with.
    Rgba cleared;
    bool enabled = false;
    doc.renderer->sceneSetupRenderer = std::make_shared<FunctionRenderer>([&, log] {
        log->push_back("setup");
        cleared = pixel(3, 3);
        enabled = glIsEnabled(GL_DEPTH_TEST) && glIsEnabled(GL_NORMALIZE) &&
                  glIsEnabled(GL_MULTISAMPLE) && glIsEnabled(GL_POLYGON_OFFSET_FILL);
    });
    doc.renderer->closingRenderer = std::make_shared<FunctionRenderer>([log, &blue] {
        log->push_back("closing");
        fillViewport(blue);
    });
    doc.renderer->addPreRenderer(std::make_shared<FillPreRenderer>(1, "pre", 0, 1, 0, log));
    qrngl::EmptyCanvas empty(context, doc.document);
    EXPECT_TRUE(empty.OnCreate());
    empty.setFlag(1);
    empty.OnDraw(); // no Invalidate needed
    EXPECT_EQ(*log, (CallLog{"opening", "view", "setup", "closing"}));
    EXPECT_EQ(cleared, kGrey);
    EXPECT_TRUE(enabled);
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
    EXPECT_NO_GL_ERROR();
}

// A drawable that notes that it drew.
class LoggedEntry : public qrngl::IStripEntry {
public:
    LoggedEntry(std::string name, std::shared_ptr<CallLog> log)
        : m_name(std::move(name)), m_log(std::move(log)) {}
    void render() const override { m_log->push_back(m_name); }

private:
    std::string m_name;
    std::shared_ptr<CallLog> m_log;
};

class LoggedTexture : public qrngl::ITexture {
public:
    explicit LoggedTexture(std::shared_ptr<CallLog> log) : m_log(std::move(log)) {}
    void bind() const override { m_log->push_back("texture"); }

private:
    std::shared_ptr<CallLog> m_log;
};

TEST_F(CanvasGLTest, PreRenderersThenLinesAndTextsThenMeshesWithTheirTextures) {
    auto log = std::make_shared<CallLog>();
    // Two pre-renderers of one order: in the order they were added, both before the scene.
    doc.renderer->addPreRenderer(std::make_shared<FillPreRenderer>(7, "pre7a", 0, 0, 1, log));
    doc.renderer->addPreRenderer(std::make_shared<FillPreRenderer>(7, "pre7b", 0, 1, 0, log));
    const int textured = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    const int pastTheEnd = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    doc.rt->meshTextures = {0, 5};
    doc.renderer->textures = {std::make_shared<LoggedTexture>(log)};
    doc.strips->meshes.push_back(std::make_shared<LoggedEntry>("mesh", log));
    const int mesh = static_cast<int>(doc.strips->meshes.size()) - 1;
    doc.addMeshInstance(mesh, textured, qrnmath::MatrixUtils::identity(), 0);
    doc.addMeshInstance(mesh, pastTheEnd, qrnmath::MatrixUtils::identity(), 0);
    doc.addMesh(rectangle(-0.25f, -0.25f, 0.25f, 0.25f), textured);
    qrnsg::Polyline line;
    line.addStrip({{-1.0f, 0.9f, 0.0f}, {1.0f, 0.9f, 0.0f}});
    doc.addPolyline(line, doc.addLineMaterial(qrnsg::PLMaterial()));
    doc.strips->polylines.back() = std::make_shared<LoggedEntry>("line", log);
    doc.addText(qrnsg::Text(), std::make_shared<LoggedEntry>("text", log), 0, 0);
    canvas->Invalidate();
    paint();
    // The second mesh's texture index is past the renderer's textures: nothing is bound for
    // it; the red square's material binds again.
    EXPECT_EQ(*log,
              (CallLog{"pre7a", "pre7b", "line", "text", "texture", "mesh", "mesh", "texture"}));
    // The scene draws over what the pre-renderers left.
    EXPECT_EQ(pixel(32, 32), kRed);
    EXPECT_EQ(pixel(3, 60), kGreen);
    GLint texture = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    EXPECT_EQ(texture, 0);
    EXPECT_NO_GL_ERROR();
}

// Texts anchored at a point and turned to the viewer, optionally kept at one size on screen.
class CanvasTextGLTest : public CanvasGLTest {
protected:
    void SetUp() override {
        CanvasGLTest::SetUp();
        auto camera = doc.renderer->camera;
        camera->setProjection(qrngl::Camera::ORTHOGRAPHIC);
        // Oblique: an unturned square would skew.
        qrngl::CameraHelper::lookAt(camera, qrnmath::Vec3(10, 7, 10), qrnmath::Vec3(0, 0, 0),
                                    qrnmath::Vec3(0, 1, 0));
        // The 64-pixel view spans the sphere's 64-unit diameter: one world unit per pixel.
        qrngl::CameraHelper::lookAt(camera, qrnmath::Vec3(0, 0, 0), 32.0f);
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
    // Where a world point lands, in pixels from the left and from the top.
    std::array<float, 2> projectToPixel(const qrnmath::Vec3& p) const {
        auto camera = doc.renderer->camera;
        auto m =
            qrnmath::MatrixUtils::multiply(camera->getProjectionMatrix(), camera->getViewMatrix());
        auto ndc = qrnmath::MatrixUtils::transformPoint(m, p);
        return {(ndc[0] + 1.0f) * 0.5f * float(width()), (1.0f - ndc[1]) * 0.5f * float(height())};
    }
    int material = -1;
};

TEST_F(CanvasTextGLTest, AnchoredTextsFaceTheViewerAtTheirAnchor) {
    qrnsg::Text text;
    text.position = qrnmath::Vec3(0, 0, 0);
    doc.addText(text, std::make_shared<SquareEntry>(10.0f), material, qrnsg::RTState::ANCHORED);
    canvas->Invalidate();
    paint();
    auto box = blueBox();
    // A 10 x 10 square with its lower-left corner at the anchor, the viewport centre.
    EXPECT_EQ(box[4], 100) << "not an upright square";
    EXPECT_EQ(box[0], 32);
    EXPECT_EQ(box[3], 31);
    EXPECT_EQ(box[2] - box[0], 9);
    EXPECT_EQ(box[3] - box[1], 9);

    // Moving the anchor moves the square's corner to the anchor's pixel; the text's own
    // transform then moves it in world space.
    doc.scene->texts[0].position = qrnmath::Vec3(3, 9, -4);
    canvas->Invalidate();
    paint();
    auto corner = projectToPixel(qrnmath::Vec3(3, 9, -4));
    box = blueBox();
    EXPECT_EQ(box[4], 100);
    EXPECT_NEAR(box[0], corner[0], 1.0f);
    EXPECT_NEAR(box[3] + 1, corner[1], 1.0f);

    int id = doc.rt->texts.drawOrder[0];
    doc.rt->texts.transforms.find(id)->first =
        qrnmath::MatrixUtils::translation(qrnmath::Vec3(-20, 0, 0));
    *doc.rt->texts.flags.find(id) |= qrnsg::RTState::HAS_TRANSFORM;
    canvas->Invalidate();
    paint();
    corner = projectToPixel(qrnmath::Vec3(-17, 9, -4));
    box = blueBox();
    EXPECT_EQ(box[4], 100);
    EXPECT_NEAR(box[0], corner[0], 1.0f) << "the text's own transform was not applied";
    EXPECT_NEAR(box[3] + 1, corner[1], 1.0f);

    // Culling state is restored after the text pass.
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasTextGLTest, ConstantSizeTextsKeepTheirSizeWhenZooming) {
    qrnsg::Text text;
    text.position = qrnmath::Vec3(0, 0, 0);
    // 10 world units as the fitted view shows them (one unit a pixel): 10 pixels at any zoom.
    doc.addText(text, std::make_shared<SquareEntry>(10.0f), material,
                qrnsg::RTState::ANCHORED | qrnsg::RTState::CONSTANT_SIZE);
    auto camera = doc.renderer->camera;
    for (float zoom : {1.0f, 0.5f, 3.125f}) {
        camera->setZoomFactor(zoom);
        canvas->Invalidate();
        paint();
        auto box = blueBox();
        EXPECT_EQ(box[4], 100) << "at zoom " << zoom;
        EXPECT_EQ(box[0], 32);
    }
    // A smaller view sphere shows two pixels a unit when fitted: 20 pixels at any zoom.
    qrngl::CameraHelper::lookAt(camera, qrnmath::Vec3(0, 0, 0), 16.0f);
    for (float zoom : {1.0f, 0.25f}) {
        camera->setZoomFactor(zoom);
        canvas->Invalidate();
        paint();
        EXPECT_EQ(blueBox()[4], 400) << "at zoom " << zoom;
    }
    // Without the flag the square grows as the view zooms in: 20 pixels at zoom 0.5.
    qrngl::CameraHelper::lookAt(camera, qrnmath::Vec3(0, 0, 0), 32.0f);
    *doc.rt->texts.flags.find(doc.rt->texts.drawOrder[0]) =
        static_cast<unsigned char>(qrnsg::RTState::VISIBLE | qrnsg::RTState::ANCHORED);
    camera->setZoomFactor(0.5f);
    canvas->Invalidate();
    paint();
    EXPECT_EQ(blueBox()[4], 400);
    EXPECT_NO_GL_ERROR();
}

TEST_F(CanvasTextGLTest, CullingStateIsRestored) {
    qrnsg::Text text;
    doc.addText(text, std::make_shared<SquareEntry>(4.0f), material, qrnsg::RTState::ANCHORED);
    doc.renderer->openingRenderer = std::make_shared<FunctionRenderer>([] {
        glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT_AND_BACK);
        glFrontFace(GL_CW);
    });
    canvas->Invalidate();
    paint();
    GLint mode = 0, front = 0;
    glGetIntegerv(GL_CULL_FACE_MODE, &mode);
    glGetIntegerv(GL_FRONT_FACE, &front);
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_EQ(mode, GL_FRONT_AND_BACK);
    EXPECT_EQ(front, GL_CW);
    EXPECT_NO_GL_ERROR();
}

} // namespace
} // namespace qrntest
