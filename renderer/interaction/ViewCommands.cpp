#include "qrngl/interaction/ViewCommands.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/interaction/EntityGeometry.h"
#include "qrngl/interaction/ViewState.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrnglutils/BBoxUtils.h"
#include "qrnglutils/CameraState.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCView.h"
#include "qrnui/IFrame.h"

#include <algorithm>
#include <cmath>

namespace qrngl {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;
using qrnmath::Vec3;

namespace {

// Pixels each side of the point that the picks look at.
const int kPickSize = 2;
// The face mask of a pick.
const unsigned short kFaces = 1;

// The box of what is shown, as the view animation fits it.
qrnsg::BBox shownBounds(const std::shared_ptr<qrn::IDocument>& document) {
    auto rt = qrn::component<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT);
    auto scene = qrn::component<qrnsg::SCScene>(document, qrnsg::SCHEMA_SCENE);
    auto resources = qrn::component<qrnsg::SCSceneRes>(document, qrnsg::SCHEMA_SCENE_RES);
    if (!rt)
        return qrnsg::BBox();
    if (scene && (!scene->meshes.empty() || !scene->polylines.empty()))
        return qrnglutils::BBoxUtils::get(*scene, *rt, true);
    if (resources && !resources->empty())
        return qrnglutils::BBoxUtils::get(*resources, *rt, true);
    return qrnsg::BBox();
}

// The entity of a kind nearest the window point; 0 for none.
unsigned int pickAt(const SCRenderer* r, int x, int y, unsigned short type) {
    if (!r || !r->pickCanvas)
        return 0;
    return EntityFilter::nearest(r->pickCanvas, type, x, y, kPickSize);
}

} // namespace

ViewCommands::ViewCommands(std::shared_ptr<qrnui::IFrame> frame,
                           std::shared_ptr<ViewState> viewState)
    : m_frame(std::move(frame)), m_document(m_frame ? m_frame->getDocument() : nullptr),
      m_viewState(std::move(viewState)) {}

std::shared_ptr<SCRenderer> ViewCommands::renderer() const {
    return qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
}

std::shared_ptr<qrn::IState> ViewCommands::cameraState() const {
    auto r = renderer();
    return r && r->camera ? std::make_shared<qrnglutils::CameraState>(r->camera) : nullptr;
}

bool ViewCommands::record(std::shared_ptr<qrn::IState> before,
                          std::shared_ptr<qrn::IState> after) const {
    auto undo = m_frame ? m_frame->getUndoStack() : nullptr;
    if (!undo || !before || !after)
        return false;
    undo->push(std::move(before), std::move(after));
    return true;
}

void ViewCommands::changed(SCRenderer& renderer) const {
    if (!renderer.canvases.empty())
        if (auto canvas = renderer.canvases.front().lock())
            canvas->Invalidate();
    renderer.update();
}

bool ViewCommands::activateNormalView(int x, int y) {
    auto r = renderer();
    if (!r || !r->camera)
        return false;
    const unsigned int face = pickAt(r.get(), x, y, kFaces);
    Vec3 normal;
    if (!face || !EntityGeometry(m_document).planeNormal(face, normal))
        return false;
    // A face seen from behind is looked at from the side it was seen from.
    if (normal.dot(r->camera->direction()) > 0.0f)
        normal = -normal;
    return doOrthoView(normal);
}

bool ViewCommands::doOrthoView(const Vec3& normal) {
    auto r = renderer();
    auto camera = r ? r->camera : nullptr;
    const float length = normal.length();
    if (!camera || !std::isfinite(length) || length <= 0.0f)
        return false;
    const Vec3 back = normal / length;
    Vec3 up = camera->up() - back * camera->up().dot(back);
    if (up.lengthSquared() < 1e-6f) {
        // Looking along the old up turns the view over: what was ahead becomes up.
        const Vec3 ahead = camera->direction();
        up = ahead - back * ahead.dot(back);
    }
    if (up.lengthSquared() < 1e-6f)
        return false;
    up = up.normalized();
    const Vec3 right = qrnmath::cross(up, back);
    Mat4 rotation = MatrixUtils::identity();
    for (int i = 0; i < 3; ++i) {
        rotation[4 * i] = right[i];
        rotation[4 * i + 1] = up[i];
        rotation[4 * i + 2] = back[i];
    }

    auto views = qrn::component<qrnsg::SCView>(m_document, qrnsg::SCHEMA_VIEW);
    if (!m_viewState || !views) {
        CameraHelper::setRotation(camera, rotation);
        changed(*r);
        return true;
    }
    // The animation goes to orientations: it borrows one for this play, which takes its
    // target at the start.
    const qrnsg::SCView::ORIENTATION slot = qrnsg::SCView::ISOMETRIC;
    const Mat4 kept = views->orientations[slot];
    views->orientations[slot] = rotation;
    m_viewState->play(slot, VIEW_FRAMES);
    views->orientations[slot] = kept;
    return true;
}

