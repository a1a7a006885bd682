#pragma once

#include "qrnviewer/EventRouter.h"
#include "qrnviewer/InputEvent.h"

#include <vector>

namespace qrnviewer {

// Plays recorded events through a router as the event loop would have delivered them, on a
// clock of its own: time jumps from each timer tick due to the next and to each event, so
// that animations and spins take the same steps on any machine, however fast.
class Replay {
public:
    // The real clock is back when it returns.
    static void run(EventRouter& router, const std::vector<InputEvent>& events);
};

} // namespace qrnviewer
