#include "qrnimport/DemoDocument.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <GProp_GProps.hxx>
#include <Interface_Static.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <STEPControl_Controller.hxx>
#include <ShapeUpgrade_UnifySameDomain.hxx>
#include <Standard_Failure.hxx>
#include <TCollection_ExtendedString.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <cmath>
#include <functional>
#include <stdexcept>
#include <vector>

namespace qrnimport {

namespace {

constexpr double kPi = 3.14159265358979323846;

// Dimensions shared by parts that fit together.
constexpr double kPlateThickness = 12.0;
constexpr double kShaftRadius = 10.0;
constexpr double kAxisHeight = 40.0; // shaft axis above the bearing block's base
constexpr double kBoltHole = 9.0;
constexpr double kFootThickness = 12.0; // of the bearing block
constexpr double kBracketFoot = 8.0;

// Names with the diameter sign, which is not ASCII, as drawings write them.
const char* const kBlockName = u8"Lagerbock \u00D820";
const char* const kShaftName = u8"Shaft \u00D820";

void check(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(std::string("demo assembly: ") + what + " failed");
}

TopoDS_Shape box(double x0, double y0, double z0, double x1, double y1, double z1) {
    return BRepPrimAPI_MakeBox(gp_Pnt(x0, y0, z0), gp_Pnt(x1, y1, z1)).Shape();
}

TopoDS_Shape cylinder(const gp_Pnt& base, const gp_Dir& axis, double radius, double length) {
    return BRepPrimAPI_MakeCylinder(gp_Ax2(base, axis), radius, length).Shape();
}

TopoDS_Shape cut(const TopoDS_Shape& shape, const std::vector<TopoDS_Shape>& tools) {
    TopTools_ListOfShape args, toolList;
    args.Append(shape);
    for (const auto& t : tools)
        toolList.Append(t);
    BRepAlgoAPI_Cut op;
    op.SetArguments(args);
    op.SetTools(toolList);
    op.Build();
    check(op.IsDone(), "cut");
    return op.Shape();
}

// Fuses and merges the faces that became one plane or cylinder, so no seams of the
// construction show as edges.
TopoDS_Shape fuse(const TopoDS_Shape& a, const std::vector<TopoDS_Shape>& others) {
    TopTools_ListOfShape args, toolList;
    args.Append(a);
    for (const auto& t : others)
        toolList.Append(t);
    BRepAlgoAPI_Fuse op;
    op.SetArguments(args);
    op.SetTools(toolList);
    op.Build();
    check(op.IsDone(), "fuse");
    ShapeUpgrade_UnifySameDomain unify(op.Shape());
    unify.Build();
    return unify.Shape();
}

// The straight edges whose midpoint and direction satisfy the predicate.
using EdgeTest = std::function<bool(const gp_Pnt& mid, const gp_Dir& dir)>;

TopoDS_Shape fillet(const TopoDS_Shape& shape, double radius, const EdgeTest& test) {
    BRepFilletAPI_MakeFillet op(shape);
    int count = 0;
    for (TopExp_Explorer e(shape, TopAbs_EDGE); e.More(); e.Next()) {
        const TopoDS_Edge& edge = TopoDS::Edge(e.Current());
        BRepAdaptor_Curve curve(edge);
        if (curve.GetType() != GeomAbs_Line)
            continue;
        gp_Pnt mid = curve.Value(0.5 * (curve.FirstParameter() + curve.LastParameter()));
        if (test(mid, curve.Line().Direction())) {
            op.Add(radius, edge);
            ++count;
        }
    }
    check(count > 0, "edge selection for a fillet");
    op.Build();
    check(op.IsDone(), "fillet");
    return op.Shape();
}

bool near(double a, double b) {
    return std::abs(a - b) < 1e-6;
}
bool along(const gp_Dir& d, const gp_Dir& axis) {
    return d.IsParallel(axis, 1e-6);
}

// A closed polygon in a plane x = const, extruded along +X.
TopoDS_Shape prismX(const std::vector<gp_Pnt>& points, double length) {
    BRepBuilderAPI_MakePolygon polygon;
    for (const auto& p : points)
        polygon.Add(p);
    polygon.Close();
    check(polygon.IsDone(), "profile");
    BRepBuilderAPI_MakeFace face(polygon.Wire(), Standard_True);
    check(face.IsDone(), "profile face");
    return BRepPrimAPI_MakePrism(face.Face(), gp_Vec(length, 0, 0)).Shape();
}

// Origin at the centre of the top face, which the units are mounted on.
TopoDS_Shape basePlate() {
    const double w = 240, d = 160;
    TopoDS_Shape plate = box(-w / 2, -d / 2, -kPlateThickness, w / 2, d / 2, 0);
    plate =
        fillet(plate, 12.0, [](const gp_Pnt&, const gp_Dir& dir) { return along(dir, gp::DZ()); });
    std::vector<TopoDS_Shape> holes;
    for (double x : {-105.0, 105.0})
        for (double y : {-65.0, 65.0})
            holes.push_back(
                cylinder(gp_Pnt(x, y, -kPlateThickness - 1), gp::DZ(), 5.5, kPlateThickness + 2));
    return cut(plate, holes);
}

// A pillow block: a foot with two bolt holes, a pedestal rounded over the Ø20 bore. Its
// origin is the centre of the bore, the base kAxisHeight below.
TopoDS_Shape bearingBlock() {
    const double base = -kAxisHeight;
    TopoDS_Shape foot = box(-15, -38, base, 15, 38, base + kFootThickness);
    foot = fillet(foot, 5.0, [](const gp_Pnt&, const gp_Dir& dir) { return along(dir, gp::DZ()); });
    TopoDS_Shape pedestal = box(-15, -20, base, 15, 20, 0);
    TopoDS_Shape crown = cylinder(gp_Pnt(-15, 0, 0), gp::DX(), 20, 30);
    TopoDS_Shape block = fuse(foot, {pedestal, crown});
    const double holeDepth = kFootThickness + 2;
    return cut(block, {cylinder(gp_Pnt(-20, 0, 0), gp::DX(), kShaftRadius, 40),
                       cylinder(gp_Pnt(0, -29, base - 1), gp::DZ(), kBoltHole / 2, holeDepth),
                       cylinder(gp_Pnt(0, 29, base - 1), gp::DZ(), kBoltHole / 2, holeDepth)});
}

// A hexagon head bolt; its origin is under the head, the shank below.
TopoDS_Shape bolt() {
    const double acrossCorners = 13.0 / std::cos(kPi / 6.0);
    BRepBuilderAPI_MakePolygon hexagon;
    for (int i = 0; i < 6; ++i) {
        double a = kPi / 3.0 * i;
        hexagon.Add(gp_Pnt(acrossCorners / 2 * std::cos(a), acrossCorners / 2 * std::sin(a), 0));
    }
    hexagon.Close();
    check(hexagon.IsDone(), "hexagon");
    BRepBuilderAPI_MakeFace face(hexagon.Wire(), Standard_True);
    TopoDS_Shape head = BRepPrimAPI_MakePrism(face.Face(), gp_Vec(0, 0, 5.5)).Shape();
    TopoDS_Shape shank = cylinder(gp_Pnt(0, 0, -16), gp::DZ(), 4.0, 16);
    return fuse(head, {shank});
}

// A Ø20 shaft along +X from its origin.
TopoDS_Shape shaft() {
    return cylinder(gp_Pnt(0, 0, 0), gp::DX(), kShaftRadius, 170);
}

// The flat end face of the shaft away from the gear.
TopoDS_Face shaftFreeEnd(const TopoDS_Shape& shaft) {
    for (TopExp_Explorer e(shaft, TopAbs_FACE); e.More(); e.Next()) {
        GProp_GProps props;
        BRepGProp::SurfaceProperties(e.Current(), props);
        if (near(props.CentreOfMass().X(), 170.0))
            return TopoDS::Face(e.Current());
    }
    throw std::runtime_error("demo assembly: shaft end face not found");
}

// A spur gear with straight-flanked teeth, a bore and lightening holes; axis along X
// through its origin, centred on it.
TopoDS_Shape gear() {
    const int teeth = 24;
    const double root = 31, tip = 36, width = 16;
    const double pitch = 2 * kPi / teeth;
    std::vector<gp_Pnt> profile;
    auto at = [&](double r, double a) {
        return gp_Pnt(-width / 2, r * std::cos(a), r * std::sin(a));
    };
    for (int i = 0; i < teeth; ++i) {
        double a = pitch * i;
        profile.push_back(at(root, a));
        profile.push_back(at(tip, a + 0.15 * pitch));
        profile.push_back(at(tip, a + 0.4 * pitch));
        profile.push_back(at(root, a + 0.55 * pitch));
    }
    TopoDS_Shape body = prismX(profile, width);
    std::vector<TopoDS_Shape> holes{
        cylinder(gp_Pnt(-width, 0, 0), gp::DX(), kShaftRadius, 2 * width)};
    for (int i = 0; i < 5; ++i) {
        double a = 2 * kPi / 5 * i + kPi / 2;
        holes.push_back(cylinder(gp_Pnt(-width, 20.5 * std::cos(a), 20.5 * std::sin(a)), gp::DX(),
                                 5.0, 2 * width));
    }
    return cut(body, holes);
}

// An angle bracket: a foot with two bolt holes and an upright with a Ø12 hole, the inner
// corner and the upright's top edges rounded. Origin between the bolt holes, on the base;
// the upright stands on the -Y side.
TopoDS_Shape bracket() {
    const double len = 50, x = -len / 2, f = kBracketFoot;
    std::vector<gp_Pnt> profile{gp_Pnt(x, 10, 0),   gp_Pnt(x, -20, 0), gp_Pnt(x, -20, 60),
                                gp_Pnt(x, -12, 60), gp_Pnt(x, -12, f), gp_Pnt(x, 10, f)};
    TopoDS_Shape shape = prismX(profile, len);
    shape = fillet(shape, 6.0, [f](const gp_Pnt& mid, const gp_Dir& dir) {
        return along(dir, gp::DX()) && near(mid.Y(), -12) && near(mid.Z(), f);
    });
    shape = fillet(shape, 3.0, [](const gp_Pnt& mid, const gp_Dir& dir) {
        return along(dir, gp::DX()) && near(mid.Z(), 60);
    });
    return cut(shape, {cylinder(gp_Pnt(-15, 0, -1), gp::DZ(), kBoltHole / 2, f + 2),
                       cylinder(gp_Pnt(15, 0, -1), gp::DZ(), kBoltHole / 2, f + 2),
                       cylinder(gp_Pnt(0, -24, 38), gp::DY(), 6.0, 16)});
}

// A hood over the gear, open below, with a hole where the shaft enters. Origin centred
// under it.
TopoDS_Shape guard() {
    TopoDS_Shape outer = box(-25, -48, 0, 25, 48, 90);
    outer = fillet(outer, 4.0, [](const gp_Pnt& mid, const gp_Dir&) { return mid.Z() > 1.0; });
    return cut(outer, {box(-22, -45, -1, 22, 45, 87),
                       cylinder(gp_Pnt(15, 0, kAxisHeight), gp::DX(), 12.0, 20)});
}

gp_Trsf placement(double x, double y, double z, double degreesAboutZ = 0.0) {
    gp_Trsf rotation;
    rotation.SetRotation(gp::OZ(), degreesAboutZ * kPi / 180.0);
    gp_Trsf translation;
    translation.SetTranslation(gp_Vec(x, y, z));
    return translation * rotation;
}

class Builder {
public:
    explicit Builder(const Handle(TDocStd_Document) & doc)
        : shapes_(XCAFDoc_DocumentTool::ShapeTool(doc->Main())),
          colors_(XCAFDoc_DocumentTool::ColorTool(doc->Main())) {}

