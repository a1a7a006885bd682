// PMI and saved views: from XCAF documents (the shared AP242 files, files written here, and
// documents made in memory) into model data, and from model data into a viewer document.
#include "qrnviewer/occt/PmiImporter.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCView.h"
#include "qrnviewer/DocumentBuilder.h"
#include "qrnviewer/occt/DemoAssembly.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRep_Builder.hxx>
#include <Bnd_Box.hxx>
#include <Interface_Static.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <Standard_Version.hxx>
#include <TColStd_HArray1OfReal.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDocStd_Application.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Iterator.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDimTolObjects_DatumObject.hxx>
#include <XCAFDimTolObjects_DimensionObject.hxx>
#include <XCAFDimTolObjects_GeomToleranceObject.hxx>
#include <XCAFDoc_Datum.hxx>
#include <XCAFDoc_DimTolTool.hxx>
#include <XCAFDoc_Dimension.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_GeomTolerance.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XCAFDoc_View.hxx>
#include <XCAFDoc_ViewTool.hxx>
#include <XCAFView_Object.hxx>
#include <gp_Circ.hxx>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrnmath::Vec3;
using qrnviewer::ModelData;
using qrnviewer::PmiImporter;
using Item = ModelData::PmiItem;

// OCCT 7.6 cannot read presentations given as repositioned tessellated sets, which is how both
// shared AP242 files give theirs; later versions can.
constexpr bool kReadsRepositionedPresentations = OCC_VERSION_HEX >= 0x070700;

const std::string kModels = QRN_SHARED_MODELS;

#define REQUIRE_SHARED_MODEL(file)                                                                 \
    if (!fs::exists(kModels + "/" file))                                                           \
    GTEST_SKIP() << "*** SHARED MODELS MISSING: " << kModels << "/" file << " not found ***"

Handle(TDocStd_Document) newDocument() {
    Handle(TDocStd_Document) doc;
    XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", doc);
    return doc;
}

Handle(TDocStd_Document) readStep(const std::string& path) {
    Handle(TDocStd_Document) doc = newDocument();
    STEPCAFControl_Reader reader;
    reader.SetGDTMode(true);
    reader.SetNameMode(true);
    reader.SetViewMode(true);
    if (reader.ReadFile(path.c_str()) != IFSelect_RetDone || !reader.Transfer(doc))
        return Handle(TDocStd_Document)();
    return doc;
}

bool writeStep(const Handle(TDocStd_Document) & doc, const std::string& path) {
    STEPCAFControl_Writer writer;
    const int schema = Interface_Static::IVal("write.step.schema");
    Interface_Static::SetIVal("write.step.schema", 5); // AP242: the one with semantic PMI
    writer.SetDimTolMode(true);
    bool ok =
        writer.Transfer(doc, STEPControl_AsIs) && writer.Write(path.c_str()) == IFSelect_RetDone;
    Interface_Static::SetIVal("write.step.schema", schema);
    return ok;
}

// The box of a document's shapes, as the tests judge positions by it.
Bnd_Box shapeBox(const Handle(TDocStd_Document) & doc) {
    Bnd_Box box;
    TDF_LabelSequence free;
    XCAFDoc_DocumentTool::ShapeTool(doc->Main())->GetFreeShapes(free);
    for (int i = 1; i <= free.Length(); ++i)
        BRepBndLib::Add(XCAFDoc_ShapeTool::GetShape(free.Value(i)), box);
    return box;
}

// Inside the box grown by a share of its size on every side.
bool inside(const Bnd_Box& box, const Vec3& p, double share = 0.1) {
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    const double g = share * std::sqrt(box.SquareExtent());
    return p[0] >= x0 - g && p[0] <= x1 + g && p[1] >= y0 - g && p[1] <= y1 + g && p[2] >= z0 - g &&
           p[2] <= z1 + g;
}

std::vector<const Item*> ofKind(const ModelData& model, Item::Kind kind) {
    std::vector<const Item*> items;
    for (const auto& item : model.pmi)
        if (item.kind == kind)
            items.push_back(&item);
    return items;
}

std::vector<std::wstring> textsOf(const std::vector<const Item*>& items) {
    std::vector<std::wstring> texts;
    for (const auto* item : items)
        for (const auto& t : item->texts)
            texts.push_back(t.text);
    return texts;
}

