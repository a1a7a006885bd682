#pragma once

#include "qrnimport/ModelData.h"

#include <TDocStd_Document.hxx>

#include <unordered_map>
#include <utility>
#include <vector>

namespace qrnimport {

// Reads the PMI of an XCAF document (dimensions, geometric tolerances, datums, with their
// graphical presentations and texts) and its saved views into model data.
class PmiPresentation;

class PmiImporter {
public:
    // The faces of the parts by the B-rep face they were made of (its TShape): part and face
    // index, for each part made of it.
    using FaceOwners = std::unordered_map<const void*, std::vector<std::pair<int, int>>>;

    // Returns the number of PMI items added. Items the file draws itself (presentation, read
    // from the STEP file) are drawn so; the others are laid out from what they say.
    // Items keep the placed faces they refer to, found through owners.
    static int import(const Handle(TDocStd_Document) & document, ModelData& model,
                      const PmiPresentation* presentation = nullptr,
                      const FaceOwners* owners = nullptr);
};

} // namespace qrnimport
