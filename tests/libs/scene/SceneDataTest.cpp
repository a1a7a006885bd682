#include "qrnsg/SCFactory.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace qrnsg;
using qrnmath::Vec3;

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
}
