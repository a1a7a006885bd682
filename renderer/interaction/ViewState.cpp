#include "qrngl/interaction/ViewState.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrnglutils/BBoxUtils.h"
#include "qrnglutils/ViewActivator.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnmath/QuatUtils.h"
#include "qrnplatform/WindowTimer.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnui/Hint.h"

#include <algorithm>
#include <cmath>

namespace qrngl {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;
using qrnmath::QuatUtils;
using qrnmath::Vec3;
using qrnsg::SCView;

namespace {

// Sequences rest this many ticks between their views.
const std::int32_t kSequencePause = 50;
// Below these a step counts as no motion.
const float kMoveThreshold = 1e-7f;
const float kRotateThreshold = 0.001f;

std::shared_ptr<Camera> cameraOf(const std::shared_ptr<SCRenderer>& renderer) {
    return renderer ? renderer->camera : nullptr;
}

Mat4 inverse(const Mat4& rotation) {
    Mat4 inv;
    // A rotation is never singular; a broken one falls back to its transpose.
    if (!MatrixUtils::invert(rotation, inv))
        inv = MatrixUtils::transpose(rotation);
    return inv;
}

bool hasGeometry(const qrnsg::SCScene& scene) {
    return !scene.meshes.empty() || !scene.polylines.empty();
}

} // namespace

ViewState::ViewState(HWND window, std::shared_ptr<qrn::IDocument> document,
                     std::shared_ptr<qrn::IUpdater> updater)
    : m_document(std::move(document)), m_updater(std::move(updater)), m_state(ANIMATE_NONE),
      m_framesLeft(0), m_translationStep(0.0f, 0.0f, 0.0f), m_centreStep(0.0f, 0.0f, 0.0f),
      m_radiusStep(0.0f), m_zoomStep(1.0f), m_rotationStep(QuatUtils::identity()),
      m_rotationFraction(0.0f), m_targetRotation(MatrixUtils::identity()),
      m_targetCentre(0.0f, 0.0f, 0.0f), m_targetRadius(1.0f), m_window(window), m_loop(false),
      m_framesPerSegment(0), m_queueKind(0), m_pause(0) {}

ViewState::~ViewState() {
    stopTimer();
}

void ViewState::stopTimer() {
    qrnplatform::WindowTimer::killTimer(m_window, TIMER_ID);
}

void ViewState::startTimer() {
    qrnplatform::WindowTimer::setTimer(m_window, TIMER_ID, TIMER_INTERVAL);
}

void ViewState::reset() {
    stopTimer();
    m_state = ANIMATE_NONE;
    m_queueKind = 0;
    m_loop = false;
    m_orientationQueue.clear();
    m_viewQueue.clear();
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!renderer)
        return;
    m_zoomStep = 1.0f;
    m_translationStep = Vec3(0.0f, 0.0f, 0.0f);
    m_centreStep = Vec3(0.0f, 0.0f, 0.0f);
    m_radiusStep = 0.0f;
    m_rotationStep = QuatUtils::identity();
    m_rotationFraction = 0.0f;
    if (auto camera = cameraOf(renderer)) {
        m_targetRotation = camera->modelRotation();
        CameraHelper::getSphere(camera, m_targetCentre, m_targetRadius);
    }
}

void ViewState::play(const SCView::ORIENTATION& orientation, int frames) {
    stopTimer();
    m_loop = false;
    m_framesPerSegment = frames;
    m_pause = 0;
    m_orientationQueue.clear();
    m_viewQueue.clear();
    m_queueKind = 0;
    m_state = reset(orientation, frames);
    if (m_state != ANIMATE_NONE)
        startTimer();
}

void ViewState::play(const int& view, int frames) {
    stopTimer();
    m_loop = false;
    m_framesPerSegment = frames;
    m_pause = 0;
    m_orientationQueue.clear();
    m_viewQueue.clear();
    m_queueKind = 1;
    m_state = reset(view, frames);
    if (m_state != ANIMATE_NONE)
        startTimer();
}

void ViewState::play(const std::deque<SCView::ORIENTATION>& orientations, int frames, bool loop) {
    stopTimer();
    m_loop = loop;
    m_framesPerSegment = frames;
    m_pause = kSequencePause;
    m_orientationQueue = orientations;
    m_queueKind = 0;
    // Skip the views that need no motion; each is tried once, looping or not.
    for (std::size_t tried = 0; tried < orientations.size() && !m_orientationQueue.empty();
         ++tried) {
        const SCView::ORIENTATION next = m_orientationQueue.front();
        m_state = reset(next, frames);
        if (m_loop)
            m_orientationQueue.push_back(next);
        m_orientationQueue.pop_front();
        if (m_state != ANIMATE_NONE)
            break;
    }
    startTimer();
}

