#include "qrngl/frame/SCRenderInfra.h"

namespace qrngl {

SCRenderInfra::SCRenderInfra() : qrnsg::Schema(qrnsg::SCHEMA_RENDER_INFRA) {}

SCRenderInfra::SCRenderInfra(const SCRenderInfra& other) = default;

SCRenderInfra& SCRenderInfra::operator=(const SCRenderInfra& other) = default;

SCRenderInfra::~SCRenderInfra() = default;

short SCRenderInfra::type() const {
    return qrnsg::Schema::type();
}

std::shared_ptr<qrnsg::Schema> SCRenderInfra::clone() const {
    return std::make_shared<SCRenderInfra>(*this);
}

void SCRenderInfra::clear() {
    slots.fill(nullptr);
}

} // namespace qrngl