bool contains(const std::vector<std::wstring>& list, const std::wstring& s) {
    return std::find(list.begin(), list.end(), s) != list.end();
}

const wchar_t* const kDia = L"\u2300";

// A document made in memory: a 100 x 50 x 20 box part.
struct MemoryDocument {
    MemoryDocument() {
        doc = newDocument();
        shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
        part = shapes->AddShape(box.Shape(), false);
        tool = XCAFDoc_DocumentTool::DimTolTool(doc->Main());
    }
    // The top face (z = 20) as a sub-shape label that PMI can refer to.
    TDF_Label topFace() { return shapes->AddSubShape(part, box.TopFace()); }
    Handle(XCAFDimTolObjects_DimensionObject) addDimension(const TDF_Label& on = TDF_Label()) {
        TDF_Label label = tool->AddDimension();
        Handle(XCAFDimTolObjects_DimensionObject) d = new XCAFDimTolObjects_DimensionObject();
        dimensions.push_back({label, d});
        if (!on.IsNull())
            tool->SetDimension(on, label);
        return d;
    }
    // Objects are handed to their attributes once they are filled.
    void commit() {
        for (auto& [label, d] : dimensions)
            XCAFDoc_Dimension::Set(label)->SetObject(d);
        dimensions.clear();
    }
    Handle(TDocStd_Document) doc;
    Handle(XCAFDoc_ShapeTool) shapes;
    Handle(XCAFDoc_DimTolTool) tool;
    BRepPrimAPI_MakeBox box{100.0, 50.0, 20.0};
    TDF_Label part;
    std::vector<std::pair<TDF_Label, Handle(XCAFDimTolObjects_DimensionObject)>> dimensions;
};

TopoDS_Shape polygon(std::initializer_list<gp_Pnt> points) {
    BRepBuilderAPI_MakePolygon p;
    for (const auto& pt : points)
        p.Add(pt);
    TopoDS_Compound c;
    BRep_Builder b;
    b.MakeCompound(c);
    b.Add(c, p.Wire());
    return c;
}

Handle(TColStd_HArray1OfReal) values(std::initializer_list<double> list) {
    Handle(TColStd_HArray1OfReal) a = new TColStd_HArray1OfReal(1, static_cast<int>(list.size()));
    int i = 1;
    for (double v : list)
        a->SetValue(i++, v);
    return a;
}

// --- The shared AP242 files -------------------------------------------------------------------

