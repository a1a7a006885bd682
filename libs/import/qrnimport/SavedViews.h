#pragma once

#include "qrnimport/ModelData.h"

#include <TDocStd_Document.hxx>

#include <map>
#include <string>

namespace qrnimport {

// The saved views of an XCAF document: camera, projection, and the PMI items each lists; and
// its section views, the named clipping planes the views cut with.
class SavedViews {
public:
    // `items` gives the PMI item kept for a label's entry (OcctUtils::entry).
    static void import(const Handle(TDocStd_Document) & document, ModelData& model,
                       const std::map<std::string, int>& items);
    static void importSections(const Handle(TDocStd_Document) & document, ModelData& model);
};

} // namespace qrnimport
