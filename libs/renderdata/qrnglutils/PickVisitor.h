#pragma once

#include "qrngl/IStripEntry.h"
#include "qrngl/SCStripRenderer.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/IPairVisitor.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"

#include <vector>

namespace qrnglutils {

// What the pair pickers of one pick pass draw from: the run-time state, the topology that
// names the entities, the drawables, and the entity-type mask of the pass.
class QRNGLUTILS_EXPORT PickVisitor : public qrnsg::IPairVisitor {
public:
    PickVisitor(const qrnsg::SCSceneRT& rt, const qrnsg::SCSceneTopo* topology,
                const qrngl::SCStripRenderer& strips);

    void setEntityType(unsigned short type) override { m_type = type; }
    unsigned short entityType() const override { return m_type; }

    const qrnsg::SCSceneRT& rt() const { return m_rt; }
    const qrnsg::SCSceneTopo* topology() const { return m_topology; }
    const qrngl::SCStripRenderer& strips() const { return m_strips; }
    // The face ranges of a part's mesh, by the mesh's place in the part, and their indices.
    const std::vector<qrngl::IStripEntry::Range>& faceRanges(int part, int slot,
                                                             const std::vector<int>** faces) const;

private:
    const qrnsg::SCSceneRT& m_rt;
    const qrnsg::SCSceneTopo* m_topology;
    const qrngl::SCStripRenderer& m_strips;
    unsigned short m_type = 0;
    // Per part, per mesh: the ranges and face indices, gathered once per pass.
    mutable std::vector<std::vector<std::vector<qrngl::IStripEntry::Range>>> m_ranges;
    mutable std::vector<std::vector<std::vector<int>>> m_faces;
    mutable std::vector<bool> m_gathered;
};

} // namespace qrnglutils
