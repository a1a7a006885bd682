#include "qrnimport/PmiImporter.h"

#include "qrnimport/OcctUtils.h"
#include "qrnimport/PmiGeometry.h"
#include "qrnimport/PmiLayout.h"
#include "qrnimport/PmiPresentation.h"
#include "qrnimport/PmiText.h"
#include "qrnimport/SavedViews.h"

#include <Standard_Failure.hxx>
#include <TColStd_HArray1OfReal.hxx>
#include <TDF_LabelSequence.hxx>
#include <XCAFDimTolObjects_DatumObject.hxx>
#include <XCAFDoc_Datum.hxx>
#include <XCAFDoc_DimTolTool.hxx>
#include <XCAFDoc_Dimension.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_GeomTolerance.hxx>

#include <TopExp_Explorer.hxx>

#include <algorithm>
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

// Pairs the XCAF reader's labels with the annotations the file draws for them. The reader makes
// its labels in the file's order, named as the file names its items, and leaves out those it
// cannot place: a label takes the next item of its kind with its name.
class Links {
public:
    explicit Links(const PmiPresentation* presentation) : m_presentation(presentation) {
        if (presentation)
            m_used.assign(presentation->annotations.size(), false);
    }
    int dimension(const TDF_Label& label) {
        return m_presentation ? next(label, m_presentation->dimensions, m_dimension) : -1;
    }
    int tolerance(const TDF_Label& label) {
        return m_presentation ? next(label, m_presentation->tolerances, m_tolerance) : -1;
    }
    int datum(const std::wstring& letter) const {
        if (!m_presentation || letter.empty())
            return -1;
        const auto& all = m_presentation->annotations;
        for (std::size_t a = 0; a < all.size(); ++a)
            if (!m_used[a] && all[a].kind == Item::DATUM && all[a].datum == letter)
                return static_cast<int>(a);
        return -1;
    }
    // The zone the file gives the tolerance linked last.
    bool magnitude(double& zone) const {
        if (!m_presentation || m_last.IsNull())
            return false;
        const auto found = m_presentation->magnitudes.find(m_last.get());
        if (found == m_presentation->magnitudes.end())
            return false;
        zone = found->second;
        return true;
    }
    // The annotation is the item's, drawn otherwise.
    void claim(int annotation) {
        if (annotation >= 0)
            m_used[static_cast<std::size_t>(annotation)] = true;
    }
    // Draws the item as the file does, when the annotation has anything to draw.
    bool present(int annotation, Item& item) {
        if (annotation < 0 || m_used[static_cast<std::size_t>(annotation)] ||
            !m_presentation->drawn)
            return false;
        const auto& a = m_presentation->annotations[static_cast<std::size_t>(annotation)];
        if (a.lines.stripCount() == 0 && a.fills.indices.empty())
            return false;
        m_used[static_cast<std::size_t>(annotation)] = true;
        item.presented = true;
        item.lines = a.lines;
        item.fills = a.fills;
        item.colour = a.colour;
        item.coloured = a.coloured;
        item.lineWidth = a.width;
        item.hasPlane = a.hasPlane;
        item.textPlaced = true;
        return true;
    }
    // The annotations no label took, as items of their own.
    void addUnused(ModelData& model) {
        if (!m_presentation)
            return;
        for (std::size_t a = 0; a < m_used.size(); ++a) {
            Item item;
            const auto& annotation = m_presentation->annotations[a];
            item.kind = annotation.kind;
            item.name = annotation.name;
            item.description = annotation.name;
            if (!present(static_cast<int>(a), item))
                continue;
            if (item.name.empty())
                item.name = L"Annotation " + std::to_wstring(a + 1);
            m_items[static_cast<int>(a)] = static_cast<int>(model.pmi.size());
            model.pmi.push_back(std::move(item));
        }
    }
    void took(int annotation, int item) {
        if (annotation >= 0)
            m_items[annotation] = item;
    }
    std::map<int, int>& items() { return m_items; }

private:
    int next(const TDF_Label& label, const std::vector<Handle(Standard_Transient)>& entities,
             std::size_t& from) const {
        std::wstring name;
        OcctUtils::labelName(label, name);
        m_last.Nullify();
        for (std::size_t e = from; e < entities.size(); ++e)
            if (PmiPresentation::semanticName(entities[e]) == name) {
                from = e + 1;
                m_last = entities[e];
                return m_presentation->of(entities[e]);
            }
        return -1;
    }

    const PmiPresentation* m_presentation;
    mutable Handle(Standard_Transient) m_last; // the file's item of the label linked last
    std::vector<bool> m_used;
    std::size_t m_dimension = 0, m_tolerance = 0;
    std::map<int, int> m_items; // annotation to item
};

std::wstring numbered(const wchar_t* what, int n) {
    return std::wstring(what) + L" " + std::to_wstring(n);
}

// Every label of one kind, with its presentation, the geometry it refers to and its text. An
// item with nothing to show (an empty label, an object OCCT could not fill) is left out.
// The placed faces of the shapes an item refers to.
void referredFaces(const TopoDS_Shape& shapes, const PmiImporter::FaceOwners* owners,
                   const ModelData& model, std::vector<std::pair<int, int>>& faces) {
    if (!owners || shapes.IsNull())
        return;
    for (TopExp_Explorer it(shapes, TopAbs_FACE); it.More(); it.Next()) {
        const auto found = owners->find(it.Current().TShape().get());
        if (found == owners->end())
            continue;
        for (const auto& owner : found->second)
            for (std::size_t n = 0; n < model.nodes.size(); ++n)
                if (model.nodes[n].part == owner.first) {
                    const std::pair<int, int> face(static_cast<int>(n), owner.second);
                    if (std::find(faces.begin(), faces.end(), face) == faces.end())
                        faces.push_back(face);
                }
    }
}

