#include "qrngl/overlays/CrossHairRenderer.h"
#include "qrngl/overlays/ZoomboxRenderer.h"
#include "qrnglutils/CrossHairUtils.h"
#include "qrnglutils/ZoomboxUtils.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using qrnglutils::CrossHairUtils;
using qrnglutils::ZoomboxUtils;

struct Rect {
    float l, b, r, t;
};

Rect bounds(const std::vector<qrnmath::Vec3>& points) {
    Rect box{1e9f, 1e9f, -1e9f, -1e9f};
    for (const auto& p : points) {
        box.l = std::min(box.l, p[0]);
        box.b = std::min(box.b, p[1]);
        box.r = std::max(box.r, p[0]);
        box.t = std::max(box.t, p[1]);
    }
    return box;
}

std::vector<float> corners(const Rect& r) {
    return {r.l, r.b, r.r, r.t};
}

// The pixel columns (or rows) whose centres lie on the segment from a to b.
std::pair<int, int> pixelSpan(float a, float b) {
    float lo = std::min(a, b), hi = std::max(a, b);
    return {static_cast<int>(std::ceil(lo - 0.5f)), static_cast<int>(std::floor(hi - 0.5f))};
}

// Strip i of a polyline of two-point strips.
std::pair<qrnmath::Vec3, qrnmath::Vec3> segment(const qrnsg::Polyline& p, std::size_t i) {
    return {p.points[p.strips[i]], p.points[p.strips[i] + 1]};
}

TEST(ZoomboxUtilsTest, BoxCoversBothCornerPixelsWithTheOriginAtTheBottom) {
    const int h = 60;
    // Window rows 10..30 are rows 29..49 counted from the bottom of a 60-pixel viewport.
    const Rect expected{10.0f, 29.0f, 41.0f, 50.0f};
    for (auto drag : std::vector<std::vector<int>>{
             {10, 10, 40, 30}, {40, 30, 10, 10}, {10, 30, 40, 10}, {40, 10, 10, 30}}) {
        SCOPED_TRACE(::testing::Message()
                     << drag[0] << "," << drag[1] << " to " << drag[2] << "," << drag[3]);
        qrnsg::Mesh mesh;
        qrnsg::Polyline outline;
        mesh.vertices.assign(9, qrnmath::Vec3()); // replaced, not added to
        outline.addStrip({{0, 0, 0}, {1, 1, 1}});
        ZoomboxUtils::createGeometry(drag[0], drag[1], drag[2], drag[3], mesh, outline, h);

        ASSERT_EQ(mesh.vertices.size(), 4u);
        ASSERT_EQ(mesh.triangleCount(), 2u);
        EXPECT_EQ(corners(bounds(mesh.vertices)), corners(expected));
        // Both triangles face the viewer (counter-clockwise, normals +z) and tile the box.
        float area = 0.0f;
        for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
            const auto& a = mesh.vertices[mesh.indices[i]];
            const auto& b = mesh.vertices[mesh.indices[i + 1]];
            const auto& c = mesh.vertices[mesh.indices[i + 2]];
            float twice = (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
            EXPECT_GT(twice, 0.0f);
            area += twice / 2.0f;
        }
        EXPECT_EQ(area, 31.0f * 21.0f);
        EXPECT_EQ(mesh.normals, std::vector<qrnmath::Vec3>(4, qrnmath::Vec3(0.0f, 0.0f, 1.0f)));

        // Four full-length sides, one pixel inside the box's edges, so that a two-pixel line
        // covers the outer two rings and no pixel outside.
        ASSERT_EQ(outline.stripCount(), 4u);
        ASSERT_EQ(outline.points.size(), 8u);
        EXPECT_EQ(corners(bounds(outline.points)), corners(expected));
        std::vector<float> insetX, insetY;
        for (std::size_t i = 0; i < 4; ++i) {
            auto s = segment(outline, i);
            if (s.first[1] == s.second[1]) {
                insetY.push_back(s.first[1]);
                EXPECT_EQ(std::abs(s.first[0] - s.second[0]), expected.r - expected.l);
            } else {
                EXPECT_EQ(s.first[0], s.second[0]) << "sides are horizontal or vertical";
                insetX.push_back(s.first[0]);
                EXPECT_EQ(std::abs(s.first[1] - s.second[1]), expected.t - expected.b);
            }
        }
        std::sort(insetX.begin(), insetX.end());
        std::sort(insetY.begin(), insetY.end());
        EXPECT_EQ(insetX, (std::vector<float>{expected.l + 1.0f, expected.r - 1.0f}));
        EXPECT_EQ(insetY, (std::vector<float>{expected.b + 1.0f, expected.t - 1.0f}));
    }

    // A click without motion is a one-pixel box at the bottom row of the viewport.
    qrnsg::Mesh mesh;
    qrnsg::Polyline outline;
    ZoomboxUtils::createGeometry(0, 59, 0, 59, mesh, outline, h);
    EXPECT_EQ(corners(bounds(mesh.vertices)), (std::vector<float>{0.0f, 0.0f, 1.0f, 1.0f}));
}

TEST(CrossHairUtilsTest, FourArmsAroundTheCentrePixel) {
    const int h = 60, x = 30, y = 20;
    qrnsg::Polyline figure;
    figure.addStrip({{0, 0, 0}, {1, 1, 1}});
    CrossHairUtils::createCrossHair(x, y, figure, h);
    ASSERT_EQ(figure.stripCount(), 4u);
    ASSERT_EQ(figure.points.size(), 8u);

    // Window row 20 is row 39 from the bottom; the figure is symmetric about its centre.
    const float cx = x + 0.5f, cy = (h - 1 - y) + 0.5f;
    Rect box = bounds(figure.points);
    EXPECT_EQ((box.l + box.r) / 2.0f, cx);
    EXPECT_EQ((box.b + box.t) / 2.0f, cy);

    // Arms along the centre lines, covering the pixels GAP to ARM away on each side.
    std::vector<std::pair<int, int>> horizontal, vertical;
    for (std::size_t i = 0; i < 4; ++i) {
        auto s = segment(figure, i);
        if (s.first[1] == s.second[1]) {
            EXPECT_EQ(s.first[1], cy);
            horizontal.push_back(pixelSpan(s.first[0], s.second[0]));
        } else {
            EXPECT_EQ(s.first[0], cx);
            EXPECT_EQ(s.second[0], cx);
            vertical.push_back(pixelSpan(s.first[1], s.second[1]));
        }
        // Ends on pixel edges, so that the line covers whole pixels.
        for (float v : {s.first[0], s.first[1], s.second[0], s.second[1]})
            EXPECT_TRUE(v == std::floor(v) || v - std::floor(v) == 0.5f);
    }
    const int gap = CrossHairUtils::GAP, arm = CrossHairUtils::ARM;
    std::sort(horizontal.begin(), horizontal.end());
    std::sort(vertical.begin(), vertical.end());
    const int row = h - 1 - y;
    EXPECT_EQ(horizontal,
              (std::vector<std::pair<int, int>>{{x - arm, x - gap}, {x + gap, x + arm}}));
    EXPECT_EQ(vertical,
              (std::vector<std::pair<int, int>>{{row - arm, row - gap}, {row + gap, row + arm}}));
    EXPECT_GT(gap, 1) << "the pixel pointed at stays visible";
}

} // namespace
