#include "qrnimport/PmiGeometry.h"

#include "qrnimport/OcctUtils.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <Poly_Polygon3D.hxx>
#include <Precision.hxx>
#include <TDF_LabelSequence.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <algorithm>
#include <cmath>

namespace qrnimport {

namespace {

using Sources = PmiGeometry::Sources;
using qrnmath::Vec3;

std::vector<gp_Pnt> edgePoints(const TopoDS_Edge& edge, double deflection) {
    std::vector<gp_Pnt> points;
    if (BRep_Tool::Degenerated(edge))
        return points;
    TopLoc_Location location;
    double first = 0.0, last = 0.0;
    if (!BRep_Tool::Curve(edge, location, first, last).IsNull()) {
        if (Precision::IsInfinite(first) || Precision::IsInfinite(last))
            return points;
        BRepAdaptor_Curve curve(edge);
        if (curve.GetType() == GeomAbs_Line) {
            points.push_back(curve.Value(curve.FirstParameter()));
            points.push_back(curve.Value(curve.LastParameter()));
        } else {
            GCPnts_TangentialDeflection sampler(curve, 0.1, deflection, 2);
            for (int i = 1; i <= sampler.NbPoints(); ++i)
                points.push_back(sampler.Value(i));
        }
    } else {
        // Presentations read from tessellated data may hold polygons only.
        Handle(Poly_Polygon3D) polygon = BRep_Tool::Polygon3D(edge, location);
        if (polygon.IsNull())
            return points;
        const gp_Trsf& trsf = location.Transformation();
        for (int i = polygon->Nodes().Lower(); i <= polygon->Nodes().Upper(); ++i)
            points.push_back(polygon->Nodes().Value(i).Transformed(trsf));
    }
    if (edge.Orientation() == TopAbs_REVERSED)
        std::reverse(points.begin(), points.end());
    return points;
}

void toStrip(const std::vector<gp_Pnt>& points, qrnsg::Polyline& lines) {
    std::vector<Vec3> strip;
    strip.reserve(points.size());
    for (const auto& p : points)
        strip.push_back(OcctUtils::toVec3(p.XYZ()));
    lines.addStrip(strip);
}

gp_Pnt anchor(const Sources& s) {
    if (s.hasTextPoint)
        return s.textPoint;
    gp_Pnt p;
    if (!s.presentation.IsNull()) {
        Bnd_Box box;
        BRepBndLib::Add(s.presentation, box);
        if (PmiGeometry::centre(box, p))
            return p;
    }
    if (!s.connections.empty()) {
        gp_XYZ sum;
        for (const auto& c : s.connections)
            sum += c.XYZ();
        return gp_Pnt(sum / static_cast<double>(s.connections.size()));
    }
    if (PmiGeometry::centre(s.references, p))
        return p;
    return s.hasPlane ? s.plane.Location() : gp_Pnt();
}

// The point on the model that an item speaks of: its first connection point, else the point of
// its geometry nearest that geometry's middle; false when it has neither.
bool target(const Sources& s, gp_Pnt& p) {
    if (!s.connections.empty()) {
        p = s.connections.front();
        return true;
    }
    gp_Pnt centre;
    if (s.referenced.IsNull() || !PmiGeometry::centre(s.references, centre))
        return false;
    p = centre;
    BRepExtrema_DistShapeShape nearest(BRepBuilderAPI_MakeVertex(centre).Vertex(), s.referenced);
    if (nearest.IsDone() && nearest.NbSolution() > 0)
        p = nearest.PointOnShape2(1);
    return true;
}

} // namespace

void PmiGeometry::addPresentation(const TopoDS_Shape& shape, qrnsg::Polyline& lines) {
    if (shape.IsNull())
        return;
    Bnd_Box box;
    BRepBndLib::Add(shape, box);
    const double size = box.IsVoid() ? 1.0 : std::sqrt(box.SquareExtent());
    const double deflection = std::max(size * 1e-3, Precision::Confusion());
    const double joinTolerance = std::max(size * 1e-7, Precision::Confusion());
    std::vector<gp_Pnt> strip;
    for (TopExp_Explorer it(shape, TopAbs_EDGE); it.More(); it.Next()) {
        std::vector<gp_Pnt> points = edgePoints(TopoDS::Edge(it.Current()), deflection);
        if (points.size() < 2)
            continue;
        if (!strip.empty() && strip.back().Distance(points.front()) <= joinTolerance) {
            strip.insert(strip.end(), points.begin() + 1, points.end());
        } else {
            toStrip(strip, lines);
            strip = std::move(points);
        }
    }
    toStrip(strip, lines);
}

bool PmiGeometry::centre(const Bnd_Box& box, gp_Pnt& centre) {
    if (box.IsVoid())
        return false;
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    centre = gp_Pnt((x0 + x1) * 0.5, (y0 + y1) * 0.5, (z0 + z1) * 0.5);
    return true;
}

void PmiGeometry::addReferences(const Handle(XCAFDoc_DimTolTool) & tool, const TDF_Label& label,
                                Sources& sources) {
    TDF_LabelSequence first, second;
    tool->GetRefShapeLabel(label, first, second);
    BRep_Builder builder;
    for (const TDF_LabelSequence* list : {&first, &second})
        for (int i = 1; i <= list->Length(); ++i) {
            TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(list->Value(i));
            if (shape.IsNull())
                continue;
            BRepBndLib::Add(shape, sources.references);
            for (TopoDS_Compound* c :
                 {&sources.referenced, list == &first ? &sources.first : &sources.second}) {
                if (c->IsNull())
                    builder.MakeCompound(*c);
                builder.Add(*c, shape);
            }
        }
}

bool PmiGeometry::measure(const Sources& sources, bool radius, double& value, bool& round) {
    round = false;
    if (sources.referenced.IsNull())
        return false;
    for (TopExp_Explorer it(sources.referenced, TopAbs_FACE); it.More(); it.Next()) {
        BRepAdaptor_Surface surface(TopoDS::Face(it.Current()));
        if (surface.GetType() == GeomAbs_Cylinder) {
            value = surface.Cylinder().Radius() * (radius ? 1.0 : 2.0);
            round = true;
            return true;
        }
    }
    if (sources.first.IsNull() || sources.second.IsNull())
        return false;
    BRepExtrema_DistShapeShape distance(sources.first, sources.second);
    if (!distance.IsDone() || distance.NbSolution() == 0)
        return false;
    value = distance.Value();
    return true;
}

void PmiGeometry::addText(ModelData::PmiItem& item, const std::wstring& text,
                          const Sources& sources) {
    if (text.empty())
        return;
    qrnsg::Text t;
    t.text = text;
    t.position = OcctUtils::toVec3(anchor(sources).XYZ());
    if (sources.hasPlane) {
        t.direction = OcctUtils::toVec3(sources.plane.XDirection().XYZ());
        t.up = OcctUtils::toVec3(sources.plane.YDirection().XYZ());
        item.hasPlane = true;
    }
    // A graphical presentation shows where its text goes and draws its own leaders.
    item.textPlaced = sources.hasTextPoint || !sources.presentation.IsNull();
    gp_Pnt p;
    if (sources.presentation.IsNull() && target(sources, p)) {
        item.hasTarget = true;
        item.target = OcctUtils::toVec3(p.XYZ());
        if (!item.textPlaced)
            t.position = item.target;
    }
    item.texts.push_back(std::move(t));
}

Bnd_Box PmiGeometry::modelBox(const Handle(TDocStd_Document) & document, const ModelData& model) {
    Bnd_Box box;
    const qrnsg::BBox b = model.bbox();
    if (!b.isEmpty()) {
        box.Update(b.min()[0], b.min()[1], b.min()[2], b.max()[0], b.max()[1], b.max()[2]);
        return box;
    }
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
    TDF_LabelSequence free;
    shapes->GetFreeShapes(free);
    for (int i = 1; i <= free.Length(); ++i) {
        TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(free.Value(i));
        if (!shape.IsNull())
            BRepBndLib::Add(shape, box);
    }
    return box;
}

} // namespace qrnimport
