#pragma once

#include "qrnviewer/Sectioning.h"

#include <string>
#include <utility>
#include <vector>

namespace qrnviewer {

// The viewer's command line.
struct Options {
    std::string model;    // empty: the built-in demo assembly
    std::string snapshot; // PNG to write; empty: interactive
    unsigned int width = 1024;
    unsigned int height = 768;
    std::string view = "iso"; // a standard orientation or the name of a saved view of the file
    bool pmi = true;          // PMI shown
    unsigned int samples = 1; // snapshot: 4 multisampled
    bool transparent = false; // snapshot: alpha 0 where the background shows
    int mouseStyle = -1;      // -1: the document's
    std::string replay;       // event log to play before the first frame
    std::string record;       // event log to write (window only)
    std::string screenshot;   // window: write the frame after the replay here, close (tests)
    std::vector<std::pair<int, int>> picks; // window pixels to name (and highlight), in order
    std::string select = "any";             // what a --pick names: part, face, edge, vertex, any
    std::vector<int> measure;               // two window pixels to measure between: x, y, x, y
    // Milliseconds a frame may take while the camera moves; negative: the "FrameBudget"
    // setting of the renderer, else the renderer's default.
    double frameBudget = -1.0;
    unsigned int meshThreads = 0; // threads meshing parts at once; 0: one per core
    double timeLimit = 600.0;     // seconds to read and mesh the model; 0: none
    Sectioning::Settings section; // --section, --flip, --caps, --hatch, --profile
    bool explode = false;         // every level of the assembly exploded
    std::string state;            // scene state to restore before the first frame
    std::string saveState;        // where the scene state is saved (after a replay)
    bool help = false;

    // False with a message in error for a command line that makes no sense.
    static bool parse(int argc, const char* const* argv, Options& options, std::string& error);
    static std::string usage();
    // The frame budget to use: the option's, else the setting's, else `fallback`.
    static double budget(const Options& options, double fallback);
};

} // namespace qrnviewer
