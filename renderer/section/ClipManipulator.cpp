#include "qrngl/section/ClipManipulator.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/RendererFactory.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrngl/picking/PickingHelper.h"
#include "qrnglutils/BBoxUtils.h"
#include "qrnglutils/ClipplaneUtils.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnmath/PlaneUtils.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/MeshPairVisibility.h"

namespace qrngl {

using qrnglutils::ClipplaneUtils;
using qrnmath::Mat4;
using qrnmath::MatrixUtils;
using qrnmath::PlaneUtils;
using qrnmath::Vec3;
using qrnmath::Vec4;

namespace {

Vec3 normalOf(const Vec4& plane) {
    return Vec3(plane[0], plane[1], plane[2]);
}

// A plane moved by a translation: its points p + t satisfy n.(p + t) + d' = 0.
Vec4 transformPlane(const Vec3& translation, const Vec4& plane) {
    return Vec4(plane[0], plane[1], plane[2], plane[3] - normalOf(plane).dot(translation));
}

// The ray from the eye through a window point, in model coordinates.
void createRay(int x, int y, const Mat4& inverse, Vec3& origin, Vec3& direction) {
    const Vec3 nearPoint = MatrixUtils::transformPoint(
        inverse, Vec3(static_cast<float>(x), static_cast<float>(y), 0.0f));
    const Vec3 farPoint = MatrixUtils::transformPoint(
        inverse, Vec3(static_cast<float>(x), static_cast<float>(y), 1.0f));
    origin = nearPoint;
    direction = (farPoint - nearPoint).normalized();
}

bool arrow(unsigned int key) {
    return key >= ClipManipulator::KEY_LEFT && key <= ClipManipulator::KEY_DOWN;
}

} // namespace

template <class T>
std::shared_ptr<T> ClipManipulator::component(short type) const {
    return qrn::component<T>(m_document, type);
}

ClipManipulator::ClipManipulator(std::shared_ptr<qrn::IDocument> document,
                                 std::shared_ptr<Cursor> cursor)
    : IManipulator(std::move(cursor)), m_document(std::move(document)),
      m_factory(createRendererFactory()), m_pre(std::make_shared<PreClipRenderer>(m_document)),
      m_post(std::make_shared<PostClipRenderer>(m_document)) {}

ClipManipulator::~ClipManipulator() = default;

void ClipManipulator::init() {
    IManipulator::init();
    m_post->setProfile(nullptr);
    setClipType(SCClipping::NONE);
    m_moved = false;
    m_profileWasOn = false;
    m_button = -1;
}

qrnsg::BBox ClipManipulator::getRootBounds() const {
    if (!component<qrnsg::SCSceneRes>(qrnsg::SCHEMA_SCENE_RES) ||
        !component<qrnsg::SCInfo>(qrnsg::SCHEMA_INFO) ||
        !component<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO) ||
        !component<qrnsg::SCPmi>(qrnsg::SCHEMA_PMI))
        return qrnsg::BBox();
    return qrnglutils::BBoxUtils::getRoot(m_document);
}

Vec4 ClipManipulator::getClipPlane(const qrnsg::BBox& bounds, bool flipped,
                                   std::shared_ptr<qrnsg::Mesh>& mesh,
                                   std::shared_ptr<qrnsg::Polyline>& polyline) const {
    static const Vec3 normals[3] = {Vec3(0, 0, -1), Vec3(1, 0, 0), Vec3(0, 1, 0)};
    Vec3 normal = normals[m_type <= SCClipping::ZX ? static_cast<int>(m_type) : 0];
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    Vec3 eye, target, direction, up;
    if (renderer) {
        CameraHelper::getEyeTargetUp(renderer->camera, eye, target, direction, up, false);
        // Towards the viewer's side the model is cut away: the half the normal points to,
        // away from the eye, stays.
        if (direction.dot(normal) < 0.0f)
            normal = -normal;
    }
    // A flipped cut stays flipped for the next plane: the other half is kept again.
    if (flipped)
        normal = -normal;
    return ClipplaneUtils::createClipPlane(bounds, normal, mesh, polyline);
}

