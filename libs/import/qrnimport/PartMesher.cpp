#include "qrnimport/PartMesher.h"

#include "qrnimport/MeshNormals.h"
#include "qrnimport/OcctUtils.h"
#include "qrnplatform/Text.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <GeomLProp_SLProps.hxx>
#include <Geom_Surface.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <unordered_set>

namespace qrnimport {

using qrnmath::Vec3;

std::vector<PartMesher::Failure> PartMesher::mesh(const std::vector<TopoDS_Shape>& shapes,
                                                  double deflection, double angularDeflection,
                                                  unsigned int threadsAsked,
                                                  const std::function<void(int)>& progress,
                                                  ProgressBridge::Deadline deadline) {
    std::vector<std::size_t> together, after;
    std::unordered_set<const void*> seen;
    for (std::size_t s = 0; s < shapes.size(); ++s) {
        bool shares = false;
        std::vector<const void*> own;
        for (TopAbs_ShapeEnum kind : {TopAbs_FACE, TopAbs_EDGE})
            for (TopExp_Explorer e(shapes[s], kind); e.More(); e.Next()) {
                own.push_back(e.Current().TShape().get());
                shares = shares || seen.count(own.back()) > 0;
            }
        seen.insert(own.begin(), own.end());
        (shares ? after : together).push_back(s);
    }
    const std::size_t todo = shapes.size();
    std::vector<Failure> failures;
    if (todo == 0)
        return failures;
    unsigned int threads = threadsAsked;
    if (threads == 0)
        threads = std::max(1u, std::thread::hardware_concurrency());
    threads = static_cast<unsigned int>(std::min<std::size_t>(threads, together.size()));
    const auto tell = [&](int percent) {
        if (progress)
            progress(percent);
    };
    tell(0);
    std::atomic<std::size_t> next{0}, done{0};
    std::mutex failuresLock;
    // One part alone may spread over the cores itself; with one thread asked, never.
    const bool inParallel = threadsAsked != 1 && threads <= 1;
    IMeshTools_Parameters parameters;
    parameters.Deflection = deflection;
    parameters.Angle = angularDeflection;
    parameters.Relative = Standard_False;
    parameters.InParallel = inParallel ? Standard_True : Standard_False;
    auto meshOne = [&](std::size_t s) {
        try {
            if (!ProgressBridge::passed(deadline)) {
                Handle(ProgressBridge) watch =
                    new ProgressBridge(nullptr, std::wstring(), 0, 100, deadline);
                BRepMesh_IncrementalMesh mesher(shapes[s], parameters, watch->Start());
            }
        } catch (const Standard_Failure& e) {
            std::lock_guard<std::mutex> lock(failuresLock);
            failures.push_back({s, qrnplatform::Text::fromUtf8(e.GetMessageString())});
        }
        ++done;
    };
    std::vector<std::thread> workers;
    for (unsigned int t = 1; t < threads; ++t)
        workers.emplace_back([&] {
            for (std::size_t i = next++; i < together.size(); i = next++)
                meshOne(together[i]);
        });
    // This thread meshes too, and tells the progress, which only it may.
    for (std::size_t i = next++; i < together.size(); i = next++) {
        meshOne(together[i]);
        tell(static_cast<int>(done * 100 / todo));
    }
    for (std::thread& w : workers)
        w.join();
    for (std::size_t s : after) {
        meshOne(s);
        tell(static_cast<int>(done * 100 / todo));
    }
    std::sort(failures.begin(), failures.end(),
              [](const Failure& a, const Failure& b) { return a.shape < b.shape; });
    return failures;
}

std::vector<unsigned int> PartMesher::appendFace(const TopoDS_Face& face, qrnsg::Mesh& mesh) {
    TopLoc_Location loc;
    const Handle(Poly_Triangulation)& tri = BRep_Tool::Triangulation(face, loc);
    if (tri.IsNull() || tri->NbNodes() < 3 || tri->NbTriangles() < 1)
        return {};
    const gp_Trsf trsf = loc.Transformation();
    const bool reversed = face.Orientation() == TopAbs_REVERSED;
    const bool mirrored = trsf.VectorialPart().Determinant() < 0.0;
    const int nodes = tri->NbNodes();

    std::vector<Vec3> points(static_cast<std::size_t>(nodes));
    for (int i = 1; i <= nodes; ++i)
        points[static_cast<std::size_t>(i - 1)] =
            OcctUtils::toVec3(tri->Node(i).Transformed(trsf).XYZ());
    std::vector<unsigned int> indices;
    indices.reserve(static_cast<std::size_t>(tri->NbTriangles()) * 3);
    for (int t = 1; t <= tri->NbTriangles(); ++t) {
        int a = 0, b = 0, c = 0;
        tri->Triangle(t).Get(a, b, c);
        if (a < 1 || b < 1 || c < 1 || a > nodes || b > nodes || c > nodes)
            continue;
        if (reversed != mirrored)
            std::swap(b, c);
        indices.push_back(static_cast<unsigned int>(a - 1));
        indices.push_back(static_cast<unsigned int>(b - 1));
        indices.push_back(static_cast<unsigned int>(c - 1));
    }
    if (indices.empty())
        return {};
    TopLoc_Location surfaceLoc;
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face, surfaceLoc);
    std::vector<unsigned int> sizes{static_cast<unsigned int>(indices.size() / 3)};
    if (surface.IsNull()) {
        MeshNormals::Regions regions = MeshNormals::regions(points, indices);
        indices = std::move(regions.indices);
        sizes = std::move(regions.sizes);
    }

    std::vector<Vec3> normals;
    if (tri->HasNormals()) {
        normals.resize(points.size());
        for (int i = 1; i <= nodes; ++i) {
            gp_Dir n = tri->Normal(i).Transformed(trsf);
            if (reversed)
                n.Reverse();
            normals[static_cast<std::size_t>(i - 1)] = OcctUtils::toVec3(n.XYZ());
        }
    } else {
        if (surface.IsNull() || !tri->HasUVNodes()) {
            // Only triangles (a mesh format): sharp edges stay sharp.
            MeshNormals::appendWithCreases(points, indices, mesh);
            return sizes;
        }
        // From the surface, where it has a normal; else from the triangles around.
        normals = MeshNormals::smooth(points, indices);
        const gp_Trsf surfaceTrsf = surfaceLoc.Transformation();
        GeomLProp_SLProps props(surface, 1, Precision::Confusion());
        for (int i = 1; i <= nodes; ++i) {
            const gp_Pnt2d uv = tri->UVNode(i);
            props.SetParameters(uv.X(), uv.Y());
            if (!props.IsNormalDefined())
                continue;
            gp_Dir n = props.Normal().Transformed(surfaceTrsf);
            if (reversed)
                n.Reverse();
            normals[static_cast<std::size_t>(i - 1)] = OcctUtils::toVec3(n.XYZ());
        }
    }
    const auto base = static_cast<unsigned int>(mesh.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), points.begin(), points.end());
    mesh.normals.insert(mesh.normals.end(), normals.begin(), normals.end());
    for (unsigned int i : indices)
        mesh.indices.push_back(base + i);
    return sizes;
}

} // namespace qrnimport
