#include "qrnimport/PmiImporter.h"

#include "qrnimport/OcctUtils.h"
#include "qrnimport/PmiGeometry.h"
#include "qrnimport/PmiLayout.h"
#include "qrnimport/PmiText.h"
#include "qrnimport/SavedViews.h"

#include <Standard_Failure.hxx>
#include <TDF_LabelSequence.hxx>
#include <XCAFDimTolObjects_DatumObject.hxx>
#include <XCAFDoc_Datum.hxx>
#include <XCAFDoc_DimTolTool.hxx>
#include <XCAFDoc_Dimension.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_GeomTolerance.hxx>

#include <exception>
#include <functional>
#include <map>
#include <utility>

namespace qrnimport {

namespace {

using Item = ModelData::PmiItem;
using Sources = PmiGeometry::Sources;
// The items kept by their labels' entries, for the saved views that list them.
using LabelItems = std::map<std::string, int>;
// Fills an item of one kind from its label (number `index` of its kind, from 1): its kind and
// name, where it goes and its text; false leaves the label out.
using Describe = std::function<bool(int index, const TDF_Label& label, Item& item, Sources& sources,
                                    std::wstring& text)>;

std::wstring numbered(const wchar_t* what, int n) {
    return std::wstring(what) + L" " + std::to_wstring(n);
}

// Every label of one kind, with its presentation, the geometry it refers to and its text. An
// item with nothing to show (an empty label, an object OCCT could not fill) is left out.
void importItems(const Handle(XCAFDoc_DimTolTool) & tool, const TDF_LabelSequence& labels,
                 const Describe& describe, ModelData& model, LabelItems& kept) {
    for (int i = 1; i <= labels.Length(); ++i) {
        const TDF_Label& label = labels.Value(i);
        try {
            Item item;
            Sources sources;
            std::wstring text;
            if (!describe(i, label, item, sources, text))
                continue;
            PmiGeometry::addPresentation(sources.presentation, item.lines);
            PmiGeometry::addReferences(tool, label, sources);
            PmiGeometry::addText(item, text, sources);
            if (item.lines.stripCount() > 0 || !item.texts.empty()) {
                kept[OcctUtils::entry(label)] = static_cast<int>(model.pmi.size());
                model.pmi.push_back(std::move(item));
            }
        } catch (const Standard_Failure&) {
            // An item OCCT cannot describe is left out; the others still come.
        }
    }
}

bool describeDimension(int index, const TDF_Label& label, Item& item, Sources& sources,
                       std::wstring& text, const std::wstring& lengthUnit) {
    Handle(XCAFDoc_Dimension) attribute;
    if (!label.FindAttribute(XCAFDoc_Dimension::GetID(), attribute))
        return false;
    Handle(XCAFDimTolObjects_DimensionObject) d = attribute->GetObject();
    if (d.IsNull())
        return false;
    item.kind = Item::DIMENSION;
    item.name = OcctUtils::toWide(d->GetPresentationName());
    if (item.name.empty())
        item.name = numbered(L"Dimension", index);
    sources.hasTextPoint = d->HasTextPoint() == Standard_True;
    sources.textPoint = d->GetPointTextAttach();
    sources.presentation = d->GetPresentation();
    if (d->HasPoint())
        sources.connections.push_back(d->GetPoint());
    if (d->HasPoint2())
        sources.connections.push_back(d->GetPoint2());
    sources.hasPlane = d->HasPlane() == Standard_True;
    sources.plane = d->GetPlane();
    text = PmiText::dimension(d, lengthUnit);
    return true;
}

std::wstring datumLetter(const TDF_Label& label) {
    Handle(XCAFDoc_Datum) attribute;
    if (!label.FindAttribute(XCAFDoc_Datum::GetID(), attribute))
        return {};
    Handle(XCAFDimTolObjects_DatumObject) d = attribute->GetObject();
    std::wstring letter = d.IsNull() ? std::wstring() : OcctUtils::toWide(d->GetName());
    if (letter.empty())
        letter = OcctUtils::toWide(attribute->GetName());
    if (!d.IsNull() && d->IsDatumTarget() && d->GetDatumTargetNumber() > 0)
        letter += std::to_wstring(d->GetDatumTargetNumber());
    return letter;
}

bool describeTolerance(int index, const TDF_Label& label, Item& item, Sources& sources,
                       std::wstring& text, const Handle(XCAFDoc_DimTolTool) & tool) {
    Handle(XCAFDoc_GeomTolerance) attribute;
    if (!label.FindAttribute(XCAFDoc_GeomTolerance::GetID(), attribute))
        return false;
    Handle(XCAFDimTolObjects_GeomToleranceObject) t = attribute->GetObject();
    if (t.IsNull())
        return false;
    item.kind = Item::TOLERANCE;
    item.name = OcctUtils::toWide(t->GetPresentationName());
    if (item.name.empty())
        item.name = PmiText::givenName(t->GetSemanticName());
    if (item.name.empty())
        item.name = numbered(L"Tolerance", index);
    std::vector<std::wstring> datums;
    TDF_LabelSequence datumLabels;
    tool->GetDatumOfTolerLabels(label, datumLabels);
    for (int d = 1; d <= datumLabels.Length(); ++d) {
        std::wstring letter = datumLetter(datumLabels.Value(d));
        if (!letter.empty())
            datums.push_back(letter);
    }
    sources.hasTextPoint = t->HasPointText() == Standard_True;
    sources.textPoint = t->GetPointTextAttach();
    sources.presentation = t->GetPresentation();
    if (t->HasPoint())
        sources.connections.push_back(t->GetPoint());
    sources.hasPlane = t->HasPlane() == Standard_True;
    sources.plane = t->GetPlane();
    text = PmiText::tolerance(t, datums);
    return true;
}

// OCCT makes a datum label for each tolerance that refers to a datum; the same letter with the
// same presentation is one datum, kept once under its first label (`seen`).
bool describeDatum(int index, const TDF_Label& label, Item& item, Sources& sources,
                   std::wstring& text,
                   std::map<std::pair<std::wstring, const void*>, std::string>& seen,
                   LabelItems& kept) {
    Handle(XCAFDoc_Datum) attribute;
    if (!label.FindAttribute(XCAFDoc_Datum::GetID(), attribute))
        return false;
    Handle(XCAFDimTolObjects_DatumObject) d = attribute->GetObject();
    const std::wstring letter = datumLetter(label);
    const TopoDS_Shape presentation = d.IsNull() ? TopoDS_Shape() : d->GetPresentation();
    const void* shapeKey = presentation.IsNull() ? nullptr : presentation.TShape().get();
    const auto first = seen.emplace(std::make_pair(letter, shapeKey), OcctUtils::entry(label));
    if (!first.second) {
        const auto known = kept.find(first.first->second);
        if (known != kept.end())
            kept[OcctUtils::entry(label)] = known->second;
        return false;
    }
    item.kind = Item::DATUM;
    item.name = d.IsNull() ? std::wstring() : OcctUtils::toWide(d->GetPresentationName());
    if (item.name.empty())
        item.name = letter.empty() ? numbered(L"Datum", index) : L"Datum " + letter;
    sources.presentation = presentation;
    if (!d.IsNull()) {
        sources.hasTextPoint = d->HasPointText() == Standard_True;
        sources.textPoint = d->GetPointTextAttach();
        if (d->HasPoint())
            sources.connections.push_back(d->GetPoint());
        sources.hasPlane = d->HasPlane() == Standard_True;
        sources.plane = d->GetPlane();
    }
    text = letter;
    return true;
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
            using namespace std::placeholders;
            TDF_LabelSequence labels;
            tool->GetDimensionLabels(labels);
            const std::wstring unit = model.lengthUnit;
            importItems(tool, labels, std::bind(describeDimension, _1, _2, _3, _4, _5, unit), model,
                        kept);
            labels.Clear();
            tool->GetGeomToleranceLabels(labels);
            importItems(tool, labels, std::bind(describeTolerance, _1, _2, _3, _4, _5, tool), model,
                        kept);
            labels.Clear();
            tool->GetDatumLabels(labels);
            std::map<std::pair<std::wstring, const void*>, std::string> seen;
            importItems(
                tool, labels,
                std::bind(describeDatum, _1, _2, _3, _4, _5, std::ref(seen), std::ref(kept)), model,
                kept);
        }
        SavedViews::import(document, model, kept);
    } catch (const Standard_Failure&) {
        // What was read before the failure stays.
    } catch (const std::exception&) {
    }
    qrnsg::BBox bounds;
    try {
        const Bnd_Box box = PmiGeometry::modelBox(document, model);
        if (!box.IsVoid())
            bounds = qrnsg::BBox(OcctUtils::toVec3(box.CornerMin().XYZ()),
                                 OcctUtils::toVec3(box.CornerMax().XYZ()));
    } catch (const Standard_Failure&) {
    }
    PmiLayout::arrange(model, before, bounds);
    return static_cast<int>(model.pmi.size() - before);
}

} // namespace qrnimport
