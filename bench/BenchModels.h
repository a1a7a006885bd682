#pragma once

#include "qrnimport/ModelData.h"

#include <string>

namespace qrnbench {

// The models the benchmarks draw.
class BenchModels {
public:
    // Many instances of a few parts: at least minTriangles in all.
    static qrnimport::ModelData generatedAssembly(std::size_t minTriangles);
    // A file of the shared model folder; empty path when the folder or file is missing.
    static std::string sharedModel(const std::string& name);
    // A model file read through the viewer's reader; empty, saying why, when it cannot be.
    static qrnimport::ModelData read(const std::string& path);
    // The viewer's demo assembly; empty, with the reason printed, when it cannot be made.
    static qrnimport::ModelData demo();
    // A generated assembly carrying `items` PMI items (dimensions, feature control frames,
    // datums, notes) laid out as the viewer lays out a file's.
    static qrnimport::ModelData withPmi(std::size_t items);
};

} // namespace qrnbench
