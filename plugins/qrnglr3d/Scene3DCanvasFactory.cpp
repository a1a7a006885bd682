#include "qrnglr3d/Scene3DCanvasFactory.h"

#include "qrngl/SCRenderer.h"
#include "qrngl/frame/Canvas.h"
#include "qrngl/frame/PrintCanvas.h"
#include "qrngl/picking/PBOPickCanvas.h"
#include "qrnglr3d/SceneOptimizer.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCScene.h"

namespace qrnglr3d {

bool Scene3DCanvasFactory::canRender(std::shared_ptr<qrn::IDocument> document) const {
    if (!document ||
        !std::dynamic_pointer_cast<qrnsg::SCScene>(document->getSchema(qrnsg::SCHEMA_SCENE)) ||
        !std::dynamic_pointer_cast<qrngl::SCRenderer>(document->getSchema(qrnsg::SCHEMA_RENDERER)))
        return false;
    auto info = std::dynamic_pointer_cast<qrnsg::SCInfo>(document->getSchema(qrnsg::SCHEMA_INFO));
    return !info || info->documentType != qrnsg::SCInfo::DRAWING;
}

std::shared_ptr<qrngl::ICanvas>
Scene3DCanvasFactory::createCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                                   std::shared_ptr<qrn::IDocument> document) {
    return std::make_shared<qrngl::Canvas>(std::move(context), std::move(document));
}

std::shared_ptr<qrngl::IPickCanvas>
Scene3DCanvasFactory::createPickCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                                       std::shared_ptr<qrn::IDocument> document) {
    // Reads the whole view once and answers hover picks from it until the view changes.
    return std::make_shared<qrngl::PBOPickCanvas>(std::move(context), std::move(document));
}

std::shared_ptr<qrnsg::IActionFunctor>
Scene3DCanvasFactory::createOptimizer(std::shared_ptr<qrnsg::IFactory> factory,
                                      std::shared_ptr<qrn::IDocument> document) {
    return std::make_shared<SceneOptimizer>(std::move(factory), std::move(document));
}

std::shared_ptr<qrngl::ICanvas>
Scene3DCanvasFactory::createPrintCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                                        std::shared_ptr<qrn::IDocument> document) {
    auto frame = std::make_shared<qrngl::Canvas>(context, document);
    return std::make_shared<qrngl::PrintCanvas>(std::move(context), std::move(document),
                                                std::move(frame));
}

} // namespace qrnglr3d
