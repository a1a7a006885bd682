// Model import through Open CASCADE: models built here, written in the formats the viewer reads
// and read back; bad input of every kind; the shared public models.

// As Open CASCADE's own build, so that signals can be caught here as in the reader.
#if !defined(_WIN32) && !defined(OCC_CONVERT_SIGNALS)
#define OCC_CONVERT_SIGNALS
#endif

#include "qrnimport/ModelReader.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DemoDocument.h"
#include "qrnimport/MeshNormals.h"
#include "qrnimport/XcafImporter.h"
#include "qrnmath/MatrixUtils.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <IGESCAFControl_Writer.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Poly_Triangulation.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <RWGltf_CafWriter.hxx>
#include <RWObj_CafWriter.hxx>
#include <RWStl.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <TColStd_IndexedDataMapOfStringString.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gp_Trsf.hxx>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using qrnimport::ModelData;
using qrnimport::ModelReader;
using qrnmath::Vec3;

const wchar_t* const GEAR_NAME = L"Zahnrad Ø12 – 歯車";
const wchar_t* const ROW_NAME = L"Row \U0001D11E"; // beyond the BMP

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

Quantity_ColorRGBA rgb(double r, double g, double b, float alpha = 1.0f) {
    return Quantity_ColorRGBA(Quantity_Color(r, g, b, Quantity_TOC_sRGB), alpha);
}

TopLoc_Location at(double x, double y = 0.0, double z = 0.0) {
    gp_Trsf t;
    t.SetTranslation(gp_Vec(x, y, z));
    return TopLoc_Location(t);
}

struct Doc {
    Doc() {
        XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", doc);
        shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
        colours = XCAFDoc_DocumentTool::ColorTool(doc->Main());
    }
    // A part, or an assembly where no shape is given.
    TDF_Label add(const wchar_t* name, const TopoDS_Shape& shape = TopoDS_Shape()) {
        TDF_Label label = shape.IsNull() ? shapes->NewShape() : shapes->AddShape(shape, false);
        if (name)
            TDataStd_Name::Set(label, TCollection_ExtendedString(name));
        return label;
    }
    TDF_Label paint(const TDF_Label& label, const Quantity_ColorRGBA& colour) {
        colours->SetColor(label, colour, XCAFDoc_ColorSurf);
        return label;
    }
    Handle(TDocStd_Document) doc;
    Handle(XCAFDoc_ShapeTool) shapes;
    Handle(XCAFDoc_ColorTool) colours;
};

// Root > Row > 3 x Bolt (red cylinder), Root > gear (green box, its top face blue, a
// non-ASCII name), Root > Glass (a transparent box).
Handle(TDocStd_Document) makeAssembly() {
    Doc d;
    TDF_Label bolt = d.paint(d.add(L"Bolt", BRepPrimAPI_MakeCylinder(3, 20).Shape()), rgb(1, 0, 0));
    BRepPrimAPI_MakeBox gearBox(gp_Pnt(0, 40, 0), 10, 10, 10);
    TDF_Label gear = d.paint(d.add(GEAR_NAME, gearBox.Shape()), rgb(0, 1, 0));
    d.paint(d.shapes->AddSubShape(gear, gearBox.TopFace()), rgb(0, 0, 1));
    TDF_Label glass = d.paint(d.add(L"Glass", BRepPrimAPI_MakeBox(gp_Pnt(30, 40, 0), 5, 5, 5)),
                              rgb(0.2, 0.4, 0.8, 0.25f));
    TDF_Label row = d.add(ROW_NAME), root = d.add(L"Root");
    for (int i = 0; i < 3; ++i)
        d.shapes->AddComponent(row, bolt, at(15.0 * i));
    d.shapes->AddComponent(root, row, at(0, 0, 5));
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

ModelData importDoc(const Handle(TDocStd_Document) & doc,
                    const ModelReader::Options& options = ModelReader::Options()) {
    ModelData model;
    std::string error;
    EXPECT_TRUE(qrnimport::XcafImporter::import(doc, options, model, error)) << error;
    expectWellFormed(model);
    return model;
}

ModelData readFile(const std::string& path) {
    ModelData model;
    std::string error;
    EXPECT_TRUE(ModelReader::read(path, model, error)) << error;
    expectWellFormed(model);
    return model;
}

void expectIf(std::size_t want, std::size_t got) { // 0: no figure to check
    EXPECT_TRUE(want == 0 || got == want) << got << " where " << want << " was expected";
}

template <class T>
int findNamed(const std::vector<T>& list, const std::wstring& name) {
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i].name == name)
            return static_cast<int>(i);
    return -1;
}

