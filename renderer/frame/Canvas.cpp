#include "qrngl/frame/Canvas.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/IOverlay.h"
#include "qrngl/MMaterialRenderer.h"
#include "qrngl/PLMaterialRenderer.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrngl/frame/ClusterCuller.h"
#include "qrngl/frame/FrameSetup.h"
#include "qrngl/frame/ModelImage.h"
#include "qrngl/frame/MotionGovernor.h"
#include "qrngl/frame/PartStencil.h"
#include "qrnglutils/ClipplaneUtils.h"
#include "qrnglutils/ScopedTransform.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/DataUtils.h"
#include "qrnsgutils/InstanceWalker.h"

#include <chrono>
#include <functional>
#include <optional>
#include <unordered_set>

namespace qrngl {

using qrnsg::RTState;
using qrnsgutils::InstanceWalker;

namespace {

template <class T>
bool inRange(const std::vector<T>& v, int i) {
    return i >= 0 && static_cast<std::size_t>(i) < v.size();
}

// Draws the shown primitives of a line pass (polylines or points), applying the scene's
// line material whenever the material index changes along the draw order; with `only`, just
// the primitives it holds; without those `skip` says yes to.
void renderLinePass(const qrnsg::SCScene& scene, const RTState& state,
                    const std::vector<std::shared_ptr<IStripEntry>>& entries,
                    const std::unordered_set<int>* only = nullptr,
                    const std::function<bool(const InstanceWalker::Instance&)>& skip = {}) {
    int previous = -1;
    std::optional<PLMaterialRenderer> applied;
    InstanceWalker::walk(state, entries.size(), [&](const InstanceWalker::Instance& instance) {
        if ((only && !only->count(instance.id)) || (skip && skip(instance)))
            return;
        if (instance.material != previous) {
            previous = instance.material;
            applied.reset();
            if (inRange(scene.plMaterials, instance.material))
                applied.emplace(scene.plMaterials[static_cast<std::size_t>(instance.material)]);
        }
        qrnglutils::ScopedTransform place(instance);
        entries[static_cast<std::size_t>(instance.drawable)]->render();
    });
}

// The frame of a text lying in its plane, as a matrix.
qrnmath::Mat4 textPlane(const qrnsg::Text& text) {
    qrnmath::Vec3 x, y, z;
    text.frame(x, y, z);
    qrnmath::Mat4 m = qrnmath::MatrixUtils::identity();
    for (int r = 0; r < 3; ++r) {
        m[r] = x[r];
        m[4 + r] = y[r];
        m[8 + r] = z[r];
    }
    return m;
}

// What the model's image is drawn from, as far as the canvas can tell: the matrices and
// viewport the view renderer left, the render settings, the cut, and the objects drawn.
ModelImage::Source modelSource(const SCRenderer& renderer, std::vector<const void*> objects,
                               const SCClipping* clipping) {
    ModelImage::Source source;
    auto& n = source.numbers;
    n.resize(36);
    glGetFloatv(GL_PROJECTION_MATRIX, n.data());
    glGetFloatv(GL_MODELVIEW_MATRIX, n.data() + 16);
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    for (std::size_t i = 0; i < 4; ++i)
        n[32 + i] = static_cast<float>(viewport[i]);
    n.insert(n.end(),
             {static_cast<float>(renderer.renderMode), static_cast<float>(renderer.displayMode),
              renderer.suppressLinesAndTexts ? 1.0f : 0.0f, renderer.background[0],
              renderer.background[1], renderer.background[2]});
    if (clipping) {
        n.insert(n.end(), {clipping->capped ? 1.0f : 0.0f, clipping->showProfile ? 1.0f : 0.0f,
                           static_cast<float>(clipping->planes.size())});
        if (clipping->hasPlane())
            n.insert(n.end(), clipping->planes.front().data(), clipping->planes.front().data() + 4);
    }
    source.objects = std::move(objects);
    source.objects.push_back(renderer.camera.get());
    for (const auto& pre : renderer.preRenderers)
        source.objects.push_back(pre.get());
    // Overlays come and go without touching the model.
    for (const auto& post : renderer.postRenderers)
        if (!dynamic_cast<const IOverlay*>(post.get()))
            source.objects.push_back(post.get());
    for (const auto& entry : renderer.renderers)
        if (!dynamic_cast<const IOverlay*>(entry.second.get()))
            source.objects.push_back(entry.second.get());
    return source;
}

} // namespace

Canvas::Canvas(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document)
    : CanvasBase(std::move(context), std::move(document)),
      m_governor(std::make_unique<MotionGovernor>()), m_image(std::make_unique<ModelImage>()),
      m_culler(std::make_unique<ClusterCuller>()) {}

Canvas::~Canvas() = default;

void Canvas::OnDraw() const {
    if (!m_document || !m_context)
        return;
    auto scene = component<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    auto pmi = component<qrnsg::SCPmi>(qrnsg::SCHEMA_PMI);
    auto rt = component<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    auto strips = component<SCStripRenderer>(qrnsg::SCHEMA_STRIP_RENDERER);

    // A document without a renderer component has nothing to draw with.
    if (!renderer || !renderer->isReady() || !m_invalidated)
        return;
    const auto start = std::chrono::steady_clock::now();
    m_context->activate();
    if (scene && pmi && rt && strips) {
        m_trianglesDrawn = 0;
        const bool modelDrawn = render(scene, pmi, rt, renderer, strips);
        // The budget is for the finished frame, not for the calls that asked for it.
        if (renderer->frameBudget > 0.0)
            glFinish();
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - start;
        // Overlays alone tell nothing of what the model costs.
        if (modelDrawn)
            m_governor->record(took.count(), m_trianglesDrawn, renderer->lastFrame);
        m_context->deactivate();
        m_invalidated = false;
    }
    // Otherwise the frame stays pending: the next paint tries again.
    m_flag = 0;
}

bool Canvas::render(const Scene& scene, const Pmi& pmi, const SceneRT& rt, const Renderer& renderer,
                    const Strips& strips) const {
    glShadeModel(GL_SMOOTH);
    FrameSetup::clearAndEnable(*renderer);
    if (renderer->openingRenderer)
        renderer->openingRenderer->render();
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    if (renderer->viewRenderer)
        renderer->viewRenderer->render();
    if (renderer->sceneSetupRenderer)
        renderer->sceneSetupRenderer->render();

    // Only overlays changed: the model's image comes back as it was drawn.
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    auto clipping = component<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    ModelImage::Source source =
        modelSource(*renderer, {scene.get(), rt.get(), strips.get()}, clipping.get());
    // A cut is drawn whole each time: its caps and profile are made as the frame goes.
    const bool cut = clipping && clipping->hasPlane();
    const bool modelDrawn = m_modelChanged || cut || !m_image->restore(source, viewport);
    if (modelDrawn) {
        // Copies cost; they are made once overlays change alone, and none of a frame that
        // moving left short (it is not looked at again).
        const bool wanted = m_image->held() || !m_modelChanged;
        renderModel(scene, pmi, rt, renderer, strips,
                    !(clipping && clipping->hasPlane() && clipping->capped));
        if (!wanted || cut || m_governor->active() || !m_image->keep(std::move(source), viewport))
            m_image->drop();
    }
    m_modelChanged = false;

    for (const auto& post : renderer->postRenderers)
        if (dynamic_cast<const IOverlay*>(post.get()))
            post->render();
    for (const auto& entry : renderer->renderers)
        if (dynamic_cast<const IOverlay*>(entry.second.get()))
            entry.second->render();
    if (renderer->closingRenderer)
        renderer->closingRenderer->render();
    glDisable(GL_MULTISAMPLE);
    return modelDrawn;
}

void Canvas::renderModel(const Scene& scene, const Pmi& pmi, const SceneRT& rt,
                         const Renderer& renderer, const Strips& strips, bool leaveOut) const {
    // Planned before the pre-renderers, for the frame they set up. Caps are counted from every
    // cut part: while they show, no part is left out, or its cap would float alone.
    m_governor->plan(*scene, *rt, *strips, *renderer, leaveOut);
    for (const auto& pre : renderer->preRenderers)
        pre->render();
    // Smooth edges cost a multisampled window most of its frame on a software rasteriser; a
    // frame in motion that must save does without them.
    if (m_governor->active())
        glDisable(GL_MULTISAMPLE);
    // The overlays find the state the pre-renderers left, whether the model was drawn or not.
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();

    auto topology = component<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO);
    if (topology &&
        (topology.get() != m_stencilTopology || topology->nodes.size() != m_stencilNodes)) {
        strips->partStencil = PartStencil::assign(*topology, *scene, rt->meshes);
        m_stencilTopology = topology.get();
        m_stencilNodes = topology->nodes.size();
    }
    const SCRenderer::RENDERMODE mode = renderer->renderMode;
    const bool meshesShown = qrnsgutils::DataUtils::updateRenderState(
        rt->meshes.transforms, rt->meshes.functor, rt->meshes.flags);
    if (mode == SCRenderer::HIDDEN_LINE && meshesShown)
        renderDepthOnly(scene, pmi, rt, renderer, strips);
    const bool linesAndTexts = !renderer->suppressLinesAndTexts || renderer->displayMode == 1;
    // Edges are all there is of the wireframe and hidden-line views, whatever the setting.
    const bool edgeView = mode == SCRenderer::WIREFRAME || mode == SCRenderer::HIDDEN_LINE;
    if (linesAndTexts || edgeView) {
        if (qrnsgutils::DataUtils::updateRenderState(rt->polylines.transforms,
                                                     rt->polylines.functor, rt->polylines.flags))
            renderPolylines(scene, pmi, rt, renderer, strips);
    }
    if (linesAndTexts) {
        if (qrnsgutils::DataUtils::updateRenderState(rt->texts.transforms, rt->texts.functor,
                                                     rt->texts.flags))
            renderTexts(scene, pmi, rt, renderer, strips);
    }
    // Meshes after lines and texts.
    if (meshesShown && (mode == SCRenderer::SHADED_WITH_EDGES || mode == SCRenderer::SHADED))
        renderMeshes(scene, pmi, rt, renderer, strips);
    else
        strips->stencilHoldsParts = false;
    // Renderers that are not overlays belong to the model's image.
    for (const auto& post : renderer->postRenderers)
        if (!dynamic_cast<const IOverlay*>(post.get()))
            post->render();
    for (const auto& entry : renderer->renderers)
        if (entry.second && !dynamic_cast<const IOverlay*>(entry.second.get()))
            entry.second->render();

    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glPopClientAttrib();
    glPopAttrib();
}

