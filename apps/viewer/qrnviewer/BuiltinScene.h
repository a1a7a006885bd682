#pragma once

#include "qrnviewer/ModelData.h"

namespace qrnviewer {

// A small assembly made here, without any file: a base plate, two instances of one pin, a
// block and a transparent cover, each with its edges.
class BuiltinScene {
public:
    static ModelData make();
};

} // namespace qrnviewer
