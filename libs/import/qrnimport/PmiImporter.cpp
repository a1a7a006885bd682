#include "qrnviewer/occt/PmiImporter.h"

#include "qrnviewer/PmiLayout.h"

#include "qrnplatform/Text.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <Poly_Polygon3D.hxx>
#include <Precision.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_HArray1OfReal.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDF_Label.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDF_Tool.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>
#include <XCAFDimTolObjects_DatumObject.hxx>
#include <XCAFDimTolObjects_DimensionObject.hxx>
#include <XCAFDimTolObjects_GeomToleranceObject.hxx>
#include <XCAFDoc_Datum.hxx>
#include <XCAFDoc_DimTolTool.hxx>
#include <XCAFDoc_Dimension.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_GeomTolerance.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XCAFDoc_View.hxx>
#include <XCAFDoc_ViewTool.hxx>
#include <XCAFView_Object.hxx>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <iterator>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace qrnviewer {

namespace {

using qrnmath::Vec3;
using Item = ModelData::PmiItem;

const wchar_t* const kDiameter = L"\u2300";
const wchar_t* const kDegree = L"\u00B0";

Vec3 toVec3(const gp_XYZ& p) {
    return Vec3(static_cast<float>(p.X()), static_cast<float>(p.Y()), static_cast<float>(p.Z()));
}

std::wstring wide(const Handle(TCollection_HAsciiString) & s) {
    if (s.IsNull())
        return {};
    std::wstring w = qrnplatform::Text::fromUtf8(s->ToCString());
    const wchar_t* space = L" \t\r\n";
    std::size_t first = w.find_first_not_of(space);
    if (first == std::wstring::npos)
        return {};
    return w.substr(first, w.find_last_not_of(space) - first + 1);
}

// A name the file gave: OCCT's own placeholder names of new labels ("DGT:Tolerance") are none.
std::wstring givenName(const Handle(TCollection_HAsciiString) & s) {
    std::wstring w = wide(s);
    return w.rfind(L"DGT:", 0) == 0 ? std::wstring() : w;
}

// A number as a drawing writes it: with the file's decimal places when it gives them, else
// with no more digits than it needs.
std::wstring number(double value, int decimals = 0) {
    char buffer[64];
    if (decimals > 0 && decimals < 10) {
        std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    } else {
        std::snprintf(buffer, sizeof buffer, "%.6f", value);
        char* end = buffer + std::char_traits<char>::length(buffer);
        while (end > buffer && end[-1] == '0')
            *--end = '\0';
        if (end > buffer && end[-1] == '.')
            *--end = '\0';
    }
    std::string s(buffer);
    if (s.find_first_not_of("-0.") == std::string::npos)
        s.erase(0, s.find_first_not_of('-')); // no "-0"
    return std::wstring(s.begin(), s.end());
}

std::wstring signedNumber(double value) {
    std::wstring n = number(std::abs(value));
    if (n == L"0")
        return n;
    return (value < 0 ? L"-" : L"+") + n;
}

std::wstring dimensionPrefix(XCAFDimTolObjects_DimensionType type) {
    switch (type) {
    case XCAFDimTolObjects_DimensionType_Size_Diameter:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalMinorDiameter:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalMajorDiameter:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalHighMajorDiameter:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalLowMajorDiameter:
        return kDiameter;
    case XCAFDimTolObjects_DimensionType_Size_SphericalDiameter:
        return std::wstring(L"S") + kDiameter;
    case XCAFDimTolObjects_DimensionType_Size_Radius:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalMinorRadius:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalMajorRadius:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalHighMajorRadius:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalLowMajorRadius:
        return L"R";
    case XCAFDimTolObjects_DimensionType_Size_SphericalRadius:
        return L"SR";
    default:
        return {};
    }
}

// An ISO fit such as "H7": the letters of the fundamental deviation (capitals for a hole) and
// the grade.
std::wstring fitText(bool hole, XCAFDimTolObjects_DimensionFormVariance variance,
                     XCAFDimTolObjects_DimensionGrade grade) {
    static const char* const kVariances[] = {"",  "A", "B",  "C", "CD", "D", "E",  "EF", "F", "FG",
                                             "G", "H", "JS", "J", "K",  "M", "N",  "P",  "R", "S",
                                             "T", "U", "V",  "X", "Y",  "Z", "ZA", "ZB", "ZC"};
    static const char* const kGrades[] = {"01", "0",  "1",  "2",  "3",  "4",  "5",
                                          "6",  "7",  "8",  "9",  "10", "11", "12",
                                          "13", "14", "15", "16", "17", "18"};
    const auto v = static_cast<std::size_t>(variance);
    const auto g = static_cast<std::size_t>(grade);
    if (v == 0 || v >= std::size(kVariances) || g >= std::size(kGrades))
        return {};
    std::string fit = kVariances[v];
    if (!hole)
        std::transform(fit.begin(), fit.end(), fit.begin(),
                       [](char c) { return static_cast<char>(c - 'A' + 'a'); });
    fit += kGrades[g];
    return std::wstring(fit.begin(), fit.end());
}

std::wstring dimensionText(const Handle(XCAFDimTolObjects_DimensionObject) & d,
                           const std::wstring& lengthUnit) {
    Handle(TColStd_HArray1OfReal) values = d->GetValues();
    if (values.IsNull() || values->Length() == 0)
        return givenName(d->GetSemanticName()); // no value read: what kind of dimension it is
    const XCAFDimTolObjects_DimensionType type = d->GetType();
    const bool angular = type == XCAFDimTolObjects_DimensionType_Location_Angular ||
                         type == XCAFDimTolObjects_DimensionType_Size_Angular;
    const std::wstring degree = angular ? kDegree : L"";
    const std::wstring unit = angular || lengthUnit.empty() ? L"" : L" " + lengthUnit;
    int left = 0, right = 0;
    d->GetNbOfDecimalPlaces(left, right);

    std::wstring text = dimensionPrefix(type);
    const double lower = d->GetLowerBound(), upper = d->GetUpperBound();
    if (d->IsDimWithRange() && lower <= upper) {
        text += number(lower, right) + degree + L"\u2013" + number(upper, right) + degree;
    } else {
        text += number(d->GetValue(), right) + degree;
        if (d->IsDimWithPlusMinusTolerance()) {
            const double up = d->GetUpperTolValue(), down = d->GetLowerTolValue();
            if (std::abs(up - down) <= 1e-9 * std::max(1.0, std::abs(up)))
                text += L" \u00B1" + number(up) + degree;
            else // the lower tolerance is held as a distance below the nominal
                text += L" " + signedNumber(up) + degree + L"/" + signedNumber(-down) + degree;
        }
    }
    Standard_Boolean hole = Standard_False;
    XCAFDimTolObjects_DimensionFormVariance variance = XCAFDimTolObjects_DimensionFormVariance_None;
    XCAFDimTolObjects_DimensionGrade grade = XCAFDimTolObjects_DimensionGrade_IT01;
    if (d->IsDimWithClassOfTolerance() && d->GetClassOfTolerance(hole, variance, grade)) {
        std::wstring fit = fitText(hole == Standard_True, variance, grade);
        if (!fit.empty())
            text += L" " + fit;
    }
    return text + unit;
}

// The geometric characteristic's symbol, as a feature control frame's first compartment shows
// it; empty for a tolerance of no known kind.
std::wstring toleranceSymbol(XCAFDimTolObjects_GeomToleranceType type) {
    switch (type) {
    case XCAFDimTolObjects_GeomToleranceType_Angularity:
        return L"\u2220";
    case XCAFDimTolObjects_GeomToleranceType_CircularRunout:
        return L"\u2197";
    case XCAFDimTolObjects_GeomToleranceType_CircularityOrRoundness:
        return L"\u25CB";
    case XCAFDimTolObjects_GeomToleranceType_Coaxiality:
    case XCAFDimTolObjects_GeomToleranceType_Concentricity:
        return L"\u25CE";
    case XCAFDimTolObjects_GeomToleranceType_Cylindricity:
        return L"\u232D";
    case XCAFDimTolObjects_GeomToleranceType_Flatness:
        return L"\u23E5";
    case XCAFDimTolObjects_GeomToleranceType_Parallelism:
        return L"\u2225";
    case XCAFDimTolObjects_GeomToleranceType_Perpendicularity:
        return L"\u27C2";
    case XCAFDimTolObjects_GeomToleranceType_Position:
        return L"\u2316";
    case XCAFDimTolObjects_GeomToleranceType_ProfileOfLine:
        return L"\u2312";
    case XCAFDimTolObjects_GeomToleranceType_ProfileOfSurface:
        return L"\u2313";
    case XCAFDimTolObjects_GeomToleranceType_Straightness:
        return L"\u23E4";
    case XCAFDimTolObjects_GeomToleranceType_Symmetry:
        return L"\u232F";
    case XCAFDimTolObjects_GeomToleranceType_TotalRunout:
        return L"\u2330";
    default:
        return {};
    }
}

// The feature control frame, its compartments parted by '|': characteristic, zone with its
// material condition, datums in order.
std::wstring toleranceText(const Handle(XCAFDimTolObjects_GeomToleranceObject) & t,
                           const std::vector<std::wstring>& datums) {
    const auto material = t->GetMaterialRequirementModifier();
    const std::wstring symbol = toleranceSymbol(t->GetType());
    std::wstring zone;
    // A zero zone is only meaningful at a material condition; else the value is missing.
    if (t->GetValue() > 0.0 || material != XCAFDimTolObjects_GeomToleranceMatReqModif_None) {
        if (t->GetTypeOfValue() == XCAFDimTolObjects_GeomToleranceTypeValue_Diameter)
            zone += kDiameter;
        else if (t->GetTypeOfValue() == XCAFDimTolObjects_GeomToleranceTypeValue_SphericalDiameter)
            zone += std::wstring(L"S") + kDiameter;
        zone += number(t->GetValue());
    }
    if (material == XCAFDimTolObjects_GeomToleranceMatReqModif_M)
        zone += L" \u24C2";
    else if (material == XCAFDimTolObjects_GeomToleranceMatReqModif_L)
        zone += L" \u24C1";
    if (symbol.empty() && zone.empty() && datums.empty())
        return {}; // says nothing
    std::wstring text = symbol.empty() ? std::wstring(L"?") : symbol;
    if (!zone.empty())
        text += L" | " + zone;
    for (const auto& d : datums)
        text += L" | " + d;
    return text;
}

// Discretised points of one edge, in the edge's direction.
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
        strip.push_back(toVec3(p.XYZ()));
    lines.addStrip(strip);
}