void ViewState::play(const std::vector<int>& views, int frames, bool loop) {
    stopTimer();
    m_loop = loop;
    m_framesPerSegment = frames;
    m_pause = kSequencePause;
    m_viewQueue.assign(views.begin(), views.end());
    m_queueKind = 1;
    // Whatever ran is dropped; the first view starts when a whole pause has run out.
    m_state = ANIMATE_NONE;
    m_framesLeft = 0;
    startTimer();
}

void ViewState::animate() {
    if (m_framesLeft + m_pause == 0) {
        // The segment and its pause are over: on to the next view, if any.
        if (m_queueKind == 0 ? m_orientationQueue.empty() : m_viewQueue.empty()) {
            stopTimer();
        } else if (m_queueKind == 0) {
            const SCView::ORIENTATION next = m_orientationQueue.front();
            m_state = reset(next, m_framesPerSegment);
            if (m_loop)
                m_orientationQueue.push_back(next);
            m_orientationQueue.pop_front();
        } else {
            const int next = m_viewQueue.front();
            m_state = reset(next, m_framesPerSegment);
            if (m_loop)
                m_viewQueue.push_back(next);
            m_viewQueue.pop_front();
        }
    } else if (m_framesLeft == 0) {
        // The segment has just ended; a pause follows.
        m_state = ANIMATE_NONE;
        m_zoomStep = 1.0f;
        m_translationStep = Vec3(0.0f, 0.0f, 0.0f);
        m_rotationStep = QuatUtils::identity();
        m_rotationFraction = 0.0f;
    }

    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto camera = cameraOf(renderer);
    if (m_state & ANIMATE_MOVE) {
        CameraHelper::translateBy(camera, m_translationStep, m_centreStep, m_radiusStep);
        CameraHelper::zoomBy(camera, m_zoomStep);
    }
    if (m_state & ANIMATE_ROTATE)
        CameraHelper::rotateBy(camera, QuatUtils::interpolate(m_rotationStep, m_rotationFraction));

    --m_framesLeft;
    if (m_framesLeft == -1 && m_pause == 0 && renderer) {
        // The end of a single play: exactly on the target, whatever the steps' rounding.
        CameraHelper::setRotation(camera, m_targetRotation);
        CameraHelper::lookAt(camera, m_targetCentre, m_targetRadius);
        renderer->motion = false;
    }

    if (renderer && !renderer->canvases.empty())
        if (auto canvas = renderer->canvases.front().lock())
            canvas->Invalidate();
    qrnplatform::WindowTimer::invalidate(m_window);
}

void ViewState::set(const SCView::ORIENTATION& orientation) {
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto views = qrn::component<SCView>(m_document, qrnsg::SCHEMA_VIEW);
    if (views)
        CameraHelper::setRotation(cameraOf(renderer), views->rotation(orientation));
}

void ViewState::zoomFit() {
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    auto info = qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO);
    if (!rt || !info)
        return;
    auto camera = cameraOf(qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER));
    auto scene = qrn::component<qrnsg::SCScene>(m_document, qrnsg::SCHEMA_SCENE);
    auto resources = qrn::component<qrnsg::SCSceneRes>(m_document, qrnsg::SCHEMA_SCENE_RES);
    if (scene && hasGeometry(*scene)) {
        CameraHelper::lookAt(camera, qrnglutils::BBoxUtils::get(*scene, *rt, true));
    } else if (resources && !resources->empty()) {
        const qrnsg::BBox box = qrnglutils::BBoxUtils::get(*resources, *rt, true);
        Vec3 centre;
        float radius = 1.0f;
        if (qrnglutils::BBoxUtils::getSphere(box, centre, radius)) {
            getFitRadius(box, centre, radius);
            CameraHelper::lookAt(camera, centre, radius);
        }
    }
    for (void* view : info->views)
        qrnplatform::WindowTimer::invalidate(view);
    qrnplatform::WindowTimer::invalidate(m_window);
}

void ViewState::getFitRadius(const qrnsg::BBox& box, const Vec3&, float& radius) {
    auto camera = cameraOf(qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER));
    if (!camera)
        return;
    // The view's frame as the camera describes it, in the form of its projection.
    Vec3 eye, target, direction, up;
    CameraHelper::getEyeTargetUp(camera, eye, target, direction, up,
                                 camera->projection() == Camera::ORTHOGRAPHIC);
    const Vec3 right = qrnmath::cross(direction, up).normalized();
    Mat4 frame = MatrixUtils::identity();
    for (int i = 0; i < 3; ++i) {
        frame[4 * i] = right[i];
        frame[4 * i + 1] = up[i];
        frame[4 * i + 2] = -direction[i];
    }
    radius = CameraHelper::getFitRadius(camera, box, frame);
}

