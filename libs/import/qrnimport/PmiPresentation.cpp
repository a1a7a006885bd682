#include "qrnimport/PmiPresentation.h"

#include "qrnimport/OcctUtils.h"
#include "qrnimport/StepCurves.h"
#include "qrnimport/StepFile.h"
#include "qrnimport/StepTessellation.h"

#include <Interface_UndefinedContent.hxx>
#include <StepAP242_DraughtingModelItemAssociation.hxx>
#include <StepAP242_ItemIdentifiedRepresentationUsageDefinition.hxx>
#include <StepBasic_MeasureWithUnit.hxx>
#include <StepBasic_SizeSelect.hxx>
#include <StepData_UndefinedEntity.hxx>
#include <StepDimTol_Datum.hxx>
#include <StepDimTol_DatumFeature.hxx>
#include <StepDimTol_GeometricTolerance.hxx>
#include <StepGeom_Axis2Placement3d.hxx>
#include <StepGeom_CartesianPoint.hxx>
#include <StepGeom_Curve.hxx>
#include <StepGeom_Direction.hxx>
#include <StepGeom_Plane.hxx>
#include <StepRepr_MeasureRepresentationItem.hxx>
#include <StepRepr_PropertyDefinition.hxx>
#include <StepRepr_ReprItemAndMeasureWithUnit.hxx>
#include <StepRepr_ShapeAspectRelationship.hxx>
#include <StepShape_DimensionalLocation.hxx>
#include <StepShape_DimensionalSize.hxx>
#include <StepVisual_AnnotationCurveOccurrence.hxx>
#include <StepVisual_AnnotationFillArea.hxx>
#include <StepVisual_AnnotationFillAreaOccurrence.hxx>
#include <StepVisual_AnnotationPlane.hxx>
#include <StepVisual_AnnotationPlaneElement.hxx>
#include <StepVisual_CameraModelD3.hxx>
#include <StepVisual_Colour.hxx>
#include <StepVisual_ColourRgb.hxx>
#include <StepVisual_CoordinatesList.hxx>
#include <StepVisual_CurveStyle.hxx>
#include <StepVisual_DraughtingCallout.hxx>
#include <StepVisual_DraughtingCalloutElement.hxx>
#include <StepVisual_DraughtingModel.hxx>
#include <StepVisual_DraughtingPreDefinedColour.hxx>
#include <StepVisual_PreDefinedItem.hxx>
#include <StepVisual_PresentationStyleAssignment.hxx>
#include <StepVisual_PresentationStyleSelect.hxx>
#include <StepVisual_TessellatedAnnotationOccurrence.hxx>
#include <StepVisual_TessellatedCurveSet.hxx>
#include <StepVisual_TessellatedGeometricSet.hxx>
#include <TColgp_HArray1OfXYZ.hxx>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <unordered_map>

namespace qrnimport {

namespace {

using Annotation = PmiPresentation::Annotation;
using Item = ModelData::PmiItem;
using qrnmath::Vec3;
using Entity = Handle(Standard_Transient);

// The part of a complex instance of the given type; null for none.
Handle(StepData_UndefinedEntity) partOf(const Entity& e, const char* type) {
    for (Handle(StepData_UndefinedEntity) u = Handle(StepData_UndefinedEntity)::DownCast(e);
         !u.IsNull(); u = u->Next())
        if (std::strcmp(u->StepType(), type) == 0)
            return u;
    return nullptr;
}

// A placement: where local coordinates (scaled) go in the model.
struct Frame {
    gp_Ax3 axes;
    double scale = 1.0;
    Vec3 operator()(const gp_XYZ& p) const {
        const gp_XYZ local = p * scale;
        return OcctUtils::toVec3(axes.Location().XYZ() + axes.XDirection().XYZ() * local.X() +
                                 axes.YDirection().XYZ() * local.Y() +
                                 axes.Direction().XYZ() * local.Z());
    }
};

bool axesOf(const Handle(StepGeom_Axis2Placement3d) & a, double scale, gp_Ax3& out) {
    if (a.IsNull() || a->Location().IsNull() || a->Location()->NbCoordinates() < 3)
        return false;
    const auto& l = a->Location();
    const gp_Pnt origin(l->CoordinatesValue(1) * scale, l->CoordinatesValue(2) * scale,
                        l->CoordinatesValue(3) * scale);
    auto direction = [](const Handle(StepGeom_Direction) & d, const gp_Dir& otherwise) {
        if (d.IsNull() || d->NbDirectionRatios() < 3)
            return otherwise;
        const gp_XYZ v(d->DirectionRatiosValue(1), d->DirectionRatiosValue(2),
                       d->DirectionRatiosValue(3));
        return v.Modulus() > 1e-12 ? gp_Dir(v) : otherwise;
    };
    const gp_Dir z = direction(a->HasAxis() ? a->Axis() : nullptr, gp::DZ());
    gp_Dir x = direction(a->HasRefDirection() ? a->RefDirection() : nullptr,
                         z.IsParallel(gp::DX(), 1e-6) ? gp::DY() : gp::DX());
    if (x.IsParallel(z, 1e-6))
        x = z.IsParallel(gp::DX(), 1e-6) ? gp::DY() : gp::DX();
    out = gp_Ax3(origin, z, x);
    return true;
}

class Reader {
public:
    Reader(PmiPresentation& out, double scale) : m_out(out), m_scale(scale) {}

