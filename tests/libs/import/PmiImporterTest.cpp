// PMI and saved views: from XCAF documents (the shared AP242 files, files written here, and
// documents made in memory) into model data, and from model data into a viewer document.
#include "ImportTestSupport.h"

#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/PmiImporter.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCView.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <Interface_Static.hxx>
#include <Standard_ProgramError.hxx>
#include <XCAFDimTolObjects_DatumObject.hxx>
#include <XCAFDimTolObjects_DimensionObject.hxx>
#include <XCAFDoc_Datum.hxx>
#include <XCAFDoc_DimTolTool.hxx>
#include <XCAFDoc_Dimension.hxx>
#include <XCAFDoc_GeomTolerance.hxx>
#include <XCAFDoc_View.hxx>
#include <XCAFDoc_ViewTool.hxx>
#include <XCAFView_Object.hxx>
#include <gp_Circ.hxx>

#include <gmock/gmock.h>

#include <csignal>
#include <functional>
#include <numeric>
#include <set>

namespace {

using namespace importtest;
using qrnimport::PmiImporter;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Item = ModelData::PmiItem;
using Texts = std::vector<std::wstring>;

const std::wstring kDia = L"\u2300", kPm = L" \u00B1";

Bnd_Box shapeBox(const Handle(TDocStd_Document) & doc) {
    Bnd_Box box;
    TDF_LabelSequence free;
    XCAFDoc_DocumentTool::ShapeTool(doc->Main())->GetFreeShapes(free);
    for (int i = 1; i <= free.Length(); ++i)
        BRepBndLib::Add(XCAFDoc_ShapeTool::GetShape(free.Value(i)), box);
    return box;
}

// Inside the box grown by a share of its size on every side.
bool inside(Bnd_Box box, const Vec3& p, double share) {
    box.Enlarge(share * std::sqrt(box.SquareExtent()));
    return !box.IsOut(gp_Pnt(p[0], p[1], p[2]));
}

std::size_t count(const ModelData& model, Item::Kind kind) {
    return std::count_if(model.pmi.begin(), model.pmi.end(),
                         [&](auto& i) { return i.kind == kind; });
}

Texts textsOf(const ModelData& model) {
    Texts texts;
    for (const auto& item : model.pmi)
        for (const auto& t : item.texts)
            texts.push_back(t.text);
    return texts;
}

// A document made in memory: a 100 x 50 x 20 box part.
struct MemoryDocument {
    Handle(TDocStd_Document) doc = Doc().doc;
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    Handle(XCAFDoc_DimTolTool) tool = XCAFDoc_DocumentTool::DimTolTool(doc->Main());
    BRepPrimAPI_MakeBox box{100.0, 50.0, 20.0};
    TDF_Label part = shapes->AddShape(box.Shape(), false);
    std::vector<std::pair<TDF_Label, Handle(XCAFDimTolObjects_DimensionObject)>> dimensions;

