#include "qrnsgutils/EntityMeasure.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using qrnmath::Vec3;
using qrnsgutils::EntityMeasure;
using qrnsgutils::MeasureResult;
using qrnsgutils::WorldEntity;
using Curve = qrnsg::PartEntities::Curve;
using Surface = qrnsg::PartEntities::Surface;

const float kPi = 3.14159265f;

WorldEntity point(const Vec3& p) {
    WorldEntity e;
    e.kind = WorldEntity::POINT;
    e.point = p;
    return e;
}

WorldEntity line(const Vec3& p, const Vec3& q) {
    WorldEntity e;
    e.kind = WorldEntity::EDGE;
    e.polyline = {p, q};
    e.curve.type = Curve::LINE;
    e.curve.origin = p;
    e.curve.axis = (q - p).normalized();
    e.curve.length = p.distance(q);
    return e;
}

// A face of the box [0, 10] x [0, 6] x [0, 4]: the one across axis k, at its low or high end,
// with its outward normal.
WorldEntity boxFace(int k, bool high) {
    const Vec3 size(10, 6, 4);
    const int u = (k + 1) % 3, v = (k + 2) % 3;
    const auto corner = [&](float a, float b) {
        Vec3 p;
        p[k] = high ? size[k] : 0.0f;
        p[u] = a * size[u];
        p[v] = b * size[v];
        return p;
    };
    WorldEntity e;
    e.kind = WorldEntity::FACE;
    // Counter-clockwise seen from outside.
    const Vec3 p = corner(0, 0), q = corner(high ? 1 : 0, high ? 0 : 1), r = corner(1, 1),
               s = corner(high ? 0 : 1, high ? 1 : 0);
    e.triangles = {p, q, r, p, r, s};
    e.surface.type = Surface::PLANE;
    e.surface.origin = corner(0, 0);
    e.surface.axis[k] = high ? 1.0f : -1.0f;
    return e;
}

// The square [0, 45] x [0, 45] at height z as 45 x 45 quads: 4050 triangles.
WorldEntity grid(float z, float shift) {
    WorldEntity e;
    e.kind = WorldEntity::FACE;
    for (int i = 0; i < 45; ++i)
        for (int j = 0; j < 45; ++j) {
            const float x = float(i) + shift, y = float(j) + shift;
            const Vec3 a(x, y, z), b(x + 1, y, z), c(x + 1, y + 1, z), d(x, y + 1, z);
            e.triangles.insert(e.triangles.end(), {a, b, c, a, c, d});
        }
    e.surface.type = Surface::PLANE;
    e.surface.origin = Vec3(0, 0, z);
    e.surface.axis = Vec3(0, 0, 1);
    return e;
}

Vec3 onCircle(const Vec3& centre, float r, float t) {
    return centre + Vec3(std::cos(t), std::sin(t), 0.0f) * r;
}

// The side of a cylinder about the z axis through centre, height h, as a strip of 64 quads.
WorldEntity cylinder(const Vec3& centre, float r, float h) {
    WorldEntity e;
    e.kind = WorldEntity::FACE;
    const Vec3 up(0, 0, h);
    for (int i = 0; i < 64; ++i) {
        const Vec3 a = onCircle(centre, r, 2 * kPi * float(i) / 64),
                   b = onCircle(centre, r, 2 * kPi * float(i + 1) / 64);
        e.triangles.insert(e.triangles.end(), {a, b, b + up, a, b + up, a + up});
    }
    e.surface.type = Surface::CYLINDER;
    e.surface.origin = centre;
    e.surface.axis = Vec3(0, 0, 1);
    e.surface.radius = r;
    return e;
}

// A circle (or arc from 0 to sweep) about the z axis as a polyline of 64 segments.
WorldEntity circle(const Vec3& centre, float r, float sweep = 2 * kPi,
                   Curve::Type type = Curve::CIRCLE) {
    WorldEntity e;
    e.kind = WorldEntity::EDGE;
    for (int i = 0; i <= 64; ++i)
        e.polyline.push_back(onCircle(centre, r, sweep * float(i) / 64));
    if (sweep >= 2 * kPi)
        e.polyline.back() = e.polyline.front();
    e.curve.type = type;
    e.curve.origin = centre;
    e.curve.axis = Vec3(0, 0, 1);
    e.curve.radius = r;
    return e;
}

