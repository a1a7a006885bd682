#pragma once

#include "qrngl/ICanvasFactory.h"

namespace qrnglr2d {

// The factory of 2D drawing documents: a document with at least one sheet and a renderer
// component. Its canvases draw the first sheet, fitted to the window.
class SheetCanvasFactory : public qrngl::ICanvasFactory {
public:
    bool canRender(std::shared_ptr<qrn::IDocument> document) const override;
    // Puts the sheet's view and drawing into the renderer's empty single-renderer places.
    std::shared_ptr<qrngl::ICanvas> createCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                                                 std::shared_ptr<qrn::IDocument> document) override;
    // None: sheets are not picked.
    std::shared_ptr<qrngl::IPickCanvas>
    createPickCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                     std::shared_ptr<qrn::IDocument> document) override;
    // None: a sheet's display list is compiled on its first frame.
    std::shared_ptr<qrnsg::IActionFunctor>
    createOptimizer(std::shared_ptr<qrnsg::IFactory> factory,
                    std::shared_ptr<qrn::IDocument> document) override;
    std::shared_ptr<qrngl::ICanvas>
    createPrintCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                      std::shared_ptr<qrn::IDocument> document) override;
};

} // namespace qrnglr2d
