// Model import through Open CASCADE: models built here with its modelling API, written in the
// formats the viewer reads and read back; bad input of every kind; the shared public models.

// As Open CASCADE's own build, so that signals can be caught here as in the reader.
#if !defined(_WIN32) && !defined(OCC_CONVERT_SIGNALS)
#define OCC_CONVERT_SIGNALS
#endif

#include "qrnviewer/occt/ModelReader.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnviewer/occt/MeshNormals.h"
#include "qrnviewer/occt/XcafImporter.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <IGESCAFControl_Writer.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <OSD.hxx>
#include <Poly_Triangulation.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <RWGltf_CafWriter.hxx>
#include <RWObj_CafWriter.hxx>
#include <RWStl.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_IndexedDataMapOfStringString.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gp_Trsf.hxx>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using qrnmath::Vec3;
using qrnviewer::ModelData;
using qrnviewer::ModelReader;

const wchar_t* const GEAR_NAME = L"Zahnrad Ø12 – 歯車";

// A folder of its own per test, removed afterwards.
class TempDir {
public:
    TempDir() {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        m_path = fs::temp_directory_path() /
                 ("qrn_import_" + std::string(info->name()) + "_" +
                  std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
        fs::create_directories(m_path);
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(m_path, ec);
    }
    std::string file(const std::string& name) const { return (m_path / name).string(); }
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(file(name), std::ios::binary) << content;
        return file(name);
    }

private:
    fs::path m_path;
};

Handle(TDocStd_Document) newDocument() {
    Handle(TDocStd_Document) doc;
    XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", doc);
    return doc;
}

gp_Trsf translation(double x, double y, double z) {
    gp_Trsf t;
    t.SetTranslation(gp_Vec(x, y, z));
    return t;
}

Quantity_Color rgb(double r, double g, double b) {
    return Quantity_Color(r, g, b, Quantity_TOC_sRGB);
}

// Root > Row > 3 x Bolt (red cylinder), Root > gear (green box, its top face blue, a
// non-ASCII name), Root > Glass (a transparent box).
Handle(TDocStd_Document) makeAssembly() {
    Handle(TDocStd_Document) doc = newDocument();
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    Handle(XCAFDoc_ColorTool) colours = XCAFDoc_DocumentTool::ColorTool(doc->Main());

    TDF_Label bolt = shapes->AddShape(BRepPrimAPI_MakeCylinder(3.0, 20.0).Shape(), false);
    TDataStd_Name::Set(bolt, "Bolt");
    colours->SetColor(bolt, rgb(1.0, 0.0, 0.0), XCAFDoc_ColorSurf);

    TopoDS_Shape gearShape = BRepPrimAPI_MakeBox(gp_Pnt(0.0, 40.0, 0.0), 10.0, 10.0, 10.0).Shape();
    TDF_Label gear = shapes->AddShape(gearShape, false);
    TDataStd_Name::Set(gear, TCollection_ExtendedString(GEAR_NAME));
    colours->SetColor(gear, rgb(0.0, 1.0, 0.0), XCAFDoc_ColorSurf);
    for (TopExp_Explorer f(gearShape, TopAbs_FACE); f.More(); f.Next()) {
        // The top face: all its corners at z = 10.
        bool top = true;
        for (TopExp_Explorer v(f.Current(), TopAbs_VERTEX); v.More(); v.Next())
            top = top && std::abs(BRep_Tool::Pnt(TopoDS::Vertex(v.Current())).Z() - 10.0) < 1e-9;
        if (top)
            colours->SetColor(shapes->AddSubShape(gear, f.Current()), rgb(0.0, 0.0, 1.0),
                              XCAFDoc_ColorSurf);
    }

    TDF_Label glass = shapes->AddShape(
        BRepPrimAPI_MakeBox(gp_Pnt(30.0, 40.0, 0.0), 5.0, 5.0, 5.0).Shape(), false);
    TDataStd_Name::Set(glass, "Glass");
    colours->SetColor(glass, Quantity_ColorRGBA(rgb(0.2, 0.4, 0.8), 0.25f), XCAFDoc_ColorSurf);

    TDF_Label row = shapes->NewShape();
    TDataStd_Name::Set(row, "Row");
    for (int i = 0; i < 3; ++i)
        shapes->AddComponent(row, bolt, TopLoc_Location(translation(15.0 * i, 0.0, 0.0)));
    TDF_Label root = shapes->NewShape();
    TDataStd_Name::Set(root, "Root");
    shapes->AddComponent(root, row, TopLoc_Location(translation(0.0, 0.0, 5.0)));
    shapes->AddComponent(root, gear, TopLoc_Location());
    shapes->AddComponent(root, glass, TopLoc_Location());
    shapes->UpdateAssemblies();
    return doc;
}

bool writeStep(const Handle(TDocStd_Document) & doc, const std::string& path) {
    STEPCAFControl_Writer writer;
    writer.SetColorMode(true);
    writer.SetNameMode(true);
    return writer.Transfer(doc, STEPControl_AsIs) && writer.Write(path.c_str()) == IFSelect_RetDone;
}

void meshDocument(const Handle(TDocStd_Document) & doc) {
    TDF_LabelSequence roots;
    XCAFDoc_DocumentTool::ShapeTool(doc->Main())->GetFreeShapes(roots);
    for (TDF_LabelSequence::Iterator it(roots); it.More(); it.Next())
        BRepMesh_IncrementalMesh(XCAFDoc_ShapeTool::GetShape(it.Value()), 0.1);
}

int findNode(const ModelData& model, const std::wstring& name) {
    for (std::size_t i = 0; i < model.nodes.size(); ++i)
        if (model.nodes[i].name == name)
            return static_cast<int>(i);
    return -1;
}

int findPart(const ModelData& model, const std::wstring& name) {
    for (std::size_t i = 0; i < model.parts.size(); ++i)
        if (model.parts[i].name == name)
            return static_cast<int>(i);
    return -1;
}

std::size_t partTriangles(const ModelData::Part& part) {
    std::size_t n = 0;
    for (const auto& m : part.meshes)
        n += m.triangleCount();
    return n;
}

std::size_t meshCount(const ModelData& model) {
    std::size_t n = 0;
    for (const auto& p : model.parts)
        n += p.meshes.size();
    return n;
}

Vec3 translationOf(const qrnmath::Mat4& m) {
    return Vec3(m[12], m[13], m[14]);
}

bool near(const Vec3& a, const Vec3& b, float eps = 1e-3f) {
    return qrnmath::nearlyEqual(a, b, eps);
}

