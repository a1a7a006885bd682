#pragma once

#include "qrnmath/Tuple.h"

namespace qrnsg {

// The material of lines and texts: a colour, a width and an optional stipple.
struct PLMaterial {
    qrnmath::Vec4 color{0.0f, 0.0f, 0.0f, 1.0f};
    float width = 1.0f;
    bool stipple = false;
    int stippleFactor = 1;
    unsigned short stipplePattern = 0xFFFF;
};

} // namespace qrnsg
