#include "qrn2d/SCScene2D.h"
#include "qrnsg/Container.h"
#include "qrnsg/Hierarchy.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/StringUtils.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

using namespace qrnsg;
using qrnmath::Vec3;

TEST(SceneData, ContainerKeepsInsertionOrderThroughReplaceAndRemove) {
    Container<int, std::string> c;
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

TEST(SceneData, HierarchyStructureDepthOrderAndRemoval) {
    //  1 ( 2 ( 4 ( 6 ), 5 ), 3 ),  8 ( 9 )
    Hierarchy h;
    for (auto n : {std::make_pair(1, int(Hierarchy::NONE)),
                   {2, 1},
                   {3, 1},
                   {4, 2},
                   {5, 2},
                   {6, 4},
                   {8, int(Hierarchy::NONE)},
                   {9, 8}})
        EXPECT_TRUE(h.add(n.first, n.second));
    EXPECT_FALSE(h.add(2, 8));   // taken
    EXPECT_FALSE(h.add(10, 77)); // unknown parent
    EXPECT_FALSE(h.add(11, 11));
    EXPECT_EQ(h.size(), 8u);
    EXPECT_EQ(h.parent(2), 1);
    EXPECT_EQ(h.parent(1), Hierarchy::NONE);
    EXPECT_EQ(h.parent(77), Hierarchy::NONE);
    EXPECT_EQ(h.roots(), (std::vector<int>{1, 8}));
    EXPECT_EQ(h.children(2), (std::vector<int>{4, 5}));
    EXPECT_EQ(h.depth(6), 3);
    EXPECT_EQ(h.depth(77), -1);
    EXPECT_EQ(h.subtree(2), (std::vector<int>{2, 4, 6, 5}));
    EXPECT_TRUE(h.subtree(77).empty());
    std::vector<std::pair<int, int>> seen;
    h.visit([&](int id, int depth) { seen.emplace_back(id, depth); });
    EXPECT_EQ(seen, (std::vector<std::pair<int, int>>{
                        {1, 0}, {2, 1}, {4, 2}, {6, 3}, {5, 2}, {3, 1}, {8, 0}, {9, 1}}));

    // Removal takes the whole subtree; freed ids are free again; a removed root leaves the roots.
    EXPECT_TRUE(h.remove(2));
    EXPECT_FALSE(h.remove(2));
    EXPECT_EQ(h.size(), 4u);
    EXPECT_FALSE(h.contains(6));
    EXPECT_EQ(h.subtree(1), (std::vector<int>{1, 3}));
    EXPECT_TRUE(h.add(4, 3));
    EXPECT_EQ(h.depth(4), 2);
    EXPECT_TRUE(h.remove(8));
    EXPECT_EQ(h.roots(), (std::vector<int>{1}));
    EXPECT_FALSE(h.contains(9));
}

TEST(SceneData, BoundsStripsAndClone) {
    BBox b(Vec3(1.0f, 5.0f, -2.0f), Vec3(-1.0f, 2.0f, 2.0f));
    b.add(BBox()); // an empty box adds nothing
    EXPECT_EQ(b.min(), Vec3(-1.0f, 2.0f, -2.0f));
    EXPECT_EQ(b.center(), Vec3(0.0f, 3.5f, 0.0f));
    EXPECT_FLOAT_EQ(b.diagonal(), std::sqrt(29.0f));
    EXPECT_EQ(BBox().diagonal(), 0.0f);

    Polyline p;
    EXPECT_EQ(p.stripCount(), 0u);
    p.addStrip({Vec3(9.0f)}); // too short: ignored
    p.addStrip({Vec3(0.0f), Vec3(1.0f, 0.0f, 0.0f), Vec3(1.0f, 1.0f, 0.0f)});
    p.addStrip({Vec3(-5.0f), Vec3(6.0f)});
    EXPECT_EQ(p.stripCount(), 2u);
    EXPECT_EQ(p.strips, (std::vector<unsigned int>{0, 3}));

    SCScene s;
    EXPECT_TRUE(s.bbox().isEmpty());
    Mesh m;
    m.vertices = {Vec3(0.0f), Vec3(1.0f, 2.0f, 3.0f)};
    s.meshes.push_back(m);
    s.polylines.push_back(p);
    s.points.push_back(PointSet{{Vec3(0.0f, 0.0f, 9.0f)}, 3.0f});
    EXPECT_EQ(s.bbox().min(), Vec3(-5.0f));
    EXPECT_EQ(s.bbox().max(), Vec3(6.0f, 6.0f, 9.0f));

    auto copy = std::dynamic_pointer_cast<SCScene>(s.clone());
    ASSERT_TRUE(copy);
    copy->meshes[0].vertices[1] = Vec3(100.0f);
    EXPECT_EQ(s.meshes[0].vertices[1], Vec3(1.0f, 2.0f, 3.0f));
    s.clear();
    EXPECT_TRUE(s.meshes.empty());
    EXPECT_EQ(s.type(), SCHEMA_SCENE);
}

namespace {

class EchoFactory : public IFactory {
public:
    std::shared_ptr<Schema> create(short type) override {
        asked.push_back(type);
        return std::make_shared<SCPmi>();
    }
    std::vector<short> asked;
};

} // namespace

TEST(SceneData, FactoryMakesItsTypesAndPassesTheRestOn) {
    SCFactory last;
    EXPECT_TRUE(std::dynamic_pointer_cast<SCScene>(last.create(SCHEMA_SCENE)));
    EXPECT_TRUE(std::dynamic_pointer_cast<SCSceneRT>(last.create(SCHEMA_SCENE_RT)));
    EXPECT_TRUE(std::dynamic_pointer_cast<SCPmi>(last.create(SCHEMA_PMI)));
    EXPECT_EQ(last.create(SCHEMA_RENDERER), nullptr);
    auto next = std::make_shared<EchoFactory>();
    SCFactory chained(next);
    EXPECT_EQ(chained.create(SCHEMA_SCENE)->type(), SCHEMA_SCENE);
    EXPECT_TRUE(chained.create(SCHEMA_SCENE_2D));
    EXPECT_EQ(next->asked, (std::vector<short>{SCHEMA_SCENE_2D}));

    // The information, topology and resource components: cleared to their defaults, copied.
    auto info = std::dynamic_pointer_cast<SCInfo>(last.create(SCHEMA_INFO));
    auto topo = std::dynamic_pointer_cast<SCSceneTopo>(last.create(SCHEMA_SCENE_TOPO));
    auto res = std::dynamic_pointer_cast<SCSceneRes>(last.create(SCHEMA_SCENE_RES));
    ASSERT_TRUE(info && topo && res);
    EXPECT_EQ(info->type(), SCHEMA_INFO);
    EXPECT_EQ(topo->type(), SCHEMA_SCENE_TOPO);
    EXPECT_EQ(res->type(), SCHEMA_SCENE_RES);
    EXPECT_EQ(info->documentType, SCInfo::MODEL);
    info->lengthUnit = SCInfo::INCH;
    topo->nodes.push_back(SCSceneTopo::Node());
    res->meshes.push_back(Mesh());
    EXPECT_FALSE(topo->empty());
    EXPECT_FALSE(res->empty());
    auto topoCopy = std::dynamic_pointer_cast<SCSceneTopo>(topo->clone());
    info->clear();
    topo->clear();
    res->clear();
    EXPECT_EQ(info->lengthUnit, SCInfo::MILLIMETRE);
    EXPECT_TRUE(topo->empty());
    EXPECT_TRUE(res->empty());
    ASSERT_TRUE(topoCopy);
    EXPECT_EQ(topoCopy->nodes.size(), 1u);
}

TEST(SceneData, Scene2DAddHelpersLinkSheetsViewsEntitiesAndColors) {
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

TEST(SceneData, StringConversionsWidenUtf8AndNarrowToOneByteACharacter) {
    using qrnsgutils::StringUtils;
    EXPECT_EQ(StringUtils::convert(""), L"");
    EXPECT_EQ(StringUtils::convert("llvmpipe (LLVM 15.0.6, 256 bits)"),
              L"llvmpipe (LLVM 15.0.6, 256 bits)");
    // Multi-byte sequences become one character each; a stray byte does not stop the rest.
    EXPECT_EQ(StringUtils::convert("R\xC3\xA9sum\xC3\xA9"), L"R\u00E9sum\u00E9");
    EXPECT_EQ(StringUtils::convert("a\xFF"
                                   "b"),
              L"a\uFFFDb");
    EXPECT_EQ(StringUtils::convert(std::wstring()), "");
    // Latin-1 keeps its codes (the display lists of glyphs are indexed by them); others are '?'.
    EXPECT_EQ(StringUtils::convert(std::wstring(L"\u00D820 \u00B10.1\u00B0 \u00FF")),
              "\xD8"
              "20 \xB1"
              "0.1\xB0 \xFF");
    EXPECT_EQ(StringUtils::convert(std::wstring(L"\u23002\u5BF8")), "?2?");
}
