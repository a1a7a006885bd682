// Model import through Open CASCADE: models built here, written in the formats the viewer reads
// and read back; bad input of every kind; the shared public models.

#include "ImportTestSupport.h"
#include "qrngl/SCRenderer.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCScene.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <IGESCAFControl_Writer.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <RWGltf_CafWriter.hxx>
#include <RWObj_CafWriter.hxx>
#include <RWStl.hxx>
#include <STEPControl_Controller.hxx>
#include <TColStd_IndexedDataMapOfStringString.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif
#include <chrono>
#include <set>
#include <sstream>
#include <thread>

namespace {

using namespace importtest;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

void expectIf(std::size_t want, std::size_t got) { // 0: no figure to check
    EXPECT_TRUE(want == 0 || got == want) << got << " where " << want << " was expected";
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

// A file written in inches keeps its own unit for what is shown; its coordinates are the
// reader's millimetres, and the document says both.
TEST(ModelReaderTest, StepFileInInchesKeepsItsUnit) {
    TempDir dir;
    const std::string path = dir.file("inches.stp");
    Doc d;
    d.add(L"Block", BRepPrimAPI_MakeBox(25.4, 50.8, 12.7).Shape());
    STEPControl_Controller::Init();
    const TCollection_AsciiString previous = Interface_Static::CVal("write.step.unit");
    Interface_Static::SetCVal("write.step.unit", "INCH");
    const bool written = writeStep(d.doc, path);
    Interface_Static::SetCVal("write.step.unit", previous.ToCString());
    ASSERT_TRUE(written);
    ModelData model;
    std::string error;
    ASSERT_TRUE(ModelReader::read(path, model, error)) << error;
    EXPECT_EQ(model.fileUnit, L"in");
    EXPECT_EQ(model.lengthUnit, L"mm");
    EXPECT_NEAR(model.bbox().max()[1] - model.bbox().min()[1], 50.8f, 1e-3f);
    auto info =
        qrn::component<qrnsg::SCInfo>(qrnimport::DocumentBuilder::build(model), qrnsg::SCHEMA_INFO);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->lengthUnit, qrnsg::SCInfo::INCH);
    EXPECT_EQ(info->modelUnit, qrnsg::SCInfo::MILLIMETRE);
}

TEST(ModelReaderTest, ADocumentBuiltFromAModelItGivesUpHoldsTheSameScene) {
    TempDir dir;
    ASSERT_TRUE(writeStep(makeAssembly(), dir.file("a.step")));
    ModelData model;
    std::string error;
    ASSERT_TRUE(ModelReader::read(dir.file("a.step"), model, error)) << error;
    const auto copied = qrnimport::DocumentBuilder::build(model);
    const std::size_t triangles = model.triangleCount();
    const auto taken = qrnimport::DocumentBuilder::build(std::move(model));
    ASSERT_TRUE(copied && taken);
    const auto a = copied->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    const auto b = taken->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    ASSERT_EQ(a->meshes.size(), b->meshes.size());
    for (std::size_t m = 0; m < a->meshes.size(); ++m) {
        EXPECT_EQ(a->meshes[m].triangleCount(), b->meshes[m].triangleCount());
        EXPECT_EQ(a->meshes[m].bbox().max(), b->meshes[m].bbox().max());
    }
    EXPECT_EQ(a->polylines.size(), b->polylines.size());
    // The camera is fitted to the model as it was before its geometry went.
    const auto view = [](const std::shared_ptr<qrn::Document>& d) {
        return d->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER)->camera->getViewMatrix();
    };
    EXPECT_EQ(view(copied), view(taken));
    // The vertices live once: the model keeps its tree but no triangles.
    EXPECT_GT(triangles, 0u);
    EXPECT_EQ(model.triangleCount(), 0u); // NOLINT(bugprone-use-after-move): left as documented
    EXPECT_FALSE(model.nodes.empty());
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
        {"cube_bin.stl", 1, 1, 12, -1, 0, false, {1, 1, 1}},
        {"cube_ascii.STL", 1, 1, 12, -1, 0, false, {1, 1, 1}},
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
            // Triangles only, yet its twelve edges show, each once: not the diagonals.
            const auto& edges = f.edges < 0 ? model.parts[0].edges : qrnsg::Polyline();
            float length = 0.0f;
            for (std::size_t i = 0; i + 1 < edges.points.size(); ++i)
                if (std::find(edges.strips.begin(), edges.strips.end(), i + 1) ==
                    edges.strips.end())
                    length += edges.points[i].distance(edges.points[i + 1]);
            EXPECT_NEAR(length, f.edges < 0 ? 12.0f : 0.0f, 1e-4f);
            EXPECT_TRUE(f.edges >= 0 || model.parts[0].entities.edges.size() == edges.stripCount());
            EXPECT_EQ(model.parts[0].meshes.at(0).vertices.size(), 24u);
            EXPECT_EQ(model.nodes[0].name, fs::path(f.file).stem().wstring());
        }
    }
}

