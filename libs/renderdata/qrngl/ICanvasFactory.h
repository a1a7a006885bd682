#pragma once

#include "qrn/IDocument.h"
#include "qrngl/ICanvas.h"
#include "qrngl/IPickCanvas.h"
#include "qrngl/IRenderContext.h"
#include "qrngldata/qrngldata_export.h"
#include "qrnsg/IActionFunctor.h"
#include "qrnsg/IFactory.h"

#include <memory>

namespace qrngl {

// What a renderer library hands out: whether it draws a document, and the document's canvas,
// pick canvas, optimiser and print canvas.
class QRNGLDATA_EXPORT ICanvasFactory {
public:
    virtual ~ICanvasFactory();
    virtual bool canRender(std::shared_ptr<qrn::IDocument> document) const = 0;
    virtual std::shared_ptr<ICanvas> createCanvas(std::shared_ptr<IRenderContext> context,
                                                  std::shared_ptr<qrn::IDocument> document) = 0;
    virtual std::shared_ptr<IPickCanvas>
    createPickCanvas(std::shared_ptr<IRenderContext> context,
                     std::shared_ptr<qrn::IDocument> document) = 0;
    virtual std::shared_ptr<qrnsg::IActionFunctor>
    createOptimizer(std::shared_ptr<qrnsg::IFactory> factory,
                    std::shared_ptr<qrn::IDocument> document) = 0;
    virtual std::shared_ptr<ICanvas>
    createPrintCanvas(std::shared_ptr<IRenderContext> context,
                      std::shared_ptr<qrn::IDocument> document) = 0;
};

} // namespace qrngl
