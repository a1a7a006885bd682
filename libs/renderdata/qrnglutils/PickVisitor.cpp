#include "qrnglutils/PickVisitor.h"

namespace qrnglutils {

PickVisitor::PickVisitor(const qrnsg::SCSceneRT& rt, const qrnsg::SCSceneTopo* topology,
                         const qrngl::SCStripRenderer& strips)
    : m_rt(rt), m_topology(topology), m_strips(strips) {
    const std::size_t parts = topology ? topology->parts.size() : 0;
    m_ranges.resize(parts);
    m_faces.resize(parts);
    m_gathered.assign(parts, false);
}

const std::vector<qrngl::IStripEntry::Range>&
PickVisitor::faceRanges(int part, int slot, const std::vector<int>** faces) const {
    static const std::vector<qrngl::IStripEntry::Range> none;
    static const std::vector<int> noFaces;
    *faces = &noFaces;
    if (!m_topology || part < 0 || static_cast<std::size_t>(part) >= m_ranges.size() || slot < 0)
        return none;
    const auto p = static_cast<std::size_t>(part);
    if (!m_gathered[p]) {
        m_gathered[p] = true;
        const auto& entry = m_topology->parts[p];
        m_ranges[p].resize(entry.meshes.size());
        m_faces[p].resize(entry.meshes.size());
        for (std::size_t f = 0; f < entry.entities.faces.size(); ++f) {
            const auto& face = entry.entities.faces[f];
            if (face.mesh < 0 || static_cast<std::size_t>(face.mesh) >= entry.meshes.size())
                continue;
            m_ranges[p][static_cast<std::size_t>(face.mesh)].push_back(
                {face.firstTriangle, face.triangleCount});
            m_faces[p][static_cast<std::size_t>(face.mesh)].push_back(static_cast<int>(f));
        }
    }
    if (static_cast<std::size_t>(slot) >= m_ranges[p].size())
        return none;
    *faces = &m_faces[p][static_cast<std::size_t>(slot)];
    return m_ranges[p][static_cast<std::size_t>(slot)];
}

} // namespace qrnglutils
