#include "qrnsgutils/DataUtils.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/VisibilityFunctor.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using qrnsg::RTState;
using qrnsgutils::DataUtils;

namespace {

class RecordingFunctor : public qrnsg::IPairFunctor {
public:
    void apply(int id, const qrnsg::TransformPair& t, unsigned char& flags) const override {
        seen.push_back(id * 100 + t.second);
    }
    mutable std::vector<int> seen;
};

} // namespace

TEST(DataUtils, FunctorRunsOverEveryTransformedPrimitive) {
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
}

TEST(DataUtils, WithoutFunctorFlagsAreOnlyRead) {
    RTState s;
    s.add(1, 0, 0);
    s.add(2, 1, 0);
    s.flags.remove(1);
    *s.flags.find(2) = RTState::ANCHORED;
    EXPECT_FALSE(DataUtils::updateRenderState(s.transforms, nullptr, s.flags));
    EXPECT_FALSE(s.flags.contains(1));
    EXPECT_EQ(*s.flags.find(2), qrnsg::RTState::ANCHORED);
    *s.flags.find(2) = RTState::VISIBLE;
    EXPECT_TRUE(DataUtils::updateRenderState(s.transforms, nullptr, s.flags));
}
