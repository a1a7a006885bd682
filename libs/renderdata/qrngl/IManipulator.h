#pragma once

#include "qrngl/Cursor.h"
#include "qrngldata/qrngldata_export.h"

#include <memory>

namespace qrngl {

// What an event handler did: UNCHANGED leaves the event to the next manipulator; CHANGED
// consumed it and the frame must be redrawn.
enum FrameStatus { UNCHANGED = 0, CHANGED = 1 };

enum MouseButton { LEFT = 0, MIDDLE = 1, RIGHT = 2 };

// Key-state flags passed with every mouse event (the bits of the Windows mouse messages).
enum KeyFlags : unsigned int {
    KEY_LBUTTON = 0x01, // MK_LBUTTON
    KEY_RBUTTON = 0x02, // MK_RBUTTON
    KEY_SHIFT = 0x04,   // MK_SHIFT
    KEY_CONTROL = 0x08, // MK_CONTROL
    KEY_MBUTTON = 0x10  // MK_MBUTTON
};

// A tool in the host's chain of manipulators. Each button and key handler gets the status the
// previous manipulator returned and returns its own. Coordinates are window client pixels.
class QRNGLDATA_EXPORT IManipulator {
public:
    explicit IManipulator(std::shared_ptr<Cursor> cursor);
    virtual ~IManipulator();

    virtual FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button,
                                        int x, int y);
    virtual FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button,
                                      int x, int y);
    virtual FrameStatus mouseMotion(unsigned int flags, int x, int y);
    // delta: the signed wheel rotation (its sign counts); factor: zoom factor per event.
    virtual FrameStatus mouseWheel(unsigned int flags, int delta, float factor);
    // key: the Windows virtual-key code (27 Escape, 37 to 40 the arrows); the two further
    // values are passed through from the host's key message.
    virtual FrameStatus keyDown(FrameStatus status, unsigned int key, unsigned int, unsigned int);
    virtual FrameStatus keyUp(FrameStatus status, unsigned int key, unsigned int, unsigned int);
    // Resets transient state.
    virtual void init();
    virtual short order() const = 0;
    // Sets the cursor that fits the current mode; false when there is none to set.
    virtual bool setCursor();
    virtual FrameStatus mouseButtonDblClk(FrameStatus status, unsigned int flags,
                                          MouseButton button, int x, int y);

protected:
    std::shared_ptr<Cursor> m_cursor;
};

} // namespace qrngl
