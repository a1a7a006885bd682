#include "qrngl/section/PreClipRenderer.h"

#include "qrngl/FilterResult.h"
#include "qrngl/GL.h"
#include "qrngl/MMaterialRenderer.h"
#include "qrngl/NamesInitializer.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCListRenderer.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrnglutils/ScopedTransform.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/EntityNames.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/InstanceWalker.h"

#include <algorithm>
#include <map>

namespace qrngl {

using qrnmath::Vec3;
using qrnmath::Vec4;
using qrnsgutils::InstanceWalker;

namespace {

// What a capped frame reads, fetched anew each time.
struct Sources {
    std::shared_ptr<qrnsg::SCSceneRT> rt;
    std::shared_ptr<SCRenderer> renderer;
    std::shared_ptr<SCClipping> clipping;
    std::shared_ptr<SCStripRenderer> strips;
    std::shared_ptr<SCListRenderer> lists;
    std::shared_ptr<qrnsg::SCScene> scene;
    std::shared_ptr<qrnsg::SCSceneRes> resources;
    std::shared_ptr<qrnsg::SCSceneTopo> topology;
    const std::vector<qrnsg::Mesh>* meshes = nullptr; // the geometry drawables index
    std::size_t drawables = 0;

    bool fetch(const std::shared_ptr<qrn::IDocument>& document) {
        rt = qrn::component<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT);
        renderer = qrn::component<SCRenderer>(document, qrnsg::SCHEMA_RENDERER);
        clipping = qrn::component<SCClipping>(document, qrnsg::SCHEMA_CLIPPING);
        strips = qrn::component<SCStripRenderer>(document, qrnsg::SCHEMA_STRIP_RENDERER);
        lists = qrn::component<SCListRenderer>(document, qrnsg::SCHEMA_LIST_RENDERER);
        if (!qrn::component<qrnsg::SCPmi>(document, qrnsg::SCHEMA_PMI) || !rt || !renderer ||
            !clipping || !clipping->hasPlane() || (!strips && !lists))
            return false;
        // The strip renderer first; the list renderer only without it.
        if (strips)
            lists.reset();
        drawables = strips ? strips->meshes.size() : lists->size();
        scene = qrn::component<qrnsg::SCScene>(document, qrnsg::SCHEMA_SCENE);
        resources = qrn::component<qrnsg::SCSceneRes>(document, qrnsg::SCHEMA_SCENE_RES);
        topology = qrn::component<qrnsg::SCSceneTopo>(document, qrnsg::SCHEMA_SCENE_TOPO);
        if (scene && !scene->meshes.empty())
            meshes = &scene->meshes;
        else if (resources && !resources->meshes.empty())
            meshes = &resources->meshes;
        return true;
    }
    const qrnsg::Mesh* mesh(int drawable) const {
        return meshes && static_cast<std::size_t>(drawable) < meshes->size()
                   ? &(*meshes)[static_cast<std::size_t>(drawable)]
                   : nullptr;
    }
    void draw(const InstanceWalker::Instance& instance) const {
        qrnglutils::ScopedTransform place(instance);
        if (strips) {
            strips->meshes[static_cast<std::size_t>(instance.drawable)]->render();
        } else {
            lists->begin(instance.drawable);
            lists->render(instance.drawable);
            lists->end(instance.drawable);
        }
    }
    int node(int id) const {
        const auto* owner = topology ? topology->owner(id) : nullptr;
        return owner ? owner->node : -1;
    }
};

// The shown instances the plane passes through: those wholly on one side add nothing to the
// count (clipped away, or a front face for every back face).
struct Cut {
    std::vector<InstanceWalker::Instance> closed;
    std::vector<InstanceWalker::Instance> open;
};

void glPlane(const Vec4& plane) {
    const GLdouble equation[4] = {plane[0], plane[1], plane[2], plane[3]};
    glClipPlane(GL_CLIP_PLANE0, equation);
    glEnable(GL_CLIP_PLANE0);
}

// A diagonal hatch, one line every eight pixels.
const GLubyte* hatchPattern() {
    static GLubyte pattern[128];
    static bool made = false;
    if (!made) {
        for (int row = 0; row < 32; ++row)
            for (int col = 0; col < 32; ++col)
                if ((row + col) % 8 == 0)
                    pattern[row * 4 + col / 8] |= static_cast<GLubyte>(0x80 >> (col % 8));
        made = true;
    }
    return pattern;
}

// The window rectangle a box covers in the current matrices, within the viewport; the whole
// viewport when part of the box lies behind the eye.
void screenRect(const qrnsg::BBox& box, GLint rect[4]) {
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    GLdouble model[16], projection[16];
    glGetDoublev(GL_MODELVIEW_MATRIX, model);
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    double lo[2] = {1e300, 1e300}, hi[2] = {-1e300, -1e300};
    for (int c = 0; c < 8; ++c) {
        const double p[3] = {(c & 1) ? box.max()[0] : box.min()[0],
                             (c & 2) ? box.max()[1] : box.min()[1],
                             (c & 4) ? box.max()[2] : box.min()[2]};
        double clip[4] = {0, 0, 0, 0}, eye[4] = {0, 0, 0, 0};
        for (int r = 0; r < 4; ++r)
            eye[r] = model[r] * p[0] + model[4 + r] * p[1] + model[8 + r] * p[2] + model[12 + r];
        for (int r = 0; r < 4; ++r)
            clip[r] = projection[r] * eye[0] + projection[4 + r] * eye[1] +
                      projection[8 + r] * eye[2] + projection[12 + r] * eye[3];
        if (clip[3] <= 1e-9) {
            std::copy(viewport, viewport + 4, rect);
            return;
        }
        for (int k = 0; k < 2; ++k) {
            const double w = viewport[k] + (clip[k] / clip[3] * 0.5 + 0.5) * viewport[2 + k];
            lo[k] = std::min(lo[k], w);
            hi[k] = std::max(hi[k], w);
        }
    }
    // Within the viewport whatever the corners gave (a box far off screen, or none at all),
    // so that the casts stay in range.
    for (int k = 0; k < 2; ++k) {
        const double first = viewport[k], last = first + viewport[2 + k];
        double from = lo[k] - 2.0, to = hi[k] + 2.0;
        from = from >= first ? std::min(from, last) : first;
        to = to <= last ? std::max(to, from) : last;
        rect[k] = static_cast<GLint>(from);
        rect[2 + k] = static_cast<GLint>(to) - rect[k];
    }
}

} // namespace