// Every mesh well formed: a unit normal per vertex, indices in range.
void expectWellFormed(const ModelData& model) {
    for (const auto& part : model.parts) {
        ASSERT_EQ(part.meshes.size(), part.meshMaterials.size());
        for (std::size_t m = 0; m < part.meshes.size(); ++m) {
            const auto& mesh = part.meshes[m];
            ASSERT_EQ(mesh.normals.size(), mesh.vertices.size());
            ASSERT_EQ(mesh.indices.size() % 3, 0u);
            EXPECT_GT(mesh.triangleCount(), 0u);
            for (unsigned int i : mesh.indices)
                ASSERT_LT(i, mesh.vertices.size());
            for (const auto& n : mesh.normals)
                ASSERT_NEAR(n.length(), 1.0f, 1e-3f);
            ASSERT_GE(part.meshMaterials[m], 0);
            ASSERT_LT(part.meshMaterials[m], static_cast<int>(model.materials.size()));
        }
    }
    for (std::size_t n = 0; n < model.nodes.size(); ++n) {
        EXPECT_LT(model.nodes[n].parent, static_cast<int>(n)) << "parents come first";
        EXPECT_LT(model.nodes[n].part, static_cast<int>(model.parts.size()));
    }
}

// On a convex solid every triangle faces away from the centre, by its winding and by the
// normals of its vertices.
void expectOutward(const ModelData::Part& part, const Vec3& centre) {
    std::size_t checked = 0;
    for (const auto& mesh : part.meshes)
        for (std::size_t t = 0; t < mesh.indices.size(); t += 3) {
            const Vec3& a = mesh.vertices[mesh.indices[t]];
            const Vec3& b = mesh.vertices[mesh.indices[t + 1]];
            const Vec3& c = mesh.vertices[mesh.indices[t + 2]];
            const Vec3 out = (a + b + c) / 3.0f - centre;
            const Vec3 winding = qrnmath::cross(b - a, c - a);
            if (winding.length() < 1e-6f)
                continue;
            ASSERT_GT(winding.dot(out), 0.0f) << "triangle " << t / 3 << " wound inwards";
            for (std::size_t k = 0; k < 3; ++k)
                ASSERT_GT(mesh.normals[mesh.indices[t + k]].dot(winding.normalized()), 0.5f)
                    << "normal against the winding";
            ++checked;
        }
    EXPECT_GT(checked, 0u);
}

const qrnsg::MMaterial& materialOf(const ModelData& model, const ModelData::Part& part,
                                   std::size_t m) {
    return model.materials[static_cast<std::size_t>(part.meshMaterials[m])];
}

bool hasColour(const qrnsg::MMaterial& m, float r, float g, float b) {
    return std::abs(m.diffuse[0] - r) < 0.01f && std::abs(m.diffuse[1] - g) < 0.01f &&
           std::abs(m.diffuse[2] - b) < 0.01f;
}

// What the generated assembly must come back as, from any format that keeps its structure.
void expectAssembly(const ModelData& model) {
    expectWellFormed(model);
    EXPECT_EQ(model.nodes.size(), 7u); // Root, Row, 3 bolts, gear, glass
    EXPECT_EQ(model.instanceCount(), 5u);
    ASSERT_EQ(model.parts.size(), 3u) << "the bolt is held once, not copied";
    EXPECT_EQ(model.lengthUnit, L"mm");

    const int bolt = findPart(model, L"Bolt");
    const int gear = findPart(model, GEAR_NAME);
    const int glass = findPart(model, L"Glass");
    ASSERT_GE(bolt, 0);
    ASSERT_GE(gear, 0) << "the non-ASCII name comes back exactly";
    ASSERT_GE(glass, 0);

    // Three instances of the one bolt, each placed 15 apart along x in the row.
    std::vector<Vec3> places;
    for (std::size_t n = 0; n < model.nodes.size(); ++n)
        if (model.nodes[n].part == bolt)
            places.push_back(translationOf(model.worldTransform(static_cast<int>(n))));
    ASSERT_EQ(places.size(), 3u);
    std::set<int> xs;
    for (const auto& p : places) {
        EXPECT_NEAR(p[2], 5.0f, 1e-3f);
        xs.insert(static_cast<int>(std::lround(p[0])));
    }
    EXPECT_EQ(xs, (std::set<int>{0, 15, 30}));
    const int row = findNode(model, L"Row");
    ASSERT_GE(row, 0);
    EXPECT_EQ(model.nodes[static_cast<std::size_t>(row)].part, -1);
    EXPECT_EQ(model.nodes[0].name, L"Root");
    EXPECT_EQ(model.nodes[0].parent, -1);

    const auto& boltPart = model.parts[static_cast<std::size_t>(bolt)];
    const auto& gearPart = model.parts[static_cast<std::size_t>(gear)];
    const auto& glassPart = model.parts[static_cast<std::size_t>(glass)];
    EXPECT_GT(partTriangles(boltPart), 20u);
    EXPECT_EQ(model.triangleCount(),
              3 * partTriangles(boltPart) + partTriangles(gearPart) + partTriangles(glassPart));

    // Colours: the bolt red; the gear green with its top face blue (two triangles), one mesh
    // per material; the glass see-through.
    ASSERT_EQ(boltPart.meshes.size(), 1u);
    EXPECT_TRUE(hasColour(materialOf(model, boltPart, 0), 1.0f, 0.0f, 0.0f));
    EXPECT_FALSE(materialOf(model, boltPart, 0).isTransparent());
    ASSERT_EQ(gearPart.meshes.size(), 2u);
    std::size_t blue = 0, green = 0;
    for (std::size_t m = 0; m < 2; ++m) {
        if (hasColour(materialOf(model, gearPart, m), 0.0f, 0.0f, 1.0f))
            blue += gearPart.meshes[m].triangleCount();
        if (hasColour(materialOf(model, gearPart, m), 0.0f, 1.0f, 0.0f))
            green += gearPart.meshes[m].triangleCount();
    }
    EXPECT_EQ(blue, 2u);
    EXPECT_EQ(green, 10u);
    ASSERT_EQ(glassPart.meshes.size(), 1u);
    const auto& glassMaterial = materialOf(model, glassPart, 0);
    EXPECT_TRUE(hasColour(glassMaterial, 0.2f, 0.4f, 0.8f));
    EXPECT_NEAR(glassMaterial.transparency, 0.75f, 0.02f);
    EXPECT_NEAR(glassMaterial.diffuse[3], 0.25f, 0.02f);
    EXPECT_EQ(model.materials.size(), 4u) << "red, green, blue, glass: each once";

    // Faces wound and lit outwards, reversed faces of the boxes included.
    expectOutward(gearPart, Vec3(5.0f, 45.0f, 5.0f));
    expectOutward(glassPart, Vec3(32.5f, 42.5f, 2.5f));
    expectOutward(boltPart, Vec3(0.0f, 0.0f, 10.0f));

    // Placed, the model spans the boxes and the bolts.
    const qrnsg::BBox box = model.bbox();
    EXPECT_TRUE(near(box.min(), Vec3(-3.0f, -3.0f, 0.0f), 0.05f))
        << box.min()[0] << " " << box.min()[1];
    EXPECT_TRUE(near(box.max(), Vec3(35.0f, 50.0f, 25.0f), 0.05f))
        << box.max()[0] << " " << box.max()[1];
}

