#include "MathTestUtil.h"

#include "qrnmath/MatrixUtils.h"

#include <cmath>

using namespace qrnmath;
using M = MatrixUtils;

namespace {

Mat4 sampleTransform() {
    Mat4 r = M::rotation(Vec3(1.0f, 2.0f, -0.5f), 0.7f);
    Mat4 t = M::translation(Vec3(3.0f, -4.0f, 10.0f));
    Mat4 s = M::scaling(Vec3(2.0f, 0.5f, 3.0f));
    return M::multiply(t, M::multiply(r, s));
}

} // namespace

TEST(MatrixUtils, MultiplyAppliesRightOperandFirst) {
    Mat4 ts = M::multiply(M::translation(Vec3(1.0f, 0.0f, 0.0f)), M::scaling(Vec3(2.0f)));
    EXPECT_TRUE(tuplesNear(M::transformPoint(ts, Vec3(1.0f, 1.0f, 1.0f)), Vec3(3.0f, 2.0f, 2.0f)));
    EXPECT_EQ(M::multiply(M::identity(), ts), ts);
    // Column-major: the translation sits in elements 12..14; vectors ignore it.
    EXPECT_EQ(ts[12], 1.0f);
    EXPECT_EQ(M::transpose(ts)[3], 1.0f);
    EXPECT_EQ(M::transformVector(ts, Vec3(1.0f, 2.0f, 3.0f)), Vec3(2.0f, 4.0f, 6.0f));
}

TEST(MatrixUtils, InverseTimesMatrixIsIdentityUnlessSingular) {
    Mat4 m = M::multiply(M::perspective(45.0f, 1.5f, 0.1f, 100.0f), sampleTransform());
    Mat4 inv;
    ASSERT_TRUE(M::invert(m, inv));
    EXPECT_TRUE(tuplesNear(M::multiply(inv, m), M::identity(), 1e-4f));
    EXPECT_TRUE(tuplesNear(M::multiply(m, inv), M::identity(), 1e-4f));
    // A singular matrix fails and leaves the output alone.
    Mat4 flat = M::scaling(Vec3(1.0f, 0.0f, 1.0f));
    Mat4 out(42.0f);
    EXPECT_FALSE(M::invert(flat, out));
    EXPECT_EQ(out, Mat4(42.0f));
    // With a tolerance: nearly flat (determinant 1e-4, perspective row or not) gives the
    // identity; a turn and a scale give their inverse.
    EXPECT_EQ(M::inverse(M::scaling(Vec3(1.0f, 1e-4f, 1.0f)), 0.001f), M::identity());
    Mat4 projective = M::scaling(Vec3(1.0f, 1e-4f, 1.0f));
    projective[3] = 0.5f;
    EXPECT_EQ(M::inverse(projective, 0.001f), M::identity());
    Mat4 turned = M::multiply(M::rotation(Vec3(1, 2, 3), 0.7f), M::scaling(Vec3(2, 2, 2)));
    EXPECT_TRUE(tuplesNear(M::multiply(turned, M::inverse(turned, 0.001f)), M::identity()));
}

TEST(MatrixUtils, RotationIsRightHanded) {
    Mat4 rz = M::rotation(Vec3(0.0f, 0.0f, 5.0f), kPi / 2.0f);
    EXPECT_TRUE(tuplesNear(M::transformVector(rz, Vec3(1.0f, 0.0f, 0.0f)), Vec3(0.0f, 1.0f, 0.0f)));
    Mat4 rx = M::rotation(Vec3(1.0f, 0.0f, 0.0f), kPi / 2.0f);
    EXPECT_TRUE(tuplesNear(M::transformVector(rx, Vec3(0.0f, 1.0f, 0.0f)), Vec3(0.0f, 0.0f, 1.0f)));
    // A rotation is orthonormal: its inverse is its transpose.
    Mat4 r = M::rotation(Vec3(1.0f, -2.0f, 0.3f), 2.1f);
    EXPECT_TRUE(tuplesNear(M::multiply(r, M::transpose(r)), M::identity()));
}

TEST(MatrixUtils, LookAtMatchesGluLookAt) {
    Vec3 eye(1.0f, 2.0f, 3.0f), target(4.0f, 2.0f, -1.0f), up(0.0f, 1.0f, 0.0f);
    Mat4 v = M::lookAt(eye, target, up);
    EXPECT_TRUE(tuplesNear(M::transformPoint(v, eye), Vec3()));
    // The target lies straight ahead on -Z at its distance (5), up stays up.
    EXPECT_TRUE(tuplesNear(M::transformPoint(v, target), Vec3(0.0f, 0.0f, -5.0f)));
    EXPECT_TRUE(tuplesNear(M::transformVector(v, up), Vec3(0.0f, 1.0f, 0.0f)));
    // gluLookAt's side vector s = f x up maps to +X.
    Vec3 f = (target - eye).normalized();
    EXPECT_TRUE(
        tuplesNear(M::transformVector(v, cross(f, up).normalized()), Vec3(1.0f, 0.0f, 0.0f)));
}

TEST(MatrixUtils, PerspectiveAndOrthoMatchGlu) {
    float fovy = 60.0f, aspect = 2.0f, n = 0.5f, f = 50.0f;
    Mat4 p = M::perspective(fovy, aspect, n, f);
    float cot = 1.0f / std::tan(fovy * kPi / 360.0f);
    EXPECT_FLOAT_EQ(p[0], cot / aspect);
    EXPECT_FLOAT_EQ(p[5], cot);
    EXPECT_FLOAT_EQ(p[11], -1.0f);
    EXPECT_FLOAT_EQ(p[15], 0.0f);
    EXPECT_NEAR(M::transformPoint(p, Vec3(0.0f, 0.0f, -n))[2], -1.0f, 1e-5f);
    EXPECT_NEAR(M::transformPoint(p, Vec3(0.0f, 0.0f, -f))[2], 1.0f, 1e-4f);
    // Top-right corner of the near plane maps to NDC (1, 1).
    float h = n * std::tan(fovy * kPi / 360.0f);
    EXPECT_TRUE(tuplesNear(M::transformPoint(p, Vec3(h * aspect, h, -n)), Vec3(1.0f, 1.0f, -1.0f)));

    Mat4 o = M::ortho(-2.0f, 6.0f, -1.0f, 3.0f, 1.0f, 11.0f);
    EXPECT_TRUE(tuplesNear(M::transformPoint(o, Vec3(-2.0f, -1.0f, -1.0f)), Vec3(-1.0f)));
    EXPECT_TRUE(tuplesNear(M::transformPoint(o, Vec3(6.0f, 3.0f, -11.0f)), Vec3(1.0f)));
    EXPECT_TRUE(tuplesNear(M::transformPoint(o, Vec3(2.0f, 1.0f, -6.0f)), Vec3(0.0f)));
}
