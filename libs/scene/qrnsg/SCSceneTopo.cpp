#include "qrnsg/SCSceneTopo.h"

namespace qrnsg {

SCSceneTopo::SCSceneTopo() : Schema(SCHEMA_SCENE_TOPO) {}

std::shared_ptr<Schema> SCSceneTopo::clone() const {
    return std::make_shared<SCSceneTopo>(*this);
}

void SCSceneTopo::clear() {
    nodes.clear();
    parts.clear();
    index();
}

void SCSceneTopo::index() {
    m_owners.clear();
    std::vector<EntityNames::Counts> counts(nodes.size(), EntityNames::Counts{});
    for (std::size_t n = 0; n < nodes.size(); ++n) {
        const Node& node = nodes[n];
        const int self = static_cast<int>(n);
        for (std::size_t m = 0; m < node.meshIds.size(); ++m)
            m_owners[node.meshIds[m]] = Owner{self, static_cast<int>(m)};
        for (int id : node.polylineIds)
            m_owners[id] = Owner{self, 0};
        for (int id : node.pointIds)
            m_owners[id] = Owner{self, 0};
        if (const Part* part = partOf(self)) {
            counts[n][EntityNames::FACE] = static_cast<unsigned>(part->entities.faces.size());
            counts[n][EntityNames::EDGE] = static_cast<unsigned>(part->entities.edges.size());
            counts[n][EntityNames::POINT] = static_cast<unsigned>(part->entities.vertices.size());
        }
    }
    m_names.assign(counts);
}

const SCSceneTopo::Owner* SCSceneTopo::owner(int primitiveId) const {
    auto found = m_owners.find(primitiveId);
    return found == m_owners.end() ? nullptr : &found->second;
}

const SCSceneTopo::Part* SCSceneTopo::partOf(int node) const {
    if (node < 0 || static_cast<std::size_t>(node) >= nodes.size())
        return nullptr;
    const int part = nodes[static_cast<std::size_t>(node)].part;
    if (part < 0 || static_cast<std::size_t>(part) >= parts.size())
        return nullptr;
    return &parts[static_cast<std::size_t>(part)];
}

} // namespace qrnsg
