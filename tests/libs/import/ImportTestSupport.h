#pragma once
// What the import tests share: scratch folders, XCAF documents made in memory (the generated
// assembly among them), STEP files written and read, and checks of model data.

// As Open CASCADE's own build, so that signals can be caught here as in the reader.
#if !defined(_WIN32) && !defined(OCC_CONVERT_SIGNALS)
#define OCC_CONVERT_SIGNALS
#endif

#include "qrnimport/ModelReader.h"
#include "qrnimport/OcctUtils.h"
#include "qrnimport/XcafImporter.h"
#include "qrnmath/MatrixUtils.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <Poly_Triangulation.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gp_Trsf.hxx>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#ifndef QRN_SHARED_MODELS
#error "QRN_SHARED_MODELS must name the shared models folder"
#endif

namespace importtest {

namespace fs = std::filesystem;
using qrnimport::ModelData;
using qrnimport::ModelReader;
using qrnmath::Vec3;

inline const wchar_t* const GEAR_NAME = L"Zahnrad Ø12 – 歯車";
inline const wchar_t* const ROW_NAME = L"Row \U0001D11E"; // beyond the BMP

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

inline Quantity_ColorRGBA rgb(double r, double g, double b, float alpha = 1.0f) {
    return Quantity_ColorRGBA(Quantity_Color(r, g, b, Quantity_TOC_sRGB), alpha);
}

inline TopLoc_Location at(double x, double y = 0.0, double z = 0.0) {
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
inline Handle(TDocStd_Document) makeAssembly() {
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

inline bool writeStep(const Handle(TDocStd_Document) & doc, const std::string& path) {
    STEPCAFControl_Writer writer;
    writer.SetColorMode(true);
    writer.SetNameMode(true);
    return writer.Transfer(doc, STEPControl_AsIs) && writer.Write(path.c_str()) == IFSelect_RetDone;
}

// A STEP file read into a new document, with its PMI and saved views; null when it cannot be.
inline Handle(TDocStd_Document) readStepDocument(const std::string& path) {
    Doc d;
    STEPCAFControl_Reader reader;
    // Not on by default in a fresh process: each test may run in its own.
    reader.SetGDTMode(true);
    reader.SetViewMode(true);
    const bool ok = reader.ReadFile(path.c_str()) == IFSelect_RetDone && reader.Transfer(d.doc);
    return ok ? d.doc : Handle(TDocStd_Document)();
}

// Every mesh well formed: a unit normal per vertex, indices in range, parents first.
inline void expectWellFormed(const ModelData& model) {
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

inline ModelData importDoc(const Handle(TDocStd_Document) & doc,
                           const ModelReader::Options& options = ModelReader::Options()) {
    ModelData model;
    std::string error;
    EXPECT_TRUE(qrnimport::XcafImporter::import(doc, options, model, error)) << error;
    expectWellFormed(model);
    return model;
}

inline ModelData readFile(const std::string& path) {
    ModelData model;
    std::string error;
    EXPECT_TRUE(ModelReader::read(path, model, error)) << error;
    expectWellFormed(model);
    return model;
}

template <class T>
inline int findNamed(const std::vector<T>& list, const std::wstring& name) {
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i].name == name)
            return static_cast<int>(i);
    return -1;
}

// The name a label carries; empty where it has none.
inline std::wstring nameOf(const TDF_Label& label) {
    std::wstring name;
    qrnimport::OcctUtils::labelName(label, name);
    return name;
}

// The levels below the root of the deepest node.
inline int depthOf(const ModelData& model) {
    int deepest = 0;
    for (const auto& node : model.nodes) {
        int d = 0;
        for (int p = node.parent; p >= 0; p = model.nodes[static_cast<std::size_t>(p)].parent)
            ++d;
        deepest = std::max(deepest, d);
    }
    return deepest;
}

inline const ModelData::Part& partNamed(const ModelData& model, const std::wstring& name) {
    return model.parts.at(static_cast<std::size_t>(findNamed(model.parts, name)));
}

inline std::size_t partTriangles(const ModelData::Part& part) {
    std::size_t n = 0;
    for (const auto& m : part.meshes)
        n += m.triangleCount();
    return n;
}

inline bool near(const Vec3& a, const Vec3& b, float eps = 1e-3f) {
    return qrnmath::nearlyEqual(a, b, eps);
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

// A unit cube as a bare triangulation: 8 nodes, the first of its 12 triangles, wound outwards
// or inwards.
inline Handle(Poly_Triangulation) cubeMesh(int triangles = 12, bool inwards = false) {
    Handle(Poly_Triangulation) tri = new Poly_Triangulation(8, triangles, false);
    for (int i = 0; i < 8; ++i)
        tri->SetNode(i + 1, gp_Pnt(i & 1, (i >> 1) & 1, (i >> 2) & 1));
    const int faces[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                             {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    int t = 1;
    for (const auto& f : faces)
        for (int k = 1; k <= 2 && t <= triangles; ++k, ++t)
            tri->SetTriangle(t, inwards ? Poly_Triangle(f[0] + 1, f[k + 1] + 1, f[k] + 1)
                                        : Poly_Triangle(f[0] + 1, f[k] + 1, f[k + 1] + 1));
    return tri;
}

// A file of the shared models folder, and whether the folder is there.
inline std::string sharedModel(const std::string& name) {
    return (fs::path(QRN_SHARED_MODELS) / name).string();
}
inline bool sharedModelsThere() {
    return fs::is_directory(QRN_SHARED_MODELS);
}
#define SKIP_WITHOUT_SHARED_MODELS()                                                               \
    if (!importtest::sharedModelsThere())                                                          \
    GTEST_SKIP() << "*** SHARED MODELS MISSING: " << QRN_SHARED_MODELS << " not found ***"

} // namespace importtest
