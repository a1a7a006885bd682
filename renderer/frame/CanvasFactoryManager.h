#pragma once

#include "qrn/IDocument.h"
#include "qrngl/ICanvasFactory.h"
#include "qrngl/qrngl_export.h"

#include <memory>
#include <vector>

namespace qrngl {

// The host's canvas factories in the order they were added; the first that can draw a
// document is the one that draws it.
class QRNGL_EXPORT CanvasFactoryManager {
public:
    using Factories = std::vector<std::shared_ptr<ICanvasFactory>>;
    using iterator = Factories::iterator;
    using const_iterator = Factories::const_iterator;

    void push_back(const std::shared_ptr<ICanvasFactory>& factory);
    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;
    iterator erase(iterator position);

    // The first factory whose canRender accepts the document; empty when none does.
    std::shared_ptr<ICanvasFactory> get(std::shared_ptr<qrn::IDocument> document) const;

private:
    Factories m_factories;
};

} // namespace qrngl
