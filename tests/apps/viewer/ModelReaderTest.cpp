// Model import through Open CASCADE: models built here, written in the formats the viewer reads
// and read back; bad input of every kind; the shared public models.

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
#include <Poly_Triangulation.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <RWGltf_CafWriter.hxx>
#include <RWObj_CafWriter.hxx>
#include <RWStl.hxx>
#include <STEPCAFControl_Writer.hxx>
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

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

namespace {

namespace fs = std::filesystem;
using qrnmath::Vec3;
using qrnviewer::ModelData;
using qrnviewer::ModelReader;

const wchar_t* const GEAR_NAME = L"Zahnrad Ø12 – 歯車";

// A folder of its own per test, removed afterwards.
struct TempDir {
    fs::path path = fs::temp_directory_path() /
                    ("qrn_import_" +
                     std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    TempDir() { fs::create_directories(path); }
    ~TempDir() { fs::remove_all(path); }
    std::string file(const std::string& name) const { return (path / name).string(); }
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(file(name), std::ios::binary) << content;
        return file(name);
    }
};

std::string readAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

struct Doc {
    Doc() {
        XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", doc);
        shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
        colours = XCAFDoc_DocumentTool::ColorTool(doc->Main());
    }
    Handle(TDocStd_Document) doc;
    Handle(XCAFDoc_ShapeTool) shapes;
    Handle(XCAFDoc_ColorTool) colours;
};

TopLoc_Location at(double x, double y, double z) {
    gp_Trsf t;
    t.SetTranslation(gp_Vec(x, y, z));
    return TopLoc_Location(t);
}

Quantity_Color rgb(double r, double g, double b) {
    return Quantity_Color(r, g, b, Quantity_TOC_sRGB);
}

// Root > Row > 3 x Bolt (red cylinder), Root > gear (green box, its top face blue, a
// non-ASCII name), Root > Glass (a transparent box).
Handle(TDocStd_Document) makeAssembly() {
    Doc d;
    TDF_Label bolt = d.shapes->AddShape(BRepPrimAPI_MakeCylinder(3.0, 20.0).Shape(), false);
    TDataStd_Name::Set(bolt, "Bolt");
    d.colours->SetColor(bolt, rgb(1.0, 0.0, 0.0), XCAFDoc_ColorSurf);

    TopoDS_Shape gearShape = BRepPrimAPI_MakeBox(gp_Pnt(0.0, 40.0, 0.0), 10.0, 10.0, 10.0).Shape();
    TDF_Label gear = d.shapes->AddShape(gearShape, false);
    TDataStd_Name::Set(gear, TCollection_ExtendedString(GEAR_NAME));
    d.colours->SetColor(gear, rgb(0.0, 1.0, 0.0), XCAFDoc_ColorSurf);
    for (TopExp_Explorer f(gearShape, TopAbs_FACE); f.More(); f.Next()) {
        bool top = true; // all corners at z = 10
        for (TopExp_Explorer v(f.Current(), TopAbs_VERTEX); v.More(); v.Next())
            top = top && std::abs(BRep_Tool::Pnt(TopoDS::Vertex(v.Current())).Z() - 10.0) < 1e-9;
        if (top)
            d.colours->SetColor(d.shapes->AddSubShape(gear, f.Current()), rgb(0.0, 0.0, 1.0),
                                XCAFDoc_ColorSurf);
    }

    TDF_Label glass = d.shapes->AddShape(
        BRepPrimAPI_MakeBox(gp_Pnt(30.0, 40.0, 0.0), 5.0, 5.0, 5.0).Shape(), false);
    TDataStd_Name::Set(glass, "Glass");
    d.colours->SetColor(glass, Quantity_ColorRGBA(rgb(0.2, 0.4, 0.8), 0.25f), XCAFDoc_ColorSurf);

    TDF_Label row = d.shapes->NewShape();
    TDataStd_Name::Set(row, "Row");
    for (int i = 0; i < 3; ++i)
        d.shapes->AddComponent(row, bolt, at(15.0 * i, 0.0, 0.0));
    TDF_Label root = d.shapes->NewShape();
    TDataStd_Name::Set(root, "Root");
    d.shapes->AddComponent(root, row, at(0.0, 0.0, 5.0));
    d.shapes->AddComponent(root, gear, TopLoc_Location());
    d.shapes->AddComponent(root, glass, TopLoc_Location());
    d.shapes->UpdateAssemblies();
    return d.doc;
}

bool writeStep(const Handle(TDocStd_Document) & doc, const std::string& path) {
    STEPCAFControl_Writer writer;
    writer.SetColorMode(true);
    writer.SetNameMode(true);
    return writer.Transfer(doc, STEPControl_AsIs) && writer.Write(path.c_str()) == IFSelect_RetDone;
}

ModelData importDoc(const Handle(TDocStd_Document) & doc,
                    const ModelReader::Options& options = ModelReader::Options()) {
    ModelData model;
    std::string error;
    EXPECT_TRUE(qrnviewer::XcafImporter::import(doc, options, model, error)) << error;
    return model;
}

void expectWellFormed(const ModelData& model);

ModelData readFile(const std::string& path) {
    ModelData model;
    std::string error;
    EXPECT_TRUE(ModelReader::read(path, model, error)) << error;
    expectWellFormed(model);
    return model;
}

template <class T>
int findNamed(const std::vector<T>& list, const std::wstring& name) {
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i].name == name)
            return static_cast<int>(i);
    return -1;
}