// Keeps what the importer reports, to check progress and messages.
class RecordingStatus : public qrn::IStatusManager {
public:
    void setStatus(const std::wstring& text) override { messages.push_back(text); }
    void setProgress(const std::wstring& task, int percent) override {
        progress.emplace_back(task, percent);
    }
    void endProgress() override { ++ends; }

    std::vector<std::wstring> messages;
    std::vector<std::pair<std::wstring, int>> progress;
    int ends = 0;
};

// --- the generated assembly --------------------------------------------------------------

TEST(XcafImporterTest, AssemblyInMemory) {
    Handle(TDocStd_Document) doc = makeAssembly();
    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(doc, ModelReader::Options(), model, error))
        << error;
    expectAssembly(model);

    // B-rep edges: a cylinder has two circles and a seam, a box twelve edges.
    EXPECT_EQ(model.parts[static_cast<std::size_t>(findPart(model, L"Bolt"))].edges.stripCount(),
              3u);
    EXPECT_EQ(model.parts[static_cast<std::size_t>(findPart(model, GEAR_NAME))].edges.stripCount(),
              12u);
}

TEST(XcafImporterTest, ColourComesDownFromTheAssembly) {
    Handle(TDocStd_Document) doc = newDocument();
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    Handle(XCAFDoc_ColorTool) colours = XCAFDoc_DocumentTool::ColorTool(doc->Main());
    TDF_Label plain = shapes->AddShape(BRepPrimAPI_MakeBox(1.0, 1.0, 1.0).Shape(), false);
    TDF_Label painted = shapes->AddShape(BRepPrimAPI_MakeBox(2.0, 1.0, 1.0).Shape(), false);
    colours->SetColor(painted, rgb(0.0, 0.0, 1.0), XCAFDoc_ColorSurf);
    TDF_Label sub = shapes->NewShape();
    TDataStd_Name::Set(sub, TCollection_ExtendedString(L"Sub \U0001D11E")); // beyond UTF-16's BMP
    shapes->AddComponent(sub, plain, TopLoc_Location());
    shapes->AddComponent(sub, painted, TopLoc_Location(translation(5.0, 0.0, 0.0)));
    TDF_Label root = shapes->NewShape();
    TDF_Label subInstance = shapes->AddComponent(root, sub, TopLoc_Location());
    colours->SetColor(subInstance, rgb(1.0, 1.0, 0.0), XCAFDoc_ColorSurf);
    shapes->UpdateAssemblies();

    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(doc, ModelReader::Options(), model, error))
        << error;
    expectWellFormed(model);
    ASSERT_EQ(model.parts.size(), 2u);
    std::size_t yellow = 0, blue = 0;
    for (const auto& part : model.parts) {
        ASSERT_EQ(part.meshes.size(), 1u);
        yellow += hasColour(materialOf(model, part, 0), 1.0f, 1.0f, 0.0f) ? 1 : 0;
        blue += hasColour(materialOf(model, part, 0), 0.0f, 0.0f, 1.0f) ? 1 : 0;
    }
    EXPECT_EQ(yellow, 1u) << "the uncoloured part takes its assembly's colour";
    EXPECT_EQ(blue, 1u) << "a part's own colour wins over the assembly's";
    EXPECT_GE(findNode(model, L"Sub \U0001D11E"), 0);
    // Generated names where the document has none.
    for (const auto& node : model.nodes)
        EXPECT_FALSE(node.name.empty());
    for (const auto& part : model.parts)
        EXPECT_FALSE(part.name.empty());
}

TEST(XcafImporterTest, InstanceColourOverridesThePart) {
    Handle(TDocStd_Document) doc = newDocument();
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    Handle(XCAFDoc_ColorTool) colours = XCAFDoc_DocumentTool::ColorTool(doc->Main());
    TDF_Label part = shapes->AddShape(BRepPrimAPI_MakeBox(1.0, 1.0, 1.0).Shape(), false);
    TDF_Label root = shapes->NewShape();
    shapes->AddComponent(root, part, TopLoc_Location());
    shapes->AddComponent(root, part, TopLoc_Location(translation(3.0, 0.0, 0.0)));
    TDF_Label red = shapes->AddComponent(root, part, TopLoc_Location(translation(6.0, 0.0, 0.0)));
    colours->SetColor(red, rgb(1.0, 0.0, 0.0), XCAFDoc_ColorSurf);
    shapes->UpdateAssemblies();

    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(doc, ModelReader::Options(), model, error))
        << error;
    EXPECT_EQ(model.instanceCount(), 3u);
    // The two plain instances share one part; the red one needs its own material.
    ASSERT_EQ(model.parts.size(), 2u);
    EXPECT_EQ(model.nodes[1].part, model.nodes[2].part);
    EXPECT_NE(model.nodes[1].part, model.nodes[3].part);
    EXPECT_TRUE(
        hasColour(materialOf(model, model.parts[static_cast<std::size_t>(model.nodes[3].part)], 0),
                  1.0f, 0.0f, 0.0f));
    EXPECT_EQ(model.materials.size(), 2u);
}

