#pragma once

#include "qrngl/SCNodeClipData.h"
#include "qrngldata/qrngldata_export.h"
#include "qrnsg/BBox.h"
#include "qrnsg/Container.h"
#include "qrnsg/Schema.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qrngl {

// The profile of one clip plane: the nodes it cuts, their lines, and the box of each.
class QRNGLDATA_EXPORT SCPlaneClipData : public qrnsg::Schema {
public:
    SCPlaneClipData();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    std::vector<std::int32_t> nodes;
    std::vector<std::shared_ptr<SCNodeClipData>> nodeClipData; // by the same index
    qrnsg::Container<std::int32_t, qrnsg::BBox> bounds;        // by node
};

} // namespace qrngl
