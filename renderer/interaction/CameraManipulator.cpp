#include "qrngl/interaction/CameraManipulator.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/interaction/EventInterpreterFactory.h"
#include "qrngl/interaction/OperationSettings.h"
#include "qrngl/interaction/QrnEventInterpreter.h"
#include "qrngl/interaction/ViewCommands.h"
#include "qrngl/interaction/ViewState.h"
#include "qrngl/overlays/CrossHairRenderer.h"
#include "qrngl/overlays/ZoomboxRenderer.h"
#include "qrnglutils/CrossHairUtils.h"
#include "qrnglutils/MeshRenderer.h"
#include "qrnglutils/PolylineRenderer.h"
#include "qrnglutils/ZoomboxUtils.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnmath/QuatUtils.h"
#include "qrnplatform/Input.h"
#include "qrnplatform/WindowTimer.h"
#include "qrnsg/SCInfo.h"
#include "qrnui/IFrame.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace qrngl {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;
using qrnmath::QuatUtils;
using qrnmath::Vec3;

namespace {

// Windows virtual-key codes.
const unsigned int kEscape = 27;
const unsigned int kLeft = 37;
const unsigned int kUp = 38;
const unsigned int kRight = 39;
const unsigned int kDown = 40;

// Zoom per motion step of a zoom drag.
const float kDragZoomFactor = 1.02f;
// An arrow key turns by this share of 10 degrees.
const float kArrowAngle = 10.0f;
const float kArrowFraction = 0.068f;

const unsigned int kButtons = KEY_LBUTTON | KEY_MBUTTON | KEY_RBUTTON;
// How long the mouse may rest before the release for a spin to go on (ms).
const std::uint64_t kSpinPause = 100;

bool isRegistered(const SCRenderer& renderer, const std::shared_ptr<IPostRenderer>& item) {
    return std::any_of(renderer.postRenderers.begin(), renderer.postRenderers.end(),
                       [&](const std::shared_ptr<IPostRenderer>& r) { return r == item; });
}

void invalidate(const SCRenderer& renderer) {
    if (!renderer.canvases.empty())
        if (auto canvas = renderer.canvases.front().lock())
            canvas->Invalidate();
}

} // namespace

CameraManipulator::CameraManipulator(std::shared_ptr<qrnui::IFrame> frame,
                                     std::shared_ptr<ViewState> viewState,
                                     std::shared_ptr<Cursor> cursor)
    : IManipulator(std::move(cursor)), m_frame(std::move(frame)), m_button(NO_BUTTON),
      m_document(m_frame ? m_frame->getDocument() : nullptr), m_viewState(std::move(viewState)),
      m_pressX(0), m_pressY(0), m_lastX(0), m_lastY(0), m_changed(false),
      m_requested(IEventInterpreter::ROTATE), m_dragging(false),
      m_availOperations(IEventInterpreter::ALL_OPERATIONS), m_chord(false), m_zoomed(false),
      m_escapePressed(false), m_spinMode(false), m_viewOperation(false),
      m_orientation(qrnsg::SCView::ISOMETRIC), m_lastStepSpin(false), m_spinDx(0), m_spinDy(0),
      m_spinning(false), m_commands(std::make_unique<ViewCommands>(m_frame, m_viewState)) {
    m_commands->setBeforeCameraChange([this] { stopSpin(); });
    const bool is2D = m_frame && m_frame->is2DViewer();
    // The library's own convention until the settings say otherwise; in the sheet viewer it
    // stays, and its rules refuse rotations there.
    m_interpreter = std::make_shared<QrnEventInterpreter>(is2D);
    if (is2D) {
        // The sheet viewer pans with the left button and ignores the mouse style.
        setOperation(IEventInterpreter::PAN);
        return;
    }
    setOperationFromRegistry();
    setOperation(m_requested);
    createEventInterpreter();
}

CameraManipulator::~CameraManipulator() = default;

std::shared_ptr<SCRenderer> CameraManipulator::renderer() const {
    return m_document ? std::dynamic_pointer_cast<SCRenderer>(
                            m_document->getSchema(qrnsg::SCHEMA_RENDERER))
                      : nullptr;
}

bool CameraManipulator::createEventInterpreter() {
    auto r = renderer();
    if (!r)
        return false;
    m_interpreter =
        EventInterpreterFactory::create(r->mouseStyle, m_frame && m_frame->is2DViewer());
    return true;
}

void CameraManipulator::setOperationFromRegistry() {
    OperationSettings::load(m_requested);
}