TEST(XcafImporterTest, PartColouredThroughoutStaysSharedUnderColouredAssemblies) {
    Handle(TDocStd_Document) doc = newDocument();
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    Handle(XCAFDoc_ColorTool) colours = XCAFDoc_DocumentTool::ColorTool(doc->Main());
    TopoDS_Shape box = BRepPrimAPI_MakeBox(1.0, 1.0, 1.0).Shape();
    TDF_Label part = shapes->AddShape(box, false);
    for (TopExp_Explorer f(box, TopAbs_FACE); f.More(); f.Next())
        colours->SetColor(shapes->AddSubShape(part, f.Current()), rgb(0.0, 1.0, 1.0),
                          XCAFDoc_ColorSurf);
    TDF_Label root = shapes->NewShape();
    const Quantity_Color paints[2] = {rgb(1.0, 0.0, 0.0), rgb(0.0, 0.0, 1.0)};
    for (int i = 0; i < 2; ++i) {
        TDF_Label sub = shapes->NewShape();
        shapes->AddComponent(sub, part, TopLoc_Location());
        colours->SetColor(
            shapes->AddComponent(root, sub, TopLoc_Location(translation(2.0 * i, 0, 0))), paints[i],
            XCAFDoc_ColorSurf);
    }
    shapes->UpdateAssemblies();

    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(doc, ModelReader::Options(), model, error))
        << error;
    EXPECT_EQ(model.instanceCount(), 2u);
    ASSERT_EQ(model.parts.size(), 1u) << "no face takes the assemblies' colours: one part";
    ASSERT_EQ(model.materials.size(), 1u);
    EXPECT_TRUE(hasColour(model.materials[0], 0.0f, 1.0f, 1.0f));
}

TEST(XcafImporterTest, OptionsControlEdgesAndDeflection) {
    ModelReader::Options coarse;
    coarse.edges = false;
    coarse.relativeDeflection = 0.01;
    ModelReader::Options fine;
    fine.relativeDeflection = 0.0002;
    fine.angularDeflection = 0.1;
    ModelData a, b;
    std::string error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(makeAssembly(), coarse, a, error)) << error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(makeAssembly(), fine, b, error)) << error;
    for (const auto& part : a.parts)
        EXPECT_EQ(part.edges.stripCount(), 0u);
    const auto& coarseBolt = a.parts[static_cast<std::size_t>(findPart(a, L"Bolt"))];
    const auto& fineBolt = b.parts[static_cast<std::size_t>(findPart(b, L"Bolt"))];
    EXPECT_GT(partTriangles(fineBolt), 2 * partTriangles(coarseBolt));
    EXPECT_GT(fineBolt.edges.points.size(), 3 * 16u) << "circles finely discretised";
}

TEST(XcafImporterTest, DegeneratedEdgesAndUnits) {
    Handle(TDocStd_Document) doc = newDocument();
    XCAFDoc_DocumentTool::SetLengthUnit(doc, 0.0254);
    XCAFDoc_DocumentTool::ShapeTool(doc->Main())
        ->AddShape(BRepPrimAPI_MakeSphere(5.0).Shape(), false);
    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(doc, ModelReader::Options(), model, error))
        << error;
    expectWellFormed(model);
    ASSERT_EQ(model.parts.size(), 1u);
    // A sphere's edges: the seam, and two degenerated ones at the poles that are left out.
    EXPECT_EQ(model.parts[0].edges.stripCount(), 1u);
    EXPECT_EQ(model.lengthUnit, L"in");
    // Normals from the surface: on a sphere, along the radius.
    for (const auto& mesh : model.parts[0].meshes)
        for (std::size_t v = 0; v < mesh.vertices.size(); ++v)
            ASSERT_GT(mesh.normals[v].dot(mesh.vertices[v].normalized()), 0.99f);
}

TEST(XcafImporterTest, NullDocumentIsAnError) {
    ModelData model;
    std::string error;
    EXPECT_FALSE(qrnviewer::XcafImporter::import(Handle(TDocStd_Document)(), ModelReader::Options(),
                                                 model, error));
    EXPECT_FALSE(error.empty());
}

TEST(ModelReaderTest, StepRoundTrip) {
    TempDir dir;
    const std::string path = dir.file("ASSEMBLY.STP"); // extensions in any case
    ASSERT_TRUE(writeStep(makeAssembly(), path));
    ModelData model;
    std::string error;
    RecordingStatus status;
    testing::internal::CaptureStdout();
    const bool ok = ModelReader::read(path, model, error, &status);
    const std::string chatter = testing::internal::GetCapturedStdout();
    ASSERT_TRUE(ok) << error;
    EXPECT_TRUE(chatter.empty()) << "the readers printed: " << chatter.substr(0, 500);
    expectAssembly(model);

    // Progress: reading, then meshing, each task ending at 100.
    std::set<std::wstring> tasks;
    int lastMeshing = -1;
    for (const auto& p : status.progress) {
        tasks.insert(p.first);
        EXPECT_GE(p.second, 0);
        EXPECT_LE(p.second, 100);
        if (p.first == L"meshing")
            lastMeshing = p.second;
    }
    EXPECT_TRUE(tasks.count(L"reading"));
    EXPECT_TRUE(tasks.count(L"meshing"));
    EXPECT_EQ(lastMeshing, 100);
    EXPECT_GE(status.ends, 2);
}

TEST(ModelReaderTest, IgesRoundTrip) {
    TempDir dir;
    const std::string path = dir.file("assembly.igs");
    IGESCAFControl_Writer writer;
    writer.SetColorMode(true);
    writer.SetNameMode(true);
    ASSERT_TRUE(writer.Transfer(makeAssembly()));
    ASSERT_TRUE(writer.Write(path.c_str()));
    ModelData model;
    std::string error;
    ASSERT_TRUE(ModelReader::read(path, model, error)) << error;
    expectWellFormed(model);
    // IGES keeps no assembly structure; geometry and colours come through.
    EXPECT_GT(model.triangleCount(), 3 * 20u + 24u);
    for (const auto& colour :
         {Vec3(1, 0, 0), Vec3(0, 1, 0), Vec3(0, 0, 1), Vec3(0.2f, 0.4f, 0.8f)}) {
        bool found = false;
        for (const auto& m : model.materials)
            found = found || hasColour(m, colour[0], colour[1], colour[2]);
        EXPECT_TRUE(found) << colour[0] << " " << colour[1] << " " << colour[2];
    }
    const qrnsg::BBox b = model.bbox();
    EXPECT_TRUE(near(b.min(), Vec3(-3.0f, -3.0f, 0.0f), 0.05f));
    EXPECT_TRUE(near(b.max(), Vec3(35.0f, 50.0f, 25.0f), 0.05f));
}

