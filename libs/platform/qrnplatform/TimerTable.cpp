#include "qrnplatform/TimerTable.h"

#include <algorithm>
#include <chrono>

namespace qrnplatform {

namespace {

std::vector<TimerTable::Timer> g_timers;
std::vector<void*> g_invalidated;
std::uint64_t g_started = 0;
std::uint64_t (*g_clock)() = nullptr;

std::vector<TimerTable::Timer>::iterator findTimer(void* window, unsigned int id) {
    return std::find_if(g_timers.begin(), g_timers.end(), [&](const TimerTable::Timer& t) {
        return t.window == window && t.id == id;
    });
}

} // namespace

void TimerTable::start(void* window, unsigned int id, unsigned int interval, std::uint64_t due) {
    const Timer timer{window, id, interval, due, g_started++};
    auto it = findTimer(window, id);
    if (it == g_timers.end())
        g_timers.push_back(timer);
    else
        *it = timer;
}

bool TimerTable::stop(void* window, unsigned int id) {
    auto it = findTimer(window, id);
    if (it == g_timers.end())
        return false;
    g_timers.erase(it);
    return true;
}

unsigned int TimerTable::interval(void* window, unsigned int id) {
    auto it = findTimer(window, id);
    return it == g_timers.end() ? 0u : it->interval;
}

std::vector<TimerTable::Timer>& TimerTable::timers() {
    return g_timers;
}

void TimerTable::setClock(std::uint64_t (*clock)()) {
    g_clock = clock;
}

std::uint64_t TimerTable::now() {
    if (g_clock)
        return g_clock();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::steady_clock::now().time_since_epoch())
                                          .count());
}

void TimerTable::invalidated(void* window) {
    if (std::find(g_invalidated.begin(), g_invalidated.end(), window) == g_invalidated.end())
        g_invalidated.push_back(window);
}

std::vector<void*> TimerTable::takeInvalidated() {
    std::vector<void*> taken;
    taken.swap(g_invalidated);
    return taken;
}

} // namespace qrnplatform
