#include "GLTest.h"
#include "TestDocument.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/frame/Canvas.h"
#include "qrngl/frame/RendererFactory.h"
#include "qrngl/measure/MeasureManipulator.h"
#include "qrngl/measure/MeasureRenderer.h"
#include "qrngl/measure/MeasureSelectManipulator.h"
#include "qrngl/measure/SmartMeasureManipulator.h"
#include "qrngl/picking/PickCanvas.h"
#include "qrnglutils/MeasureUtils.h"
#include "qrnglutils/ViewRenderer.h"
#include "qrnplatform/Settings.h"
#include "qrnplatform/Text.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCTempGraphics.h"

#include <cmath>

namespace qrntest {
namespace {

using qrngl::EntityPick;
using qrngl::FrameStatus;
using qrngl::MeasureRT;
using qrnmath::Vec3;
using qrnsg::EntityNames;

// Boxes A (origin) and B (30 along x), half size 10, seen along -z, orthographic, fitted to a
// sphere of 40 around (15, 0, 0): 1.5 pixels a unit, A covers pixels 35 to 65 across.
class MeasureGLTest : public GLTest {
protected:
    unsigned int width() const override { return 160; }
    unsigned int height() const override { return 120; }
    void SetUp() override {
        GLTest::SetUp();
        for (short type :
             {qrnsg::SCHEMA_SCENE_RES, qrnsg::SCHEMA_MEASURE, qrnsg::SCHEMA_TEMP_GRAPHICS})
            doc.document->addSchema(type);
        info =
            std::dynamic_pointer_cast<qrnsg::SCInfo>(doc.document->addSchema(qrnsg::SCHEMA_INFO));
        measure = qrn::component<qrngl::SCMeasure>(doc.document, qrnsg::SCHEMA_MEASURE);
        const int red = doc.addMeshMaterial(qrnsg::MMaterial::fromColor(0.8f, 0.1f, 0.1f), false);
        doc.addLineMaterial(qrnsg::PLMaterial());
        a = doc.addBoxPart(L"A", Vec3(0, 0, 0), 10.0f, red);
        b = doc.addBoxPart(L"B", Vec3(30, 0, 0), 10.0f, red);
        auto camera = doc.renderer->camera;
        camera->setProjection(qrngl::Camera::ORTHOGRAPHIC);
        qrngl::CameraHelper::lookAt(camera, Vec3(15, 0, 100), Vec3(15, 0, 0), Vec3(0, 1, 0));
        qrngl::CameraHelper::lookAt(camera, Vec3(15, 0, 0), 40.0f);
        doc.renderer->viewRenderer = std::make_shared<qrnglutils::ViewRenderer>(camera);
        canvas = std::make_shared<qrngl::Canvas>(context, doc.document);
        canvas->OnSize(0, 0, width(), height());
        picks = std::make_shared<qrngl::PickCanvas>(context, doc.document);
        ASSERT_TRUE(picks->OnCreate());
        picks->OnSize(0, 0, width(), height());
        doc.renderer->pickCanvas = picks;
    }
    void TearDown() override {
        context->activate();
        picks->OnDestroy();
        GLTest::TearDown();
    }
    void draw() {
        canvas->Invalidate();
        canvas->OnDraw();
        context->activate();
    }
    unsigned int name(int node, unsigned kind, int index) const {
        return doc.topology->name(node, kind, index);
    }
    std::string text(const std::shared_ptr<MeasureRT>& r) const {
        return r ? qrnplatform::Text::toUtf8(r->text) : std::string("(none)");
    }