void ClipManipulator::setClipType(PLANETYPE type, const std::shared_ptr<qrnsg::Section>& section) {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    if (type == SCClipping::NONE) {
        if (auto measure = component<SCMeasure>(qrnsg::SCHEMA_MEASURE))
            measure->clearAll();
        ClipplaneUtils::clearProfileData(clipping);
    } else if (clipping) {
        showProfile(clipping->showProfile);
    }
    m_bounds = getRootBounds();
    auto rt = component<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    // Ending the cut needs no bounds: whatever the model is now, no plane stays in force, and
    // no stale one stays behind for the states, picks and profiles that read the component.
    if (type == SCClipping::NONE && renderer && clipping) {
        m_type = type;
        renderer->removePreRenderer(m_pre);
        renderer->removePostRenderer(m_post);
        renderer->planePicked = false;
        clipping->planes.clear();
        clipping->pointsOnPlane.clear();
        clipping->planeMatrices.clear();
        clipping->planeTypes.clear();
        renderer->update();
    } else if (rt && !m_bounds.isEmpty() && renderer && clipping) {
        m_type = type;
        renderer->removePreRenderer(m_pre);
        renderer->removePostRenderer(m_post);
        renderer->planePicked = false;
        {
            renderer->addPreRenderer(m_pre);
            renderer->addPostRenderer(m_post);
            std::shared_ptr<qrnsg::Mesh> mesh;
            std::shared_ptr<qrnsg::Polyline> border;
            Vec4 plane;
            if (!section || type != SCClipping::SECTION) {
                plane = getClipPlane(m_bounds, clipping->flipped, mesh, border);
            } else {
                Vec3 normal = section->normal.length() > 0.0f ? section->normal : Vec3(0, 0, 1);
                Vec3 eye, target, direction, up;
                CameraHelper::getEyeTargetUp(renderer->camera, eye, target, direction, up, false);
                if (direction.dot(normal) < 0.0f)
                    normal = -normal;
                // A flipped cut stays flipped for the next plane, as for an axis plane.
                if (clipping->flipped)
                    normal = -normal;
                plane = ClipplaneUtils::createClipPlane(m_bounds, normal, mesh, border);
                // Through the section's own point.
                const Vec3 shift = section->point - PlaneUtils::project(plane, section->point);
                plane = transformPlane(shift, plane);
                for (auto& v : mesh->vertices)
                    v += shift;
                for (auto& p : border->points)
                    p += shift;
                clipping->capped = section->capped;
                clipping->showProfile = section->showProfile;
            }
            auto visibility = std::make_shared<qrnsgutils::MeshPairVisibility>(rt);
            m_pairFunctor = visibility;
            auto quad = m_factory->createMeshRenderer(*mesh);
            m_pre->setPlane(quad, visibility);
            m_post->setPlane(quad);
            m_post->setPlaneBorder(m_factory->createPolylineRenderer(*border));
            clipping->planes.insert(clipping->planes.begin(), plane);
            clipping->pointsOnPlane.insert(clipping->pointsOnPlane.begin(),
                                           PlaneUtils::project(plane, m_bounds.center()));
            clipping->planeMatrices.insert(clipping->planeMatrices.begin(),
                                           MatrixUtils::identity());
            clipping->planeTypes.insert(clipping->planeTypes.begin(), type);
        }
        renderer->update();
    }
    if (clipping)
        showProfile(clipping->showProfile);
}

void ClipManipulator::showProfile(bool on) {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    if (!clipping || !component<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT) ||
        !component<SCRenderer>(qrnsg::SCHEMA_RENDERER) ||
        (!component<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE) &&
         !component<qrnsg::SCSceneRes>(qrnsg::SCHEMA_SCENE_RES)))
        return;
    if (on && m_pairFunctor && clipping->profiler && clipping->hasPlane())
        clipping->profiler->create(m_pairFunctor);
    else
        ClipplaneUtils::clearProfileData(clipping);
    clipping->showProfile = on;
}

void ClipManipulator::showProfile() {
    if (auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING)) {
        showProfile(!clipping->showProfile);
        if (auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER))
            renderer->update();
    }
}

void ClipManipulator::updateProfile() {
    if (auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING))
        showProfile(clipping->showProfile);
}

bool ClipManipulator::isProfile() const {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    return clipping && clipping->hasPlane() && clipping->showProfile;
}

void ClipManipulator::flip() {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    if (!clipping || !clipping->hasPlane())
        return;
    Vec4& plane = clipping->planes.front();
    plane = PlaneUtils::fromPointNormal(PlaneUtils::pointOn(plane), -normalOf(plane));
    clipping->flipped = !clipping->flipped;
    if (auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER))
        renderer->update();
}