const ModelData::Part& partNamed(const ModelData& model, const std::wstring& name) {
    return model.parts.at(static_cast<std::size_t>(findNamed(model.parts, name)));
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

// On a convex solid every triangle faces away from the mean of its vertices, by its winding and
// by its normals.
void expectOutward(const ModelData::Part& part) {
    Vec3 centre(0, 0, 0);
    float count = 0;
    for (const auto& mesh : part.meshes)
        for (const auto& v : mesh.vertices)
            centre = centre + (v - centre) / ++count;
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
        }
    EXPECT_GT(count, 3.0f);
}

const qrnsg::MMaterial& materialOf(const ModelData& model, const ModelData::Part& part) {
    return model.materials[static_cast<std::size_t>(part.meshMaterials.at(0))];
}

bool hasColour(const qrnsg::MMaterial& m, const Vec3& c) {
    return near(Vec3(m.diffuse[0], m.diffuse[1], m.diffuse[2]), c, 0.01f);
}

// Triangles of the part drawn in that colour.
std::size_t trianglesIn(const ModelData& model, const ModelData::Part& part, const Vec3& c) {
    std::size_t n = 0;
    for (std::size_t m = 0; m < part.meshes.size(); ++m)
        if (hasColour(model.materials[static_cast<std::size_t>(part.meshMaterials[m])], c))
            n += part.meshes[m].triangleCount();
    return n;
}

const Vec3 RED{1, 0, 0}, GREEN{0, 1, 0}, BLUE{0, 0, 1}, GLASS{0.2f, 0.4f, 0.8f};

// What the generated assembly must come back as.
void expectAssembly(const ModelData& model) {
    EXPECT_EQ(model.nodes.size(), 7u); // Root, Row, 3 bolts, gear, glass
    EXPECT_EQ(model.instanceCount(), 5u);
    ASSERT_EQ(model.parts.size(), 3u) << "the bolt is held once, not copied";
    EXPECT_EQ(model.lengthUnit, L"mm");
    ASSERT_GE(findNamed(model.parts, GEAR_NAME), 0) << "the non-ASCII name comes back exactly";
    ASSERT_GE(findNamed(model.nodes, ROW_NAME), 0) << "so does the one beyond the BMP";
    EXPECT_EQ(model.nodes[static_cast<std::size_t>(findNamed(model.nodes, ROW_NAME))].part, -1);
    EXPECT_EQ(model.nodes[0].name, L"Root");
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
    EXPECT_GT(partTriangles(boltPart), 20u);
    EXPECT_EQ(model.triangleCount(),
              3 * partTriangles(boltPart) + partTriangles(gearPart) + partTriangles(glassPart));

    // The bolt red; the gear green with its top face blue (two triangles); the glass see-through.
    EXPECT_EQ(trianglesIn(model, boltPart, RED), partTriangles(boltPart));
    EXPECT_FALSE(materialOf(model, boltPart).isTransparent());
    EXPECT_EQ(trianglesIn(model, gearPart, BLUE), 2u);
    EXPECT_EQ(trianglesIn(model, gearPart, GREEN), 10u);
    ASSERT_EQ(glassPart.meshes.size(), 1u);
    EXPECT_TRUE(hasColour(materialOf(model, glassPart), GLASS));
    EXPECT_NEAR(materialOf(model, glassPart).transparency, 0.75f, 0.02f);
    EXPECT_EQ(model.materials.size(), 4u) << "red, green, blue, glass: each once";

    // Faces wound and lit outwards, reversed faces of the boxes included; B-rep edges: a
    // cylinder has two circles and a seam, a box twelve edges.
    for (const auto* part : {&boltPart, &gearPart, &glassPart})
        expectOutward(*part);
    EXPECT_EQ(boltPart.edges.stripCount(), 3u);
    EXPECT_EQ(gearPart.edges.stripCount(), 12u);
    EXPECT_TRUE(near(model.bbox().min(), Vec3(-3.0f, -3.0f, 0.0f), 0.05f));
    EXPECT_TRUE(near(model.bbox().max(), Vec3(35.0f, 50.0f, 25.0f), 0.05f));
}

// Keeps what the importer reports.
struct RecordingStatus : qrn::IStatusManager {
    void setStatus(const std::wstring& text) override { messages.push_back(text); }
    void setProgress(const std::wstring& task, int percent) override { last[task] = percent; }
    void endProgress() override { ++ends; }
    std::vector<std::wstring> messages;
    std::map<std::wstring, int> last;
    int ends = 0;
};

// --- documents in memory -----------------------------------------------------------------

