// What the window timers do the same on every platform; the rest is per platform.
#include "qrnplatform/WindowTimer.h"
#include "qrnplatform/TimerTable.h"

namespace qrnplatform {

unsigned int WindowTimer::interval(void* window, unsigned int id) {
    return TimerTable::interval(window, id);
}

std::vector<void*> WindowTimer::takeInvalidated() {
    return TimerTable::takeInvalidated();
}

void WindowTimer::setClock(Clock clock) {
    TimerTable::setClock(clock);
}

std::uint64_t WindowTimer::now() {
    return TimerTable::now();
}

} // namespace qrnplatform
