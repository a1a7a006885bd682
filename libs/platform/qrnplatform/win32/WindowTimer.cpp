#include "qrnplatform/WindowTimer.h"
#include "qrnplatform/TimerTable.h"

#include <windows.h>

#include <algorithm>

namespace qrnplatform {

bool WindowTimer::setTimer(void* window, unsigned int id, unsigned int milliseconds) {
    // A null window would make a thread timer with an id of the system's choosing.
    if (!window || !::SetTimer(static_cast<HWND>(window), id, milliseconds, nullptr))
        return false;
    // The system runs the timer; the table only remembers it, as Windows has no call that
    // says what runs.
    TimerTable::start(window, id, std::max<unsigned int>(milliseconds, USER_TIMER_MINIMUM), 0);
    return true;
}

bool WindowTimer::killTimer(void* window, unsigned int id) {
    TimerTable::stop(window, id);
    return ::KillTimer(static_cast<HWND>(window), id) != FALSE;
}

bool WindowTimer::invalidate(void* window) {
    // A null window would repaint every window of the desktop.
    if (!window || !::InvalidateRect(static_cast<HWND>(window), NULL, TRUE))
        return false;
    TimerTable::invalidated(window);
    return true;
}

long long WindowTimer::timeToNextTick() {
    return -1;
}

std::vector<WindowTimer::Tick> WindowTimer::takeDueTicks() {
    return {};
}

} // namespace qrnplatform
