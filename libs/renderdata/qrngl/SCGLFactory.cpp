#include "qrngl/SCGLFactory.h"

#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"

namespace qrngl {

SCGLFactory::SCGLFactory(std::shared_ptr<qrnsg::IFactory> next) : m_next(std::move(next)) {}

std::shared_ptr<qrnsg::Schema> SCGLFactory::create(short type) {
    switch (type) {
    case qrnsg::SCHEMA_RENDERER:
        return std::make_shared<SCRenderer>();
    case qrnsg::SCHEMA_STRIP_RENDERER:
        return std::make_shared<SCStripRenderer>();
    default:
        return m_next ? m_next->create(type) : nullptr;
    }
}

} // namespace qrngl
