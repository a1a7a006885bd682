#pragma once

#include "qrngl/picking/OGLPickCanvas.h"
#include "qrngl/qrngl_export.h"

namespace qrngl {

// Picks through OpenGL's selection render mode and name stack.
class QRNGL_EXPORT PickCanvas : public OGLPickCanvas {
public:
    PickCanvas(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document);
    ~PickCanvas() override;

    // The pass for the point that Set gave.
    void OnDraw() const override;
    // The pass for a rectangle, its lower-left corner in OpenGL window coordinates.
    void OnDrawPickBox(int x, int y, int width, int height) override;

private:
    void pass(double cx, double cy, double width, double height) const;
};

} // namespace qrngl
