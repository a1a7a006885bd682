#include "qrngl/interaction/CATIAEventInterpreter.h"

#include "qrngl/IManipulator.h"

#include <cstdlib>

namespace qrngl {

namespace {
const unsigned int kMiddleAndRight = KEY_MBUTTON | KEY_RBUTTON;
} // namespace

CATIAEventInterpreter::CATIAEventInterpreter(bool is2D) : QrnEventInterpreter(is2D) {}

CATIAEventInterpreter::~CATIAEventInterpreter() = default;

bool CATIAEventInterpreter::interpret(unsigned int const& flags, Operation const& requested,
                                      int const& dx, int const& dy, Operation& result) {
    if (flags == KEY_MBUTTON) {
        if (dx == 0 && dy == 0)
            return false;
        if (isAvailable(ZOOM) && m_zoomLatch) {
            if (dx != 0 && std::abs(dy) < std::abs(dx))
                return false;
            result = ZOOM;
            return true;
        }
        if (isAvailable(PAN)) {
            result = PAN;
            return true;
        }
    } else if ((flags & kMiddleAndRight) == kMiddleAndRight) {
        // Dragging with both buttons ends the latch, so the next middle drag pans again.
        m_zoomLatch = false;
        // Unlike the library's own middle rotation, not refused in 2D.
        if (isAvailable(ROTATE)) {
            result = ROTATE;
            return true;
        }
    }
    return QrnEventInterpreter::interpret(flags, requested, dx, dy, result);
}

bool CATIAEventInterpreter::pre(unsigned int const& flags, Operation const&, int const&,
                                int const&) {
    if ((flags & kMiddleAndRight) == kMiddleAndRight)
        m_zoomLatch = true;
    return m_zoomLatch;
}

bool CATIAEventInterpreter::post(unsigned int const&, Operation const&, int const&, int const&) {
    if (!m_zoomLatch)
        return false;
    m_zoomLatch = false;
    return true;
}

} // namespace qrngl
