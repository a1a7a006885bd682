#pragma once

#include "qrnmath/Tuple.h"

#include <string>

namespace qrnsg {

// A text record of the scene: where it is anchored and what it says. How it is drawn (font,
// outline or bitmap) is decided by its drawable.
struct Text {
    // Where the anchor lies on the text's box: the middle of its left end, of its right end, or
    // its centre.
    enum Align : unsigned char { LEFT, RIGHT, CENTRE };

    qrnmath::Vec3 position;
    std::wstring text;
    float height = 1.0f; // of the em in world units (as the view fits the model, for a text
                         // kept at one size on screen)
    qrnmath::Vec3 direction{1.0f, 0.0f, 0.0f}; // baseline direction when not turned to the viewer
    qrnmath::Vec3 up{0.0f, 1.0f, 0.0f};
    Align align = LEFT;
    // Drawn in a box, its compartments parted at each '|' (a feature control frame, a datum
    // label).
    bool framed = false;
};

} // namespace qrnsg
