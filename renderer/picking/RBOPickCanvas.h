#pragma once

#include "qrngl/picking/UCPickCanvas.h"
#include "qrngl/qrngl_export.h"

namespace qrngl {

// A colour-id canvas that draws and reads only the square around the pick point (or the
// pick rectangle) on every pass.
class QRNGL_EXPORT RBOPickCanvas : public UCPickCanvas {
public:
    RBOPickCanvas(std::shared_ptr<IRenderContext> context,
                  std::shared_ptr<qrn::IDocument> document);
    ~RBOPickCanvas() override;

    bool OnCreate() override;
    // Frees the frame buffer; the context it was made in must be current.
    void OnDestroy() override;
    void OnDraw() const override;
    void OnSize(unsigned int x, unsigned int y, unsigned int width, unsigned int height) override;
    void OnDrawPickBox(int x, int y, int width, int height) override;
};

} // namespace qrngl
