#include "qrngl/picking/PickPass.h"

#include "qrngl/FilterResult.h"
#include "qrngl/GL.h"
#include "qrngl/IPicker.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrnglutils/MeshPairPicker.h"
#include "qrnglutils/PolylinePairPicker.h"
#include "qrnglutils/VertexPairPicker.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"

namespace qrngl {

PickPass::PickPass(const std::shared_ptr<qrn::IDocument>& document) : m_document(document) {
    if (!document)
        return;
    auto renderer = qrn::component<SCRenderer>(document, qrnsg::SCHEMA_RENDERER);
    m_ready = qrn::component<qrnsg::SCScene>(document, qrnsg::SCHEMA_SCENE) &&
              qrn::component<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT) && renderer &&
              renderer->camera && qrn::component<qrnsg::SCPmi>(document, qrnsg::SCHEMA_PMI) &&
              qrn::component<SCStripRenderer>(document, qrnsg::SCHEMA_STRIP_RENDERER);
    if (m_ready)
        m_camera = renderer->camera;
}

void PickPass::loadMatrices(double cx, double cy, double w, double h) const {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    if (w > 0.0 && h > 0.0) {
        GLint viewport[4];
        glGetIntegerv(GL_VIEWPORT, viewport);
        gluPickMatrix(cx, cy, w, h, viewport);
    }
    glMultMatrixf(m_camera->getProjectionMatrix().data());
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(m_camera->getViewMatrix().data());
}

void PickPass::draw(NamesInitializer::Mode mode, unsigned short type) const {
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    auto strips = qrn::component<SCStripRenderer>(m_document, qrnsg::SCHEMA_STRIP_RENDERER);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto names = std::make_shared<NamesInitializer>(mode);
    auto visitor = std::make_shared<qrnglutils::PickVisitor>(*rt, topology.get(), *strips);
    visitor->setEntityType(type);
    // The pre-renderers after the matrices (a clip plane then keeps what it cuts away from
    // every pass), the post-renderers after the scene, as in a frame.
    for (const auto& pre : renderer->preRenderers)
        if (auto* picker = dynamic_cast<IPicker*>(pre.get()))
            picker->pick(names, visitor);
    const bool selection = mode == NamesInitializer::SELECTION;
    if (!selection || (type & 6))
        qrnglutils::PolylinePairPicker::draw(*visitor, *names);
    if (!selection || (type & 5))
        qrnglutils::MeshPairPicker::draw(*visitor, *names);
    if (type & 4)
        qrnglutils::VertexPairPicker::draw(*visitor, *names);
    for (const auto& post : renderer->postRenderers)
        if (auto* picker = dynamic_cast<IPicker*>(post.get()))
            picker->pick(names, visitor);
    for (const auto& entry : renderer->renderers)
        if (auto* picker = dynamic_cast<IPicker*>(entry.second.get()))
            picker->pick(names, visitor);
}

void PickPass::choose(const std::shared_ptr<qrn::IDocument>& document, const FilterResult& result) {
    auto renderer =
        document ? qrn::component<SCRenderer>(document, qrnsg::SCHEMA_RENDERER) : nullptr;
    if (!renderer)
        return;
    for (const auto& pre : renderer->preRenderers)
        if (auto* picker = dynamic_cast<IPicker*>(pre.get()))
            picker->choose(result);
    for (const auto& post : renderer->postRenderers)
        if (auto* picker = dynamic_cast<IPicker*>(post.get()))
            picker->choose(result);
    for (const auto& entry : renderer->renderers)
        if (auto* picker = dynamic_cast<IPicker*>(entry.second.get()))
            picker->choose(result);
}

} // namespace qrngl