void Canvas::OnDestroy() {
    m_image->release();
}

void Canvas::Invalidate() {
    // Anything but a change marked as showing in overlays alone redraws the model.
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    if (!renderer || !renderer->takeOverlayChange())
        m_modelChanged = true;
    CanvasBase::Invalidate();
}

void Canvas::OnSize(unsigned int x, unsigned int y, unsigned int width, unsigned int height) {
    m_modelChanged = true;
    CanvasBase::OnSize(x, y, width, height);
}

void Canvas::renderMeshes(const Scene& scene, const Pmi&, const SceneRT& rt,
                          const Renderer& renderer, const Strips& strips) const {
    if (strips->meshes.empty())
        return;
    int previous = -1;
    bool blending = false;
    // The back faces of a closed solid are never seen unless a clip plane cuts it open; a
    // frame that culls already is left as it is.
    const bool mayCull =
        !glIsEnabled(GL_CULL_FACE) && !qrnglutils::ClipplaneUtils::anyClipPlaneOn();
    GLint twoSided = GL_TRUE, frontFace = GL_CCW;
    glGetIntegerv(GL_LIGHT_MODEL_TWO_SIDE, &twoSided);
    glGetIntegerv(GL_FRONT_FACE, &frontFace);
    const GLenum mirroredFace = frontFace == GL_CCW ? GL_CW : GL_CCW;
    bool culling = false, mirrored = false, transparent = false;
    const bool coarse = m_governor->coarse();
    const bool clusters = renderer->clusterCulling;
    std::vector<IStripEntry::Range> ranges;
    if (clusters)
        m_culler->begin();
    // Each instance marks the stencil with its part's value where it is the nearest surface
    // (a cut's caps have the stencil to themselves; a frame in motion is not highlighted).
    GLint stencilBits = 0;
    glGetIntegerv(GL_STENCIL_BITS, &stencilBits);
    const bool marking = stencilBits >= 8 && mayCull && !m_governor->active();
    const auto& values = strips->partStencil;
    int marked = -1;
    if (marking) {
        glPushAttrib(GL_STENCIL_BUFFER_BIT);
        glEnable(GL_STENCIL_TEST);
        glStencilMask(0xFF);
        glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
    }
    InstanceWalker::walk(
        rt->meshes, strips->meshes.size(), [&](const InstanceWalker::Instance& instance) {
            if (m_governor->culledMesh(instance.drawable, instance.transform))
                return;
            const auto drawable = static_cast<std::size_t>(instance.drawable);
            const int material = instance.material;
            if (material != previous) {
                previous = material;
                transparent =
                    inRange(rt->meshMaterialRecords, material) &&
                    rt->meshMaterialRecords[static_cast<std::size_t>(material)].isTransparent();
                // The draw order puts transparent materials last, so blending stays on once on.
                if (!blending && transparent) {
                    glEnable(GL_BLEND);
                    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
                    blending = true;
                }
                if (inRange(rt->meshSceneMaterials, material)) {
                    int sceneMaterial = rt->meshSceneMaterials[static_cast<std::size_t>(material)];
                    if (sceneMaterial != -1 && inRange(scene->materials, sceneMaterial))
                        MMaterialRenderer apply(
                            scene->materials[static_cast<std::size_t>(sceneMaterial)]);
                }
                if (inRange(rt->meshTextures, material)) {
                    int texture = rt->meshTextures[static_cast<std::size_t>(material)];
                    if (texture != -1 && inRange(renderer->textures, texture))
                        renderer->textures[static_cast<std::size_t>(texture)]->bind();
                }
            }
            const bool known = drawable < scene->meshes.size();
            const bool cull = mayCull && !transparent && known && scene->meshes[drawable].closed;
            if (cull != culling) {
                culling = cull;
                if (cull) {
                    glEnable(GL_CULL_FACE);
                    glCullFace(GL_BACK);
                    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_FALSE);
                } else {
                    glDisable(GL_CULL_FACE);
                    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, twoSided);
                }
            }
            // A mirroring placement turns the winding of what it places.
            const bool mirror = cull && qrnglutils::ScopedTransform::mirrors(instance.transform);
            if (mirror != mirrored) {
                mirrored = mirror;
                glFrontFace(mirror ? mirroredFace : static_cast<GLenum>(frontFace));
            }
            if (marking) {
                const int value = static_cast<std::size_t>(instance.id) < values.size()
                                      ? values[static_cast<std::size_t>(instance.id)]
                                      : 0;
                if (value != marked) {
                    marked = value;
                    glStencilFunc(GL_ALWAYS, value, 0xFF);
                }
            }
            qrnglutils::ScopedTransform place(instance);
            if (coarse && drawable < strips->coarseMeshes.size() &&
                strips->coarseMeshes[drawable]) {
                strips->coarseMeshes[drawable]->render();
                m_trianglesDrawn += known ? scene->meshes[drawable].coarseIndices.size() / 3 : 0;
            } else if (cull && clusters && !scene->meshes[drawable].clusters.empty()) {
                m_trianglesDrawn +=
                    m_culler->ranges(scene->meshes[drawable], instance.transform, ranges);
                strips->meshes[drawable]->renderRanges(ranges, nullptr);
            } else {
                strips->meshes[drawable]->render();
                m_trianglesDrawn += known ? scene->meshes[drawable].triangleCount() : 0;
            }
        });
    if (culling) {
        glDisable(GL_CULL_FACE);
        glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, twoSided);
    }
    if (mirrored)
        glFrontFace(static_cast<GLenum>(frontFace));
    if (blending)
        glDisable(GL_BLEND);
    glBindTexture(GL_TEXTURE_2D, 0);
    if (marking)
        glPopAttrib();
    strips->stencilHoldsParts = marking;
}

