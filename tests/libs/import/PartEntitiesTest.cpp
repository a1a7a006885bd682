// Faces, edges and vertices to point at: each part keeps its B-rep's topology, and every entity
// lies where its geometry is drawn.
#include "ImportTestSupport.h"

#include "qrnimport/DemoDocument.h"
#include "qrnimport/MeshNormals.h"

#include <BRep_Tool.hxx>
#include <RWStl.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <cmath>
#include <set>
#include <utility>

namespace {

using namespace importtest;

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
        const int part = findNamed(model.parts, nameOf(label));
        if (!XCAFDoc_ShapeTool::IsSimpleShape(label) || part < 0 || !checked.insert(part).second)
            continue;
        SCOPED_TRACE(part);
        TopTools_IndexedMapOfShape faces, edges, vertices;
        const TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(label);
        TopExp::MapShapes(shape, TopAbs_FACE, faces);
        TopExp::MapShapes(shape, TopAbs_EDGE, edges);
        TopExp::MapShapes(shape, TopAbs_VERTEX, vertices);
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
    SKIP_WITHOUT_SHARED_MODELS();
    // AS1's round faces are B-splines.
    const std::pair<const char*, std::set<int>> models[] = {
        {"as1-oc-214-mat.stp", {Surface::PLANE, Surface::OTHER}},
        {"nist_ctc_01_asme1_ap242-e1.stp", {Surface::PLANE, Surface::CYLINDER, Surface::CONE}}};
    for (const auto& [file, surfaces] : models) {
        SCOPED_TRACE(file);
        const Handle(TDocStd_Document) doc = readStepDocument(sharedModel(file));
        ASSERT_FALSE(doc.IsNull());
        std::set<int> kinds;
        for (const auto& part : expectPartsMatchTheirShapes(doc).parts)
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
    for (const auto& [name, mesh] : {std::make_pair("open.stl", cubeMesh(11)),
                                     std::make_pair("inside.stl", cubeMesh(12, true))}) {
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
