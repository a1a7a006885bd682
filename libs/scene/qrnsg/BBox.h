#pragma once

#include "qrnmath/Tuple.h"

#include <algorithm>
#include <limits>

namespace qrnsg {

// Axis-aligned box; empty until the first point is added.
class BBox {
public:
    BBox() : m_min(std::numeric_limits<float>::max()), m_max(-std::numeric_limits<float>::max()) {}
    BBox(const qrnmath::Vec3& a, const qrnmath::Vec3& b) : BBox() {
        add(a);
        add(b);
    }

    bool isEmpty() const { return m_min[0] > m_max[0]; }
    void add(const qrnmath::Vec3& p) {
        for (int i = 0; i < 3; ++i) {
            m_min[i] = std::min(m_min[i], p[i]);
            m_max[i] = std::max(m_max[i], p[i]);
        }
    }
    void add(const BBox& b) {
        if (!b.isEmpty()) {
            add(b.m_min);
            add(b.m_max);
        }
    }
    const qrnmath::Vec3& min() const { return m_min; }
    const qrnmath::Vec3& max() const { return m_max; }
    qrnmath::Vec3 center() const { return (m_min + m_max) * 0.5f; }
    float diagonal() const { return isEmpty() ? 0.0f : m_min.distance(m_max); }
    // The box of this one's eight corners moved by a column-major affine placement; empty
    // stays empty.
    BBox transformed(const qrnmath::Mat4& m) const {
        BBox out;
        if (isEmpty())
            return out;
        for (int c = 0; c < 8; ++c) {
            const float p[3] = {(c & 1) ? m_max[0] : m_min[0], (c & 2) ? m_max[1] : m_min[1],
                                (c & 4) ? m_max[2] : m_min[2]};
            qrnmath::Vec3 q;
            for (int r = 0; r < 3; ++r)
                q[r] = m[r] * p[0] + m[4 + r] * p[1] + m[8 + r] * p[2] + m[12 + r];
            out.add(q);
        }
        return out;
    }

private:
    qrnmath::Vec3 m_min;
    qrnmath::Vec3 m_max;
};

} // namespace qrnsg
