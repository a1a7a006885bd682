#pragma once

#include "qrngl/IManipulator.h"
#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// A manipulator that also takes the touch gestures the host recognises in its window's
// gesture messages. Each gesture handler gets the status of the previous manipulator and
// returns its own, as the mouse handlers do.
class QRNGLDATA_EXPORT ITouchManipulator : public IManipulator {
public:
    explicit ITouchManipulator(std::shared_ptr<Cursor> cursor);
    ~ITouchManipulator() override;

    // A pan from (startX, startY) to (x, y) in window pixels.
    virtual FrameStatus OnGesturePan(FrameStatus status, int startX, int startY, int x, int y) = 0;
    // A pinch at (x, y); distance is the signed amount the host measured for it.
    virtual FrameStatus OnGestureZoom(FrameStatus status, int x, int y, long distance) = 0;
    virtual FrameStatus OnGestureTwoFingerTap(FrameStatus status, int x, int y) = 0;
};

} // namespace qrngl