    // On the top face (z = 20), as a sub-shape label that PMI can refer to, where asked.
    Handle(XCAFDimTolObjects_DimensionObject) addDimension(bool onTop = false) {
        dimensions.push_back({tool->AddDimension(), new XCAFDimTolObjects_DimensionObject()});
        if (onTop)
            tool->SetDimension(shapes->AddSubShape(part, box.TopFace()), dimensions.back().first);
        return dimensions.back().second;
    }
    // Objects are handed to their attributes once they are filled.
    void commit() {
        for (auto& [label, d] : dimensions)
            XCAFDoc_Dimension::Set(label)->SetObject(d);
        dimensions.clear();
    }
};

Handle(TColStd_HArray1OfReal) values(std::initializer_list<double> list) {
    Handle(TColStd_HArray1OfReal) a = new TColStd_HArray1OfReal(1, static_cast<int>(list.size()));
    int i = 1;
    for (double v : list)
        a->SetValue(i++, v);
    return a;
}

TEST(PmiImporterFiles, SharedAp242FilesBringTheirPmiAndViews) {
    SKIP_WITHOUT_SHARED_MODELS();
    const struct {
        const char* file;
        std::size_t dimensions, tolerances, datums;
        Texts texts;    // among the items' texts, exactly as often as listed
        Texts views;    // all parallel
        Texts sections; // the section views (clipping planes), not capped
    } files[] = {
        // clang-format off
        // Datums A, B and C, which OCCT repeats for each tolerance that refers to them (11
        // labels), once each; tolerances give their type, then their datums in order.
        {"nist_ctc_01_asme1_ap242-e1.stp", 12, 6, 3,
         {kDia + L"25" + kPm + L"0.15 mm", kDia + L"35 0/-0.2 mm", kDia + L"35 +0.2/0 mm",
          kDia + L"20 +0.05/-0.1 mm", kDia + L"34.8\u201335.2 mm", kDia + L"34.8\u201335.2 mm",
          L"60\u00B0" + kPm + L"0.5\u00B0", L"A", L"B", L"C", L"\u2316 | A | B | C",
          L"\u2316 | A | B | C", L"\u23E5",
          // no value in the file: what their geometry measures, said so
          L"85 mm (measured)", L"50 mm (measured)", kDia + L"35 mm (measured)",
          kDia + L"35 mm (measured)"},
         {L"MBD_0"}, {}},
        {"bug32745_pmi1.stp", 7, 0, 0,
         {L"R25" + kPm + L"0.2 mm", L"6" + kPm + L"0.1 mm", L"3.4" + kPm + L"0.1 mm", L"15 mm",
          L"linear distance outer", L"linear distance outer"},
         {L"02", L"03"}, {L"03"}},
        // clang-format on
    };
    for (const auto& f : files) {
        SCOPED_TRACE(f.file);
        auto doc = readStepDocument(sharedModel(f.file));
        ASSERT_FALSE(doc.IsNull());
        ModelData model;
        EXPECT_EQ(PmiImporter::import(doc, model), int(f.dimensions + f.tolerances + f.datums));
        EXPECT_EQ(model.pmi.size(), f.dimensions + f.tolerances + f.datums);
        EXPECT_EQ(count(model, Item::DIMENSION), f.dimensions);
        EXPECT_EQ(count(model, Item::TOLERANCE), f.tolerances);
        EXPECT_EQ(count(model, Item::DATUM), f.datums);
        // Every item has a name and one text. The files place no text: each goes beside the
        // part, clear of the others in its plane, with a leader to what it is on; those that
        // point at nothing stay clear too.
        const Bnd_Box box = shapeBox(doc);
        ASSERT_FALSE(box.IsVoid());
        std::size_t led = 0;
        for (const auto& item : model.pmi) {
            SCOPED_TRACE(std::string(item.name.begin(), item.name.end()));
            EXPECT_FALSE(item.name.empty());
            ASSERT_EQ(item.texts.size(), 1u);
            EXPECT_FALSE(item.textPlaced);
            EXPECT_FALSE(inside(box, item.texts[0].position, 0.03));
            EXPECT_EQ(item.texts[0].framed, item.kind != Item::DIMENSION);
            if (item.hasTarget) {
                EXPECT_TRUE(inside(box, item.target, 1e-3));
                ASSERT_GE(item.leaders.stripCount(), 2u) << "a leader and its arrow";
                EXPECT_EQ(item.leaders.points[0], item.texts[0].position);
                EXPECT_EQ(item.leaders.points[1], item.target);
                ++led;
            }
            for (const auto& p : item.lines.points)
                ASSERT_TRUE(inside(box, p, 0.5));
        }
        EXPECT_GE(led, model.pmi.size() - 2);
        // Nor do texts of different planes cover one another in the standard views: their
        // corners, seen along each axis and the isometric line of sight.
        auto corners = [](const qrnsg::Text& t) {
            Vec3 x, y, n;
            t.frame(x, y, n);
            const Vec3 c = t.position + x * t.middleFromAnchor();
            const float w = t.estimatedWidth() / 2.0f, h = 0.75f * t.height;
            return std::vector<Vec3>{c - x * w - y * h, c + x * w - y * h, c + x * w + y * h,
                                     c - x * w + y * h};
        };
        // Each view's two axes across its line of sight, then the sight; texts seen edge-on
        // in a view are no texts there.
        const Vec3 sights[][3] = {{Vec3(0, 1, 0), Vec3(0, 0, 1), Vec3(1, 0, 0)},
                                  {Vec3(1, 0, 0), Vec3(0, 0, 1), Vec3(0, 1, 0)},
                                  {Vec3(1, 0, 0), Vec3(0, 1, 0), Vec3(0, 0, 1)},
                                  {Vec3(1, 1, 0).normalized(), Vec3(-1, 1, 2).normalized(),
                                   Vec3(-1, 1, -1).normalized()}};
        for (std::size_t i = 0; i < model.pmi.size(); ++i)
            for (std::size_t j = i + 1; j < model.pmi.size(); ++j) {
                const auto &a = model.pmi[i].texts[0], &b = model.pmi[j].texts[0];
                if (std::abs(a.direction.dot(b.direction)) > 0.99f &&
                    std::abs(a.up.dot(b.up)) > 0.99f) {
                    EXPECT_GT(a.position.distance(b.position), a.height) << "texts overlap";
                }
                for (const auto& sight : sights) {
                    auto edgeOn = [&](const qrnsg::Text& t) {
                        Vec3 x, y, n;
                        t.frame(x, y, n);
                        return std::abs(n.dot(sight[2])) < 0.25f;
                    };
                    bool apart = edgeOn(a) || edgeOn(b);
                    for (const Vec3& axis : {sight[0], sight[1]}) {
                        float a0 = 1e30f, a1 = -1e30f, b0 = 1e30f, b1 = -1e30f;
                        for (const Vec3& p : corners(a))
                            a0 = std::min(a0, p.dot(axis)), a1 = std::max(a1, p.dot(axis));
                        for (const Vec3& p : corners(b))
                            b0 = std::min(b0, p.dot(axis)), b1 = std::max(b1, p.dot(axis));
                        apart = apart || a1 <= b0 || b1 <= a0;
                    }
                    EXPECT_TRUE(apart) << "texts " << i << " and " << j << " cover one another";
                }
            }
        const Texts texts = textsOf(model);
        for (const auto& t : f.texts)
            EXPECT_EQ(std::count(texts.begin(), texts.end(), t),
                      std::count(f.texts.begin(), f.texts.end(), t))
                << std::string(t.begin(), t.end());
        ASSERT_EQ(model.views.size(), f.views.size());
        for (std::size_t i = 0; i < f.views.size(); ++i) {
            EXPECT_EQ(model.views[i].name, f.views[i]);
            EXPECT_TRUE(model.views[i].orthographic);
        }
        ASSERT_EQ(model.sections.size(), f.sections.size());
        for (std::size_t i = 0; i < f.sections.size(); ++i) {
            EXPECT_EQ(model.sections[i].name, f.sections[i]);
            EXPECT_NEAR(model.sections[i].normal.length(), 1.0f, 1e-5f);
            EXPECT_TRUE(inside(box, model.sections[i].point, 1e-3)) << "the plane's point";
            EXPECT_FALSE(model.sections[i].capped);
        }
        if (f.views.size() == 1) { // the NIST part's one view lists every item
            EXPECT_TRUE(model.views[0].listsPmi);
            std::vector<int> listed = model.views[0].pmi, all(model.pmi.size());
            std::sort(listed.begin(), listed.end());
            std::iota(all.begin(), all.end(), 0);
            EXPECT_EQ(listed, all);
        }
    }
}

// A dimension with a graphical presentation written as AP242 and read back: polylines on the
// part, the text where it is attached. A failure in the transfer that reads PMI, as an exception
// or as a crash, costs the PMI, not the model, and says so.
TEST(PmiImporterWritten, PresentationComesBackAndAFailedPmiTransferCostsOnlyThePmi) {
    TempDir dir;
    MemoryDocument m;
    auto d = m.addDimension(true);
    d->SetType(XCAFDimTolObjects_DimensionType_Size_Diameter);
    d->SetValue(35.0);
    d->SetPlane(gp_Ax2(gp_Pnt(0, 0, 20), gp::DZ()));
    d->SetPresentation(
        BRepBuilderAPI_MakePolygon(gp_Pnt(0, 10, 20), gp_Pnt(100, 10, 20), gp_Pnt(100, 40, 20))
            .Wire(),
        new TCollection_HAsciiString("Linear Size.7"));
    d->SetPointTextAttach(gp_Pnt(50, 12, 20));
    m.commit();
    const std::string file = dir.file("pmi.stp");
    STEPCAFControl_Writer writer; // defines the schema setting in a fresh process
    Interface_Static::SetIVal("write.step.schema", 5); // AP242, the schema with semantic PMI
    writer.SetDimTolMode(true);
    ASSERT_TRUE(writer.Transfer(m.doc, STEPControl_AsIs) &&
                writer.Write(file.c_str()) == IFSelect_RetDone);

    const struct {
        const char* name;
        std::function<bool()> fail;
        const wchar_t* said;
    } cases[] = {
        {"sound", [] { return true; }, nullptr},
        {"exception", []() -> bool { throw Standard_ProgramError("datum 3 has no target"); },
         L"(Standard_ProgramError: datum 3 has no target)"},
        {"silent failure", [] { return false; }, L"(its transfer failed)"},
#ifndef _WIN32
        {"signal", [] { return std::raise(SIGSEGV) == 0; }, L"SIGSEGV"},
#endif
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        int calls = 0;
        ModelReader::Options options;
        options.pmiTransferHook = [&] { return ++calls, c.fail(); };
        ModelData model;
        std::string error;
        RecordingStatus status;
        ASSERT_TRUE(ModelReader::read(file, options, model, error, &status)) << error;
        EXPECT_EQ(calls, 1) << "read again without PMI";
        EXPECT_TRUE(near(model.bbox().max(), Vec3(100, 50, 20)));
        EXPECT_THAT(status.messages, Contains(HasSubstr(L"PMI")).Times(c.said ? 1 : 0));
        if (c.said) {
            EXPECT_THAT(status.messages,
                        Contains(AllOf(StartsWith(fs::path(file).wstring() +
                                                  L": PMI and saved views left out"),
                                       HasSubstr(c.said))));
            EXPECT_TRUE(model.pmi.empty());
            continue;
        }
        ASSERT_EQ(model.pmi.size(), 1u);
        const Item& item = model.pmi[0];
        EXPECT_EQ(item.kind, Item::DIMENSION);
        EXPECT_EQ(item.name, L"Linear Size.7");
        ASSERT_GT(item.lines.stripCount(), 0u);
        EXPECT_TRUE(near(item.lines.bbox().min(), Vec3(0, 10, 20)));
        EXPECT_TRUE(near(item.lines.bbox().max(), Vec3(100, 40, 20)));
        ASSERT_EQ(item.texts.size(), 1u);
        EXPECT_EQ(item.texts[0].text, kDia + L"35 mm");
        EXPECT_LT(item.texts[0].position.distance(Vec3(50, 12, 20)), 1e-3f);
    }
}

TEST(PmiImporterMemory, WiresAndCurvesBecomeStrips) {
    // A wire of two edges: one strip of three points; a circle: discretised, closed; an edge
    // used reversed: from its end to its start.
    TopoDS_Compound shape;
    BRep_Builder b;
    b.MakeCompound(shape);
    b.Add(shape,
          BRepBuilderAPI_MakePolygon(gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0), gp_Pnt(10, 5, 0)).Wire());
    b.Add(shape,
          BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(gp_Pnt(50, 25, 20), gp::DZ()), 10.0)).Edge());
    b.Add(shape, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 50, 0), gp_Pnt(0, 40, 0)).Edge().Reversed());
    MemoryDocument m;
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
    auto plusMinus = m.addDimension(true);
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
    EXPECT_EQ(textsOf(model),
              (Texts{kDia + L"35 +0.2/-0.1 in", L"9.9\u201310.1 in", L"45\u00B0" + kPm + L"1\u00B0",
                     kDia + L"20.000 H7 in", L"SR0 in", L"curve length"}));
    EXPECT_EQ(model.pmi[3].name, L"Dimension 4");
    // Pointing at the face it is on, at its first connection point; one with no geometry
    // stays at its plane, along the plane.
    ASSERT_TRUE(model.pmi[0].hasTarget && model.pmi[1].hasTarget);
    EXPECT_LT(model.pmi[0].target.distance(Vec3(50, 25, 20)), 1e-3f);
    EXPECT_LT(model.pmi[1].target.distance(Vec3(0, 0, 0)), 1e-4f);
    EXPECT_FALSE(model.pmi[2].hasTarget);
    EXPECT_TRUE(model.pmi[2].hasPlane);
    EXPECT_LT(model.pmi[2].texts[0].direction.distance(Vec3(1, 0, 0)), 1e-5f);
    EXPECT_LT(model.pmi[2].texts[0].up.distance(Vec3(0, 0, -1)), 1e-5f);
    // Out of the way of the part and of each other, the leader's arrow at the target.
    const auto& leaders = model.pmi[0].leaders;
    ASSERT_EQ(leaders.stripCount(), 2u);
    EXPECT_EQ(leaders.points[0], model.pmi[0].texts[0].position);
    EXPECT_EQ(leaders.points[3], model.pmi[0].target) << "the arrow's tip";
    EXPECT_FALSE(model.pmi[0].texts[0].position[2] < 20.0f) << "not under the part";
}

