#pragma once

// Not part of the library's interface: what both window-timer backends remember of the
// timers asked for and the windows invalidated. Only the user-interface thread touches it, as
// with the window messages it stands for.

#include <cstdint>
#include <vector>

namespace qrnplatform {

class TimerTable {
public:
    struct Timer {
        void* window;
        unsigned int id;
        unsigned int interval;
        std::uint64_t due;   // when it ticks next, where the host drives the timers
        std::uint64_t order; // when started, so that timers due together tick in that order
    };

    // Starts the timer, or restarts it with the new interval and due time.
    static void start(void* window, unsigned int id, unsigned int interval, std::uint64_t due);
    // False when no such timer runs.
    static bool stop(void* window, unsigned int id);
    // The interval of a running timer, 0 when it does not run.
    static unsigned int interval(void* window, unsigned int id);
    static std::vector<Timer>& timers();

    // Milliseconds on the clock that was set, or on the steady clock.
    static void setClock(std::uint64_t (*clock)());
    static std::uint64_t now();

    // Records the window once, in the order of first invalidation.
    static void invalidated(void* window);
    static std::vector<void*> takeInvalidated();
};

} // namespace qrnplatform
