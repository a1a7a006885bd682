#include "qrnsg/Hierarchy.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

//  1 ( 2 ( 4 ( 6 ), 5 ), 3 ),  8 ( 9 )
static qrnsg::Hierarchy sample() {
    qrnsg::Hierarchy h;
    const std::pair<int, int> nodes[] = {
        {1, qrnsg::Hierarchy::NONE}, {2, 1}, {3, 1}, {4, 2}, {5, 2}, {6, 4},
        {8, qrnsg::Hierarchy::NONE}, {9, 8}};
    for (const auto& n : nodes)
        EXPECT_TRUE(h.add(n.first, n.second));
    return h;
}

TEST(Hierarchy, StructureDepthAndOrder) {
    qrnsg::Hierarchy h = sample();
    EXPECT_FALSE(h.add(2, 8));   // taken
    EXPECT_FALSE(h.add(10, 77)); // unknown parent
    EXPECT_FALSE(h.add(11, 11));
    EXPECT_EQ(h.size(), 8u);
    EXPECT_EQ(h.parent(2), 1);
    EXPECT_EQ(h.parent(1), qrnsg::Hierarchy::NONE);
    EXPECT_EQ(h.parent(77), qrnsg::Hierarchy::NONE);
    EXPECT_EQ(h.roots(), (std::vector<int>{1, 8}));
    EXPECT_EQ(h.children(2), (std::vector<int>{4, 5}));
    EXPECT_EQ(h.depth(1), 0);
    EXPECT_EQ(h.depth(6), 3);
    EXPECT_EQ(h.depth(77), -1);

    EXPECT_EQ(h.subtree(1), (std::vector<int>{1, 2, 4, 6, 5, 3}));
    EXPECT_EQ(h.subtree(2), (std::vector<int>{2, 4, 6, 5}));
    EXPECT_TRUE(h.subtree(77).empty());
    std::vector<std::pair<int, int>> seen;
    h.visit([&](int id, int depth) { seen.emplace_back(id, depth); });
    EXPECT_EQ(seen, (std::vector<std::pair<int, int>>{
                        {1, 0}, {2, 1}, {4, 2}, {6, 3}, {5, 2}, {3, 1}, {8, 0}, {9, 1}}));
}

TEST(Hierarchy, RemoveTakesTheWholeSubtree) {
    qrnsg::Hierarchy h = sample();
    EXPECT_TRUE(h.remove(2));
    EXPECT_FALSE(h.remove(2));
    EXPECT_EQ(h.size(), 4u);
    EXPECT_FALSE(h.contains(6));
    EXPECT_EQ(h.subtree(1), (std::vector<int>{1, 3}));
    // Freed ids are free again; a removed root leaves the roots.
    EXPECT_TRUE(h.add(4, 3));
    EXPECT_EQ(h.depth(4), 2);
    EXPECT_TRUE(h.remove(8));
    EXPECT_EQ(h.roots(), (std::vector<int>{1}));
    EXPECT_FALSE(h.contains(9));
}