TEST(ModelReaderTest, BrepKeepsSharedSolidsShared) {
    TempDir dir;
    TopoDS_Shape box = BRepPrimAPI_MakeBox(4.0, 5.0, 6.0).Shape();
    TopoDS_Compound compound;
    BRep_Builder builder;
    builder.MakeCompound(compound);
    builder.Add(compound, box);
    builder.Add(compound, box.Moved(TopLoc_Location(translation(10.0, 0.0, 0.0))));
    const std::string path = dir.file("two_boxes.brep");
    ASSERT_TRUE(BRepTools::Write(compound, path.c_str()));

    ModelData model;
    std::string error;
    ASSERT_TRUE(ModelReader::read(path, model, error)) << error;
    expectWellFormed(model);
    EXPECT_EQ(model.instanceCount(), 2u);
    ASSERT_EQ(model.parts.size(), 1u);
    EXPECT_EQ(model.triangleCount(), 2 * 12u);
    EXPECT_EQ(model.parts[0].edges.stripCount(), 12u);
    EXPECT_EQ(model.nodes[0].name, L"two_boxes");
    expectOutward(model.parts[0], Vec3(2.0f, 2.5f, 3.0f));
    const qrnsg::BBox b = model.bbox();
    EXPECT_TRUE(near(b.max(), Vec3(14.0f, 5.0f, 6.0f)));
}

// A unit cube as a bare triangulation: 8 nodes, 12 triangles.
Handle(Poly_Triangulation) cubeMesh() {
    Handle(Poly_Triangulation) tri = new Poly_Triangulation(8, 12, false);
    for (int i = 0; i < 8; ++i)
        tri->SetNode(i + 1, gp_Pnt(i & 1, (i >> 1) & 1, (i >> 2) & 1));
    const int faces[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                             {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    int t = 1;
    for (const auto& f : faces) {
        tri->SetTriangle(t++, Poly_Triangle(f[0] + 1, f[1] + 1, f[2] + 1));
        tri->SetTriangle(t++, Poly_Triangle(f[0] + 1, f[2] + 1, f[3] + 1));
    }
    return tri;
}

void expectCube(const ModelData& model) {
    expectWellFormed(model);
    ASSERT_EQ(model.parts.size(), 1u);
    ASSERT_EQ(model.parts[0].meshes.size(), 1u);
    EXPECT_EQ(model.instanceCount(), 1u);
    const auto& mesh = model.parts[0].meshes[0];
    EXPECT_EQ(mesh.triangleCount(), 12u);
    // Flat sides: each corner once per side, each normal along an axis.
    EXPECT_EQ(mesh.vertices.size(), 24u);
    for (const auto& n : mesh.normals)
        EXPECT_NEAR(std::max({std::abs(n[0]), std::abs(n[1]), std::abs(n[2])}), 1.0f, 1e-4f);
    expectOutward(model.parts[0], Vec3(0.5f, 0.5f, 0.5f));
}

TEST(ModelReaderTest, StlBinaryAndAscii) {
    TempDir dir;
    const std::string binary = dir.file("cube_bin.stl");
    const std::string ascii = dir.file("cube_ascii.STL");
    ASSERT_TRUE(RWStl::WriteBinary(cubeMesh(), OSD_Path(binary.c_str())));
    ASSERT_TRUE(RWStl::WriteAscii(cubeMesh(), OSD_Path(ascii.c_str())));
    for (const auto& path : {binary, ascii}) {
        SCOPED_TRACE(path);
        ModelData model;
        std::string error;
        RecordingStatus status;
        ASSERT_TRUE(ModelReader::read(path, model, error, &status)) << error;
        expectCube(model);
        EXPECT_EQ(model.parts[0].edges.stripCount(), 0u);
        bool reading = false;
        for (const auto& p : status.progress)
            reading = reading || p.first == L"reading";
        EXPECT_TRUE(reading);
    }
}

TEST(ModelReaderTest, GltfRoundTrip) {
    TempDir dir;
    Handle(TDocStd_Document) doc = makeAssembly();
    meshDocument(doc);
    ModelData original;
    std::string error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(doc, ModelReader::Options(), original, error));
    for (bool binary : {true, false}) {
        const std::string path = dir.file(binary ? "assembly.glb" : "assembly.gltf");
        RWGltf_CafWriter writer(path.c_str(), binary);
        // From millimetres and Z up, as the viewer's models are.
        writer.ChangeCoordinateSystemConverter().SetInputLengthUnit(0.001);
        writer.ChangeCoordinateSystemConverter().SetInputCoordinateSystem(
            RWMesh_CoordinateSystem_Zup);
        ASSERT_TRUE(
            writer.Perform(doc, TColStd_IndexedDataMapOfStringString(), Message_ProgressRange()));
        ModelData model;
        ASSERT_TRUE(ModelReader::read(path, model, error)) << error;
        expectWellFormed(model);
        // Triangles as written, used as they are, not meshed again.
        EXPECT_EQ(model.triangleCount(), original.triangleCount());
        EXPECT_EQ(model.instanceCount(), 5u);
        EXPECT_EQ(model.parts.size(), 5u); // Open CASCADE's writer gives each instance a mesh
        EXPECT_TRUE(findPart(model, GEAR_NAME) >= 0 || findNode(model, GEAR_NAME) >= 0);
        // Colours and alpha kept; metres and Y-up undone.
        bool transparent = false;
        for (const auto& m : model.materials)
            transparent = transparent || std::abs(m.transparency - 0.75f) < 0.02f;
        EXPECT_TRUE(transparent);
        const qrnsg::BBox b = model.bbox(), o = original.bbox();
        EXPECT_TRUE(near(b.min(), o.min(), 0.01f))
            << b.min()[0] << " " << b.min()[1] << " " << b.min()[2] << " vs " << o.min()[0] << " "
            << o.min()[1] << " " << o.min()[2];
        EXPECT_TRUE(near(b.max(), o.max(), 0.01f))
            << b.max()[0] << " " << b.max()[1] << " " << b.max()[2] << " vs " << o.max()[0] << " "
            << o.max()[1] << " " << o.max()[2];
    }
}

TEST(ModelReaderTest, ObjRoundTrip) {
    TempDir dir;
    Handle(TDocStd_Document) doc = makeAssembly();
    meshDocument(doc);
    ModelData original;
    std::string error;
    ASSERT_TRUE(qrnviewer::XcafImporter::import(doc, ModelReader::Options(), original, error));
    const std::string path = dir.file("assembly.obj");
    RWObj_CafWriter writer(path.c_str());
    ASSERT_TRUE(
        writer.Perform(doc, TColStd_IndexedDataMapOfStringString(), Message_ProgressRange()));
    ModelData model;
    ASSERT_TRUE(ModelReader::read(path, model, error)) << error;
    expectWellFormed(model);
    EXPECT_EQ(model.triangleCount(), original.triangleCount());
    EXPECT_GE(model.materials.size(), 3u);
}

// --- bad input ---------------------------------------------------------------------------

// A failed read says what went wrong with which file, and leaves no half-read model behind.
void expectRefused(const std::string& path, const std::string& expected) {
    ModelData model;
    model.nodes.resize(3);
    std::string error;
    testing::internal::CaptureStdout();
    const bool ok = ModelReader::read(path, model, error);
    const std::string chatter = testing::internal::GetCapturedStdout();
    EXPECT_FALSE(ok);
    EXPECT_TRUE(chatter.empty()) << "printed: " << chatter.substr(0, 300);
    EXPECT_NE(error.find(path), std::string::npos) << error;
    EXPECT_NE(error.find(expected), std::string::npos) << error;
    EXPECT_EQ(error.find('\n'), std::string::npos) << "one line: " << error;
    EXPECT_TRUE(model.nodes.empty());
    EXPECT_TRUE(model.parts.empty());
}

TEST(ModelReaderTest, MissingFile) {
    TempDir dir;
    expectRefused(dir.file("nothing.step"), "cannot open");
}

TEST(ModelReaderTest, Directory) {
    TempDir dir;
    fs::create_directories(dir.file("folder.step"));
    expectRefused(dir.file("folder.step"), "directory");
}

TEST(ModelReaderTest, UnknownExtension) {
    TempDir dir;
    const std::string path = dir.write("model.xyz", "hello");
    expectRefused(path, "unknown file type '.xyz'");
    ModelData model;
    std::string error;
    EXPECT_FALSE(ModelReader::read(path, model, error));
    for (const char* known :
         {".step", ".stp", ".iges", ".igs", ".brep", ".gltf", ".glb", ".obj", ".stl"})
        EXPECT_NE(error.find(known), std::string::npos) << known;
    expectRefused(dir.write("README", "hello"), "no file extension");
}

TEST(ModelReaderTest, TextFilesWithCadExtensions) {
    TempDir dir;
    const std::string text = "This is not a CAD model.\nJust some text.\n";
    expectRefused(dir.write("notes.step", text), "not a STEP file");
    expectRefused(dir.write("notes.igs", text), "not an IGES file");
    expectRefused(dir.write("notes.glb", text), "not a glTF file");
    expectRefused(dir.write("notes.brep", text), "not a BREP file");
    expectRefused(dir.write("damaged.brep", "DBRep_DrawableShape\n\nCASCADE Topology V3, (c) Open "
                                            "Cascade\nLocations 1\n1\n  1 0 0 banana\n"),
                  "cannot read");
    expectRefused(dir.write("notes.stl", text), "cannot read");
    expectRefused(dir.write("notes.obj", text), "no geometry");
    expectRefused(dir.write("empty.stl", ""), "is empty");
}

TEST(ModelReaderTest, DamagedStep) {
    TempDir dir;
    const std::string whole = dir.file("whole.step");
    ASSERT_TRUE(writeStep(makeAssembly(), whole));
    std::ifstream in(whole, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(in)),
                              std::istreambuf_iterator<char>());
    expectRefused(dir.write("half.step", content.substr(0, content.size() / 2)), "truncated");

    // Header and end in place, nonsense between.
    expectRefused(dir.write("nonsense.step", "ISO-10303-21;\nHEADER;\nthis is (not) STEP;;\n"
                                             "#1=#2=FOO(;\nEND-ISO-10303-21;\n"),
                  "cannot read");
    // The data section kept but the geometry cut out: parses, transfers nothing.
    const auto data = content.find("DATA;");
    ASSERT_NE(data, std::string::npos);
    expectRefused(
        dir.write("hollow.step", content.substr(0, data) + "DATA;\nENDSEC;\nEND-ISO-10303-21;\n"),
        "no geometry");
}

