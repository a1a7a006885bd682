#pragma once

#include "qrn/IStatusManager.h"
#include "qrnimport/ModelData.h"
#include "qrnimport/qrnimport_export.h"

#include <functional>
#include <string>

namespace qrnimport {

// Reads a CAD file into model data through Open CASCADE, chosen by the file's extension:
// STEP (.step, .stp), IGES (.iges, .igs), BREP (.brep, .brp), glTF (.gltf, .glb), OBJ (.obj)
// and STL (.stl). Progress goes to the status manager when one is given.
class QRNIMPORT_EXPORT ModelReader {
public:
    struct Options {
        // Meshing tolerance as a fraction of the model's bounding-box diagonal, and the
        // angular tolerance in radians.
        double relativeDeflection = 0.001;
        double angularDeflection = 0.5;
        bool edges = true; // B-rep edges as polylines
        bool pmi = true;   // PMI presentations and saved views
        // The file's own drawing of its PMI (AP242 graphical presentation) where it has one;
        // false lays every item out from what it says.
        bool presentation = true;
        // Threads that mesh independent parts at once; 0: one per core. With 1, parts are
        // meshed one after another, each on one thread.
        unsigned int meshThreads = 0;
        // Seconds a read may take, meshing included; past them it stops at the reader's next
        // step and fails with a message. 0: no limit.
        double timeLimit = 600.0;
        // Runs inside the STEP transfer that reads PMI, where a fault stands for one of the
        // reader's own: tests throw or raise a signal from it, or return false for a
        // transfer that fails without a word.
        std::function<bool()> pmiTransferHook;
    };

    // False with a message fit for the user in error: a missing or unreadable file, a file
    // of no known kind, a reader that failed or crashed, a file with no geometry. A STEP file
    // whose PMI the reader fails on is read again without PMI and saved views, with a warning
    // to the status manager.
    static bool read(const std::string& path, ModelData& model, std::string& error,
                     qrn::IStatusManager* status = nullptr);
    static bool read(const std::string& path, const Options& options, ModelData& model,
                     std::string& error, qrn::IStatusManager* status = nullptr);
};

} // namespace qrnimport
