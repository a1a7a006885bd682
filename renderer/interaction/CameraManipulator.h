#pragma once

#include "qrn/IDocument.h"
#include "qrn/IState.h"
#include "qrngl/IManipulator.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/interaction/IEventInterpreter.h"
#include "qrngl/interaction/ViewCommands.h"
#include "qrngl/qrngl_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Polyline.h"
#include "qrnsg/SCView.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace qrnui {
class IFrame;
}

namespace qrngl {

class CrossHairRenderer;
class ViewState;
class ZoomboxRenderer;

// Turns mouse, wheel and key input into camera motion. Which operation a drag performs is the
// event interpreter's choice (the mouse style of the renderer settings); the left button's
// operation is the one requested (from the user's settings, or setOperation). Every camera
// change goes through CameraHelper, and each finished one is a step on the frame's undo stack:
// a drag (split where a second button joins or leaves it), a wheel notch, an arrow key.
//
// The host hands it every mouse, wheel and key event in chain order, with the key-state flags
// of the Windows mouse messages (at a release, the buttons still held), and while isSpinning()
// calls spin() at the animation interval (30 ms), so that a SPIN drag keeps turning after the
// button is released.
class QRNGL_EXPORT CameraManipulator : public IManipulator {
public:
    using Operation = IEventInterpreter::Operation;
    // Selects what lies in the window rectangle of a finished BOXSELECT drag (corners in
    // either order; flags as at the release, for the host's add and toggle modifiers).
    using BoxSelectHandler =
        std::function<void(int x0, int y0, int x1, int y1, unsigned int flags)>;

    enum : short { ORDER = 800 };
    enum : std::uint32_t { NO_BUTTON = 0xFFFFFFFFu };
    // Frames per animated view change of previous() and next().
    enum : int { VIEW_FRAMES = 50 };

    CameraManipulator(std::shared_ptr<qrnui::IFrame> frame, std::shared_ptr<ViewState> viewState,
                      std::shared_ptr<Cursor> cursor);
    ~CameraManipulator() override;
    CameraManipulator(const CameraManipulator&) = delete;
    CameraManipulator& operator=(const CameraManipulator&) = delete;

    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                int y) override;
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button, int x,
                              int y) override;
    FrameStatus mouseMotion(unsigned int flags, int x, int y) override;
    FrameStatus mouseWheel(unsigned int flags, int delta, float factor) override;
    FrameStatus keyDown(FrameStatus status, unsigned int key, unsigned int, unsigned int) override;
    void init() override;
    short order() const override { return ORDER; }
    bool setCursor() override;

    void setOperation(Operation operation);
    Operation getOperation() const { return m_requested; }
    void setAvailOperations(unsigned int mask) { m_availOperations = mask; }
    unsigned int getAvailOperations() const { return m_availOperations; }

    // Animated view changes.
    void play(const qrnsg::SCView::ORIENTATION& orientation, int frames);
    void play(const int& view, int frames);
    // The orientation before or after the last one played, in SCView's order, wrapping round.
    void previous();
    void next();
    void zoomfit();

    // Undo records: the camera's state now (false without a camera), and one undo step from
    // before to after on the frame's undo stack (false without either or without the stack).
    bool getCameraState(std::shared_ptr<qrn::IState>& state) const;
    bool setState(std::shared_ptr<qrn::IState> before, std::shared_ptr<qrn::IState> after);

    void setViewOperation(bool on) { m_viewOperation = on; }
    bool getViewOperation() const { return m_viewOperation; }
    bool getEscapePressed() const { return m_escapePressed; }

    // There is no selection in the camera tools themselves: the host supplies it.
    void setBoxSelectHandler(BoxSelectHandler handler) { m_boxSelect = std::move(handler); }

    // Spin continuation: one more turn by the last SPIN step; UNCHANGED when not spinning.
    bool isSpinning() const { return m_spinning; }
    FrameStatus spin();

    // The rubber band of the drag in progress, in the overlay's pixels (ZoomboxUtils).
    const qrnsg::Mesh& getZoomboxFill() const { return m_boxFill; }
    const qrnsg::Polyline& getZoomboxOutline() const { return m_boxOutline; }

    // A rotate drag that starts on the model turns about the point under the pointer instead
    // of the view sphere's centre. Off by default.
    void setRotateAboutPickedPoint(bool on) { m_rotateAboutPick = on; }
    bool getRotateAboutPickedPoint() const { return m_rotateAboutPick; }

    // Normal view, zoom to selection, hide, isolate, render modes, projection.
    ViewCommands& viewCommands() { return *m_commands; }

private:
    // The camera change since the saved state, as one undo step; the saved state is dropped.
    void recordUndoStep();
    std::shared_ptr<SCRenderer> renderer() const;
    bool createEventInterpreter();
    void setOperationFromRegistry();
    void restoreDefaultOperation();

    void updateRubberBand(int x, int y);
    void resetRubberBand();
    void setCameraStateZoomBox(int x, int y);
    void setCameraStateBoxSelect(unsigned int flags, int x, int y);

    void activateSpinOperation(int x, int y);
    void stopSpin();
    void removeCrossHair();
    // One rotate step about the picked point, when the drag started on the model.
    void rotateAboutPivot(const std::shared_ptr<Camera>& camera, int x, int y, int dx, int dy);
    // While the camera moves under a drag, frames may leave the smallest parts out and draw
    // coarse meshes (see SCRenderer::frameBudget); the reset brings the full frame back.
    void doSizeCulling();
    void resetSizeCulling();

    std::shared_ptr<qrnui::IFrame> m_frame;
    std::uint32_t m_button;
    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<ViewState> m_viewState;
    std::shared_ptr<ZoomboxRenderer> m_zoombox;
    std::shared_ptr<CrossHairRenderer> m_crossHair;
    int m_pressX, m_pressY;
    int m_lastX, m_lastY;
    bool m_changed;
    Operation m_requested;
    std::shared_ptr<IEventInterpreter> m_interpreter;
    bool m_dragging;
    unsigned int m_availOperations;
    bool m_chord;
    bool m_zoomed;
    bool m_escapePressed;
    std::shared_ptr<qrn::IState> m_savedState;
    bool m_spinMode;
    bool m_viewOperation;
    int m_orientation;
    BoxSelectHandler m_boxSelect;
    qrnsg::Mesh m_boxFill;
    qrnsg::Polyline m_boxOutline;
    // The last step of a SPIN drag, repeated by spin() after the release.
    bool m_lastStepSpin;
    int m_spinDx, m_spinDy;
    bool m_spinning;
    // When the last drag step was taken (WindowTimer's clock, ms): a spin goes on only when the
    // button is released while the mouse still moves.
    std::uint64_t m_lastStepTime = 0;
    bool m_rotateAboutPick = false;
    // The point a rotate drag turns about, looked up at its first rotate step.
    enum Pivot { PIVOT_UNKNOWN, PIVOT_NONE, PIVOT_FOUND };
    Pivot m_pivot = PIVOT_UNKNOWN;
    qrnmath::Vec3 m_pivotPoint;
    std::unique_ptr<ViewCommands> m_commands;
};

} // namespace qrngl