TEST(PmiImporterFiles, NistCtc01BringsItsDimensionsTolerancesDatumsAndView) {
    REQUIRE_SHARED_MODEL("nist_ctc_01_asme1_ap242-e1.stp");
    auto doc = readStep(kModels + "/nist_ctc_01_asme1_ap242-e1.stp");
    ASSERT_FALSE(doc.IsNull());
    ModelData model;
    const int added = PmiImporter::import(doc, model);

    // 12 dimensions and 6 tolerances as the file holds them; datums A, B and C, which OCCT
    // repeats for each tolerance that refers to them (11 labels), once each.
    const auto dims = ofKind(model, Item::DIMENSION);
    const auto tols = ofKind(model, Item::TOLERANCE);
    const auto datums = ofKind(model, Item::DATUM);
    EXPECT_EQ(dims.size(), 12u);
    EXPECT_EQ(tols.size(), 6u);
    ASSERT_EQ(datums.size(), 3u);
    EXPECT_EQ(added, 21);
    EXPECT_EQ(model.pmi.size(), 21u);
    EXPECT_EQ(textsOf(datums), (std::vector<std::wstring>{L"A", L"B", L"C"}));
    EXPECT_EQ(datums[0]->name, L"Datum A");

    // Every item has a name and one text, placed on or near the part.
    const Bnd_Box box = shapeBox(doc);
    ASSERT_FALSE(box.IsVoid());
    std::size_t withLines = 0;
    for (const auto& item : model.pmi) {
        EXPECT_FALSE(item.name.empty());
        ASSERT_EQ(item.texts.size(), 1u);
        EXPECT_TRUE(inside(box, item.texts[0].position));
        withLines += item.lines.stripCount() > 0 ? 1 : 0;
        for (const auto& p : item.lines.points)
            ASSERT_TRUE(inside(box, p, 0.5));
    }
    EXPECT_EQ(withLines > 0, kReadsRepositionedPresentations);

    // The values with their tolerances, as the drawing gives them.
    const auto dimTexts = textsOf(dims);
    for (const std::wstring& expected : std::vector<std::wstring>{
             std::wstring(kDia) + L"25 \u00B10.15 mm", std::wstring(kDia) + L"35 0/-0.2 mm",
             std::wstring(kDia) + L"35 +0.2/0 mm", std::wstring(kDia) + L"20 +0.05/-0.1 mm",
             std::wstring(kDia) + L"34.8\u201335.2 mm", std::wstring(L"60\u00B0 \u00B10.5\u00B0")})
        EXPECT_TRUE(contains(dimTexts, expected));
    // Dimensions that the file states only by their kind say so.
    EXPECT_EQ(std::count(dimTexts.begin(), dimTexts.end(), L"linear distance"), 2);

    // Tolerances: the type, then the datums in order.
    std::map<std::wstring, std::wstring> tolText;
    for (const auto* t : tols)
        tolText[t->name] = t->texts[0].text;
    EXPECT_EQ(tolText[L"Position.1"].rfind(L"Position", 0), 0u);
    EXPECT_NE(tolText[L"Position.1"].find(L"| A | B | C"), std::wstring::npos);
    EXPECT_EQ(tolText[L"Flatness.1"].find(L"Flatness"), 0u);
    EXPECT_EQ(tolText[L"Flatness.1"].find(L'|'), std::wstring::npos);

    // The saved view: an isometric parallel view over the whole part.
    ASSERT_EQ(model.views.size(), 1u);
    const auto& view = model.views[0];
    EXPECT_EQ(view.name, L"MBD_0");
    EXPECT_TRUE(view.orthographic);
    const Vec3 dir = (view.target - view.eye).normalized();
    EXPECT_LT(dir.distance(Vec3(-0.588f, 0.566f, -0.577f)), 2e-3f);
    EXPECT_LT(view.up.distance(Vec3(-0.416f, 0.401f, 0.816f)), 2e-3f);
    EXPECT_NEAR(view.viewHeight, 789.86f, 0.01f);
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    EXPECT_LT(view.target.distance(Vec3(float(x0 + x1), float(y0 + y1), float(z0 + z1)) / 2.0f),
              1e-3f);
}

TEST(PmiImporterFiles, Bug32745BringsSevenSemanticDimensionsWithTexts) {
    REQUIRE_SHARED_MODEL("bug32745_pmi1.stp");
    auto doc = readStep(kModels + "/bug32745_pmi1.stp");
    ASSERT_FALSE(doc.IsNull());
    ModelData model;
    EXPECT_EQ(PmiImporter::import(doc, model), 7);
    const auto dims = ofKind(model, Item::DIMENSION);
    ASSERT_EQ(dims.size(), 7u);
    EXPECT_TRUE(ofKind(model, Item::TOLERANCE).empty());
    EXPECT_TRUE(ofKind(model, Item::DATUM).empty());

    const Bnd_Box box = shapeBox(doc);
    for (std::size_t i = 0; i < dims.size(); ++i) {
        EXPECT_EQ(dims[i]->name, L"Dimension " + std::to_wstring(i + 1));
        ASSERT_EQ(dims[i]->texts.size(), 1u);
        EXPECT_TRUE(inside(box, dims[i]->texts[0].position)); // the part is 20 x 10 x 6
    }
    const auto texts = textsOf(dims);
    for (const std::wstring& expected : std::vector<std::wstring>{
             L"R25 \u00B10.2 mm", L"6 \u00B10.1 mm", L"3.4 \u00B10.1 mm", L"15 mm"})
        EXPECT_TRUE(contains(texts, expected));
    EXPECT_EQ(std::count(texts.begin(), texts.end(), L"linear distance outer"), 2);

    // Two parallel views, looking along +Z and along +Y.
    ASSERT_EQ(model.views.size(), 2u);
    EXPECT_EQ(model.views[0].name, L"02");
    EXPECT_EQ(model.views[1].name, L"03");
    EXPECT_LT((model.views[0].target - model.views[0].eye).normalized().distance(Vec3(0, 0, 1)),
              1e-5f);
    EXPECT_LT((model.views[1].target - model.views[1].eye).normalized().distance(Vec3(0, 1, 0)),
              1e-5f);
    EXPECT_NEAR(model.views[1].up[2], -1.0f, 1e-5f);
    EXPECT_NEAR(model.views[0].viewHeight, 32.521f, 1e-3f);
    EXPECT_TRUE(model.views[0].orthographic && model.views[1].orthographic);
}

