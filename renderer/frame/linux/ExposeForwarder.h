#pragma once

// Sends a child window's Expose events on to its host window. A context that draws on a child
// of another visual covers the host, so the server reports uncovered parts to the child, which
// the host's toolkit does not know: without this nothing repaints until the next input. A
// thread of its own, on a connection of its own, watches the children while any are added.
#include <X11/Xlib.h>

namespace qrngl {

class ExposeForwarder {
public:
    ExposeForwarder() = delete;

    // Forwards child's exposures to host from now on; false when the server cannot be reached
    // or the child is gone.
    static bool add(Display* display, Window child, Window host);
    // Stops forwarding child's; call before the child is destroyed.
    static void remove(Window child);
};

} // namespace qrngl
