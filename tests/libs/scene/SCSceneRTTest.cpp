#include "qrnsg/SCSceneRT.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/VisibilityFunctor.h"
#include "qrnsgutils/DataUtils.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using qrnsg::RTState;
using qrnsg::SCSceneRT;
using qrnsgutils::DataUtils;

TEST(SCSceneRT, AddRegistersAVisiblePrimitiveOnce) {
    RTState s;
    s.add(4, 10, 2, RTState::ANCHORED);
    s.add(9, 11, 0);
    EXPECT_EQ(s.transforms.find(4)->first, qrnmath::MatrixUtils::identity());
    EXPECT_EQ(s.transforms.find(4)->second, 10);
    EXPECT_EQ(*s.flags.find(4), RTState::VISIBLE | RTState::ANCHORED);
    EXPECT_EQ(*s.materials.find(4), 2);
    // Adding an id again replaces its state; it must not be drawn twice.
    s.add(4, 12, 3);
    EXPECT_EQ(s.transforms.find(4)->second, 12);
    EXPECT_EQ(*s.flags.find(4), qrnsg::RTState::VISIBLE);
    EXPECT_EQ(*s.materials.find(4), 3);
    EXPECT_EQ(s.drawOrder, (std::vector<int>{4, 9}));
}

TEST(SCSceneRT, SortPutsOpaqueFirstGroupedByMaterialKeepingOrder) {
    SCSceneRT rt;
    const int glass = rt.addMeshMaterial(5, true);
    const int steel = rt.addMeshMaterial(0, false, 3);
    const int smoke = rt.addMeshMaterial(1, true);
    const int paint = rt.addMeshMaterial(2, false);
    EXPECT_EQ(paint, 3);
    EXPECT_EQ(rt.meshSceneMaterials, (std::vector<int>{5, 0, 1, 2}));
    EXPECT_EQ(rt.meshTextures, (std::vector<int>{-1, 3, -1, -1}));

    const int materialOf[] = {smoke, paint, glass, steel, paint, glass, steel, smoke, paint};
    for (int id = 0; id < 9; ++id)
        rt.meshes.add(id, id, materialOf[id]);
    rt.sortMeshDrawOrder();
    EXPECT_EQ(rt.meshes.drawOrder, (std::vector<int>{3, 6, 1, 4, 8, 2, 5, 0, 7}));

    // Many meshes (beyond any small-range shortcut of the sort): the same rules hold.
    rt.meshes.clear();
    for (int id = 0; id < 200; ++id)
        rt.meshes.add(id, id, (id * 7 + id / 5) % 4);
    rt.sortMeshDrawOrder();
    const auto& order = rt.meshes.drawOrder;
    ASSERT_EQ(order.size(), 200u);
    std::vector<bool> done(4, false);
    for (std::size_t i = 1; i < order.size(); ++i) {
        const auto prev = static_cast<std::size_t>(*rt.meshes.materials.find(order[i - 1]));
        const auto cur = static_cast<std::size_t>(*rt.meshes.materials.find(order[i]));
        EXPECT_LE(rt.meshMaterialRecords[prev].isTransparent(),
                  rt.meshMaterialRecords[cur].isTransparent());
        if (prev == cur) {
            EXPECT_LT(order[i - 1], order[i]) << i;
        } else {
            done[prev] = true;
            EXPECT_FALSE(done[cur]) << "material split at " << i;
        }
    }

    auto copy = std::dynamic_pointer_cast<SCSceneRT>(rt.clone());
    ASSERT_TRUE(copy);
    copy->meshes.add(500, 0, 0);
    copy->meshMaterialRecords[1].bytes[0] = 1;
    EXPECT_EQ(rt.meshes.drawOrder.size(), 200u);
    EXPECT_FALSE(rt.meshMaterialRecords[1].isTransparent());
}

namespace {

class RecordingFunctor : public qrnsg::IPairFunctor {
public:
    void apply(int id, const qrnsg::TransformPair& t, unsigned char& flags) const override {
        seen.push_back(id * 100 + t.second);
    }
    mutable std::vector<int> seen;
};

} // namespace

TEST(DataUtils, FunctorRunsOverEveryTransformedPrimitiveElseFlagsAreOnlyRead) {
    RTState s;
    s.add(3, 30, 0);
    s.add(1, 10, 0, RTState::ANCHORED);
    s.add(2, 20, 0);
    s.flags.remove(2);                 // a transform without flags
    s.flags.set(99, RTState::VISIBLE); // flags without a transform: not looked at
    auto rec = std::make_shared<RecordingFunctor>();
    EXPECT_TRUE(DataUtils::updateRenderState(s.transforms, rec, s.flags));
    EXPECT_EQ(rec->seen, (std::vector<int>{330, 110, 220}));
    ASSERT_TRUE(s.flags.contains(2)); // created, cleared, for the functor to fill
    EXPECT_EQ(*s.flags.find(2), 0);

    auto vis = std::make_shared<qrnsg::VisibilityFunctor>();
    vis->hide(1);
    vis->hide(3);
    EXPECT_TRUE(DataUtils::updateRenderState(s.transforms, vis, s.flags));
    EXPECT_EQ(*s.flags.find(1), qrnsg::RTState::ANCHORED);
    EXPECT_EQ(*s.flags.find(2), qrnsg::RTState::VISIBLE);
    vis->hide(2);
    EXPECT_FALSE(DataUtils::updateRenderState(s.transforms, vis, s.flags));
    vis->showAll();
    EXPECT_TRUE(DataUtils::updateRenderState(s.transforms, vis, s.flags));
    EXPECT_EQ(*s.flags.find(1), RTState::ANCHORED | RTState::VISIBLE);

    // Without a functor the flags are only read: shown when any primitive is visible.
    s.flags.remove(3);
    *s.flags.find(1) = *s.flags.find(2) = RTState::ANCHORED;
    EXPECT_FALSE(DataUtils::updateRenderState(s.transforms, nullptr, s.flags));
    EXPECT_FALSE(s.flags.contains(3));
    EXPECT_EQ(*s.flags.find(2), RTState::ANCHORED);
    *s.flags.find(2) = RTState::VISIBLE;
    EXPECT_TRUE(DataUtils::updateRenderState(s.transforms, nullptr, s.flags));
}
