#pragma once

#include "qrn/DLLFuncPtrHelper.h"
#include "qrngl/ICanvasFactory.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// The factory of a loaded renderer library: forwards every call to the object that the
// library's "create" entry handed out, and gives it back through "destroy" when released.
// The library stays loaded while the helper lives, so canvases it made must go first.
class QRNGL_EXPORT CanvasFactoryHelper : public ICanvasFactory {
public:
    explicit CanvasFactoryHelper(std::shared_ptr<qrn::DLLFuncPtrHelper<void>> library);
    CanvasFactoryHelper(const CanvasFactoryHelper& other);
    CanvasFactoryHelper& operator=(const CanvasFactoryHelper& other);
    ~CanvasFactoryHelper() override;

    bool canRender(std::shared_ptr<qrn::IDocument> document) const override;
    std::shared_ptr<ICanvas> createCanvas(std::shared_ptr<IRenderContext> context,
                                          std::shared_ptr<qrn::IDocument> document) override;
    std::shared_ptr<IPickCanvas>
    createPickCanvas(std::shared_ptr<IRenderContext> context,
                     std::shared_ptr<qrn::IDocument> document) override;
    std::shared_ptr<qrnsg::IActionFunctor>
    createOptimizer(std::shared_ptr<qrnsg::IFactory> factory,
                    std::shared_ptr<qrn::IDocument> document) override;
    std::shared_ptr<ICanvas> createPrintCanvas(std::shared_ptr<IRenderContext> context,
                                               std::shared_ptr<qrn::IDocument> document) override;

    // The library's own factory; null when the library was not valid.
    ICanvasFactory* factory() const { return m_factory; }

private:
    void release();

    std::shared_ptr<qrn::DLLFuncPtrHelper<void>> m_library;
    ICanvasFactory* m_factory;
    std::shared_ptr<void> m_reserved; // empty; released with the helper
};

} // namespace qrngl