    TDF_Label part(const char* name, const TopoDS_Shape& shape, const Quantity_ColorRGBA& color) {
        TDF_Label label = shapes_->AddShape(shape, Standard_False);
        setName(label, name);
        colors_->SetColor(label, color, XCAFDoc_ColorSurf);
        return label;
    }
    TDF_Label face(const TDF_Label& part, const TopoDS_Face& face, const char* name,
                   const Quantity_ColorRGBA& color) {
        TDF_Label label;
        check(shapes_->AddSubShape(part, face, label) == Standard_True, "face label");
        setName(label, name);
        colors_->SetColor(label, color, XCAFDoc_ColorSurf);
        return label;
    }
    TDF_Label assembly(const char* name) {
        TDF_Label label = shapes_->NewShape();
        setName(label, name);
        return label;
    }
    void place(const TDF_Label& assembly, const TDF_Label& item, const char* name,
               const gp_Trsf& where) {
        TDF_Label component = shapes_->AddComponent(assembly, item, TopLoc_Location(where));
        check(!component.IsNull(), "component");
        setName(component, name);
    }
    void finish() { shapes_->UpdateAssemblies(); }

private:
    static void setName(const TDF_Label& label, const char* utf8) {
        TDataStd_Name::Set(label, TCollection_ExtendedString(utf8, Standard_True));
    }