    void curveSet(const Handle(StepVisual_TessellatedCurveSet) & set, const Frame& frame,
                  Annotation& a) {
        if (set->CoordList().IsNull() || set->CoordList()->Points().IsNull() ||
            set->Curves().IsNull())
            return;
        const auto& points = set->CoordList()->Points();
        const auto& curves = *set->Curves();
        for (int c = 0; c < curves.Length(); ++c) {
            const auto& indices = curves.Value(c);
            if (indices.IsNull())
                continue;
            ++m_out.counts.polylines;
            std::vector<Vec3> strip;
            for (int k = 1; k <= indices->Length(); ++k) {
                const int at = indices->Value(k);
                if (at >= points->Lower() && at <= points->Upper())
                    strip.push_back(frame(points->Value(at)));
            }
            a.lines.addStrip(strip);
        }
    }

    // COMPLEX_TRIANGULATED_SURFACE_SET (name, coordinates, pnmax, normals, pnindex,
    // triangle_strips, triangle_fans): filled text and arrowheads.
    void surfaceSet(const Handle(StepData_UndefinedEntity) & set, const Frame& frame,
                    Annotation& a) {
        const auto c = set->UndefinedContent();
        if (c->NbParams() < 7 || !c->IsParamEntity(2))
            return;
        const auto list = Handle(StepVisual_CoordinatesList)::DownCast(c->ParamEntity(2));
        if (list.IsNull() || list->Points().IsNull())
            return;
        ++m_out.counts.fillSets;
        const auto& points = list->Points();
        const std::vector<double> pnindex =
            c->IsParamEntity(5)
                ? StepTessellation::numbers(StepTessellation::content(c->ParamEntity(5)))
                : std::vector<double>();
        auto vertex = [&](int i, unsigned int& out) {
            if (!pnindex.empty()) {
                if (i < 1 || i > static_cast<int>(pnindex.size()))
                    return false;
                i = static_cast<int>(pnindex[static_cast<std::size_t>(i - 1)]);
            }
            if (i < points->Lower() || i > points->Upper())
                return false;
            out = static_cast<unsigned int>(a.fills.vertices.size());
            a.fills.vertices.push_back(frame(points->Value(i)));
            return true;
        };
        // Each triangle has its corners to itself, with its own normal.
        StepTessellation::triangles(c, 6, 7, [&](int i, int j, int k) {
            const std::size_t before = a.fills.vertices.size();
            unsigned int v[3];
            if (!vertex(i, v[0]) || !vertex(j, v[1]) || !vertex(k, v[2])) {
                a.fills.vertices.resize(before);
                return;
            }
            const Vec3& p0 = a.fills.vertices[v[0]];
            const Vec3 n = qrnmath::cross(a.fills.vertices[v[1]] - p0, a.fills.vertices[v[2]] - p0);
            const float length = n.length();
            const Vec3 normal = length > 0.0f ? n * (1.0f / length) : Vec3(0.0f, 0.0f, 1.0f);
            a.fills.normals.resize(a.fills.vertices.size(), normal);
            a.fills.indices.insert(a.fills.indices.end(), {v[0], v[1], v[2]});
            ++m_out.counts.triangles;
        });
    }

