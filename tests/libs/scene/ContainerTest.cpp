#include "qrnsg/Container.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(Container, KeepsInsertionOrderThroughReplaceAndRemove) {
    qrnsg::Container<int, std::string> c;
    const auto keys = [&c] {
        std::vector<int> out;
        for (const auto& e : c)
            out.push_back(e.first);
        return out;
    };
    for (int id : {30, 10, 20, 5})
        c.set(id, std::to_string(id));
    EXPECT_EQ(c.set(10, "B"), "B");
    EXPECT_EQ(keys(), (std::vector<int>{30, 10, 20, 5}));
    EXPECT_EQ(c.size(), 4u);

    // Removing shifts the later entries; lookups must follow them.
    EXPECT_TRUE(c.remove(30));
    EXPECT_FALSE(c.remove(30));
    EXPECT_TRUE(c.remove(20));
    EXPECT_EQ(keys(), (std::vector<int>{10, 5}));
    ASSERT_NE(c.find(5), nullptr);
    EXPECT_EQ(*c.find(5), "5");
    EXPECT_EQ(*c.find(10), "B");
    EXPECT_EQ(c.find(30), nullptr);
    c.set(5, "D");
    c[30] += "x";
    c[30] += "y";
    EXPECT_EQ(keys(), (std::vector<int>{10, 5, 30}));
    EXPECT_EQ(*c.find(5), "D");
    EXPECT_EQ(*c.find(30), "xy");

    c.clear();
    EXPECT_TRUE(c.empty());
    EXPECT_FALSE(c.contains(10));
}