TEST(XcafImporterTest, OptionsUnitsAndFailure) {
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
    d.add(nullptr, BRepPrimAPI_MakeSphere(5.0).Shape());
    const ModelData sphere = importDoc(d.doc);
    ASSERT_EQ(sphere.parts.size(), 1u);
    EXPECT_EQ(sphere.parts[0].edges.stripCount(), 1u);
    EXPECT_EQ(sphere.lengthUnit, L"in");
    for (const auto& mesh : sphere.parts[0].meshes)
        for (std::size_t v = 0; v < mesh.vertices.size(); ++v)
            ASSERT_GT(mesh.normals[v].dot(mesh.vertices[v].normalized()), 0.99f);

    ModelData none;
    std::string error;
    EXPECT_FALSE(qrnimport::XcafImporter::import(Handle(TDocStd_Document)(), ModelReader::Options(),
                                                 none, error));
    EXPECT_FALSE(error.empty());
}

// An instance's colour wins over its part's, a part's over the assemblies' above it; a part is
// copied only for an instance whose colour reaches one of its faces.
TEST(XcafImporterTest, ColourPrecedence) {
    Doc d;
    const auto box = [&](const wchar_t* name) {
        return d.add(name, BRepPrimAPI_MakeBox(1, 1, 1).Shape());
    };
    TDF_Label plain = box(L"plain"), painted = d.paint(box(L"painted"), rgb(0, 0, 1));
    TDF_Label green = d.paint(box(L"green"), rgb(0, 1, 0)), cyan = box(L"cyan");
    for (TopExp_Explorer f(XCAFDoc_ShapeTool::GetShape(cyan), TopAbs_FACE); f.More(); f.Next())
        d.paint(d.shapes->AddSubShape(cyan, f.Current()), rgb(0, 1, 1));
    TDF_Label root = d.add(nullptr), yellow = d.add(nullptr);
    d.shapes->AddComponent(yellow, plain, TopLoc_Location());
    d.shapes->AddComponent(yellow, painted, at(2));
    d.paint(d.shapes->AddComponent(root, yellow, TopLoc_Location()), rgb(1, 1, 0));
    d.shapes->AddComponent(root, green, at(4));
    d.shapes->AddComponent(root, green, at(4, 2));
    d.paint(d.shapes->AddComponent(root, green, at(4, 4)), rgb(1, 0, 0));
    for (int i = 0; i < 2; ++i) { // every face coloured: the assemblies' colours reach none
        TDF_Label sub = d.add(nullptr);
        d.shapes->AddComponent(sub, cyan, TopLoc_Location());
        d.paint(d.shapes->AddComponent(root, sub, at(6, 2 * i)), i ? rgb(1, 0, 0) : rgb(0, 0, 1));
    }
    d.shapes->UpdateAssemblies();
    const ModelData model = importDoc(d.doc);
    EXPECT_EQ(model.instanceCount(), 7u);
    EXPECT_EQ(model.parts.size(), 5u) << "plain, painted, green twice, cyan once";
    std::map<std::pair<long, long>, int> partAt; // by the instance's place
    for (std::size_t n = 0; n < model.nodes.size(); ++n) {
        EXPECT_FALSE(model.nodes[n].name.empty()) << "names generated where the document has none";
        const auto w = model.worldTransform(static_cast<int>(n));
        if (model.nodes[n].part >= 0)
            partAt[{std::lround(w[12]), std::lround(w[13])}] = model.nodes[n].part;
    }
    const auto drawnIn = [&](long x, long y, const Vec3& c) {
        const auto& part = model.parts.at(static_cast<std::size_t>(partAt.at({x, y})));
        return trianglesIn(model, part, c) == partTriangles(part);
    };
    EXPECT_TRUE(drawnIn(0, 0, {1, 1, 0}) && drawnIn(2, 0, BLUE));
    EXPECT_TRUE(drawnIn(4, 0, GREEN) && drawnIn(4, 2, GREEN) && drawnIn(4, 4, RED));
    EXPECT_TRUE(drawnIn(6, 0, {0, 1, 1}) && drawnIn(6, 2, {0, 1, 1}));
    EXPECT_EQ(partAt[std::make_pair(4L, 0L)], partAt[std::make_pair(4L, 2L)]);
    EXPECT_EQ(partAt[std::make_pair(6L, 0L)], partAt[std::make_pair(6L, 2L)]);
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
    expectWellFormed(model);
    expectAssembly(model);
    EXPECT_TRUE(status.last.count(L"reading"));
    EXPECT_EQ(status.last[L"meshing"], 100);
    EXPECT_GE(status.ends, 2);

    // Parts meshed at once come out as when meshed one after another.
    for (unsigned int threads : {1u, 3u}) {
        ModelReader::Options options;
        options.meshThreads = threads;
        ModelData again;
        ASSERT_TRUE(ModelReader::read(path, options, again, error)) << error;
        ASSERT_EQ(again.parts.size(), model.parts.size());
        for (std::size_t p = 0; p < model.parts.size(); ++p)
            for (std::size_t m = 0; m < model.parts[p].meshes.size(); ++m)
                EXPECT_EQ(again.parts[p].meshes.at(m).indices, model.parts[p].meshes[m].indices)
                    << threads << " threads, part " << p;
    }
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
    IGESCAFControl_Writer iges; // keeps no assembly structure
    iges.SetColorMode(true);
    iges.SetNameMode(true);
    ASSERT_TRUE(iges.Transfer(makeAssembly()) && iges.Write(dir.file("assembly.igs").c_str()));
    TopoDS_Shape box = BRepPrimAPI_MakeBox(4, 5, 6).Shape();
    TopoDS_Compound compound; // the box placed twice
    BRep_Builder builder;
    builder.MakeCompound(compound);
    builder.Add(compound, box);
    builder.Add(compound, box.Moved(at(10)));
    ASSERT_TRUE(BRepTools::Write(compound, dir.file("two_boxes.brep").c_str()));
    ASSERT_TRUE(RWStl::WriteBinary(cubeMesh(), OSD_Path(dir.file("cube_bin.stl").c_str())));
    ASSERT_TRUE(RWStl::WriteAscii(cubeMesh(), OSD_Path(dir.file("cube_ascii.STL").c_str())));
    // glTF (in metres, Y up) and OBJ from the meshed assembly: its triangles used as written.
    Handle(TDocStd_Document) doc = makeAssembly();
    TDF_LabelSequence roots;
    XCAFDoc_DocumentTool::ShapeTool(doc->Main())->GetFreeShapes(roots);
    BRepMesh_IncrementalMesh(XCAFDoc_ShapeTool::GetShape(roots.First()), 0.1);
    const TColStd_IndexedDataMapOfStringString info;
    for (const bool glb : {true, false}) {
        RWGltf_CafWriter writer(dir.file(glb ? "assembly.glb" : "assembly.gltf").c_str(), glb);
        writer.ChangeCoordinateSystemConverter().SetInputLengthUnit(0.001);
        writer.ChangeCoordinateSystemConverter().SetInputCoordinateSystem(
            RWMesh_CoordinateSystem_Zup);
        ASSERT_TRUE(writer.Perform(doc, info, Message_ProgressRange()));
    }
    ASSERT_TRUE(RWObj_CafWriter(dir.file("assembly.obj").c_str())
                    .Perform(doc, info, Message_ProgressRange()));
    const std::size_t meshed = importDoc(doc).triangleCount();

    // 0: not counted; edges -1: none counted; colours: how many of the assembly's four come back.
    const struct {
        const char* file;
        std::size_t instances, parts, triangles;
        int edges;
        std::size_t colours;
        bool gltf;
        Vec3 max;
    } formats[] = {
        {"assembly.igs", 0, 0, 0, -1, 4, false, {35, 50, 25}},
        {"two_boxes.brep", 2, 1, 24, 12, 0, false, {14, 5, 6}},
        {"cube_bin.stl", 1, 1, 12, 0, 0, false, {1, 1, 1}},
        {"cube_ascii.STL", 1, 1, 12, 0, 0, false, {1, 1, 1}},
        // Open CASCADE's glTF writer gives each instance a mesh of its own.
        {"assembly.glb", 5, 5, meshed, -1, 4, true, {35, 50, 25}},
        {"assembly.gltf", 5, 5, meshed, -1, 4, true, {35, 50, 25}},
        {"assembly.obj", 0, 0, meshed, -1, 3, false, {35, 50, 25}},
    };
    for (const auto& f : formats) {
        SCOPED_TRACE(f.file);
        const ModelData model = readFile(dir.file(f.file));
        expectIf(f.instances, model.instanceCount());
        expectIf(f.parts, model.parts.size());
        expectIf(f.triangles, model.triangleCount());
        EXPECT_GE(model.triangleCount(), f.triangles ? 12u : 3 * 20u + 24u);
        EXPECT_TRUE(f.edges < 0 || model.parts.at(0).edges.stripCount() == std::size_t(f.edges));
        std::size_t colours = 0;
        bool transparent = false;
        for (const Vec3& c : {RED, GREEN, BLUE, GLASS})
            colours += std::any_of(model.materials.begin(), model.materials.end(),
                                   [&](const qrnsg::MMaterial& m) { return hasColour(m, c); });
        for (const auto& m : model.materials)
            transparent = transparent || std::abs(m.transparency - 0.75f) < 0.02f;
        EXPECT_GE(colours, f.colours);
        EXPECT_TRUE(!f.gltf || transparent);
        EXPECT_TRUE(!f.gltf || findNamed(model.parts, GEAR_NAME) >= 0 ||
                    findNamed(model.nodes, GEAR_NAME) >= 0);
        EXPECT_TRUE(near(model.bbox().min(), f.colours ? Vec3{-3, -3, 0} : Vec3{0, 0, 0}, 0.05f));
        EXPECT_TRUE(near(model.bbox().max(), f.max, 0.05f));
        if (f.parts == 1) { // flat sides: each corner once per side, wound outwards
            expectOutward(model.parts[0]);
            EXPECT_EQ(model.parts[0].meshes.at(0).vertices.size(), 24u);
            EXPECT_EQ(model.nodes[0].name, fs::path(f.file).stem().wstring());
        }
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
#ifndef _WIN32
    // Open CASCADE's signal handlers and printers are the reader's business only.
    struct sigaction mine = {}, before = {}, after = {};
    mine.sa_handler = +[](int) {};
    sigaction(SIGSEGV, &mine, &before);
    const int printers = Message::DefaultMessenger()->Printers().Length();
#endif
    ASSERT_TRUE(writeStep(makeAssembly(), dir.file("whole.step")));
    std::stringstream whole;
    whole << std::ifstream(dir.file("whole.step"), std::ios::binary).rdbuf();
    const std::string step = whole.str(), text = "This is not a CAD model.\nJust some text.\n";
    const auto data = step.find("DATA;");
    ASSERT_NE(data, std::string::npos);
    fs::create_directories(dir.file("folder.step"));

    const struct {
        const char* file;
        std::string content; // "-": none written
        const char* expected;
    } bad[] = {
        {"nothing.step", "-", "cannot open"},
        {"folder.step", "-", "directory"},
        {"model.xyz", "hello", "unknown file type '.xyz'"},
        {"README", "hello", "no file extension"},
        {"notes.step", text, "not a STEP file"},
        {"notes.igs", text, "not an IGES file"},
        {"notes.glb", text, "not a glTF file"},
        {"notes.brep", text, "not a BREP file"},
        {"notes.stl", text, "cannot read"},
        {"notes.obj", text, "no geometry"},
        {"empty.stl", "", "is empty"},
        {"damaged.brep",
         "DBRep_DrawableShape\n\nCASCADE Topology V3, (c) Open Cascade\nLocations 1\n1\n"
         "  1 0 0 banana\n",
         "cannot read"},
        {"half.step", step.substr(0, step.size() / 2), "truncated"},
        {"nonsense.step",
         "ISO-10303-21;\nHEADER;\nthis is (not) STEP;;\n#1=#2=FOO(;\nEND-ISO-10303-21;\n",
         "cannot read"},
        // The data section kept but the geometry cut out: parses, transfers nothing.
        {"hollow.step", step.substr(0, data) + "DATA;\nENDSEC;\nEND-ISO-10303-21;\n",
         "no geometry"},
    };
    for (const auto& b : bad)
        expectRefused(b.content == "-" ? dir.file(b.file) : dir.write(b.file, b.content),
                      b.expected);
#ifndef _WIN32
    sigaction(SIGSEGV, nullptr, &after);
    EXPECT_EQ(after.sa_handler, mine.sa_handler);
    EXPECT_EQ(Message::DefaultMessenger()->Printers().Length(), printers);
    sigaction(SIGSEGV, &before, nullptr);
#endif

    ModelData model;
    std::string error;
    EXPECT_FALSE(ModelReader::read(dir.file("model.xyz"), model, error));
    for (const char* known :
         {".step", ".stp", ".iges", ".igs", ".brep", ".gltf", ".glb", ".obj", ".stl"})
        EXPECT_NE(error.find(known), std::string::npos) << "the known types listed: " << known;

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

TEST(ImportSharedModelsTest, LoadWithTheirFigures) {
    if (!fs::is_directory(QRN_SHARED_MODELS))
        GTEST_SKIP() << "*** SHARED MODELS MISSING: " << QRN_SHARED_MODELS << " not found ***";
    // The README's figures; 0 where it gives none.
    const struct {
        const char* file;
        std::size_t nodes, instances, materials, depth, minTriangles, maxTriangles, facets;
    } table[] = {{"as1-oc-214-mat.stp", 28, 18, 5, 3, 2000, 20000, 0},
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
        const auto expectIf = [](std::size_t want, std::size_t got) {
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
    // Its glTF parts bound solids, so their back faces are left out.
    std::size_t closed = 0;
    for (const auto& part : loaded["pm2_tess_fine.glb"].parts)
        closed += !part.meshes.empty() && part.meshes.front().closed ? 1 : 0;
    EXPECT_EQ(closed, loaded["pm2_tess_fine.glb"].parts.size());

    expectRefused(sharedModel("nist_ftc_08_asme1_ap242-2.stp"),
                  "contains no geometry the viewer can show");
}

// --- faces, edges and vertices to point at -----------------------------------------------

using Surface = qrnsg::PartEntities::Surface;
using Curve = qrnsg::PartEntities::Curve;

// How far a point is along an axis, and from it.
std::pair<float, float> alongAndAcross(const Vec3& p, const Vec3& origin, const Vec3& axis) {
    const float along = (p - origin).dot(axis);
    return {along, (p - origin - axis * along).length()};
}

// Face ranges tile each mesh and each strip is one edge; every entity lies where its geometry
// is drawn: plane and cylinder faces' triangles on them, circles through their strips, end
// vertices at strip ends.
void expectEntitiesFit(const ModelData::Part& part) {
    const auto& e = part.entities;
    const float tol = 1e-5f * (part.bbox().max() - part.bbox().min()).length() + 1e-3f;
    std::vector<std::map<unsigned int, unsigned int>> ranges(part.meshes.size());
    for (const auto& f : e.faces) {
        const auto& mesh = part.meshes.at(static_cast<std::size_t>(f.mesh));
        ASSERT_LE(f.firstTriangle + f.triangleCount, mesh.triangleCount());
        ranges[static_cast<std::size_t>(f.mesh)][f.firstTriangle] = f.triangleCount;
        const Surface& s = f.surface;
        for (unsigned int i = f.firstTriangle * 3; i < (f.firstTriangle + f.triangleCount) * 3;
             ++i) {
            const auto [along, across] =
                alongAndAcross(mesh.vertices[mesh.indices[i]], s.origin, s.axis);
            const bool plane = s.type == Surface::PLANE, cylinder = s.type == Surface::CYLINDER;
            ASSERT_TRUE(!plane || (std::abs(along) < tol &&
                                   mesh.normals[mesh.indices[i]].dot(s.axis) > 0.99f));
            ASSERT_TRUE(!cylinder || std::abs(across - s.radius) < tol);
        }
    }
    for (std::size_t m = 0; m < ranges.size(); ++m) {
        unsigned int next = 0;
        for (const auto& [first, count] : ranges[m])
            EXPECT_EQ(first, std::exchange(next, first + count)) << "gap or overlap";
        EXPECT_EQ(next, part.meshes[m].triangleCount()) << "triangles of no face";
    }
    const auto& pl = part.edges;
    ASSERT_EQ(e.edges.size(), pl.stripCount());
    std::set<unsigned int> strips;
    for (const auto& edge : e.edges) {
        ASSERT_TRUE(strips.insert(edge.strip).second && edge.strip < pl.stripCount());
        const auto first = pl.points.begin() + pl.strips[edge.strip];
        const auto end = edge.strip + 1 < pl.strips.size()
                             ? pl.points.begin() + pl.strips[edge.strip + 1]
                             : pl.points.end();
        for (int k = 0; k < 2; ++k) // the first vertex at the strip's start, the last at its end
            EXPECT_TRUE(edge.vertices[k] < 0 ||
                        near(e.vertices.at(static_cast<std::size_t>(edge.vertices[k])),
                             k ? *(end - 1) : *first, tol));
        EXPECT_TRUE(edge.faces[1] < 0 || edge.faces[0] != edge.faces[1]);
        const Curve& c = edge.curve;
        for (auto p = first; p != end && (c.type == Curve::CIRCLE || c.type == Curve::ARC); ++p) {
            const auto [along, across] = alongAndAcross(*p, c.origin, c.axis);
            ASSERT_TRUE(std::abs(across - c.radius) < tol && std::abs(along) < tol);
        }
    }
}

// Imports the document; each part has as many faces, edges (less degenerated ones) and
// vertices as Open CASCADE finds in the shape of its name.
ModelData expectPartsMatchTheirShapes(const Handle(TDocStd_Document) & doc) {
    const ModelData model = importDoc(doc);
    TDF_LabelSequence labels;
    XCAFDoc_DocumentTool::ShapeTool(doc->Main())->GetShapes(labels);
    std::set<int> checked;
    for (const TDF_Label& label : labels) {
        Handle(TDataStd_Name) name;
        std::wstring wide;
        if (label.FindAttribute(TDataStd_Name::GetID(), name))
            for (int i = 1; i <= name->Get().Length(); ++i)
                wide.push_back(static_cast<wchar_t>(name->Get().Value(i)));
        const int part = findNamed(model.parts, wide);
        if (!XCAFDoc_ShapeTool::IsSimpleShape(label) || part < 0 || !checked.insert(part).second)
            continue;
        SCOPED_TRACE(part);
        TopTools_IndexedMapOfShape faces, edges, vertices;
        TopExp::MapShapes(XCAFDoc_ShapeTool::GetShape(label), TopAbs_FACE, faces);
        TopExp::MapShapes(XCAFDoc_ShapeTool::GetShape(label), TopAbs_EDGE, edges);
        TopExp::MapShapes(XCAFDoc_ShapeTool::GetShape(label), TopAbs_VERTEX, vertices);
        int drawn = 0;
        for (int i = 1; i <= edges.Extent(); ++i)
            drawn += BRep_Tool::Degenerated(TopoDS::Edge(edges(i))) ? 0 : 1;
        const auto& e = model.parts[static_cast<std::size_t>(part)].entities;
        EXPECT_EQ(e.faces.size(), static_cast<std::size_t>(faces.Extent()));
        EXPECT_EQ(e.edges.size(), static_cast<std::size_t>(drawn));
        EXPECT_EQ(e.vertices.size(), static_cast<std::size_t>(vertices.Extent()));
        expectEntitiesFit(model.parts[static_cast<std::size_t>(part)]);
    }
    EXPECT_EQ(checked.size(), model.parts.size());
    return model;
}

TEST(PartEntitiesTest, DemoPartsKeepTheirTopologyAndGeometry) {
    const ModelData model = expectPartsMatchTheirShapes(qrnimport::DemoDocument::make());
    ASSERT_EQ(model.parts.size(), 7u);
    // Solids, each face meshed with corners of its own: closed once the corners are joined.
    for (std::size_t p = 0; p < model.parts.size(); ++p)
        for (const auto& mesh : model.parts[p].meshes)
            EXPECT_TRUE(mesh.closed) << "part " << p;
    const wchar_t *const shaft = L"Shaft \u00D820", *const plate = L"Base Plate",
                         *const bolt = L"Bolt M8x16";
    // Faces (true) or edges of a kind and radius: the shaft's cylinder and ends; the plate's
    // sides, holes and rounded corners; the bolt's hexagon head and shank.
    const struct {
        const wchar_t* part;
        bool face;
        int type;
        float radius;
        std::size_t count;
    } figures[] = {
        // clang-format off
        {shaft, true, Surface::CYLINDER, 10, 1},   {shaft, true, Surface::PLANE, 0, 2},
        {shaft, false, Curve::CIRCLE, 10, 2},      {plate, true, Surface::PLANE, 0, 6},
        {plate, true, Surface::CYLINDER, 5.5f, 4}, {plate, true, Surface::CYLINDER, 12, 4},
        {plate, false, Curve::CIRCLE, 5.5f, 8},    {plate, false, Curve::ARC, 12, 8},
        {bolt, true, Surface::PLANE, 0, 9},        {bolt, true, Surface::CYLINDER, 4, 1},
        {bolt, false, Curve::CIRCLE, 4, 2},
        // clang-format on
    };
    for (const auto& f : figures) {
        const auto& e = partNamed(model, f.part).entities;
        std::size_t n = 0;
        for (const auto& face : e.faces)
            n += f.face && face.surface.type == f.type &&
                 std::abs(face.surface.radius - f.radius) < 1e-3f;
        for (const auto& edge : e.edges)
            n += !f.face && edge.curve.type == f.type &&
                 std::abs(edge.curve.radius - f.radius) < 1e-3f;
        EXPECT_EQ(n, f.count) << "row " << &f - figures;
    }
    // Seams (the shaft's 170 long) on one curved face; every other edge between two faces.
    for (const auto& part : model.parts)
        for (const auto& edge : part.entities.edges) {
            const auto& face = part.entities.faces.at(static_cast<std::size_t>(edge.faces[0]));
            EXPECT_TRUE(edge.faces[1] >= 0 ||
                        (face.surface.type == Surface::CYLINDER &&
                         (part.name != shaft || std::abs(edge.curve.length - 170) < 1e-3f)));
        }
}

TEST(PartEntitiesTest, SharedStepModelsKeepTheirTopology) {
    if (!fs::is_directory(QRN_SHARED_MODELS))
        GTEST_SKIP() << "*** SHARED MODELS MISSING: " << QRN_SHARED_MODELS << " not found ***";
    // AS1's round faces are B-splines.
    const std::pair<const char*, std::set<int>> models[] = {
        {"as1-oc-214-mat.stp", {Surface::PLANE, Surface::OTHER}},
        {"nist_ctc_01_asme1_ap242-e1.stp", {Surface::PLANE, Surface::CYLINDER, Surface::CONE}}};
    for (const auto& [file, surfaces] : models) {
        SCOPED_TRACE(file);
        Doc d;
        STEPCAFControl_Reader reader;
        reader.SetNameMode(true);
        ASSERT_EQ(reader.ReadFile(sharedModel(file).c_str()), IFSelect_RetDone);
        ASSERT_TRUE(reader.Transfer(d.doc));
        std::set<int> kinds;
        for (const auto& part : expectPartsMatchTheirShapes(d.doc).parts)
            for (const auto& f : part.entities.faces)
                kinds.insert(f.surface.type);
        EXPECT_EQ(kinds, surfaces);
    }
}

TEST(PartEntitiesTest, BareTrianglesSplitAtCreases) {
    // An STL cube, its sides' triangles apart: a face per side, two triangles of one normal.
    const Handle(Poly_Triangulation) cube = cubeMesh(), shuffled = cubeMesh();
    for (int t = 1; t <= 12; ++t)
        shuffled->SetTriangle(t, cube->Triangle(t <= 6 ? 2 * t - 1 : 2 * t - 12));
    TempDir dir;
    ASSERT_TRUE(RWStl::WriteBinary(shuffled, OSD_Path(dir.file("cube.stl").c_str())));
    const ModelData model = readFile(dir.file("cube.stl"));
    const auto& part = model.parts.at(0);
    expectEntitiesFit(part);
    EXPECT_TRUE(part.meshes.at(0).closed) << "the whole cube bounds a solid";
    // Without a triangle, or turned inside out, it bounds none.
    Handle(Poly_Triangulation) open = new Poly_Triangulation(8, 11, false), inside = cubeMesh();
    for (int t = 1; t <= 12; ++t) {
        int a = 0, b = 0, c = 0;
        cube->Triangle(t).Get(a, b, c);
        inside->SetTriangle(t, Poly_Triangle(a, c, b));
        if (t <= 11)
            open->SetTriangle(t, cube->Triangle(t));
    }
    for (int i = 1; i <= 8; ++i)
        open->SetNode(i, cube->Node(i));
    for (const auto& [name, mesh] :
         {std::make_pair("open.stl", open), std::make_pair("inside.stl", inside)}) {
        ASSERT_TRUE(RWStl::WriteBinary(mesh, OSD_Path(dir.file(name).c_str())));
        EXPECT_FALSE(readFile(dir.file(name)).parts.at(0).meshes.at(0).closed) << name;
    }
    ASSERT_EQ(part.entities.faces.size(), 6u);
    for (const auto& f : part.entities.faces) {
        EXPECT_TRUE(f.surface.type == Surface::NONE && f.triangleCount == 2u);
        const auto& mesh = part.meshes[static_cast<std::size_t>(f.mesh)];
        for (unsigned int i = f.firstTriangle * 3; i < f.firstTriangle * 3 + 6; ++i)
            EXPECT_TRUE(near(mesh.normals[mesh.indices[i]],
                             mesh.normals[mesh.indices[f.firstTriangle * 3]]));
    }

    // Corners repeated per triangle, as glTF writes them: a sliver without area, then a finely
    // cut cylinder's side it lies on, one region; a triangle of its top, another.
    std::vector<Vec3> points;
    std::vector<unsigned int> indices;
    const auto add = [&](const Vec3& a, const Vec3& b, const Vec3& c) {
        for (const Vec3& p : {a, b, c}) {
            indices.push_back(static_cast<unsigned int>(points.size()));
            points.push_back(p);
        }
    };
    const auto round = [](int k, float z) {
        return Vec3(std::cos(k * 0.2618f), std::sin(k * 0.2618f), z);
    };
    add(round(0, 0), round(0, 1), round(0, 0.5f));
    for (int k = 0; k < 24; ++k) {
        add(round(k, 0), round(k + 1, 0), round(k + 1, 1));
        add(round(k, 0), round(k + 1, 1), round(k, 1));
    }
    add(round(0, 1), round(1, 1), Vec3(0, 0, 1));
    const auto regions = qrnimport::MeshNormals::regions(points, indices);
    EXPECT_EQ(regions.sizes, (std::vector<unsigned int>{49, 1}));
    EXPECT_EQ(regions.indices.size(), indices.size());
}

} // namespace
