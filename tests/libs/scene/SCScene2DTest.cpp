#include "qrn2d/SCScene2D.h"

#include <gtest/gtest.h>

#include <vector>

TEST(SCScene2D, AddHelpersLinkSheetsViewsEntitiesAndColors) {
    qrn2d::SCScene2D s;
    const int a = s.addSheet(qrn2d::Sheet{});
    const int b = s.addSheet(qrn2d::Sheet{});
    const int front = s.addView(b, L"Front");
    const int side = s.addView(a, L"Side");
    const int top = s.addView(b, L"Top");
    EXPECT_EQ(s.views[static_cast<std::size_t>(side)].name, L"Side");
    EXPECT_EQ(s.sheetViews[b], (std::vector<int>{front, top}));
    EXPECT_EQ(s.sheetViews[a], (std::vector<int>{side}));

    const int red = s.addColor(qrnmath::Vec4(1.0f, 0.0f, 0.0f, 1.0f));
    const int blue = s.addColor(qrnmath::Vec4(0.0f, 0.0f, 1.0f, 1.0f));
    const int e0 = s.addEntity(top, qrn2d::Entity{}, blue);
    const int e1 = s.addEntity(front, qrn2d::Entity{}, red);
    const int e2 = s.addEntity(top, qrn2d::Entity{}, red);
    EXPECT_EQ(s.viewEntities[top], (std::vector<int>{e0, e2}));
    EXPECT_EQ(s.viewEntities[front], (std::vector<int>{e1}));
    EXPECT_EQ(s.entityColors[e0], blue);
    EXPECT_EQ(s.colors[static_cast<std::size_t>(s.entityColors[e2])].x(), 1.0f);

    s.maxDiagonal = 5.0f;
    s.clear();
    EXPECT_TRUE(s.viewEntities.empty());
    EXPECT_EQ(s.maxDiagonal, 0.0f);
    EXPECT_EQ(s.addSheet(qrn2d::Sheet{}), 0);
}
