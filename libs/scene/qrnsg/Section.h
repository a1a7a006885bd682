#pragma once

#include "qrnmath/Tuple.h"

#include <string>

namespace qrnsg {

// A section view the document defines: the plane through a point with a normal, and whether
// its cut is shown capped and with its profile.
struct Section {
    std::wstring name;
    qrnmath::Vec3 point;
    qrnmath::Vec3 normal{0.0f, 0.0f, 1.0f};
    bool capped = true;
    bool showProfile = false;
};

} // namespace qrnsg
