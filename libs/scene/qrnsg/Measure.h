#pragma once

#include "qrnmath/Tuple.h"

#include <string>
#include <vector>

namespace qrnsg {

// A quick measurement as the measure renderer shows it: a label anchored at a world point, and
// the picked points. A distance joins its first two points with a line.
struct Measure {
    enum Kind : int { DISTANCE = 1, POINT = 2 };
    int kind = POINT;
    std::wstring name;    // a point's name, in its label's heading
    std::wstring text;    // what a distance's label says; '\n' starts another line
    qrnmath::Vec3 anchor; // where the label stands
    qrnmath::Vec3 normal; // of the surface picked (a point), or the mean of both (a distance)
    std::vector<qrnmath::Vec3> points;
};

} // namespace qrnsg