PreClipRenderer::PreClipRenderer(std::shared_ptr<qrn::IDocument> document)
    : m_document(std::move(document)) {}

PreClipRenderer::~PreClipRenderer() = default;

void PreClipRenderer::setPlane(std::shared_ptr<IRenderer> capQuad,
                               std::shared_ptr<qrnsg::IPairFunctor> visibility) {
    m_capQuad = std::move(capQuad);
    m_visibility = std::move(visibility);
}

const qrnsg::BBox& PreClipRenderer::meshBox(const void* meshes, int drawable) const {
    const auto& all = *static_cast<const std::vector<qrnsg::Mesh>*>(meshes);
    if (m_boxesOf != meshes || m_boxes.size() != all.size()) {
        m_boxesOf = meshes;
        m_boxes.assign(all.size(), qrnsg::BBox());
    }
    // Made when first needed; a mesh without vertices keeps an empty box.
    const auto i = static_cast<std::size_t>(drawable);
    if (m_boxes[i].isEmpty())
        m_boxes[i] = all[i].bbox();
    return m_boxes[i];
}

namespace {

// Which side of the plane a placed box lies: -1 wholly behind, 1 wholly in front, 0 across.
int side(const qrnsg::BBox& box, const qrnmath::Mat4* transform, const Vec4& plane) {
    if (box.isEmpty())
        return -1;
    bool below = false, above = false;
    for (int c = 0; c < 8; ++c) {
        Vec3 p((c & 1) ? box.max()[0] : box.min()[0], (c & 2) ? box.max()[1] : box.min()[1],
               (c & 4) ? box.max()[2] : box.min()[2]);
        if (transform)
            p = qrnmath::MatrixUtils::transformPoint(*transform, p);
        const float d = plane[0] * p[0] + plane[1] * p[1] + plane[2] * p[2] + plane[3];
        below = below || d <= 0.0f;
        above = above || d >= 0.0f;
    }
    return below && above ? 0 : above ? 1 : -1;
}

} // namespace

