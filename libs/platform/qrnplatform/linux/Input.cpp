#include "qrnplatform/Input.h"

#include <bitset>

namespace qrnplatform {

namespace {
// Virtual-key codes are bytes. Only the UI thread reads and writes these, as with the window
// messages they stand for.
std::bitset<256> g_keysDown;
bool g_touchMessage = false;

bool isKeyCode(int virtualKey) {
    return virtualKey >= 0 && virtualKey < static_cast<int>(g_keysDown.size());
}
} // namespace

bool Input::isKeyDown(int virtualKey) {
    return isKeyCode(virtualKey) && g_keysDown.test(static_cast<std::size_t>(virtualKey));
}

bool Input::isTouchMessage() {
    return g_touchMessage;
}

void Input::setKeyDown(int virtualKey, bool down) {
    if (isKeyCode(virtualKey))
        g_keysDown.set(static_cast<std::size_t>(virtualKey), down);
}

void Input::setTouchMessage(bool fromTouch) {
    g_touchMessage = fromTouch;
}

} // namespace qrnplatform