    // A tessellated geometric set, plain or repositioned (a complex instance the reader does
    // not know: its coordinates are then in the placement it names).
    void geometricSet(const Entity& set, Annotation& a) {
        Frame frame;
        frame.scale = m_scale;
        if (auto known = Handle(StepVisual_TessellatedGeometricSet)::DownCast(set)) {
            if (known->Items().IsNull())
                return;
            for (int i = known->Items()->Lower(); i <= known->Items()->Upper(); ++i)
                tessellatedItem(known->Items()->Value(i), frame, a);
            return;
        }
        const auto items = partOf(set, "TESSELLATED_GEOMETRIC_SET");
        if (items.IsNull())
            return;
        if (const auto placed = partOf(set, "REPOSITIONED_TESSELLATED_ITEM")) {
            const auto c = placed->UndefinedContent();
            if (c->NbParams() >= 1 && c->IsParamEntity(1)) {
                gp_Ax3 axes;
                if (axesOf(Handle(StepGeom_Axis2Placement3d)::DownCast(c->ParamEntity(1)), m_scale,
                           axes))
                    frame.axes = axes;
            }
        }
        const auto c = items->UndefinedContent();
        if (c->NbParams() < 1 || !c->IsParamEntity(1))
            return;
        const auto list = StepTessellation::content(c->ParamEntity(1));
        for (int p = 1; !list.IsNull() && p <= list->NbParams(); ++p)
            if (list->IsParamEntity(p))
                tessellatedItem(list->ParamEntity(p), frame, a);
    }

    // An annotation curve, or a fill area's boundaries drawn and filled.
    void curves(const Handle(StepVisual_StyledItem) & occurrence, Annotation& a) {
        const double deflection = 0.01 * m_scale;
        std::vector<Vec3> points;
        if (auto curve = Handle(StepGeom_Curve)::DownCast(occurrence->Item())) {
            ++m_out.counts.polylines;
            if (StepCurves::points(curve, m_scale, deflection, points))
                a.lines.addStrip(points);
            return;
        }
        const auto area = Handle(StepVisual_AnnotationFillArea)::DownCast(occurrence->Item());
        if (area.IsNull() || area->Elements().IsNull())
            return;
        ++m_out.counts.fillSets;
        for (int k = 1; k <= area->Elements()->Length(); ++k) {
            const auto boundary = Handle(StepGeom_Curve)::DownCast(area->ElementsValue(k).Value());
            if (boundary.IsNull() || !StepCurves::points(boundary, m_scale, deflection, points))
                continue;
            a.lines.addStrip(points);
            m_out.counts.triangles += static_cast<int>(StepCurves::fill(points, a.fills));
        }
    }

    void tessellatedItem(const Entity& item, const Frame& frame, Annotation& a) {
        if (auto curves = Handle(StepVisual_TessellatedCurveSet)::DownCast(item))
            curveSet(curves, frame, a);
        else if (auto surfaces = partOf(item, "COMPLEX_TRIANGULATED_SURFACE_SET"))
            surfaceSet(surfaces, frame, a);
    }

    void style(const Handle(StepVisual_StyledItem) & styled, Annotation& a) {
        for (int s = 1; s <= styled->NbStyles(); ++s) {
            const auto assignment = styled->StylesValue(s);
            for (int k = 1; !assignment.IsNull() && k <= assignment->NbStyles(); ++k) {
                const auto curve = assignment->StylesValue(k).CurveStyle();
                if (curve.IsNull())
                    continue;
                a.width = static_cast<float>(curve->CurveWidth().RealValue() * m_scale);
                const auto colour = curve->CurveColour();
                if (auto rgb = Handle(StepVisual_ColourRgb)::DownCast(colour)) {
                    a.colour = qrnmath::Vec4(static_cast<float>(rgb->Red()),
                                             static_cast<float>(rgb->Green()),
                                             static_cast<float>(rgb->Blue()), 1.0f);
                    a.coloured = true;
                } else if (auto named =
                               Handle(StepVisual_DraughtingPreDefinedColour)::DownCast(colour)) {
                    a.coloured = predefined(named, a.colour);
                }
                return;
            }
        }
    }

    static bool predefined(const Handle(StepVisual_DraughtingPreDefinedColour) & named,
                           qrnmath::Vec4& colour) {
        const auto item = named->GetPreDefinedItem();
        if (item.IsNull() || item->Name().IsNull())
            return false;
        static const std::map<std::string, qrnmath::Vec4> colours{
            {"red", {1, 0, 0, 1}},    {"green", {0, 1, 0, 1}},   {"blue", {0, 0, 1, 1}},
            {"yellow", {1, 1, 0, 1}}, {"magenta", {1, 0, 1, 1}}, {"cyan", {0, 1, 1, 1}},
            {"black", {0, 0, 0, 1}},  {"white", {1, 1, 1, 1}}};
        const auto found = colours.find(item->Name()->ToCString());
        if (found == colours.end())
            return false;
        colour = found->second;
        return true;
    }

