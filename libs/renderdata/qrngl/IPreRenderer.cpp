#include "qrngl/IPreRenderer.h"

namespace qrngl {

IPreRenderer::~IPreRenderer() = default;

bool gtorder::operator()(const std::shared_ptr<IPreRenderer>& a,
                         const std::shared_ptr<IPreRenderer>& b) const {
    return a->order() > b->order();
}

} // namespace qrngl
