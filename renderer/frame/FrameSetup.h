#pragma once

// Pieces the canvases share; not part of the library's interface.

#include "qrn/IDocument.h"

#include <memory>

namespace qrngl {

class SCRenderer;

class FrameSetup {
public:
    // The component of that number cast to its class; empty when absent or of another class.
    template <class T>
    static std::shared_ptr<T> fetch(qrn::IDocument& document, short type) {
        return std::dynamic_pointer_cast<T>(document.getSchema(type));
    }
    // Viewport and camera for a new window size; nothing for a zero width or height.
    static void resize(qrn::IDocument& document, unsigned int width, unsigned int height);
    // Clears to the renderer's background and switches on the state every frame draws with.
    static void clearAndEnable(const SCRenderer& renderer);
};

} // namespace qrngl
