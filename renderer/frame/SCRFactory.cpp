#include "qrngl/frame/SCRFactory.h"

#include "qrngl/frame/SCRenderInfra.h"

namespace qrnglr {

SCRFactory::SCRFactory(std::shared_ptr<qrnsg::IFactory> next) : m_next(std::move(next)) {}

SCRFactory::~SCRFactory() = default;

std::shared_ptr<qrnsg::Schema> SCRFactory::create(short type) {
    if (type == qrnsg::SCHEMA_RENDER_INFRA)
        return std::make_shared<qrngl::SCRenderInfra>();
    // A chain must end in a factory that answers every type.
    return m_next->create(type);
}

std::shared_ptr<qrnsg::IFactory> createFactory(std::shared_ptr<qrnsg::IFactory> next) {
    return std::make_shared<SCRFactory>(std::move(next));
}

} // namespace qrnglr
