#include "qrnviewer/Replay.h"

#include "qrnplatform/WindowTimer.h"

namespace qrnviewer {

using qrnplatform::WindowTimer;

namespace {

// The timer service takes a plain function as its clock.
std::uint64_t g_now = 0;

std::uint64_t replayClock() {
    return g_now;
}

// Delivers every tick due up to time, each at its own moment.
void runUntil(EventRouter& router, std::uint64_t time) {
    for (long long wait = WindowTimer::timeToNextTick();
         wait >= 0 && g_now + static_cast<std::uint64_t>(wait) <= time;
         wait = WindowTimer::timeToNextTick()) {
        g_now += static_cast<std::uint64_t>(wait);
        router.pump();
    }
    g_now = time;
}

} // namespace

void Replay::run(EventRouter& router, const std::vector<InputEvent>& events) {
    g_now = 0;
    WindowTimer::setClock(&replayClock);
    router.pump();
    for (const InputEvent& e : events) {
        runUntil(router, e.time);
        router.route(e);
        router.pump();
    }
    WindowTimer::setClock(nullptr);
}

} // namespace qrnviewer
