#pragma once

#include "qrnmath/Tuple.h"
#include "qrnmath/qrnmath_export.h"

namespace qrnmath {

// 4x4 matrices as 16 floats in column-major order (element (row r, column c) at [c * 4 + r]).
class QRNMATH_EXPORT MatrixUtils {
public:
    static Mat4 identity();
    static Mat4 multiply(const Mat4& a, const Mat4& b); // a * b: b is applied first
    static Mat4 transpose(const Mat4& m);
    // False, with out left unchanged, when m is singular.
    static bool invert(const Mat4& m, Mat4& out);
    // The inverse, or the identity when the determinant's magnitude is below tolerance.
    static Mat4 inverse(const Mat4& m, float tolerance);
    static Mat4 translation(const Vec3& t);
    static Mat4 scaling(const Vec3& s);
    // Right-handed rotation of angle radians about axis (need not be unit length).
    static Mat4 rotation(const Vec3& axis, float angle);
    static Vec3 transformPoint(const Mat4& m, const Vec3& p);  // with the divide by w
    static Vec3 transformVector(const Mat4& m, const Vec3& v); // ignores translation
    static Vec4 transform(const Mat4& m, const Vec4& v);
    // The same matrices as gluLookAt, gluPerspective (fovy in degrees) and glOrtho.
    static Mat4 lookAt(const Vec3& eye, const Vec3& target, const Vec3& up);
    static Mat4 perspective(float fovyDegrees, float aspect, float zNear, float zFar);
    static Mat4 ortho(float left, float right, float bottom, float top, float zNear, float zFar);
};

} // namespace qrnmath