bool ClipManipulator::isFlipped() const {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    return clipping && clipping->flipped;
}

void ClipManipulator::cap() {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    if (!clipping)
        return;
    clipping->capped = !clipping->capped;
    if (auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER))
        renderer->update();
}

bool ClipManipulator::isCapped() const {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    return clipping && clipping->capped;
}

bool ClipManipulator::translate(const Vec3& translation) {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    Vec3 centre;
    float radius = 0.0f;
    if (!clipping || !clipping->hasPlane() ||
        !qrnglutils::BBoxUtils::getSphere(m_bounds, centre, radius))
        return false;
    const Vec4 candidate = transformPlane(translation, clipping->planes.front());
    // Never out of the model's bounding sphere: a refused step leaves the plane where it is.
    if (centre.distance(PlaneUtils::project(candidate, centre)) >= radius)
        return false;
    if (clipping->planeMatrices.empty())
        clipping->planeMatrices.push_back(MatrixUtils::identity());
    clipping->planeMatrices.front() = MatrixUtils::multiply(clipping->planeMatrices.front(),
                                                            MatrixUtils::translation(translation));
    clipping->planes.front() = candidate;
    if (auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER))
        renderer->update();
    return true;
}

void ClipManipulator::offsetSection(double distance, bool forward) {
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    if (!clipping || !clipping->hasPlane())
        return;
    const Vec3 normal = normalOf(clipping->planes.front()).normalized();
    translate(normal * static_cast<float>(forward ? distance : -distance));
}

bool ClipManipulator::setCursor() {
    if (m_type > SCClipping::ZX || !m_cursor)
        return false;
    m_cursor->show(m_cursor->get(static_cast<int>(m_type)));
    return true;
}

void ClipManipulator::reportOffset() const {
    if (!m_app)
        return;
    std::wstring text;
    if (ClipplaneUtils::getOffsetDist(component<SCClipping>(qrnsg::SCHEMA_CLIPPING),
                                      component<qrnsg::SCInfo>(qrnsg::SCHEMA_INFO), text, 2))
        m_app->showResult(text, true);
}

FrameStatus ClipManipulator::mouseButtonDown(FrameStatus status, unsigned int flags,
                                             MouseButton button, int x, int y) {
    m_lastX = x;
    m_lastY = y;
    m_moved = false;
    m_dragging = false;
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    m_profileWasOn = clipping && clipping->showProfile;
    status = IManipulator::mouseButtonDown(status, flags, button, x, y);
    if (status == CHANGED)
        return status;
    m_button = static_cast<int>(button);
    // A press on the grabbed plane is the plane's: the camera must not turn with it.
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    if (button == LEFT && clipping && clipping->hasPlane() && renderer && renderer->planePicked &&
        !m_bounds.isEmpty())
        return CHANGED;
    return status;
}

FrameStatus ClipManipulator::mouseButtonUp(FrameStatus status, unsigned int flags,
                                           MouseButton button, int x, int y) {
    status = IManipulator::mouseButtonUp(status, flags, button, x, y);
    if (status == CHANGED)
        return status;
    m_button = -1;
    const bool moved = m_moved;
    if (moved) {
        if (auto measure = component<SCMeasure>(qrnsg::SCHEMA_MEASURE))
            measure->clearAll();
        reportOffset();
    }
    if (m_profileWasOn)
        showProfile(true);
    m_moved = false;
    m_profileWasOn = false;
    return moved ? CHANGED : status;
}

bool ClipManipulator::hover(int x, int y) {
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    if (!renderer || !renderer->pickCanvas)
        return false;
    const bool before = renderer->planePicked;
    // Faces too: a cap in front of the plane's quad is its part's, not the plane's.
    PickingHelper::pick(
        renderer->pickCanvas,
        std::make_shared<EntityFilter>(1 | PickingHelper::TOOL_TYPE, EntityFilter::NEAREST),
        nullptr, 0, x, y, 4);
    if (renderer->planePicked == before)
        return false;
    // The plane's colour is an overlay's.
    renderer->markOverlayChange();
    return true;
}

