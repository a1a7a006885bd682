#include "qrngl/interaction/EntityGeometry.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnmath/PlaneUtils.h"
#include "qrnsg/EntityNames.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsg/VisibilityFunctor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qrngl {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;
using qrnmath::Vec3;
using qrnsg::EntityNames;
using qrnsg::RTState;

namespace {

template <class T>
const T* at(const std::vector<T>& v, int i) {
    return i >= 0 && static_cast<std::size_t>(i) < v.size() ? &v[static_cast<std::size_t>(i)]
                                                            : nullptr;
}

// A primitive of the part with no primitive of its kind is -1.
int first(const std::vector<int>& ids) {
    return ids.empty() ? -1 : ids.front();
}

// Ray parameter where it crosses the triangle; false when it passes beside it.
bool crossing(const qrnmath::Ray& ray, const Vec3& a, const Vec3& b, const Vec3& c, float& t) {
    const Vec3 e1 = b - a, e2 = c - a;
    const Vec3 p = qrnmath::cross(ray.direction(), e2);
    const float det = e1.dot(p);
    if (std::abs(det) < 1e-12f)
        return false;
    const float inv = 1.0f / det;
    const Vec3 s = ray.origin() - a;
    const float u = s.dot(p) * inv;
    if (u < 0.0f || u > 1.0f)
        return false;
    const Vec3 q = qrnmath::cross(s, e1);
    const float v = ray.direction().dot(q) * inv;
    if (v < 0.0f || u + v > 1.0f)
        return false;
    t = e2.dot(q) * inv;
    return true;
}

RTState* stateOf(qrnsg::SCSceneRT& rt, int kind) {
    static const qrnsg::SCSceneRT::Kind kinds[3] = {
        qrnsg::SCSceneRT::MESHES, qrnsg::SCSceneRT::POLYLINES, qrnsg::SCSceneRT::POINTS};
    return &rt.of(kinds[kind]);
}

const std::vector<int>& idsOf(const qrnsg::SCSceneTopo::Node& node, int kind) {
    return kind == 0 ? node.meshIds : kind == 1 ? node.polylineIds : node.pointIds;
}

} // namespace

EntityGeometry::EntityGeometry(const std::shared_ptr<qrn::IDocument>& document)
    : m_scene(qrn::component<qrnsg::SCScene>(document, qrnsg::SCHEMA_SCENE)),
      m_resources(qrn::component<qrnsg::SCSceneRes>(document, qrnsg::SCHEMA_SCENE_RES)),
      m_rt(qrn::component<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT)),
      m_topology(qrn::component<qrnsg::SCSceneTopo>(document, qrnsg::SCHEMA_SCENE_TOPO)),
      m_clipping(qrn::component<SCClipping>(document, qrnsg::SCHEMA_CLIPPING)) {
    // The drawables live in the scene component or, when it holds none, in the resources.
    if (m_scene && (!m_scene->meshes.empty() || !m_scene->polylines.empty())) {
        m_meshes = &m_scene->meshes;
        m_polylines = &m_scene->polylines;
    } else if (m_resources) {
        m_meshes = &m_resources->meshes;
        m_polylines = &m_resources->polylines;
    }
}

bool EntityGeometry::place(const RTState& state, int id, Placed& placed) const {
    const qrnsg::TransformPair* pair = state.transforms.find(id);
    const unsigned char* flags = state.flags.find(id);
    if (!pair || !flags)
        return false;
    placed.drawable = pair->second;
    placed.transform = (*flags & RTState::HAS_TRANSFORM) ? pair->first : MatrixUtils::identity();
    return true;
}

namespace {

template <class Points>
void addPoints(const Points& points, const Mat4& m, qrnsg::BBox& box) {
    for (const Vec3& p : points)
        box.add(MatrixUtils::transformPoint(m, p));
}

} // namespace

void EntityGeometry::addNode(int node, qrnsg::BBox& box) const {
    const auto* n = at(m_topology->nodes, node);
    if (!n)
        return;
    Placed placed;
    for (int id : n->meshIds)
        if (m_meshes && place(m_rt->meshes, id, placed))
            if (const auto* mesh = at(*m_meshes, placed.drawable))
                addPoints(mesh->vertices, placed.transform, box);
    for (int id : n->polylineIds)
        if (m_polylines && place(m_rt->polylines, id, placed))
            if (const auto* line = at(*m_polylines, placed.drawable))
                addPoints(line->points, placed.transform, box);
    for (int id : n->pointIds)
        if (m_scene && place(m_rt->points, id, placed))
            if (const auto* set = at(m_scene->points, placed.drawable))
                addPoints(set->points, placed.transform, box);
}