void PreClipRenderer::drawCaps(const NamesInitializer* names) const {
    Sources sources;
    if (!m_capQuad || !sources.fetch(m_document.lock()) || !sources.clipping->capped)
        return;
    const SCClipping& clipping = *sources.clipping;
    const Vec4& plane = clipping.planes.front();
    Cut cut;
    InstanceWalker::walk(
        sources.rt->meshes, sources.drawables, [&](const InstanceWalker::Instance& instance) {
            if (m_visibility) {
                unsigned char flags = instance.flags;
                m_visibility->apply(instance.id, *sources.rt->meshes.transforms.find(instance.id),
                                    flags);
                if (!(flags & qrnsg::RTState::VISIBLE))
                    return;
            }
            const qrnsg::Mesh* mesh = sources.mesh(instance.drawable);
            // Without the geometry at hand, the instance counts as cut and closed.
            if (mesh &&
                side(meshBox(sources.meshes, instance.drawable), instance.transform, plane) != 0)
                return;
            (mesh && !mesh->closed ? cut.open : cut.closed).push_back(instance);
        });
    if (cut.closed.empty())
        return;
    const qrnmath::Mat4 planeMatrix = clipping.planeMatrices.empty()
                                          ? qrnmath::MatrixUtils::identity()
                                          : clipping.planeMatrices.front();
    const auto& settings = sources.renderer->clip;

    // One stencil count and one quad: what the instances leave counted is capped.
    auto capOnce = [&](const std::vector<InstanceWalker::Instance>& instances,
                       const std::function<void()>& paint) {
        glClearStencil(0);
        glClear(GL_STENCIL_BUFFER_BIT);
        glDisable(GL_DEPTH_TEST);
        glEnable(GL_STENCIL_TEST);
        glEnable(GL_CULL_FACE);
        // Counting only: the scene drawn next paints these pixels.
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        // Wrapping counts: inside a closed solid the count is one and outside zero whatever
        // the number of layers, even in the two stencil bits some window contexts have.
        const bool wrap = GLEW_VERSION_1_4 != 0;
        glCullFace(GL_FRONT);
        glStencilFunc(GL_ALWAYS, 0, 0);
        glStencilOp(GL_KEEP, GL_KEEP, wrap ? GL_INCR_WRAP : GL_INCR);
        for (const auto& instance : instances)
            sources.draw(instance);
        glCullFace(GL_BACK);
        glStencilOp(GL_KEEP, GL_KEEP, wrap ? GL_DECR_WRAP : GL_DECR);
        for (const auto& instance : instances)
            sources.draw(instance);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glEnable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_CLIP_PLANE0);
        glStencilFunc(GL_NOTEQUAL, 0, 0xFFFFFFFFu);
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
        glPushMatrix();
        glMultMatrixf(planeMatrix.data());
        paint();
        m_capQuad->render();
        if (!names && clipping.hatched) {
            // Lines across the cut, as drawings show cut material.
            glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_DEPTH_BUFFER_BIT);
            glDisable(GL_LIGHTING);
            glEnable(GL_POLYGON_STIPPLE);
            glPolygonStipple(hatchPattern());
            glDepthFunc(GL_LEQUAL);
            glColor4f(0.1f, 0.1f, 0.1f, 1.0f);
            m_capQuad->render();
            glPopAttrib();
        }
        glPopMatrix();
        glDisable(GL_STENCIL_TEST);
        glEnable(GL_CLIP_PLANE0);
    };

    // The caps lie a little behind the plane, so that the profile lines and the plane's own
    // quad, drawn on the plane later, are not lost in them.
    glPushAttrib(GL_POLYGON_BIT | GL_LIGHTING_BIT | GL_SCISSOR_BIT | GL_ENABLE_BIT |
                 GL_COLOR_BUFFER_BIT | GL_STENCIL_BUFFER_BIT | GL_DEPTH_BUFFER_BIT |
                 GL_CURRENT_BIT);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.0f, 1.0f);
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
    if (!names && clipping.capMode == SCClipping::SINGLE) {
        MMaterialRenderer apply(settings.capMaterial);
        capOnce(cut.closed, [&] { MMaterialRenderer again(settings.capMaterial); });
    } else {
        // Each part counted and capped on its own, within the window rectangle it covers.
        std::map<int, std::vector<InstanceWalker::Instance>> parts;
        for (const auto& instance : cut.closed)
            parts[sources.node(instance.id)].push_back(instance);
        glEnable(GL_SCISSOR_TEST);
        for (const auto& part : parts) {
            qrnsg::BBox box;
            for (const auto& instance : part.second) {
                const qrnsg::Mesh* mesh = sources.mesh(instance.drawable);
                if (!mesh) {
                    box = qrnsg::BBox();
                    break;
                }
                const qrnsg::BBox& local = meshBox(sources.meshes, instance.drawable);
                box.add(instance.transform ? local.transformed(*instance.transform) : local);
            }
            GLint rect[4];
            if (box.isEmpty()) {
                glGetIntegerv(GL_VIEWPORT, rect);
            } else {
                screenRect(box, rect);
            }
            if (rect[2] <= 0 || rect[3] <= 0)
                continue;
            glScissor(rect[0], rect[1], rect[2], rect[3]);
            const auto& first = part.second.front();
            capOnce(part.second, [&] {
                if (names) {
                    names->load(part.first >= 0 ? qrnsg::EntityNames::part(part.first) : 0u);
                    return;
                }
                // The part's own colour, or the cap material where it has none.
                const auto& rt = *sources.rt;
                const int* material = rt.meshes.materials.find(first.id);
                const int scene =
                    material && *material >= 0 &&
                            static_cast<std::size_t>(*material) < rt.meshSceneMaterials.size()
                        ? rt.meshSceneMaterials[static_cast<std::size_t>(*material)]
                        : -1;
                if (sources.scene && scene >= 0 &&
                    static_cast<std::size_t>(scene) < sources.scene->materials.size()) {
                    qrnsg::MMaterial opaque =
                        sources.scene->materials[static_cast<std::size_t>(scene)];
                    opaque.transparency = 0.0f;
                    opaque.diffuse[3] = 1.0f;
                    MMaterialRenderer apply(opaque);
                } else {
                    MMaterialRenderer apply(settings.capMaterial);
                }
            });
        }
    }
    glPopAttrib();
}

