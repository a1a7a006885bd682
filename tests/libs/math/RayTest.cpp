#include "MathTestUtil.h"

#include "qrnmath/Ray.h"

using namespace qrnmath;

TEST(Ray, DirectionIsNormalisedAndDistancesAreToTheHalfLine) {
    Ray r(Vec3(1.0f, 2.0f, 3.0f), Vec3(0.0f, 3.0f, -4.0f));
    EXPECT_TRUE(tuplesNear(r.direction(), Vec3(0.0f, 0.6f, -0.8f)));
    EXPECT_TRUE(tuplesNear(r.pointAt(5.0f), Vec3(1.0f, 5.0f, -1.0f)));
    EXPECT_EQ(Ray().direction(), Vec3(0.0f, 0.0f, -1.0f));

    Ray x(Vec3(1.0f, 0.0f, 0.0f), Vec3(2.0f, 0.0f, 0.0f));
    EXPECT_FLOAT_EQ(x.closestParameter(Vec3(4.0f, 3.0f, -1.0f)), 3.0f);
    EXPECT_FLOAT_EQ(x.distance(Vec3(4.0f, 3.0f, 4.0f)), 5.0f);
    // Behind the origin: the parameter is of the line, the distance is to the half-line.
    EXPECT_FLOAT_EQ(x.closestParameter(Vec3(-2.0f, 4.0f, 0.0f)), -3.0f);
    EXPECT_FLOAT_EQ(x.distance(Vec3(-2.0f, 4.0f, 0.0f)), 5.0f);
}

TEST(Ray, ClosestParametersOfSkewLinesButNotOfParallelOnes) {
    Ray a(Vec3(0.0f), Vec3(1.0f, 0.0f, 0.0f));
    Ray b(Vec3(3.0f, -2.0f, 5.0f), Vec3(0.0f, 1.0f, 0.0f));
    float t = 0.0f, s = 0.0f;
    ASSERT_TRUE(a.closestParameters(b, t, s));
    EXPECT_NEAR(t, 3.0f, 1e-5f);
    EXPECT_NEAR(s, 2.0f, 1e-5f);
    // General pair: the segment joining the nearest points is perpendicular to both lines.
    Ray c(Vec3(1.0f, -2.0f, 0.5f), Vec3(1.0f, 2.0f, -1.0f));
    Ray d(Vec3(-3.0f, 4.0f, 2.0f), Vec3(0.5f, -1.0f, 3.0f));
    ASSERT_TRUE(c.closestParameters(d, t, s));
    Vec3 gap = c.pointAt(t) - d.pointAt(s);
    EXPECT_NEAR(gap.dot(c.direction()), 0.0f, 1e-4f);
    EXPECT_NEAR(gap.dot(d.direction()), 0.0f, 1e-4f);
    EXPECT_GT(gap.length(), 0.1f);

    Ray diagonal(Vec3(0.0f), Vec3(1.0f, 1.0f, 0.0f));
    t = 7.0f, s = 8.0f;
    EXPECT_FALSE(diagonal.closestParameters(Ray(Vec3(0, 0, 3), Vec3(2, 2, 0)), t, s));
    EXPECT_FALSE(diagonal.closestParameters(Ray(Vec3(5, 0, 0), Vec3(-1, -1, 0)), t, s));
    EXPECT_EQ(t, 7.0f);
    EXPECT_EQ(s, 8.0f);
}
