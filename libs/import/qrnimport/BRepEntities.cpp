#include "qrnimport/BRepEntities.h"

#include "qrnimport/OcctUtils.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_Failure.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedDataMapOfShapeListOfShape.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>

namespace qrnimport {

using qrnmath::Vec3;
using qrnsg::PartEntities;

PartEntities::Surface BRepEntities::surface(const TopoDS_Face& face) {
    PartEntities::Surface out;
    TopLoc_Location loc;
    if (BRep_Tool::Surface(face, loc).IsNull())
        return out;
    out.type = PartEntities::Surface::OTHER;
    const BRepAdaptor_Surface s(face, Standard_False);
    const auto axis = [&out](const gp_Ax1& a) {
        out.origin = OcctUtils::toVec3(a.Location().XYZ());
        out.axis = OcctUtils::toVec3(a.Direction().XYZ());
    };
    switch (s.GetType()) {
    case GeomAbs_Plane: {
        const gp_Ax3 p = s.Plane().Position();
        // The parametric normal flips with the face and with a mirroring placement.
        gp_Dir n = p.XDirection().Crossed(p.YDirection());
        if ((face.Orientation() == TopAbs_REVERSED) !=
            (loc.Transformation().VectorialPart().Determinant() < 0.0))
            n.Reverse();
        out.type = PartEntities::Surface::PLANE;
        out.origin = OcctUtils::toVec3(p.Location().XYZ());
        out.axis = OcctUtils::toVec3(n.XYZ());
        break;
    }
    case GeomAbs_Cylinder:
        out.type = PartEntities::Surface::CYLINDER;
        axis(s.Cylinder().Axis());
        out.radius = static_cast<float>(s.Cylinder().Radius());
        break;
    case GeomAbs_Cone:
        out.type = PartEntities::Surface::CONE;
        axis(s.Cone().Axis());
        out.radius = static_cast<float>(s.Cone().RefRadius());
        out.halfAngle = static_cast<float>(s.Cone().SemiAngle());
        break;
    case GeomAbs_Sphere:
        out.type = PartEntities::Surface::SPHERE;
        axis(s.Sphere().Position().Axis());
        out.radius = static_cast<float>(s.Sphere().Radius());
        break;
    case GeomAbs_Torus:
        out.type = PartEntities::Surface::TORUS;
        axis(s.Torus().Axis());
        out.radius = static_cast<float>(s.Torus().MajorRadius());
        out.minorRadius = static_cast<float>(s.Torus().MinorRadius());
        break;
    default:
        break;
    }
    return out;
}

PartEntities::Curve BRepEntities::curve(const TopoDS_Edge& edge, const std::vector<Vec3>& strip) {
    PartEntities::Curve out;
    for (std::size_t i = 1; i < strip.size(); ++i)
        out.length += strip[i].distance(strip[i - 1]);
    if (!BRep_Tool::IsGeometric(edge))
        return out;
    const BRepAdaptor_Curve c(edge);
    out.type = PartEntities::Curve::OTHER;
    out.length = static_cast<float>(GCPnts_AbscissaPoint::Length(c));
    if (c.GetType() == GeomAbs_Line) {
        out.type = PartEntities::Curve::LINE;
        out.origin = OcctUtils::toVec3(c.Value(c.FirstParameter()).XYZ());
        out.axis = OcctUtils::toVec3(c.Line().Direction().XYZ());
    } else if (c.GetType() == GeomAbs_Circle) {
        const gp_Circ circle = c.Circle();
        const bool full = c.LastParameter() - c.FirstParameter() >= c.Period() - 1e-9;
        out.type = full ? PartEntities::Curve::CIRCLE : PartEntities::Curve::ARC;
        out.origin = OcctUtils::toVec3(circle.Location().XYZ());
        out.axis = OcctUtils::toVec3(circle.Axis().Direction().XYZ());
        out.radius = static_cast<float>(circle.Radius());
    }
    return out;
}

BRepEntities::Topology BRepEntities::topology(const TopoDS_Shape& shape, const FaceIndex& faceIndex,
                                              bool withEdges, double angularDeflection,
                                              double deflection) {
    Topology info;
    TopTools_IndexedMapOfShape vertices;
    TopExp::MapShapes(shape, TopAbs_VERTEX, vertices);
    for (int v = 1; v <= vertices.Extent(); ++v)
        info.vertices.push_back(
            OcctUtils::toVec3(BRep_Tool::Pnt(TopoDS::Vertex(vertices(v))).XYZ()));
    if (!withEdges)
        return info;
    qrnsg::Polyline& out = info.edges;
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    TopTools_IndexedDataMapOfShapeListOfShape faces;
    TopExp::MapShapesAndAncestors(shape, TopAbs_EDGE, TopAbs_FACE, faces);
    const double angular = angularDeflection > 0.0 ? angularDeflection : 0.5;
    std::vector<Vec3> strip;
    for (int e = 1; e <= edges.Extent(); ++e) {
        const TopoDS_Edge& edge = TopoDS::Edge(edges(e));
        strip.clear();
        try {
            if (BRep_Tool::Degenerated(edge))
                continue;
            TopLoc_Location loc;
            const Handle(Poly_Polygon3D)& polygon = BRep_Tool::Polygon3D(edge, loc);
            if (!polygon.IsNull() && polygon->NbNodes() >= 2) {
                const gp_Trsf trsf = loc.Transformation();
                for (int i = 1; i <= polygon->NbNodes(); ++i)
                    strip.push_back(
                        OcctUtils::toVec3(polygon->Nodes().Value(i).Transformed(trsf).XYZ()));
            }
            if (strip.empty())
                if (const TopTools_ListOfShape* owners = faces.Seek(edge))
                    for (TopTools_ListOfShape::Iterator f(*owners); f.More() && strip.empty();
                         f.Next()) {
                        TopLoc_Location faceLoc;
                        const Handle(Poly_Triangulation)& tri =
                            BRep_Tool::Triangulation(TopoDS::Face(f.Value()), faceLoc);
                        if (tri.IsNull())
                            continue;
                        const Handle(Poly_PolygonOnTriangulation)& onTri =
                            BRep_Tool::PolygonOnTriangulation(edge, tri, faceLoc);
                        if (onTri.IsNull())
                            continue;
                        const gp_Trsf trsf = faceLoc.Transformation();
                        for (int i = 1; i <= onTri->NbNodes(); ++i) {
                            const int node = onTri->Node(i);
                            if (node >= 1 && node <= tri->NbNodes())
                                strip.push_back(
                                    OcctUtils::toVec3(tri->Node(node).Transformed(trsf).XYZ()));
                        }
                    }
            if (strip.empty() && BRep_Tool::IsGeometric(edge)) {
                BRepAdaptor_Curve adaptor(edge);
                GCPnts_TangentialDeflection points(adaptor, angular, deflection);
                for (int i = 1; i <= points.NbPoints(); ++i)
                    strip.push_back(OcctUtils::toVec3(points.Value(i).XYZ()));
            }
        } catch (const Standard_Failure&) {
            strip.clear(); // an edge without usable geometry is left out
        }
        if (strip.size() < 2)
            continue;
        PartEntities::Edge entity;
        entity.strip = static_cast<unsigned int>(out.stripCount());
        out.addStrip(strip);
        try {
            entity.curve = curve(edge, strip);
        } catch (const Standard_Failure&) {
            entity.curve = PartEntities::Curve(); // drawn, but of no known curve
        }
        TopoDS_Vertex first, last;
        TopExp::Vertices(edge, first, last);
        entity.vertices[0] = first.IsNull() ? -1 : vertices.FindIndex(first) - 1;
        entity.vertices[1] = last.IsNull() ? -1 : vertices.FindIndex(last) - 1;
        int bounded = 0;
        if (const TopTools_ListOfShape* owners = faces.Seek(edge))
            for (TopTools_ListOfShape::Iterator f(*owners); f.More() && bounded < 2; f.Next())
                if (const int* index = faceIndex.Seek(f.Value()))
                    if (bounded == 0 || entity.faces[0] != *index)
                        entity.faces[bounded++] = *index;
        info.edgeEntities.push_back(entity);
    }
    return info;
}

} // namespace qrnimport
