#pragma once

#include "qrnmath/Ray.h"
#include "qrnmath/Tuple.h"
#include "qrnmath/qrnmath_export.h"

namespace qrnmath {

// Planes as Tuple<float, 4> (a, b, c, d): the points p with a*p.x + b*p.y + c*p.z + d = 0,
// with (a, b, c) of unit length when made here. The same layout glClipPlane takes.
class QRNMATH_EXPORT PlaneUtils {
public:
    static Vec4 fromPointNormal(const Vec3& point, const Vec3& normal);
    // False, with plane left unchanged, when the three points are collinear; the normal
    // faces the side from which a, b, c run counter-clockwise.
    static bool fromPoints(const Vec3& a, const Vec3& b, const Vec3& c, Vec4& plane);
    static Vec3 normal(const Vec4& plane);
    static Vec3 pointOn(const Vec4& plane); // the point of the plane nearest the origin
    static float signedDistance(const Vec4& plane, const Vec3& p);
    static Vec3 project(const Vec4& plane, const Vec3& p);
    // The same plane facing the other way.
    static Vec4 flip(const Vec4& plane);
    // False when the ray runs parallel to the plane; t may be negative (behind the origin).
    static bool intersect(const Vec4& plane, const Ray& ray, float& t);
    // False when the segment does not cross the plane or lies in it; an end on the plane
    // counts as a crossing.
    static bool intersectSegment(const Vec4& plane, const Vec3& a, const Vec3& b, Vec3& hit);
};

} // namespace qrnmath
