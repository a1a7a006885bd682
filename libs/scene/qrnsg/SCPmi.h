#pragma once

#include "qrnsg/Schema.h"
#include "qrnsg/Section.h"
#include "qrnsg/qrnsg_export.h"

#include <memory>
#include <string>
#include <vector>

namespace qrnsg {

// Product manufacturing information: each item is a presentation made of scene polylines,
// texts and filled meshes (by primitive id), with its name and kind as the file gave them and
// what it says in words.
class QRNSG_EXPORT SCPmi : public Schema {
public:
    enum Kind { DIMENSION, TOLERANCE, DATUM, NOTE, OTHER };
    struct Item {
        std::wstring name;
        Kind kind = OTHER;
        std::vector<int> polylineIds;
        std::vector<int> textIds;
        std::vector<int> meshIds;
        std::wstring description;
        std::vector<unsigned int> faces; // the entity names of the faces it refers to
    };
    // The item a primitive belongs to; -1 for none.
    int itemOf(int primitiveId) const;

    SCPmi();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;

    std::vector<Item> items;
    // The section views the file defines, in its order.
    std::vector<std::shared_ptr<Section>> sections;
};

} // namespace qrnsg
