#include "qrngl/frame/CanvasFactoryHelper.h"

namespace qrngl {

CanvasFactoryHelper::CanvasFactoryHelper(std::shared_ptr<qrn::DLLFuncPtrHelper<void>> library)
    : m_library(std::move(library)), m_factory(nullptr) {
    if (m_library && m_library->isValid()) {
        void* object = nullptr;
        m_library->create(object);
        m_factory = static_cast<ICanvasFactory*>(object);
    }
}

// A copy takes a factory object of its own from the library: each helper gives back the one
// it was handed.
CanvasFactoryHelper::CanvasFactoryHelper(const CanvasFactoryHelper& other)
    : CanvasFactoryHelper(other.m_library) {}

CanvasFactoryHelper& CanvasFactoryHelper::operator=(const CanvasFactoryHelper& other) {
    if (this != &other) {
        release();
        m_library = other.m_library;
        if (m_library && m_library->isValid()) {
            void* object = nullptr;
            m_library->create(object);
            m_factory = static_cast<ICanvasFactory*>(object);
        }
    }
    return *this;
}

CanvasFactoryHelper::~CanvasFactoryHelper() {
    release();
}

void CanvasFactoryHelper::release() {
    if (m_library && m_factory) {
        void* object = m_factory;
        m_library->destroy(object);
    }
    m_factory = nullptr;
    m_library.reset();
    m_reserved.reset();
}

bool CanvasFactoryHelper::canRender(std::shared_ptr<qrn::IDocument> document) const {
    return m_factory->canRender(std::move(document));
}

std::shared_ptr<ICanvas>
CanvasFactoryHelper::createCanvas(std::shared_ptr<IRenderContext> context,
                                  std::shared_ptr<qrn::IDocument> document) {
    return m_factory->createCanvas(std::move(context), std::move(document));
}

std::shared_ptr<IPickCanvas>
CanvasFactoryHelper::createPickCanvas(std::shared_ptr<IRenderContext> context,
                                      std::shared_ptr<qrn::IDocument> document) {
    return m_factory->createPickCanvas(std::move(context), std::move(document));
}

std::shared_ptr<qrnsg::IActionFunctor>
CanvasFactoryHelper::createOptimizer(std::shared_ptr<qrnsg::IFactory> factory,
                                     std::shared_ptr<qrn::IDocument> document) {
    return m_factory->createOptimizer(std::move(factory), std::move(document));
}

std::shared_ptr<ICanvas>
CanvasFactoryHelper::createPrintCanvas(std::shared_ptr<IRenderContext> context,
                                       std::shared_ptr<qrn::IDocument> document) {
    return m_factory->createPrintCanvas(std::move(context), std::move(document));
}

} // namespace qrngl
