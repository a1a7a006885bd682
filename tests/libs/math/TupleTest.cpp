#include "MathTestUtil.h"

using namespace qrnmath;

TEST(Tuple, ArithmeticIsElementWiseAndCrossRightHanded) {
    Vec3 a(1.0f, 2.0f, 3.0f), b(4.0f, -5.0f, 6.0f);
    EXPECT_EQ(a + b, Vec3(5.0f, -3.0f, 9.0f));
    EXPECT_EQ(a - b, Vec3(-3.0f, 7.0f, -3.0f));
    EXPECT_EQ(2.0f * a, Vec3(2.0f, 4.0f, 6.0f));
    EXPECT_EQ(b / 2.0f, Vec3(2.0f, -2.5f, 3.0f));
    EXPECT_EQ(-a, Vec3(-1.0f, -2.0f, -3.0f));
    EXPECT_FLOAT_EQ(a.dot(b), 12.0f);
    EXPECT_FLOAT_EQ(a.distance(a + Vec3(0.0f, 3.0f, 4.0f)), 5.0f);
    // Braces with fewer values than N zero-fill the rest.
    EXPECT_EQ((Vec4{1.0f, 2.0f}), Vec4(1.0f, 2.0f, 0.0f, 0.0f));

    Vec3 x(1.0f, 0.0f, 0.0f), y(0.0f, 1.0f, 0.0f), z(0.0f, 0.0f, 1.0f);
    EXPECT_EQ(cross(x, y), z);
    EXPECT_EQ(cross(y, z), x);
    EXPECT_EQ(cross(z, x), y);
    EXPECT_EQ(cross(a, b), -cross(b, a));
}

TEST(Tuple, NormalizeAndNearlyEqual) {
    EXPECT_TRUE(tuplesNear(Vec3(0.0f, -3.0f, 4.0f).normalized(), Vec3(0.0f, -0.6f, 0.8f)));
    EXPECT_EQ(Vec3().normalized(), Vec3(0.0f)) << "zero is left alone";
    Vec3 a(1.0f, 2.0f, 3.0f);
    EXPECT_TRUE(nearlyEqual(a, a + Vec3(0.0f, 0.0f, 1e-4f), 1e-3f));
    EXPECT_FALSE(nearlyEqual(a, a + Vec3(0.0f, 0.0f, 1e-2f), 1e-3f));
    EXPECT_FALSE(nearlyEqual(a, a - Vec3(1e-2f, 0.0f, 0.0f), 1e-3f));
}