void Canvas::renderPolylines(const Scene& scene, const Pmi& pmi, const SceneRT& rt,
                             const Renderer& renderer, const Strips& strips) const {
    if (strips->polylines.empty() || rt->polylines.drawOrder.empty())
        return;
    // The shaded view leaves the parts' edges out; annotation lines stay with their texts.
    const bool shaded = renderer->renderMode == SCRenderer::SHADED;
    std::unordered_set<int> annotations;
    if (shaded || m_governor->active())
        for (const auto& item : pmi->items)
            annotations.insert(item.polylineIds.begin(), item.polylineIds.end());
    if (shaded && annotations.empty())
        return;
    // The edges of parts left out while moving go with them.
    auto skip = [&](const InstanceWalker::Instance& instance) {
        return !annotations.count(instance.id) &&
               m_governor->culledPolyline(instance.drawable, instance.transform);
    };
    renderLinePass(*scene, rt->polylines, strips->polylines, shaded ? &annotations : nullptr,
                   m_governor->active() ? std::function<bool(const InstanceWalker::Instance&)>(skip)
                                        : nullptr);
}

void Canvas::renderDepthOnly(const Scene& scene, const Pmi& pmi, const SceneRT& rt,
                             const Renderer& renderer, const Strips& strips) const {
    // The faces only hide what lies behind them; pushed back, they leave their own edges be.
    glPushAttrib(GL_COLOR_BUFFER_BIT | GL_POLYGON_BIT | GL_ENABLE_BIT);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.0f, 1.0f);
    renderMeshes(scene, pmi, rt, renderer, strips);
    glPopAttrib();
}

