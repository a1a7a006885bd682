#pragma once

#include "qrn/IDocument.h"
#include "qrn/IUpdater.h"
#include "qrngl/ITouchManipulator.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/SCView.h"

#include <cstdint>
#include <memory>

namespace qrnui {
class IFrame;
}

namespace qrngl {

class ViewState;

// Moves the camera from touch input: one-finger drags rotate, the pan gesture pans, the zoom
// gesture zooms and a two-finger tap goes back to the home view. It takes only mouse messages
// that the system made from touch, which the camera manipulator after it in the chain
// ignores, so the two never both act on one event.
class QRNGL_EXPORT GestureManipulator : public ITouchManipulator {
public:
    enum : short { ORDER = 799 };
    // Update hint sent when the home view starts.
    enum : short { HINT_HOME_VIEW = 19 };
    enum : int { HOME_VIEW_FRAMES = 32 };

    GestureManipulator(std::shared_ptr<qrnui::IFrame> frame, std::shared_ptr<ViewState> viewState,
                       std::shared_ptr<Cursor> cursor);
    ~GestureManipulator() override;
    GestureManipulator(const GestureManipulator&) = delete;
    GestureManipulator& operator=(const GestureManipulator&) = delete;

    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                int y) override;
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button, int x,
                              int y) override;
    FrameStatus mouseMotion(unsigned int flags, int x, int y) override;
    void init() override;
    short order() const override { return ORDER; }

    FrameStatus OnGesturePan(FrameStatus status, int startX, int startY, int x, int y) override;
    // Zooms about where the gesture started; a negative distance zooms in.
    FrameStatus OnGestureZoom(FrameStatus status, int x, int y, long distance) override;
    FrameStatus OnGestureTwoFingerTap(FrameStatus status, int x, int y) override;

    // Gestures that leave the camera alone.
    FrameStatus OnGestureRotate(FrameStatus status, int x, int y, double angle);
    FrameStatus OnGesturePressAndTap(FrameStatus status, int x, int y, long delta);

    void play(const qrnsg::SCView::ORIENTATION& orientation, int frames);
    void zoomfit();
    // Animates back to the home view.
    void home();

    // Set by a pan gesture that did not move, cleared by the next mouse motion.
    bool getNoMotion() const { return m_noMotion; }

private:
    void changeView();

    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<ViewState> m_viewState;
    std::shared_ptr<qrn::IUpdater> m_updater;
    std::int32_t m_lastX, m_lastY;
    std::int32_t m_startX, m_startY;
    bool m_noMotion;
    // A touch press this manipulator took, and whether its drag has turned the model since.
    bool m_touchDrag = false;
    bool m_turned = false;
};

} // namespace qrngl
