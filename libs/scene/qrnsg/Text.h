#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"

#include <algorithm>
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

    // An estimate of the drawn width before any font is at hand (about half an em a character,
    // a frame's padding), for layouts and view fits.
    float estimatedWidth() const {
        const auto compartments =
            framed ? std::count(text.begin(), text.end(), L'|') + 1 : std::ptrdiff_t(0);
        return height *
               (0.55f * static_cast<float>(text.size()) + 0.6f * static_cast<float>(compartments));
    }
    // The box of the text lying in its plane, from that estimate.
    BBox bbox() const {
        const float w = estimatedWidth();
        const float from = align == LEFT ? 0.0f : align == RIGHT ? -w : -w / 2.0f;
        const qrnmath::Vec3 x = direction.length() > 0.0f ? direction.normalized() : direction;
        const qrnmath::Vec3 y = up.length() > 0.0f ? up.normalized() * (0.65f * height) : up;
        BBox b;
        for (float t : {from, from + w})
            for (float s : {-1.0f, 1.0f})
                b.add(position + x * t + y * s);
        return b;
    }
};

} // namespace qrnsg
