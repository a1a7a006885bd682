#pragma once

#include "qrnmath/Tuple.h"

#include <vector>

namespace qrnsg {

struct PointSet {
    std::vector<qrnmath::Vec3> points;
    float size = 5.0f; // in pixels
};

} // namespace qrnsg
