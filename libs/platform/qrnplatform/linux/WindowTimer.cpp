#include "qrnplatform/WindowTimer.h"

#include <algorithm>
#include <chrono>

namespace qrnplatform {

namespace {

struct Timer {
    void* window;
    unsigned int id;
    unsigned int interval;
    std::uint64_t due;
    std::uint64_t order; // when started, so that timers due together tick in that order
};

// Only the user-interface thread touches these, as with the messages they stand for.
std::vector<Timer> g_timers;
std::vector<void*> g_invalidated;
WindowTimer::Clock g_clock = nullptr;
std::uint64_t g_started = 0;

std::uint64_t now() {
    if (g_clock)
        return g_clock();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::steady_clock::now().time_since_epoch())
                                          .count());
}

std::vector<Timer>::iterator findTimer(void* window, unsigned int id) {
    return std::find_if(g_timers.begin(), g_timers.end(),
                        [&](const Timer& t) { return t.window == window && t.id == id; });
}

} // namespace

bool WindowTimer::setTimer(void* window, unsigned int id, unsigned int milliseconds) {
    if (!window)
        return false;
    const unsigned int interval = std::max(milliseconds, 10u);
    const std::uint64_t t = now();
    auto it = findTimer(window, id);
    if (it == g_timers.end())
        g_timers.push_back(Timer{window, id, interval, t + interval, g_started++});
    else
        *it = Timer{window, id, interval, t + interval, g_started++};
    return true;
}

bool WindowTimer::killTimer(void* window, unsigned int id) {
    auto it = findTimer(window, id);
    if (it == g_timers.end())
        return false;
    g_timers.erase(it);
    return true;
}

bool WindowTimer::invalidate(void* window) {
    if (!window)
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

void WindowTimer::setClock(Clock clock) {
    g_clock = clock;
}

long long WindowTimer::timeToNextTick() {
    if (g_timers.empty())
        return -1;
    const std::uint64_t t = now();
    std::uint64_t due = g_timers.front().due;
    for (const Timer& timer : g_timers)
        due = std::min(due, timer.due);
    return due <= t ? 0 : static_cast<long long>(due - t);
}

std::vector<WindowTimer::Tick> WindowTimer::takeDueTicks() {
    const std::uint64_t t = now();
    std::vector<Timer> due;
    for (Timer& timer : g_timers)
        if (timer.due <= t) {
            due.push_back(timer);
            timer.due = t + timer.interval;
        }
    std::sort(due.begin(), due.end(), [](const Timer& a, const Timer& b) {
        return a.due != b.due ? a.due < b.due : a.order < b.order;
    });
    std::vector<Tick> ticks;
    ticks.reserve(due.size());
    for (const Timer& timer : due)
        ticks.push_back(Tick{timer.window, timer.id});
    return ticks;
}

} // namespace qrnplatform