void CameraManipulator::restoreDefaultOperation() {
    Operation operation = m_requested;
    auto info =
        m_document
            ? std::dynamic_pointer_cast<qrnsg::SCInfo>(m_document->getSchema(qrnsg::SCHEMA_INFO))
            : nullptr;
    if (info && info->documentType == qrnsg::SCInfo::DRAWING)
        operation = IEventInterpreter::PAN;
    else if (m_frame && m_frame->is2DViewer())
        operation = IEventInterpreter::ROTATE;
    else
        OperationSettings::load(operation);
    setOperation(operation);
}

void CameraManipulator::setOperation(Operation operation) {
    m_requested = operation;
    if (!renderer())
        return;
    resetRubberBand();
    stopSpin();
    m_spinMode = operation == IEventInterpreter::SPIN || operation == IEventInterpreter::NORMALVIEW;
}

FrameStatus CameraManipulator::mouseButtonDown(FrameStatus status, unsigned int flags,
                                               MouseButton button, int x, int y) {
    m_zoomed = false;
    // Touch input is the gesture manipulator's; what came before goes on.
    if (qrnplatform::Input::isTouchMessage())
        return status;
    if (m_interpreter)
        m_interpreter->pre(flags, m_requested, x, y);

    if (m_viewState)
        m_viewState->reset();
    stopSpin();
    // A second button joins a drag that has changed the camera: that much is one undo step.
    if (m_dragging && m_changed)
        recordUndoStep();
    m_pressX = m_lastX = x;
    m_pressY = m_lastY = y;
    // A state from an earlier press must not become this drag's undo record.
    m_savedState.reset();
    m_pivot = PIVOT_UNKNOWN;

    if (m_button != NO_BUTTON)
        resetSizeCulling();
    const bool leftRight =
        (m_button == LEFT && button == RIGHT) || (m_button == RIGHT && button == LEFT);
    if (leftRight)
        m_chord = true;
    else
        m_button = static_cast<std::uint32_t>(button);

    // A predecessor that consumed the press keeps the drag from starting.
    if (IManipulator::mouseButtonDown(status, flags, button, x, y) == CHANGED)
        return CHANGED;

    if ((button == LEFT || button == MIDDLE) && m_requested == IEventInterpreter::SPIN)
        activateSpinOperation(x, y);
    if (button == LEFT && m_requested == IEventInterpreter::NORMALVIEW)
        m_commands->activateNormalView(x, y);

    m_changed = false;
    m_lastStepSpin = false;
    m_dragging = true;
    getCameraState(m_savedState);
    return UNCHANGED;
}

FrameStatus CameraManipulator::mouseMotion(unsigned int flags, int x, int y) {
    const int dx = x - m_lastX, dy = y - m_lastY;
    m_lastX = x;
    m_lastY = y;
    if (!m_dragging)
        return UNCHANGED;

    Operation result = IEventInterpreter::NONE;
    if (!m_interpreter || !m_interpreter->interpret(flags, m_requested, dx, dy, result))
        return UNCHANGED;
    auto r = renderer();
    auto camera = r ? r->camera : nullptr;
    if (!camera)
        return UNCHANGED;

    switch (result) {
    case IEventInterpreter::ROTATE:
    case IEventInterpreter::SPIN:
        doSizeCulling();
        if (result == IEventInterpreter::ROTATE && m_rotateAboutPick)
            rotateAboutPivot(camera, x - dx, y - dy, dx, dy);
        else
            CameraHelper::rotate(camera, dx, dy);
        m_lastStepSpin = result == IEventInterpreter::SPIN;
        m_spinDx = dx;
        m_spinDy = dy;
        m_lastStepTime = qrnplatform::WindowTimer::now();
        break;
    case IEventInterpreter::PAN:
        doSizeCulling();
        removeCrossHair();
        CameraHelper::translate(camera, dx, dy);
        break;
    case IEventInterpreter::ZOOM:
        doSizeCulling();
        removeCrossHair();
        // Down, or failing that right, zooms in.
        CameraHelper::zoom(camera, m_pressX, m_pressY, kDragZoomFactor,
                           dy > 0 || (dy == 0 && dx >= 1));
        m_zoomed = true;
        break;
    case IEventInterpreter::ZOOMBOX:
    case IEventInterpreter::BOXSELECT:
        removeCrossHair();
        updateRubberBand(x, y);
        m_changed = true;
        r->markOverlayChange();
        return CHANGED;
    case IEventInterpreter::NORMALVIEW:
        doSizeCulling();
        std::fputs("interpret normalview\n", stdout);
        break;
    default:
        return UNCHANGED;
    }
    m_changed = true;
    r->motion = true;
    r->update();
    return CHANGED;
}

