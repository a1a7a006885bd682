#pragma once

#include "qrn/IStatusManager.h"
#include "qrnviewer/ModelData.h"

#include <TDocStd_Document.hxx>

#include <string>

namespace qrnviewer {

// The built-in demo assembly, modelled here with Open CASCADE: several assembly levels, a part
// used more than once, colours per part and per face, a transparent part, holes, fillets and
// edges worth measuring. Used when the viewer is given no file, and as a generated test model.
//
// A shaft unit on a base plate: the shaft turns in two bearing blocks and carries a gear under a
// transparent guard; an angle bracket stands behind it. Z up, millimetres, about 240 x 160 x 100.
//
//   Demo Assembly
//   |- Base Plate            filleted corners, four through holes
//   |- Shaft Unit
//   |  |- Bearing Unit 1, 2  one sub-assembly placed twice
//   |  |  |- Lagerbock Ø20
//   |  |  |- Bolt 1, 2 (Bolt M8x16)
//   |  |- Shaft Ø20          its free end face coloured on its own
//   |  |- Gear
//   |- Bracket Unit
//   |  |- Bracket            filleted inner corner
//   |  |- Bolt 3, 4 (Bolt M8x16)
//   |- Guard                 transparent
class DemoAssembly {
public:
    static Handle(TDocStd_Document) make();
    // Writes an XCAF document as a STEP file (AP214, with names and colours).
    static bool writeStep(const Handle(TDocStd_Document) & document, const std::string& path,
                          std::string& error);
    // The demo as the viewer shows it: make() imported with the reader's default options.
    static bool model(ModelData& model, std::string& error, qrn::IStatusManager* status = nullptr);
    // A PMI note on the first bolt's head: what the viewer shows with the demo.
    static void addNote(ModelData& model);
};

} // namespace qrnviewer
