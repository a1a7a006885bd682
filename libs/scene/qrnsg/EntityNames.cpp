#include "qrnsg/EntityNames.h"

namespace qrnsg {

bool EntityNames::assign(const std::vector<Counts>& perNode) {
    m_counts = perNode;
    m_starts.assign(perNode.size(), Counts{});
    for (auto& owners : m_blockOwner)
        owners.clear();
    bool complete = true;
    for (unsigned kind = POINT; kind <= FACE; ++kind) {
        auto& owners = m_blockOwner[kind];
        // Numbers start at one block so that no entity is ever named 0.
        owners.push_back(-1);
        for (std::size_t node = 0; node < perNode.size(); ++node) {
            const unsigned count = perNode[node][kind];
            if (count == 0)
                continue;
            const std::size_t blocks = ((count - 1) >> BLOCK_SHIFT) + 1;
            if ((owners.size() + blocks) << BLOCK_SHIFT > NUMBER_MASK + std::size_t(1)) {
                m_counts[node][kind] = 0;
                complete = false;
                continue;
            }
            m_starts[node][kind] = static_cast<unsigned>(owners.size() << BLOCK_SHIFT);
            owners.insert(owners.end(), blocks, static_cast<int>(node));
        }
    }
    return complete;
}

unsigned EntityNames::name(int node, unsigned kind, int index) const {
    if (node < 0 || static_cast<std::size_t>(node) >= m_counts.size() || kind < POINT ||
        kind > FACE || index < 0)
        return 0;
    const auto n = static_cast<std::size_t>(node);
    if (static_cast<unsigned>(index) >= m_counts[n][kind])
        return 0;
    return (kind << KIND_SHIFT) | (m_starts[n][kind] + static_cast<unsigned>(index));
}

EntityNames::Entity EntityNames::resolve(unsigned name) const {
    Entity entity;
    const unsigned kind = kindOf(name);
    const unsigned number = name & NUMBER_MASK;
    if (kind == EDGE_LIKE || kind == TOOL) {
        entity.kind = kind;
        entity.index = static_cast<int>(number);
        return entity;
    }
    if (kind == PART) {
        if (number < m_counts.size()) {
            entity.kind = kind;
            entity.node = static_cast<int>(number);
        }
        return entity;
    }
    if (kind < POINT || kind > FACE)
        return entity;
    const auto& owners = m_blockOwner[kind];
    const std::size_t block = number >> BLOCK_SHIFT;
    if (block >= owners.size() || owners[block] < 0)
        return entity;
    const int node = owners[block];
    const unsigned index = number - m_starts[static_cast<std::size_t>(node)][kind];
    if (index >= m_counts[static_cast<std::size_t>(node)][kind])
        return entity;
    entity.kind = kind;
    entity.node = node;
    entity.index = static_cast<int>(index);
    return entity;
}

} // namespace qrnsg
