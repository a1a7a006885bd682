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
    // The pass around (cx, cy) in OpenGL window coordinates, or, with fromTop, around the
    // window point (cx, cy) (origin top left) as the camera's height and the viewport place it.
    void pass(double cx, double cy, double width, double height, bool fromTop) const;
};

} // namespace qrngl
