#include "qrngl/interaction/QrnEventInterpreter.h"

#include "qrngl/IManipulator.h"

#include <cstdlib>

namespace qrngl {

namespace {

bool has(unsigned int flags, unsigned int bits) {
    return (flags & bits) == bits;
}

// Zoom follows vertical motion; a pure vertical step (dx = 0) always counts.
bool mostlyVertical(int dx, int dy) {
    return dx == 0 || std::abs(dy) >= std::abs(dx);
}

bool give(IEventInterpreter::Operation operation, IEventInterpreter::Operation& result) {
    result = operation;
    return true;
}

} // namespace

QrnEventInterpreter::QrnEventInterpreter(bool is2D) : IEventInterpreter(is2D) {}

QrnEventInterpreter::~QrnEventInterpreter() = default;

bool QrnEventInterpreter::interpret(unsigned int const& flags, Operation const& requested,
                                    int const& dx, int const& dy, Operation& result) {
    if (flags == KEY_LBUTTON) {
        // A click is not a drag.
        if (dx == 0 && dy == 0)
            return false;
        switch (requested) {
        case ROTATE:
        case SPIN:
            return isAvailable(requested) && !is2D() && give(requested, result);
        case ZOOM:
            return isAvailable(ZOOM) && mostlyVertical(dx, dy) && give(ZOOM, result);
        case NORMALVIEW:
        case PAN:
        case ZOOMBOX:
        case BOXSELECT:
            return isAvailable(requested) && give(requested, result);
        default:
            // A number from the settings that names no operation: the left button does nothing.
            return false;
        }
    }

    if (has(flags, KEY_MBUTTON)) {
        if (has(flags, KEY_CONTROL) && isAvailable(PAN))
            return give(PAN, result);
        if (flags != KEY_MBUTTON)
            return false;
        // With the SPIN bit there is deliberately no fall-back to ROTATE.
        if (isAvailable(SPIN))
            return !is2D() && give(SPIN, result);
        return isAvailable(ROTATE) && !is2D() && give(ROTATE, result);
    }

    // The right-button gestures do not consult the mask.
    if (has(flags, KEY_LBUTTON | KEY_RBUTTON))
        return give(PAN, result);
    if (has(flags, KEY_RBUTTON | KEY_SHIFT))
        return mostlyVertical(dx, dy) && give(ZOOM, result);
    if (flags == KEY_RBUTTON)
        return mostlyVertical(dx, dy) && (dx != 0 || dy != 0) && give(ZOOM, result);
    return false;
}

bool QrnEventInterpreter::interpretMiddleRotatePan(unsigned int flags, unsigned int panModifier,
                                                   Operation& result) const {
    if (!has(flags, KEY_MBUTTON))
        return false;
    if (has(flags, panModifier) && isAvailable(PAN))
        return give(PAN, result);
    return flags == KEY_MBUTTON && isAvailable(ROTATE) && give(ROTATE, result);
}

} // namespace qrngl
