#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"

#include <algorithm>
#include <cmath>
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

    // The box of a line as it is drawn, in em: from below the baseline to above it, centred
    // on the anchor's height; and the room a frame leaves each side of a compartment.
    static constexpr float BOX_BELOW = 0.3f;
    static constexpr float BOX_ABOVE = 0.95f;
    static constexpr float BOX_HALF_HEIGHT = (BOX_ABOVE + BOX_BELOW) / 2.0f;
    static constexpr float FRAME_PADDING = 0.3f;

    // An estimate of the drawn width before any font is at hand (about half an em a character,
    // a frame's padding), for layouts and view fits.
    float estimatedWidth() const {
        const auto compartments =
            framed ? std::count(text.begin(), text.end(), L'|') + 1 : std::ptrdiff_t(0);
        return height * (0.55f * static_cast<float>(text.size()) +
                         2.0f * FRAME_PADDING * static_cast<float>(compartments));
    }
    // The frame of the text lying in its plane: x along its baseline, y up, z its normal, all
    // unit and square (up is made square to the baseline; a direction alone gets an up).
    void frame(qrnmath::Vec3& x, qrnmath::Vec3& y, qrnmath::Vec3& z) const {
        using qrnmath::Vec3;
        x = direction.length() > 0.0f ? direction.normalized() : Vec3(1, 0, 0);
        y = up - x * x.dot(up);
        if (y.length() < 1e-6f)
            y = qrnmath::cross(std::abs(x[2]) < 0.9f ? Vec3(0, 0, 1) : Vec3(0, 1, 0), x);
        y = y.normalized();
        z = qrnmath::cross(x, y);
    }
    // Where the box's middle lies from the anchor along the baseline, from that estimate.
    float middleFromAnchor() const {
        const float w = estimatedWidth();
        return align == LEFT ? w / 2.0f : align == RIGHT ? -w / 2.0f : 0.0f;
    }
    // The box of the text lying in its plane, from that estimate.
    BBox bbox() const {
        qrnmath::Vec3 x, y, z;
        frame(x, y, z);
        const qrnmath::Vec3 middle = position + x * middleFromAnchor();
        const qrnmath::Vec3 half = x * (estimatedWidth() / 2.0f);
        const qrnmath::Vec3 halfUp = y * (BOX_HALF_HEIGHT * height);
        BBox b;
        for (float s : {-1.0f, 1.0f})
            for (float t : {-1.0f, 1.0f})
                b.add(middle + half * s + halfUp * t);
        return b;
    }
};

} // namespace qrnsg