FrameStatus CameraManipulator::mouseButtonUp(FrameStatus incoming, unsigned int flags,
                                             MouseButton button, int x, int y) {
    // A predecessor that consumed the release ends the drag as well (see the press).
    FrameStatus status = IManipulator::mouseButtonUp(incoming, flags, button, x, y);
    // Only a drag this manipulator started acts at its release: after a consumed press the
    // release belongs to the tool that took the press.
    const bool ownDrag = m_dragging;
    const bool moved = x != m_pressX || y != m_pressY;

    // The zoom box records its own step below.
    if ((m_changed || button == MIDDLE) && m_requested != IEventInterpreter::ZOOMBOX && moved)
        recordUndoStep();
    // The drag goes on while another button is held (a chord, CATIAEventInterpreter's zoom
    // latch): what it changes from here is a step of its own.
    const bool dragEnds = (flags & kButtons) == 0;
    const bool dragGoesOn = !dragEnds && m_dragging;
    if (dragGoesOn && !m_savedState)
        getCameraState(m_savedState);
    if (qrnplatform::Input::isTouchMessage())
        return status;

    const auto has = [this](Operation op) { return (m_availOperations & op) == op; };
    if (m_requested == IEventInterpreter::ZOOMBOX && has(IEventInterpreter::ZOOMBOX))
        resetRubberBand();
    if (m_requested == IEventInterpreter::BOXSELECT && has(IEventInterpreter::BOXSELECT))
        resetRubberBand();

    if (auto r = renderer())
        r->motion = false;
    // A release after a pause lets the model rest; released in motion, it spins on.
    const bool stillMoving = qrnplatform::WindowTimer::now() - m_lastStepTime <= kSpinPause;
    const bool keepSpinning = dragEnds && m_dragging && m_spinMode && m_lastStepSpin && moved &&
                              (m_spinDx != 0 || m_spinDy != 0) && stillMoving;
    m_chord = false;
    if (dragEnds) {
        m_dragging = false;
        m_button = NO_BUTTON;
    }
    if (keepSpinning)
        m_spinning = true;
    else
        removeCrossHair();

    // A consumed release does nothing of its own.
    if (status != CHANGED && ownDrag && button == LEFT) {
        if (m_requested == IEventInterpreter::BOXSELECT && moved) {
            setCameraStateBoxSelect(flags, x, y);
        } else if (m_requested == IEventInterpreter::ZOOMBOX && moved) {
            setCameraStateZoomBox(x, y);
        } else if (m_requested == IEventInterpreter::NORMALVIEW && !moved) {
            // The normal view is a one-shot tool.
            status = CHANGED;
            setOperation(IEventInterpreter::ROTATE);
        }
        if (moved && m_requested != IEventInterpreter::BOXSELECT)
            status = m_changed ? CHANGED : UNCHANGED;
    } else if (status != CHANGED && ownDrag && moved && m_changed) {
        // Any drag that moved the camera is consumed, so that no later tool takes it for a click.
        status = CHANGED;
    }
    if (incoming != CHANGED && button == MIDDLE && m_interpreter) {
        // Ends CATIAEventInterpreter's zoom latch, whatever the drag did.
        m_interpreter->post(flags, m_requested, x, y);
    }
    // The rest of the drag is a step that starts here: one that comes back to this point
    // records nothing, one that ends anywhere else is recorded.
    if (dragGoesOn) {
        m_pressX = x;
        m_pressY = y;
    }
    m_changed = false;
    resetSizeCulling();
    return status;
}

FrameStatus CameraManipulator::mouseWheel(unsigned int, int delta, float factor) {
    auto r = renderer();
    auto camera = r ? r->camera : nullptr;
    if (!camera || (m_availOperations & IEventInterpreter::ZOOM) == 0)
        return UNCHANGED;
    if ((m_availOperations & IEventInterpreter::SPIN) != 0)
        removeCrossHair();

    std::shared_ptr<qrn::IState> before;
    getCameraState(before);
    const float zoom = camera->zoomFactor();
    CameraHelper::zoom(camera, m_lastX, m_lastY, factor, delta > 0);
    if (camera->zoomFactor() != zoom) {
        std::shared_ptr<qrn::IState> after;
        getCameraState(after);
        setState(before, after);
    }
    return CHANGED;
}

