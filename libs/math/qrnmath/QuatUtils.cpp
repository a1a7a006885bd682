#include "qrnmath/QuatUtils.h"

#include <algorithm>
#include <cmath>

namespace qrnmath {

namespace {

Vec3 vectorPart(const Vec4& q) {
    return Vec3(q[0], q[1], q[2]);
}

Vec4 make(const Vec3& v, float w) {
    return Vec4(v[0], v[1], v[2], w);
}

} // namespace

Vec4 QuatUtils::identity() {
    return Vec4(0.0f, 0.0f, 0.0f, 1.0f);
}

Vec4 QuatUtils::fromAxisAngle(const Vec3& axis, float angle) {
    Vec3 a = axis.normalized();
    if (a.lengthSquared() == 0.0f)
        return identity();
    float half = 0.5f * angle;
    return make(a * std::sin(half), std::cos(half));
}

bool QuatUtils::toAxisAngle(const Vec4& q, Vec3& axis, float& angle) {
    Vec4 n = normalize(q);
    // q and -q are the same rotation; the one with w >= 0 gives the angle in [0, pi].
    if (n[3] < 0.0f)
        n = -n;
    Vec3 v = vectorPart(n);
    float s = v.length();
    if (s < 1e-7f) {
        axis = Vec3(1.0f, 0.0f, 0.0f);
        angle = 0.0f;
        return false;
    }
    axis = v / s;
    // atan2 keeps precision for small angles, where acos(w) does not.
    angle = 2.0f * std::atan2(s, n[3]);
    return true;
}

Vec4 QuatUtils::multiply(const Vec4& a, const Vec4& b) {
    Vec3 av = vectorPart(a), bv = vectorPart(b);
    Vec3 v = bv * a[3] + av * b[3] + cross(av, bv);
    return make(v, a[3] * b[3] - av.dot(bv));
}

Vec4 QuatUtils::conjugate(const Vec4& q) {
    return Vec4(-q[0], -q[1], -q[2], q[3]);
}

Vec4 QuatUtils::normalize(const Vec4& q) {
    float l = q.length();
    // A zero quaternion is no rotation at all; treat it as none.
    return l > 0.0f ? q / l : identity();
}

Vec3 QuatUtils::rotate(const Vec4& q, const Vec3& v) {
    // v + 2w (u x v) + 2 u x (u x v), cheaper than two quaternion products.
    Vec3 u = vectorPart(q);
    Vec3 t = cross(u, v) * 2.0f;
    return v + t * q[3] + cross(u, t);
}

Mat4 QuatUtils::toMatrix(const Vec4& q) {
    Vec4 n = normalize(q);
    float x = n[0], y = n[1], z = n[2], w = n[3];
    Mat4 m;
    m[0] = 1.0f - 2.0f * (y * y + z * z);
    m[1] = 2.0f * (x * y + z * w);
    m[2] = 2.0f * (x * z - y * w);
    m[4] = 2.0f * (x * y - z * w);
    m[5] = 1.0f - 2.0f * (x * x + z * z);
    m[6] = 2.0f * (y * z + x * w);
    m[8] = 2.0f * (x * z + y * w);
    m[9] = 2.0f * (y * z - x * w);
    m[10] = 1.0f - 2.0f * (x * x + y * y);
    m[15] = 1.0f;
    return m;
}

Vec4 QuatUtils::fromMatrix(const Mat4& m) {
    // Columns normalised so that a scale in the matrix does not skew the result.
    Vec3 col[3];
    for (int c = 0; c < 3; ++c)
        col[c] = Vec3(m[c * 4], m[c * 4 + 1], m[c * 4 + 2]).normalized();
    auto at = [&col](int r, int c) { return col[c][r]; };
    float m00 = at(0, 0), m11 = at(1, 1), m22 = at(2, 2);
    float trace = m00 + m11 + m22;
    Vec4 q;
    // Branch on the largest diagonal term so the divisor never gets near zero.
    if (trace > 0.0f) {
        float s = 2.0f * std::sqrt(trace + 1.0f);
        q = Vec4((at(2, 1) - at(1, 2)) / s, (at(0, 2) - at(2, 0)) / s, (at(1, 0) - at(0, 1)) / s,
                 0.25f * s);
    } else if (m00 > m11 && m00 > m22) {
        float s = 2.0f * std::sqrt(1.0f + m00 - m11 - m22);
        q = Vec4(0.25f * s, (at(0, 1) + at(1, 0)) / s, (at(0, 2) + at(2, 0)) / s,
                 (at(2, 1) - at(1, 2)) / s);
    } else if (m11 > m22) {
        float s = 2.0f * std::sqrt(1.0f + m11 - m00 - m22);
        q = Vec4((at(0, 1) + at(1, 0)) / s, 0.25f * s, (at(1, 2) + at(2, 1)) / s,
                 (at(0, 2) - at(2, 0)) / s);
    } else {
        float s = 2.0f * std::sqrt(1.0f + m22 - m00 - m11);
        q = Vec4((at(0, 2) + at(2, 0)) / s, (at(1, 2) + at(2, 1)) / s, 0.25f * s,
                 (at(1, 0) - at(0, 1)) / s);
    }
    return normalize(q);
}

Vec4 QuatUtils::slerp(const Vec4& a, const Vec4& b, float t) {
    Vec4 end = b;
    float d = a.dot(b);
    // q and -q are the same rotation; pick the one on a's side for the short way round.
    if (d < 0.0f) {
        end = -end;
        d = -d;
    }
    // Nearly equal: sin(theta) is too small to divide by, and a straight line is exact enough.
    if (d > 0.9995f)
        return normalize(a + (end - a) * t);
    float theta = std::acos(std::min(d, 1.0f));
    float sinTheta = std::sin(theta);
    float wa = std::sin((1.0f - t) * theta) / sinTheta;
    float wb = std::sin(t * theta) / sinTheta;
    return normalize(a * wa + end * wb);
}

Vec4 QuatUtils::fromTwoVectors(const Vec3& from, const Vec3& to) {
    Vec3 f = from.normalized(), t = to.normalized();
    if (f.lengthSquared() == 0.0f || t.lengthSquared() == 0.0f)
        return identity();
    float d = f.dot(t);
    if (d < -0.999999f) {
        // Opposite: any axis perpendicular to from gives a half turn; pick one that is stable.
        Vec3 axis = cross(Vec3(1.0f, 0.0f, 0.0f), f);
        if (axis.lengthSquared() < 1e-6f)
            axis = cross(Vec3(0.0f, 1.0f, 0.0f), f);
        return make(axis.normalized(), 0.0f);
    }
    // Half-angle form: (f x t, 1 + f.t) normalised is the rotation by the angle between them.
    return normalize(make(cross(f, t), 1.0f + d));
}

float QuatUtils::angleBetween(const Vec4& a, const Vec4& b) {
    Vec4 r = multiply(conjugate(normalize(a)), normalize(b));
    // |w| folds q and -q together, so the result is in [0, pi].
    return 2.0f * std::atan2(vectorPart(r).length(), std::abs(r[3]));
}

Vec4 QuatUtils::create(const Vec3& axis, float angleDegrees) {
    const float pi = 3.14159265358979f;
    return fromAxisAngle(axis, angleDegrees * pi / 180.0f);
}

Vec4 QuatUtils::create(const Mat4& rotation) {
    return fromMatrix(rotation);
}

Vec4 QuatUtils::interpolate(const Vec4& q, float fraction) {
    Vec3 axis;
    float angle = 0.0f;
    // Straight from axis and angle rather than slerp's blend: for small rotations the blend
    // drifts from the exact power, and the steps of an animation must add up to q.
    if (!toAxisAngle(q, axis, angle))
        return identity();
    return fromAxisAngle(axis, angle * fraction);
}

} // namespace qrnmath
