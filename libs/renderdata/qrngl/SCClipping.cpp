#include "qrngl/SCClipping.h"

namespace qrngl {

SCClipping::SCClipping() : qrnsg::Schema(qrnsg::SCHEMA_CLIPPING) {}

std::shared_ptr<qrnsg::Schema> SCClipping::clone() const {
    auto copy = std::make_shared<SCClipping>(*this);
    for (auto& data : copy->planeClipData)
        if (data)
            data = std::static_pointer_cast<SCPlaneClipData>(data->clone());
    return copy;
}

void SCClipping::clear() {
    auto keptProfiler = profiler;
    *this = SCClipping();
    profiler = keptProfiler;
}

} // namespace qrngl
