#include "GLTest.h"
#include "TestDocument.h"

#include "qrngl/GL.h"
#include "qrngl/frame/Canvas.h"
#include "qrngl/overlays/CrossHairRenderer.h"
#include "qrngl/overlays/ZoomboxRenderer.h"
#include "qrnglutils/CrossHairUtils.h"
#include "qrnglutils/MeshRenderer.h"
#include "qrnglutils/PolylineRenderer.h"
#include "qrnglutils/ZoomboxUtils.h"
#include "qrnmath/MatrixUtils.h"

#include <array>
#include <vector>

namespace qrntest {
namespace {

using qrnglutils::CrossHairUtils;

const Rgba kGrey{230, 230, 230, 255};
const Rgba kBlack{0, 0, 0, 255};
const Rgba kOutline{153, 128, 102, 255}; // (0.6, 0.5, 0.4)

struct GLStateSeen {
    bool depth = false, blend = false, lighting = false;
    GLint mode = 0, modelviewDepth = 0, projectionDepth = 0;
    qrnmath::Mat4 projection, modelview;

    void take() {
        depth = glIsEnabled(GL_DEPTH_TEST);
        blend = glIsEnabled(GL_BLEND);
        lighting = glIsEnabled(GL_LIGHTING);
        glGetIntegerv(GL_MATRIX_MODE, &mode);
        glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &modelviewDepth);
        glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &projectionDepth);
        glGetFloatv(GL_PROJECTION_MATRIX, projection.data());
        glGetFloatv(GL_MODELVIEW_MATRIX, modelview.data());
    }
};

// Not square, so that a width taken for the height shows.
class OverlaysGLTest : public GLTest {
protected:
    unsigned int width() const override { return 80; }
    unsigned int height() const override { return 60; }

    void SetUp() override {
        GLTest::SetUp();
        canvas = std::make_shared<qrngl::Canvas>(context, doc.document);
        ASSERT_TRUE(canvas->OnCreate());
        canvas->OnSize(0, 0, width(), height());
    }
    void paint() {
        canvas->Invalidate();
        canvas->OnDraw();
        context->activate();
    }
    // The zoom box dragged between two window pixels, as the camera manipulator makes it.
    void drag(int x0, int y0, int x1, int y1) {
        qrnsg::Mesh mesh;
        qrnsg::Polyline outline;
        qrnglutils::ZoomboxUtils::createGeometry(x0, y0, x1, y1, mesh, outline);
        zoombox->set(std::make_shared<qrnglutils::MeshRenderer>(mesh),
                     std::make_shared<qrnglutils::PolylineRenderer>(outline));
    }
    std::shared_ptr<qrngl::IRenderer> crossHairAt(int x, int y) {
        qrnsg::Polyline figure;
        CrossHairUtils::createCrossHair(x, y, figure);
        return std::make_shared<qrnglutils::PolylineRenderer>(figure);
    }
    std::size_t pixelCount() const { return std::size_t{width()} * height(); }
    void postRenderers(std::initializer_list<std::shared_ptr<qrngl::IPostRenderer>> renderers) {
        doc.renderer->postRenderers.clear();
        for (const auto& r : renderers)
            doc.renderer->addPostRenderer(r);
    }

    TestDocument doc;
    std::shared_ptr<qrngl::Canvas> canvas;
    std::shared_ptr<qrngl::ZoomboxRenderer> zoombox = std::make_shared<qrngl::ZoomboxRenderer>();
    std::shared_ptr<qrngl::CrossHairRenderer> crossHair =
        std::make_shared<qrngl::CrossHairRenderer>();
};