const ModelData::Part& partNamed(const ModelData& model, const std::wstring& name) {
    const int i = findNamed(model.parts, name);
    if (i < 0)
        throw std::runtime_error("no part of that name");
    return model.parts[static_cast<std::size_t>(i)];
}

std::size_t partTriangles(const ModelData::Part& part) {
    std::size_t n = 0;
    for (const auto& m : part.meshes)
        n += m.triangleCount();
    return n;
}

bool near(const Vec3& a, const Vec3& b, float eps = 1e-3f) {
    return qrnmath::nearlyEqual(a, b, eps);
}

// Every mesh well formed: a unit normal per vertex, indices in range, parents first.
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
        EXPECT_LT(model.nodes[n].parent, static_cast<int>(n));
        EXPECT_LT(model.nodes[n].part, static_cast<int>(model.parts.size()));
    }
}

// On a convex solid every triangle faces away from the centre, by its winding and its normals.
void expectOutward(const ModelData::Part& part, const Vec3& centre) {
    std::size_t checked = 0;
    for (const auto& mesh : part.meshes)
        for (std::size_t t = 0; t < mesh.indices.size(); t += 3) {
            const Vec3& a = mesh.vertices[mesh.indices[t]];
            const Vec3& b = mesh.vertices[mesh.indices[t + 1]];
            const Vec3& c = mesh.vertices[mesh.indices[t + 2]];
            const Vec3 winding = qrnmath::cross(b - a, c - a);
            if (winding.length() < 1e-6f)
                continue;
            ASSERT_GT(winding.dot((a + b + c) / 3.0f - centre), 0.0f) << "wound inwards";
            for (std::size_t k = 0; k < 3; ++k)
                ASSERT_GT(mesh.normals[mesh.indices[t + k]].dot(winding.normalized()), 0.5f);
            ++checked;
        }
    EXPECT_GT(checked, 0u);
}

const qrnsg::MMaterial& materialOf(const ModelData& model, const ModelData::Part& part) {
    return model.materials[static_cast<std::size_t>(part.meshMaterials.at(0))];
}

bool hasColour(const qrnsg::MMaterial& m, float r, float g, float b) {
    return std::abs(m.diffuse[0] - r) < 0.01f && std::abs(m.diffuse[1] - g) < 0.01f &&
           std::abs(m.diffuse[2] - b) < 0.01f;
}

// Triangles of the part drawn in that colour.
std::size_t trianglesIn(const ModelData& model, const ModelData::Part& part, float r, float g,
                        float b) {
    std::size_t n = 0;
    for (std::size_t m = 0; m < part.meshes.size(); ++m)
        if (hasColour(model.materials[static_cast<std::size_t>(part.meshMaterials[m])], r, g, b))
            n += part.meshes[m].triangleCount();
    return n;
}

