#include "qrngl/frame/Viewport.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"

namespace qrngl {

void Viewport::resize(qrn::IDocument& document, unsigned int width, unsigned int height) {
    if (width == 0 || height == 0)
        return;
    auto renderer =
        std::dynamic_pointer_cast<SCRenderer>(document.getSchema(qrnsg::SCHEMA_RENDERER));
    if (!renderer)
        return;
    glViewport(0, 0, static_cast<GLsizei>(width), static_cast<GLsizei>(height));
    CameraHelper::setViewport(width, height, renderer->camera);
}

} // namespace qrngl
