#include "qrnimport/SavedViews.h"

#include "qrnimport/OcctUtils.h"
#include "qrnimport/PmiGeometry.h"

#include <Precision.hxx>
#include <Standard_Failure.hxx>
#include <TCollection_ExtendedString.hxx>
#include <TDF_LabelSequence.hxx>
#include <XCAFDoc_ClippingPlaneTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_View.hxx>
#include <XCAFDoc_ViewTool.hxx>
#include <XCAFView_Object.hxx>

#include <algorithm>
#include <cmath>

namespace qrnimport {

void SavedViews::import(const Handle(TDocStd_Document) & document, ModelData& model,
                        const std::map<std::string, int>& kept) {
    importSections(document, model);
    Handle(XCAFDoc_ViewTool) tool = XCAFDoc_DocumentTool::ViewTool(document->Main());
    TDF_LabelSequence labels;
    tool->GetViewLabels(labels);
    if (labels.IsEmpty())
        return;
    const Bnd_Box box = PmiGeometry::modelBox(document, model);
    gp_Pnt centre;
    const bool hasBox = PmiGeometry::centre(box, centre);
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
            v.name = OcctUtils::toWide(view->Name());
            if (v.name.empty())
                v.name = L"View " + std::to_wstring(i);
            // The PMI the view shows, when it lists any.
            TDF_LabelSequence shown;
            if (tool->GetRefGDTLabel(labels.Value(i), shown) && shown.Length() > 0) {
                v.listsPmi = true;
                for (int g = 1; g <= shown.Length(); ++g) {
                    const auto item = kept.find(OcctUtils::entry(shown.Value(g)));
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
            v.up = OcctUtils::toVec3(up.XYZ());
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
                v.target = OcctUtils::toVec3(centre.XYZ());
                v.eye = OcctUtils::toVec3(centre.XYZ() - direction.XYZ() * distance);
            } else {
                if (distance <= 0.0)
                    distance = 1.0;
                const gp_Pnt eye = view->ProjectionPoint();
                v.eye = OcctUtils::toVec3(eye.XYZ());
                v.target = OcctUtils::toVec3(eye.XYZ() + direction.XYZ() * distance);
            }
            model.views.push_back(std::move(v));
        } catch (const Standard_Failure&) {
        }
    }
}

void SavedViews::importSections(const Handle(TDocStd_Document) & document, ModelData& model) {
    Handle(XCAFDoc_ClippingPlaneTool) tool =
        XCAFDoc_DocumentTool::ClippingPlaneTool(document->Main());
    TDF_LabelSequence labels;
    if (tool.IsNull())
        return;
    tool->GetClippingPlanes(labels);
    for (int i = 1; i <= labels.Length(); ++i) {
        try {
            gp_Pln plane;
            TCollection_ExtendedString name;
            Standard_Boolean capping = Standard_False;
            if (!tool->GetClippingPlane(labels.Value(i), plane, name, capping))
                continue;
            qrnsg::Section section;
            section.name = OcctUtils::toWide(name);
            if (section.name.empty())
                section.name = L"Section " + std::to_wstring(i);
            section.point = OcctUtils::toVec3(plane.Location().XYZ());
            section.normal = OcctUtils::toVec3(plane.Axis().Direction().XYZ());
            section.capped = capping == Standard_True;
            model.sections.push_back(std::move(section));
        } catch (const Standard_Failure&) {
        }
    }
}

} // namespace qrnimport
