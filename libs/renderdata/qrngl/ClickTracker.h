#pragma once

#include <cstdlib>

namespace qrngl {

// Whether a press and its release make a click: the same button, the pointer kept within a
// few pixels of the press in between. Tools that act on clicks and leave drags to the camera
// keep one.
class ClickTracker {
public:
    enum : int { SLOP = 3 };
    void press(int button, int x, int y) {
        m_button = button;
        m_x = x;
        m_y = y;
        m_moved = false;
    }
    void move(int x, int y) {
        if (m_button >= 0 && (std::abs(x - m_x) > SLOP || std::abs(y - m_y) > SLOP))
            m_moved = true;
    }
    // True when the release of this button ends a click; the press is forgotten either way.
    bool release(int button) {
        const bool click = m_button == button && !m_moved;
        reset();
        return click;
    }
    void reset() {
        m_button = -1;
        m_moved = false;
    }

private:
    int m_button = -1;
    int m_x = 0, m_y = 0;
    bool m_moved = false;
};

} // namespace qrngl
