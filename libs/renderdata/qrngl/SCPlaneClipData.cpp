#include "qrngl/SCPlaneClipData.h"

namespace qrngl {

SCPlaneClipData::SCPlaneClipData() : qrnsg::Schema(qrnsg::SCHEMA_PLANE_CLIP_DATA) {}

std::shared_ptr<qrnsg::Schema> SCPlaneClipData::clone() const {
    auto copy = std::make_shared<SCPlaneClipData>(*this);
    for (auto& data : copy->nodeClipData)
        if (data)
            data = std::static_pointer_cast<SCNodeClipData>(data->clone());
    return copy;
}

void SCPlaneClipData::clear() {
    *this = SCPlaneClipData();
}

} // namespace qrngl
