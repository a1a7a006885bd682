#include "MathTestUtil.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnmath/QuatUtils.h"

#include <cmath>

using namespace qrnmath;
using Q = QuatUtils;
using M = MatrixUtils;

namespace {

// q and -q are the same rotation.
::testing::AssertionResult sameRotation(const Vec4& a, const Vec4& b, float eps = 1e-5f) {
    if (nearlyEqual(a, b, eps) || nearlyEqual(a, -b, eps))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << toString(a) << " != +-" << toString(b);
}

struct AxisAngle {
    Vec3 axis;
    float angle;
};

// Angles near pi drive fromMatrix through each of its diagonal branches.
const AxisAngle kSamples[] = {
    {Vec3(0.0f, 0.0f, 1.0f), 0.3f},    {Vec3(1.0f, 0.0f, 0.0f), 3.0f},
    {Vec3(0.0f, 1.0f, 0.0f), 3.1f},    {Vec3(0.0f, 0.0f, 1.0f), 3.05f},
    {Vec3(1.0f, 2.0f, -3.0f), -1.2f},  {Vec3(-0.3f, 0.1f, 0.9f), 2.9f},
    {Vec3(0.5f, -0.5f, 0.5f), 0.001f},
};

} // namespace

TEST(QuatUtils, MatrixAndAxisAngleFormsAgree) {
    const Vec3 v(0.4f, -1.5f, 2.0f);
    for (const AxisAngle& s : kSamples) {
        const Vec4 q = Q::fromAxisAngle(s.axis, s.angle);
        const Mat4 m = M::rotation(s.axis, s.angle);
        EXPECT_NEAR(q.length(), 1.0f, 1e-6f);
        EXPECT_TRUE(tuplesNear(Q::toMatrix(q), m));
        EXPECT_TRUE(tuplesNear(Q::rotate(q, v), M::transformVector(m, v)));
        EXPECT_TRUE(sameRotation(Q::fromMatrix(m), q));
        EXPECT_TRUE(sameRotation(Q::create(m), q));
    }
    EXPECT_TRUE(sameRotation(Q::fromMatrix(M::identity()), Q::identity()));
    // Translation and scale are not part of the rotation.
    Vec4 q = Q::fromAxisAngle(Vec3(1.0f, 1.0f, 0.0f), 1.0f);
    Mat4 m = M::multiply(M::translation(Vec3(5.0f, -2.0f, 1.0f)),
                         M::multiply(Q::toMatrix(q), M::scaling(Vec3(3.0f))));
    EXPECT_TRUE(sameRotation(Q::fromMatrix(m), q));
    // create takes degrees; a quarter turn about Z takes X to Y, the right-handed way.
    const Vec3 axis(1.0f, -2.0f, 0.5f);
    EXPECT_TRUE(sameRotation(Q::create(axis, 10.0f), Q::fromAxisAngle(axis, kPi / 18.0f)));
    EXPECT_TRUE(sameRotation(Q::create(axis, -90.0f), Q::fromAxisAngle(axis, -kPi / 2.0f)));
    EXPECT_TRUE(tuplesNear(Q::rotate(Q::create(Vec3(0.0f, 0.0f, 1.0f), 90.0f), Vec3(1, 0, 0)),
                           Vec3(0.0f, 1.0f, 0.0f)));
}

TEST(QuatUtils, MultiplyAppliesRightOperandFirstAndAxisAngleRoundTrips) {
    Vec4 a = Q::fromAxisAngle(Vec3(0.0f, 0.0f, 1.0f), kPi / 2.0f);
    Vec4 b = Q::fromAxisAngle(Vec3(1.0f, 0.0f, 0.0f), kPi / 2.0f);
    Vec3 v(0.0f, 1.0f, 0.0f);
    // b takes +Y to +Z, then a leaves Z alone; the other order gives -X.
    EXPECT_TRUE(tuplesNear(Q::rotate(Q::multiply(a, b), v), Vec3(0.0f, 0.0f, 1.0f)));
    EXPECT_TRUE(tuplesNear(Q::rotate(Q::multiply(b, a), v), Vec3(-1.0f, 0.0f, 0.0f)));
    EXPECT_TRUE(
        tuplesNear(Q::toMatrix(Q::multiply(a, b)), M::multiply(Q::toMatrix(a), Q::toMatrix(b))));
    EXPECT_TRUE(sameRotation(Q::multiply(a, Q::conjugate(a)), Q::identity()));

    // Axis and angle round trip.
    Vec3 axis;
    float angle = -1.0f;
    ASSERT_TRUE(Q::toAxisAngle(Q::fromAxisAngle(Vec3(0.0f, 3.0f, 4.0f), 1.25f), axis, angle));
    EXPECT_TRUE(tuplesNear(axis, Vec3(0.0f, 0.6f, 0.8f)));
    EXPECT_NEAR(angle, 1.25f, 1e-5f);
    // -q is the same rotation; the angle stays in [0, pi] with the axis reversed.
    ASSERT_TRUE(Q::toAxisAngle(-Q::fromAxisAngle(Vec3(1.0f, 0.0f, 0.0f), 0.5f), axis, angle));
    EXPECT_NEAR(angle, 0.5f, 1e-5f);
    EXPECT_TRUE(tuplesNear(axis, Vec3(1.0f, 0.0f, 0.0f)));
    EXPECT_EQ(Q::normalize(Vec4()), Q::identity());
    EXPECT_FALSE(Q::toAxisAngle(Q::identity(), axis, angle));
    EXPECT_EQ(angle, 0.0f);
}

