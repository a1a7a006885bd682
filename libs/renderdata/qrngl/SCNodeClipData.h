#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnsg/Container.h"
#include "qrnsg/Hierarchy.h"
#include "qrnsg/Schema.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace qrngl {

// A run of line primitives in an index array: where it starts and how many indices it has.
struct PrimitiveInfo {
    std::int32_t start = 0;
    std::int32_t count = 0;
};

// The profile lines of one node on one plane.
class QRNGLDATA_EXPORT SCNodeClipData : public qrnsg::Schema {
public:
    SCNodeClipData();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    std::int32_t node = -1;
    std::vector<std::vector<float>> vertexArrays; // x y z per vertex
    std::vector<std::vector<std::int32_t>> indexArrays;
    qrnsg::Container<std::int32_t, PrimitiveInfo> segments;
    // Per segment: its vertex array and index array.
    qrnsg::Container<std::int32_t, std::pair<std::int32_t, std::int32_t>> segmentArrays;
    qrnsg::Hierarchy hierarchy;
};

} // namespace qrngl