TEST_F(OverlaysGLTest, ZoomboxCoversExactlyTheDraggedPixelsWithBothRenderers) {
    doc.renderer->addPostRenderer(zoombox);
    drag(10, 10, 40, 30);
    paint();
    // Inside, the grey shows through a dark translucent fill: neither grey nor opaque dark.
    const Rgba fill = pixel(25, 20);
    EXPECT_EQ(fill.r, fill.g);
    EXPECT_EQ(fill.g, fill.b);
    EXPECT_NEAR(fill.r, 0.7 * 230, 12);
    // Dragged any way round: a two-pixel outline ring on the border, the fill inside it.
    for (auto d : std::vector<std::array<int, 4>>{
             {10, 10, 40, 30}, {40, 30, 10, 10}, {10, 30, 40, 10}, {40, 10, 10, 30}}) {
        drag(d[0], d[1], d[2], d[3]);
        paint();
        SCOPED_TRACE(testing::Message() << d[0] << "," << d[1] << " to " << d[2] << "," << d[3]);
        const int ring[][2] = {{10, 10}, {40, 10}, {10, 30}, {40, 30}, {10, 20}, {11, 20},
                               {40, 20}, {39, 20}, {25, 10}, {25, 11}, {25, 30}, {25, 29}};
        for (const auto& p : ring)
            EXPECT_EQ(pixel(p[0], p[1]), kOutline) << p[0] << "," << p[1];
        EXPECT_EQ(countPixels(fill, 0), 27u * 17u);
        EXPECT_EQ(countPixels(kOutline, 0), 31u * 21u - 27u * 17u);
        EXPECT_EQ(countPixels(kGrey, 0), pixelCount() - 31u * 21u);
    }

    // Only with both renderers, and not after resetBox.
    const auto filled = zoombox->fill(), line = zoombox->outline();
    zoombox->set(filled, nullptr);
    paint();
    EXPECT_EQ(countPixels(kGrey, 0), pixelCount());
    zoombox->set(nullptr, line);
    paint();
    EXPECT_EQ(countPixels(kGrey, 0), pixelCount());
    zoombox->resetBox();
    paint();
    EXPECT_EQ(countPixels(kGrey, 0), pixelCount()) << "after resetBox";

    // Over a red scene the red shows through the fill.
    drag(10, 10, 40, 30);
    doc.renderer->addPostRenderer(postFill(static_cast<short>(zoombox->order() - 1), "red", 1, 0, 0,
                                           std::make_shared<CallLog>()));
    paint();
    Rgba overRed = pixel(25, 20);
    EXPECT_NEAR(overRed.r, 0.7 * 255, 12);
    EXPECT_LT(overRed.g, 20);
    EXPECT_EQ(pixel(10, 20), kOutline);

    // The fill is lit: under a full white ambient light it shows its material's ambient colour
    // (0.2 grey) at 30 % over the grey frame; unlit it would be plain black at 30 %.
    postRenderers({overlayCalling<qrngl::IPostRenderer>(
                       [] {
                           const float white[4] = {1.0f, 1.0f, 1.0f, 1.0f};
                           glLightModelfv(GL_LIGHT_MODEL_AMBIENT, white);
                       },
                       static_cast<short>(zoombox->order() - 1)),
                   zoombox});
    paint();
    const Rgba lit = pixel(25, 20);
    EXPECT_NEAR(lit.r, 0.7 * 230 + 0.3 * 0.2 * 255, 3) << lit;
    EXPECT_EQ(lit.g, lit.r);
    EXPECT_EQ(lit.b, lit.r);
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING)) << "lighting is off after the box";
}

TEST_F(OverlaysGLTest, CrossHairIsCentredAtItsPixelInBlack) {
    doc.renderer->addPostRenderer(crossHair);
    const int x = 30, y = 20;
    const int gap = CrossHairUtils::GAP, arm = CrossHairUtils::ARM;
    crossHair->set(crossHairAt(x, y));
    paint();

    // Along the pixel's row and column: black from GAP to ARM on all four sides, else clear.
    for (int d = 0; d <= arm + 1; ++d) {
        const Rgba expected = d >= gap && d <= arm ? kBlack : kGrey;
        EXPECT_EQ(pixel(x + d, y), expected) << "right " << d;
        EXPECT_EQ(pixel(x - d, y), expected) << "left " << d;
        EXPECT_EQ(pixel(x, y + d), expected) << "down " << d;
        EXPECT_EQ(pixel(x, y - d), expected) << "up " << d;
    }
    // The 1.5-pixel line is one or two pixels thick alike both ways; nothing else is drawn.
    int rows = 0, columns = 0;
    for (int d = -2; d <= 2; ++d) {
        rows += pixel(x + gap + 2, y + d) == kBlack;
        columns += pixel(x + d, y + gap + 2) == kBlack;
    }
    EXPECT_GE(rows, 1);
    EXPECT_LE(rows, 2);
    EXPECT_EQ(columns, rows);
    const std::size_t black = 4u * (arm - gap + 1) * static_cast<std::size_t>(rows);
    EXPECT_EQ(countPixels(kBlack, 0), black);
    EXPECT_EQ(countPixels(kGrey, 0), pixelCount() - black);

    // reset replaces the figure just as set does; an empty one hides it.
    crossHair->reset(crossHairAt(60, 40));
    paint();
    EXPECT_EQ(pixel(x + gap, y), kGrey);
    EXPECT_EQ(pixel(60 + gap, 40), kBlack);
    EXPECT_EQ(pixel(60, 40 - arm), kBlack);
    crossHair->reset(nullptr);
    paint();
    EXPECT_EQ(countPixels(kGrey, 0), pixelCount());
}

