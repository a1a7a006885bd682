#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <memory>

namespace qrnsgutils {

class ExplosionGraph;

// One node of an assembly level as an explosion sees it: its box in the model, where it goes,
// and the level below it.
class QRNSGUTILS_EXPORT ExplosionNode {
public:
    ExplosionNode(int node, const qrnsg::BBox& box);

    int node() const { return m_node; }
    const qrnsg::BBox& box() const { return m_box; }
    const qrnmath::Vec3& centre() const { return m_centre; }
    // The box's extent along a unit direction.
    float getMaxDistInDirection(const qrnmath::Vec3& direction) const;
    // The box's diagonal.
    float getBoxDistance() const;

    // Where the node stands while its level is laid out (identity when not exploded).
    qrnmath::Mat4 localTransform;
    // The level below: the node's own children; empty for a part.
    std::shared_ptr<ExplosionGraph> child;
    // What the explosion recorded: the node's translation in the model, and its distance
    // along the level's direction from the level's reference.
    qrnmath::Vec3 translation{0.0f, 0.0f, 0.0f};
    float distance = 0.0f;

private:
    int m_node;
    qrnsg::BBox m_box;
    qrnmath::Vec3 m_centre;
};

} // namespace qrnsgutils