TEST(ModelReaderTest, ReaderComplaintsGoToTheStatus) {
    TempDir dir;
    const std::string path =
        dir.write("bad_vertex.stl", "solid x\n facet normal 0 0 1\n  outer loop\n"
                                    "   vertex a b c\n   vertex 1 0 0\n"
                                    "   vertex 0 1 0\n  endloop\n endfacet\n"
                                    "endsolid x\n");
    ModelData model;
    std::string error;
    RecordingStatus status;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(ModelReader::read(path, model, error, &status));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    bool told = false;
    for (const auto& m : status.messages)
        told = told || m.find(L"vertex") != std::wstring::npos;
    EXPECT_TRUE(told) << "the reader's own complaint reaches the status";
}

#ifndef _WIN32
// Open CASCADE's signal handlers and message printers are the reader's business only: what the
// process had before a read, it has after.
TEST(ModelReaderTest, SignalHandlersAndPrintersAreRestored) {
    struct sigaction mine = {}, before = {}, after = {};
    mine.sa_handler = +[](int) {};
    sigaction(SIGSEGV, &mine, &before);
    const int printers = Message::DefaultMessenger()->Printers().Length();
    TempDir dir;
    const std::string good = dir.file("good.step");
    ASSERT_TRUE(writeStep(makeAssembly(), good));
    ModelData model;
    std::string error;
    EXPECT_TRUE(ModelReader::read(good, model, error)) << error;
    EXPECT_FALSE(ModelReader::read(dir.write("bad.step", "ISO-10303-21;\nEND-ISO-10303-21;\n"),
                                   model, error));
    sigaction(SIGSEGV, nullptr, &after);
    EXPECT_EQ(after.sa_handler, mine.sa_handler);
    EXPECT_EQ(Message::DefaultMessenger()->Printers().Length(), printers);
    sigaction(SIGSEGV, &before, nullptr);
}
#endif

// Files damaged in many ways: each one loads or is refused with a message naming it.
TEST(ModelReaderTest, MutatedStepNeverCrashes) {
    TempDir dir;
    const std::string whole = dir.file("whole.step");
    ASSERT_TRUE(writeStep(makeAssembly(), whole));
    std::ifstream in(whole, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(in)),
                              std::istreambuf_iterator<char>());
    const std::pair<const char*, const char*> swaps[] = {
        {"VERTEX_POINT", "EDGE_CURVE"},
        {"ADVANCED_FACE", "FACE_BOUND"},
        {"CARTESIAN_POINT", "DIRECTION"},
        {"CIRCLE", "LINE"},
        {"EDGE_LOOP", "ORIENTED_EDGE"},
        {"PLANE", "CYLINDRICAL_SURFACE"},
        {"#1", "#99999"},
        {"#2", "#3"},
        {",#", ",$"},
        {"MANIFOLD_SOLID_BREP", "ADVANCED_FACE"},
        {"(#", "(#1"},
        {".T.", ".F."},
        {"COLOUR_RGB", "DRAUGHTING_PRE_DEFINED_COLOUR"},
        {"'", "\""}};
    int i = 0;
    for (const auto& swap : swaps) {
        std::string mutated = content;
        const std::string from = swap.first, to = swap.second;
        for (auto pos = mutated.find(from, mutated.find("DATA;")); pos != std::string::npos;
             pos = mutated.find(from, pos + to.size()))
            mutated.replace(pos, from.size(), to);
        const std::string path = dir.write("mutated" + std::to_string(i++) + ".step", mutated);
        ModelData model;
        std::string error;
        if (ModelReader::read(path, model, error)) {
            EXPECT_GT(model.triangleCount(), 0u) << from;
            expectWellFormed(model);
        } else {
            EXPECT_NE(error.find(path), std::string::npos) << from << ": " << error;
            EXPECT_TRUE(model.nodes.empty());
        }
    }
}

