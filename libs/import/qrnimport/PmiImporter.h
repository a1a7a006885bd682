#pragma once

#include "qrnimport/ModelData.h"

#include <TDocStd_Document.hxx>

namespace qrnimport {

// Reads the PMI of an XCAF document (dimensions, geometric tolerances, datums, with their
// graphical presentations and texts) and its saved views into model data.
class PmiImporter {
public:
    // Returns the number of PMI items added.
    static int import(const Handle(TDocStd_Document) & document, ModelData& model);
};

} // namespace qrnimport
