#include "qrnplatform/WindowTimer.h"
#include "qrnplatform/TimerTable.h"

#include <algorithm>

namespace qrnplatform {

bool WindowTimer::setTimer(void* window, unsigned int id, unsigned int milliseconds) {
    if (!window)
        return false;
    const unsigned int interval = std::max(milliseconds, 10u);
    TimerTable::start(window, id, interval, now() + interval);
    return true;
}

bool WindowTimer::killTimer(void* window, unsigned int id) {
    return TimerTable::stop(window, id);
}

bool WindowTimer::invalidate(void* window) {
    if (!window)
        return false;
    TimerTable::invalidated(window);
    return true;
}

long long WindowTimer::timeToNextTick() {
    const auto& timers = TimerTable::timers();
    if (timers.empty())
        return -1;
    const std::uint64_t t = now();
    std::uint64_t due = timers.front().due;
    for (const auto& timer : timers)
        due = std::min(due, timer.due);
    return due <= t ? 0 : static_cast<long long>(due - t);
}

std::vector<WindowTimer::Tick> WindowTimer::takeDueTicks() {
    const std::uint64_t t = now();
    std::vector<TimerTable::Timer> due;
    for (auto& timer : TimerTable::timers())
        if (timer.due <= t) {
            due.push_back(timer);
            timer.due = t + timer.interval;
        }
    std::sort(due.begin(), due.end(), [](const auto& a, const auto& b) {
        return a.due != b.due ? a.due < b.due : a.order < b.order;
    });
    std::vector<Tick> ticks;
    ticks.reserve(due.size());
    for (const auto& timer : due)
        ticks.push_back(Tick{timer.window, timer.id});
    return ticks;
}

} // namespace qrnplatform
