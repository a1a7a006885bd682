#include "qrnviewer/occt/DemoAssembly.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnviewer/occt/ModelReader.h"

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
#include <sstream>

namespace {

using qrnviewer::DemoAssembly;
using qrnviewer::ModelData;

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

// One placed part of the flattened assembly tree.
struct Placed {
    TDF_Label part;
    gp_Trsf world;
    int depth = 0;
};

// The document, made once for the suite: modelling with booleans and fillets takes a moment.
class DemoAssemblyDocumentTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { s_doc = DemoAssembly::make(); }
    static void TearDownTestSuite() {
        XCAFApp_Application::GetApplication()->Close(s_doc);
        s_doc.Nullify();
    }

    Handle(XCAFDoc_ShapeTool) shapes() const {
        return XCAFDoc_DocumentTool::ShapeTool(s_doc->Main());
    }
    Handle(XCAFDoc_ColorTool) colors() const {
        return XCAFDoc_DocumentTool::ColorTool(s_doc->Main());
    }
    TDF_Label root() const {
        TDF_LabelSequence roots;
        shapes()->GetFreeShapes(roots);
        return roots.IsEmpty() ? TDF_Label() : roots.First();
    }
    // The top-level shape label of that name (a part or an assembly definition).
    TDF_Label definition(const std::wstring& name) const {
        TDF_LabelSequence all;
        shapes()->GetShapes(all);
        for (const TDF_Label& l : all)
            if (nameOf(l) == name)
                return l;
        ADD_FAILURE() << "no shape label named " << std::string(name.begin(), name.end());
        return TDF_Label();
    }
    TopoDS_Shape shape(const std::wstring& name) const {
        return XCAFDoc_ShapeTool::GetShape(definition(name));
    }
    std::vector<Placed> flatten() const {
        std::vector<Placed> out;
        walk(root(), gp_Trsf(), 0, out);
        return out;
    }

    static Handle(TDocStd_Document) s_doc;

private:
    void walk(const TDF_Label& assembly, const gp_Trsf& world, int depth,
              std::vector<Placed>& out) const {
        TDF_LabelSequence components;
        XCAFDoc_ShapeTool::GetComponents(assembly, components);
        for (const TDF_Label& c : components) {
            TDF_Label ref;
            ASSERT_TRUE(XCAFDoc_ShapeTool::GetReferredShape(c, ref));
            const gp_Trsf here = world * XCAFDoc_ShapeTool::GetLocation(c).Transformation();
            if (XCAFDoc_ShapeTool::IsAssembly(ref))
                walk(ref, here, depth + 1, out);
            else
                out.push_back({ref, here, depth + 1});
        }
    }
};

Handle(TDocStd_Document) DemoAssemblyDocumentTest::s_doc;

TEST_F(DemoAssemblyDocumentTest, NestedAssembliesShareTheirParts) {
    TDF_LabelSequence roots, all, users;
    shapes()->GetFreeShapes(roots);
    ASSERT_EQ(roots.Length(), 1);
    EXPECT_EQ(nameOf(root()), L"Demo Assembly");
    shapes()->GetShapes(all);
    int assemblies = 0, parts = 0;
    for (const TDF_Label& l : all) {
        assemblies += XCAFDoc_ShapeTool::IsAssembly(l) ? 1 : 0;
        parts += XCAFDoc_ShapeTool::IsSimpleShape(l) ? 1 : 0;
    }
    EXPECT_EQ(assemblies, 4); // root, shaft unit, bearing unit, bracket unit
    EXPECT_EQ(parts, 7);
    // Two bolts per bearing unit and two in the bracket unit; the bearing unit placed twice.
    EXPECT_EQ(XCAFDoc_ShapeTool::GetUsers(definition(L"Bolt M8x16"), users), 4);
    users.Clear();
    EXPECT_EQ(XCAFDoc_ShapeTool::GetUsers(definition(L"Bearing Unit"), users), 2);

    std::map<std::wstring, std::vector<gp_Trsf>> byPart;
    int deepest = 0;
    for (const auto& p : flatten()) {
        byPart[nameOf(p.part)].push_back(p.world);
        deepest = std::max(deepest, p.depth);
    }
    EXPECT_EQ(deepest, 3); // root, shaft unit, bearing unit, block
    EXPECT_EQ(byPart.size(), 7u);
    EXPECT_EQ(byPart[kBlockName].size(), 2u);
    // Six bolts, each at its own place, upright.
    const auto& bolts = byPart[L"Bolt M8x16"];
    ASSERT_EQ(bolts.size(), 6u);
    for (std::size_t i = 0; i < bolts.size(); ++i) {
        EXPECT_NEAR(gp::DZ().Transformed(bolts[i]).Z(), 1.0, 1e-9);
        for (std::size_t j = i + 1; j < bolts.size(); ++j)
            EXPECT_GT((bolts[i].TranslationPart() - bolts[j].TranslationPart()).Modulus(), 10.0);
    }
}

