#include "qrngl/frame/EmptyCanvas.h"

#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/FrameSetup.h"

namespace qrngl {

EmptyCanvas::EmptyCanvas(std::shared_ptr<IRenderContext> context,
                         std::shared_ptr<qrn::IDocument> document)
    : m_context(std::move(context)), m_document(std::move(document)) {}

EmptyCanvas::EmptyCanvas(const EmptyCanvas& other)
    : ICanvas(other), m_context(other.m_context), m_document(other.m_document) {}

EmptyCanvas& EmptyCanvas::operator=(const EmptyCanvas& other) {
    ICanvas::operator=(other);
    m_context = other.m_context;
    m_document = other.m_document;
    return *this;
}

EmptyCanvas::~EmptyCanvas() = default;

bool EmptyCanvas::OnCreate() {
    return true;
}

void EmptyCanvas::OnDestroy() {}

void EmptyCanvas::Invalidate() {}

void EmptyCanvas::OnSize(unsigned int, unsigned int, unsigned int width, unsigned int height) {
    if (m_document)
        FrameSetup::resize(*m_document, width, height);
}

void EmptyCanvas::OnDraw() const {
    if (!m_document || !m_context)
        return;
    auto renderer = FrameSetup::fetch<SCRenderer>(*m_document, qrnsg::SCHEMA_RENDERER);
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