// --- Files written here -----------------------------------------------------------------------

class PmiImporterWritten : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() /
              ("qrn-pmi-test-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
               "-" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string path(const std::string& name) const { return (dir / name).string(); }
    fs::path dir;
};

TEST_F(PmiImporterWritten, GraphicalPresentationComesBackAsPolylinesOnThePart) {
    MemoryDocument m;
    auto d = m.addDimension(m.topFace());
    d->SetType(XCAFDimTolObjects_DimensionType_Size_Diameter);
    d->SetValue(35.0);
    d->SetPlane(gp_Ax2(gp_Pnt(0, 0, 20), gp::DZ()));
    d->SetPresentation(polygon({gp_Pnt(0, 10, 20), gp_Pnt(100, 10, 20), gp_Pnt(100, 40, 20)}),
                       new TCollection_HAsciiString("Linear Size.7"));
    d->SetPointTextAttach(gp_Pnt(50, 12, 20));
    m.commit();
    ASSERT_TRUE(writeStep(m.doc, path("pmi.stp")));

    auto doc = readStep(path("pmi.stp"));
    ASSERT_FALSE(doc.IsNull());
    ModelData model;
    ASSERT_EQ(PmiImporter::import(doc, model), 1);
    const Item& item = model.pmi[0];
    EXPECT_EQ(item.kind, Item::DIMENSION);
    EXPECT_EQ(item.name, L"Linear Size.7");
    ASSERT_GT(item.lines.stripCount(), 0u);
    const auto b = item.lines.bbox();
    EXPECT_TRUE(qrnmath::nearlyEqual(b.min(), Vec3(0, 10, 20), 1e-3f));
    EXPECT_TRUE(qrnmath::nearlyEqual(b.max(), Vec3(100, 40, 20), 1e-3f));
    ASSERT_EQ(item.texts.size(), 1u);
    EXPECT_EQ(item.texts[0].text, std::wstring(kDia) + L"35 mm");
    EXPECT_LT(item.texts[0].position.distance(Vec3(50, 12, 20)), 1e-3f);
}

TEST_F(PmiImporterWritten, PmiFreeModelsYieldNoItems) {
    // The demo assembly, and the same written and read back: geometry there, PMI absent.
    Handle(TDocStd_Document) demo = qrnviewer::DemoAssembly::make();
    ASSERT_TRUE(writeStep(demo, path("plain.stp")));
    for (const auto& doc : {demo, readStep(path("plain.stp"))}) {
        ASSERT_FALSE(doc.IsNull());
        ASSERT_FALSE(shapeBox(doc).IsVoid());
        ModelData model;
        EXPECT_EQ(PmiImporter::import(doc, model), 0);
        EXPECT_TRUE(model.pmi.empty());
        EXPECT_TRUE(model.views.empty());
    }
}

// --- Documents made in memory -----------------------------------------------------------------