WorldEntity unknown(WorldEntity e) {
    e.curve.type = Curve::NONE;
    e.surface.type = Surface::NONE;
    return e;
}

void expectNear(const Vec3& actual, const Vec3& expected, float tolerance, const char* what) {
    EXPECT_TRUE(qrnmath::nearlyEqual(actual, expected, tolerance))
        << what << " (" << actual[0] << ", " << actual[1] << ", " << actual[2] << ")";
}

TEST(EntityMeasureTest, DistancesAreMinimaWithClosestPointsOnBothEntities) {
    const WorldEntity hole = cylinder(Vec3(0, 0, 0), 5, 10);
    const float no = std::nanf("");
    struct Row {
        const char* what;
        WorldEntity first, second;
        float value;
        bool exact;
        Vec3 a, b; // NaN where the closest points are not unique
    };
    const Row rows[] = {
        {"opposite faces", boxFace(2, false), boxFace(2, true), 4, true, Vec3(no), Vec3(no)},
        {"point over a face", point(Vec3(5, 3, 9)), boxFace(2, true), 5, true, Vec3(5, 3, 9),
         Vec3(5, 3, 4)},
        {"point beyond a face's edge", point(Vec3(15, 3, 8)), boxFace(2, true), std::sqrt(41.0f),
         false, Vec3(15, 3, 8), Vec3(10, 3, 4)},
        {"point beyond a large face's edge", point(Vec3(50, 10, 3)), grid(0, 0), std::sqrt(34.0f),
         false, Vec3(50, 10, 3), Vec3(45, 10, 0)},
        {"point over a face of unknown type", point(Vec3(5, 3, 9)), unknown(boxFace(2, true)), 5,
         false, Vec3(5, 3, 9), Vec3(5, 3, 4)},
        {"point outside a cylinder", point(Vec3(0, 12, 3)), hole, 7, true, Vec3(0, 12, 3),
         Vec3(0, 5, 3)},
        {"point in a hole", point(Vec3(0.6f, 0.8f, 5)), hole, 4, true, Vec3(0.6f, 0.8f, 5),
         Vec3(3, 4, 5)},
        {"point to a circle", point(Vec3(8, 0, 4)), circle(Vec3(0, 0, 0), 5), 5, true,
         Vec3(8, 0, 4), Vec3(5, 0, 0)},
        {"skew lines", line(Vec3(0, 0, 0), Vec3(10, 0, 0)), line(Vec3(5, -5, 3), Vec3(5, 5, 3)), 3,
         true, Vec3(5, 0, 0), Vec3(5, 0, 3)},
        {"skew lines past an end", line(Vec3(0, 0, 0), Vec3(10, 0, 0)),
         line(Vec3(12, -5, 3), Vec3(12, 5, 3)), std::sqrt(13.0f), true, Vec3(10, 0, 0),
         Vec3(12, 0, 3)},
        {"edge along a face", line(Vec3(2, 1, 7), Vec3(8, 1, 7)), boxFace(2, true), 3, true,
         Vec3(no), Vec3(no)},
        {"edge through a face", line(Vec3(5, 3, 2), Vec3(5, 3, 6)), boxFace(2, true), 0, false,
         Vec3(5, 3, 4), Vec3(5, 3, 4)},
        {"edge ending over a face", line(Vec3(5, 3, 6), Vec3(13, 3, 12)), boxFace(2, true), 2,
         false, Vec3(5, 3, 6), Vec3(5, 3, 4)},
        {"adjacent faces", boxFace(2, true), boxFace(0, true), 0, false, Vec3(no), Vec3(no)},
        {"parallel cylinders", hole, cylinder(Vec3(12, 0, 2), 2, 4), 5, true, Vec3(no), Vec3(no)},
        {"parallel grids", grid(0, 0), grid(2, 0.5f), 2, true, Vec3(no), Vec3(no)},
        {"touching grids", grid(0, 0), grid(0, 0.5f), 0, true, Vec3(no), Vec3(no)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const MeasureResult r = EntityMeasure::distance(row.first, row.second);
        ASSERT_TRUE(r.valid);
        EXPECT_NEAR(r.value, row.value, 1e-4f);
        EXPECT_EQ(r.exact, row.exact);
        EXPECT_NEAR(r.a.distance(r.b), r.value, 1e-4f);
        if (!std::isnan(row.a[0])) {
            expectNear(r.a, row.a, 1e-4f, "a");
            expectNear(r.b, row.b, 1e-4f, "b");
        }
        // Each closest point lies on its entity (as tessellated, to the chord error).
        EXPECT_LT(EntityMeasure::distance(point(r.a), row.first).value, 0.01f);
        EXPECT_LT(EntityMeasure::distance(point(r.b), row.second).value, 0.01f);
        const MeasureResult back = EntityMeasure::distance(row.second, row.first);
        EXPECT_EQ(back.value, r.value);
        EXPECT_EQ(back.a, r.b);
        EXPECT_EQ(back.b, r.a);
    }
}

TEST(EntityMeasureTest, NothingToMeasureAndDegenerateInput) {
    WorldEntity none, emptyFace, unknownEdge;
    emptyFace.kind = WorldEntity::FACE;
    emptyFace.surface.type = Surface::PLANE;
    unknownEdge.kind = WorldEntity::EDGE;
    EXPECT_FALSE(EntityMeasure::distance(none, point(Vec3())).valid);
    EXPECT_FALSE(EntityMeasure::distance(point(Vec3()), emptyFace).valid);
    EXPECT_FALSE(EntityMeasure::distance(unknownEdge, boxFace(0, true)).valid);
    EXPECT_FALSE(EntityMeasure::angle(point(Vec3()), boxFace(0, true)).valid);

    // Collinear corners, repeated points: the segment from (0, 0, 0) to (4, 0, 0).
    WorldEntity flat, stutter;
    flat.kind = WorldEntity::FACE;
    flat.triangles = {Vec3(0, 0, 0), Vec3(2, 0, 0), Vec3(4, 0, 0),
                      Vec3(1, 0, 0), Vec3(1, 0, 0), Vec3(1, 0, 0)};
    stutter.kind = WorldEntity::EDGE;
    stutter.polyline = {Vec3(0, 3, 0), Vec3(0, 3, 0), Vec3(2, 3, 0), Vec3(2, 3, 0)};
    const MeasureResult r = EntityMeasure::distance(flat, stutter);
    ASSERT_TRUE(r.valid);
    EXPECT_NEAR(r.value, 3.0f, 1e-6f);
    EXPECT_NEAR(EntityMeasure::distance(flat, point(Vec3(6, 0, 0))).value, 2.0f, 1e-6f);
    EXPECT_FALSE(EntityMeasure::angle(flat, stutter).valid) << "a face without area has no normal";
}

TEST(EntityMeasureTest, Angles) {
    const WorldEntity x = line(Vec3(0, 0, 0), Vec3(10, 0, 0));
    struct Row {
        const char* what;
        WorldEntity first, second;
        float value;
        bool exact;
    };
    const Row rows[] = {
        {"adjacent faces' normals", boxFace(2, false), boxFace(0, false), kPi / 2, true},
        {"opposite faces' normals", boxFace(2, false), boxFace(2, true), kPi, true},
        {"faces looking the same way", boxFace(2, true), grid(1, 0), 0, true},
        {"unknown faces' triangles", unknown(boxFace(1, true)), unknown(boxFace(1, false)), kPi,
         false},
        {"lines", x, line(Vec3(0, 0, 0), Vec3(10, 10, 0)), kPi / 4, true},
        {"lines either way", x, line(Vec3(10, 10, 5), Vec3(0, 0, 5)), kPi / 4, true},
        {"line along a face", x, boxFace(2, true), 0, true},
        {"line across a face", line(Vec3(0, 0, 5), Vec3(10, 0, 15)), boxFace(2, true), kPi / 4,
         true},
        {"cylinder on a face", cylinder(Vec3(20, 0, 0), 2, 4), boxFace(2, true), kPi / 2, true},
        {"cylinder's axis to a line", cylinder(Vec3(20, 0, 0), 2, 4), line(Vec3(), Vec3(0, 0, 1)),
         0, true},
        {"circle's chord to a line", circle(Vec3(0, 0, 0), 5), line(Vec3(6, 0, -5), Vec3(6, 0, 5)),
         kPi / 2, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const MeasureResult r = EntityMeasure::angle(row.first, row.second);
        ASSERT_TRUE(r.valid);
        EXPECT_NEAR(r.value, row.value, 1e-5f);
        EXPECT_EQ(r.exact, row.exact);
        EXPECT_EQ(EntityMeasure::angle(row.second, row.first).value, r.value);
    }
}

TEST(EntityMeasureTest, CirclesOfEdgesAndFaces) {
    const Vec3 c(1, 2, 3);
    struct Row {
        const char* what;
        WorldEntity entity;
        Vec3 centre;
        float radius;
        bool exact;
    };
    const Row rows[] = {
        {"hole", cylinder(c, 5, 10), c + Vec3(0, 0, 5), 5, true},
        {"scaled hole", cylinder(c * 2.5f, 12.5f, 25), c * 2.5f + Vec3(0, 0, 12.5f), 12.5f, true},
        {"its rim", circle(c, 5), c, 5, true},
        {"an arc", circle(c, 5, kPi / 3, Curve::ARC), c, 5, true},
        {"an unknown round edge", unknown(circle(c, 5)), c, 5, false},
        {"an unknown quarter arc", unknown(circle(c, 5, kPi / 2)), c, 5, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Vec3 centre, axis;
        float radius = 0.0f;
        bool exact = false;
        ASSERT_TRUE(EntityMeasure::circle(row.entity, centre, axis, radius, &exact));
        expectNear(centre, row.centre, 1e-4f, "centre");
        EXPECT_NEAR(std::abs(axis[2]), 1.0f, 1e-5f);
        EXPECT_NEAR(radius, row.radius, 1e-4f);
        EXPECT_EQ(exact, row.exact);
    }
    Vec3 centre, axis;
    float radius = 0.0f;
    EXPECT_FALSE(EntityMeasure::circle(line(c, Vec3()), centre, axis, radius));
    EXPECT_FALSE(EntityMeasure::circle(unknown(boxFace(0, true)), centre, axis, radius));
    WorldEntity bent = unknown(line(Vec3(), Vec3(4, 0, 0)));
    bent.polyline.push_back(Vec3(4, 4, 0));
    bent.polyline.push_back(Vec3(4, 8, 0));
    EXPECT_FALSE(EntityMeasure::circle(bent, centre, axis, radius)) << "a bent line is no circle";
}

TEST(EntityMeasureTest, CircleThroughThreePoints) {
    // A circle of radius 4 about (1, 2, 3) in a tilted plane.
    const Vec3 c(1, 2, 3), u = Vec3(1, 1, 0).normalized(), v = Vec3(-1, 1, 1).normalized();
    const auto at = [&](float t) { return c + (u * std::cos(t) + v * std::sin(t)) * 4.0f; };
    Vec3 centre;
    float radius = 0.0f;
    ASSERT_TRUE(EntityMeasure::circleThrough(at(0.1f), at(1.0f), at(4.0f), centre, radius));
    expectNear(centre, c, 1e-5f, "centre");
    EXPECT_NEAR(radius, 4.0f, 1e-5f);
    EXPECT_FALSE(
        EntityMeasure::circleThrough(Vec3(0, 0, 0), Vec3(1, 1, 1), Vec3(3, 3, 3), centre, radius));
    EXPECT_FALSE(EntityMeasure::circleThrough(c, c, at(1.0f), centre, radius));
}

TEST(EntityMeasureTest, LengthsAndAreas) {
    EXPECT_NEAR(EntityMeasure::length(line(Vec3(1, 1, 1), Vec3(4, 5, 1))), 5.0f, 1e-6f);
    EXPECT_NEAR(EntityMeasure::length(circle(Vec3(1, 2, 3), 5)), 10 * kPi, 1e-5f);
    EXPECT_NEAR(EntityMeasure::length(circle(Vec3(1, 2, 3), 5, kPi / 2, Curve::ARC)), 2.5f * kPi,
                1e-5f);
    // Without its circle an edge measures along its chords.
    const WorldEntity chords = unknown(circle(Vec3(), 5, kPi / 2));
    EXPECT_NEAR(EntityMeasure::length(chords), EntityMeasure::tapeLength(chords.polyline), 1e-6f);
    EXPECT_LT(EntityMeasure::length(chords), 2.5f * kPi);
    EXPECT_NEAR(EntityMeasure::tapeLength({Vec3(0, 0, 0), Vec3(3, 4, 0), Vec3(3, 4, 2)}), 7.0f,
                1e-6f);
    EXPECT_NEAR(EntityMeasure::area(boxFace(2, true)), 60.0f, 1e-5f);
    EXPECT_NEAR(EntityMeasure::area(grid(0, 0)), 45.0f * 45.0f, 1e-2f);
    EXPECT_EQ(EntityMeasure::area(point(Vec3())), 0.0f);
}

} // namespace