TEST(QuatUtils, SlerpTakesTheShortestArcAndIsStableForNearlyEqualInputs) {
    Vec3 axis(0.0f, 1.0f, 0.0f);
    Vec4 a = Q::fromAxisAngle(axis, 0.2f), b = Q::fromAxisAngle(axis, 1.4f);
    EXPECT_TRUE(sameRotation(Q::slerp(a, b, 0.0f), a));
    EXPECT_TRUE(sameRotation(Q::slerp(a, b, 1.0f), b));
    EXPECT_TRUE(sameRotation(Q::slerp(a, b, 0.5f), Q::fromAxisAngle(axis, 0.8f)));
    EXPECT_TRUE(sameRotation(Q::slerp(a, b, 0.25f), Q::fromAxisAngle(axis, 0.5f)));
    // -b is the same rotation; either way the midpoint is half of the short 0.4 rad turn.
    a = Q::fromAxisAngle(axis, 0.1f);
    b = -Q::fromAxisAngle(axis, 0.5f);
    Vec4 mid = Q::slerp(a, b, 0.5f);
    EXPECT_TRUE(sameRotation(mid, Q::fromAxisAngle(axis, 0.3f)));
    EXPECT_NEAR(Q::angleBetween(a, mid), 0.2f, 1e-5f);
    EXPECT_NEAR(Q::angleBetween(b, a), 0.4f, 1e-5f);
    b = Q::fromAxisAngle(axis, 0.1f + 1e-6f);
    EXPECT_TRUE(sameRotation(Q::slerp(a, b, 0.3f), a));
    EXPECT_TRUE(sameRotation(Q::slerp(a, a, 0.5f), a));
}

TEST(QuatUtils, FromTwoVectorsTurnsTheShortWayEvenBetweenOppositeVectors) {
    Vec3 from(1.0f, 2.0f, 0.5f), to(-3.0f, 0.0f, 1.0f);
    Vec4 q = Q::fromTwoVectors(from, to);
    EXPECT_TRUE(tuplesNear(Q::rotate(q, from.normalized()), to.normalized()));
    float between = std::acos(from.normalized().dot(to.normalized()));
    EXPECT_NEAR(Q::angleBetween(Q::identity(), q), between, 1e-5f);
    EXPECT_TRUE(sameRotation(Q::fromTwoVectors(from, from * 3.0f), Q::identity()));
    for (Vec3 v : {Vec3(1.0f, 0.0f, 0.0f), Vec3(0.0f, 0.0f, -2.0f), Vec3(1.0f, -1.0f, 2.0f)}) {
        q = Q::fromTwoVectors(v, -v);
        EXPECT_NEAR(q.length(), 1.0f, 1e-5f);
        EXPECT_NEAR(Q::angleBetween(Q::identity(), q), kPi, 1e-5f);
        EXPECT_TRUE(tuplesNear(Q::rotate(q, v), -v));
    }
}

TEST(QuatUtils, InterpolateTakesAShareOfTheRotation) {
    for (const AxisAngle& s : kSamples) {
        const Vec4 q = Q::fromAxisAngle(s.axis, s.angle);
        const Vec4 half = Q::interpolate(q, 0.5f);
        EXPECT_TRUE(sameRotation(Q::multiply(half, half), q)) << s.angle;
        EXPECT_TRUE(sameRotation(Q::interpolate(q, 1.0f), q));
        EXPECT_TRUE(sameRotation(Q::interpolate(q, 0.0f), Q::identity()));
        // The steps of an animation add up to the whole rotation.
        Vec4 sum = Q::identity();
        for (int i = 0; i < 50; ++i)
            sum = Q::multiply(sum, Q::interpolate(q, 1.0f / 50.0f));
        EXPECT_TRUE(sameRotation(sum, q, 2e-5f)) << s.angle;
    }
    // -q is the same rotation and gives the same share; the short way round.
    const Vec4 q = Q::create(Vec3(0.0f, 1.0f, 0.0f), 300.0f); // -60 degrees the short way
    EXPECT_TRUE(sameRotation(Q::interpolate(-q, 0.5f), Q::interpolate(q, 0.5f)));
    EXPECT_TRUE(sameRotation(Q::interpolate(q, 0.5f), Q::create(Vec3(0, 1, 0), -30.0f)));
    EXPECT_TRUE(sameRotation(Q::interpolate(Q::identity(), 0.3f), Q::identity()));
}