// A failed read says, on one line, what went wrong with which file, prints nothing, and leaves
// no half-read model behind.
std::string expectRefused(const std::string& path, const std::string& expected) {
    ModelData model;
    model.nodes.resize(3);
    std::string error;
    testing::internal::CaptureStdout();
    const bool ok = ModelReader::read(path, model, error);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_FALSE(ok);
    EXPECT_THAT(error, AllOf(HasSubstr(path), HasSubstr(expected), Not(HasSubstr("\n"))));
    EXPECT_TRUE(model.nodes.empty() && model.parts.empty());
    return error;
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
    for (const auto& b : bad) {
        const std::string error = expectRefused(
            b.content == "-" ? dir.file(b.file) : dir.write(b.file, b.content), b.expected);
        for (const char* known : {".step", ".stp", ".iges", ".igs", ".brep", ".gltf", ".glb",
                                  ".obj", ".stl"}) // the known types listed
            EXPECT_TRUE(b.file != std::string("model.xyz") || error.find(known) != error.npos);
    }
#ifndef _WIN32
    sigaction(SIGSEGV, nullptr, &after);
    EXPECT_EQ(after.sa_handler, mine.sa_handler);
    EXPECT_EQ(Message::DefaultMessenger()->Printers().Length(), printers);
    sigaction(SIGSEGV, &before, nullptr);
#endif

    // The reader's own complaint reaches the status, not stdout.
    ModelData model;
    std::string error;
    RecordingStatus status;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(ModelReader::read(
        dir.write("bad_vertex.stl", "solid x\n facet normal 0 0 1\n  outer loop\n   vertex a b c\n"
                                    "   vertex 1 0 0\n   vertex 0 1 0\n  endloop\n endfacet\n"
                                    "endsolid x\n"),
        model, error, &status));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(status.messages, Contains(HasSubstr(L"vertex")));
}

TEST(ModelReaderTest, ASlowReadStopsAtItsTimeLimit) {
    TempDir dir;
    ASSERT_TRUE(writeStep(makeAssembly(), dir.file("a.step")));
    ASSERT_TRUE(RWStl::WriteBinary(cubeMesh(), OSD_Path(dir.file("cube.stl").c_str())));
    // Past the limit every kind of read stops with a message; a transfer kept busy past it
    // stops at its next step, with no second read without PMI.
    for (const char* file : {"a.step", "cube.stl"}) {
        ModelReader::Options options;
        options.timeLimit = 1e-9;
        ModelData model;
        std::string error;
        EXPECT_FALSE(ModelReader::read(dir.file(file), options, model, error)) << file;
        EXPECT_THAT(error, AllOf(HasSubstr(dir.file(file)), HasSubstr("time limit of 1e-09 s")));
        EXPECT_TRUE(model.parts.empty());
    }
    ModelReader::Options slow;
    slow.timeLimit = 0.2;
    int transfers = 0;
    slow.pmiTransferHook = [&] {
        ++transfers;
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        return true;
    };
    ModelData model;
    std::string error;
    EXPECT_FALSE(ModelReader::read(dir.file("a.step"), slow, model, error));
    EXPECT_THAT(error, HasSubstr("stopped after the import's time limit of 0.2 s"));
    EXPECT_EQ(transfers, 1);
    slow.timeLimit = 0.0; // none
    EXPECT_TRUE(ModelReader::read(dir.file("a.step"), slow, model, error)) << error;
}

#ifndef _WIN32
TEST(ModelReaderTest, AFileWithoutReadPermissionIsRefusedByName) {
    TempDir dir;
    ASSERT_TRUE(RWStl::WriteBinary(cubeMesh(), OSD_Path(dir.file("locked.stl").c_str())));
    fs::permissions(dir.path, fs::perms::all);
    fs::permissions(dir.file("locked.stl"), fs::perms::none);
    // Root reads every file: the read is tried as nobody, in a child process.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            _exit(3);
        ModelData model;
        std::string error;
        const bool read = ModelReader::read(dir.file("locked.stl"), model, error);
        std::fprintf(stderr, "%s\n", error.c_str());
        _exit(read ? 1
              : error == "cannot open " + dir.file("locked.stl") +
                             ": it cannot be read (Permission denied)"
                  ? 0
                  : 2);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child status " << status;
}
#endif

TEST(ImportSharedModelsTest, LoadWithTheirFigures) {
    SKIP_WITHOUT_SHARED_MODELS();
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
}

} // namespace