// What the generated assembly must come back as, from any format that keeps its structure.
void expectAssembly(const ModelData& model) {
    expectWellFormed(model);
    EXPECT_EQ(model.nodes.size(), 7u); // Root, Row, 3 bolts, gear, glass
    EXPECT_EQ(model.instanceCount(), 5u);
    ASSERT_EQ(model.parts.size(), 3u) << "the bolt is held once, not copied";
    EXPECT_EQ(model.lengthUnit, L"mm");
    ASSERT_GE(findNamed(model.parts, GEAR_NAME), 0) << "the non-ASCII name comes back exactly";
    const int bolt = findNamed(model.parts, L"Bolt");
    const auto& boltPart = partNamed(model, L"Bolt");
    const auto& gearPart = partNamed(model, GEAR_NAME);
    const auto& glassPart = partNamed(model, L"Glass");

    // Three instances of the one bolt, 15 apart along x, lifted with the row.
    std::set<int> xs;
    for (std::size_t n = 0; n < model.nodes.size(); ++n)
        if (model.nodes[n].part == bolt) {
            const auto w = model.worldTransform(static_cast<int>(n));
            EXPECT_NEAR(w[14], 5.0f, 1e-3f);
            xs.insert(static_cast<int>(std::lround(w[12])));
        }
    EXPECT_EQ(xs, (std::set<int>{0, 15, 30}));
    EXPECT_EQ(model.nodes.at(static_cast<std::size_t>(findNamed(model.nodes, L"Row"))).part, -1);
    EXPECT_EQ(model.nodes[0].name, L"Root");
    EXPECT_GT(partTriangles(boltPart), 20u);
    EXPECT_EQ(model.triangleCount(),
              3 * partTriangles(boltPart) + partTriangles(gearPart) + partTriangles(glassPart));

    // The bolt red; the gear green with its top face blue (two triangles); the glass see-through.
    EXPECT_EQ(trianglesIn(model, boltPart, 1, 0, 0), partTriangles(boltPart));
    EXPECT_FALSE(materialOf(model, boltPart).isTransparent());
    EXPECT_EQ(trianglesIn(model, gearPart, 0, 0, 1), 2u);
    EXPECT_EQ(trianglesIn(model, gearPart, 0, 1, 0), 10u);
    ASSERT_EQ(glassPart.meshes.size(), 1u);
    EXPECT_TRUE(hasColour(materialOf(model, glassPart), 0.2f, 0.4f, 0.8f));
    EXPECT_NEAR(materialOf(model, glassPart).transparency, 0.75f, 0.02f);
    EXPECT_EQ(model.materials.size(), 4u) << "red, green, blue, glass: each once";

    // Faces wound and lit outwards, reversed faces of the boxes included.
    expectOutward(gearPart, Vec3(5.0f, 45.0f, 5.0f));
    expectOutward(glassPart, Vec3(32.5f, 42.5f, 2.5f));
    expectOutward(boltPart, Vec3(0.0f, 0.0f, 10.0f));
    EXPECT_TRUE(near(model.bbox().min(), Vec3(-3.0f, -3.0f, 0.0f), 0.05f));
    EXPECT_TRUE(near(model.bbox().max(), Vec3(35.0f, 50.0f, 25.0f), 0.05f));
}

// Keeps what the importer reports.
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

// --- documents in memory -----------------------------------------------------------------

TEST(XcafImporterTest, AssemblyEdgesOptionsAndUnits) {
    const ModelData model = importDoc(makeAssembly());
    expectAssembly(model);
    // B-rep edges: a cylinder has two circles and a seam, a box twelve edges.
    EXPECT_EQ(partNamed(model, L"Bolt").edges.stripCount(), 3u);
    EXPECT_EQ(partNamed(model, GEAR_NAME).edges.stripCount(), 12u);

    ModelReader::Options coarse, fine;
    coarse.edges = false;
    coarse.relativeDeflection = 0.01;
    fine.relativeDeflection = 0.0002;
    fine.angularDeflection = 0.1;
    const ModelData a = importDoc(makeAssembly(), coarse), b = importDoc(makeAssembly(), fine);
    EXPECT_EQ(partNamed(a, L"Bolt").edges.stripCount(), 0u);
    EXPECT_GT(partTriangles(partNamed(b, L"Bolt")), 2 * partTriangles(partNamed(a, L"Bolt")));
    EXPECT_GT(partNamed(b, L"Bolt").edges.points.size(), 3 * 16u) << "circles finely cut";

    // A sphere in inches: its seam kept, the degenerated edges at the poles left out, normals
    // from the surface along the radius.
    Doc d;
    XCAFDoc_DocumentTool::SetLengthUnit(d.doc, 0.0254);
    d.shapes->AddShape(BRepPrimAPI_MakeSphere(5.0).Shape(), false);
    const ModelData sphere = importDoc(d.doc);
    ASSERT_EQ(sphere.parts.size(), 1u);
    EXPECT_EQ(sphere.parts[0].edges.stripCount(), 1u);
    EXPECT_EQ(sphere.lengthUnit, L"in");
    for (const auto& mesh : sphere.parts[0].meshes)
        for (std::size_t v = 0; v < mesh.vertices.size(); ++v)
            ASSERT_GT(mesh.normals[v].dot(mesh.vertices[v].normalized()), 0.99f);

    ModelData none;
    std::string error;
    EXPECT_FALSE(qrnviewer::XcafImporter::import(Handle(TDocStd_Document)(), ModelReader::Options(),
                                                 none, error));
    EXPECT_FALSE(error.empty());
}

