#pragma once

#include "qrn/IDocument.h"
#include "qrngl/ICanvas.h"
#include "qrngl/IRenderContext.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// The canvas of a document without a scene: only the frame's single renderers, on every paint.
class QRNGL_EXPORT EmptyCanvas : public ICanvas {
public:
    EmptyCanvas(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document);
    EmptyCanvas(const EmptyCanvas& other);
    EmptyCanvas& operator=(const EmptyCanvas& other);
    ~EmptyCanvas() override;

    bool OnCreate() override;
    void OnDestroy() override;
    void OnDraw() const override;
    void OnSize(unsigned int x, unsigned int y, unsigned int width, unsigned int height) override;
    void Invalidate() override;

private:
    std::shared_ptr<IRenderContext> m_context;
    std::shared_ptr<qrn::IDocument> m_document;
};

} // namespace qrngl