void Canvas::renderPoints(const Scene& scene, const Pmi&, const SceneRT& rt, const Renderer&,
                          const Strips& strips) const {
    if (strips->points.empty() || rt->points.drawOrder.empty())
        return;
    renderLinePass(*scene, rt->points, strips->points);
}

void Canvas::renderTexts(const Scene& scene, const Pmi&, const SceneRT& rt,
                         const Renderer& renderer, const Strips& strips) const {
    if (strips->texts.empty())
        return;
    GLboolean cullWasOn = glIsEnabled(GL_CULL_FACE);
    GLint cullMode = GL_BACK;
    if (cullWasOn)
        glGetIntegerv(GL_CULL_FACE_MODE, &cullMode);
    GLint frontFace = GL_CCW;
    glGetIntegerv(GL_FRONT_FACE, &frontFace);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);

    const qrnmath::Mat4 billboard = CameraHelper::getBillboardRotation(renderer->camera);
    const float zoom = renderer->camera ? renderer->camera->zoomFactor() : 1.0f;
    int previous = -1;
    std::optional<PLMaterialRenderer> applied;
    InstanceWalker::walk(
        rt->texts, strips->texts.size(), [&](const InstanceWalker::Instance& instance) {
            if (instance.material != previous) {
                previous = instance.material;
                applied.reset();
                if (inRange(scene->plMaterials, instance.material))
                    applied.emplace(
                        scene->plMaterials[static_cast<std::size_t>(instance.material)]);
            }
            // A missing record anchors at the origin.
            const qrnsg::Text* record =
                inRange(scene->texts, instance.drawable)
                    ? &scene->texts[static_cast<std::size_t>(instance.drawable)]
                    : nullptr;
            glPushMatrix();
            if (instance.flags & RTState::ANCHORED) {
                // Turned to the viewer at its anchor, which its transform moves (a part it
                // belongs to moved).
                if (record) {
                    const qrnmath::Vec3 at = instance.transform
                                                 ? qrnmath::MatrixUtils::transformPoint(
                                                       *instance.transform, record->position)
                                                 : record->position;
                    glTranslatef(at[0], at[1], at[2]);
                }
                if (instance.flags & RTState::CONSTANT_SIZE)
                    glScalef(zoom, zoom, zoom);
                glMultMatrixf(billboard.data());
            } else {
                // In its own plane, placed with the primitive.
                if (instance.transform)
                    glMultMatrixf(instance.transform->data());
                if (record) {
                    glTranslatef(record->position[0], record->position[1], record->position[2]);
                    glMultMatrixf(textPlane(*record).data());
                }
                if (instance.flags & RTState::CONSTANT_SIZE)
                    glScalef(zoom, zoom, zoom);
            }
            strips->texts[static_cast<std::size_t>(instance.drawable)]->render();
            glPopMatrix();
        });
    applied.reset();

    if (cullWasOn) {
        glCullFace(static_cast<GLenum>(cullMode));
        glFrontFace(static_cast<GLenum>(frontFace));
    } else {
        glDisable(GL_CULL_FACE);
        glFrontFace(static_cast<GLenum>(frontFace));
    }
}

} // namespace qrngl