// A part's own colour wins over its instance's, an instance's over its assembly's.
TEST(XcafImporterTest, ColourPrecedence) {
    {
        Doc d;
        TDF_Label plain = d.shapes->AddShape(BRepPrimAPI_MakeBox(1, 1, 1).Shape(), false);
        TDF_Label painted = d.shapes->AddShape(BRepPrimAPI_MakeBox(2, 1, 1).Shape(), false);
        d.colours->SetColor(painted, rgb(0, 0, 1), XCAFDoc_ColorSurf);
        TDF_Label sub = d.shapes->NewShape();
        TDataStd_Name::Set(sub, TCollection_ExtendedString(L"Sub \U0001D11E")); // beyond the BMP
        d.shapes->AddComponent(sub, plain, TopLoc_Location());
        d.shapes->AddComponent(sub, painted, at(5, 0, 0));
        TDF_Label root = d.shapes->NewShape();
        d.colours->SetColor(d.shapes->AddComponent(root, sub, TopLoc_Location()), rgb(1, 1, 0),
                            XCAFDoc_ColorSurf);
        d.shapes->UpdateAssemblies();
        const ModelData model = importDoc(d.doc);
        expectWellFormed(model);
        ASSERT_EQ(model.parts.size(), 2u);
        // The uncoloured part takes its assembly's colour, the painted one keeps its own.
        EXPECT_EQ(trianglesIn(model, model.parts[0], 1, 1, 0), partTriangles(model.parts[0]));
        EXPECT_EQ(trianglesIn(model, model.parts[1], 0, 0, 1), partTriangles(model.parts[1]));
        EXPECT_GE(findNamed(model.nodes, L"Sub \U0001D11E"), 0);
        for (const auto& node : model.nodes)
            EXPECT_FALSE(node.name.empty()) << "names generated where the document has none";
    }
    {
        // A green part: two plain instances share it; the red instance needs its own.
        Doc d;
        TDF_Label part = d.shapes->AddShape(BRepPrimAPI_MakeBox(1, 1, 1).Shape(), false);
        d.colours->SetColor(part, rgb(0, 1, 0), XCAFDoc_ColorSurf);
        TDF_Label root = d.shapes->NewShape();
        d.shapes->AddComponent(root, part, TopLoc_Location());
        d.shapes->AddComponent(root, part, at(3, 0, 0));
        d.colours->SetColor(d.shapes->AddComponent(root, part, at(6, 0, 0)), rgb(1, 0, 0),
                            XCAFDoc_ColorSurf);
        d.shapes->UpdateAssemblies();
        const ModelData model = importDoc(d.doc);
        EXPECT_EQ(model.instanceCount(), 3u);
        ASSERT_EQ(model.parts.size(), 2u);
        EXPECT_EQ(model.nodes[1].part, model.nodes[2].part);
        EXPECT_NE(model.nodes[1].part, model.nodes[3].part);
        EXPECT_TRUE(hasColour(
            materialOf(model, model.parts.at(static_cast<std::size_t>(model.nodes[1].part))), 0, 1,
            0));
        EXPECT_TRUE(
            hasColour(materialOf(model, model.parts[static_cast<std::size_t>(model.nodes[3].part)]),
                      1, 0, 0));
    }
    {
        // Every face coloured: the assemblies' colours reach no face, so the part stays shared.
        Doc d;
        TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 1, 1).Shape();
        TDF_Label part = d.shapes->AddShape(box, false);
        for (TopExp_Explorer f(box, TopAbs_FACE); f.More(); f.Next())
            d.colours->SetColor(d.shapes->AddSubShape(part, f.Current()), rgb(0, 1, 1),
                                XCAFDoc_ColorSurf);
        TDF_Label root = d.shapes->NewShape();
        for (int i = 0; i < 2; ++i) {
            TDF_Label sub = d.shapes->NewShape();
            d.shapes->AddComponent(sub, part, TopLoc_Location());
            d.colours->SetColor(d.shapes->AddComponent(root, sub, at(2.0 * i, 0, 0)),
                                i ? rgb(1, 0, 0) : rgb(0, 0, 1), XCAFDoc_ColorSurf);
        }
        d.shapes->UpdateAssemblies();
        const ModelData model = importDoc(d.doc);
        EXPECT_EQ(model.instanceCount(), 2u);
        ASSERT_EQ(model.parts.size(), 1u);
        ASSERT_EQ(model.materials.size(), 1u);
        EXPECT_TRUE(hasColour(model.materials[0], 0, 1, 1));
    }
}

