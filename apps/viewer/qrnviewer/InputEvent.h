#pragma once

#include "qrngl/IManipulator.h"

#include <cstdint>

namespace qrnviewer {

// One input event as the host hands it to the manipulator chain, in the terms of the Windows
// messages the tools were made for: key-state flags are the MK_ bits of the buttons and keys
// held after the event, keys are virtual-key codes, wheel deltas come in 120ths of a notch.
// Gestures are those of the window's gesture messages, their flags the GF_ bits.
struct InputEvent {
    enum Kind {
        BUTTON_DOWN,
        BUTTON_UP,
        MOTION,
        WHEEL,
        KEY_DOWN,
        KEY_UP,
        WAIT,
        PAN,
        ZOOM,
        ROTATE,
        TWO_FINGER_TAP
    };
    enum GestureFlags : unsigned int {
        GESTURE_BEGIN = 0x01,
        GESTURE_INERTIA = 0x02,
        GESTURE_END = 0x04
    };

    std::uint64_t time = 0; // milliseconds since the first event
    Kind kind = MOTION;
    qrngl::MouseButton button = qrngl::LEFT;
    unsigned int flags = 0;
    int x = 0, y = 0; // window client pixels, y down
    // Wheel: 120ths of a notch; zoom: the signed amount, negative zooming in; rotate: the angle
    // in hundredths of a degree.
    int delta = 0;
    unsigned int key = 0;
    bool touch = false; // a button or motion message the system made from touch input
};

} // namespace qrnviewer
