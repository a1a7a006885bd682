#include "qrngl/picking/SelectionRenderer.h"

#include "qrngl/GL.h"
#include "qrngl/SCStripRenderer.h"
#include "qrngl/frame/PartStencil.h"
#include "qrngl/overlays/PixelSpace.h"
#include "qrnglutils/ClipplaneUtils.h"
#include "qrnglutils/ScopedTransform.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/InstanceWalker.h"
#include <algorithm>
#include <cmath>

namespace qrngl {

using qrnsg::EntityNames;
using qrnsgutils::InstanceWalker;

namespace {
const float kSelected[3] = {0.9f, 0.1f, 0.8f}; // apart from the usual part colours
const float kHovered[3] = {0.2f, 0.7f, 1.0f};
} // namespace

struct SelectionRenderer::Components {
    std::shared_ptr<qrnsg::SCSceneTopo> topology;
    std::shared_ptr<qrnsg::SCSceneRT> rt;
    std::shared_ptr<SCStripRenderer> strips;
    std::shared_ptr<qrnsg::SCScene> scene;
    std::shared_ptr<qrnsg::SCPmi> pmi;
    bool cullClosed = false;
    bool stencil = false; // the frame buffer has eight stencil bits

    GLenum frontFace = GL_CCW;
};

SelectionRenderer::SelectionRenderer(std::shared_ptr<qrn::IDocument> document,
                                     std::shared_ptr<SelectionSet> set)
    : m_document(std::move(document)), m_set(std::move(set)) {}

void SelectionRenderer::render() const {
    if (!m_document || !m_set || (m_set->selected().empty() && m_set->hovered() == 0))
        return;
    Components c{
        std::dynamic_pointer_cast<qrnsg::SCSceneTopo>(
            m_document->getSchema(qrnsg::SCHEMA_SCENE_TOPO)),
        std::dynamic_pointer_cast<qrnsg::SCSceneRT>(m_document->getSchema(qrnsg::SCHEMA_SCENE_RT)),
        std::dynamic_pointer_cast<SCStripRenderer>(
            m_document->getSchema(qrnsg::SCHEMA_STRIP_RENDERER)),
        std::dynamic_pointer_cast<qrnsg::SCScene>(m_document->getSchema(qrnsg::SCHEMA_SCENE)),
        std::dynamic_pointer_cast<qrnsg::SCPmi>(m_document->getSchema(qrnsg::SCHEMA_PMI))};
    if (!c.topology || !c.rt || !c.strips)
        return;
    c.cullClosed = !glIsEnabled(GL_CULL_FACE) && !qrnglutils::ClipplaneUtils::anyClipPlaneOn();
    GLint frontFace = GL_CCW, stencilBits = 0;
    glGetIntegerv(GL_FRONT_FACE, &frontFace);
    glGetIntegerv(GL_STENCIL_BITS, &stencilBits);
    c.stencil = stencilBits >= 8;
    c.frontFace = static_cast<GLenum>(frontFace);
    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_LINE_BIT | GL_POINT_BIT | GL_POLYGON_BIT |
                 GL_DEPTH_BUFFER_BIT | GL_COLOR_BUFFER_BIT);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    // Tints lie on the faces they mark, edges and dots on top of them.
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(-1.0f, -1.0f);
    glLineWidth(3.0f);
    for (unsigned int name : m_set->selected())
        draw(c, name, kSelected);
    // What is selected already shows as such.
    if (m_set->hovered() != 0 && !m_set->isSelected(m_set->hovered()))
        draw(c, m_set->hovered(), kHovered);
    glPopAttrib();
}

