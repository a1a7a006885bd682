#pragma once

#include "qrnsg/PartEntities.h"
#include "qrnsg/Polyline.h"

#include <NCollection_DataMap.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>

#include <vector>

namespace qrnimport {

// What a part's B-rep says of its entities: the analytic surface of a face and curve of an
// edge, and the part's vertices and edges (as strips to draw, with their curves, end vertices
// and the faces they bound).
class BRepEntities {
public:
    // Kept faces by their index among the part's face entities.
    using FaceIndex = NCollection_DataMap<TopoDS_Shape, int, TopTools_ShapeMapHasher>;

    struct Topology {
        qrnsg::Polyline edges; // a strip per edge
        std::vector<qrnsg::PartEntities::Edge> edgeEntities;
        std::vector<qrnmath::Vec3> vertices;
    };

    // The analytic surface under a face, in the frame of its triangulation, facing outwards.
    static qrnsg::PartEntities::Surface surface(const TopoDS_Face& face);
    // The edge's curve in the part's frame; from the strip drawn where it has none.
    static qrnsg::PartEntities::Curve curve(const TopoDS_Edge& edge,
                                            const std::vector<qrnmath::Vec3>& strip);
    // The shape's vertices, and with edges asked for, one strip per edge: from the edge's own
    // polygon, the polygon on a face's triangulation, or else its curve discretised with the
    // meshing tolerances.
    static Topology topology(const TopoDS_Shape& shape, const FaceIndex& faces, bool edges,
                             double angularDeflection, double deflection);
};

} // namespace qrnimport
