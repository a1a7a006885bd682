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

// The bounds of some points: left, bottom, right, top.
std::vector<float> bounds(const std::vector<qrnmath::Vec3>& points) {
    std::vector<float> box{1e9f, 1e9f, -1e9f, -1e9f};
    for (const auto& p : points)
        box = {std::min(box[0], p[0]), std::min(box[1], p[1]), std::max(box[2], p[0]),
               std::max(box[3], p[1])};
    return box;
}

// The strips of a polyline of two-point strips, as x0, y0, x1, y1, sorted.
std::vector<std::vector<float>> segments(const qrnsg::Polyline& p) {
    std::vector<std::vector<float>> out;
    for (unsigned int s : p.strips)
        out.push_back({p.points[s][0], p.points[s][1], p.points[s + 1][0], p.points[s + 1][1]});
    std::sort(out.begin(), out.end());
    return out;
}

TEST(ZoomboxUtilsTest, BoxCoversBothCornerPixelsWithTheOriginAtTheBottom) {
    // Window rows 10..30 are rows 29..49 counted from the bottom of a 60-pixel viewport. The
    // outline runs one pixel inside the box's edges, so that a two-pixel line covers the outer
    // two rings and no pixel outside.
    const std::vector<std::vector<float>> sides = {
        {10, 30, 41, 30}, {10, 49, 41, 49}, {11, 29, 11, 50}, {40, 29, 40, 50}};
    for (auto drag : std::vector<std::vector<int>>{
             {10, 10, 40, 30}, {40, 30, 10, 10}, {10, 30, 40, 10}, {40, 10, 10, 30}}) {
        SCOPED_TRACE(::testing::Message()
                     << drag[0] << "," << drag[1] << " to " << drag[2] << "," << drag[3]);
        qrnsg::Mesh mesh;
        qrnsg::Polyline outline;
        mesh.vertices.assign(9, qrnmath::Vec3()); // replaced, not added to
        outline.addStrip({{0, 0, 0}, {1, 1, 1}});
        ZoomboxUtils::createGeometry(drag[0], drag[1], drag[2], drag[3], mesh, outline, 60);
        ASSERT_EQ(mesh.vertices.size(), 4u);
        EXPECT_EQ(bounds(mesh.vertices), (std::vector<float>{10, 29, 41, 50}));
        // Both triangles face the viewer (counter-clockwise, normals +z) and tile the box.
        ASSERT_EQ(mesh.triangleCount(), 2u);
        float area = 0.0f;
        for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
            const auto& a = mesh.vertices[mesh.indices[i]];
            const auto& b = mesh.vertices[mesh.indices[i + 1]];
            const auto& c = mesh.vertices[mesh.indices[i + 2]];
            const float twice = (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
            EXPECT_GT(twice, 0.0f);
            area += twice / 2.0f;
        }
        EXPECT_EQ(area, 31.0f * 21.0f);
        EXPECT_EQ(mesh.normals, std::vector<qrnmath::Vec3>(4, qrnmath::Vec3(0.0f, 0.0f, 1.0f)));
        // The sides, whichever way each runs.
        ASSERT_EQ(outline.points.size(), 8u);
        for (unsigned int s : outline.strips)
            if (outline.points[s][0] + outline.points[s][1] >
                outline.points[s + 1][0] + outline.points[s + 1][1])
                std::swap(outline.points[s], outline.points[s + 1]);
        EXPECT_EQ(segments(outline), sides);
    }
    // A click without motion is a one-pixel box at the bottom row of the viewport.
    qrnsg::Mesh mesh;
    qrnsg::Polyline outline;
    ZoomboxUtils::createGeometry(0, 59, 0, 59, mesh, outline, 60);
    EXPECT_EQ(bounds(mesh.vertices), (std::vector<float>{0.0f, 0.0f, 1.0f, 1.0f}));
}

TEST(CrossHairUtilsTest, FourArmsAroundTheCentrePixelEndingOnPixelEdges) {
    qrnsg::Polyline figure;
    figure.addStrip({{0, 0, 0}, {1, 1, 1}});
    CrossHairUtils::createCrossHair(30, 20, figure, 60);
    ASSERT_EQ(figure.points.size(), 8u);
    // Window row 20 is row 39 from the bottom: the arms run along the centre lines of pixel
    // (30, 39), covering the pixels GAP to ARM away on each side.
    const float gap = CrossHairUtils::GAP, arm = CrossHairUtils::ARM, x = 30.5f, y = 39.5f;
    for (unsigned int s : figure.strips)
        if (figure.points[s][0] + figure.points[s][1] >
            figure.points[s + 1][0] + figure.points[s + 1][1])
            std::swap(figure.points[s], figure.points[s + 1]);
    EXPECT_EQ(segments(figure),
              (std::vector<std::vector<float>>{{x - arm - 0.5f, y, x - gap + 0.5f, y},
                                               {x, y - arm - 0.5f, x, y - gap + 0.5f},
                                               {x, y + gap - 0.5f, x, y + arm + 0.5f},
                                               {x + gap - 0.5f, y, x + arm + 0.5f, y}}));
    EXPECT_GT(gap, 1) << "the pixel pointed at stays visible";
}

} // namespace