void importItems(const Handle(XCAFDoc_DimTolTool) & tool, const TDF_LabelSequence& labels,
                 const Describe& describe, const std::function<int(const TDF_Label&)>& link,
                 Links& links, const PmiImporter::FaceOwners* owners, ModelData& model,
                 LabelItems& kept) {
    for (int i = 1; i <= labels.Length(); ++i) {
        const TDF_Label& label = labels.Value(i);
        try {
            Item item;
            Sources sources;
            std::wstring text;
            // Linked first: the file's item may say what the reader left out; and the
            // geometry it is on, which a dimension without a value measures.
            const int annotation = link(label);
            PmiGeometry::addReferences(tool, label, sources);
            if (!describe(i, label, item, sources, text))
                continue;
            // The XCAF reader's own presentation, where it made one, comes with the text
            // it places; the file's drawing stands in where it made none.
            if (!sources.presentation.IsNull())
                links.claim(annotation);
            if (!sources.presentation.IsNull() || !links.present(annotation, item)) {
                PmiGeometry::addPresentation(sources.presentation, item.lines);
                PmiGeometry::addText(item, text, sources);
            }
            referredFaces(sources.referenced, owners, model, item.faces);
            if (item.lines.stripCount() > 0 || !item.texts.empty() || item.presented) {
                kept[OcctUtils::entry(label)] = static_cast<int>(model.pmi.size());
                links.took(annotation, static_cast<int>(model.pmi.size()));
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
    // A dimension the file gives no value says what its geometry measures, and that it was
    // measured, rather than only what kind it is.
    const Handle(TColStd_HArray1OfReal) values = d->GetValues();
    std::wstring measured;
    double value = 0.0;
    bool round = false;
    const std::wstring kind = PmiText::givenName(d->GetSemanticName());
    const bool radius = kind.find(L"radius") != std::wstring::npos;
    if ((values.IsNull() || values->Length() == 0) &&
        PmiGeometry::measure(sources, radius, value, round)) {
        d->SetValue(value);
        if (round && d->GetType() == XCAFDimTolObjects_DimensionType_Location_None)
            d->SetType(radius ? XCAFDimTolObjects_DimensionType_Size_Radius
                              : XCAFDimTolObjects_DimensionType_Size_Diameter);
        measured = L" (measured)";
    }
    text = PmiText::dimension(d, lengthUnit) + measured;
    item.description = PmiText::dimensionWords(d, lengthUnit) + measured;
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
                       std::wstring& text, const Handle(XCAFDoc_DimTolTool) & tool,
                       const Links& links) {
    Handle(XCAFDoc_GeomTolerance) attribute;
    if (!label.FindAttribute(XCAFDoc_GeomTolerance::GetID(), attribute))
        return false;
    Handle(XCAFDimTolObjects_GeomToleranceObject) t = attribute->GetObject();
    if (t.IsNull())
        return false;
    double zone = 0.0;
    if (t->GetValue() <= 0.0 && links.magnitude(zone))
        t->SetValue(zone);
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
    item.description = PmiText::toleranceWords(t, datums);
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
    item.description = L"datum " + letter;
    return true;
}

} // namespace

int PmiImporter::import(const Handle(TDocStd_Document) & document, ModelData& model,
                        const PmiPresentation* presentation, const FaceOwners* owners) {
    if (document.IsNull() || !XCAFDoc_DocumentTool::IsXCAFDocument(document))
        return 0;
    const std::size_t before = model.pmi.size();
    LabelItems kept;
    Links links(presentation);
    try {
        Handle(XCAFDoc_DimTolTool) tool = XCAFDoc_DocumentTool::DimTolTool(document->Main());
        if (!tool.IsNull()) {
            using namespace std::placeholders;
            TDF_LabelSequence labels;
            tool->GetDimensionLabels(labels);
            const std::wstring unit = model.lengthUnit;
            importItems(
                tool, labels, std::bind(describeDimension, _1, _2, _3, _4, _5, unit),
                [&](const TDF_Label& l) { return links.dimension(l); }, links, owners, model, kept);
            labels.Clear();
            tool->GetGeomToleranceLabels(labels);
            importItems(
                tool, labels,
                std::bind(describeTolerance, _1, _2, _3, _4, _5, tool, std::cref(links)),
                [&](const TDF_Label& l) { return links.tolerance(l); }, links, owners, model, kept);
            labels.Clear();
            tool->GetDatumLabels(labels);
            std::map<std::pair<std::wstring, const void*>, std::string> seen;
            importItems(
                tool, labels,
                std::bind(describeDatum, _1, _2, _3, _4, _5, std::ref(seen), std::ref(kept)),
                [&](const TDF_Label& l) { return links.datum(datumLetter(l)); }, links, owners,
                model, kept);
        }
        links.addUnused(model);
        SavedViews::import(document, model, kept);
    } catch (const Standard_Failure&) {
        // What was read before the failure stays.
    } catch (const std::exception&) {
    }
    // A view the file lists its annotations for shows those.
    if (presentation && presentation->drawn)
        for (auto& view : model.views) {
            const auto listed = presentation->views.find(view.name);
            if (listed == presentation->views.end())
                continue;
            view.listsPmi = true;
            view.pmi.clear();
            for (int a : listed->second) {
                const auto item = links.items().find(a);
                if (item != links.items().end())
                    view.pmi.push_back(item->second);
            }
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
