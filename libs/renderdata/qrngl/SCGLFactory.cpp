#include "qrngl/SCGLFactory.h"

#include "qrngl/SCClipping.h"
#include "qrngl/SCListRenderer.h"
#include "qrngl/SCMarkupView.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrngl/SCTriad.h"

namespace qrngl {

SCGLFactory::SCGLFactory(std::shared_ptr<qrnsg::IFactory> next) : m_next(std::move(next)) {}

std::shared_ptr<qrnsg::Schema> SCGLFactory::create(short type) {
    switch (type) {
    case qrnsg::SCHEMA_RENDERER:
        return std::make_shared<SCRenderer>();
    case qrnsg::SCHEMA_STRIP_RENDERER:
        return std::make_shared<SCStripRenderer>();
    case qrnsg::SCHEMA_LIST_RENDERER:
        return std::make_shared<SCListRenderer>();
    case qrnsg::SCHEMA_CLIPPING:
        return std::make_shared<SCClipping>();
    case qrnsg::SCHEMA_PLANE_CLIP_DATA:
        return std::make_shared<SCPlaneClipData>();
    case qrnsg::SCHEMA_NODE_CLIP_DATA:
        return std::make_shared<SCNodeClipData>();
    case qrnsg::SCHEMA_MEASURE:
        return std::make_shared<SCMeasure>();
    case qrnsg::SCHEMA_TRIAD:
        return std::make_shared<SCTriad>();
    case qrnsg::SCHEMA_MARKUP_VIEW:
        return std::make_shared<SCMarkupView>();
    default:
        return m_next ? m_next->create(type) : nullptr;
    }
}

} // namespace qrngl