const qrnsg::PartEntities::Face* EntityGeometry::faceOf(unsigned int face,
                                                        const int** meshId) const {
    *meshId = nullptr;
    if (!ready() || EntityNames::kindOf(face) != EntityNames::FACE)
        return nullptr;
    const EntityNames::Entity e = m_topology->resolve(face);
    const auto* node = at(m_topology->nodes, e.node);
    const auto* part = m_topology->partOf(e.node);
    const auto* f = part ? at(part->entities.faces, e.index) : nullptr;
    if (!node || !f)
        return nullptr;
    *meshId = at(node->meshIds, f->mesh);
    return f;
}

bool EntityGeometry::faceTriangles(unsigned int face, std::vector<Vec3>& corners) const {
    corners.clear();
    const int* id = nullptr;
    const auto* f = faceOf(face, &id);
    if (!f)
        return false;
    Placed placed;
    if (!m_meshes || !id || !place(m_rt->meshes, *id, placed))
        return false;
    const auto* mesh = at(*m_meshes, placed.drawable);
    if (!mesh)
        return false;
    const std::size_t end =
        std::min<std::size_t>(3u * (f->firstTriangle + f->triangleCount), mesh->indices.size());
    for (std::size_t i = 3u * f->firstTriangle; i < end; ++i) {
        const unsigned int v = mesh->indices[i];
        if (v >= mesh->vertices.size())
            return false;
        corners.push_back(MatrixUtils::transformPoint(placed.transform, mesh->vertices[v]));
    }
    corners.resize(corners.size() - corners.size() % 3);
    return !corners.empty();
}

bool EntityGeometry::edgePoints(unsigned int edge, std::vector<Vec3>& points,
                                Mat4* placement) const {
    points.clear();
    if (!ready() || EntityNames::kindOf(edge) != EntityNames::EDGE || !m_polylines)
        return false;
    const EntityNames::Entity e = m_topology->resolve(edge);
    const auto* node = at(m_topology->nodes, e.node);
    const auto* part = m_topology->partOf(e.node);
    const auto* entity = part ? at(part->entities.edges, e.index) : nullptr;
    Placed placed;
    if (!entity || !node || !place(m_rt->polylines, first(node->polylineIds), placed))
        return false;
    const auto* line = at(*m_polylines, placed.drawable);
    if (!line || entity->strip >= line->stripCount())
        return false;
    const std::size_t begin = line->strips[entity->strip];
    const std::size_t end = entity->strip + 1 < line->strips.size()
                                ? line->strips[entity->strip + 1]
                                : line->points.size();
    for (std::size_t i = begin; i < end && i < line->points.size(); ++i)
        points.push_back(MatrixUtils::transformPoint(placed.transform, line->points[i]));
    if (placement)
        *placement = placed.transform;
    return !points.empty();
}

bool EntityGeometry::vertexPoint(unsigned int vertex, Vec3& point) const {
    if (!ready() || EntityNames::kindOf(vertex) != EntityNames::POINT)
        return false;
    const EntityNames::Entity e = m_topology->resolve(vertex);
    const auto* node = at(m_topology->nodes, e.node);
    const auto* part = m_topology->partOf(e.node);
    const Vec3* p = part ? at(part->entities.vertices, e.index) : nullptr;
    if (!p || !node)
        return false;
    // The part's vertices are in its own frame, which any of its primitives places.
    Placed placed;
    if (!place(m_rt->points, first(node->pointIds), placed) &&
        !place(m_rt->meshes, first(node->meshIds), placed))
        placed.transform = MatrixUtils::identity();
    point = MatrixUtils::transformPoint(placed.transform, *p);
    return true;
}

namespace {

// How much a placement scales lengths (placements scale evenly).
float scaleOf(const Mat4& m) {
    return (MatrixUtils::transformVector(m, Vec3(1, 0, 0)).length() +
            MatrixUtils::transformVector(m, Vec3(0, 1, 0)).length() +
            MatrixUtils::transformVector(m, Vec3(0, 0, 1)).length()) /
           3.0f;
}

Vec3 direction(const Mat4& m, const Vec3& v) {
    const Vec3 d = MatrixUtils::transformVector(m, v);
    return d.lengthSquared() > 0.0f ? d.normalized() : v;
}

} // namespace

