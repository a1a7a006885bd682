#include "qrngl/IPostRenderer.h"

namespace qrngl {

IPostRenderer::~IPostRenderer() = default;

short IPostRenderer::order() const {
    return 0;
}

bool ltorder::operator()(const std::shared_ptr<IPostRenderer>& a,
                         const std::shared_ptr<IPostRenderer>& b) const {
    return a->order() < b->order();
}

} // namespace qrngl
