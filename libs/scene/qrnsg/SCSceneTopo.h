#pragma once

#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <string>
#include <vector>

namespace qrnsg {

// The model's structure: its nodes (assemblies and placed parts), each with its parent and
// the primitives it places, parents before children.
class QRNSG_EXPORT SCSceneTopo : public Schema {
public:
    struct Node {
        std::wstring name;
        int parent = -1;              // index into nodes; -1 for a root
        std::vector<int> meshIds;     // primitive ids of the run-time component
        std::vector<int> polylineIds; // likewise
    };

    SCSceneTopo();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;

    bool empty() const { return nodes.empty(); }

    std::vector<Node> nodes;
};

} // namespace qrnsg