TEST(PmiImporterMemory, WiresAndCurvesBecomeStrips) {
    MemoryDocument m;
    // A wire of two edges: one strip of three points; a circle: discretised, closed; an edge
    // used reversed: from its end to its start.
    TopoDS_Compound shape;
    BRep_Builder b;
    b.MakeCompound(shape);
    b.Add(shape,
          TopoDS_Iterator(polygon({gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0), gp_Pnt(10, 5, 0)})).Value());
    b.Add(shape,
          BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(gp_Pnt(50, 25, 20), gp::DZ()), 10.0)).Edge());
    b.Add(shape, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 50, 0), gp_Pnt(0, 40, 0)).Edge().Reversed());
    auto d = m.addDimension();
    d->SetValue(10.0);
    d->SetPresentation(shape, nullptr);
    m.commit();

    ModelData model;
    ASSERT_EQ(PmiImporter::import(m.doc, model), 1);
    const auto& lines = model.pmi[0].lines;
    ASSERT_EQ(lines.stripCount(), 3u);
    ASSERT_EQ(lines.strips[1], 3u);
    EXPECT_EQ(lines.points[2], Vec3(10, 5, 0));
    const std::size_t circleEnd = lines.strips[2];
    ASSERT_GT(circleEnd - lines.strips[1], 16u);
    for (std::size_t i = lines.strips[1]; i < circleEnd; ++i)
        EXPECT_NEAR(lines.points[i].distance(Vec3(50, 25, 20)), 10.0f, 0.05f);
    EXPECT_LT(lines.points[lines.strips[1]].distance(lines.points[circleEnd - 1]), 1e-4f);
    ASSERT_EQ(lines.points.size() - circleEnd, 2u);
    EXPECT_EQ(lines.points[circleEnd], Vec3(0, 40, 0));
    // No text position: the text sits in the middle of the presentation.
    EXPECT_LT(model.pmi[0].texts[0].position.distance(Vec3(30, 25, 10)), 1e-3f);
}

TEST(PmiImporterMemory, SemanticTextsAndTheirPlaces) {
    MemoryDocument m;
    auto plusMinus = m.addDimension(m.topFace());
    plusMinus->SetType(XCAFDimTolObjects_DimensionType_Size_Diameter);
    plusMinus->SetValues(values({35.0, 0.1, 0.2})); // nominal, lower, upper
    auto range = m.addDimension();
    range->SetType(XCAFDimTolObjects_DimensionType_Location_LinearDistance);
    range->SetValues(values({9.9, 10.1}));
    range->SetPoint(gp_Pnt(0, 0, 0));
    range->SetPoint2(gp_Pnt(10, 0, 0));
    auto angle = m.addDimension();
    angle->SetType(XCAFDimTolObjects_DimensionType_Location_Angular);
    angle->SetValues(values({45.0, 1.0, 1.0}));
    angle->SetPlane(gp_Ax2(gp_Pnt(1, 2, 3), gp::DY(), gp::DX()));
    auto fit = m.addDimension();
    fit->SetType(XCAFDimTolObjects_DimensionType_Size_Diameter);
    fit->SetValue(20.0);
    fit->SetNbOfDecimalPlaces(2, 3);
    fit->SetClassOfTolerance(true, XCAFDimTolObjects_DimensionFormVariance_H,
                             XCAFDimTolObjects_DimensionGrade_IT7);
    auto sphere = m.addDimension();
    sphere->SetType(XCAFDimTolObjects_DimensionType_Size_SphericalRadius);
    sphere->SetValue(-0.0000001); // rounds to zero, written without a sign
    m.addDimension()->SetSemanticName(new TCollection_HAsciiString("curve length "));
    m.commit();

    ModelData model;
    model.lengthUnit = L"in";
    ASSERT_EQ(PmiImporter::import(m.doc, model), 6);
    std::vector<std::wstring> texts;
    for (const auto& item : model.pmi) {
        ASSERT_EQ(item.texts.size(), 1u);
        texts.push_back(item.texts[0].text);
    }
    EXPECT_EQ(texts, (std::vector<std::wstring>{std::wstring(kDia) + L"35 +0.2/-0.1 in",
                                                L"9.9\u201310.1 in", L"45\u00B0 \u00B11\u00B0",
                                                std::wstring(kDia) + L"20.000 H7 in", L"SR0 in",
                                                L"curve length"}));
    EXPECT_EQ(model.pmi[3].name, L"Dimension 4");
    // On the face it is on; between its connection points; at its plane, along the plane.
    EXPECT_LT(model.pmi[0].texts[0].position.distance(Vec3(50, 25, 20)), 1e-3f);
    EXPECT_LT(model.pmi[1].texts[0].position.distance(Vec3(5, 0, 0)), 1e-4f);
    EXPECT_LT(model.pmi[2].texts[0].position.distance(Vec3(1, 2, 3)), 1e-4f);
    EXPECT_LT(model.pmi[2].texts[0].direction.distance(Vec3(1, 0, 0)), 1e-5f);
    EXPECT_LT(model.pmi[2].texts[0].up.distance(Vec3(0, 0, -1)), 1e-5f);
}