#ifndef _WIN32
// The reader's crash protection rests on Open CASCADE turning a signal into an exception at
// the nearest OCC_CATCH_SIGNALS of the thread, again and again.
TEST(ModelReaderTest, SignalsBecomeExceptions) {
    struct sigaction before = {};
    sigaction(SIGSEGV, nullptr, &before);
    OSD::SetSignal(OSD_SignalMode_Set, Standard_False);
    volatile int caught = 0;
    for (int i = 0; i < 2; ++i) {
        try {
            OCC_CATCH_SIGNALS
            std::raise(SIGSEGV);
        } catch (const Standard_Failure&) {
            ++caught;
        }
    }
    sigaction(SIGSEGV, &before, nullptr);
    EXPECT_EQ(caught, 2);
}
#endif

// --- normals for bare triangles ----------------------------------------------------------

TEST(MeshNormalsTest, CreasesSplitVerticesAndSmoothSurfacesShareThem) {
    // Two triangles folded by 90 degrees along a shared edge: split.
    std::vector<Vec3> points{Vec3(0, 0, 0), Vec3(1, 0, 0), Vec3(0, 1, 0), Vec3(0, 0, 1)};
    std::vector<unsigned int> folded{0, 1, 2, 1, 0, 3};
    qrnsg::Mesh mesh;
    qrnviewer::MeshNormals::appendWithCreases(points, folded, mesh);
    EXPECT_EQ(mesh.vertices.size(), 6u);
    ASSERT_EQ(mesh.indices.size(), 6u);
    for (int k = 0; k < 3; ++k) {
        EXPECT_TRUE(near(mesh.normals[mesh.indices[static_cast<std::size_t>(k)]], Vec3(0, 0, 1)));
        EXPECT_TRUE(
            near(mesh.normals[mesh.indices[static_cast<std::size_t>(k + 3)]], Vec3(0, 1, 0)));
    }
    // Folded by 10 degrees: shared, normals in between.
    points[3] = Vec3(0.5f, -1.0f, std::tan(0.1745f));
    qrnsg::Mesh gentle;
    qrnviewer::MeshNormals::appendWithCreases(points, folded, gentle);
    EXPECT_EQ(gentle.vertices.size(), 4u);
    // Appending keeps what the mesh held.
    const std::size_t before = gentle.vertices.size();
    qrnviewer::MeshNormals::appendWithCreases(points, folded, gentle);
    EXPECT_EQ(gentle.vertices.size(), 2 * before);
    EXPECT_GE(gentle.indices.back(), before);
    // Degenerate and out-of-range triangles are skipped, not a crash.
    qrnsg::Mesh junk;
    qrnviewer::MeshNormals::appendWithCreases(points, {0, 0, 0, 1, 2, 9}, junk);
    EXPECT_EQ(junk.indices.size(), 3u);
    const auto smooth = qrnviewer::MeshNormals::smooth(points, {0, 1, 2});
    EXPECT_TRUE(near(smooth[0], Vec3(0, 0, 1)));
    EXPECT_TRUE(near(smooth[3], Vec3(0, 0, 1))) << "an unused vertex gets a unit normal";
}

// --- the shared public models ------------------------------------------------------------

#ifndef QRN_SHARED_MODELS
#error "QRN_SHARED_MODELS must name the shared models folder"
#endif

std::string sharedModel(const std::string& name) {
    return (fs::path(QRN_SHARED_MODELS) / name).string();
}

#define REQUIRE_SHARED_MODELS()                                                                    \
    do {                                                                                           \
        if (!fs::is_directory(QRN_SHARED_MODELS)) {                                                \
            std::fprintf(stderr, "\n*** SKIPPED: shared models folder %s is missing ***\n\n",      \
                         QRN_SHARED_MODELS);                                                       \
            GTEST_SKIP() << "shared models folder " << QRN_SHARED_MODELS << " is missing";         \
        }                                                                                          \
    } while (0)

// Reads a shared model, timing it.
bool readShared(const std::string& name, ModelData& model, std::string& error) {
    const auto start = std::chrono::steady_clock::now();
    const bool ok = ModelReader::read(sharedModel(name), model, error);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("[ loaded   ] %s in %.2f s: %zu nodes, %zu instances, %zu parts, %zu meshes, "
                "%zu materials, %zu triangles\n",
                name.c_str(), seconds, model.nodes.size(), model.instanceCount(),
                model.parts.size(), meshCount(model), model.materials.size(),
                model.triangleCount());
    return ok;
}

int depthOf(const ModelData& model) {
    int deepest = 0;
    for (std::size_t n = 0; n < model.nodes.size(); ++n) {
        int d = 0;
        for (int p = model.nodes[n].parent; p >= 0;
             p = model.nodes[static_cast<std::size_t>(p)].parent)
            ++d;
        deepest = std::max(deepest, d);
    }
    return deepest;
}

TEST(ImportSharedModelsTest, As1Assembly) {
    REQUIRE_SHARED_MODELS();
    ModelData model;
    std::string error;
    ASSERT_TRUE(readShared("as1-oc-214-mat.stp", model, error)) << error;
    expectWellFormed(model);
    // 27 instances below the root, 18 of them parts, 3 levels deep; 5 colours.
    EXPECT_EQ(model.nodes.size(), 28u);
    EXPECT_EQ(model.instanceCount(), 18u);
    EXPECT_EQ(depthOf(model), 3);
    EXPECT_LT(model.parts.size(), model.instanceCount()) << "shared parts held once";
    EXPECT_EQ(model.materials.size(), 5u);
    EXPECT_GT(model.triangleCount(), 2000u);
    EXPECT_LT(model.triangleCount(), 20000u);
    EXPECT_EQ(model.lengthUnit, L"mm");
    // Instances named as the file names them; 8 nuts and 6 bolts, each part held once.
    EXPECT_GE(findNode(model, L"rod-assembly_1"), 0);
    EXPECT_GE(findNode(model, L"l-bracket-assembly_2"), 0);
    std::map<std::wstring, std::size_t> uses;
    for (const auto& node : model.nodes)
        if (node.part >= 0)
            ++uses[model.parts[static_cast<std::size_t>(node.part)].name];
    EXPECT_EQ(uses, (std::map<std::wstring, std::size_t>{
                        {L"nut", 8}, {L"bolt", 6}, {L"l-bracket", 2}, {L"rod", 1}, {L"plate", 1}}));
}

