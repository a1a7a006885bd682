#pragma once

#include <TDocStd_Document.hxx>

#include <string>

namespace qrnimport {

// The demo assembly as an XCAF document, modelled with Open CASCADE (see DemoAssembly for what
// it holds), and the STEP writer the tests make files with.
class DemoDocument {
public:
    static Handle(TDocStd_Document) make();
    // Writes an XCAF document as a STEP file (AP214, with names and colours).
    static bool writeStep(const Handle(TDocStd_Document) & document, const std::string& path,
                          std::string& error);
};

} // namespace qrnimport