TEST(PmiImporterMemory, TolerancesNameTheirDatumsAndDatumsComeOnce) {
    MemoryDocument m;
    auto addDatum = [&](const char* letter, const TopoDS_Shape& presentation = TopoDS_Shape()) {
        TDF_Label label = m.tool->AddDatum();
        Handle(XCAFDimTolObjects_DatumObject) d = new XCAFDimTolObjects_DatumObject();
        d->SetName(new TCollection_HAsciiString(letter));
        if (!presentation.IsNull())
            d->SetPresentation(presentation, new TCollection_HAsciiString("Datum Feature.1"));
        XCAFDoc_Datum::Set(label)->SetObject(d);
        return label;
    };
    auto addTolerance = [&](XCAFDimTolObjects_GeomToleranceType type) {
        Handle(XCAFDimTolObjects_GeomToleranceObject) t =
            new XCAFDimTolObjects_GeomToleranceObject();
        t->SetType(type);
        TDF_Label label = m.tool->AddGeomTolerance();
        XCAFDoc_GeomTolerance::Set(label)->SetObject(t);
        return std::make_pair(label, t);
    };
    auto [position, t] = addTolerance(XCAFDimTolObjects_GeomToleranceType_Position);
    t->SetValue(0.1);
    t->SetTypeOfValue(XCAFDimTolObjects_GeomToleranceTypeValue_Diameter);
    t->SetMaterialRequirementModifier(XCAFDimTolObjects_GeomToleranceMatReqModif_M);
    XCAFDoc_GeomTolerance::Set(position)->SetObject(t);
    m.tool->SetDatumToGeomTol(addDatum("A"), position);
    m.tool->SetDatumToGeomTol(addDatum("B"), position);
    addDatum("A"); // the same datum again, as OCCT repeats them
    addDatum("C", polygon({gp_Pnt(0, 0, 0), gp_Pnt(0, 0, 20)}));
    auto [flatness, f] = addTolerance(XCAFDimTolObjects_GeomToleranceType_Flatness);
    f->SetSemanticName(new TCollection_HAsciiString("Flatness.1"));
    XCAFDoc_GeomTolerance::Set(flatness)->SetObject(f);

    ModelData model;
    ASSERT_EQ(PmiImporter::import(m.doc, model), 5);
    const auto tols = ofKind(model, Item::TOLERANCE);
    ASSERT_EQ(tols.size(), 2u);
    EXPECT_EQ(tols[0]->name, L"Tolerance 1");
    EXPECT_EQ(tols[0]->texts[0].text, std::wstring(L"Position ") + kDia + L"0.1 (M) | A | B");
    EXPECT_EQ(tols[1]->name, L"Flatness.1");
    EXPECT_EQ(tols[1]->texts[0].text, L"Flatness"); // no value read: none shown
    const auto datums = ofKind(model, Item::DATUM);
    ASSERT_EQ(datums.size(), 3u);
    EXPECT_EQ(textsOf(datums), (std::vector<std::wstring>{L"A", L"B", L"C"}));
    EXPECT_EQ(datums[0]->name, L"Datum A");
    EXPECT_EQ(datums[2]->name, L"Datum Feature.1");
    EXPECT_EQ(datums[2]->lines.points.size(), 2u);
    EXPECT_LT(datums[2]->texts[0].position.distance(Vec3(0, 0, 10)), 1e-3f);
}

