#include "qrnsgutils/ExplosionNode.h"

#include "qrnmath/MatrixUtils.h"

#include <cmath>

namespace qrnsgutils {

ExplosionNode::ExplosionNode(int node, const qrnsg::BBox& box)
    : localTransform(qrnmath::MatrixUtils::identity()), m_node(node), m_box(box),
      m_centre(box.isEmpty() ? qrnmath::Vec3(0.0f, 0.0f, 0.0f) : box.center()) {}

float ExplosionNode::getMaxDistInDirection(const qrnmath::Vec3& direction) const {
    if (m_box.isEmpty())
        return 0.0f;
    const qrnmath::Vec3 size = m_box.max() - m_box.min();
    return std::fabs(direction[0]) * size[0] + std::fabs(direction[1]) * size[1] +
           std::fabs(direction[2]) * size[2];
}

float ExplosionNode::getBoxDistance() const {
    return m_box.diagonal();
}

} // namespace qrnsgutils
