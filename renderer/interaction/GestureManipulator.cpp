#include "qrngl/interaction/GestureManipulator.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/interaction/ViewState.h"
#include "qrnplatform/Input.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/Placements.h"
#include "qrnui/Hint.h"
#include "qrnui/IFrame.h"

namespace qrngl {

namespace {

// Zoom per zoom-gesture message.
const float kGestureZoomFactor = 1.01f;
const unsigned int kButtons = KEY_LBUTTON | KEY_MBUTTON | KEY_RBUTTON;

} // namespace

GestureManipulator::GestureManipulator(std::shared_ptr<qrnui::IFrame> frame,
                                       std::shared_ptr<ViewState> viewState,
                                       std::shared_ptr<Cursor> cursor)
    : ITouchManipulator(std::move(cursor)), m_document(frame ? frame->getDocument() : nullptr),
      m_viewState(std::move(viewState)), m_updater(frame ? frame->getUpdater() : nullptr),
      m_lastX(0), m_lastY(0), m_startX(0), m_startY(0), m_noMotion(false) {}

GestureManipulator::~GestureManipulator() = default;

FrameStatus GestureManipulator::mouseButtonDown(FrameStatus status, unsigned int flags,
                                                MouseButton button, int x, int y) {
    // Real mouse input is the camera manipulator's.
    if (!qrnplatform::Input::isTouchMessage())
        return status;
    // A touch an earlier tool took starts no drag here.
    if (ITouchManipulator::mouseButtonDown(status, flags, button, x, y) == CHANGED)
        return CHANGED;
    m_startX = m_lastX = x;
    m_startY = m_lastY = y;
    if (m_viewState)
        m_viewState->reset();
    m_touchDrag = true;
    m_turned = false;
    return UNCHANGED;
}

FrameStatus GestureManipulator::mouseButtonUp(FrameStatus status, unsigned int flags,
                                              MouseButton button, int x, int y) {
    status = ITouchManipulator::mouseButtonUp(status, flags, button, x, y);
    if (!qrnplatform::Input::isTouchMessage())
        return status;
    // A drag that turned the model is no tap for the tools after this one.
    const bool turned = m_touchDrag && m_turned;
    m_touchDrag = m_turned = false;
    return turned ? CHANGED : status;
}

FrameStatus GestureManipulator::mouseMotion(unsigned int flags, int x, int y) {
    m_noMotion = false;
    const bool buttonDown = (flags & kButtons) != 0;
    if (m_touchDrag && buttonDown && flags == KEY_LBUTTON && qrnplatform::Input::isTouchMessage()) {
        auto renderer = m_document ? std::dynamic_pointer_cast<SCRenderer>(
                                         m_document->getSchema(qrnsg::SCHEMA_RENDERER))
                                   : nullptr;
        if (renderer) {
            CameraHelper::rotate(renderer->camera, x - m_lastX, y - m_lastY);
            renderer->update();
            m_turned = m_turned || x != m_lastX || y != m_lastY;
        }
    }
    m_lastX = x;
    m_lastY = y;
    if (!buttonDown) {
        m_startX = x;
        m_startY = y;
    }
    return UNCHANGED;
}

void GestureManipulator::init() {
    ITouchManipulator::init();
    m_lastX = m_lastY = 0;
    m_startX = m_startY = 0;
    m_touchDrag = m_turned = false;
}

FrameStatus GestureManipulator::OnGesturePan(FrameStatus status, int startX, int startY, int x,
                                             int y) {
    auto renderer =
        m_document
            ? std::dynamic_pointer_cast<SCRenderer>(m_document->getSchema(qrnsg::SCHEMA_RENDERER))
            : nullptr;
    if (!renderer)
        return status;
    const int dx = x - startX, dy = y - startY;
    if (dx == 0 && dy == 0) {
        m_noMotion = true;
        return UNCHANGED;
    }
    CameraHelper::translate(renderer->camera, dx, dy);
    return CHANGED;
}

FrameStatus GestureManipulator::OnGestureZoom(FrameStatus, int, int, long distance) {
    auto renderer =
        m_document
            ? std::dynamic_pointer_cast<SCRenderer>(m_document->getSchema(qrnsg::SCHEMA_RENDERER))
            : nullptr;
    if (renderer && distance != 0) {
        CameraHelper::zoom(renderer->camera, m_startX, m_startY, kGestureZoomFactor, distance < 0);
        renderer->update();
    }
    return UNCHANGED;
}

FrameStatus GestureManipulator::OnGestureTwoFingerTap(FrameStatus, int, int) {
    changeView();
    return CHANGED;
}

FrameStatus GestureManipulator::OnGestureRotate(FrameStatus status, int, int, double) {
    return status;
}

FrameStatus GestureManipulator::OnGesturePressAndTap(FrameStatus status, int, int, long) {
    return status;
}

void GestureManipulator::play(const qrnsg::SCView::ORIENTATION& orientation, int frames) {
    if (m_viewState)
        m_viewState->play(orientation, frames);
}

void GestureManipulator::zoomfit() {
    if (m_viewState)
        m_viewState->zoomFit();
}

void GestureManipulator::home() {
    changeView();
}

void GestureManipulator::changeView() {
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    if (!rt || !topology || !m_document->getSchema(qrnsg::SCHEMA_ANIMATION))
        return;
    // Every moved part back where the file placed it, every node shown and none moved.
    qrnsgutils::Placements::reset(*topology, *rt);
    rt->nodeShown.assign(topology->nodes.size(), 0xFF);
    rt->nodeMoved.assign(topology->nodes.size(), 0);
    play(qrnsg::SCView::ISOMETRIC, HOME_VIEW_FRAMES);
    // The registry's entries refreshed: every canvas of the document draws and picks anew.
    if (auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER)) {
        for (const auto& weak : renderer->canvases)
            if (auto canvas = weak.lock())
                canvas->Invalidate();
        if (renderer->pickCanvas)
            renderer->pickCanvas->Invalidate();
    }
    if (m_updater)
        m_updater->update(qrnui::Hint(HINT_HOME_VIEW, m_document));
}

} // namespace qrngl
