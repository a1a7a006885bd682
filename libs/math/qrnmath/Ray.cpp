#include "qrnmath/Ray.h"

#include <algorithm>
#include <cmath>

namespace qrnmath {

Ray::Ray() : m_origin(), m_direction(0.0f, 0.0f, -1.0f) {}

Ray::Ray(const Vec3& origin, const Vec3& direction)
    : m_origin(origin), m_direction(direction.normalized()) {}

float Ray::closestParameter(const Vec3& p) const {
    return (p - m_origin).dot(m_direction);
}

float Ray::distance(const Vec3& p) const {
    float t = std::max(0.0f, closestParameter(p));
    return p.distance(pointAt(t));
}

bool Ray::closestParameters(const Ray& other, float& t, float& s) const {
    // Double precision: the determinant cancels badly for nearly parallel lines far from 0.
    Vec3d d1(m_direction[0], m_direction[1], m_direction[2]);
    Vec3d d2(other.m_direction[0], other.m_direction[1], other.m_direction[2]);
    Vec3d w(m_origin[0] - other.m_origin[0], m_origin[1] - other.m_origin[1],
            m_origin[2] - other.m_origin[2]);
    double a = d1.dot(d1), b = d1.dot(d2), c = d2.dot(d2);
    double d = d1.dot(w), e = d2.dot(w);
    double denom = a * c - b * b;
    if (denom <= 1e-10 * a * c || a == 0.0 || c == 0.0)
        return false;
    t = static_cast<float>((b * e - c * d) / denom);
    s = static_cast<float>((a * e - b * d) / denom);
    return true;
}

} // namespace qrnmath
