#include "qrngl/SCNodeClipData.h"

namespace qrngl {

SCNodeClipData::SCNodeClipData() : qrnsg::Schema(qrnsg::SCHEMA_NODE_CLIP_DATA) {}

std::shared_ptr<qrnsg::Schema> SCNodeClipData::clone() const {
    return std::make_shared<SCNodeClipData>(*this);
}

void SCNodeClipData::clear() {
    *this = SCNodeClipData();
}

} // namespace qrngl
