#pragma once

#include "qrngl/ICanvasFactory.h"

namespace qrnglr3d {

// The factory of 3D assembly documents: a document with a scene and a renderer component that
// is not a drawing.
class Scene3DCanvasFactory : public qrngl::ICanvasFactory {
public:
    bool canRender(std::shared_ptr<qrn::IDocument> document) const override;
    std::shared_ptr<qrngl::ICanvas> createCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                                                 std::shared_ptr<qrn::IDocument> document) override;
    // None yet: this renderer has no pick canvas of its own.
    std::shared_ptr<qrngl::IPickCanvas>
    createPickCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                     std::shared_ptr<qrn::IDocument> document) override;
    std::shared_ptr<qrnsg::IActionFunctor>
    createOptimizer(std::shared_ptr<qrnsg::IFactory> factory,
                    std::shared_ptr<qrn::IDocument> document) override;
    std::shared_ptr<qrngl::ICanvas>
    createPrintCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                      std::shared_ptr<qrn::IDocument> document) override;
};

} // namespace qrnglr3d
