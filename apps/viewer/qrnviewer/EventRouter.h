#pragma once

#include "qrngl/interaction/CameraManipulator.h"
#include "qrnviewer/HostFrame.h"
#include "qrnviewer/InputEvent.h"
#include "qrnviewer/Measuring.h"
#include "qrnviewer/PmiDisplay.h"
#include "qrnviewer/SceneKeys.h"
#include "qrnviewer/Sectioning.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qrngl {
class GestureManipulator;
class HighlightManipulator;
class SCRenderer;
class SelectManipulator;
class SelectionRenderer;
class SelectionSet;
class ViewState;
} // namespace qrngl

namespace qrnviewer {

// The host's side of interaction, apart from any window system: it sets up the tools of a
// document (view state, camera, gesture, selection and highlight manipulators in the renderer
// component's chain, the selection's highlight in the frame),
// hands every input event down the chain, lowest order() first, each handler getting its
// predecessor's status (gestures to the manipulators that take touch), runs the viewer's own key
// commands when no tool took the key, and drives the timers that the window system does not
// (view animation, spin). Whoever owns the window feeds it events, calls pump() after waiting for
// input and draws a frame whenever takeRepaint() says so. One router a document: it takes the
// renderer component's update notifier.
class EventRouter {
public:
    using Operation = qrngl::CameraManipulator::Operation;
    // The host's own timer that keeps a released spin turning.
    enum : unsigned int { SPIN_TIMER = 102 };
    // Zoom factor of one wheel notch.
    static constexpr float WHEEL_FACTOR = 1.1f;

    // window: what timers and repaint requests are keyed by (any unique handle; the router's
    // own address when null). The cursor set may be null.
    EventRouter(std::shared_ptr<qrn::IDocument> document, void* window,
                std::shared_ptr<qrngl::Cursor> cursor);
    ~EventRouter();
    EventRouter(const EventRouter&) = delete;
    EventRouter& operator=(const EventRouter&) = delete;

    void route(const InputEvent& event);
    // Runs the timer ticks that are due and collects repaint requests.
    void pump();
    // True once after anything asked for a frame since the last call.
    bool takeRepaint() { return std::exchange(m_repaint, false); }
    bool quitRequested() const { return m_quit; }

    int mouseStyle() const;
    // Stores the convention in the renderer settings and makes a camera manipulator for it
    // (the interpreter is chosen when one is made); the left-button operation stays.
    void setMouseStyle(int style);
    void setOperation(Operation operation);
    // Lets the first manipulator in the chain that has a cursor for its mode show it.
    void updateCursor();
    // Where messages for the user go (mouse convention, operation, undo); none by default.
    void setMessageSink(std::function<void(const std::string&)> sink) { m_say = std::move(sink); }

    void* window() const { return m_window; }
    const std::shared_ptr<qrngl::CameraManipulator>& cameraManipulator() const { return m_camera; }
    const std::shared_ptr<HostFrame>& frame() const { return m_frame; }
    const std::shared_ptr<qrngl::SelectionSet>& selection() const { return m_selection; }
    const std::shared_ptr<qrngl::SelectManipulator>& selectManipulator() const { return m_select; }
    // What PMI is shown; the saved-view key keeps it in step with the view.
    PmiDisplay& pmi() { return m_pmi; }
    // The cut through the model.
    Sectioning& section() { return *m_section; }
    Measuring& measuring() { return *m_measuring; }
    // The exploded view.
    Explosion& explosion() { return m_scene->explosion(); }
    // The scene-state files of F3 (restore) and F2 (save).
    void setStateFiles(std::string load, std::string save) {
        m_scene->setStateFiles(std::move(load), std::move(save));
    }
    // Turns the camera to a saved view of the file (animated), showing its own PMI.
    void showSavedView(int index);

    static const char* keyHelp();

private:
    // Around one event or pump: a repaint it asks for without an overlay mark is the model's.
    class Repaint {
    public:
        explicit Repaint(EventRouter& router);
        ~Repaint();
        Repaint(const Repaint&) = delete;
        Repaint& operator=(const Repaint&) = delete;

    private:
        EventRouter& m_router;
        bool m_asked;
        std::shared_ptr<qrngl::SCRenderer> m_renderer;
        unsigned long m_marks;
    };

    std::shared_ptr<qrngl::SCRenderer> renderer() const;
    qrngl::FrameStatus routeToChain(const InputEvent& event, bool repeat) const;
    void command(unsigned int key, bool repeat);
    void tick(unsigned int id);
    // Starts a view animation, remembering the camera for its undo step.
    void animate(const std::function<void()>& start);
    void fit();
    // Back from a saved view to every PMI item (when PMI is shown).
    void leaveSavedView();
    void undo(bool redo);
    // One undo step for a view animation, once it has ended or was stopped.
    void recordFinishedAnimation();
    void say(const std::string& text) const;
    // Tells the user what is selected when that changed.
    void reportSelection();

    std::shared_ptr<qrn::IDocument> m_document;
    void* m_window;
    std::shared_ptr<qrngl::Cursor> m_cursor;
    std::shared_ptr<HostFrame> m_frame;
    std::shared_ptr<qrngl::ViewState> m_viewState;
    std::shared_ptr<qrngl::GestureManipulator> m_gesture;
    std::shared_ptr<qrngl::CameraManipulator> m_camera;
    std::shared_ptr<qrngl::SelectionSet> m_selection;
    std::shared_ptr<qrngl::SelectManipulator> m_select;
    std::shared_ptr<qrngl::HighlightManipulator> m_highlight;
    std::shared_ptr<qrngl::SelectionRenderer> m_selectionRenderer;
    std::vector<unsigned int> m_reported; // the selection last told
    std::shared_ptr<qrn::IState> m_beforeAnimation;
    bool m_repaint = true; // the first frame
    bool m_quit = false;
    // Where the pan gesture in progress was last.
    bool m_panning = false;
    int m_panX = 0, m_panY = 0;
    std::function<void(const std::string&)> m_say;
    PmiDisplay m_pmi;
    std::unique_ptr<Sectioning> m_section;
    std::unique_ptr<Measuring> m_measuring;
    std::unique_ptr<SceneKeys> m_scene;
};

} // namespace qrnviewer