    TestDocument doc;
    std::shared_ptr<qrnsg::SCInfo> info;
    std::shared_ptr<qrngl::SCMeasure> measure;
    std::shared_ptr<qrngl::Canvas> canvas;
    std::shared_ptr<qrngl::PickCanvas> picks;
    int a = -1, b = -1;
};

TEST_F(MeasureGLTest, SmartMeasuresBetweenPlacedEntities) {
    qrngl::SmartMeasureManipulator smart(doc.document, nullptr, nullptr);
    smart.setFilter(11);
    // Faces +x of A and -x of B face each other 10 apart; +x and +z of A meet square.
    auto r = smart.measurePair(name(a, EntityNames::FACE, 0), name(b, EntityNames::FACE, 1));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->type, MeasureRT::DISTANCE);
    EXPECT_NEAR(r->value, 10.0f, 1e-4f);
    EXPECT_TRUE(r->exact);
    EXPECT_NEAR(r->points[0][0], 10.0f, 1e-4f);
    EXPECT_NEAR(r->points[1][0], 20.0f, 1e-4f);
    EXPECT_EQ(text(r), "10.00  mm");
    r = smart.measurePair(name(a, EntityNames::FACE, 0), name(a, EntityNames::FACE, 4));
    ASSERT_TRUE(r);
    EXPECT_NEAR(r->value, 0.0f, 1e-4f);
    EXPECT_NE(text(r).find(";  Angle: 90.00 deg"), std::string::npos) << text(r);
    // Vertex 0 of A (-10, -10, -10) to vertex 7 of B (40, 10, 10), with its components.
    r = smart.measurePair(name(a, EntityNames::POINT, 0), name(b, EntityNames::POINT, 7));
    ASSERT_TRUE(r);
    EXPECT_NEAR(r->value, std::sqrt(3300.0f), 1e-3f);
    EXPECT_EQ(text(r), "57.45  mm\n\xce\x94x : 50.00  mm\n\xce\x94y : 20.00  mm\n"
                       "\xce\x94z : 20.00  mm");
    // A vertical edge of each box: 10 apart at the nearest (x 10 to 20 at y -10).
    r = smart.measurePair(name(a, EntityNames::EDGE, 9), name(b, EntityNames::EDGE, 8));
    ASSERT_TRUE(r);
    EXPECT_NEAR(r->value, 10.0f, 1e-4f);
    // A click on a face alone gives its area; a second click the pair's distance instead.
    smart.setMode(1);
    draw();
    EXPECT_EQ(smart.mouseButtonDown(qrngl::UNCHANGED, qrngl::KEY_LBUTTON, qrngl::LEFT, 50, 60),
              qrngl::UNCHANGED);
    EXPECT_EQ(smart.mouseButtonUp(qrngl::UNCHANGED, 0, qrngl::LEFT, 50, 60), qrngl::CHANGED);
    ASSERT_TRUE(smart.last());
    EXPECT_EQ(smart.last()->type, MeasureRT::AREA);
    EXPECT_NEAR(smart.last()->value, 400.0f, 1e-2f);
    const std::size_t before = measure->records.size();
    smart.mouseButtonDown(qrngl::UNCHANGED, qrngl::KEY_LBUTTON, qrngl::LEFT, 110, 60);
    EXPECT_EQ(smart.mouseButtonUp(qrngl::UNCHANGED, 0, qrngl::LEFT, 110, 60), qrngl::CHANGED);
    EXPECT_EQ(measure->records.size(), before) << "the pair replaces the single face's area";
    EXPECT_NEAR(smart.last()->value, 10.0f, 1e-4f) << "+z of A to +z of B: 10 apart in x";
}

// Records which routine a pair reaches, with the picks it was given.
class DispatchProbe : public qrngl::SmartMeasureManipulator {
public:
    using SmartMeasureManipulator::SmartMeasureManipulator;
    std::string calls;
    bool edgesTurnAIntoPoint = false;

protected:
    void note(const char* what, const EntityPick& a, const EntityPick& b) {
        calls += std::string(what) + "(" + std::to_string(a.second) + "," +
                 std::to_string(b.second) + ") ";
    }
    void measureSelectedEdges(int, int, const EntityPick& a, const EntityPick& b, bool) override {
        note("Edges", a, b);
        if (edgesTurnAIntoPoint)
            qrn::component<qrngl::SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE)
                ->selection[0]
                .first = EntityNames::POINT;
    }
    void measureSelectedFaceEdge(int, int, const EntityPick& a, const EntityPick& b,
                                 bool) override {
        note("FaceEdge", a, b);
    }
    void measureSelectedFaces(int, int, const EntityPick& a, const EntityPick& b, bool) override {
        note("Faces", a, b);
    }
    void measureSelectedPointEdge(int, int, const EntityPick& a, const EntityPick& b,
                                  bool) override {
        note("PointEdge", a, b);
    }
    void measureSelectedPointFace(int, int, const EntityPick& a, const EntityPick& b,
                                  bool) override {
        note("PointFace", a, b);
    }
    void measureP2P(int, int, bool) override { calls += "P2P "; }
};

