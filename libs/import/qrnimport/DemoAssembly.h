#pragma once

#include "qrn/IStatusManager.h"
#include "qrnimport/ModelData.h"
#include "qrnimport/qrnimport_export.h"

#include <string>

namespace qrnimport {

// The built-in demo assembly: several assembly levels, a part used more than once, colours per
// part and per face, a transparent part, holes, fillets and edges worth measuring. What the
// viewer shows without a file, and a generated model for tests and benchmarks.
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
class QRNIMPORT_EXPORT DemoAssembly {
public:
    // The demo modelled and read as a file of it would be, with the reader's default options;
    // false with the reason in error.
    static bool model(ModelData& model, std::string& error, qrn::IStatusManager* status = nullptr);
    // A PMI note on the first bolt's head: what the viewer shows with the demo.
    static void addNote(ModelData& model);
};

} // namespace qrnimport
