#pragma once

#include "qrngl/frame/CanvasBase.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// The canvas of a document without a scene: only the frame's single renderers, on every paint.
// Invalidate is not needed: every paint draws.
class QRNGL_EXPORT EmptyCanvas : public CanvasBase<> {
public:
    EmptyCanvas(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document);
    ~EmptyCanvas() override;

    void OnDraw() const override;
};

} // namespace qrngl
