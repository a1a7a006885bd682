#pragma once

#include "qrn/IStatusManager.h"
#include "qrnimport/ModelData.h"
#include "qrnimport/ModelReader.h"
#include "qrnimport/PmiPresentation.h"
#include "qrnimport/ProgressBridge.h"

#include <TDocStd_Document.hxx>

#include <string>

namespace qrnimport {

// Turns an XCAF document into model data: the assembly tree with names and placements, each
// shared part once (meshed once, instanced by its placements), colours and transparency as
// materials per part and per face, faces as meshes with normals, B-rep edges as polylines,
// and (through PmiImporter) PMI and saved views. Faces that already hold a triangulation (mesh
// formats) are used as they are. Past the deadline meshing stops and the import fails.
class XcafImporter {
public:
    // What the STEP reader leaves out of the document, read from its STEP model: tessellated
    // solids (parts placed at the root) and the graphical presentation of PMI.
    struct StepSource {
        ModelData tessellated;
        PmiPresentation presentation;
        bool pmi = false; // the presentation was read
    };
    static bool import(const Handle(TDocStd_Document) & document,
                       const ModelReader::Options& options, ModelData& model, std::string& error,
                       qrn::IStatusManager* status = nullptr,
                       ProgressBridge::Deadline deadline = ProgressBridge::Deadline::max(),
                       const StepSource* step = nullptr);
};

} // namespace qrnimport
