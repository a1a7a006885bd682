#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DemoDocument.h"
#include "qrnimport/ModelReader.h"
#include "qrnmath/MatrixUtils.h"

#include <BRepBndLib.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepClass3d_SolidClassifier.hxx>
#include <BRepGProp.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <Interface_Static.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <STEPControl_Controller.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp_Explorer.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <tuple>

namespace {

using qrnimport::DemoAssembly;
using qrnimport::DemoDocument;
using qrnimport::ModelData;

const std::wstring kBlockName = L"Lagerbock \u00D820";
constexpr double kPi = 3.14159265358979323846;

std::wstring wide(const TCollection_ExtendedString& s) {
    std::wstring out;
    for (int i = 1; i <= s.Length(); ++i)
        out.push_back(static_cast<wchar_t>(s.Value(i)));
    return out;
}

std::wstring nameOf(const TDF_Label& label) {
    Handle(TDataStd_Name) name;
    return label.FindAttribute(TDataStd_Name::GetID(), name) ? wide(name->Get()) : std::wstring();
}

TopAbs_State classify(const TopoDS_Shape& solid, double x, double y, double z) {
    BRepClass3d_SolidClassifier classifier(solid, gp_Pnt(x, y, z), 1e-6);
    return classifier.State();
}

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
Handle(XCAFDoc_ShapeTool) shapes() {
    return XCAFDoc_DocumentTool::ShapeTool(doc()->Main());
}
Handle(XCAFDoc_ColorTool) colors() {
    return XCAFDoc_DocumentTool::ColorTool(doc()->Main());
}
TDF_Label root() {
    TDF_LabelSequence roots;
    shapes()->GetFreeShapes(roots);
    return roots.IsEmpty() ? TDF_Label() : roots.First();
}
// The shape label of that name (a part or an assembly definition).
TDF_Label definition(const std::wstring& name) {
    TDF_LabelSequence all;
    shapes()->GetShapes(all);
    for (const TDF_Label& l : all)
        if (nameOf(l) == name)
            return l;
    ADD_FAILURE() << "no shape label named " << std::string(name.begin(), name.end());
    return TDF_Label();
}
TopoDS_Shape shape(const std::wstring& name) {
    return XCAFDoc_ShapeTool::GetShape(definition(name));
}
// Every part a valid solid with a colour of its own, named with Ø as one character; one face of
// the shaft coloured its own; the model its size. (The tree and the colours as the viewer sees
// them: DemoAssemblyModelTest.)
TEST(DemoAssemblyDocumentTest, PartsAreColouredSolidsAndTheModelHasItsSize) {
    TDF_LabelSequence all;
    shapes()->GetShapes(all);
    int parts = 0;
    for (const TDF_Label& l : all) {
        if (!XCAFDoc_ShapeTool::IsSimpleShape(l))
            continue;
        ++parts;
        const TopoDS_Shape s = XCAFDoc_ShapeTool::GetShape(l);
        int solids = 0;
        for (TopExp_Explorer e(s, TopAbs_SOLID); e.More(); e.Next())
            ++solids;
        EXPECT_TRUE(BRepCheck_Analyzer(s).IsValid() && solids == 1 && volume(s) > 0.0) << l.Tag();
        Quantity_ColorRGBA c;
        EXPECT_TRUE(colors()->GetColor(l, XCAFDoc_ColorSurf, c)) << "no colour on part " << l.Tag();
    }
    EXPECT_EQ(parts, 7);
    EXPECT_FALSE(definition(kBlockName).IsNull());
    // The shaft's free end: a face of the shaft, the whole Ø20 end, coloured unlike the rest.
    const TDF_Label shaft = definition(L"Shaft \u00D820");
    TDF_LabelSequence subShapes;
    XCAFDoc_ShapeTool::GetSubShapes(shaft, subShapes);
    ASSERT_EQ(subShapes.Length(), 1);
    GProp_GProps props;
    BRepGProp::SurfaceProperties(XCAFDoc_ShapeTool::GetShape(subShapes.First()), props);
    EXPECT_NEAR(props.Mass(), kPi * 10.0 * 10.0, 1e-6);
    Quantity_ColorRGBA faceColour, shaftColour;
    ASSERT_TRUE(colors()->GetColor(subShapes.First(), XCAFDoc_ColorSurf, faceColour));
    ASSERT_TRUE(colors()->GetColor(shaft, XCAFDoc_ColorSurf, shaftColour));
    EXPECT_GT(faceColour.GetRGB().Distance(shaftColour.GetRGB()), 0.2);
    // Z up in millimetres, standing on the plate's underside: nothing pokes out below it.
    Bnd_Box box;
    BRepBndLib::AddOptimal(XCAFDoc_ShapeTool::GetShape(root()), box, Standard_False);
    EXPECT_LT(box.CornerMin().Distance(gp_Pnt(-120.0, -80.0, 0.0)), 0.01);
    EXPECT_LT(box.CornerMax().Distance(gp_Pnt(120.0, 80.0, 102.0)), 0.01); // the guard's top
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
    for (const auto& p : probes)
        EXPECT_EQ(classify(shape(p.part), p.x, p.y, p.z), p.in ? TopAbs_IN : TopAbs_OUT)
            << p.part << " " << p.x << " " << p.y << " " << p.z;
    const double corners = 4.0 * (12.0 * 12.0 - kPi * 12.0 * 12.0 / 4.0);
    EXPECT_NEAR(volume(shape(L"Base Plate")),
                (240.0 * 160.0 - corners - 4.0 * kPi * 5.5 * 5.5) * 12.0, 1.0);
}

TEST(DemoAssemblyStepTest, WritesAp214AndReportsFailures) {
    // The writer's schema is process-wide: the file is AP214 whatever was chosen, and that
    // choice is left as it was.
    STEPControl_Controller::Init();
    const std::string before = Interface_Static::CVal("write.step.schema");
    ASSERT_TRUE(Interface_Static::SetCVal("write.step.schema", "AP203"));
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("qrn-demo-" + std::to_string(getpid()) + ".step"))
                                 .string();
    std::string error;
    EXPECT_TRUE(DemoDocument::writeStep(doc(), path, error)) << error;
    EXPECT_EQ(std::string(Interface_Static::CVal("write.step.schema")), "AP203");
    Interface_Static::SetCVal("write.step.schema", before.c_str());
    std::ifstream in(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::filesystem::remove(path);
    EXPECT_NE(text.find("FILE_SCHEMA(('AUTOMOTIVE_DESIGN {"), std::string::npos) << "not AP214";
    EXPECT_NE(text.find("COLOUR_RGB"), std::string::npos);

    EXPECT_FALSE(DemoDocument::writeStep(doc(), "/nonexistent-dir/demo.step", error));
    EXPECT_NE(error.find("/nonexistent-dir/demo.step"), std::string::npos) << error;
    EXPECT_FALSE(DemoDocument::writeStep(Handle(TDocStd_Document)(), "x.step", error));
    EXPECT_NE(error.find("x.step"), std::string::npos) << error;
    Handle(TDocStd_Document) empty;
    XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", empty);
    EXPECT_FALSE(DemoDocument::writeStep(empty, "empty.step", error));
    EXPECT_NE(error.find("no shapes"), std::string::npos) << error;
    XCAFApp_Application::GetApplication()->Close(empty);
}

// The demo as the viewer imports it, and again after a trip through a STEP file; made once.
struct Imported {
    ModelData direct, fromStep;
    std::string error;
    bool ok = false;
};

const Imported& imported() {
    static const Imported i = [] {
        Imported out;
        const std::string path = (std::filesystem::temp_directory_path() /
                                  ("qrn-demo-model-" + std::to_string(getpid()) + ".step"))
                                     .string();
        out.ok = DemoAssembly::model(out.direct, out.error) &&
                 DemoDocument::writeStep(doc(), path, out.error) &&
                 qrnimport::ModelReader::read(path, out.fromStep, out.error);
        std::filesystem::remove(path);
        return out;
    }();
    return i;
}

std::multiset<std::wstring> nodeNames(const ModelData& m) {
    std::multiset<std::wstring> names;
    for (const auto& n : m.nodes)
        names.insert(n.name);
    return names;
}

// The colours of the materials, quantised: diffuse RGB and transparency.
std::set<std::array<int, 4>> colourSet(const ModelData& m) {
    std::set<std::array<int, 4>> out;
    for (const auto& mat : m.materials)
        out.insert({static_cast<int>(std::lround(mat.diffuse[0] * 255.0f)),
                    static_cast<int>(std::lround(mat.diffuse[1] * 255.0f)),
                    static_cast<int>(std::lround(mat.diffuse[2] * 255.0f)),
                    static_cast<int>(std::lround(mat.transparency * 255.0f))});
    return out;
}

TEST(DemoAssemblyModelTest, TheViewersModelHoldsTheAssembly) {
    ASSERT_TRUE(imported().ok) << imported().error;
    const ModelData& m = imported().direct;
    EXPECT_EQ(m.nodes.size(), 18u); // the root and its 17 components, bearing units twice
    EXPECT_EQ(m.instanceCount(), 13u);
    EXPECT_EQ(m.parts.size(), 7u); // each part once, however often placed
    int deepest = 0;
    for (const auto& node : m.nodes) {
        int d = 0;
        for (int n = node.parent; n >= 0; n = m.nodes[static_cast<std::size_t>(n)].parent)
            ++d;
        deepest = std::max(deepest, d);
    }
    EXPECT_EQ(deepest, 3);

    // Six bolts (two per bearing unit, placed twice, two in the bracket unit), each at its own
    // place, upright.
    std::vector<qrnmath::Mat4> bolts;
    for (std::size_t n = 0; n < m.nodes.size(); ++n)
        if (m.nodes[n].part >= 0 &&
            m.parts[static_cast<std::size_t>(m.nodes[n].part)].name == L"Bolt M8x16")
            bolts.push_back(m.worldTransform(static_cast<int>(n)));
    ASSERT_EQ(bolts.size(), 6u);
    for (std::size_t i = 0; i < bolts.size(); ++i) {
        EXPECT_NEAR(bolts[i][10], 1.0f, 1e-5f);
        for (std::size_t j = i + 1; j < bolts.size(); ++j)
            EXPECT_GT(qrnmath::Vec3(bolts[i][12] - bolts[j][12], bolts[i][13] - bolts[j][13],
                                    bolts[i][14] - bolts[j][14])
                          .length(),
                      10.0f);
    }

    // Instance names, repeated where a bearing unit is placed twice.
    const auto names = nodeNames(m);
    EXPECT_EQ(names.count(kBlockName), 2u);
    EXPECT_EQ(names.count(L"Bolt 1"), 2u);
    EXPECT_EQ(names.count(L"Bearing Unit 2"), 1u);
    EXPECT_EQ(names.count(L"Shaft \u00D820"), 1u);

    // A few thousand triangles: fine enough to look round, light enough to start fast.
    EXPECT_GT(m.triangleCount(), 2000u);
    EXPECT_LT(m.triangleCount(), 50000u);
    EXPECT_NEAR(m.bbox().max()[2], 102.0f, 0.5f);
    EXPECT_EQ(m.lengthUnit, L"mm");

    // Seven part colours and the shaft's end face; the guard alone is see-through.
    EXPECT_EQ(colourSet(m).size(), 8u);
    EXPECT_EQ(std::count_if(m.materials.begin(), m.materials.end(),
                            [](const auto& mat) { return mat.isTransparent(); }),
              1);
    const auto shaft = std::find_if(m.parts.begin(), m.parts.end(),
                                    [](const auto& p) { return p.name == L"Shaft \u00D820"; });
    ASSERT_TRUE(shaft != m.parts.end() && shaft->meshes.size() == 2u);
    EXPECT_TRUE(std::any_of(shaft->meshMaterials.begin(), shaft->meshMaterials.end(), [&](int i) {
        const auto& d = m.materials[static_cast<std::size_t>(i)].diffuse;
        return d[0] > 0.6f && d[1] < 0.3f && d[2] < 0.3f; // the red end face
    }));
}

TEST(DemoAssemblyModelTest, AStepRoundTripKeepsTreeNamesColoursAndGeometry) {
    ASSERT_TRUE(imported().ok) << imported().error;
    const ModelData& a = imported().direct;
    const ModelData& b = imported().fromStep;
    EXPECT_EQ(b.instanceCount(), a.instanceCount());
    EXPECT_EQ(b.parts.size(), a.parts.size());
    std::set<std::wstring> partsA, partsB;
    for (std::size_t i = 0; i < a.parts.size() && i < b.parts.size(); ++i) {
        partsA.insert(a.parts[i].name);
        partsB.insert(b.parts[i].name);
    }
    EXPECT_EQ(partsB, partsA);

    // The same surfaces meshed with the same tolerances.
    const double ta = static_cast<double>(a.triangleCount());
    EXPECT_NEAR(static_cast<double>(b.triangleCount()), ta, ta * 0.02);
    EXPECT_EQ(colourSet(b), colourSet(a));
    EXPECT_EQ(b.materials.size(), a.materials.size());

    // Same tree in the same order, each node where it was.
    ASSERT_EQ(b.nodes.size(), a.nodes.size());
    for (std::size_t i = 0; i < a.nodes.size(); ++i) {
        EXPECT_EQ(b.nodes[i].name, a.nodes[i].name) << i;
        EXPECT_EQ(b.nodes[i].parent, a.nodes[i].parent) << i;
        EXPECT_EQ(b.nodes[i].part < 0, a.nodes[i].part < 0) << i;
        const auto wa = a.worldTransform(static_cast<int>(i));
        const auto wb = b.worldTransform(static_cast<int>(i));
        for (int k = 0; k < 16; ++k)
            EXPECT_NEAR(wb[k], wa[k], 1e-3) << "node " << i << " element " << k;
    }
}

} // namespace
