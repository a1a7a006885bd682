#pragma once

#include "qrnmath/Tuple.h"

#include <string>

namespace qrnsg {

// A text record of the scene: where it is anchored and what it says. How it is drawn (font,
// outline or bitmap) is decided by its drawable.
struct Text {
    qrnmath::Vec3 position;
    std::wstring text;
    float height = 1.0f;
    qrnmath::Vec3 direction{1.0f, 0.0f, 0.0f}; // baseline direction when not turned to the viewer
    qrnmath::Vec3 up{0.0f, 1.0f, 0.0f};
};

} // namespace qrnsg
