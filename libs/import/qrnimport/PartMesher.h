#pragma once

#include "qrnimport/ProgressBridge.h"
#include "qrnsg/Mesh.h"

#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace qrnimport {

// Tessellates parts and turns a face's triangulation into mesh triangles with normals.
class PartMesher {
public:
    struct Failure {
        std::size_t shape; // index into the shapes given
        std::wstring message;
    };

    // Meshes each shape with the deflections. Shapes that share no face or edge are meshed at
    // once, each by one thread (`threads`, 0: one per core); one that shares one with a shape
    // before it waits for the rest, since meshes are stored there. `progress` hears the
    // percentage done, on the calling thread only. Past the deadline the meshers stop at their
    // next step and the parts not started are left out.
    static std::vector<Failure>
    mesh(const std::vector<TopoDS_Shape>& shapes, double deflection, double angularDeflection,
         unsigned int threads, const std::function<void(int)>& progress,
         ProgressBridge::Deadline deadline = ProgressBridge::Deadline::max());
    // Appends a face's triangles to the mesh; returns the triangles per face entity appended:
    // one for a face with a surface, one per smooth region for bare triangles, which have no
    // faces of their own to tell them apart.
    static std::vector<unsigned int> appendFace(const TopoDS_Face& face, qrnsg::Mesh& mesh);
};

} // namespace qrnimport