TEST(PmiImporterMemory, TolerancesNameTheirDatumsAndDatumsComeOnce) {
    MemoryDocument m;
    auto addDatum = [&](const char* letter, const TopoDS_Shape& presentation = TopoDS_Shape()) {
        Handle(XCAFDimTolObjects_DatumObject) d = new XCAFDimTolObjects_DatumObject();
        d->SetName(new TCollection_HAsciiString(letter));
        if (!presentation.IsNull())
            d->SetPresentation(presentation, new TCollection_HAsciiString("Datum Feature.1"));
        TDF_Label label = m.tool->AddDatum();
        XCAFDoc_Datum::Set(label)->SetObject(d);
        return label;
    };
    auto addTolerance = [&](XCAFDimTolObjects_GeomToleranceType type, double value = 0.0) {
        Handle(XCAFDimTolObjects_GeomToleranceObject) t =
            new XCAFDimTolObjects_GeomToleranceObject();
        t->SetType(type);
        if (value > 0.0) {
            t->SetValue(value);
            t->SetTypeOfValue(XCAFDimTolObjects_GeomToleranceTypeValue_Diameter);
            t->SetMaterialRequirementModifier(XCAFDimTolObjects_GeomToleranceMatReqModif_M);
        } else {
            t->SetSemanticName(new TCollection_HAsciiString("Flatness.1"));
        }
        TDF_Label label = m.tool->AddGeomTolerance();
        XCAFDoc_GeomTolerance::Set(label)->SetObject(t);
        return label;
    };
    const TDF_Label position = addTolerance(XCAFDimTolObjects_GeomToleranceType_Position, 0.1);
    m.tool->SetDatumToGeomTol(addDatum("A"), position);
    m.tool->SetDatumToGeomTol(addDatum("B"), position);
    addDatum("A"); // the same datum again, as OCCT repeats them
    addDatum("C", BRepBuilderAPI_MakePolygon(gp_Pnt(0, 0, 0), gp_Pnt(0, 0, 20)).Wire());
    addTolerance(XCAFDimTolObjects_GeomToleranceType_Flatness);

    ModelData model;
    ASSERT_EQ(PmiImporter::import(m.doc, model), 5);
    EXPECT_EQ(count(model, Item::TOLERANCE), 2u);
    EXPECT_EQ(count(model, Item::DATUM), 3u);
    // A feature control frame: the characteristic, the zone with its material condition, the
    // datums; a tolerance without a value shows its symbol alone.
    EXPECT_EQ(textsOf(model),
              (Texts{L"\u2316 | " + kDia + L"0.1 \u24C2 | A | B", L"\u23E5", L"A", L"B", L"C"}));
    Texts names;
    for (const auto& item : model.pmi)
        names.push_back(item.name);
    EXPECT_EQ(names,
              (Texts{L"Tolerance 1", L"Flatness.1", L"Datum A", L"Datum B", L"Datum Feature.1"}));
    // A datum with a presentation keeps its text there, with no leader of its own.
    EXPECT_EQ(model.pmi[4].lines.points.size(), 2u);
    EXPECT_TRUE(model.pmi[4].textPlaced);
    EXPECT_LT(model.pmi[4].texts[0].position.distance(Vec3(0, 0, 10)), 1e-3f);
    EXPECT_EQ(model.pmi[4].leaders.stripCount(), 0u);
}

