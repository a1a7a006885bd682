#pragma once

#include "qrngl/frame/CanvasFactoryManager.h"
#include "qrngl/qrngl_export.h"

#include <memory>
#include <string>

namespace qrngl {

// Loads a renderer library by path and appends its factory to the list; a path that is not
// a library, or a library without "create" or "destroy", is skipped without a word.
class QRNGL_EXPORT CanvasFactoryCreator {
public:
    explicit CanvasFactoryCreator(std::shared_ptr<CanvasFactoryManager> manager);
    void operator()(const std::wstring& libraryPath);

private:
    std::shared_ptr<CanvasFactoryManager> m_manager;
};

} // namespace qrngl
