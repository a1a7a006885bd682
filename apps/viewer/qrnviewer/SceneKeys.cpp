#include "qrnviewer/SceneKeys.h"

#include "qrngl/SCRenderer.h"
#include "qrngl/interaction/ViewState.h"
#include "qrnmath/QuatUtils.h"
#include "qrnplatform/WindowTimer.h"
#include "qrnviewer/SceneState.h"
#include "qrnviewer/TerminalStatus.h"

#include <cmath>

namespace qrnviewer {

using qrnplatform::WindowTimer;

namespace {
enum : unsigned int { VK_F2 = 0x71, VK_F3 = 0x72 };
} // namespace

SceneKeys::SceneKeys(std::shared_ptr<qrn::IDocument> document, void* window,
                     std::function<void(const std::string&)> say, std::function<void()> fit)
    : m_document(std::move(document)), m_window(window), m_say(std::move(say)),
      m_fit(std::move(fit)), m_explosion(m_document) {}

SceneKeys::~SceneKeys() {
    WindowTimer::killTimer(m_window, EXPLODE_TIMER);
    WindowTimer::killTimer(m_window, STATE_TIMER);
}

void SceneKeys::setStateFiles(std::string load, std::string save) {
    m_stateLoad = std::move(load);
    m_stateSave = std::move(save);
}

bool SceneKeys::key(unsigned int key) {
    if (key == '0') {
        TerminalStatus progress;
        if (!m_explosion.next(&progress)) {
            m_say("nothing to explode: the model is one part");
            return true;
        }
        WindowTimer::setTimer(m_window, EXPLODE_TIMER, qrngl::ViewState::TIMER_INTERVAL);
        m_fitAfterExplode = true;
        m_say(m_explosion.level() == 0 ? std::string("assembled")
                                       : "exploded: level " + std::to_string(m_explosion.level()) +
                                             " of " + std::to_string(m_explosion.levels()));
        return true;
    }
    if (key != VK_F2 && key != VK_F3)
        return false;
    const bool save = key == VK_F2;
    std::string file = save ? m_stateSave : m_stateLoad;
    if (file.empty())
        file = save ? m_stateLoad : m_stateSave;
    if (file.empty())
        file = "qrnview.state";
    std::string error;
    SceneState state(m_document, &m_explosion);
    // A restore moves there: camera and exploded parts over the next ticks.
    state.setAnimated(true);
    if (!(save ? state.save(file, error) : state.load(file, error))) {
        m_say(error);
        return true;
    }
    m_say(std::string(save ? "scene state saved to " : "scene state restored from ") + file);
    auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!save && renderer && renderer->camera) {
        m_cameraFrom = std::make_unique<qrngl::Camera>(*renderer->camera);
        m_cameraTo = std::make_unique<qrngl::Camera>(state.cameraTarget());
        m_cameraStep = 0;
        WindowTimer::setTimer(m_window, STATE_TIMER, qrngl::ViewState::TIMER_INTERVAL);
        WindowTimer::setTimer(m_window, EXPLODE_TIMER, qrngl::ViewState::TIMER_INTERVAL);
        m_fitAfterExplode = false;
    }
    return true;
}

void SceneKeys::moveCamera() {
    auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!renderer || !renderer->camera || !m_cameraFrom || !m_cameraTo ||
        ++m_cameraStep >= Explosion::FRAMES) {
        if (renderer && renderer->camera && m_cameraTo)
            *renderer->camera = *m_cameraTo;
        WindowTimer::killTimer(m_window, STATE_TIMER);
        return;
    }
    const float t = Explosion::ease(static_cast<float>(m_cameraStep) / Explosion::FRAMES);
    const qrngl::Camera& a = *m_cameraFrom;
    const qrngl::Camera& b = *m_cameraTo;
    using Q = qrnmath::QuatUtils;
    auto& camera = *renderer->camera;
    camera.setModelRotation(
        Q::toMatrix(Q::slerp(Q::create(a.modelRotation()), Q::create(b.modelRotation()), t)));
    camera.setModelTranslation(a.modelTranslation() +
                               (b.modelTranslation() - a.modelTranslation()) * t);
    camera.setZoomFactor(a.zoomFactor() * std::pow(b.zoomFactor() / a.zoomFactor(), t));
    camera.setSphere(a.sphereCentre() + (b.sphereCentre() - a.sphereCentre()) * t,
                     a.sphereRadius() + (b.sphereRadius() - a.sphereRadius()) * t);
    camera.setProjection(t < 0.5f ? a.projection() : b.projection());
}

bool SceneKeys::tick(unsigned int id) {
    if (id == STATE_TIMER) {
        moveCamera();
        return true;
    }
    if (id != EXPLODE_TIMER)
        return false;
    if (!m_explosion.animate()) {
        WindowTimer::killTimer(m_window, EXPLODE_TIMER);
        if (m_fitAfterExplode)
            m_fit();
        m_fitAfterExplode = false;
    }
    return true;
}

void SceneKeys::assembled() {
    WindowTimer::killTimer(m_window, EXPLODE_TIMER);
    m_explosion.assembled();
}

} // namespace qrnviewer