TEST(PmiImporterMemory, SavedViewsLookAtTheModel) {
    MemoryDocument m;
    for (const auto* name : {"Top", ""}) {
        Handle(XCAFView_Object) v = new XCAFView_Object();
        v->SetName(new TCollection_HAsciiString(name)); // OCCT cannot store a null name
        v->SetType(*name ? XCAFView_ProjectionType_Parallel : XCAFView_ProjectionType_Central);
        v->SetViewDirection(gp_Dir(0, 0, -1));
        v->SetUpDirection(gp_Dir(0, 1, 1)); // not across the line of sight: made so
        v->SetWindowVerticalSize(80.0);
        v->SetZoomFactor(*name ? 0.0 : 300.0);
        XCAFDoc_View::Set(XCAFDoc_DocumentTool::ViewTool(m.doc->Main())->AddView())->SetObject(v);
    }
    ModelData model;
    EXPECT_EQ(PmiImporter::import(m.doc, model), 0);
    ASSERT_EQ(model.views.size(), 2u);
    const auto &top = model.views[0], &central = model.views[1];
    EXPECT_EQ(top.name, L"Top");
    EXPECT_TRUE(top.orthographic);
    EXPECT_EQ(top.viewHeight, 80.0f);
    EXPECT_LT(top.target.distance(Vec3(50, 25, 10)), 1e-3f);
    EXPECT_LT((top.target - top.eye).normalized().distance(Vec3(0, 0, -1)), 1e-5f);
    EXPECT_LT(top.up.distance(Vec3(0, 1, 0)), 1e-5f);
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
    // Only the dimension that says something comes; OCCT keeps no name without a presentation.
    ASSERT_EQ(PmiImporter::import(m.doc, model), 1);
    EXPECT_EQ(model.pmi[0].name, L"Dimension 3");
    EXPECT_EQ(model.pmi[0].lines.stripCount(), 0u);
    EXPECT_EQ(textsOf(model), Texts{L"5 mm"});
}