TEST(ImportSharedModelsTest, PumpAssembly) {
    REQUIRE_SHARED_MODELS();
    ModelData model;
    std::string error;
    ASSERT_TRUE(readShared("trj4_pm2-ec-214.stp", model, error)) << error;
    expectWellFormed(model);
    EXPECT_EQ(model.nodes.size(), 40u); // the root and 39 instances
    EXPECT_EQ(model.nodes[0].name, L"Rotor.Assembly 1");
    // Its instances are unnamed (bare numbers): they take their product's name.
    EXPECT_EQ(model.nodes[1].name, L"Rotor.Assembly 1.1");
    EXPECT_EQ(depthOf(model), 4);
    EXPECT_EQ(model.materials.size(), 7u);
    EXPECT_GE(model.triangleCount(), 43000u);
    EXPECT_LE(model.triangleCount(), 75000u);

    // The same pump meshed and written as STL and as glTF (metres, Y up) comes in at the same
    // place and size.
    const qrnsg::BBox box = model.bbox();
    const float size = (box.max() - box.min()).length();
    EXPECT_GT(size, 100.0f);
    for (const char* name : {"pm2_tess_300k.stl", "pm2_tess_fine.glb"}) {
        ModelData other;
        ASSERT_TRUE(readShared(name, other, error)) << error;
        const qrnsg::BBox b = other.bbox();
        EXPECT_TRUE(near(b.min(), box.min(), size * 0.01f)) << name;
        EXPECT_TRUE(near(b.max(), box.max(), size * 0.01f)) << name;
    }
}

// Facets in an STL file, and how many of them have two corners at the same point: those
// carry no area, and Open CASCADE's reader drops them.
struct StlFacets {
    std::size_t total = 0, degenerate = 0;
};

StlFacets countFacets(const std::string& path) {
    StlFacets out;
    std::ifstream in(path, std::ios::binary);
    const std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    auto degenerate = [](const float* v) {
        auto same = [&](int a, int b) {
            return v[a * 3] == v[b * 3] && v[a * 3 + 1] == v[b * 3 + 1] &&
                   v[a * 3 + 2] == v[b * 3 + 2];
        };
        return same(0, 1) || same(1, 2) || same(0, 2);
    };
    if (data.compare(0, 5, "solid") == 0 && data.find("facet") != std::string::npos) {
        std::istringstream text(data);
        std::string word;
        float v[9];
        int corner = 0;
        while (text >> word) {
            if (word == "facet") {
                ++out.total;
                corner = 0;
            } else if (word == "vertex" && corner < 3) {
                text >> v[corner * 3] >> v[corner * 3 + 1] >> v[corner * 3 + 2];
                if (++corner == 3 && degenerate(v))
                    ++out.degenerate;
            }
        }
        return out;
    }
    std::uint32_t n = 0;
    std::memcpy(&n, data.data() + 80, 4);
    for (std::size_t i = 0; i < n && 84 + 50 * (i + 1) <= data.size(); ++i) {
        float v[12];
        std::memcpy(v, data.data() + 84 + 50 * i, sizeof v);
        ++out.total;
        out.degenerate += degenerate(v + 3) ? 1 : 0;
    }
    return out;
}

TEST(ImportSharedModelsTest, AsciiStl) {
    REQUIRE_SHARED_MODELS();
    ModelData model;
    std::string error;
    ASSERT_TRUE(readShared("motor.stl", model, error)) << error;
    expectWellFormed(model);
    const StlFacets facets = countFacets(sharedModel("motor.stl"));
    EXPECT_EQ(facets.total, 13506u);
    EXPECT_EQ(model.triangleCount(), facets.total - facets.degenerate);
    ASSERT_EQ(model.parts.size(), 1u);
    EXPECT_EQ(model.parts[0].meshes.size(), 1u);
}

TEST(ImportSharedModelsTest, BinaryStl) {
    REQUIRE_SHARED_MODELS();
    ModelData model;
    std::string error;
    ASSERT_TRUE(readShared("pm2_tess_300k.stl", model, error)) << error;
    const StlFacets facets = countFacets(sharedModel("pm2_tess_300k.stl"));
    EXPECT_EQ(facets.total, 290083u);
    EXPECT_EQ(model.triangleCount(), facets.total - facets.degenerate);
    ASSERT_EQ(model.parts.size(), 1u);
    EXPECT_EQ(model.parts[0].meshes.size(), 1u);
}

TEST(ImportSharedModelsTest, Glb) {
    REQUIRE_SHARED_MODELS();
    ModelData model;
    std::string error;
    ASSERT_TRUE(readShared("pm2_tess_fine.glb", model, error)) << error;
    expectWellFormed(model);
    EXPECT_EQ(model.triangleCount(), 772133u);
    EXPECT_LT(model.parts.size(), model.instanceCount()) << "meshes the file shares, held once";
    EXPECT_EQ(model.materials.size(), 7u);
    EXPECT_EQ(depthOf(model), 4);
}

TEST(ImportSharedModelsTest, Ap242WithPmi) {
    REQUIRE_SHARED_MODELS();
    for (const char* name : {"nist_ctc_01_asme1_ap242-e1.stp", "bug32745_pmi1.stp"}) {
        ModelData model;
        std::string error;
        ASSERT_TRUE(readShared(name, model, error)) << error;
        expectWellFormed(model);
        EXPECT_GT(model.triangleCount(), 100u) << name;
        EXPECT_GT(model.parts[0].edges.stripCount(), 10u) << name;
    }
}

TEST(ImportSharedModelsTest, TessellatedOnlyFileIsRefused) {
    REQUIRE_SHARED_MODELS();
    expectRefused(sharedModel("nist_ftc_08_asme1_ap242-2.stp"),
                  "contains no geometry the viewer can show");
}

} // namespace
