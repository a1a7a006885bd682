#pragma once

#include "qrnsg/Schema.h"
#include "qrnsg/Section.h"
#include "qrnsg/qrnsg_export.h"

#include <memory>
#include <string>
#include <vector>

namespace qrnsg {

// Product manufacturing information: each item is a presentation made of scene polylines and
// texts (by primitive id), with its name and kind as the file gave them.
class QRNSG_EXPORT SCPmi : public Schema {
public:
    enum Kind { DIMENSION, TOLERANCE, DATUM, NOTE, OTHER };
    struct Item {
        std::wstring name;
        Kind kind = OTHER;
        std::vector<int> polylineIds;
        std::vector<int> textIds;
    };

    SCPmi();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;

    std::vector<Item> items;
    // The section views the file defines, in its order.
    std::vector<std::shared_ptr<Section>> sections;
};

} // namespace qrnsg
