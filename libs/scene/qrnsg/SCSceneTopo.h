#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/EntityNames.h"
#include "qrnsg/PartEntities.h"
#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace qrnsg {

// The model's structure: its nodes (assemblies and placed parts), each with its parent and
// the primitives it places, parents before children; the parts with their entities; and the
// names that picks return for those entities.
class QRNSG_EXPORT SCSceneTopo : public Schema {
public:
    struct Part {
        std::wstring name;
        std::vector<int> meshes; // drawable index of each of the part's meshes
        int polyline = -1;       // drawable index of its edges
        int points = -1;         // drawable index of its vertices
        PartEntities entities;
    };
    struct Node {
        std::wstring name;
        int parent = -1;              // index into nodes; -1 for a root
        int part = -1;                // index into parts; -1 for an assembly
        std::vector<int> meshIds;     // primitive ids of the run-time component, part order
        std::vector<int> polylineIds; // likewise
        std::vector<int> pointIds;    // likewise
        // Annotations (PMI lines and texts) on the node's part: in model coordinates, they
        // move as the node moves from where it was read.
        std::vector<int> pmiPolylineIds;
        std::vector<int> pmiTextIds;
        // Its placement in its parent now, and as the file placed it (column-major).
        qrnmath::Mat4 local{1.f, 0.f, 0.f, 0.f, 0.f, 1.f, 0.f, 0.f,
                            0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 0.f, 1.f};
        qrnmath::Mat4 initial = local;
    };
    // The node that places a primitive and, for a mesh, its place among the part's meshes.
    struct Owner {
        int node = -1;
        int slot = 0;
    };

    SCSceneTopo();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;

    bool empty() const { return nodes.empty(); }

    // Rebuilds the owner table and the entity names from nodes and parts; call after changing
    // either.
    void index();
    const Owner* owner(int primitiveId) const;
    const Part* partOf(int node) const;
    unsigned name(int node, unsigned kind, int index) const {
        return m_names.name(node, kind, index);
    }
    EntityNames::Entity resolve(unsigned name) const { return m_names.resolve(name); }

    std::vector<Node> nodes;
    std::vector<Part> parts;

private:
    std::unordered_map<int, Owner> m_owners;
    EntityNames m_names;
};

} // namespace qrnsg