// The edges of a presentation as line strips; edges that continue one another (the edges of a
// wire) make one strip.
void addPresentation(const TopoDS_Shape& shape, qrnsg::Polyline& lines) {
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

bool centreOf(const Bnd_Box& box, gp_Pnt& centre) {
    if (box.IsVoid())
        return false;
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    centre = gp_Pnt((x0 + x1) * 0.5, (y0 + y1) * 0.5, (z0 + z1) * 0.5);
    return true;
}

// Where an item's text goes, from the most to the least specific that the file gives: its
// text position, the centre of its presentation, its connection points, the centre of the
// geometry it is on, the origin of its annotation plane.
struct AnchorSources {
    bool hasTextPoint = false;
    gp_Pnt textPoint;
    TopoDS_Shape presentation;
    std::vector<gp_Pnt> connections;
    Bnd_Box references;
    TopoDS_Compound referenced; // the geometry it is on
    bool hasPlane = false;
    gp_Ax2 plane;
};

gp_Pnt anchor(const AnchorSources& s) {
    if (s.hasTextPoint)
        return s.textPoint;
    gp_Pnt p;
    if (!s.presentation.IsNull()) {
        Bnd_Box box;
        BRepBndLib::Add(s.presentation, box);
        if (centreOf(box, p))
            return p;
    }
    if (!s.connections.empty()) {
        gp_XYZ sum;
        for (const auto& c : s.connections)
            sum += c.XYZ();
        return gp_Pnt(sum / static_cast<double>(s.connections.size()));
    }
    if (centreOf(s.references, p))
        return p;
    return s.hasPlane ? s.plane.Location() : gp_Pnt();
}

// The point on the model that an item speaks of: its first connection point, else the point of
// its geometry nearest that geometry's middle; false when it has neither.
bool target(const AnchorSources& s, gp_Pnt& p) {
    if (!s.connections.empty()) {
        p = s.connections.front();
        return true;
    }
    gp_Pnt centre;
    if (s.referenced.IsNull() || !centreOf(s.references, centre))
        return false;
    p = centre;
    BRepExtrema_DistShapeShape nearest(BRepBuilderAPI_MakeVertex(centre).Vertex(), s.referenced);
    if (nearest.IsDone() && nearest.NbSolution() > 0)
        p = nearest.PointOnShape2(1);
    return true;
}

void referencedGeometry(const Handle(XCAFDoc_DimTolTool) & tool, const TDF_Label& label,
                        AnchorSources& sources) {
    TDF_LabelSequence first, second;
    tool->GetRefShapeLabel(label, first, second);
    BRep_Builder builder;
    for (const TDF_LabelSequence* list : {&first, &second})
        for (int i = 1; i <= list->Length(); ++i) {
            TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(list->Value(i));
            if (shape.IsNull())
                continue;
            BRepBndLib::Add(shape, sources.references);
            if (sources.referenced.IsNull())
                builder.MakeCompound(sources.referenced);
            builder.Add(sources.referenced, shape);
        }
}

void addText(Item& item, const std::wstring& text, const AnchorSources& sources) {
    if (text.empty())
        return;
    qrnsg::Text t;
    t.text = text;
    t.position = toVec3(anchor(sources).XYZ());
    if (sources.hasPlane) {
        t.direction = toVec3(sources.plane.XDirection().XYZ());
        t.up = toVec3(sources.plane.YDirection().XYZ());
        item.hasPlane = true;
    }
    // A graphical presentation shows where its text goes and draws its own leaders.
    item.textPlaced = sources.hasTextPoint || !sources.presentation.IsNull();
    gp_Pnt p;
    if (sources.presentation.IsNull() && target(sources, p)) {
        item.hasTarget = true;
        item.target = toVec3(p.XYZ());
        if (!item.textPlaced)
            t.position = item.target;
    }
    item.texts.push_back(std::move(t));
}

// The file's labels of the items kept, for the saved views that list them.
using LabelItems = std::map<std::string, int>;

std::string entry(const TDF_Label& label) {
    TCollection_AsciiString e;
    TDF_Tool::Entry(label, e);
    return e.ToCString();
}

// An item with nothing to show (an empty label, an object OCCT could not fill) is left out.
void keep(ModelData& model, Item item, const TDF_Label& label, LabelItems& labels) {
    if (item.lines.stripCount() > 0 || !item.texts.empty()) {
        labels[entry(label)] = static_cast<int>(model.pmi.size());
        model.pmi.push_back(std::move(item));
    }
}

std::wstring numbered(const wchar_t* what, int n) {
    return std::wstring(what) + L" " + std::to_wstring(n);
}

void importDimensions(const Handle(XCAFDoc_DimTolTool) & tool, ModelData& model, LabelItems& kept) {
    TDF_LabelSequence labels;
    tool->GetDimensionLabels(labels);
    for (int i = 1; i <= labels.Length(); ++i) {
        try {
            Handle(XCAFDoc_Dimension) attribute;
            if (!labels.Value(i).FindAttribute(XCAFDoc_Dimension::GetID(), attribute))
                continue;
            Handle(XCAFDimTolObjects_DimensionObject) d = attribute->GetObject();
            if (d.IsNull())
                continue;
            Item item;
            item.kind = Item::DIMENSION;
            item.name = wide(d->GetPresentationName());
            if (item.name.empty())
                item.name = numbered(L"Dimension", i);
            addPresentation(d->GetPresentation(), item.lines);
            AnchorSources sources;
            sources.hasTextPoint = d->HasTextPoint() == Standard_True;
            sources.textPoint = d->GetPointTextAttach();
            sources.presentation = d->GetPresentation();
            if (d->HasPoint())
                sources.connections.push_back(d->GetPoint());
            if (d->HasPoint2())
                sources.connections.push_back(d->GetPoint2());
            referencedGeometry(tool, labels.Value(i), sources);
            sources.hasPlane = d->HasPlane() == Standard_True;
            sources.plane = d->GetPlane();
            addText(item, dimensionText(d, model.lengthUnit), sources);
            keep(model, std::move(item), labels.Value(i), kept);
        } catch (const Standard_Failure&) {
            // An item OCCT cannot describe is left out; the others still come.
        }
    }
}

std::wstring datumLetter(const TDF_Label& label) {
    Handle(XCAFDoc_Datum) attribute;
    if (!label.FindAttribute(XCAFDoc_Datum::GetID(), attribute))
        return {};
    Handle(XCAFDimTolObjects_DatumObject) d = attribute->GetObject();
    std::wstring letter = d.IsNull() ? std::wstring() : wide(d->GetName());
    if (letter.empty())
        letter = wide(attribute->GetName());
    if (!d.IsNull() && d->IsDatumTarget() && d->GetDatumTargetNumber() > 0)
        letter += std::to_wstring(d->GetDatumTargetNumber());
    return letter;
}

void importTolerances(const Handle(XCAFDoc_DimTolTool) & tool, ModelData& model, LabelItems& kept) {
    TDF_LabelSequence labels;
    tool->GetGeomToleranceLabels(labels);
    for (int i = 1; i <= labels.Length(); ++i) {
        try {
            Handle(XCAFDoc_GeomTolerance) attribute;
            if (!labels.Value(i).FindAttribute(XCAFDoc_GeomTolerance::GetID(), attribute))
                continue;
            Handle(XCAFDimTolObjects_GeomToleranceObject) t = attribute->GetObject();
            if (t.IsNull())
                continue;
            Item item;
            item.kind = Item::TOLERANCE;
            item.name = wide(t->GetPresentationName());
            if (item.name.empty())
                item.name = givenName(t->GetSemanticName());
            if (item.name.empty())
                item.name = numbered(L"Tolerance", i);
            addPresentation(t->GetPresentation(), item.lines);
            std::vector<std::wstring> datums;
            TDF_LabelSequence datumLabels;
            tool->GetDatumOfTolerLabels(labels.Value(i), datumLabels);
            for (int d = 1; d <= datumLabels.Length(); ++d) {
                std::wstring letter = datumLetter(datumLabels.Value(d));
                if (!letter.empty())
                    datums.push_back(letter);
            }
            AnchorSources sources;
            sources.hasTextPoint = t->HasPointText() == Standard_True;
            sources.textPoint = t->GetPointTextAttach();
            sources.presentation = t->GetPresentation();
            if (t->HasPoint())
                sources.connections.push_back(t->GetPoint());
            referencedGeometry(tool, labels.Value(i), sources);
            sources.hasPlane = t->HasPlane() == Standard_True;
            sources.plane = t->GetPlane();
            addText(item, toleranceText(t, datums), sources);
            keep(model, std::move(item), labels.Value(i), kept);
        } catch (const Standard_Failure&) {
        }
    }
}

void importDatums(const Handle(XCAFDoc_DimTolTool) & tool, ModelData& model, LabelItems& kept) {
    TDF_LabelSequence labels;
    tool->GetDatumLabels(labels);
    // OCCT makes a datum label for each tolerance that refers to a datum; the same letter with
    // the same presentation is one datum.
    std::map<std::pair<std::wstring, const void*>, std::string> seen; // first label of each
    for (int i = 1; i <= labels.Length(); ++i) {
        try {
            Handle(XCAFDoc_Datum) attribute;
            if (!labels.Value(i).FindAttribute(XCAFDoc_Datum::GetID(), attribute))
                continue;
            Handle(XCAFDimTolObjects_DatumObject) d = attribute->GetObject();
            const std::wstring letter = datumLetter(labels.Value(i));
            TopoDS_Shape presentation = d.IsNull() ? TopoDS_Shape() : d->GetPresentation();
            const void* shapeKey = presentation.IsNull() ? nullptr : presentation.TShape().get();
            const auto first =
                seen.emplace(std::make_pair(letter, shapeKey), entry(labels.Value(i)));
            if (!first.second) {
                const auto known = kept.find(first.first->second);
                if (known != kept.end())
                    kept[entry(labels.Value(i))] = known->second;
                continue;
            }
            Item item;
            item.kind = Item::DATUM;
            item.name = d.IsNull() ? std::wstring() : wide(d->GetPresentationName());
            if (item.name.empty())
                item.name = letter.empty() ? numbered(L"Datum", i) : L"Datum " + letter;
            addPresentation(presentation, item.lines);
            AnchorSources sources;
            sources.presentation = presentation;
            referencedGeometry(tool, labels.Value(i), sources);
            if (!d.IsNull()) {
                sources.hasTextPoint = d->HasPointText() == Standard_True;
                sources.textPoint = d->GetPointTextAttach();
                if (d->HasPoint())
                    sources.connections.push_back(d->GetPoint());
                sources.hasPlane = d->HasPlane() == Standard_True;
                sources.plane = d->GetPlane();
            }
            addText(item, letter, sources);
            keep(model, std::move(item), labels.Value(i), kept);
        } catch (const Standard_Failure&) {
        }
    }
}

// The box the saved views look at: the model's geometry when it has been read, else the
// document's shapes.
Bnd_Box modelBox(const Handle(TDocStd_Document) & document, const ModelData& model) {
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

void importViews(const Handle(TDocStd_Document) & document, ModelData& model,
                 const LabelItems& kept) {
    Handle(XCAFDoc_ViewTool) tool = XCAFDoc_DocumentTool::ViewTool(document->Main());
    TDF_LabelSequence labels;
    tool->GetViewLabels(labels);
    if (labels.IsEmpty())
        return;
    const Bnd_Box box = modelBox(document, model);
    gp_Pnt centre;
    const bool hasBox = centreOf(box, centre);
    const double radius = hasBox ? std::sqrt(box.SquareExtent()) * 0.5 : 0.0;
    for (int i = 1; i <= labels.Length(); ++i) {
        try {
            Handle(XCAFDoc_View) attribute;
            if (!labels.Value(i).FindAttribute(XCAFDoc_View::GetID(), attribute))
                continue;
            Handle(XCAFView_Object) view = attribute->GetObject();
            if (view.IsNull())
                continue;
            ModelData::SavedView v;
            v.name = wide(view->Name());
            if (v.name.empty())
                v.name = numbered(L"View", i);
            // The PMI the view shows, when it lists any.
            TDF_LabelSequence shown;
            if (tool->GetRefGDTLabel(labels.Value(i), shown) && shown.Length() > 0) {
                v.listsPmi = true;
                for (int g = 1; g <= shown.Length(); ++g) {
                    const auto item = kept.find(entry(shown.Value(g)));
                    if (item != kept.end() &&
                        std::find(v.pmi.begin(), v.pmi.end(), item->second) == v.pmi.end())
                        v.pmi.push_back(item->second);
                }
            }
            const gp_Dir direction = view->ViewDirection();
            // The up direction across the line of sight, whatever the file gives.
            gp_Vec up = gp_Vec(view->UpDirection()) -
                        gp_Vec(direction) * gp_Vec(view->UpDirection()).Dot(gp_Vec(direction));
            if (up.Magnitude() < 1e-6)
                up = gp_Vec(direction.IsParallel(gp::DZ(), 1e-3) ? gp::DY() : gp::DZ());
            up.Normalize();
            v.up = toVec3(up.XYZ());
            v.orthographic = view->Type() != XCAFView_ProjectionType_Central;
            const double vertical = view->WindowVerticalSize();
            const double horizontal = view->WindowHorizontalSize();
            v.viewHeight =
                static_cast<float>(vertical > 0.0 ? vertical : std::max(horizontal, 0.0));
            // The view plane distance (which OCCT keeps as the zoom factor) is the distance
            // from the eye to what it looks at.
            double distance = view->ZoomFactor() > 0.0 ? view->ZoomFactor() : 0.0;
            if (hasBox) {
                // OCCT gives the projection point in the camera's own frame and drops the
                // camera's placement, so the view looks at the middle of the model.
                if (distance <= 0.0)
                    distance = radius * 3.0;
                if (v.orthographic) // any eye on the line of sight sees the same; keep it out
                    distance = std::max(distance, radius * 2.0);
                distance = std::max(distance, Precision::Confusion());
                v.target = toVec3(centre.XYZ());
                v.eye = toVec3(centre.XYZ() - direction.XYZ() * distance);
            } else {
                if (distance <= 0.0)
                    distance = 1.0;
                const gp_Pnt eye = view->ProjectionPoint();
                v.eye = toVec3(eye.XYZ());
                v.target = toVec3(eye.XYZ() + direction.XYZ() * distance);
            }
            model.views.push_back(std::move(v));
        } catch (const Standard_Failure&) {
        }
    }
}

} // namespace

int PmiImporter::import(const Handle(TDocStd_Document) & document, ModelData& model) {
    if (document.IsNull() || !XCAFDoc_DocumentTool::IsXCAFDocument(document))
        return 0;
    const std::size_t before = model.pmi.size();
    LabelItems kept;
    try {
        Handle(XCAFDoc_DimTolTool) tool = XCAFDoc_DocumentTool::DimTolTool(document->Main());
        if (!tool.IsNull()) {
            importDimensions(tool, model, kept);
            importTolerances(tool, model, kept);
            importDatums(tool, model, kept);
        }
        importViews(document, model, kept);
    } catch (const Standard_Failure&) {
        // What was read before the failure stays.
    } catch (const std::exception&) {
    }
    qrnsg::BBox bounds;
    try {
        const Bnd_Box box = modelBox(document, model);
        if (!box.IsVoid())
            bounds = qrnsg::BBox(toVec3(box.CornerMin().XYZ()), toVec3(box.CornerMax().XYZ()));
    } catch (const Standard_Failure&) {
    }
    PmiLayout::arrange(model, before, bounds);
    return static_cast<int>(model.pmi.size() - before);
}

} // namespace qrnviewer