void SelectionRenderer::screenBox(const Components& c, const std::vector<int>& meshIds,
                                  const GLint viewport[4], GLint rect[4]) const {
    // The window rectangle around the part's clusters (meshes without them leave the whole
    // viewport); the whole viewport too where a corner lies behind the eye.
    qrnmath::Mat4 projection, view;
    glGetFloatv(GL_PROJECTION_MATRIX, projection.data());
    glGetFloatv(GL_MODELVIEW_MATRIX, view.data());
    float x0 = 1e30f, y0 = 1e30f, x1 = -1e30f, y1 = -1e30f;
    InstanceWalker::Instance instance;
    for (int id : meshIds) {
        if (!c.scene ||
            !InstanceWalker::visible(c.rt->meshes, id, c.scene->meshes.size(), instance))
            continue;
        const auto& mesh = c.scene->meshes[static_cast<std::size_t>(instance.drawable)];
        if (mesh.clusters.empty())
            return;
        qrnsg::BBox box;
        for (const auto& cluster : mesh.clusters)
            for (int k = 0; k < 8; ++k)
                box.add(qrnmath::Vec3(cluster.centre[0] + (k & 1 ? 1 : -1) * cluster.radius,
                                      cluster.centre[1] + (k & 2 ? 1 : -1) * cluster.radius,
                                      cluster.centre[2] + (k & 4 ? 1 : -1) * cluster.radius));
        qrnmath::Mat4 place = qrnmath::MatrixUtils::multiply(projection, view);
        if (instance.transform)
            place = qrnmath::MatrixUtils::multiply(place, *instance.transform);
        for (int k = 0; k < 8; ++k) {
            const qrnmath::Vec4 corner(k & 1 ? box.max()[0] : box.min()[0],
                                       k & 2 ? box.max()[1] : box.min()[1],
                                       k & 4 ? box.max()[2] : box.min()[2], 1.0f);
            const qrnmath::Vec4 clip = qrnmath::MatrixUtils::transform(place, corner);
            if (clip[3] <= 0.0f)
                return;
            const float x = (clip[0] / clip[3] + 1.0f) * 0.5f * static_cast<float>(viewport[2]);
            const float y = (clip[1] / clip[3] + 1.0f) * 0.5f * static_cast<float>(viewport[3]);
            x0 = std::min(x0, x), y0 = std::min(y0, y), x1 = std::max(x1, x), y1 = std::max(y1, y);
        }
    }
    if (x0 > x1)
        return;
    rect[0] = std::max(0, static_cast<GLint>(std::floor(x0)) - 1);
    rect[1] = std::max(0, static_cast<GLint>(std::floor(y0)) - 1);
    rect[2] = std::min(viewport[2], static_cast<GLint>(std::ceil(x1)) + 1);
    rect[3] = std::min(viewport[3], static_cast<GLint>(std::ceil(y1)) + 1);
}

bool SelectionRenderer::tintMarked(const Components& c, const std::vector<int>& meshIds) const {
    // The samples where the part is the nearest surface, when the frame marked them as its
    // alone: one rectangle in place of all its triangles.
    const auto& values = c.strips->partStencil;
    int value = -1;
    for (int id : meshIds) {
        if (id < 0 || static_cast<std::size_t>(id) >= values.size() ||
            (value >= 0 && values[static_cast<std::size_t>(id)] != value))
            return false;
        value = values[static_cast<std::size_t>(id)];
    }
    if (!c.stencil || !c.strips->stencilHoldsParts || value <= PartStencil::NONE ||
        value >= PartStencil::SHARED)
        return false;
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    GLint rect[4] = {0, 0, viewport[2], viewport[3]};
    screenBox(c, meshIds, viewport, rect);
    glPushAttrib(GL_STENCIL_BUFFER_BIT);
    glEnable(GL_STENCIL_TEST);
    glStencilFunc(GL_EQUAL, value, 0xFF);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    {
        PixelSpace pixels;
        glRecti(rect[0], rect[1], rect[2], rect[3]);
    }
    glPopAttrib();
    glEnable(GL_BLEND);
    return true;
}

void SelectionRenderer::drawPmi(const Components& c, int primitiveId, const float colour[3]) const {
    // A PMI item whole, wherever it was picked, and the faces it is about.
    const int item = c.pmi ? c.pmi->itemOf(primitiveId) : -1;
    if (item < 0)
        return;
    const auto& it = c.pmi->items[static_cast<std::size_t>(item)];
    InstanceWalker::Instance instance;
    glColor4f(colour[0], colour[1], colour[2], 1.0f);
    for (int id : it.polylineIds)
        if (InstanceWalker::visible(c.rt->polylines, id, c.strips->polylines.size(), instance)) {
            qrnglutils::ScopedTransform place(instance);
            c.strips->polylines[static_cast<std::size_t>(instance.drawable)]->render();
        }
    for (int id : it.meshIds)
        if (InstanceWalker::visible(c.rt->meshes, id, c.strips->meshes.size(), instance)) {
            qrnglutils::ScopedTransform place(instance);
            c.strips->meshes[static_cast<std::size_t>(instance.drawable)]->render();
        }
    for (unsigned int face : it.faces)
        draw(c, face, colour);
}