// A dimension with lines, leaders and two texts and a datum of text alone, with a saved view.
TEST(PmiDocument, BuilderPutsPmiAndViewsInTheDocument) {
    ModelData model;
    ModelData::Part part;
    part.edges.addStrip({Vec3(0, 0, 0), Vec3(10, 0, 0)});
    model.addNode(L"Plate", -1, qrnmath::MatrixUtils::identity(), model.addPart(part));
    Item dim, datum;
    dim.name = L"Linear Size.1";
    dim.kind = Item::DIMENSION;
    dim.lines.addStrip({Vec3(0, -2, 0), Vec3(10, -2, 0)});
    dim.lines.addStrip({Vec3(0, 0, 0), Vec3(0, -3, 0)});
    dim.texts.resize(2);
    dim.texts[0].text = L"10 mm";
    dim.texts[0].position = Vec3(5, -2.5f, 0);
    dim.texts[1].text = L"2x";
    dim.leaders.addStrip({Vec3(5, -2.5f, 0), Vec3(5, 0, 0)});
    datum.kind = Item::DATUM;
    datum.hasPlane = true;
    datum.texts.resize(1);
    datum.texts[0].text = L"A";
    model.pmi = {dim, datum};
    model.views.push_back(
        {L"MBD_0", Vec3(5, -50, 5), Vec3(5, 0, 0), Vec3(0, 0, 1), false, 12.0f, false, {}});

    auto document = qrnimport::DocumentBuilder::build(model);
    auto scene = document->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    auto rt = document->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    auto pmi = document->get<qrnsg::SCPmi>(qrnsg::SCHEMA_PMI);
    auto views = document->get<qrnsg::SCView>(qrnsg::SCHEMA_VIEW);
    ASSERT_TRUE(scene && rt && pmi && views);
    ASSERT_EQ(pmi->items.size(), 2u);
    EXPECT_EQ(pmi->items[0].name, L"Linear Size.1");
    EXPECT_TRUE(pmi->items[0].kind == qrnsg::SCPmi::DIMENSION &&
                pmi->items[1].kind == qrnsg::SCPmi::DATUM);
    EXPECT_TRUE(pmi->items[1].polylineIds.empty());
    // The lines: one polyline primitive, drawn, with a material unlike the edges'; the
    // presentation's strips, then the leaders'.
    ASSERT_EQ(pmi->items[0].polylineIds.size(), 1u);
    const int lineId = pmi->items[0].polylineIds[0];
    const auto* pair = rt->polylines.transforms.find(lineId);
    ASSERT_TRUE(pair && pair->second >= 0 && std::size_t(pair->second) < scene->polylines.size());
    std::vector<Vec3> points = dim.lines.points;
    points.insert(points.end(), dim.leaders.points.begin(), dim.leaders.points.end());
    EXPECT_EQ(scene->polylines[std::size_t(pair->second)].points, points);
    EXPECT_EQ(scene->polylines[std::size_t(pair->second)].stripCount(), 3u);
    const int* material = rt->polylines.materials.find(lineId);
    ASSERT_NE(material, nullptr);
    EXPECT_NE(*material, *rt->polylines.materials.find(rt->polylines.drawOrder[0]));
    // The texts: each its own, in its plane at the size laid out; without an annotation plane,
    // turned to the viewer at one size.
    ASSERT_EQ(pmi->items[0].textIds.size(), 2u);
    ASSERT_EQ(pmi->items[1].textIds.size(), 1u);
    EXPECT_EQ(*rt->texts.flags.find(pmi->items[1].textIds[0]), qrnsg::RTState::VISIBLE);
    EXPECT_EQ(*rt->texts.flags.find(pmi->items[0].textIds[0]),
              qrnsg::RTState::VISIBLE | qrnsg::RTState::ANCHORED | qrnsg::RTState::CONSTANT_SIZE);
    const auto* text = rt->texts.transforms.find(pmi->items[0].textIds[0]);
    ASSERT_TRUE(text && std::size_t(text->second) < scene->texts.size());
    EXPECT_EQ(scene->texts[std::size_t(text->second)].text, L"10 mm");
    EXPECT_EQ(scene->texts[std::size_t(text->second)].position, Vec3(5, -2.5f, 0));
    // Ids are unique across every kind of primitive: edges, the dimension's lines, 3 texts.
    std::vector<int> all;
    for (const auto* state : {&rt->meshes, &rt->polylines, &rt->texts})
        all.insert(all.end(), state->drawOrder.begin(), state->drawOrder.end());
    EXPECT_EQ(std::set<int>(all.begin(), all.end()).size(), all.size());
    EXPECT_EQ(all.size(), 5u);
    ASSERT_EQ(views->views.size(), 1u);
    EXPECT_TRUE(views->views[0].eye == Vec3(5, -50, 5) && views->views[0].viewHeight == 12.0f);
}

} // namespace