qrnsgutils::WorldEntity EntityGeometry::entity(unsigned int name) const {
    qrnsgutils::WorldEntity out;
    switch (EntityNames::kindOf(name)) {
    case EntityNames::FACE: {
        const int* id = nullptr;
        const auto* f = faceOf(name, &id);
        Placed placed;
        if (!f || !id || !place(m_rt->meshes, *id, placed) || !faceTriangles(name, out.triangles))
            break;
        out.kind = qrnsgutils::WorldEntity::FACE;
        out.surface = f->surface;
        const Mat4& m = placed.transform;
        const float scale = scaleOf(m);
        out.surface.origin = MatrixUtils::transformPoint(m, f->surface.origin);
        out.surface.radius *= scale;
        out.surface.minorRadius *= scale;
        Vec3 n;
        out.surface.axis =
            f->surface.type == qrnsg::PartEntities::Surface::PLANE && planeNormal(name, n)
                ? n
                : direction(m, f->surface.axis);
        break;
    }
    case EntityNames::EDGE: {
        Mat4 m;
        if (!edgePoints(name, out.polyline, &m))
            break;
        const EntityNames::Entity e = m_topology->resolve(name);
        const auto& curve =
            m_topology->partOf(e.node)->entities.edges[static_cast<std::size_t>(e.index)].curve;
        out.kind = qrnsgutils::WorldEntity::EDGE;
        out.curve = curve;
        const float scale = scaleOf(m);
        out.curve.origin = MatrixUtils::transformPoint(m, curve.origin);
        out.curve.axis = direction(m, curve.axis);
        out.curve.radius *= scale;
        out.curve.length *= scale;
        break;
    }
    case EntityNames::POINT:
        if (vertexPoint(name, out.point))
            out.kind = qrnsgutils::WorldEntity::POINT;
        break;
    default:
        break;
    }
    return out;
}

bool EntityGeometry::pointOn(unsigned int name, const qrnmath::Ray& ray, Vec3& point,
                             Vec3& normal) const {
    normal = -ray.direction();
    switch (EntityNames::kindOf(name)) {
    case EntityNames::FACE: {
        float t = 0.0f;
        std::vector<Vec3> c;
        if (!intersect(name, ray, t) || !faceTriangles(name, c))
            return false;
        point = ray.pointAt(t);
        // The normal of the triangle the point lies nearest, turned to the viewer.
        float nearest = std::numeric_limits<float>::max();
        for (std::size_t i = 0; i < c.size(); i += 3) {
            const Vec3 n = qrnmath::cross(c[i + 1] - c[i], c[i + 2] - c[i]);
            if (n.lengthSquared() <= 0.0f)
                continue;
            const float d = point.distance((c[i] + c[i + 1] + c[i + 2]) / 3.0f);
            if (d < nearest) {
                nearest = d;
                normal = n.normalized();
            }
        }
        if (normal.dot(ray.direction()) > 0.0f)
            normal = -normal;
        return true;
    }
    case EntityNames::EDGE: {
        std::vector<Vec3> p;
        if (!edgePoints(name, p))
            return false;
        qrnsgutils::WorldEntity line, onRay;
        line.kind = onRay.kind = qrnsgutils::WorldEntity::EDGE;
        line.polyline = p;
        // The stretch of the ray that passes the edge stands in for it.
        float reach = 0.0f;
        for (const Vec3& q : p)
            reach = std::max(reach, 2.0f * q.distance(ray.origin()));
        onRay.polyline = {ray.origin(), ray.pointAt(reach)};
        const auto r = qrnsgutils::EntityMeasure::distance(line, onRay);
        if (!r.valid)
            return false;
        point = r.a;
        return true;
    }
    case EntityNames::POINT:
        return vertexPoint(name, point);
    default:
        return false;
    }
}