FrameStatus CameraManipulator::keyDown(FrameStatus status, unsigned int key, unsigned int count,
                                       unsigned int keyFlags) {
    // A key an earlier tool took neither turns the view nor reaches the host's commands.
    if (IManipulator::keyDown(status, key, count, keyFlags) == CHANGED)
        return CHANGED;
    auto r = renderer();
    auto camera = r ? r->camera : nullptr;
    if (!camera)
        return UNCHANGED;

    if (key == kEscape) {
        if (m_viewState)
            m_viewState->reset();
        stopSpin();
        m_escapePressed = true;
        if (m_requested != IEventInterpreter::ZOOM && m_requested != IEventInterpreter::ZOOMBOX)
            return UNCHANGED;
        restoreDefaultOperation();
        return CHANGED;
    }
    if (key < kLeft || key > kDown)
        return UNCHANGED;

    // Each press is a step of its own, as a wheel notch is; a drag's saved state stays.
    std::shared_ptr<qrn::IState> before, after;
    getCameraState(before);
    Vec3 eye, target, direction, up;
    CameraHelper::getEyeTargetUp(camera, eye, target, direction, up, false);
    // Up and Down tilt about the view's horizontal, Left and Right turn about its up.
    const bool tilt = key == kUp || key == kDown;
    const float angle = key == kUp || key == kLeft ? kArrowAngle : -kArrowAngle;
    const Vec3 axis = tilt ? qrnmath::cross(direction, up) : up;
    CameraHelper::rotateBy(camera,
                           QuatUtils::interpolate(QuatUtils::create(axis, angle), kArrowFraction));
    getCameraState(after);
    setState(before, after);
    r->motion = true;
    return CHANGED;
}

void CameraManipulator::init() {
    IManipulator::init();
    m_availOperations = IEventInterpreter::ALL_OPERATIONS;
    m_pressX = m_pressY = m_lastX = m_lastY = 0;
    m_dragging = false;
    m_changed = false;
    m_chord = false;
    m_button = NO_BUTTON;
    stopSpin();
    resetRubberBand();
    m_zoombox.reset();
    m_crossHair.reset();
    m_savedState.reset();
}

bool CameraManipulator::setCursor() {
    switch (m_requested) {
    case IEventInterpreter::NONE:
    case IEventInterpreter::ROTATE:
    case IEventInterpreter::BOXSELECT:
    case IEventInterpreter::PAN:
    case IEventInterpreter::ZOOM:
    case IEventInterpreter::ZOOMBOX:
    case IEventInterpreter::SPIN:
        if (!m_cursor)
            return false;
        m_cursor->show(m_cursor->get(static_cast<int>(m_requested)));
        return true;
    default:
        return false;
    }
}

void CameraManipulator::play(const qrnsg::SCView::ORIENTATION& orientation, int frames) {
    m_orientation = orientation;
    if (m_viewState)
        m_viewState->play(orientation, frames);
}

void CameraManipulator::play(const int& view, int frames) {
    if (m_viewState)
        m_viewState->play(view, frames);
}

void CameraManipulator::previous() {
    const int count = qrnsg::SCView::ORIENTATION_COUNT;
    play(static_cast<qrnsg::SCView::ORIENTATION>((m_orientation + count - 1) % count), VIEW_FRAMES);
}

void CameraManipulator::next() {
    const int count = qrnsg::SCView::ORIENTATION_COUNT;
    play(static_cast<qrnsg::SCView::ORIENTATION>((m_orientation + 1) % count), VIEW_FRAMES);
}

void CameraManipulator::zoomfit() {
    if (m_viewState)
        m_viewState->zoomFit();
}

bool CameraManipulator::getCameraState(std::shared_ptr<qrn::IState>& state) const {
    auto current = m_commands->cameraState();
    if (!current)
        return false;
    state = std::move(current);
    return true;
}

void CameraManipulator::recordUndoStep() {
    std::shared_ptr<qrn::IState> current;
    if (m_savedState && getCameraState(current))
        setState(m_savedState, current);
    m_savedState.reset();
}

bool CameraManipulator::setState(std::shared_ptr<qrn::IState> before,
                                 std::shared_ptr<qrn::IState> after) {
    return m_commands->record(std::move(before), std::move(after));
}

FrameStatus CameraManipulator::spin() {
    if (!m_spinning)
        return UNCHANGED;
    auto r = renderer();
    if (!r || !r->camera) {
        m_spinning = false;
        return UNCHANGED;
    }
    CameraHelper::rotate(r->camera, m_spinDx, m_spinDy);
    r->motion = true;
    r->update();
    return CHANGED;
}