    Handle(XCAFDoc_ShapeTool) shapes_;
    Handle(XCAFDoc_ColorTool) colors_;
};

Quantity_ColorRGBA rgba(float r, float g, float b, float alpha = 1.0f) {
    return Quantity_ColorRGBA(Quantity_Color(r, g, b, Quantity_TOC_sRGB), alpha);
}

} // namespace

Handle(TDocStd_Document) DemoDocument::make() {
    Handle(TDocStd_Document) doc;
    XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", doc);
    XCAFDoc_DocumentTool::SetLengthUnit(doc, 1.0, UnitsMethods_LengthUnit_Millimeter);
    Builder b(doc);

    // Parts first: an assembly component needs the label of what it places.
    TDF_Label plate = b.part("Base Plate", basePlate(), rgba(0.42f, 0.47f, 0.53f));
    TDF_Label block = b.part(kBlockName, bearingBlock(), rgba(0.93f, 0.55f, 0.12f));
    TDF_Label boltPart = b.part("Bolt M8x16", bolt(), rgba(0.22f, 0.22f, 0.25f));
    TopoDS_Shape shaftShape = shaft();
    TDF_Label shaftPart = b.part(kShaftName, shaftShape, rgba(0.78f, 0.8f, 0.83f));
    b.face(shaftPart, shaftFreeEnd(shaftShape), "Shaft End Face", rgba(0.85f, 0.12f, 0.1f));
    TDF_Label gearPart = b.part("Gear", gear(), rgba(0.2f, 0.62f, 0.3f));
    TDF_Label bracketPart = b.part("Bracket", bracket(), rgba(0.18f, 0.38f, 0.82f));
    TDF_Label guardPart = b.part("Guard", guard(), rgba(0.55f, 0.8f, 0.95f, 0.35f));

    // No component sits at the identity: the STEP writer drops the names of such instances.
    // Unit frames lie on their mounting faces; the shaft unit's is centred between the bearings.
    TDF_Label bearingUnit = b.assembly("Bearing Unit");
    b.place(bearingUnit, block, kBlockName, placement(0, 0, kAxisHeight));
    b.place(bearingUnit, boltPart, "Bolt 1", placement(0, -29, kFootThickness, 10));
    b.place(bearingUnit, boltPart, "Bolt 2", placement(0, 29, kFootThickness, 40));

    TDF_Label shaftUnit = b.assembly("Shaft Unit");
    b.place(shaftUnit, bearingUnit, "Bearing Unit 1", placement(-35, 0, 0));
    b.place(shaftUnit, bearingUnit, "Bearing Unit 2", placement(35, 0, 0));
    b.place(shaftUnit, shaftPart, kShaftName, placement(-105, 0, kAxisHeight));
    b.place(shaftUnit, gearPart, "Gear", placement(-90, 0, kAxisHeight));

    TDF_Label bracketUnit = b.assembly("Bracket Unit");
    b.place(bracketUnit, bracketPart, "Bracket", placement(0, 0, 0, 180));
    b.place(bracketUnit, boltPart, "Bolt 3", placement(-15, 0, kBracketFoot, 25));
    b.place(bracketUnit, boltPart, "Bolt 4", placement(15, 0, kBracketFoot, 5));

    TDF_Label root = b.assembly("Demo Assembly");
    b.place(root, plate, "Base Plate", placement(0, 0, kPlateThickness));
    b.place(root, shaftUnit, "Shaft Unit", placement(35, 0, kPlateThickness));
    b.place(root, bracketUnit, "Bracket Unit", placement(35, 55, kPlateThickness));
    b.place(root, guardPart, "Guard", placement(-55, 0, kPlateThickness));
    b.finish();
    return doc;
}

bool DemoDocument::writeStep(const Handle(TDocStd_Document) & document, const std::string& path,
                             std::string& error) {
    if (document.IsNull()) {
        error = "No document to write to " + path + ".";
        return false;
    }
    TDF_LabelSequence roots;
    XCAFDoc_DocumentTool::ShapeTool(document->Main())->GetFreeShapes(roots);
    if (roots.IsEmpty()) {
        error = "The document holds no shapes to write to " + path + ".";
        return false;
    }
    try {
        // The schema is a global setting read when the writer makes its model; the previous
        // value is put back so that other writers in the process are not affected.
        STEPControl_Controller::Init();
        struct SchemaScope {
            TCollection_AsciiString previous = Interface_Static::CVal("write.step.schema");
            SchemaScope() { Interface_Static::SetCVal("write.step.schema", "AP214IS"); }
            ~SchemaScope() { Interface_Static::SetCVal("write.step.schema", previous.ToCString()); }
        } schema;
        STEPCAFControl_Writer writer;
        writer.SetColorMode(Standard_True);
        writer.SetNameMode(Standard_True);
        writer.SetLayerMode(Standard_True);
        if (!writer.Transfer(document, STEPControl_AsIs)) {
            error = "Could not translate the model to STEP for " + path + ".";
            return false;
        }
        if (writer.Write(path.c_str()) != IFSelect_RetDone) {
            error = "Could not write the STEP file " + path + ".";
            return false;
        }
    } catch (const Standard_Failure& failure) {
        error = "Writing " + path + " failed: " + failure.GetMessageString();
        return false;
    }
    return true;
}

} // namespace qrnimport
