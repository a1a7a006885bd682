#include "qrnglr3d/SceneOptimizer.h"

#include "qrn/Document.h"
#include "qrngl/GL.h"
#include "qrngl/SCStripRenderer.h"
#include "qrngl/overlays/FontRenderer.h"
#include "qrnglutils/SceneBuilder.h"
#include "qrnsg/SCScene.h"

namespace qrnglr3d {

SceneOptimizer::SceneOptimizer(std::shared_ptr<qrnsg::IFactory> factory,
                               std::shared_ptr<qrn::IDocument> document)
    : m_factory(std::move(factory)), m_document(std::move(document)) {}

bool SceneOptimizer::operator()() {
    if (!m_document)
        return false;
    auto scene =
        std::dynamic_pointer_cast<qrnsg::SCScene>(m_document->getSchema(qrnsg::SCHEMA_SCENE));
    if (!scene)
        return false;
    auto strips = std::dynamic_pointer_cast<qrngl::SCStripRenderer>(
        m_document->getSchema(qrnsg::SCHEMA_STRIP_RENDERER));
    auto* document = dynamic_cast<qrn::Document*>(m_document.get());
    if (!strips && m_factory && document) {
        strips = std::dynamic_pointer_cast<qrngl::SCStripRenderer>(
            m_factory->create(qrnsg::SCHEMA_STRIP_RENDERER));
        if (strips)
            document->setSchema(strips);
    }
    if (!strips)
        return false;
    bool changed = false;
    if (strips->meshes.empty() && strips->polylines.empty() && strips->points.empty() &&
        strips->texts.empty()) {
        qrnglutils::SceneBuilder::buildDrawables(*scene, *strips, qrngl::FontRenderer::faceName(),
                                                 qrngl::FontRenderer::fallbackFaceName());
        changed = true;
    }
    // Uploading needs a current context; without one the first frame uploads.
    if (glGetString(GL_VERSION)) {
        qrnglutils::SceneBuilder::prepare(*strips);
        changed = true;
    }
    return changed;
}

} // namespace qrnglr3d
