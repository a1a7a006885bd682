#include "qrngl/frame/EmptyCanvas.h"

#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/FrameSetup.h"

namespace qrngl {

EmptyCanvas::EmptyCanvas(std::shared_ptr<IRenderContext> context,
                         std::shared_ptr<qrn::IDocument> document)
    : CanvasBase(std::move(context), std::move(document)) {}

EmptyCanvas::~EmptyCanvas() = default;

void EmptyCanvas::OnDraw() const {
    if (!m_document || !m_context)
        return;
    auto renderer = component<SCRenderer>(qrnsg::SCHEMA_RENDERER);
    if (!renderer || !renderer->isReady())
        return;
    m_context->activate();
    FrameSetup::clearAndEnable(*renderer);
    for (const auto& r : {renderer->openingRenderer, renderer->viewRenderer,
                          renderer->sceneSetupRenderer, renderer->closingRenderer})
        if (r)
            r->render();
    glDisable(GL_MULTISAMPLE);
    m_context->deactivate();
    m_flag = 0;
}

} // namespace qrngl