// --- files written and read back ---------------------------------------------------------

TEST(ModelReaderTest, StepRoundTrip) {
    TempDir dir;
    const std::string path = dir.file("ASSEMBLY.STP"); // extensions in any case
    ASSERT_TRUE(writeStep(makeAssembly(), path));
    ModelData model;
    std::string error;
    RecordingStatus status;
    testing::internal::CaptureStdout();
    const bool ok = ModelReader::read(path, model, error, &status);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "the readers printed";
    ASSERT_TRUE(ok) << error;
    expectAssembly(model);
    // Progress: reading, then meshing up to 100.
    std::map<std::wstring, int> last;
    for (const auto& p : status.progress)
        last[p.first] = p.second;
    EXPECT_TRUE(last.count(L"reading"));
    EXPECT_EQ(last[L"meshing"], 100);
    EXPECT_GE(status.ends, 2);
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

TEST(ModelReaderTest, OtherFormatsRoundTrip) {
    TempDir dir;
    std::string error;
    {
        // IGES keeps no assembly structure; geometry and colours come through.
        const std::string path = dir.file("assembly.igs");
        IGESCAFControl_Writer writer;
        writer.SetColorMode(true);
        writer.SetNameMode(true);
        ASSERT_TRUE(writer.Transfer(makeAssembly()) && writer.Write(path.c_str()));
        const ModelData model = readFile(path);
        EXPECT_GT(model.triangleCount(), 3 * 20u + 24u);
        for (const auto& c :
             {Vec3(1, 0, 0), Vec3(0, 1, 0), Vec3(0, 0, 1), Vec3(0.2f, 0.4f, 0.8f)}) {
            bool found = false;
            for (const auto& m : model.materials)
                found = found || hasColour(m, c[0], c[1], c[2]);
            EXPECT_TRUE(found) << c[0] << " " << c[1] << " " << c[2];
        }
        EXPECT_TRUE(near(model.bbox().max(), Vec3(35.0f, 50.0f, 25.0f), 0.05f));
    }
    {
        // BREP: one solid placed twice is one part.
        TopoDS_Shape box = BRepPrimAPI_MakeBox(4.0, 5.0, 6.0).Shape();
        TopoDS_Compound compound;
        BRep_Builder builder;
        builder.MakeCompound(compound);
        builder.Add(compound, box);
        builder.Add(compound, box.Moved(at(10.0, 0.0, 0.0)));
        const std::string path = dir.file("two_boxes.brep");
        ASSERT_TRUE(BRepTools::Write(compound, path.c_str()));
        const ModelData model = readFile(path);
        EXPECT_EQ(model.instanceCount(), 2u);
        ASSERT_EQ(model.parts.size(), 1u);
        EXPECT_EQ(model.triangleCount(), 2 * 12u);
        EXPECT_EQ(model.parts[0].edges.stripCount(), 12u);
        EXPECT_EQ(model.nodes[0].name, L"two_boxes");
        expectOutward(model.parts[0], Vec3(2.0f, 2.5f, 3.0f));
        EXPECT_TRUE(near(model.bbox().max(), Vec3(14.0f, 5.0f, 6.0f)));
    }
    // STL, binary and ASCII: flat sides, each corner once per side, wound outwards.
    const std::string stls[] = {dir.file("cube_bin.stl"), dir.file("cube_ascii.STL")};
    ASSERT_TRUE(RWStl::WriteBinary(cubeMesh(), OSD_Path(stls[0].c_str())));
    ASSERT_TRUE(RWStl::WriteAscii(cubeMesh(), OSD_Path(stls[1].c_str())));
    for (const auto& path : stls) {
        SCOPED_TRACE(path);
        const ModelData model = readFile(path);
        ASSERT_EQ(model.parts.size(), 1u);
        ASSERT_EQ(model.parts[0].meshes.size(), 1u);
        EXPECT_EQ(model.parts[0].meshes[0].triangleCount(), 12u);
        EXPECT_EQ(model.parts[0].meshes[0].vertices.size(), 24u);
        EXPECT_EQ(model.parts[0].edges.stripCount(), 0u);
        expectOutward(model.parts[0], Vec3(0.5f, 0.5f, 0.5f));
    }
    // glTF and OBJ: triangles used as written, not meshed again.
    Handle(TDocStd_Document) doc = makeAssembly();
    TDF_LabelSequence roots;
    XCAFDoc_DocumentTool::ShapeTool(doc->Main())->GetFreeShapes(roots);
    for (TDF_LabelSequence::Iterator it(roots); it.More(); it.Next())
        BRepMesh_IncrementalMesh(XCAFDoc_ShapeTool::GetShape(it.Value()), 0.1);
    const ModelData original = importDoc(doc);
    for (const char* name : {"assembly.glb", "assembly.gltf", "assembly.obj"}) {
        SCOPED_TRACE(name);
        const std::string path = dir.file(name);
        const bool gltf = fs::path(path).extension() != ".obj";
        if (gltf) {
            RWGltf_CafWriter writer(path.c_str(), fs::path(path).extension() == ".glb");
            // From millimetres and Z up, as the viewer's models are.
            writer.ChangeCoordinateSystemConverter().SetInputLengthUnit(0.001);
            writer.ChangeCoordinateSystemConverter().SetInputCoordinateSystem(
                RWMesh_CoordinateSystem_Zup);
            ASSERT_TRUE(writer.Perform(doc, TColStd_IndexedDataMapOfStringString(),
                                       Message_ProgressRange()));
        } else {
            ASSERT_TRUE(
                RWObj_CafWriter(path.c_str())
                    .Perform(doc, TColStd_IndexedDataMapOfStringString(), Message_ProgressRange()));
        }
        const ModelData model = readFile(path);
        EXPECT_EQ(model.triangleCount(), original.triangleCount());
        if (!gltf) {
            EXPECT_GE(model.materials.size(), 3u);
            continue;
        }
        EXPECT_EQ(model.instanceCount(), 5u);
        EXPECT_EQ(model.parts.size(), 5u); // Open CASCADE's writer gives each instance a mesh
        EXPECT_TRUE(findNamed(model.parts, GEAR_NAME) >= 0 ||
                    findNamed(model.nodes, GEAR_NAME) >= 0);
        bool transparent = false;
        for (const auto& m : model.materials)
            transparent = transparent || std::abs(m.transparency - 0.75f) < 0.02f;
        EXPECT_TRUE(transparent);
        // Metres and Y up undone.
        EXPECT_TRUE(near(model.bbox().min(), original.bbox().min(), 0.01f));
        EXPECT_TRUE(near(model.bbox().max(), original.bbox().max(), 0.01f));
    }
}

// --- bad input ---------------------------------------------------------------------------

// A failed read says, on one line, what went wrong with which file, prints nothing, and leaves
// no half-read model behind.
void expectRefused(const std::string& path, const std::string& expected) {
    ModelData model;
    model.nodes.resize(3);
    std::string error;
    testing::internal::CaptureStdout();
    const bool ok = ModelReader::read(path, model, error);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_FALSE(ok);
    EXPECT_NE(error.find(path), std::string::npos) << error;
    EXPECT_NE(error.find(expected), std::string::npos) << error;
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
    EXPECT_TRUE(model.nodes.empty() && model.parts.empty());
}

TEST(ModelReaderTest, BadFilesAreRefusedByName) {
    TempDir dir;
    expectRefused(dir.file("nothing.step"), "cannot open");
    fs::create_directories(dir.file("folder.step"));
    expectRefused(dir.file("folder.step"), "directory");
    const std::string xyz = dir.write("model.xyz", "hello");
    expectRefused(xyz, "unknown file type '.xyz'");
    ModelData model;
    std::string error;
    EXPECT_FALSE(ModelReader::read(xyz, model, error));
    for (const char* known :
         {".step", ".stp", ".iges", ".igs", ".brep", ".gltf", ".glb", ".obj", ".stl"})
        EXPECT_NE(error.find(known), std::string::npos) << "the known types listed: " << known;
    expectRefused(dir.write("README", "hello"), "no file extension");

    const std::string text = "This is not a CAD model.\nJust some text.\n";
    const std::pair<const char*, const char*> texts[] = {
        {"notes.step", "not a STEP file"}, {"notes.igs", "not an IGES file"},
        {"notes.glb", "not a glTF file"},  {"notes.brep", "not a BREP file"},
        {"notes.stl", "cannot read"},      {"notes.obj", "no geometry"}};
    for (const auto& [name, expected] : texts)
        expectRefused(dir.write(name, text), expected);
    expectRefused(dir.write("empty.stl", ""), "is empty");
    expectRefused(dir.write("damaged.brep", "DBRep_DrawableShape\n\nCASCADE Topology V3, (c) Open "
                                            "Cascade\nLocations 1\n1\n  1 0 0 banana\n"),
                  "cannot read");

    // The reader's own complaint reaches the status, not stdout.
    RecordingStatus status;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(ModelReader::read(
        dir.write("bad_vertex.stl", "solid x\n facet normal 0 0 1\n  outer loop\n   vertex a b c\n"
                                    "   vertex 1 0 0\n   vertex 0 1 0\n  endloop\n endfacet\n"
                                    "endsolid x\n"),
        model, error, &status));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    bool told = false;
    for (const auto& m : status.messages)
        told = told || m.find(L"vertex") != std::wstring::npos;
    EXPECT_TRUE(told);
}

TEST(ModelReaderTest, DamagedStep) {
    TempDir dir;
    const std::string whole = dir.file("whole.step");
#ifndef _WIN32
    // Open CASCADE's signal handlers and printers are the reader's business only.
    struct sigaction mine = {}, before = {}, after = {};
    mine.sa_handler = +[](int) {};
    sigaction(SIGSEGV, &mine, &before);
    const int printers = Message::DefaultMessenger()->Printers().Length();
#endif
    ASSERT_TRUE(writeStep(makeAssembly(), whole));
    const std::string content = readAll(whole);
    expectRefused(dir.write("half.step", content.substr(0, content.size() / 2)), "truncated");
    expectRefused(dir.write("nonsense.step", "ISO-10303-21;\nHEADER;\nthis is (not) STEP;;\n"
                                             "#1=#2=FOO(;\nEND-ISO-10303-21;\n"),
                  "cannot read");
    // The data section kept but the geometry cut out: parses, transfers nothing.
    const auto data = content.find("DATA;");
    ASSERT_NE(data, std::string::npos);
    expectRefused(
        dir.write("hollow.step", content.substr(0, data) + "DATA;\nENDSEC;\nEND-ISO-10303-21;\n"),
        "no geometry");

#ifndef _WIN32
    sigaction(SIGSEGV, nullptr, &after);
    EXPECT_EQ(after.sa_handler, mine.sa_handler);
    EXPECT_EQ(Message::DefaultMessenger()->Printers().Length(), printers);
    sigaction(SIGSEGV, &before, nullptr);
#endif
}

// --- normals for bare triangles ----------------------------------------------------------

TEST(MeshNormalsTest, CreasesSplitVerticesAndSmoothSurfacesShareThem) {
    // Two triangles folded by 90 degrees along a shared edge: split.
    std::vector<Vec3> points{Vec3(0, 0, 0), Vec3(1, 0, 0), Vec3(0, 1, 0), Vec3(0, 0, 1)};
    const std::vector<unsigned int> folded{0, 1, 2, 1, 0, 3};
    qrnsg::Mesh mesh;
    qrnviewer::MeshNormals::appendWithCreases(points, folded, mesh);
    EXPECT_EQ(mesh.vertices.size(), 6u);
    ASSERT_EQ(mesh.indices.size(), 6u);
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_TRUE(near(mesh.normals[mesh.indices[k]], Vec3(0, 0, 1)));
        EXPECT_TRUE(near(mesh.normals[mesh.indices[k + 3]], Vec3(0, 1, 0)));
    }
    // Folded by 10 degrees: shared.
    points[3] = Vec3(0.5f, -1.0f, std::tan(0.1745f));
    qrnsg::Mesh gentle;
    qrnviewer::MeshNormals::appendWithCreases(points, folded, gentle);
    EXPECT_EQ(gentle.vertices.size(), 4u);
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

int depthOf(const ModelData& model) {
    int deepest = 0;
    for (const auto& node : model.nodes) {
        int d = 0;
        for (int p = node.parent; p >= 0; p = model.nodes[static_cast<std::size_t>(p)].parent)
            ++d;
        deepest = std::max(deepest, d);
    }
    return deepest;
}

// The README's figures; 0 where it gives none.
struct Shared {
    const char* file;
    std::size_t nodes, instances, materials, depth;
    std::size_t minTriangles, maxTriangles, facets;
};

TEST(ImportSharedModelsTest, LoadWithTheirFigures) {
    if (!fs::is_directory(QRN_SHARED_MODELS))
        GTEST_SKIP() << "*** SHARED MODELS MISSING: " << QRN_SHARED_MODELS << " not found ***";
    const Shared table[] = {{"as1-oc-214-mat.stp", 28, 18, 5, 3, 2000, 20000, 0},
                            {"trj4_pm2-ec-214.stp", 40, 0, 7, 4, 43000, 75000, 0},
                            {"pm2_tess_fine.glb", 0, 0, 7, 4, 772133, 772133, 0},
                            {"motor.stl", 0, 1, 0, 0, 0, 0, 13506},
                            {"pm2_tess_300k.stl", 0, 1, 0, 0, 0, 0, 290083},
                            {"nist_ctc_01_asme1_ap242-e1.stp", 0, 0, 0, 0, 100, 1u << 30, 0},
                            {"bug32745_pmi1.stp", 0, 0, 0, 0, 100, 1u << 30, 0}};
    std::map<std::string, ModelData> loaded;
    for (const auto& s : table) {
        SCOPED_TRACE(s.file);
        ModelData& model = loaded[s.file];
        std::string error;
        ASSERT_TRUE(ModelReader::read(sharedModel(s.file), model, error)) << error;
        expectWellFormed(model);
        auto expectIf = [](std::size_t want, std::size_t got) {
            EXPECT_TRUE(want == 0 || got == want) << got << " where the README says " << want;
        };
        expectIf(s.nodes, model.nodes.size());
        expectIf(s.instances, model.instanceCount());
        expectIf(s.materials, model.materials.size());
        expectIf(s.depth, static_cast<std::size_t>(depthOf(model)));
        EXPECT_TRUE(s.depth == 0 || model.parts.size() < model.instanceCount())
            << "shared parts held once";
        if (s.minTriangles) {
            EXPECT_GE(model.triangleCount(), s.minTriangles);
            EXPECT_LE(model.triangleCount(), s.maxTriangles);
        }
        if (s.facets) { // less the few without area, which Open CASCADE drops
            EXPECT_LE(model.triangleCount(), s.facets);
            EXPECT_GE(model.triangleCount(), s.facets * 99 / 100);
            EXPECT_EQ(model.parts[0].meshes.size(), 1u);
        }
    }
    for (const char* ap242 : {"nist_ctc_01_asme1_ap242-e1.stp", "bug32745_pmi1.stp"})
        EXPECT_GT(loaded[ap242].parts[0].edges.stripCount(), 10u) << ap242;

    // AS1: 8 nuts and 6 bolts, each part held once, instances named as the file names them.
    const ModelData& as1 = loaded["as1-oc-214-mat.stp"];
    EXPECT_EQ(as1.lengthUnit, L"mm");
    EXPECT_GE(findNamed(as1.nodes, L"rod-assembly_1"), 0);
    std::map<std::wstring, std::size_t> uses;
    for (const auto& node : as1.nodes)
        if (node.part >= 0)
            ++uses[as1.parts[static_cast<std::size_t>(node.part)].name];
    EXPECT_EQ(uses, (std::map<std::wstring, std::size_t>{
                        {L"nut", 8}, {L"bolt", 6}, {L"l-bracket", 2}, {L"rod", 1}, {L"plate", 1}}));

    // The pump's unnamed instances take their product's name; meshed and written as STL and
    // glTF (metres, Y up), it comes in at the same place and size.
    const ModelData& pump = loaded["trj4_pm2-ec-214.stp"];
    EXPECT_EQ(pump.nodes[0].name, L"Rotor.Assembly 1");
    EXPECT_EQ(pump.nodes[1].name, L"Rotor.Assembly 1.1");
    const qrnsg::BBox box = pump.bbox();
    const float size = (box.max() - box.min()).length();
    EXPECT_GT(size, 100.0f);
    for (const char* name : {"pm2_tess_300k.stl", "pm2_tess_fine.glb"}) {
        EXPECT_TRUE(near(loaded[name].bbox().min(), box.min(), size * 0.01f)) << name;
        EXPECT_TRUE(near(loaded[name].bbox().max(), box.max(), size * 0.01f)) << name;
    }

    expectRefused(sharedModel("nist_ftc_08_asme1_ap242-2.stp"),
                  "contains no geometry the viewer can show");
}

} // namespace
