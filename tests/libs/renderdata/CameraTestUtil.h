#pragma once

#include "qrngl/Camera.h"
#include "qrnmath/MatrixUtils.h"

#include <cmath>
#include <vector>

namespace qrngltest {

inline qrnmath::Vec3 toNdc(const qrngl::Camera& c, const qrnmath::Vec3& p) {
    using M = qrnmath::MatrixUtils;
    return M::transformPoint(M::multiply(c.getProjectionMatrix(), c.getViewMatrix()), p);
}

// Points spread over a sphere's surface, poles included.
inline std::vector<qrnmath::Vec3> spherePoints(const qrnmath::Vec3& center, float radius) {
    std::vector<qrnmath::Vec3> out;
    const float step = 3.14159265f / 24.0f;
    for (int i = 0; i <= 24; ++i)
        for (int j = 0; j < 48; ++j) {
            const float t = step * static_cast<float>(i), p = step * static_cast<float>(j);
            out.push_back(center + qrnmath::Vec3(std::sin(t) * std::cos(p), std::cos(t),
                                                 std::sin(t) * std::sin(p)) *
                                       radius);
        }
    return out;
}

} // namespace qrngltest