TEST(PmiImporterMemory, SavedViewsLookAtTheModel) {
    MemoryDocument m;
    auto addView = [&](const char* name, XCAFView_ProjectionType type, double zoom) {
        Handle(XCAFView_Object) v = new XCAFView_Object();
        v->SetName(new TCollection_HAsciiString(name)); // OCCT cannot store a null name
        v->SetType(type);
        v->SetViewDirection(gp_Dir(0, 0, -1));
        v->SetUpDirection(gp_Dir(0, 1, 1)); // not across the line of sight: made so
        v->SetWindowVerticalSize(80.0);
        v->SetZoomFactor(zoom);
        XCAFDoc_View::Set(XCAFDoc_DocumentTool::ViewTool(m.doc->Main())->AddView())->SetObject(v);
    };
    addView("Top", XCAFView_ProjectionType_Parallel, 0.0);
    addView("", XCAFView_ProjectionType_Central, 300.0);

    ModelData model;
    EXPECT_EQ(PmiImporter::import(m.doc, model), 0);
    ASSERT_EQ(model.views.size(), 2u);
    const auto& top = model.views[0];
    EXPECT_EQ(top.name, L"Top");
    EXPECT_TRUE(top.orthographic);
    EXPECT_EQ(top.viewHeight, 80.0f);
    EXPECT_LT(top.target.distance(Vec3(50, 25, 10)), 1e-3f);
    EXPECT_LT((top.target - top.eye).normalized().distance(Vec3(0, 0, -1)), 1e-5f);
    EXPECT_LT(top.up.distance(Vec3(0, 1, 0)), 1e-5f);
    const auto& central = model.views[1];
    EXPECT_EQ(central.name, L"View 2");
    EXPECT_FALSE(central.orthographic);
    EXPECT_NEAR(central.eye.distance(central.target), 300.0f, 1e-3f);
}

TEST(PmiImporterMemory, OddDataNeverBreaksTheImport) {
    ModelData model;
    EXPECT_EQ(PmiImporter::import(Handle(TDocStd_Document)(), model), 0);
    EXPECT_EQ(PmiImporter::import(new TDocStd_Document("BinOcaf"), model), 0); // not XCAF
    MemoryDocument m;
    // Labels as OCCT makes them, with empty objects; attributes set with none.
    m.tool->AddDimension();
    m.tool->AddGeomTolerance();
    m.tool->AddDatum();
    XCAFDoc_Dimension::Set(m.tool->AddDimension());
    XCAFDoc_GeomTolerance::Set(m.tool->AddGeomTolerance());
    XCAFDoc_Datum::Set(m.tool->AddDatum());
    XCAFDoc_View::Set(XCAFDoc_DocumentTool::ViewTool(m.doc->Main())->AddView());
    auto d = m.addDimension();
    d->SetValue(5.0);
    d->SetPresentation(TopoDS_Shape(), new TCollection_HAsciiString("Null.1"));
    m.commit();
    // Only the dimension that says something comes.
    ASSERT_EQ(PmiImporter::import(m.doc, model), 1);
    EXPECT_EQ(model.pmi[0].name, L"Dimension 3"); // OCCT keeps no name without a presentation
    EXPECT_EQ(model.pmi[0].lines.stripCount(), 0u);
    ASSERT_EQ(model.pmi[0].texts.size(), 1u);
    EXPECT_EQ(model.pmi[0].texts[0].text, L"5 mm");
}

// --- The viewer document ----------------------------------------------------------------------