ViewState::AnimateState ViewState::stepState(const Mat4& inverseStart, int frames) {
    int state = ANIMATE_NONE;
    // The translation's z takes no part in the view, so it is not tested.
    for (float step : {m_translationStep[0], m_translationStep[1], m_zoomStep, m_centreStep[0],
                       m_centreStep[1], m_centreStep[2], m_radiusStep})
        if (std::abs(step) > kMoveThreshold)
            state |= ANIMATE_MOVE;

    const qrnmath::Vec4 q =
        QuatUtils::create(MatrixUtils::multiply(inverseStart, m_targetRotation));
    Vec3 axis;
    float angle = 0.0f;
    if (!QuatUtils::toAxisAngle(q, axis, angle))
        axis = Vec3(0.0f, 0.0f, 0.0f);
    const float degrees = angle * 180.0f / 3.14159265358979f;
    if (std::abs(axis.lengthSquared()) >= kRotateThreshold &&
        std::abs(degrees) >= kRotateThreshold) {
        state |= ANIMATE_ROTATE;
        m_rotationStep = q;
        m_rotationFraction = 1.0f / static_cast<float>(frames);
    }
    return static_cast<AnimateState>(state);
}

ViewState::AnimateState ViewState::reset(const SCView::ORIENTATION& orientation, int frames) {
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto camera = cameraOf(renderer);
    if (!camera)
        return ANIMATE_NONE;
    auto scene = qrn::component<qrnsg::SCScene>(m_document, qrnsg::SCHEMA_SCENE);
    auto resources = qrn::component<qrnsg::SCSceneRes>(m_document, qrnsg::SCHEMA_SCENE_RES);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    auto views = qrn::component<SCView>(m_document, qrnsg::SCHEMA_VIEW);
    frames = std::max(frames, 1);

    m_framesLeft = frames;
    const float n = static_cast<float>(frames);
    m_translationStep = camera->modelTranslation() / -n;
    m_zoomStep = (1.0f - camera->zoomFactor()) / n;
    // Without a view component the rotation stays as it is.
    m_targetRotation = views ? views->rotation(orientation) : camera->modelRotation();

    // Without a scene to fit, the sphere stays where it is.
    Vec3 centre;
    float radius = 1.0f;
    CameraHelper::getSphere(camera, centre, radius);
    m_targetCentre = centre;
    m_targetRadius = radius;
    m_centreStep = Vec3(0.0f, 0.0f, 0.0f);
    m_radiusStep = 0.0f;
    if (topology && !topology->empty() && rt) {
        qrnsg::BBox box;
        if (scene && hasGeometry(*scene))
            box = qrnglutils::BBoxUtils::get(*scene, *rt, true);
        else if (resources && !resources->empty())
            box = qrnglutils::BBoxUtils::get(*resources, *rt, true);
        if (qrnglutils::BBoxUtils::getSphere(box, m_targetCentre, m_targetRadius))
            qrnglutils::BBoxUtils::updateCameraPosition(camera, box, m_targetRotation,
                                                        m_targetRadius);
        m_centreStep = (m_targetCentre - centre) / n;
        m_radiusStep = (m_targetRadius - radius) / n;
    }
    return stepState(inverse(camera->modelRotation()), frames);
}

ViewState::AnimateState ViewState::reset(const int& view, int frames) {
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto camera = cameraOf(renderer);
    auto views = qrn::component<SCView>(m_document, qrnsg::SCHEMA_VIEW);
    if (!camera)
        return ANIMATE_NONE;
    frames = std::max(frames, 1);
    const float n = static_cast<float>(frames);

    // Visit the view to learn where it is, then come back.
    Vec3 eye, target, direction, up;
    CameraHelper::getEyeTargetUp(camera, eye, target, direction, up, false);
    Vec3 centre;
    float radius = 1.0f;
    CameraHelper::getSphere(camera, centre, radius);
    const Mat4 inverseRotation = inverse(camera->modelRotation());
    const Vec3 translation = camera->modelTranslation();
    const float zoom = camera->zoomFactor();
    m_framesLeft = frames;
    m_zoomStep = (1.0f - zoom) / n;
    if (!views || !qrnglutils::ViewActivator::apply(*views, view, camera))
        return ANIMATE_NONE;

    m_translationStep = (camera->modelTranslation() - translation) / n;
    CameraHelper::getSphere(camera, m_targetCentre, m_targetRadius);
    m_centreStep = (m_targetCentre - centre) / n;
    m_radiusStep = (m_targetRadius - radius) / n;
    m_targetRotation = camera->modelRotation();
    const AnimateState state = stepState(inverseRotation, frames);

    CameraHelper::lookAt(camera, eye, target, up);
    CameraHelper::lookAt(camera, centre, radius);
    // Fitting the sphere cleared the pan and the zoom; they are part of where it was.
    camera->setModelTranslation(translation);
    camera->setZoomFactor(zoom);

    if (m_updater)
        m_updater->update(qrnui::Hint(HINT_SAVED_VIEW, m_document));
    return state;
}

} // namespace qrngl