TEST_F(DemoAssemblyDocumentTest, EveryLabelIsNamedAndOneNameIsNotAscii) {
    TDF_LabelSequence all;
    shapes()->GetShapes(all);
    int named = 0;
    for (const TDF_Label& l : all) {
        TDF_LabelSequence components, subShapes;
        XCAFDoc_ShapeTool::GetComponents(l, components);
        XCAFDoc_ShapeTool::GetSubShapes(l, subShapes);
        components.Append(subShapes);
        components.Append(l);
        for (const TDF_Label& c : components)
            named += nameOf(c).empty() ? 0 : 1;
    }
    EXPECT_EQ(named, 11 + 14 + 1); // shapes, components, the shaft's end face
    // Found by its name character by character: Ø stored as one character, not UTF-8 bytes.
    EXPECT_FALSE(definition(kBlockName).IsNull());
}

TEST_F(DemoAssemblyDocumentTest, PartsHaveDistinctColoursOneFaceItsOwnAndTheGuardIsSeeThrough) {
    TDF_LabelSequence all;
    shapes()->GetShapes(all);
    std::vector<Quantity_ColorRGBA> partColours;
    std::vector<std::wstring> transparent;
    for (const TDF_Label& l : all) {
        if (!XCAFDoc_ShapeTool::IsSimpleShape(l))
            continue;
        Quantity_ColorRGBA c;
        ASSERT_TRUE(colors()->GetColor(l, XCAFDoc_ColorSurf, c)) << "no colour on part " << l.Tag();
        for (const auto& other : partColours)
            EXPECT_GT(c.GetRGB().Distance(other.GetRGB()), 0.05) << "part " << l.Tag();
        partColours.push_back(c);
        if (c.Alpha() < 1.0f)
            transparent.push_back(nameOf(l));
    }
    EXPECT_EQ(partColours.size(), 7u);
    EXPECT_EQ(transparent, std::vector<std::wstring>{L"Guard"});
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
}

TEST_F(DemoAssemblyDocumentTest, PartsAreValidSolidsAndTheModelHasItsSize) {
    TDF_LabelSequence all;
    shapes()->GetShapes(all);
    for (const TDF_Label& l : all) {
        if (!XCAFDoc_ShapeTool::IsSimpleShape(l))
            continue;
        const TopoDS_Shape s = XCAFDoc_ShapeTool::GetShape(l);
        const std::string name = std::to_string(l.Tag());
        EXPECT_TRUE(BRepCheck_Analyzer(s).IsValid()) << "part " << name;
        int solids = 0;
        for (TopExp_Explorer e(s, TopAbs_SOLID); e.More(); e.Next())
            ++solids;
        EXPECT_EQ(solids, 1) << "part " << name;
        EXPECT_GT(volume(s), 0.0) << "part " << name;
    }
    // Z up in millimetres, standing on the plate's underside: nothing pokes out below it.
    Bnd_Box box;
    BRepBndLib::AddOptimal(XCAFDoc_ShapeTool::GetShape(root()), box, Standard_False);
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    EXPECT_NEAR(x0, -120.0, 0.01);
    EXPECT_NEAR(x1, 120.0, 0.01);
    EXPECT_NEAR(y0, -80.0, 0.01);
    EXPECT_NEAR(y1, 80.0, 0.01);
    EXPECT_NEAR(z0, 0.0, 0.01);
    EXPECT_NEAR(z1, 102.0, 0.01); // the guard's top
}

