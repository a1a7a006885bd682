#include "qrngl/overlays/Text3DLeaderRenderer.h"

#include "qrngl/PLMaterialRenderer.h"

namespace qrngl {

Text3DLeaderRenderer::Text3DLeaderRenderer(std::shared_ptr<qrn::IDocument> document,
                                           std::shared_ptr<IRendererFactory> factory)
    : m_factory(std::move(factory)), m_document(std::move(document)) {
    m_material.color = qrnmath::Vec4(0.0f, 0.0f, 0.0f, 0.6f);
    m_material.width = 1.0f;
    m_material.stippleFactor = 1;
}

Text3DLeaderRenderer::Text3DLeaderRenderer(const Text3DLeaderRenderer& other) = default;
Text3DLeaderRenderer& Text3DLeaderRenderer::operator=(const Text3DLeaderRenderer& other) = default;
Text3DLeaderRenderer::~Text3DLeaderRenderer() = default;

void Text3DLeaderRenderer::set(std::shared_ptr<qrnsg::Text3DLeader> leader) {
    m_leader = std::move(leader);
}

void Text3DLeaderRenderer::render() const {
    if (m_leader)
        renderText3Dleader(m_leader);
}

void Text3DLeaderRenderer::renderText3Dleader(
    const std::shared_ptr<qrnsg::Text3DLeader>& leader) const {
    if (!m_factory)
        return;
    std::shared_ptr<IRenderer> line = m_factory->createPolylineRenderer(leader->polyline);
    if (!line)
        return;
    PLMaterialRenderer material(m_material);
    line->render();
}

void Text3DLeaderRenderer::pick(std::shared_ptr<NamesInitializer>,
                                std::shared_ptr<qrnsg::IPairVisitor>) {}

void Text3DLeaderRenderer::choose(const FilterResult&) const {}

} // namespace qrngl
