#pragma once

#include "qrnmath/Tuple.h"
#include "qrnmath/qrnmath_export.h"

namespace qrnmath {

// A half-line: an origin and a unit direction.
class QRNMATH_EXPORT Ray {
public:
    Ray(); // from the origin along -Z, the eye's view direction
    Ray(const Vec3& origin, const Vec3& direction); // direction is normalised

    const Vec3& origin() const { return m_origin; }
    const Vec3& direction() const { return m_direction; }
    Vec3 pointAt(float t) const { return m_origin + m_direction * t; }

    // Parameter of the point of the ray's line nearest p.
    float closestParameter(const Vec3& p) const;
    // Distance to the half-line: points behind the origin measure to the origin.
    float distance(const Vec3& p) const;
    // Parameters on this ray and on other of the nearest points of the two lines;
    // false, with t and s left unchanged, when they are parallel.
    bool closestParameters(const Ray& other, float& t, float& s) const;

private:
    Vec3 m_origin;
    Vec3 m_direction;
};

} // namespace qrnmath
