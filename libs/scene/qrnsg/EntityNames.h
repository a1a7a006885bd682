#pragma once

#include "qrnsg/qrnsg_export.h"

#include <array>
#include <vector>

namespace qrnsg {

// The one 32-bit name of every entity a pick can return, used alike as a selection-mode name
// and as a colour id. The top four bits are the kind; the low 28 bits number the entity:
// each placed part (a node) owns a run of numbers per kind, aligned to blocks of 256, so
// that a block table gives the node back in constant time. Name 0 is nothing (the cleared
// colour buffer reads 0).
//
// Kinds: 2 a vertex, 3 an edge, 4 a face, 1 an edge-like polyline that belongs to no part
// (a PMI item's lines), whose low bits are its primitive id, 5 a whole placed part,
// whose low bits are its node, and 6 a tool's own drawable (a clip plane, a profile
// segment), numbered by the pick pass that drew it.
class QRNSG_EXPORT EntityNames {
public:
    enum Kind : unsigned {
        NONE = 0,
        EDGE_LIKE = 1,
        POINT = 2,
        EDGE = 3,
        FACE = 4,
        PART = 5,
        TOOL = 6
    };
    enum : unsigned { KIND_SHIFT = 28, NUMBER_MASK = 0x0FFFFFFFu, BLOCK_SHIFT = 8 };
    using Counts = std::array<unsigned, 5>; // entities per kind, indexed by kind

    struct Entity {
        unsigned kind = NONE;
        int node = -1;  // the placed part's node; -1 for an edge-like entity
        int index = -1; // within the part; the primitive id for an edge-like entity; -1 for
                        // a whole part
        bool valid() const { return kind != NONE; }
    };

    static unsigned kindOf(unsigned name) { return name >> KIND_SHIFT; }
    static unsigned edgeLike(int primitiveId) {
        return (EDGE_LIKE << KIND_SHIFT) | (static_cast<unsigned>(primitiveId) & NUMBER_MASK);
    }
    static unsigned tool(unsigned number) { return (TOOL << KIND_SHIFT) | (number & NUMBER_MASK); }
    static unsigned part(int node) {
        return (PART << KIND_SHIFT) | (static_cast<unsigned>(node) & NUMBER_MASK);
    }

    // Numbers the entities of every node (counts per kind; zero for a node without a part).
    // Returns false when a kind runs out of numbers: the nodes past that point get name 0.
    bool assign(const std::vector<Counts>& perNode);
    // The name of a node's entity; 0 when it has none.
    unsigned name(int node, unsigned kind, int index) const;
    Entity resolve(unsigned name) const;

private:
    std::vector<Counts> m_counts;
    std::vector<Counts> m_starts;                 // per node, per kind
    std::array<std::vector<int>, 5> m_blockOwner; // per kind, per block: the node
};

} // namespace qrnsg
