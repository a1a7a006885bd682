#include "qrnmath/MatrixUtils.h"

#include <cmath>

namespace qrnmath {

Mat4 MatrixUtils::identity() {
    Mat4 m;
    m[0] = m[5] = m[10] = m[15] = 1.0f;
    return m;
}

Mat4 MatrixUtils::multiply(const Mat4& a, const Mat4& b) {
    Mat4 r;
    for (int c = 0; c < 4; ++c)
        for (int row = 0; row < 4; ++row) {
            float s = 0.0f;
            for (int k = 0; k < 4; ++k)
                s += a[k * 4 + row] * b[c * 4 + k];
            r[c * 4 + row] = s;
        }
    return r;
}

Mat4 MatrixUtils::transpose(const Mat4& m) {
    Mat4 r;
    for (int c = 0; c < 4; ++c)
        for (int row = 0; row < 4; ++row)
            r[row * 4 + c] = m[c * 4 + row];
    return r;
}

bool MatrixUtils::invert(const Mat4& m, Mat4& out) {
    // Cofactor expansion in double precision: CAD coordinates span many orders of magnitude.
    double a[16];
    for (int i = 0; i < 16; ++i)
        a[i] = m[i];
    double inv[16];
    inv[0] = a[5] * a[10] * a[15] - a[5] * a[11] * a[14] - a[9] * a[6] * a[15] +
             a[9] * a[7] * a[14] + a[13] * a[6] * a[11] - a[13] * a[7] * a[10];
    inv[4] = -a[4] * a[10] * a[15] + a[4] * a[11] * a[14] + a[8] * a[6] * a[15] -
             a[8] * a[7] * a[14] - a[12] * a[6] * a[11] + a[12] * a[7] * a[10];
    inv[8] = a[4] * a[9] * a[15] - a[4] * a[11] * a[13] - a[8] * a[5] * a[15] +
             a[8] * a[7] * a[13] + a[12] * a[5] * a[11] - a[12] * a[7] * a[9];
    inv[12] = -a[4] * a[9] * a[14] + a[4] * a[10] * a[13] + a[8] * a[5] * a[14] -
              a[8] * a[6] * a[13] - a[12] * a[5] * a[10] + a[12] * a[6] * a[9];
    inv[1] = -a[1] * a[10] * a[15] + a[1] * a[11] * a[14] + a[9] * a[2] * a[15] -
             a[9] * a[3] * a[14] - a[13] * a[2] * a[11] + a[13] * a[3] * a[10];
    inv[5] = a[0] * a[10] * a[15] - a[0] * a[11] * a[14] - a[8] * a[2] * a[15] +
             a[8] * a[3] * a[14] + a[12] * a[2] * a[11] - a[12] * a[3] * a[10];
    inv[9] = -a[0] * a[9] * a[15] + a[0] * a[11] * a[13] + a[8] * a[1] * a[15] -
             a[8] * a[3] * a[13] - a[12] * a[1] * a[11] + a[12] * a[3] * a[9];
    inv[13] = a[0] * a[9] * a[14] - a[0] * a[10] * a[13] - a[8] * a[1] * a[14] +
              a[8] * a[2] * a[13] + a[12] * a[1] * a[10] - a[12] * a[2] * a[9];
    inv[2] = a[1] * a[6] * a[15] - a[1] * a[7] * a[14] - a[5] * a[2] * a[15] + a[5] * a[3] * a[14] +
             a[13] * a[2] * a[7] - a[13] * a[3] * a[6];
    inv[6] = -a[0] * a[6] * a[15] + a[0] * a[7] * a[14] + a[4] * a[2] * a[15] -
             a[4] * a[3] * a[14] - a[12] * a[2] * a[7] + a[12] * a[3] * a[6];
    inv[10] = a[0] * a[5] * a[15] - a[0] * a[7] * a[13] - a[4] * a[1] * a[15] +
              a[4] * a[3] * a[13] + a[12] * a[1] * a[7] - a[12] * a[3] * a[5];
    inv[14] = -a[0] * a[5] * a[14] + a[0] * a[6] * a[13] + a[4] * a[1] * a[14] -
              a[4] * a[2] * a[13] - a[12] * a[1] * a[6] + a[12] * a[2] * a[5];
    inv[3] = -a[1] * a[6] * a[11] + a[1] * a[7] * a[10] + a[5] * a[2] * a[11] -
             a[5] * a[3] * a[10] - a[9] * a[2] * a[7] + a[9] * a[3] * a[6];
    inv[7] = a[0] * a[6] * a[11] - a[0] * a[7] * a[10] - a[4] * a[2] * a[11] + a[4] * a[3] * a[10] +
             a[8] * a[2] * a[7] - a[8] * a[3] * a[6];
    inv[11] = -a[0] * a[5] * a[11] + a[0] * a[7] * a[9] + a[4] * a[1] * a[11] - a[4] * a[3] * a[9] -
              a[8] * a[1] * a[7] + a[8] * a[3] * a[5];
    inv[15] = a[0] * a[5] * a[10] - a[0] * a[6] * a[9] - a[4] * a[1] * a[10] + a[4] * a[2] * a[9] +
              a[8] * a[1] * a[6] - a[8] * a[2] * a[5];
    double det = a[0] * inv[0] + a[1] * inv[4] + a[2] * inv[8] + a[3] * inv[12];
    if (det == 0.0 || !std::isfinite(det))
        return false;
    for (int i = 0; i < 16; ++i)
        out[i] = static_cast<float>(inv[i] / det);
    return true;
}

Mat4 MatrixUtils::inverse(const Mat4& m, float tolerance) {
    // The determinant by the 2x2 minors of the top two and bottom two rows.
    double a[16];
    for (int i = 0; i < 16; ++i)
        a[i] = m[i];
    auto at = [&](int row, int column) { return a[column * 4 + row]; };
    auto minor = [&](int r0, int r1, int c0, int c1) {
        return at(r0, c0) * at(r1, c1) - at(r0, c1) * at(r1, c0);
    };
    const double det =
        minor(0, 1, 0, 1) * minor(2, 3, 2, 3) - minor(0, 1, 0, 2) * minor(2, 3, 1, 3) +
        minor(0, 1, 0, 3) * minor(2, 3, 1, 2) + minor(0, 1, 1, 2) * minor(2, 3, 0, 3) -
        minor(0, 1, 1, 3) * minor(2, 3, 0, 2) + minor(0, 1, 2, 3) * minor(2, 3, 0, 1);
    Mat4 out;
    if (!(std::abs(det) >= tolerance) || !invert(m, out))
        return identity();
    return out;
}

Mat4 MatrixUtils::translation(const Vec3& t) {
    Mat4 m = identity();
    m[12] = t[0];
    m[13] = t[1];
    m[14] = t[2];
    return m;
}

Mat4 MatrixUtils::scaling(const Vec3& s) {
    Mat4 m = identity();
    m[0] = s[0];
    m[5] = s[1];
    m[10] = s[2];
    return m;
}

Mat4 MatrixUtils::rotation(const Vec3& axis, float angle) {
    Vec3 a = axis.normalized();
    if (a.lengthSquared() == 0.0f)
        return identity();
    float c = std::cos(angle), s = std::sin(angle), t = 1.0f - c;
    float x = a[0], y = a[1], z = a[2];
    Mat4 m = identity();
    m[0] = t * x * x + c;
    m[1] = t * x * y + s * z;
    m[2] = t * x * z - s * y;
    m[4] = t * x * y - s * z;
    m[5] = t * y * y + c;
    m[6] = t * y * z + s * x;
    m[8] = t * x * z + s * y;
    m[9] = t * y * z - s * x;
    m[10] = t * z * z + c;
    return m;
}

Vec4 MatrixUtils::transform(const Mat4& m, const Vec4& v) {
    Vec4 r;
    for (int row = 0; row < 4; ++row)
        r[row] = m[row] * v[0] + m[4 + row] * v[1] + m[8 + row] * v[2] + m[12 + row] * v[3];
    return r;
}

Vec3 MatrixUtils::transformPoint(const Mat4& m, const Vec3& p) {
    Vec4 r = transform(m, Vec4(p[0], p[1], p[2], 1.0f));
    float w = r[3] != 0.0f ? r[3] : 1.0f;
    return Vec3(r[0] / w, r[1] / w, r[2] / w);
}

Vec3 MatrixUtils::transformVector(const Mat4& m, const Vec3& v) {
    Vec4 r = transform(m, Vec4(v[0], v[1], v[2], 0.0f));
    return Vec3(r[0], r[1], r[2]);
}

Mat4 MatrixUtils::lookAt(const Vec3& eye, const Vec3& target, const Vec3& up) {
    Vec3 f = (target - eye).normalized();
    Vec3 s = cross(f, up).normalized();
    Vec3 u = cross(s, f);
    Mat4 m = identity();
    m[0] = s[0];
    m[4] = s[1];
    m[8] = s[2];
    m[1] = u[0];
    m[5] = u[1];
    m[9] = u[2];
    m[2] = -f[0];
    m[6] = -f[1];
    m[10] = -f[2];
    m[12] = -s.dot(eye);
    m[13] = -u.dot(eye);
    m[14] = f.dot(eye);
    return m;
}

Mat4 MatrixUtils::perspective(float fovyDegrees, float aspect, float zNear, float zFar) {
    const float pi = 3.14159265358979f;
    float f = 1.0f / std::tan(fovyDegrees * pi / 360.0f);
    Mat4 m;
    m[0] = f / aspect;
    m[5] = f;
    m[10] = (zFar + zNear) / (zNear - zFar);
    m[11] = -1.0f;
    m[14] = 2.0f * zFar * zNear / (zNear - zFar);
    return m;
}

Mat4 MatrixUtils::ortho(float left, float right, float bottom, float top, float zNear, float zFar) {
    Mat4 m = identity();
    m[0] = 2.0f / (right - left);
    m[5] = 2.0f / (top - bottom);
    m[10] = -2.0f / (zFar - zNear);
    m[12] = -(right + left) / (right - left);
    m[13] = -(top + bottom) / (top - bottom);
    m[14] = -(zFar + zNear) / (zFar - zNear);
    return m;
}

} // namespace qrnmath