void SelectionRenderer::draw(const Components& c, unsigned int name, const float colour[3]) const {
    const auto& topology = c.topology;
    const auto& rt = c.rt;
    const auto& strips = c.strips;
    const EntityNames::Entity entity = topology->resolve(name);
    if (entity.kind == EntityNames::EDGE_LIKE) {
        drawPmi(c, entity.index, colour);
        return;
    }
    const auto* part = topology->partOf(entity.node);
    if (!part)
        return;
    const auto& node = topology->nodes[static_cast<std::size_t>(entity.node)];
    InstanceWalker::Instance instance;
    auto shown = [&](const qrnsg::RTState& state, const std::vector<int>& ids, std::size_t at,
                     std::size_t drawables) {
        return at < ids.size() && InstanceWalker::visible(state, ids[at], drawables, instance);
    };
    using Range = IStripEntry::Range;
    switch (entity.kind) {
    case EntityNames::PART: {
        glColor4f(colour[0], colour[1], colour[2], 0.45f);
        const bool tinted = tintMarked(c, node.meshIds);
        for (std::size_t m = 0; m < node.meshIds.size() && !tinted; ++m)
            if (shown(rt->meshes, node.meshIds, m, strips->meshes.size())) {
                // The tint lies on the faces seen: a closed solid's back faces are not, unless
                // cut open. Large parts highlight in half the time.
                const auto drawable = static_cast<std::size_t>(instance.drawable);
                if (c.cullClosed && c.scene && drawable < c.scene->meshes.size() &&
                    c.scene->meshes[drawable].closed) {
                    glEnable(GL_CULL_FACE);
                    glCullFace(GL_BACK);
                    glFrontFace(qrnglutils::ScopedTransform::mirrors(instance.transform)
                                    ? c.frontFace == GL_CCW ? GL_CW : GL_CCW
                                    : c.frontFace);
                } else {
                    glDisable(GL_CULL_FACE);
                }
                qrnglutils::ScopedTransform place(instance);
                strips->meshes[drawable]->render();
            }
        glDisable(GL_CULL_FACE);
        glFrontFace(c.frontFace);
        glColor4f(colour[0], colour[1], colour[2], 1.0f);
        if (shown(rt->polylines, node.polylineIds, 0, strips->polylines.size())) {
            qrnglutils::ScopedTransform place(instance);
            strips->polylines[static_cast<std::size_t>(instance.drawable)]->render();
        }
        break;
    }
    case EntityNames::FACE: {
        const auto& face = part->entities.faces[static_cast<std::size_t>(entity.index)];
        if (!shown(rt->meshes, node.meshIds, static_cast<std::size_t>(face.mesh),
                   strips->meshes.size()))
            break;
        glColor4f(colour[0], colour[1], colour[2], 0.6f);
        qrnglutils::ScopedTransform place(instance);
        strips->meshes[static_cast<std::size_t>(instance.drawable)]->renderRanges(
            {Range{face.firstTriangle, face.triangleCount}}, nullptr);
        break;
    }
    case EntityNames::EDGE: {
        if (!shown(rt->polylines, node.polylineIds, 0, strips->polylines.size()))
            break;
        glColor4f(colour[0], colour[1], colour[2], 1.0f);
        qrnglutils::ScopedTransform place(instance);
        strips->polylines[static_cast<std::size_t>(instance.drawable)]->renderRanges(
            {Range{part->entities.edges[static_cast<std::size_t>(entity.index)].strip, 1}},
            nullptr);
        break;
    }
    case EntityNames::POINT: {
        if (!shown(rt->points, node.pointIds, 0, strips->points.size()))
            break;
        glColor4f(colour[0], colour[1], colour[2], 1.0f);
        qrnglutils::ScopedTransform place(instance);
        glPointSize(9.0f);
        // The entry sets its own size first; draw the dot at the highlight's size.
        strips->points[static_cast<std::size_t>(instance.drawable)]->renderRanges(
            {Range{static_cast<unsigned int>(entity.index), 1}},
            [](std::size_t) { glPointSize(9.0f); });
        break;
    }
    default:
        break;
    }
}

} // namespace qrngl