void PreClipRenderer::render() const {
    Sources sources;
    if (!sources.fetch(m_document.lock()))
        return;
    glPlane(sources.clipping->planes.front());
    drawCaps(nullptr);
}

void PreClipRenderer::pick(std::shared_ptr<NamesInitializer> names,
                           std::shared_ptr<qrnsg::IPairVisitor>) {
    Sources sources;
    if (!sources.fetch(m_document.lock()))
        return;
    glPlane(sources.clipping->planes.front());
    // Selection mode makes no fragments, so it cannot count: caps are picked by the id pass.
    // An id pass draws them whatever it looks for, so that they hide what lies behind.
    if (names && names->mode() == NamesInitializer::COLOUR)
        drawCaps(names.get());
}

void PreClipRenderer::choose(const FilterResult&) const {}

std::vector<int> PreClipRenderer::openCutNodes() const {
    Sources sources;
    std::vector<int> nodes;
    if (!sources.fetch(m_document.lock()) || !sources.meshes)
        return nodes;
    const Vec4& plane = sources.clipping->planes.front();
    InstanceWalker::walk(
        sources.rt->meshes, sources.drawables, [&](const InstanceWalker::Instance& instance) {
            const qrnsg::Mesh* mesh = sources.mesh(instance.drawable);
            if (mesh && !mesh->closed &&
                side(meshBox(sources.meshes, instance.drawable), instance.transform, plane) == 0)
                nodes.push_back(sources.node(instance.id));
        });
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    return nodes;
}

} // namespace qrngl
