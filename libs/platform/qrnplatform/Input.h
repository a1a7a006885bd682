#pragma once

#include "qrnplatform/qrnplatform_export.h"

namespace qrnplatform {

// The state of the keyboard and the origin of the current mouse message, as the tools ask for
// them while they handle an event. Windows keeps both itself; elsewhere the host reports them
// from its event loop, and the set functions record what it reports.
class QRNPLATFORM_EXPORT Input {
public:
    Input() = delete;

    // True while the key (a Windows virtual-key code, e.g. 0x73 for F4) is down.
    static bool isKeyDown(int virtualKey);
    // True when the mouse message being handled was synthesised from pen or touch input.
    static bool isTouchMessage();

    // Host reports. They are ignored on Windows, where the system's own state is read.
    static void setKeyDown(int virtualKey, bool down);
    static void setTouchMessage(bool fromTouch);
};

} // namespace qrnplatform