bool EntityGeometry::pointUnder(const std::shared_ptr<IPickCanvas>& canvas,
                                const std::shared_ptr<Camera>& camera, int x, int y,
                                unsigned short mask, int size, unsigned int& name, Vec3& point,
                                Vec3& normal) const {
    name = 0;
    if (!canvas || !camera || !ready())
        return false;
    for (unsigned short kind : {4, 2, 1})
        if ((mask & kind) && (name = EntityFilter::nearest(canvas, kind, x, y, size)) != 0)
            break;
    if (!name)
        return false;
    const qrnmath::Ray ray = rayAt(camera, x, y);
    if (EntityNames::kindOf(name) != EntityNames::PART)
        return pointOn(name, ray, point, normal);
    float t = 0.0f;
    if (!m_clipping || !m_clipping->hasPlane() ||
        !qrnmath::PlaneUtils::intersect(m_clipping->planes.front(), ray, t))
        return false;
    point = ray.pointAt(t);
    normal = qrnmath::PlaneUtils::normal(m_clipping->planes.front()).normalized();
    if (normal.dot(ray.direction()) > 0.0f)
        normal = -normal;
    return true;
}

qrnmath::Ray EntityGeometry::rayAt(const std::shared_ptr<Camera>& camera, int x, int y) {
    const Mat4 inverse = MatrixUtils::inverse(CameraHelper::getModelToScreen(camera), 1e-11f);
    const Vec3 nearPoint = MatrixUtils::transformPoint(
        inverse, Vec3(static_cast<float>(x), static_cast<float>(y), 0.0f));
    const Vec3 farPoint = MatrixUtils::transformPoint(
        inverse, Vec3(static_cast<float>(x), static_cast<float>(y), 1.0f));
    return qrnmath::Ray(nearPoint, (farPoint - nearPoint).normalized());
}

void EntityGeometry::addEntity(unsigned int name, qrnsg::BBox& box) const {
    const EntityNames::Entity e = m_topology->resolve(name);
    const auto* polylines = m_polylines;
    Placed placed;
    switch (e.kind) {
    case EntityNames::PART: {
        const std::vector<bool> nodes = partsOf({name});
        for (std::size_t i = 0; i < nodes.size(); ++i)
            if (nodes[i])
                addNode(static_cast<int>(i), box);
        break;
    }
    case EntityNames::FACE: {
        std::vector<Vec3> corners;
        if (faceTriangles(name, corners))
            addPoints(corners, MatrixUtils::identity(), box);
        break;
    }
    case EntityNames::EDGE: {
        std::vector<Vec3> points;
        if (edgePoints(name, points))
            addPoints(points, MatrixUtils::identity(), box);
        break;
    }
    case EntityNames::POINT: {
        Vec3 p;
        if (vertexPoint(name, p))
            box.add(p);
        break;
    }
    case EntityNames::EDGE_LIKE:
        if (polylines && place(m_rt->polylines, e.index, placed))
            if (const auto* line = at(*polylines, placed.drawable))
                addPoints(line->points, placed.transform, box);
        break;
    default:
        break;
    }
}

qrnsg::BBox EntityGeometry::bounds(const std::vector<unsigned int>& names) const {
    qrnsg::BBox box;
    if (ready())
        for (unsigned int name : names)
            addEntity(name, box);
    return box;
}

bool EntityGeometry::planeNormal(unsigned int face, Vec3& normal) const {
    const int* id = nullptr;
    const auto* f = faceOf(face, &id);
    if (!f || f->surface.type != qrnsg::PartEntities::Surface::PLANE)
        return false;
    Placed placed;
    if (!id || !place(m_rt->meshes, *id, placed))
        placed.transform = MatrixUtils::identity();
    // Normals go by the inverse transpose, so that a scaled placement keeps them square.
    Mat4 inverse;
    if (!MatrixUtils::invert(placed.transform, inverse))
        return false;
    const Vec3 n = MatrixUtils::transformVector(MatrixUtils::transpose(inverse), f->surface.axis);
    if (!(n.lengthSquared() > 0.0f) || !std::isfinite(n.lengthSquared()))
        return false;
    normal = n.normalized();
    return true;
}