void CameraManipulator::updateRubberBand(int x, int y) {
    auto r = renderer();
    if (!r || !r->camera)
        return;
    qrnglutils::ZoomboxUtils::createGeometry(m_pressX, m_pressY, x, y, m_boxFill, m_boxOutline,
                                             static_cast<int>(r->camera->viewportHeight()));
    if (!m_zoombox)
        m_zoombox = std::make_shared<ZoomboxRenderer>();
    m_zoombox->set(std::make_shared<qrnglutils::MeshRenderer>(m_boxFill),
                   std::make_shared<qrnglutils::PolylineRenderer>(m_boxOutline));
    if (!isRegistered(*r, m_zoombox))
        r->addPostRenderer(m_zoombox);
    invalidate(*r);
}

void CameraManipulator::resetRubberBand() {
    m_boxFill = qrnsg::Mesh();
    m_boxOutline = qrnsg::Polyline();
    if (!m_zoombox)
        return;
    m_zoombox->resetBox();
    auto r = renderer();
    if (r && r->removePostRenderer(m_zoombox))
        invalidate(*r);
}

void CameraManipulator::setCameraStateZoomBox(int x, int y) {
    auto r = renderer();
    if (!r || !r->camera)
        return;
    std::shared_ptr<qrn::IState> before = m_savedState;
    if (!before)
        getCameraState(before);
    CameraHelper::zoomBox(r->camera, m_pressX, m_pressY, x, y);
    std::shared_ptr<qrn::IState> after;
    getCameraState(after);
    setState(before, after);
    m_savedState.reset();
    m_changed = true;
    r->update();
}

void CameraManipulator::setCameraStateBoxSelect(unsigned int flags, int x, int y) {
    if (m_boxSelect)
        m_boxSelect(m_pressX, m_pressY, x, y, flags);
}

void CameraManipulator::activateSpinOperation(int, int) {
    // The cross-hair marks the centre the spin turns about.
    auto r = renderer();
    if (!r || !r->camera)
        return;
    const Vec3 centre = qrnmath::MatrixUtils::transformPoint(
        CameraHelper::getModelToScreen(r->camera), r->camera->sphereCentre());
    if (!std::isfinite(centre[0]) || !std::isfinite(centre[1]))
        return;
    qrnsg::Polyline figure;
    qrnglutils::CrossHairUtils::createCrossHair(static_cast<int>(std::floor(centre[0])),
                                                static_cast<int>(std::floor(centre[1])), figure,
                                                static_cast<int>(r->camera->viewportHeight()));
    if (!m_crossHair)
        m_crossHair = std::make_shared<CrossHairRenderer>();
    m_crossHair->set(std::make_shared<qrnglutils::PolylineRenderer>(figure));
    if (!isRegistered(*r, m_crossHair))
        r->addPostRenderer(m_crossHair);
    invalidate(*r);
}

void CameraManipulator::stopSpin() {
    if (m_spinning) {
        m_spinning = false;
        if (auto r = renderer())
            r->motion = false;
    }
    removeCrossHair();
}

void CameraManipulator::removeCrossHair() {
    if (!m_crossHair)
        return;
    m_crossHair->set(nullptr);
    auto r = renderer();
    if (r && r->removePostRenderer(m_crossHair))
        invalidate(*r);
}

void CameraManipulator::rotateAboutPivot(const std::shared_ptr<Camera>& camera, int x, int y,
                                         int dx, int dy) {
    // Picked once a drag, where its first turn starts, before the camera moves.
    if (m_pivot == PIVOT_UNKNOWN)
        m_pivot = m_commands->getPointInWorld(x, y, m_pivotPoint) ? PIVOT_FOUND : PIVOT_NONE;
    if (m_pivot != PIVOT_FOUND) {
        CameraHelper::rotate(camera, dx, dy);
        return;
    }
    const Vec3 before = MatrixUtils::transformPoint(camera->getViewMatrix(), m_pivotPoint);
    CameraHelper::rotate(camera, dx, dy);
    const Vec3 after = MatrixUtils::transformPoint(camera->getViewMatrix(), m_pivotPoint);
    // In perspective the turn changes the point's depth: it keeps its line of sight instead.
    float scale = 1.0f;
    if (!camera->isOrthographic() && before[2] < 0.0f && after[2] < 0.0f)
        scale = after[2] / before[2];
    Vec3 pan = camera->modelTranslation();
    pan[0] += before[0] * scale - after[0];
    pan[1] += before[1] * scale - after[1];
    camera->setModelTranslation(pan);
}

void CameraManipulator::doSizeCulling() {
    if (auto r = renderer())
        r->sizeCulling = true;
}

void CameraManipulator::resetSizeCulling() {
    auto r = renderer();
    if (!r || !r->sizeCulling)
        return;
    // The still frame shows the whole model again.
    r->sizeCulling = false;
    r->update();
}

} // namespace qrngl
