#pragma once

#include "qrnmath/Tuple.h"
#include "qrnmath/qrnmath_export.h"

namespace qrnmath {

// Unit quaternions as Tuple<float, 4> in the order x, y, z, w.
class QRNMATH_EXPORT QuatUtils {
public:
    static Vec4 identity();
    static Vec4 fromAxisAngle(const Vec3& axis, float angle); // angle in radians
    // False for the identity (no axis; gives x and 0); angle in [0, pi].
    static bool toAxisAngle(const Vec4& q, Vec3& axis, float& angle);
    static Vec4 multiply(const Vec4& a, const Vec4& b); // a * b: b is applied first
    static Vec4 conjugate(const Vec4& q);
    static Vec4 normalize(const Vec4& q); // a zero quaternion gives the identity
    static Vec3 rotate(const Vec4& q, const Vec3& v);
    static Mat4 toMatrix(const Vec4& q);
    static Vec4 fromMatrix(const Mat4& m); // rotation part only
    // Shortest-arc interpolation; t in [0, 1].
    static Vec4 slerp(const Vec4& a, const Vec4& b, float t);
    // The shortest rotation that turns direction from onto direction to.
    static Vec4 fromTwoVectors(const Vec3& from, const Vec3& to);
    // The angle in radians between two rotations.
    static float angleBetween(const Vec4& a, const Vec4& b);

    // The camera's forms: angles in degrees, as the view tools give them.
    static Vec4 create(const Vec3& axis, float angleDegrees);
    static Vec4 create(const Mat4& rotation); // rotation part only, as fromMatrix
    // That share of q's rotation, starting from the identity, about q's axis the short way
    // round: applying interpolate(q, 1/n) n times turns as far as q.
    static Vec4 interpolate(const Vec4& q, float fraction);
};

} // namespace qrnmath
