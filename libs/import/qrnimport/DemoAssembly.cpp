#include "qrnimport/DemoAssembly.h"

#include "qrnimport/DemoDocument.h"
#include "qrnimport/PmiLayout.h"
#include "qrnimport/XcafImporter.h"
#include "qrnmath/MatrixUtils.h"

#include <Standard_Failure.hxx>
#include <XCAFApp_Application.hxx>

#include <exception>

namespace qrnimport {

void DemoAssembly::addNote(ModelData& model) {
    for (std::size_t i = 0; i < model.nodes.size(); ++i) {
        const auto& node = model.nodes[i];
        if (node.name != L"Bolt 1" || node.part < 0)
            continue;
        const qrnsg::BBox head = model.parts[static_cast<std::size_t>(node.part)].bbox();
        ModelData::PmiItem note;
        note.name = L"Note 1";
        note.kind = ModelData::PmiItem::NOTE;
        note.hasTarget = true;
        note.target = qrnmath::MatrixUtils::transformPoint(
            model.worldTransform(static_cast<int>(i)),
            qrnmath::Vec3(head.center()[0], head.center()[1], head.max()[2]));
        // In front of the plate, where the usual views see it clear of the parts.
        qrnsg::Text text;
        text.text = L"M8 \u2014 tighten to 25 N\u00B7m";
        text.position = note.target + qrnmath::Vec3(-40.0f, -120.0f, 10.0f);
        text.align = qrnsg::Text::RIGHT;
        note.textPlaced = true;
        note.texts.push_back(text);
        model.pmi.push_back(std::move(note));
        PmiLayout::arrange(model, model.pmi.size() - 1);
        return;
    }
}

bool DemoAssembly::model(ModelData& model, std::string& error, qrn::IStatusManager* status) {
    Handle(TDocStd_Document) doc;
    try {
        doc = DemoDocument::make();
    } catch (const std::exception& e) {
        error = e.what();
        return false;
    } catch (const Standard_Failure& failure) {
        error = std::string("demo assembly: ") + failure.GetMessageString();
        return false;
    }
    model = ModelData();
    const bool ok = XcafImporter::import(doc, ModelReader::Options(), model, error, status);
    XCAFApp_Application::GetApplication()->Close(doc);
    return ok;
}

} // namespace qrnimport
