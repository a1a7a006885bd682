#include "qrnglr2d/SheetCanvasFactory.h"

#include "qrn2d/SCScene2D.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/EmptyCanvas.h"
#include "qrngl/frame/PrintCanvas.h"
#include "qrngl/frame/Renderer2D.h"
#include "qrnglr2d/SheetViewRenderer.h"

namespace qrnglr2d {

namespace {

std::shared_ptr<qrn2d::SCScene2D> sheetsOf(qrn::IDocument& document) {
    auto scene =
        std::dynamic_pointer_cast<qrn2d::SCScene2D>(document.getSchema(qrnsg::SCHEMA_SCENE_2D));
    return scene && !scene->sheets.empty() ? scene : nullptr;
}

// The first sheet's view and drawing, where the renderer has none of its own.
void wireSheet(qrngl::IRenderContext& context, qrn::IDocument& document) {
    auto scene = sheetsOf(document);
    auto renderer =
        std::dynamic_pointer_cast<qrngl::SCRenderer>(document.getSchema(qrnsg::SCHEMA_RENDERER));
    if (!scene || !renderer)
        return;
    if (!renderer->viewRenderer)
        renderer->viewRenderer = std::make_shared<SheetViewRenderer>(scene, 0);
    if (!renderer->sceneSetupRenderer)
        renderer->sceneSetupRenderer =
            std::make_shared<qrngl::Renderer2D>(context.currentDC(), scene, 0);
    renderer->setReady(true);
}

} // namespace

bool SheetCanvasFactory::canRender(std::shared_ptr<qrn::IDocument> document) const {
    return document && sheetsOf(*document) &&
           std::dynamic_pointer_cast<qrngl::SCRenderer>(
               document->getSchema(qrnsg::SCHEMA_RENDERER));
}

std::shared_ptr<qrngl::ICanvas>
SheetCanvasFactory::createCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                                 std::shared_ptr<qrn::IDocument> document) {
    if (context && document)
        wireSheet(*context, *document);
    return std::make_shared<qrngl::EmptyCanvas>(std::move(context), std::move(document));
}

std::shared_ptr<qrngl::IPickCanvas>
SheetCanvasFactory::createPickCanvas(std::shared_ptr<qrngl::IRenderContext>,
                                     std::shared_ptr<qrn::IDocument>) {
    return nullptr;
}

std::shared_ptr<qrnsg::IActionFunctor>
SheetCanvasFactory::createOptimizer(std::shared_ptr<qrnsg::IFactory>,
                                    std::shared_ptr<qrn::IDocument>) {
    return nullptr;
}

std::shared_ptr<qrngl::ICanvas>
SheetCanvasFactory::createPrintCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                                      std::shared_ptr<qrn::IDocument> document) {
    auto frame = createCanvas(context, document);
    return std::make_shared<qrngl::PrintCanvas>(std::move(context), std::move(document),
                                                std::move(frame));
}

} // namespace qrnglr2d
