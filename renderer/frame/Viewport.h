#pragma once

#include "qrn/IDocument.h"
#include "qrngl/qrngl_export.h"

namespace qrngl {

// The window size a document is drawn at: the OpenGL viewport and the camera's.
class QRNGL_EXPORT Viewport {
public:
    Viewport() = delete;
    // Sets both for a new window size; nothing for a zero width or height (a minimised
    // window) or a document without a renderer component.
    static void resize(qrn::IDocument& document, unsigned int width, unsigned int height);
};

} // namespace qrngl