TEST_F(OverlaysGLTest, OverlaysDrawOverTheSceneInTheirOrder) {
    // A scene face nearer than the overlays' plane: they draw over it whatever its depth.
    qrnsg::MMaterial blue = qrnsg::MMaterial::fromColor(0.0f, 0.0f, 1.0f);
    doc.addMesh(rectangle(-1.0f, -1.0f, 1.0f, 1.0f, -0.9f), doc.addMeshMaterial(blue, false));
    auto log = std::make_shared<CallLog>();
    postRenderers({crossHair, postFill(300, "300", 1, 0, 0, log)});
    crossHair->set(crossHairAt(30, 20));
    paint();
    EXPECT_EQ(*log, CallLog{"300"});
    // The cross-hair (580) draws after, so over, the red of the 300 one.
    EXPECT_EQ(pixel(30 + CrossHairUtils::GAP, 20), kBlack);
    EXPECT_EQ(pixel(30, 20 - CrossHairUtils::ARM), kBlack);
    EXPECT_EQ(pixel(30, 20), (Rgba{255, 0, 0, 255}));

    // Without the red, over the nearer blue face.
    postRenderers({crossHair, zoombox});
    drag(50, 5, 70, 25);
    paint();
    EXPECT_EQ(pixel(30 + CrossHairUtils::GAP, 20), kBlack);
    EXPECT_EQ(pixel(50, 5), kOutline);
    Rgba underFill = pixel(60, 15);
    EXPECT_LT(underFill.b, 230);
    EXPECT_GT(underFill.b, 150);
    EXPECT_EQ(pixel(75, 55).b, 255);
}

TEST_F(OverlaysGLTest, OverlaysLeaveDepthOnBlendOffAndTheModelViewSelected) {
    GLStateSeen before, after;
    auto messUp = overlayCalling<qrngl::IPostRenderer>(
        [&before] {
            glDisable(GL_DEPTH_TEST);
            glEnable(GL_BLEND);
            glEnable(GL_LIGHTING);
            glMatrixMode(GL_MODELVIEW);
            glLoadMatrixf(qrnmath::MatrixUtils::scaling(qrnmath::Vec3(2.0f, 2.0f, 2.0f)).data());
            glMatrixMode(GL_PROJECTION);
            glLoadMatrixf(qrnmath::MatrixUtils::scaling(qrnmath::Vec3(0.5f, 0.5f, 0.5f)).data());
            before.take(); // the projection stack is left selected
        },
        -2);
    auto look = overlayCalling<qrngl::IPostRenderer>([&after] { after.take(); }, 600);
    crossHair->set(crossHairAt(30, 20));
    drag(10, 10, 40, 30);
    // The cross-hair, the zoom box, then the cross-hair without a figure, which touches nothing.
    for (int k = 0; k < 3; ++k) {
        SCOPED_TRACE(k);
        std::shared_ptr<qrngl::IPostRenderer> overlay = crossHair;
        if (k == 1)
            overlay = zoombox;
        if (k == 2)
            crossHair->set(nullptr);
        postRenderers({messUp, overlay, look});
        paint();
        EXPECT_EQ(before.mode, GL_PROJECTION);
        EXPECT_TRUE(before.lighting);
        if (k == 2) {
            EXPECT_FALSE(after.depth);
            EXPECT_TRUE(after.blend);
            break;
        }
        EXPECT_EQ(k == 0 ? pixel(30 + CrossHairUtils::GAP, 20) : pixel(10, 10),
                  k == 0 ? kBlack : kOutline);
        EXPECT_EQ(after.lighting, k == 0) << "the zoom box's fill switches lighting off";
        EXPECT_TRUE(after.depth);
        EXPECT_FALSE(after.blend);
        EXPECT_EQ(after.mode, GL_MODELVIEW);
        EXPECT_EQ(after.modelviewDepth, before.modelviewDepth);
        EXPECT_EQ(after.projectionDepth, before.projectionDepth);
        EXPECT_EQ(after.projection, before.projection);
        EXPECT_EQ(after.modelview, before.modelview);
    }
}

} // namespace
} // namespace qrntest
