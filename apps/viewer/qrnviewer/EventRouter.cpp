#include "qrnviewer/EventRouter.h"

#include "qrngl/SCRenderer.h"
#include "qrngl/interaction/GestureManipulator.h"
#include "qrngl/interaction/ViewState.h"
#include "qrngl/picking/HighlightManipulator.h"
#include "qrngl/picking/SelectManipulator.h"
#include "qrngl/picking/SelectionRenderer.h"
#include "qrngl/picking/SelectionSet.h"
#include "qrnplatform/Input.h"
#include "qrnplatform/Text.h"
#include "qrnplatform/WindowTimer.h"
#include "qrnsg/SCView.h"
#include "qrnviewer/EntityText.h"
#include "qrnviewer/MouseStyle.h"

#include <algorithm>
#include <exception>

namespace qrnviewer {

using qrngl::FrameStatus;
using qrnplatform::Input;
using qrnplatform::WindowTimer;
using qrnsg::SCView;

namespace {

// Windows virtual-key codes.
enum : unsigned int {
    VK_SHIFT = 0x10,
    VK_CONTROL = 0x11,
    VK_PRIOR = 0x21, // Page Up
    VK_NEXT = 0x22,  // Page Down
    VK_HOME = 0x24,
    VK_NUMPAD0 = 0x60,
    VK_F1 = 0x70,
    VK_OEM_4 = 0xDB, // [
    VK_OEM_6 = 0xDD, // ]
};

// Keys 1 to 7.
const SCView::ORIENTATION kKeyViews[] = {SCView::FRONT,    SCView::BACK, SCView::LEFT,
                                         SCView::RIGHT,    SCView::TOP,  SCView::BOTTOM,
                                         SCView::ISOMETRIC};
const char* const kKeyViewNames[] = {"front", "back", "left", "right", "top", "bottom", "iso"};

const double kPi = 3.14159265358979323846;

struct OperationKey {
    unsigned int key;
    EventRouter::Operation operation;
    const char* name;
};
const OperationKey kOperationKeys[] = {
    {'R', qrngl::IEventInterpreter::ROTATE, "rotate"},
    {'P', qrngl::IEventInterpreter::PAN, "pan"},
    {'Z', qrngl::IEventInterpreter::ZOOM, "zoom"},
    {'B', qrngl::IEventInterpreter::ZOOMBOX, "zoom box"},
    {'S', qrngl::IEventInterpreter::SPIN, "spin"},
    {'X', qrngl::IEventInterpreter::BOXSELECT, "box select"},
    {'N', qrngl::IEventInterpreter::NORMALVIEW, "normal view (click a planar face)"},
};

const char* const kModeNames[] = {"parts", "faces", "edges", "vertices",
                                  "faces, edges and vertices"};
const char* const kRenderModeNames[] = {"shaded with edges", "shaded", "wireframe", "hidden line"};

bool isMouseEvent(InputEvent::Kind kind) {
    return kind == InputEvent::BUTTON_DOWN || kind == InputEvent::BUTTON_UP ||
           kind == InputEvent::MOTION;
}

// Gestures go to the manipulators that take touch; the others pass the status on.
FrameStatus routeGesture(qrngl::IManipulator& m, FrameStatus status, const InputEvent& e, int panX,
                         int panY) {
    auto* touch = dynamic_cast<qrngl::ITouchManipulator*>(&m);
    if (!touch)
        return status;
    switch (e.kind) {
    case InputEvent::PAN:
        return touch->OnGesturePan(status, panX, panY, e.x, e.y);
    case InputEvent::ZOOM:
        return touch->OnGestureZoom(status, e.x, e.y, e.delta);
    case InputEvent::TWO_FINGER_TAP:
        return touch->OnGestureTwoFingerTap(status, e.x, e.y);
    case InputEvent::ROTATE:
        // Not part of the touch interface: only the gesture manipulator has it, in radians.
        if (auto* gesture = dynamic_cast<qrngl::GestureManipulator*>(touch))
            return gesture->OnGestureRotate(status, e.x, e.y, e.delta * (kPi / 18000.0));
        return status;
    default:
        return status;
    }
}

} // namespace

EventRouter::EventRouter(std::shared_ptr<qrn::IDocument> document, void* window,
                         std::shared_ptr<qrngl::Cursor> cursor)
    : m_document(std::move(document)), m_window(window ? window : this),
      m_cursor(cursor ? std::move(cursor) : std::make_shared<qrngl::Cursor>()),
      m_frame(std::make_shared<HostFrame>(m_document)), m_pmi(m_document) {
    m_viewState = std::make_shared<qrngl::ViewState>(static_cast<qrngl::HWND>(m_window), m_document,
                                                     m_frame->getUpdater());
    m_gesture = std::make_shared<qrngl::GestureManipulator>(m_frame, m_viewState, m_cursor);
    m_selection = std::make_shared<qrngl::SelectionSet>();
    m_select = std::make_shared<qrngl::SelectManipulator>(m_document, m_selection, m_cursor);
    m_highlight = std::make_shared<qrngl::HighlightManipulator>(m_select, m_selection, m_cursor);
    m_selectionRenderer = std::make_shared<qrngl::SelectionRenderer>(m_document, m_selection);
    // Tools report changes they make outside an event (rubber band, spin) and hints.
    m_frame->updater()->addListener([this](const qrnui::Hint& hint) {
        m_repaint = true;
        // The home view put every part back: the exploded view starts again assembled.
        if (hint.code() == qrngl::GestureManipulator::HINT_HOME_VIEW && m_scene)
            m_scene->assembled();
    });
    auto r = renderer();
    if (r) {
        r->updateNotifier = [this] { m_repaint = true; };
        r->addManipulator(m_gesture);
        r->addManipulator(m_select);
        r->addManipulator(m_highlight);
        r->addPostRenderer(m_selectionRenderer);
    }
    setMouseStyle(r ? r->mouseStyle : 0);
    m_section = std::make_unique<Sectioning>(m_document, m_cursor);
    m_section->setMessageSink([this](const std::string& text) { say(text); });
    m_measuring = std::make_unique<Measuring>(m_document, m_cursor);
    m_measuring->setMessageSink([this](const std::string& text) { say(text); });
    m_scene = std::make_unique<SceneKeys>(
        m_document, m_window, [this](const std::string& text) { say(text); }, [this] { fit(); });
    // Moved parts cut anew: a shown profile follows them.
    m_scene->explosion().setMoved([this] {
        if (m_section->manipulator()->isProfile())
            m_section->manipulator()->updateProfile();
        m_repaint = true;
    });
}

EventRouter::~EventRouter() {
    WindowTimer::killTimer(m_window, SPIN_TIMER);
    m_scene.reset();
    m_measuring.reset();
    m_section.reset();
    // The manipulators hold the frame, which holds the document: break the cycle.
    if (auto r = renderer()) {
        m_camera->init();
        r->removeManipulator(m_camera);
        r->removeManipulator(m_gesture);
        r->removeManipulator(m_select);
        r->removeManipulator(m_highlight);
        r->removePostRenderer(m_selectionRenderer);
        r->updateNotifier = nullptr;
    }
}

std::shared_ptr<qrngl::SCRenderer> EventRouter::renderer() const {
    return m_document ? std::dynamic_pointer_cast<qrngl::SCRenderer>(
                            m_document->getSchema(qrnsg::SCHEMA_RENDERER))
                      : nullptr;
}

int EventRouter::mouseStyle() const {
    auto r = renderer();
    return r ? r->mouseStyle : 0;
}

void EventRouter::setMouseStyle(int style) {
    auto r = renderer();
    if (r)
        r->mouseStyle = style;
    const bool keep = m_camera != nullptr;
    const Operation operation = keep ? m_camera->getOperation() : qrngl::IEventInterpreter::ROTATE;
    // A CAD user turns about what is under the cursor, unless they said otherwise.
    const bool aboutPoint = keep ? m_camera->getRotateAboutPickedPoint() : true;
    if (m_camera) {
        m_camera->init(); // takes its overlays out of the frame
        if (r)
            r->removeManipulator(m_camera);
    }
    m_camera = std::make_shared<qrngl::CameraManipulator>(m_frame, m_viewState, m_cursor);
    m_camera->setRotateAboutPickedPoint(aboutPoint);
    m_camera->setBoxSelectHandler([this](int x0, int y0, int x1, int y1, unsigned int flags) {
        if (m_select->selectBox(x0, y0, x1, y1, flags))
            m_repaint = true;
    });
    if (keep)
        m_camera->setOperation(operation);
    if (r)
        r->addManipulator(m_camera);
    m_repaint = true;
}

void EventRouter::setOperation(Operation operation) {
    m_camera->setOperation(operation);
    updateCursor();
}

void EventRouter::updateCursor() {
    auto r = renderer();
    if (!r)
        return;
    const auto chain = r->manipulators;
    for (const auto& m : chain)
        if (m->setCursor())
            return;
}

void EventRouter::route(const InputEvent& e) {
    // The camera manipulator leaves mouse messages made from touch to the gesture manipulator.
    Input::setTouchMessage(e.touch && isMouseEvent(e.kind));
    bool repeat = false;
    if (e.kind == InputEvent::KEY_DOWN) {
        repeat = Input::isKeyDown(static_cast<int>(e.key));
        Input::setKeyDown(static_cast<int>(e.key), true);
    } else if (e.kind == InputEvent::KEY_UP) {
        Input::setKeyDown(static_cast<int>(e.key), false);
    }
    if (e.kind == InputEvent::WAIT)
        return;
    const Repaint repaint(*this);
    // A pan moves from where the one before it ended, or where it begins.
    if (e.kind == InputEvent::PAN && (!m_panning || (e.flags & InputEvent::GESTURE_BEGIN))) {
        m_panX = e.x;
        m_panY = e.y;
    }

    FrameStatus status = qrngl::UNCHANGED;
    // No event may end the viewer: a tool that fails (out of memory) loses that one event.
    try {
        if (e.kind == InputEvent::BUTTON_DOWN && e.button == qrngl::LEFT &&
            m_camera->getOperation() == qrngl::IEventInterpreter::NORMALVIEW) {
            // The normal-view click starts a view animation: one undo step, as the view keys
            // give.
            animate([&] { status = routeToChain(e, repeat); });
        } else {
            status = routeToChain(e, repeat);
        }
    } catch (const std::exception& error) {
        say(std::string("an input event failed and was dropped: ") + error.what());
        status = qrngl::CHANGED;
    }
    Input::setTouchMessage(false);
    if (e.kind == InputEvent::PAN) {
        m_panX = e.x;
        m_panY = e.y;
        m_panning = (e.flags & InputEvent::GESTURE_END) == 0;
    }
    if (status == qrngl::CHANGED)
        m_repaint = true;
    if (e.kind == InputEvent::KEY_DOWN && status == qrngl::UNCHANGED) {
        try {
            command(e.key, repeat);
        } catch (const std::exception& error) {
            say(std::string("a key command failed: ") + error.what());
        }
    }
    if (e.kind == InputEvent::BUTTON_DOWN || e.kind == InputEvent::BUTTON_UP ||
        e.kind == InputEvent::KEY_DOWN || e.kind == InputEvent::KEY_UP)
        updateCursor();
    if (m_camera->isSpinning() && WindowTimer::interval(m_window, SPIN_TIMER) == 0)
        WindowTimer::setTimer(m_window, SPIN_TIMER, qrngl::ViewState::TIMER_INTERVAL);
    recordFinishedAnimation();
    reportSelection();
}

void EventRouter::reportSelection() {
    if (m_selection->selected() == m_reported)
        return;
    m_reported = m_selection->selected();
    if (m_reported.empty()) {
        say("selection cleared");
    } else if (m_reported.size() == 1) {
        say("selected " + EntityText::describe(m_document, m_reported.front()));
    } else {
        say(std::to_string(m_reported.size()) + " selected; last " +
            EntityText::describe(m_document, m_reported.back()));
    }
}

FrameStatus EventRouter::routeToChain(const InputEvent& e, bool repeat) const {
    auto r = renderer();
    if (!r)
        return qrngl::UNCHANGED;
    // A copy: a handler may change the chain.
    const auto chain = r->manipulators;
    FrameStatus status = qrngl::UNCHANGED;
    // The two trailing key arguments as a window's key message gives them: the repeat count and
    // the flags whose bit 14 says the key was down before, bit 15 that it is being released.
    const unsigned int keyFlags = e.kind == InputEvent::KEY_UP ? 0xC000u : (repeat ? 0x4000u : 0u);
    for (const auto& m : chain) {
        switch (e.kind) {
        case InputEvent::BUTTON_DOWN:
            status = m->mouseButtonDown(status, e.flags, e.button, e.x, e.y);
            break;
        case InputEvent::BUTTON_UP:
            status = m->mouseButtonUp(status, e.flags, e.button, e.x, e.y);
            break;
        // Motion and wheel carry no status along; any handler may ask for a frame.
        case InputEvent::MOTION:
            if (m->mouseMotion(e.flags, e.x, e.y) == qrngl::CHANGED)
                status = qrngl::CHANGED;
            break;
        case InputEvent::WHEEL:
            if (m->mouseWheel(e.flags, e.delta, WHEEL_FACTOR) == qrngl::CHANGED)
                status = qrngl::CHANGED;
            break;
        case InputEvent::KEY_DOWN:
            status = m->keyDown(status, e.key, 1, keyFlags);
            break;
        case InputEvent::KEY_UP:
            status = m->keyUp(status, e.key, 1, keyFlags);
            break;
        case InputEvent::PAN:
        case InputEvent::ZOOM:
        case InputEvent::ROTATE:
        case InputEvent::TWO_FINGER_TAP:
            status = routeGesture(*m, status, e, m_panX, m_panY);
            break;
        case InputEvent::WAIT:
            break;
        }
    }
    return status;
}

void EventRouter::command(unsigned int key, bool repeat) {
    if (Input::isKeyDown(VK_CONTROL)) {
        if (key == 'Z' && !Input::isKeyDown(VK_SHIFT))
            undo(false);
        else if (key == 'Y' || key == 'Z')
            undo(true);
        return;
    }
    // Held keys repeat; the commands act once a press.
    if (repeat)
        return;
    if (m_measuring->key(key, Input::isKeyDown(VK_SHIFT))) {
        m_repaint = true;
        return;
    }
    if ((key >= '1' && key <= '7') || (key >= VK_NUMPAD0 + 1 && key <= VK_NUMPAD0 + 7)) {
        const auto index = (key >= VK_NUMPAD0 ? key - VK_NUMPAD0 : key - '0') - 1;
        animate([&] { m_camera->play(kKeyViews[index], qrngl::CameraManipulator::VIEW_FRAMES); });
        leaveSavedView();
        say(std::string("view ") + kKeyViewNames[index]);
        return;
    }
    for (const auto& k : kOperationKeys)
        if (key == k.key) {
            setOperation(k.operation);
            say(std::string("left button: ") + k.name);
            return;
        }
    if (m_scene->key(key)) {
        m_repaint = true;
        return;
    }
    if (m_section->key(key, Input::isKeyDown(VK_SHIFT))) {
        m_repaint = true;
        return;
    }
    switch (key) {
    case VK_PRIOR:
    case VK_OEM_4:
        animate([&] { m_camera->previous(); });
        leaveSavedView();
        break;
    case VK_NEXT:
    case VK_OEM_6:
        animate([&] { m_camera->next(); });
        leaveSavedView();
        break;
    case 'W': {
        auto views = std::dynamic_pointer_cast<SCView>(m_document->getSchema(qrnsg::SCHEMA_VIEW));
        const int count = views ? static_cast<int>(views->views.size()) : 0;
        if (count == 0) {
            say("the model has no saved views");
            break;
        }
        const int current = m_pmi.view();
        const int step = Input::isKeyDown(VK_SHIFT) ? count - 1 : 1;
        showSavedView(current < 0 ? (step == 1 ? 0 : count - 1) : (current + step) % count);
        break;
    }
    case 'G':
        m_pmi.setShown(!m_pmi.shown());
        m_repaint = true;
        say(m_pmi.describe());
        break;
    case 'F':
    case VK_HOME:
        fit();
        break;
    case 'M': {
        const int step = Input::isKeyDown(VK_SHIFT) ? MouseStyle::COUNT - 1 : 1;
        const int style = (mouseStyle() + step) % MouseStyle::COUNT;
        setMouseStyle(style);
        updateCursor();
        say(std::string("mouse convention ") + MouseStyle::name(style) + ": " +
            MouseStyle::bindings(style));
        break;
    }
    case 'E': {
        const auto mode = static_cast<qrngl::SelectionSet::Mode>((m_selection->mode() + 1) % 5);
        m_selection->setMode(mode);
        m_selection->setHovered(0);
        m_repaint = true;
        say(std::string("a click selects ") + kModeNames[mode]);
        break;
    }
    case 'A':
        if (m_selection->selected().empty())
            say("nothing selected to zoom to");
        else if (m_camera->viewCommands().zoomToSelection(m_selection->selected()))
            m_repaint = true;
        break;
    case 'D':
    case 'I':
        if (m_selection->selected().empty()) {
            say("nothing selected");
        } else if (key == 'D' ? m_camera->viewCommands().hideSelected(m_selection->selected())
                              : m_camera->viewCommands().isolate(m_selection->selected())) {
            m_repaint = true;
            say(key == 'D' ? "selected parts hidden" : "selected parts isolated");
        }
        break;
    case 'U':
        if (m_camera->viewCommands().showAll()) {
            m_repaint = true;
            say("all parts shown");
        }
        break;
    case 'V': {
        const auto mode = static_cast<qrngl::SCRenderer::RENDERMODE>(
            (m_camera->viewCommands().getRenderMode() + 1) % 4);
        m_camera->viewCommands().changeRenderMode(mode);
        m_repaint = true;
        say(std::string("render mode: ") + kRenderModeNames[mode]);
        break;
    }
    case 'O': {
        m_camera->viewCommands().changeProjection();
        m_repaint = true;
        auto r = renderer();
        say(r && r->camera && r->camera->isOrthographic() ? "orthographic projection"
                                                          : "perspective projection");
        break;
    }
    case 'C':
        m_camera->setRotateAboutPickedPoint(!m_camera->getRotateAboutPickedPoint());
        say(m_camera->getRotateAboutPickedPoint() ? "rotation about the point under the cursor"
                                                  : "rotation about the model's centre");
        break;
    case 'T':
        m_selection->setSelectThrough(!m_selection->selectThrough());
        say(m_selection->selectThrough() ? "box selection takes hidden entities too"
                                         : "box selection takes what is seen");
        break;
    case 'H':
    case VK_F1:
        say(keyHelp());
        break;
    case 'Q':
        m_quit = true;
        break;
    default:
        break;
    }
}

void EventRouter::animate(const std::function<void()>& start) {
    recordFinishedAnimation();
    // One that is still running is cut short: undo goes back to where it started.
    const bool running = m_beforeAnimation != nullptr;
    if (!running)
        m_camera->getCameraState(m_beforeAnimation);
    start();
    // A view the camera already shows starts no animation, and is no step to undo.
    if (!running && WindowTimer::interval(m_window, qrngl::ViewState::TIMER_ID) == 0)
        m_beforeAnimation.reset();
    recordFinishedAnimation();
}

void EventRouter::showSavedView(int index) {
    auto views = std::dynamic_pointer_cast<SCView>(m_document->getSchema(qrnsg::SCHEMA_VIEW));
    if (!views || index < 0 || static_cast<std::size_t>(index) >= views->views.size())
        return;
    animate([&] { m_camera->play(index, qrngl::CameraManipulator::VIEW_FRAMES); });
    m_pmi.setView(index);
    m_repaint = true;
    say("saved view " +
        qrnplatform::Text::toUtf8(views->views[static_cast<std::size_t>(index)].name) +
        (m_pmi.items() > 0 ? " (" + m_pmi.describe() + ")" : std::string()));
}

void EventRouter::leaveSavedView() {
    if (m_pmi.view() >= 0) {
        m_pmi.setView(-1);
        m_repaint = true;
    }
}

void EventRouter::fit() {
    m_viewState->reset();
    std::shared_ptr<qrn::IState> before, after;
    m_camera->getCameraState(before);
    m_camera->zoomfit();
    if (m_camera->getCameraState(after))
        m_camera->setState(before, after);
    m_repaint = true;
}

void EventRouter::undo(bool redo) {
    m_viewState->reset();
    recordFinishedAnimation();
    auto stack = m_frame->getUndoStack();
    if (redo ? stack->redo() : stack->undo())
        m_repaint = true;
    else
        say(redo ? "nothing to redo" : "nothing to undo");
}

void EventRouter::recordFinishedAnimation() {
    if (!m_beforeAnimation || WindowTimer::interval(m_window, qrngl::ViewState::TIMER_ID) != 0)
        return;
    std::shared_ptr<qrn::IState> after;
    if (m_camera->getCameraState(after))
        m_camera->setState(m_beforeAnimation, after);
    m_beforeAnimation.reset();
}

void EventRouter::pump() {
    const Repaint repaint(*this);
    for (const auto& t : WindowTimer::takeDueTicks())
        if (t.window == m_window)
            tick(t.id);
    for (void* w : WindowTimer::takeInvalidated())
        if (w == m_window)
            m_repaint = true;
}

void EventRouter::tick(unsigned int id) {
    if (id == qrngl::ViewState::TIMER_ID) {
        m_viewState->animate();
        m_repaint = true;
        recordFinishedAnimation();
    } else if (m_scene->tick(id)) {
        m_repaint = true;
    } else if (id == SPIN_TIMER) {
        if (m_camera->spin() == qrngl::CHANGED)
            m_repaint = true;
        else
            WindowTimer::killTimer(m_window, SPIN_TIMER);
    }
}

EventRouter::Repaint::Repaint(EventRouter& router)
    : m_router(router), m_asked(router.m_repaint), m_renderer(router.renderer()),
      m_marks(m_renderer ? m_renderer->overlayMarks() : 0) {
    router.m_repaint = false;
}

EventRouter::Repaint::~Repaint() {
    // What this event changed without a mark must not pass for an overlay's change.
    if (m_router.m_repaint && m_renderer && m_renderer->overlayMarks() == m_marks)
        m_renderer->markModelChange();
    m_router.m_repaint = m_router.m_repaint || m_asked;
}

void EventRouter::say(const std::string& text) const {
    if (m_say)
        m_say(text);
}

const char* EventRouter::keyHelp() {
    return "keys: 1-7 front, back, left, right, top, bottom, iso view\n"
           "      [ ] or PgUp, PgDn previous, next view; F or Home fit; arrows turn\n"
           "      W, Shift+W next, previous saved view of the file; G show, hide PMI\n"
           "      M, Shift+M next, previous mouse convention\n"
           "      left button: R rotate, P pan, Z zoom, B zoom box, S spin, X box select,\n"
           "      N normal view; Esc cancel\n"
           "      click selects (Shift, Ctrl add and toggle; empty space clears);\n"
           "      E parts, faces, edges, vertices or all; T box selection through\n"
           "      A zoom to selection; D hide, I isolate selected; U show all\n"
           "      V render mode; O orthographic, perspective; C rotation centre\n"
           "      Ctrl+Z undo, Ctrl+Y redo; H help; Q quit\n"
           "      0 explode one level further (after the last: assembled again)\n"
           "      F2 save the scene state, F3 restore it\n"
           "      L cut along X, Y, Z in turn, Shift+L no cut; J flip, Shift+J hatch;\n"
           "      K caps in part colours, one colour, off; Shift+K profile; rest the\n"
           "      pointer on the plane, then drag or press up, down to move it\n"
           "      9 measure: smart, distance, point, off (Esc off); click a label to\n"
           "      select it, Delete deletes the selected, Shift+Delete all\n";
}

} // namespace qrnviewer