bool EntityGeometry::intersect(unsigned int face, const qrnmath::Ray& ray, float& t) const {
    std::vector<Vec3> c;
    if (!faceTriangles(face, c))
        return false;
    float best = std::numeric_limits<float>::max();
    bool found = false;
    for (std::size_t i = 0; i < c.size(); i += 3) {
        float s = 0.0f;
        if (crossing(ray, c[i], c[i + 1], c[i + 2], s) && s < best) {
            best = s;
            found = true;
        }
    }
    if (!found) {
        // Beside the face: the plane of the triangle nearest the ray.
        float nearest = std::numeric_limits<float>::max();
        for (std::size_t i = 0; i < c.size(); i += 3) {
            qrnmath::Vec4 plane;
            float s = 0.0f;
            if (!qrnmath::PlaneUtils::fromPoints(c[i], c[i + 1], c[i + 2], plane) ||
                !qrnmath::PlaneUtils::intersect(plane, ray, s))
                continue;
            const Vec3 centroid = (c[i] + c[i + 1] + c[i + 2]) / 3.0f;
            const float d = ray.pointAt(s).distance(centroid);
            if (d < nearest) {
                nearest = d;
                best = s;
                found = true;
            }
        }
    }
    if (found)
        t = best;
    return found;
}

std::vector<bool> EntityGeometry::partsOf(const std::vector<unsigned int>& names) const {
    if (!ready())
        return {};
    std::vector<bool> marked(m_topology->nodes.size(), false);
    for (unsigned int name : names) {
        const EntityNames::Entity e = m_topology->resolve(name);
        if (e.kind != EntityNames::EDGE_LIKE && at(m_topology->nodes, e.node))
            marked[static_cast<std::size_t>(e.node)] = true;
    }
    // Parents come before their children.
    for (std::size_t i = 0; i < marked.size(); ++i) {
        const int parent = m_topology->nodes[i].parent;
        if (!marked[i] && parent >= 0 && static_cast<std::size_t>(parent) < i &&
            marked[static_cast<std::size_t>(parent)])
            marked[i] = true;
    }
    return marked;
}

std::vector<bool> EntityGeometry::allParts() const {
    if (!ready())
        return {};
    std::vector<bool> marked(m_topology->nodes.size(), false);
    for (std::size_t i = 0; i < marked.size(); ++i)
        marked[i] = m_topology->nodes[i].part >= 0;
    return marked;
}

bool EntityGeometry::setNodeShown(int node, bool shown) const {
    const auto* n = at(m_topology->nodes, node);
    if (!n || n->part < 0)
        return false;
    bool changed = false;
    for (int kind = 0; kind < 3; ++kind)
        for (int id : idsOf(*n, kind))
            changed = stateOf(*m_rt, kind)->setVisible(id, shown) || changed;
    return changed;
}

bool EntityGeometry::setShown(const std::vector<bool>& nodes, bool shown) const {
    if (!ready())
        return false;
    bool changed = false;
    for (std::size_t i = 0; i < nodes.size(); ++i)
        if (nodes[i])
            changed = setNodeShown(static_cast<int>(i), shown) || changed;
    return changed;
}

bool EntityGeometry::showOnly(const std::vector<bool>& nodes) const {
    if (!ready())
        return false;
    bool changed = false;
    for (std::size_t i = 0; i < m_topology->nodes.size(); ++i)
        changed = setNodeShown(static_cast<int>(i), i < nodes.size() && nodes[i]) || changed;
    return changed;
}

PartVisibility::PartVisibility(const std::shared_ptr<qrn::IDocument>& document)
    : m_document(document) {
    auto rt = qrn::component<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(document, qrnsg::SCHEMA_SCENE_TOPO);
    if (!rt || !topology)
        return;
    for (const auto& node : topology->nodes)
        if (node.part >= 0)
            for (int kind = 0; kind < 3; ++kind)
                for (int id : idsOf(node, kind))
                    if (const unsigned char* flags = stateOf(*rt, kind)->flags.find(id))
                        m_entries.push_back({kind, id, (*flags & RTState::VISIBLE) != 0});
}

void PartVisibility::restore() {
    auto document = m_document.lock();
    auto rt = qrn::component<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT);
    if (!rt)
        return;
    for (const Entry& e : m_entries)
        stateOf(*rt, e.kind)->setVisible(e.id, e.shown);
    visibilityChanged(document);
}

void visibilityChanged(const std::shared_ptr<qrn::IDocument>& document) {
    auto renderer = qrn::component<SCRenderer>(document, qrnsg::SCHEMA_RENDERER);
    if (!renderer)
        return;
    if (renderer->pickCanvas)
        renderer->pickCanvas->Invalidate();
    if (!renderer->canvases.empty())
        if (auto canvas = renderer->canvases.front().lock())
            canvas->Invalidate();
    renderer->update();
}

} // namespace qrngl
