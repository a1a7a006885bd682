#pragma once

#include "qrnplatform/qrnplatform_export.h"

#include <cstdint>
#include <vector>

namespace qrnplatform {

// Window timers and repaint requests of the view animation. The library calls setTimer,
// killTimer and invalidate; on Windows these are SetTimer, KillTimer and
// InvalidateRect(window, NULL, TRUE) on the window handle, and the system's message queue
// delivers WM_TIMER and WM_PAINT. Elsewhere nothing delivers them: the calls are recorded, and
// the host's event loop drives them:
//
//     for (;;) {
//         wait for input at most WindowTimer::timeToNextTick() ms (-1: no limit);
//         handle the input;
//         for (const auto& tick : WindowTimer::takeDueTicks())
//             route the tick to what runs timer tick.id on tick.window;
//         for (void* window : WindowTimer::takeInvalidated())
//             repaint window;
//     }
//
// Tests drive it deterministically with a clock of their own (setClock). Everything runs on
// the user-interface thread, as the window messages it stands for.
class QRNPLATFORM_EXPORT WindowTimer {
public:
    WindowTimer() = delete;

    // Starts the timer id on window, or restarts it with the new interval; intervals below
    // 10 ms run at 10 ms, as on Windows. False for a null window or when the system refuses.
    static bool setTimer(void* window, unsigned int id, unsigned int milliseconds);
    // False when no such timer runs.
    static bool killTimer(void* window, unsigned int id);
    // Asks for the whole window to be repainted (background erased).
    static bool invalidate(void* window);

    // The interval of a running timer in ms, 0 when it does not run (on every platform).
    static unsigned int interval(void* window, unsigned int id);
    // The windows invalidated since the last call, each once, in the order of their first
    // invalidation (on every platform; the Windows host has no need of it).
    static std::vector<void*> takeInvalidated();

    struct Tick {
        void* window;
        unsigned int id;
    };
    // Milliseconds on a monotonic clock.
    using Clock = std::uint64_t (*)();
    // The clock the host-driven timers are scheduled by and now() reads (on every platform);
    // nullptr restores the steady clock.
    static void setClock(Clock clock);
    // The time on that clock, for what must tell how long ago something happened.
    static std::uint64_t now();
    // Milliseconds until the next host-driven tick is due (0: one is due now), -1 when none
    // runs. Always -1 on Windows.
    static long long timeToNextTick();
    // The timers due now, earliest first, each once however many intervals have passed (as
    // Windows merges WM_TIMER messages), rescheduled one interval from now. Always empty on
    // Windows.
    static std::vector<Tick> takeDueTicks();
};

} // namespace qrnplatform
