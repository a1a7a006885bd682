#include "MathTestUtil.h"

#include "qrnmath/PlaneUtils.h"

using namespace qrnmath;
using P = PlaneUtils;

TEST(PlaneUtils, ThroughThreePointsUnlessCollinear) {
    Vec3 a(1.0f, 0.0f, 2.0f), b(0.0f, 3.0f, -1.0f), c(-2.0f, 1.0f, 4.0f);
    Vec4 plane;
    ASSERT_TRUE(P::fromPoints(a, b, c, plane));
    EXPECT_NEAR(P::normal(plane).length(), 1.0f, 1e-6f);
    for (const Vec3& p : {a, b, c})
        EXPECT_NEAR(P::signedDistance(plane, p), 0.0f, 1e-5f);
    // Counter-clockwise seen from +Z gives a normal facing +Z.
    ASSERT_TRUE(P::fromPoints(Vec3(0, 0, 2), Vec3(1, 0, 2), Vec3(0, 1, 2), plane));
    EXPECT_TRUE(tuplesNear(plane, Vec4(0.0f, 0.0f, 1.0f, -2.0f)));

    plane = Vec4(9.0f);
    EXPECT_FALSE(P::fromPoints(Vec3(0.0f), Vec3(1.0f, 2.0f, 3.0f), Vec3(2.0f, 4.0f, 6.0f), plane));
    EXPECT_FALSE(P::fromPoints(Vec3(1.0f), Vec3(1.0f), Vec3(5.0f, 0.0f, 0.0f), plane));
    EXPECT_EQ(plane, Vec4(9.0f));
}

TEST(PlaneUtils, SignedDistancePointOnAndProjection) {
    Vec4 plane = P::fromPointNormal(Vec3(0.0f, 1.0f, 0.0f), Vec3(0.0f, 5.0f, 0.0f));
    EXPECT_TRUE(tuplesNear(plane, Vec4(0.0f, 1.0f, 0.0f, -1.0f)));
    EXPECT_FLOAT_EQ(P::signedDistance(plane, Vec3(3.0f, 4.0f, -7.0f)), 3.0f);
    EXPECT_FLOAT_EQ(P::signedDistance(plane, Vec3(3.0f, -1.0f, 2.0f)), -2.0f);
    EXPECT_FLOAT_EQ(P::signedDistance(P::flip(plane), Vec3(3.0f, 4.0f, -7.0f)), -3.0f);
    // A plane that is not normalised (e.g. from a matrix row) still gives true distances.
    EXPECT_FLOAT_EQ(P::signedDistance(plane * 4.0f, Vec3(3.0f, 4.0f, -7.0f)), 3.0f);

    plane = P::fromPointNormal(Vec3(2.0f, 2.0f, 2.0f), Vec3(1.0f, 1.0f, 1.0f));
    Vec3 on = P::pointOn(plane);
    EXPECT_TRUE(tuplesNear(on, Vec3(2.0f, 2.0f, 2.0f)));
    EXPECT_TRUE(tuplesNear(P::pointOn(plane * 3.0f), on));
    Vec3 p(5.0f, -1.0f, 0.0f);
    Vec3 q = P::project(plane, p);
    EXPECT_NEAR(P::signedDistance(plane, q), 0.0f, 1e-5f);
    EXPECT_NEAR(cross(p - q, P::normal(plane)).length(), 0.0f, 1e-5f);
}

TEST(PlaneUtils, RayAndSegmentIntersections) {
    Vec4 plane = P::fromPointNormal(Vec3(0.0f, 0.0f, -5.0f), Vec3(0.0f, 0.0f, 1.0f));
    Ray ray(Vec3(1.0f, 1.0f, 0.0f), Vec3(0.0f, 0.0f, -2.0f));
    float t = 0.0f;
    ASSERT_TRUE(P::intersect(plane, ray, t));
    EXPECT_FLOAT_EQ(t, 5.0f);
    EXPECT_TRUE(tuplesNear(ray.pointAt(t), Vec3(1.0f, 1.0f, -5.0f)));
    // Behind the origin gives a negative parameter, not a miss; a parallel ray misses.
    ASSERT_TRUE(P::intersect(plane, Ray(Vec3(0.0f, 0.0f, -8.0f), Vec3(1.0f, 0.0f, -1.0f)), t));
    EXPECT_NEAR(t, -3.0f * std::sqrt(2.0f), 1e-5f);
    EXPECT_FALSE(P::intersect(plane, Ray(Vec3(0.0f, 1.0f, 0.0f), Vec3(1.0f, 1.0f, 0.0f)), t));
    EXPECT_NEAR(t, -3.0f * std::sqrt(2.0f), 1e-5f);

    plane = P::fromPointNormal(Vec3(0.0f, 0.0f, 1.0f), Vec3(0.0f, 0.0f, 1.0f));
    Vec3 hit;
    ASSERT_TRUE(P::intersectSegment(plane, Vec3(0, 0, 0), Vec3(4, 0, 4), hit));
    EXPECT_TRUE(tuplesNear(hit, Vec3(1.0f, 0.0f, 1.0f)));
    EXPECT_FALSE(P::intersectSegment(plane, Vec3(0, 0, 2), Vec3(1, 0, 3), hit));
    EXPECT_FALSE(P::intersectSegment(plane, Vec3(0, 0, 1), Vec3(1, 0, 1), hit));
    ASSERT_TRUE(P::intersectSegment(plane, Vec3(2, 0, 1), Vec3(0, 0, 3), hit));
    EXPECT_TRUE(tuplesNear(hit, Vec3(2.0f, 0.0f, 1.0f)));
}
