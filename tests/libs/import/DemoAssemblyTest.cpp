// The demo assembly: its document's solids, holes, fillets and colours; the STEP file it writes;
// the model the viewer imports, directly and through that file.
#include "ImportTestSupport.h"

#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DemoDocument.h"

#include <BRepBndLib.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepClass3d_SolidClassifier.hxx>
#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>
#include <Interface_Static.hxx>
#include <STEPControl_Controller.hxx>
#include <TopExp_Explorer.hxx>

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <set>
#include <sstream>

namespace {

using namespace importtest;
using qrnimport::DemoDocument;
using ::testing::AllOf;
using ::testing::HasSubstr;

const std::wstring kBlockName = L"Lagerbock \u00D820";
constexpr double kPi = 3.14159265358979323846;

double volume(const TopoDS_Shape& shape) {
    GProp_GProps props;
    BRepGProp::VolumeProperties(shape, props);
    return props.Mass();
}

// The document, made once: modelling with booleans and fillets takes a moment.
const Handle(TDocStd_Document) & doc() {
    static const Handle(TDocStd_Document) d = DemoDocument::make();
    return d;
}
TDF_LabelSequence shapeLabels() {
    TDF_LabelSequence all;
    XCAFDoc_DocumentTool::ShapeTool(doc()->Main())->GetShapes(all);
    return all;
}
// The shape label of that name (a part or an assembly definition).
TDF_Label definition(const std::wstring& name) {
    for (const TDF_Label& l : shapeLabels())
        if (nameOf(l) == name)
            return l;
    ADD_FAILURE() << "no shape label named " << std::string(name.begin(), name.end());
    return TDF_Label();
}
TopoDS_Shape shape(const std::wstring& name) {
    return XCAFDoc_ShapeTool::GetShape(definition(name));
}

// Every part a valid solid with a colour of its own; Z up in millimetres, standing on the plate's
// underside up to the guard's top.
TEST(DemoAssemblyDocumentTest, PartsAreColouredSolidsAndTheModelHasItsSize) {
    int parts = 0;
    for (const TDF_Label& l : shapeLabels()) {
        if (!XCAFDoc_ShapeTool::IsSimpleShape(l))
            continue;
        ++parts;
        const TopoDS_Shape s = XCAFDoc_ShapeTool::GetShape(l);
        int solids = 0;
        for (TopExp_Explorer e(s, TopAbs_SOLID); e.More(); e.Next())
            ++solids;
        Quantity_ColorRGBA c;
        EXPECT_TRUE(
            BRepCheck_Analyzer(s).IsValid() && solids == 1 && volume(s) > 0.0 &&
            XCAFDoc_DocumentTool::ColorTool(doc()->Main())->GetColor(l, XCAFDoc_ColorSurf, c))
            << l.Tag();
    }
    EXPECT_EQ(parts, 7);
    Bnd_Box box;
    BRepBndLib::AddOptimal(shape(L"Demo Assembly"), box, Standard_False);
    EXPECT_LT(box.CornerMin().Distance(gp_Pnt(-120.0, -80.0, 0.0)), 0.01);
    EXPECT_LT(box.CornerMax().Distance(gp_Pnt(120.0, 80.0, 102.0)), 0.01);
}

TEST(DemoAssemblyDocumentTest, HolesGoThroughAndFilletsRoundTheEdges) {
    const double tooth = 0.275 * 2.0 * kPi / 24.0, gap = 0.775 * 2.0 * kPi / 24.0; // gear pitch
    const struct {
        const wchar_t* part;
        double x, y, z;
        bool in;
    } probes[] = {
        // clang-format off
        // Base plate, origin on its top face: four Ø11 holes, corners rounded R12.
        {L"Base Plate", -105, -65, -6, false}, {L"Base Plate", -99, -65, -6, true},
        {L"Base Plate", 105, -65, -6, false},  {L"Base Plate", 111, -65, -6, true},
        {L"Base Plate", -105, 65, -6, false},  {L"Base Plate", -99, 65, -6, true},
        {L"Base Plate", 105, 65, -6, false},   {L"Base Plate", 111, 65, -6, true},
        {L"Base Plate", 119, 79, -6, false},   {L"Base Plate", 119, 60, -6, true},
        // Bearing block, origin on the bore's axis: the bore and both bolt holes open, a crown.
        {kBlockName.c_str(), 0, 0, 0, false},    {kBlockName.c_str(), 0, 0, 15, true},
        {kBlockName.c_str(), 0, -29, -34, false}, {kBlockName.c_str(), 10, -29, -34, true},
        {kBlockName.c_str(), 0, 29, -34, false},  {kBlockName.c_str(), 10, 29, -34, true},
        // Bracket: the inner corner filled by its R6 fillet, the Ø12 hole through the upright.
        {L"Bracket", 0, -11.2, 8.8, true}, {L"Bracket", 0, -16, 38, false},
        {L"Bracket", 15, 0, 4, false},
        // Gear: a bore, teeth and gaps at the tip circle.
        {L"Gear", 0, 0, 0, false}, {L"Gear", 0, 35 * std::cos(tooth), 35 * std::sin(tooth), true},
        {L"Gear", 0, 35 * std::cos(gap), 35 * std::sin(gap), false},
        // Guard: a hollow hood with the shaft's way in on +X only.
        {L"Guard", 0, 0, 40, false}, {L"Guard", 23.5, 0, 40, false},
        {L"Guard", -23.5, 0, 40, true}};
    // clang-format on
    for (const auto& p : probes) {
        BRepClass3d_SolidClassifier classifier(shape(p.part), gp_Pnt(p.x, p.y, p.z), 1e-6);
        EXPECT_EQ(classifier.State(), p.in ? TopAbs_IN : TopAbs_OUT)
            << p.part << " " << p.x << " " << p.y << " " << p.z;
    }
    const double corners = 4.0 * (12.0 * 12.0 - kPi * 12.0 * 12.0 / 4.0);
    EXPECT_NEAR(volume(shape(L"Base Plate")),
                (240.0 * 160.0 - corners - 4.0 * kPi * 5.5 * 5.5) * 12.0, 1.0);
}

// The demo as the viewer imports it, made once.
const ModelData& demo() {
    static const ModelData model = [] {
        ModelData m;
        std::string error;
        EXPECT_TRUE(qrnimport::DemoAssembly::model(m, error)) << error;
        return m;
    }();
    return model;
}

// The colours of the materials, quantised: diffuse RGB and transparency.
std::set<std::array<long, 4>> colourSet(const ModelData& m) {
    std::set<std::array<long, 4>> out;
    for (const auto& mat : m.materials)
        out.insert({std::lround(mat.diffuse[0] * 255.0f), std::lround(mat.diffuse[1] * 255.0f),
                    std::lround(mat.diffuse[2] * 255.0f), std::lround(mat.transparency * 255.0f)});
    return out;
}

TEST(DemoAssemblyModelTest, TheViewersModelHoldsTheAssembly) {
    const ModelData& m = demo();
    EXPECT_EQ(m.nodes.size(), 18u); // the root and its 17 components, bearing units twice
    EXPECT_EQ(m.instanceCount(), 13u);
    EXPECT_EQ(m.parts.size(), 7u); // each part once, however often placed
    EXPECT_EQ(depthOf(m), 3);

    // A few thousand triangles: fine enough to look round, light enough to start fast.
    EXPECT_GT(m.triangleCount(), 2000u);
    EXPECT_LT(m.triangleCount(), 50000u);
    EXPECT_EQ(m.lengthUnit, L"mm");
    EXPECT_TRUE(m.pmi.empty() && m.views.empty()) << "the note is added by the viewer";

    // Seven part colours and the shaft's end face; the guard alone is see-through.
    EXPECT_EQ(colourSet(m).size(), 8u);
    EXPECT_EQ(std::count_if(m.materials.begin(), m.materials.end(),
                            [](const auto& mat) { return mat.isTransparent(); }),
              1);
}

// The writer's schema is process-wide: the file is AP214 whatever was chosen, and that choice is
// left as it was. Read back, it keeps the tree, names, places, colours and geometry.
TEST(DemoAssemblyModelTest, AStepFileIsAp214AndKeepsTreeNamesColoursAndGeometry) {
    TempDir dir;
    const std::string path = dir.file("demo.step");
    STEPControl_Controller::Init();
    const std::string before = Interface_Static::CVal("write.step.schema");
    ASSERT_TRUE(Interface_Static::SetCVal("write.step.schema", "AP203"));
    std::string error;
    EXPECT_TRUE(DemoDocument::writeStep(doc(), path, error)) << error;
    EXPECT_EQ(std::string(Interface_Static::CVal("write.step.schema")), "AP203");
    Interface_Static::SetCVal("write.step.schema", before.c_str());
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    EXPECT_THAT(text.str(),
                AllOf(HasSubstr("FILE_SCHEMA(('AUTOMOTIVE_DESIGN {"), HasSubstr("COLOUR_RGB")));

    const ModelData &a = demo(), b = readFile(path);
    EXPECT_EQ(b.instanceCount(), a.instanceCount());
    std::multiset<std::wstring> partsA, partsB;
    for (const auto& p : a.parts)
        partsA.insert(p.name);
    for (const auto& p : b.parts)
        partsB.insert(p.name);
    EXPECT_EQ(partsB, partsA);
    // The same surfaces meshed with the same tolerances.
    const double ta = static_cast<double>(a.triangleCount());
    EXPECT_NEAR(static_cast<double>(b.triangleCount()), ta, ta * 0.02);
    EXPECT_EQ(colourSet(b), colourSet(a));
    EXPECT_EQ(b.materials.size(), a.materials.size());
    EXPECT_TRUE(b.pmi.empty() && b.views.empty());
    // Same tree in the same order, each node where it was.
    ASSERT_EQ(b.nodes.size(), a.nodes.size());
    for (std::size_t i = 0; i < a.nodes.size(); ++i) {
        EXPECT_EQ(b.nodes[i].name, a.nodes[i].name) << i;
        EXPECT_EQ(b.nodes[i].parent, a.nodes[i].parent) << i;
        EXPECT_EQ(b.nodes[i].part < 0, a.nodes[i].part < 0) << i;
        const auto wa = a.worldTransform(static_cast<int>(i)), wb = b.worldTransform(int(i));
        for (int k = 0; k < 16; ++k)
            EXPECT_NEAR(wb[k], wa[k], 1e-3) << "node " << i << " element " << k;
    }

    // Failures name the file, or say that there is nothing to write.
    const struct {
        Handle(TDocStd_Document) document;
        const char *file, *said;
    } failures[] = {{doc(), "/nonexistent-dir/demo.step", "/nonexistent-dir/demo.step"},
                    {Handle(TDocStd_Document)(), "x.step", "x.step"},
                    {Doc().doc, "empty.step", "no shapes"}};
    for (const auto& f : failures) {
        EXPECT_FALSE(DemoDocument::writeStep(f.document, f.file, error));
        EXPECT_THAT(error, HasSubstr(f.said));
    }
}

} // namespace
