#include "qrngl/interaction/InventorEventInterpreter.h"

#include "qrngl/IManipulator.h"
#include "qrnplatform/Input.h"

namespace qrngl {

namespace {
enum { F4_KEY = 0x73 }; // the virtual-key code of F4
} // namespace

InventorEventInterpreter::InventorEventInterpreter(bool is2D) : QrnEventInterpreter(is2D) {}

InventorEventInterpreter::~InventorEventInterpreter() = default;

bool InventorEventInterpreter::interpret(unsigned int const& flags, Operation const& requested,
                                         int const& dx, int const& dy, Operation& result) {
    if (flags & KEY_MBUTTON) {
        if (flags == KEY_MBUTTON && isAvailable(PAN)) {
            result = PAN;
            return true;
        }
    } else if (qrnplatform::Input::isKeyDown(F4_KEY)) {
        // Read at this moment, not at the press: F4 may go down in the middle of a drag.
        if (flags == KEY_LBUTTON && isAvailable(ROTATE)) {
            result = ROTATE;
            return true;
        }
    } else if (flags == KEY_LBUTTON && requested == ZOOMBOX && isAvailable(ZOOMBOX)) {
        result = ZOOMBOX;
        return true;
    }
    return QrnEventInterpreter::interpret(flags, requested, dx, dy, result);
}

} // namespace qrngl
