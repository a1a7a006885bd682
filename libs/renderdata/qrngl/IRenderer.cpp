#include "qrngl/IRenderer.h"

namespace qrngl {

IRenderer::~IRenderer() = default;

short IRenderer::order() const {
    return 0;
}

} // namespace qrngl