TEST(PmiDocument, BuilderPutsPmiAndViewsInTheDocument) {
    qrnsg::SCFactory factory;
    auto made = std::dynamic_pointer_cast<qrnsg::SCView>(factory.create(qrnsg::SCHEMA_VIEW));
    ASSERT_TRUE(made);
    made->views.push_back({L"Top", Vec3(0, 0, 10), Vec3(), Vec3(0, 1, 0), true, 8.0f});
    auto copy = std::dynamic_pointer_cast<qrnsg::SCView>(made->clone());
    made->clear();
    ASSERT_TRUE(copy && copy->views.size() == 1u) << "a deep copy";
    EXPECT_EQ(copy->find(L"Top"), 0);
    EXPECT_EQ(copy->find(L"Side"), -1);

    ModelData model;
    ModelData::Part part;
    part.edges.addStrip({Vec3(0, 0, 0), Vec3(10, 0, 0)});
    model.addNode(L"Plate", -1, qrnmath::MatrixUtils::identity(), model.addPart(part));
    Item dim;
    dim.name = L"Linear Size.1";
    dim.kind = Item::DIMENSION;
    dim.lines.addStrip({Vec3(0, -2, 0), Vec3(10, -2, 0)});
    dim.lines.addStrip({Vec3(0, 0, 0), Vec3(0, -3, 0)});
    dim.texts.resize(2);
    dim.texts[0].text = L"10 mm";
    dim.texts[0].position = Vec3(5, -2.5f, 0);
    dim.texts[1].text = L"2x";
    Item datum; // semantic only: a text, no lines
    datum.kind = Item::DATUM;
    datum.texts.resize(1);
    datum.texts[0].text = L"A";
    model.pmi = {dim, datum};
    model.views.push_back({L"MBD_0", Vec3(5, -50, 5), Vec3(5, 0, 0), Vec3(0, 0, 1), false, 12.0f});

    for (bool withPmi : {true, false}) {
        SCOPED_TRACE(withPmi);
        ModelData input = model;
        if (!withPmi)
            input.pmi.clear(), input.views.clear();
        auto document = qrnviewer::DocumentBuilder::build(input);
        auto scene = document->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
        auto rt = document->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
        auto pmi = document->get<qrnsg::SCPmi>(qrnsg::SCHEMA_PMI);
        auto views = document->get<qrnsg::SCView>(qrnsg::SCHEMA_VIEW);
        ASSERT_TRUE(scene && rt && pmi && views);
        if (!withPmi) {
            EXPECT_TRUE(pmi->items.empty() && views->views.empty() && scene->texts.empty());
            EXPECT_EQ(scene->polylines.size(), 1u); // the plate's edges only
            continue;
        }
        ASSERT_EQ(pmi->items.size(), 2u);
        EXPECT_EQ(pmi->items[0].name, L"Linear Size.1");
        EXPECT_EQ(pmi->items[0].kind, qrnsg::SCPmi::DIMENSION);
        EXPECT_EQ(pmi->items[1].kind, qrnsg::SCPmi::DATUM);
        EXPECT_TRUE(pmi->items[1].polylineIds.empty());
        // The lines: one polyline primitive, drawn, with a material unlike the edges'.
        ASSERT_EQ(pmi->items[0].polylineIds.size(), 1u);
        const int lineId = pmi->items[0].polylineIds[0];
        const auto* pair = rt->polylines.transforms.find(lineId);
        ASSERT_TRUE(pair && pair->second >= 0 &&
                    static_cast<std::size_t>(pair->second) < scene->polylines.size());
        EXPECT_EQ(scene->polylines[static_cast<std::size_t>(pair->second)].points,
                  dim.lines.points);
        const int* material = rt->polylines.materials.find(lineId);
        ASSERT_NE(material, nullptr);
        EXPECT_NE(*material, *rt->polylines.materials.find(rt->polylines.drawOrder[0]));
        // The texts: each its own, turned to the viewer at constant size.
        ASSERT_EQ(pmi->items[0].textIds.size(), 2u);
        ASSERT_EQ(pmi->items[1].textIds.size(), 1u);
        const auto* text = rt->texts.transforms.find(pmi->items[0].textIds[0]);
        ASSERT_TRUE(text && static_cast<std::size_t>(text->second) < scene->texts.size());
        EXPECT_EQ(scene->texts[static_cast<std::size_t>(text->second)].text, L"10 mm");
        EXPECT_EQ(scene->texts[static_cast<std::size_t>(text->second)].position, Vec3(5, -2.5f, 0));
        EXPECT_EQ(scene->texts.size(), 3u);
        EXPECT_EQ(*rt->texts.flags.find(pmi->items[0].textIds[0]),
                  qrnsg::RTState::VISIBLE | qrnsg::RTState::ANCHORED |
                      qrnsg::RTState::CONSTANT_SIZE);
        // Ids are unique across every kind of primitive.
        std::set<int> ids;
        std::size_t count = 0;
        for (const auto* state : {&rt->meshes, &rt->polylines, &rt->texts})
            for (int id : state->drawOrder) {
                ids.insert(id);
                ++count;
            }
        EXPECT_EQ(ids.size(), count);
        EXPECT_EQ(ids.size(), 5u); // edges, the dimension's lines, three texts
        ASSERT_EQ(views->views.size(), 1u);
        EXPECT_EQ(views->views[0].name, L"MBD_0");
        EXPECT_EQ(views->views[0].eye, Vec3(5, -50, 5));
        EXPECT_EQ(views->views[0].viewHeight, 12.0f);
    }
}

} // namespace