    PmiPresentation& m_out;
    double m_scale;
};

// A measure's value, however the reader typed it.
bool valueOf(const Entity& e, double& value) {
    Handle(StepBasic_MeasureWithUnit) measure = Handle(StepBasic_MeasureWithUnit)::DownCast(e);
    if (auto item = Handle(StepRepr_ReprItemAndMeasureWithUnit)::DownCast(e))
        measure = item->GetMeasureWithUnit();
    else if (auto represented = Handle(StepRepr_MeasureRepresentationItem)::DownCast(e))
        measure = represented->Measure();
    if (measure.IsNull())
        return false;
    value = measure->ValueComponent();
    return true;
}

Item::Kind kindOf(const Entity& semantic, const std::wstring& name) {
    if (semantic.IsNull()) {
        // Presentation alone: the name the author gave tells what it is.
        std::wstring n;
        for (wchar_t c : name)
            n += static_cast<wchar_t>(std::towlower(c));
        for (const wchar_t* word : {L"datum"})
            if (n.find(word) != std::wstring::npos)
                return Item::DATUM;
        for (const wchar_t* word : {L"size", L"dimension", L"distance", L"diameter", L"radius",
                                    L"angle", L"length", L"chamfer"})
            if (n.find(word) != std::wstring::npos)
                return Item::DIMENSION;
        for (const wchar_t* word : {L"text", L"note"})
            if (n.find(word) != std::wstring::npos)
                return Item::NOTE;
        for (const wchar_t* word :
             {L"flatness", L"straightness", L"circularity", L"roundness", L"cylindricity",
              L"profile", L"position", L"perpendicularity", L"parallelism", L"angularity",
              L"concentricity", L"symmetry", L"runout", L"tolerance"})
            if (n.find(word) != std::wstring::npos)
                return Item::TOLERANCE;
        return Item::OTHER;
    }
    if (semantic->IsKind(STANDARD_TYPE(StepShape_DimensionalSize)) ||
        semantic->IsKind(STANDARD_TYPE(StepShape_DimensionalLocation)))
        return Item::DIMENSION;
    if (semantic->IsKind(STANDARD_TYPE(StepDimTol_GeometricTolerance)))
        return Item::TOLERANCE;
    if (semantic->IsKind(STANDARD_TYPE(StepDimTol_DatumFeature)) ||
        semantic->IsKind(STANDARD_TYPE(StepDimTol_Datum)))
        return Item::DATUM;
    if (semantic->IsKind(STANDARD_TYPE(StepRepr_PropertyDefinition)))
        return Item::NOTE;
    return Item::OTHER;
}

// Semantic items come before the shape aspects they are about.
bool isSemantic(const Entity& e) {
    return !e.IsNull() && (e->IsKind(STANDARD_TYPE(StepShape_DimensionalSize)) ||
                           e->IsKind(STANDARD_TYPE(StepShape_DimensionalLocation)) ||
                           e->IsKind(STANDARD_TYPE(StepDimTol_GeometricTolerance)) ||
                           e->IsKind(STANDARD_TYPE(StepDimTol_DatumFeature)) ||
                           e->IsKind(STANDARD_TYPE(StepRepr_PropertyDefinition)));
}

} // namespace

std::wstring PmiPresentation::semanticName(const Handle(Standard_Transient) & semantic) {
    if (auto size = Handle(StepShape_DimensionalSize)::DownCast(semantic))
        return OcctUtils::toWide(size->Name());
    if (auto location = Handle(StepShape_DimensionalLocation)::DownCast(semantic))
        return OcctUtils::toWide(location->Name());
    if (auto tolerance = Handle(StepDimTol_GeometricTolerance)::DownCast(semantic))
        return OcctUtils::toWide(tolerance->Name());
    return {};
}

int PmiPresentation::of(const Handle(Standard_Transient) & semantic) const {
    for (std::size_t i = 0; i < annotations.size(); ++i)
        if (!semantic.IsNull() && annotations[i].semantic == semantic)
            return static_cast<int>(i);
    return -1;
}

PmiPresentation PmiPresentation::read(const Handle(StepData_StepModel) & step,
                                      const std::string& path, double scale) {
    PmiPresentation out;
    if (step.IsNull())
        return out;
    Reader reader(out, scale);
    const int count = step->NbEntities();
    // Callouts first: each is one annotation, whatever occurrences it holds.
    std::unordered_map<const Standard_Transient*, int> annotationOf;
    std::vector<Handle(StepVisual_StyledItem)> occurrences;
    std::unordered_map<const Standard_Transient*, std::wstring> datumLetters;
    std::unordered_map<int, Entity> byLabel;
    for (int i = 1; i <= count; ++i) {
        const Entity& e = step->Value(i);
        if (auto callout = Handle(StepVisual_DraughtingCallout)::DownCast(e)) {
            Annotation a;
            a.name = OcctUtils::toWide(callout->Name());
            const int index = static_cast<int>(out.annotations.size());
            annotationOf[callout.get()] = index;
            for (int k = 1; k <= callout->NbContents(); ++k)
                if (!callout->ContentsValue(k).Value().IsNull())
                    annotationOf[callout->ContentsValue(k).Value().get()] = index;
            out.annotations.push_back(std::move(a));
        } else if (e->IsKind(STANDARD_TYPE(StepVisual_TessellatedAnnotationOccurrence)) ||
                   e->IsKind(STANDARD_TYPE(StepVisual_AnnotationCurveOccurrence)) ||
                   e->IsKind(STANDARD_TYPE(StepVisual_AnnotationFillAreaOccurrence))) {
            occurrences.push_back(Handle(StepVisual_StyledItem)::DownCast(e));
        } else if (e->IsKind(STANDARD_TYPE(StepShape_DimensionalSize)) ||
                   e->IsKind(STANDARD_TYPE(StepShape_DimensionalLocation))) {
            out.dimensions.push_back(e);
        } else if (e->IsKind(STANDARD_TYPE(StepDimTol_GeometricTolerance))) {
            out.tolerances.push_back(e);
        } else if (auto relation = Handle(StepRepr_ShapeAspectRelationship)::DownCast(e)) {
            const auto datum = Handle(StepDimTol_Datum)::DownCast(relation->RelatedShapeAspect());
            if (!datum.IsNull() && !relation->RelatingShapeAspect().IsNull())
                datumLetters[relation->RelatingShapeAspect().get()] =
                    OcctUtils::toWide(datum->Identification());
        }
    }
    std::unordered_map<int, std::vector<int>> refs;
    auto byReference = [&](const Entity& e, bool last, std::size_t at) -> Entity {
        if (refs.empty() && byLabel.empty()) {
            // Tolerances by their own type too: a simple record of a kind of tolerance.
            refs = StepFile::references(
                path, {"TESSELLATED_ANNOTATION_OCCURRENCE", "DRAUGHTING_MODEL_ITEM_ASSOCIATION",
                       "GEOMETRIC_TOLERANCE", "FLATNESS_TOLERANCE", "STRAIGHTNESS_TOLERANCE",
                       "ROUNDNESS_TOLERANCE", "CYLINDRICITY_TOLERANCE", "PARALLELISM_TOLERANCE",
                       "PERPENDICULARITY_TOLERANCE", "ANGULARITY_TOLERANCE", "POSITION_TOLERANCE",
                       "CONCENTRICITY_TOLERANCE", "COAXIALITY_TOLERANCE", "SYMMETRY_TOLERANCE",
                       "CIRCULAR_RUNOUT_TOLERANCE", "TOTAL_RUNOUT_TOLERANCE",
                       "LINE_PROFILE_TOLERANCE", "SURFACE_PROFILE_TOLERANCE"});
            for (int i = 1; i <= count; ++i)
                byLabel[step->IdentLabel(step->Value(i))] = step->Value(i);
        }
        const auto found = refs.find(step->IdentLabel(e));
        if (found == refs.end() || found->second.size() <= at)
            return nullptr;
        const auto entity = byLabel.find(last ? found->second.back() : found->second[at]);
        return entity == byLabel.end() ? nullptr : entity->second;
    };
    // Each occurrence's geometry, into its callout's annotation or one of its own.
    for (const auto& o : occurrences) {
        auto found = annotationOf.find(o.get());
        if (found == annotationOf.end()) {
            Annotation a;
            a.name = OcctUtils::toWide(o->Name());
            found = annotationOf.emplace(o.get(), static_cast<int>(out.annotations.size())).first;
            out.annotations.push_back(std::move(a));
        }
        Annotation& a = out.annotations[static_cast<std::size_t>(found->second)];
        if (!a.coloured)
            reader.style(o, a);
        if (!o->IsKind(STANDARD_TYPE(StepVisual_TessellatedAnnotationOccurrence))) {
            reader.curves(o, a);
            continue;
        }
        Entity set(o->Item());
        if (set.IsNull())
            set = byReference(o, true, 0);
        if (!set.IsNull())
            reader.geometricSet(set, a);
    }
    // Links to the semantic items, planes and views.
    for (int i = 1; i <= count; ++i) {
        const Entity& e = step->Value(i);
        if (auto link = Handle(StepAP242_DraughtingModelItemAssociation)::DownCast(e)) {
            Entity semantic = link->Definition().Value();
            std::vector<Entity> identified;
            for (int k = 1; k <= link->NbIdentifiedItem(); ++k)
                identified.push_back(link->IdentifiedItemValue(k));
            if (semantic.IsNull()) {
                // Read from the text: definition, representation, then the items.
                semantic = byReference(link, false, 0);
                identified.clear();
                for (std::size_t k = 2; const Entity item = byReference(link, false, k); ++k)
                    identified.push_back(item);
            }
            for (const Entity& item : identified) {
                const auto found = annotationOf.find(item.get());
                if (found == annotationOf.end())
                    continue;
                Annotation& a = out.annotations[static_cast<std::size_t>(found->second)];
                if (isSemantic(semantic))
                    a.semantic = semantic;
                if (a.name.empty())
                    a.name = OcctUtils::toWide(link->Name());
            }
        } else if (auto plane = Handle(StepVisual_AnnotationPlane)::DownCast(e)) {
            gp_Ax3 axes;
            const auto surface = Handle(StepGeom_Plane)::DownCast(plane->Item());
            if (surface.IsNull() || !axesOf(surface->Position(), scale, axes))
                continue;
            for (int k = 1; k <= plane->NbElements(); ++k) {
                const auto found = annotationOf.find(plane->ElementsValue(k).Value().get());
                if (found == annotationOf.end())
                    continue;
                Annotation& a = out.annotations[static_cast<std::size_t>(found->second)];
                a.hasPlane = true;
                a.plane = axes;
            }
        } else if (auto model = Handle(StepVisual_DraughtingModel)::DownCast(e)) {
            std::vector<std::wstring> names;
            std::vector<int> listed;
            for (int k = 1; k <= model->NbItems(); ++k) {
                const Entity item = model->ItemsValue(k);
                if (auto camera = Handle(StepVisual_CameraModelD3)::DownCast(item))
                    names.push_back(OcctUtils::toWide(camera->Name()));
                auto found = annotationOf.find(item.get());
                if (found == annotationOf.end())
                    if (auto plane = Handle(StepVisual_AnnotationPlane)::DownCast(item))
                        for (int p = 1; p <= plane->NbElements(); ++p) {
                            const auto in =
                                annotationOf.find(plane->ElementsValue(p).Value().get());
                            if (in != annotationOf.end())
                                listed.push_back(in->second);
                        }
                if (found != annotationOf.end())
                    listed.push_back(found->second);
            }
            if (names.empty())
                continue;
            names.push_back(OcctUtils::toWide(model->Name()));
            std::sort(listed.begin(), listed.end());
            listed.erase(std::unique(listed.begin(), listed.end()), listed.end());
            for (const auto& name : names)
                if (!name.empty())
                    out.views[name] = listed;
        }
    }
    // Tolerance zones the reader could not type (a measure written as a complex record).
    for (const Entity& t : out.tolerances) {
        const auto tolerance = Handle(StepDimTol_GeometricTolerance)::DownCast(t);
        double value = 0.0;
        if (valueOf(tolerance->Magnitude(), value) || valueOf(byReference(t, false, 0), value))
            out.magnitudes[t.get()] = value * scale;
    }
    for (auto& a : out.annotations) {
        a.kind = kindOf(a.semantic, a.name);
        const auto letter =
            a.semantic.IsNull() ? datumLetters.end() : datumLetters.find(a.semantic.get());
        if (letter != datumLetters.end())
            a.datum = letter->second;
    }
    return out;
}

} // namespace qrnimport