TEST_F(DemoAssemblyDocumentTest, HolesGoThroughAndFilletsRoundTheEdges) {
    // Base plate, origin on its top face: four Ø11 holes, corners rounded R12.
    const TopoDS_Shape plate = shape(L"Base Plate");
    for (double x : {-105.0, 105.0})
        for (double y : {-65.0, 65.0}) {
            EXPECT_EQ(classify(plate, x, y, -6.0), TopAbs_OUT) << x << " " << y;
            EXPECT_EQ(classify(plate, x + 6.0, y, -6.0), TopAbs_IN) << x << " " << y;
        }
    EXPECT_EQ(classify(plate, 119.0, 79.0, -6.0), TopAbs_OUT);
    EXPECT_EQ(classify(plate, 119.0, 60.0, -6.0), TopAbs_IN);
    const double corners = 4.0 * (12.0 * 12.0 - kPi * 12.0 * 12.0 / 4.0);
    const double holes = 4.0 * kPi * 5.5 * 5.5;
    EXPECT_NEAR(volume(plate), (240.0 * 160.0 - corners - holes) * 12.0, 1.0);

    // Bearing block, origin on the bore's axis: the bore and both bolt holes are open.
    const TopoDS_Shape block = shape(kBlockName);
    EXPECT_EQ(classify(block, 0.0, 0.0, 0.0), TopAbs_OUT);
    EXPECT_EQ(classify(block, 0.0, 0.0, 15.0), TopAbs_IN); // the crown over the bore
    for (double y : {-29.0, 29.0}) {
        EXPECT_EQ(classify(block, 0.0, y, -34.0), TopAbs_OUT) << y;
        EXPECT_EQ(classify(block, 10.0, y, -34.0), TopAbs_IN) << y;
    }

    // Bracket: the inner corner filled by its R6 fillet, the Ø12 hole through the upright.
    const TopoDS_Shape bracket = shape(L"Bracket");
    EXPECT_EQ(classify(bracket, 0.0, -11.2, 8.8), TopAbs_IN);
    EXPECT_EQ(classify(bracket, 0.0, -16.0, 38.0), TopAbs_OUT);
    EXPECT_EQ(classify(bracket, 15.0, 0.0, 4.0), TopAbs_OUT);

    // Gear: a bore, teeth and gaps at the tip circle.
    const TopoDS_Shape gear = shape(L"Gear");
    EXPECT_EQ(classify(gear, 0.0, 0.0, 0.0), TopAbs_OUT);
    const double pitch = 2.0 * kPi / 24.0;
    const double toothMiddle = 0.275 * pitch, gapMiddle = 0.775 * pitch;
    EXPECT_EQ(classify(gear, 0.0, 35.0 * std::cos(toothMiddle), 35.0 * std::sin(toothMiddle)),
              TopAbs_IN);
    EXPECT_EQ(classify(gear, 0.0, 35.0 * std::cos(gapMiddle), 35.0 * std::sin(gapMiddle)),
              TopAbs_OUT);

    // Guard: a hollow hood with the shaft's way in on +X only.
    const TopoDS_Shape guard = shape(L"Guard");
    EXPECT_EQ(classify(guard, 0.0, 0.0, 40.0), TopAbs_OUT);
    EXPECT_EQ(classify(guard, 23.5, 0.0, 40.0), TopAbs_OUT);
    EXPECT_EQ(classify(guard, -23.5, 0.0, 40.0), TopAbs_IN);
}

std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
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
    Handle(TDocStd_Document) doc = DemoAssembly::make();
    std::string error;
    EXPECT_TRUE(DemoAssembly::writeStep(doc, path, error)) << error;
    EXPECT_EQ(std::string(Interface_Static::CVal("write.step.schema")), "AP203");
    Interface_Static::SetCVal("write.step.schema", before.c_str());
    const std::string text = readText(path);
    std::filesystem::remove(path);
    EXPECT_NE(text.find("FILE_SCHEMA(('AUTOMOTIVE_DESIGN {"), std::string::npos) << "not AP214";
    EXPECT_NE(text.find("COLOUR_RGB"), std::string::npos);

    EXPECT_FALSE(DemoAssembly::writeStep(doc, "/nonexistent-dir/demo.step", error));
    EXPECT_NE(error.find("/nonexistent-dir/demo.step"), std::string::npos) << error;
    XCAFApp_Application::GetApplication()->Close(doc);
    EXPECT_FALSE(DemoAssembly::writeStep(Handle(TDocStd_Document)(), "x.step", error));
    EXPECT_NE(error.find("x.step"), std::string::npos) << error;
    Handle(TDocStd_Document) empty;
    XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", empty);
    EXPECT_FALSE(DemoAssembly::writeStep(empty, "empty.step", error));
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
        Handle(TDocStd_Document) doc = DemoAssembly::make();
        out.ok = DemoAssembly::model(out.direct, out.error) &&
                 DemoAssembly::writeStep(doc, path, out.error) &&
                 qrnviewer::ModelReader::read(path, out.fromStep, out.error);
        XCAFApp_Application::GetApplication()->Close(doc);
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
    int transparent = 0;
    for (const auto& mat : m.materials)
        transparent += mat.isTransparent() ? 1 : 0;
    EXPECT_EQ(transparent, 1);
    const ModelData::Part* shaft = nullptr;
    for (const auto& p : m.parts)
        shaft = p.name == L"Shaft \u00D820" ? &p : shaft;
    ASSERT_NE(shaft, nullptr);
    ASSERT_EQ(shaft->meshes.size(), 2u);
    bool red = false;
    for (int mi : shaft->meshMaterials) {
        const auto& d = m.materials[static_cast<std::size_t>(mi)].diffuse;
        red = red || (d[0] > 0.6f && d[1] < 0.3f && d[2] < 0.3f);
    }
    EXPECT_TRUE(red);
}

TEST(DemoAssemblyModelTest, AStepRoundTripKeepsTreeNamesColoursAndGeometry) {
    ASSERT_TRUE(imported().ok) << imported().error;
    const ModelData& a = imported().direct;
    const ModelData& b = imported().fromStep;
    EXPECT_EQ(b.nodes.size(), a.nodes.size());
    EXPECT_EQ(b.instanceCount(), a.instanceCount());
    EXPECT_EQ(b.parts.size(), a.parts.size());
    EXPECT_EQ(nodeNames(b), nodeNames(a));
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
