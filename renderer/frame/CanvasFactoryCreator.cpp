#include "qrngl/frame/CanvasFactoryCreator.h"

#include "qrngl/frame/CanvasFactoryHelper.h"

namespace qrngl {

CanvasFactoryCreator::CanvasFactoryCreator(std::shared_ptr<CanvasFactoryManager> manager)
    : m_manager(std::move(manager)) {}

void CanvasFactoryCreator::operator()(const std::wstring& libraryPath) {
    auto library =
        std::make_shared<qrn::DLLFuncPtrHelper<void>>(libraryPath.c_str(), "create", "destroy");
    if (!library->isValid() || !m_manager)
        return;
    m_manager->push_back(std::make_shared<CanvasFactoryHelper>(library));
}

} // namespace qrngl