FrameStatus ClipManipulator::mouseMotion(unsigned int flags, int x, int y) {
    if (IManipulator::mouseMotion(flags, x, y) == CHANGED && m_profileWasOn) {
        showProfile(true);
        m_profileWasOn = false;
    }
    m_moved = false;
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    if (!clipping || !clipping->hasPlane())
        return UNCHANGED;
    // No button held (a release an earlier tool took included): the pointer only rests.
    if (!(flags & (KEY_LBUTTON | KEY_MBUTTON | KEY_RBUTTON))) {
        m_button = -1;
        return hover(x, y) ? CHANGED : UNCHANGED;
    }
    if (m_button != LEFT)
        return UNCHANGED;
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    Vec3 centre;
    float radius = 0.0f;
    if (!renderer || !renderer->planePicked ||
        !qrnglutils::BBoxUtils::getSphere(m_bounds, centre, radius))
        return UNCHANGED;
    const Mat4 inverse =
        MatrixUtils::inverse(CameraHelper::getModelToScreen(renderer->camera), 0.0f);
    Vec3 origin0, direction0, origin1, direction1;
    createRay(m_lastX, m_lastY, inverse, origin0, direction0);
    createRay(x, y, inverse, origin1, direction1);
    // Both rays meet a plane through the centre that faces the first one; the move is the
    // part of the step between those points that lies along the clip plane's normal.
    const Vec4 aux = PlaneUtils::fromPointNormal(centre, -direction0);
    const qrnmath::Ray ray0(origin0, direction0), ray1(origin1, direction1);
    float t0 = 0.0f, t1 = 0.0f;
    // A move clears the measurements as it starts: they no longer measure what shows.
    if (!m_dragging) {
        m_dragging = true;
        if (auto measure = component<SCMeasure>(qrnsg::SCHEMA_MEASURE))
            measure->clearAll();
    }
    if (PlaneUtils::intersect(aux, ray0, t0) && PlaneUtils::intersect(aux, ray1, t1)) {
        const Vec3 normal = normalOf(clipping->planes.front()).normalized();
        const float s0 = (ray0.pointAt(t0) - centre).dot(normal);
        const float s1 = (ray1.pointAt(t1) - centre).dot(normal);
        translate(normal * (s1 - s0));
    }
    m_moved = true;
    m_lastX = x;
    m_lastY = y;
    return CHANGED;
}

FrameStatus ClipManipulator::keyDown(FrameStatus status, unsigned int key, unsigned int,
                                     unsigned int) {
    // Only the arrows belong to the plane, and not while the host keeps them.
    auto info = component<qrnsg::SCInfo>(qrnsg::SCHEMA_INFO);
    if (!arrow(key) || (info && info->arrowKeysReserved))
        return status;
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    Vec3 centre;
    float radius = 0.0f;
    if (!clipping || !clipping->hasPlane() || !renderer || !renderer->planePicked ||
        !qrnglutils::BBoxUtils::getSphere(m_bounds, centre, radius))
        return status;
    if (!m_moved) {
        if (auto measure = component<SCMeasure>(qrnsg::SCHEMA_MEASURE))
            measure->clearAll();
        m_moved = true;
        m_profileWasOn = clipping->showProfile;
        m_keyStep = radius * 0.01f;
    }
    if (key != KEY_UP && key != KEY_DOWN)
        return CHANGED;
    const float step = key == KEY_UP ? m_keyStep : -m_keyStep;
    Vec3 direction = normalOf(clipping->planes.front()).normalized();
    if (clipping->flipped)
        direction = -direction;
    // The default normal of type 0 points along -z: up moves the other way. Kept as it is.
    if (m_type == SCClipping::XY)
        direction[2] = -direction[2];
    translate(direction * step);
    return CHANGED;
}

FrameStatus ClipManipulator::keyUp(FrameStatus status, unsigned int key, unsigned int,
                                   unsigned int) {
    auto info = component<qrnsg::SCInfo>(qrnsg::SCHEMA_INFO);
    if (!arrow(key) || (info && info->arrowKeysReserved) || !m_moved)
        return status;
    reportOffset();
    if (m_profileWasOn) {
        if (auto measure = component<SCMeasure>(qrnsg::SCHEMA_MEASURE))
            measure->clearAll();
        showProfile(true);
    }
    m_moved = false;
    m_profileWasOn = false;
    return CHANGED;
}

FrameStatus ClipManipulator::mouseButtonDblClk(FrameStatus, unsigned int, MouseButton, int, int) {
    return UNCHANGED;
}

FrameStatus ClipManipulator::mouseWheel(unsigned int, int, float) {
    return UNCHANGED;
}

} // namespace qrngl
