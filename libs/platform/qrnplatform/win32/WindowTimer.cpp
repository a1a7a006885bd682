#include "qrnplatform/WindowTimer.h"

#include <windows.h>

#include <algorithm>

namespace qrnplatform {

namespace {

// The system runs the timers; these only remember what was asked of it, so that the library
// and tests can tell what runs (Windows has no call that says).
struct Timer {
    void* window;
    unsigned int id;
    unsigned int interval;
};
std::vector<Timer> g_timers;
std::vector<void*> g_invalidated;

std::vector<Timer>::iterator findTimer(void* window, unsigned int id) {
    return std::find_if(g_timers.begin(), g_timers.end(),
                        [&](const Timer& t) { return t.window == window && t.id == id; });
}

} // namespace

bool WindowTimer::setTimer(void* window, unsigned int id, unsigned int milliseconds) {
    // A null window would make a thread timer with an id of the system's choosing.
    if (!window || !::SetTimer(static_cast<HWND>(window), id, milliseconds, nullptr))
        return false;
    const unsigned int interval = std::max<unsigned int>(milliseconds, USER_TIMER_MINIMUM);
    auto it = findTimer(window, id);
    if (it == g_timers.end())
        g_timers.push_back(Timer{window, id, interval});
    else
        it->interval = interval;
    return true;
}

bool WindowTimer::killTimer(void* window, unsigned int id) {
    auto it = findTimer(window, id);
    if (it != g_timers.end())
        g_timers.erase(it);
    return ::KillTimer(static_cast<HWND>(window), id) != FALSE;
}

bool WindowTimer::invalidate(void* window) {
    // A null window would repaint every window of the desktop.
    if (!window || !::InvalidateRect(static_cast<HWND>(window), NULL, TRUE))
        return false;
    if (std::find(g_invalidated.begin(), g_invalidated.end(), window) == g_invalidated.end())
        g_invalidated.push_back(window);
    return true;
}

unsigned int WindowTimer::interval(void* window, unsigned int id) {
    auto it = findTimer(window, id);
    return it == g_timers.end() ? 0u : it->interval;
}

std::vector<void*> WindowTimer::takeInvalidated() {
    std::vector<void*> taken;
    taken.swap(g_invalidated);
    return taken;
}

void WindowTimer::setClock(Clock) {}

long long WindowTimer::timeToNextTick() {
    return -1;
}

std::vector<WindowTimer::Tick> WindowTimer::takeDueTicks() {
    return {};
}

} // namespace qrnplatform