TEST_F(MeasureGLTest, EveryCellOfTheDispatchReachesItsRoutine) {
    const char* const other[5][5] = {{},
                                     {nullptr, "Edges", "PointEdge", "Edges", "FaceEdge"},
                                     {nullptr, "PointEdge", "P2P", "PointEdge", "PointFace"},
                                     {nullptr, "Edges", "PointEdge", "Edges", "FaceEdge"},
                                     {nullptr, "FaceEdge", "PointFace", "FaceEdge", "Faces"}};
    DispatchProbe probe(doc.document, nullptr, nullptr);
    for (short filter : {1, 2})
        for (int ta = 0; ta <= 5; ++ta)
            for (int tb = 0; tb <= 5; ++tb) {
                probe.calls.clear();
                probe.setFilter(filter);
                measure->selection = {EntityPick(static_cast<qrngl::EntityType>(ta), 7),
                                      EntityPick(static_cast<qrngl::EntityType>(tb), 9)};
                probe.measureSelectedEntities(0, 0, false);
                std::string expected;
                if (ta >= 1 && ta <= 4 && tb >= 1 && tb <= 4) {
                    const bool points = filter == 1 && (ta == 1 || tb == 1) && ta != 4 && tb != 4;
                    expected = points || (ta == 2 && tb == 2)
                                   ? "P2P "
                                   : std::string(other[ta][tb]) + "(7,9) ";
                }
                EXPECT_EQ(probe.calls, expected) << ta << "," << tb << " filter " << filter;
            }
    // Two edges the routine turns into a point and an edge are looked at again.
    probe.setFilter(2);
    probe.edgesTurnAIntoPoint = true;
    probe.calls.clear();
    measure->selection = {EntityPick(EntityNames::EDGE, 7), EntityPick(EntityNames::EDGE, 9)};
    probe.measureSelectedEntities(0, 0, false);
    EXPECT_EQ(probe.calls, "Edges(7,9) PointEdge(7,9) ");
}

TEST_F(MeasureGLTest, LabelsBlendOverTheModelUncutAndAreSelectedByAClick) {
    draw();
    const Rgba under = pixel(46, 67);
    qrngl::SmartMeasureManipulator smart(doc.document, nullptr, nullptr);
    auto r = smart.measurePair(name(a, EntityNames::FACE, 0), name(b, EntityNames::FACE, 1));
    ASSERT_TRUE(r);
    r->anchor = Vec3(-13, 5, 0); // the label from pixel (38, 52) on, its lower part over box A
    doc.renderer->renderers[qrngl::SCRenderer::MEASURE_RENDERER] =
        std::make_shared<qrngl::MeasureRenderer>(doc.document,
                                                 std::make_shared<qrngl::RendererFactory>());
    draw();
    const Rgba blended = pixel(46, 67);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(blended[c], (255 + under[c]) / 2, 6) << "channel " << c;
    // A clip plane that cuts the whole model away leaves the label.
    const double plane[4] = {0, 0, -1, -100};
    glClipPlane(GL_CLIP_PLANE0, plane);
    glEnable(GL_CLIP_PLANE0);
    draw();
    glDisable(GL_CLIP_PLANE0);
    EXPECT_NEAR(pixel(46, 67)[0], (255 + 230) / 2, 6) << "over the bare background";
    EXPECT_GT(countPixels({0, 0, 0, 255}, 40), 20u) << "the text is drawn";
    // A click on the label selects the record, another deselects it; a drag does neither.
    qrngl::MeasureSelectManipulator select(doc.document);
    auto click = [&](int x0, int x1) {
        select.mouseButtonDown(qrngl::UNCHANGED, qrngl::KEY_LBUTTON, qrngl::LEFT, x0, 64);
        select.mouseMotion(qrngl::KEY_LBUTTON, x1, 64);
        return select.mouseButtonUp(qrngl::UNCHANGED, 0, qrngl::LEFT, x1, 64);
    };
    EXPECT_EQ(click(44, 44), qrngl::CHANGED);
    ASSERT_EQ(measure->selected.size(), 1u);
    EXPECT_EQ(measure->selected[0], r);
    EXPECT_EQ(click(44, 70), qrngl::UNCHANGED);
    EXPECT_EQ(measure->selected.size(), 1u);
    EXPECT_EQ(click(44, 44), qrngl::CHANGED);
    EXPECT_TRUE(measure->selected.empty());
}