bool ViewCommands::getPointInWorld(int x, int y, Vec3& point) const {
    auto r = renderer();
    auto camera = r ? r->camera : nullptr;
    Mat4 fromScreen;
    if (!camera || !MatrixUtils::invert(CameraHelper::getModelToScreen(camera), fromScreen))
        return false;
    const unsigned int face = pickAt(r.get(), x, y, kFaces);
    if (!face)
        return false;
    const float fx = static_cast<float>(x), fy = static_cast<float>(y);
    const Vec3 nearest = MatrixUtils::transformPoint(fromScreen, Vec3(fx, fy, 0.0f));
    const Vec3 farthest = MatrixUtils::transformPoint(fromScreen, Vec3(fx, fy, 1.0f));
    const qrnmath::Ray ray(nearest, farthest - nearest);
    float t = 0.0f;
    if (!EntityGeometry(m_document).intersect(face, ray, t))
        return false;
    point = ray.pointAt(t);
    return true;
}

bool ViewCommands::zoomToSelection(const std::vector<unsigned int>& names) {
    auto r = renderer();
    auto camera = r ? r->camera : nullptr;
    const qrnsg::BBox box = EntityGeometry(m_document).bounds(names);
    if (!camera || box.isEmpty())
        return false;
    if (m_viewState)
        m_viewState->reset();
    if (m_beforeChange)
        m_beforeChange();
    const auto before = cameraState();
    // The rest of the model stays inside the depth range.
    qrnsg::BBox all = shownBounds(m_document);
    all.add(box);
    camera->setSceneSphere(all.center(), 0.5f * all.diagonal());
    if (box.diagonal() > 0.0f) {
        CameraHelper::lookAt(camera, box.center(),
                             CameraHelper::getFitRadius(camera, box, camera->modelRotation()));
    } else {
        // A single point is centred at the scale the view has.
        camera->setSphere(box.center(), camera->sphereRadius());
        camera->setModelTranslation(Vec3(0.0f, 0.0f, 0.0f));
    }
    record(before, cameraState());
    changed(*r);
    return true;
}

void ViewCommands::recordVisibility(const std::shared_ptr<qrn::IState>& before) const {
    record(before, std::make_shared<PartVisibility>(m_document));
    visibilityChanged(m_document);
}

bool ViewCommands::hideSelected(const std::vector<unsigned int>& names) {
    EntityGeometry geometry(m_document);
    auto before = std::make_shared<PartVisibility>(m_document);
    if (!geometry.setShown(geometry.partsOf(names), false))
        return false;
    recordVisibility(before);
    return true;
}

bool ViewCommands::showAll() {
    EntityGeometry geometry(m_document);
    auto before = std::make_shared<PartVisibility>(m_document);
    if (!geometry.setShown(geometry.allParts(), true))
        return false;
    recordVisibility(before);
    return true;
}

bool ViewCommands::isolate(const std::vector<unsigned int>& names) {
    EntityGeometry geometry(m_document);
    const std::vector<bool> parts = geometry.partsOf(names);
    // Isolating nothing would leave an empty view.
    if (std::find(parts.begin(), parts.end(), true) == parts.end())
        return false;
    auto before = std::make_shared<PartVisibility>(m_document);
    if (!geometry.showOnly(parts))
        return false;
    recordVisibility(before);
    return true;
}

void ViewCommands::changeRenderMode(RENDERMODE mode) {
    auto r = renderer();
    if (!r || r->renderMode == mode)
        return;
    r->renderMode = mode;
    changed(*r);
}

ViewCommands::RENDERMODE ViewCommands::getRenderMode() const {
    auto r = renderer();
    return r ? r->renderMode : SCRenderer::SHADED_WITH_EDGES;
}

void ViewCommands::changeProjection() {
    auto r = renderer();
    if (!r || !r->camera)
        return;
    const auto before = cameraState();
    r->camera->setProjection(r->camera->isOrthographic() ? Camera::PERSPECTIVE
                                                         : Camera::ORTHOGRAPHIC);
    record(before, cameraState());
    changed(*r);
}

} // namespace qrngl
