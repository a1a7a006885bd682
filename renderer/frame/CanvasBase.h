#pragma once

#include "qrn/IDocument.h"
#include "qrngl/ICanvas.h"
#include "qrngl/IRenderContext.h"
#include "qrngl/frame/Viewport.h"

#include <memory>

namespace qrngl {

// What every canvas has in common, whatever interface it implements (ICanvas, IPickCanvas):
// the context it draws on, the document it draws, copying, creation and destruction that need
// nothing, a new window size that sets the viewport and the camera's, and an Invalidate that
// asks for the next frame. A template so that a canvas of any canvas interface derives from it
// without a second ICanvas base.
template <class Interface = ICanvas>
class CanvasBase : public Interface {
public:
    CanvasBase(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document)
        : m_context(std::move(context)), m_document(std::move(document)) {}

    bool OnCreate() override { return true; }
    void OnDestroy() override {}
    // Nothing for a zero width or height (a minimised window).
    void OnSize(unsigned int, unsigned int, unsigned int width, unsigned int height) override {
        if (m_document)
            Viewport::resize(*m_document, width, height);
    }
    void Invalidate() override { m_invalidated = true; }
    const std::shared_ptr<qrn::IDocument>& document() const { return m_document; }

protected:
    // The component of that number cast to its class; empty when absent or of another class.
    template <class T>
    std::shared_ptr<T> component(short type) const {
        return qrn::component<T>(m_document, type);
    }

    std::shared_ptr<IRenderContext> m_context;
    std::shared_ptr<qrn::IDocument> m_document;
    // Set by Invalidate; a canvas that draws one frame per invalidation clears it.
    mutable bool m_invalidated = false;
};

} // namespace qrngl