TEST_F(MeasureGLTest, QuickMeasuresByClicksNeverByDrags) {
    qrngl::MeasureManipulator quick(doc.document, nullptr, nullptr);
    auto temp = qrn::component<qrnsg::SCTempGraphics>(doc.document, qrnsg::SCHEMA_TEMP_GRAPHICS);
    quick.setFilter(1);
    quick.setMode(qrngl::MeasureManipulator::DISTANCE_MODE);
    draw();
    auto press = [&](int x0, int x1) {
        quick.mouseButtonDown(qrngl::UNCHANGED, qrngl::KEY_LBUTTON, qrngl::LEFT, x0, 60);
        quick.mouseMotion(qrngl::KEY_LBUTTON, x1, 60);
        return quick.mouseButtonUp(qrngl::UNCHANGED, 0, qrngl::LEFT, x1, 60);
    };
    EXPECT_EQ(press(50, 90), qrngl::UNCHANGED) << "a drag";
    EXPECT_FALSE(quick.pending());
    EXPECT_EQ(press(50, 50), qrngl::CHANGED);
    EXPECT_TRUE(quick.pending());
    EXPECT_EQ(temp->points.size(), 1u) << "the first point is shown";
    EXPECT_TRUE(temp->measures.empty());
    EXPECT_EQ(press(110, 110), qrngl::CHANGED);
    ASSERT_EQ(temp->measures.size(), 1u);
    const auto& m = *temp->measures.begin()->second;
    EXPECT_EQ(m.kind, qrnsg::Measure::DISTANCE);
    EXPECT_NEAR(m.points[0].distance(m.points[1]), 40.0f, 0.7f) << "x 50 to 110 is 40 units";
    EXPECT_TRUE(temp->points.empty());
    // Both +z: the mean normal is +z; point mode names its point.
    EXPECT_NEAR(m.normal[2], 1.0f, 1e-4f);
    quick.setMode(qrngl::MeasureManipulator::POINT_MODE);
    EXPECT_EQ(press(50, 50), qrngl::CHANGED);
    EXPECT_EQ(temp->measures.size(), 2u);
    EXPECT_EQ(qrnplatform::Text::toUtf8((temp->measures.end() - 1)->second->text).substr(0, 12),
              " X : -5.000\n");
    quick.setMode(0);
    EXPECT_EQ(press(50, 50), qrngl::UNCHANGED) << "off";
}

TEST_F(MeasureGLTest, UnitsPrecisionAndSettings) {
    struct Row {
        int unit, precision;
        qrnsg::SCInfo::UNITS document;
        float value;
        MeasureRT::MType type;
        const char* text;
    } rows[] = {
        {14, 3, qrnsg::SCInfo::MILLIMETRE, 12.5f, MeasureRT::DISTANCE, "12.500  mm"},
        {14, 2, qrnsg::SCInfo::INCH, 25.4f, MeasureRT::DISTANCE, "1.00  in"},
        {0, 2, qrnsg::SCInfo::INCH, 25.4f, MeasureRT::DISTANCE, "25.40  mm"},
        {14, 0, qrnsg::SCInfo::MILLIMETRE, 12.25f, MeasureRT::DISTANCE, "12.2  mm"},
        {14, 2, qrnsg::SCInfo::MILLIMETRE, 36000.0f, MeasureRT::DISTANCE, "36000.00  mm"},
        {14, 2, qrnsg::SCInfo::MILLIMETRE, -0.001f, MeasureRT::DELTA_Z, "\xce\x94z : 0.00  mm"},
        {2, 3, qrnsg::SCInfo::MILLIMETRE, 5.0f, MeasureRT::NORMAL, "N : 0.005  m"},
    };
    for (const auto& row : rows) {
        measure->settings.unit = row.unit;
        measure->settings.precision = static_cast<unsigned char>(row.precision);
        info->lengthUnit = row.document;
        std::wstring out;
        qrnglutils::MeasureUtils::formatLength(row.value, row.type, *measure, *info, out);
        EXPECT_EQ(qrnplatform::Text::toUtf8(out), row.text);
    }
    // Filter bits from the settings: absent or zero values leave theirs clear.
    const std::wstring app = L"qrnmeasuretest";
    qrnplatform::Settings settings(L"Settings\\Measurement", app);
    EXPECT_EQ(qrngl::SmartMeasureManipulator::readFiltersFromRegistry(app), 0);
    settings.writeDword(L"Point", 1);
    settings.writeDword(L"Edge", 0);
    settings.writeDword(L"Face", 7);
    EXPECT_EQ(qrngl::SmartMeasureManipulator::readFiltersFromRegistry(app), 1 | 8);
    settings.writeDword(L"Edge", 1);
    EXPECT_EQ(qrngl::SmartMeasureManipulator::readFiltersFromRegistry(app), 1 | 2 | 8);
    EXPECT_EQ(qrngl::SmartMeasureManipulator::pickMask(1 | 2 | 8), 4 | 2 | 1);
    for (const wchar_t* value : {L"Point", L"Edge", L"Face"})
        settings.removeValue(value);
}

} // namespace
} // namespace qrntest
