#pragma once

#include "qrngl/IManipulator.h"

#include <cstdint>

namespace qrnviewer {

// One input event as the host hands it to the manipulator chain, in the terms of the Windows
// messages the tools were made for: key-state flags are the MK_ bits of the buttons and keys
// held after the event, keys are virtual-key codes, wheel deltas come in 120ths of a notch.
struct InputEvent {
    enum Kind { BUTTON_DOWN, BUTTON_UP, MOTION, WHEEL, KEY_DOWN, KEY_UP, WAIT };

    std::uint64_t time = 0; // milliseconds since the first event
    Kind kind = MOTION;
    qrngl::MouseButton button = qrngl::LEFT;
    unsigned int flags = 0;
    int x = 0, y = 0; // window client pixels, y down
    int delta = 0;
    unsigned int key = 0;
};

} // namespace qrnviewer
