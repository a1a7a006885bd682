#include "qrngl/frame/CanvasFactoryManager.h"

namespace qrngl {

void CanvasFactoryManager::push_back(const std::shared_ptr<ICanvasFactory>& factory) {
    m_factories.push_back(factory);
}

CanvasFactoryManager::iterator CanvasFactoryManager::begin() {
    return m_factories.begin();
}

CanvasFactoryManager::iterator CanvasFactoryManager::end() {
    return m_factories.end();
}

CanvasFactoryManager::const_iterator CanvasFactoryManager::begin() const {
    return m_factories.begin();
}

CanvasFactoryManager::const_iterator CanvasFactoryManager::end() const {
    return m_factories.end();
}

CanvasFactoryManager::iterator CanvasFactoryManager::erase(iterator position) {
    return m_factories.erase(position);
}

std::shared_ptr<ICanvasFactory>
CanvasFactoryManager::get(std::shared_ptr<qrn::IDocument> document) const {
    for (const auto& factory : m_factories)
        if (factory && factory->canRender(document))
            return factory;
    return nullptr;
}

} // namespace qrngl
