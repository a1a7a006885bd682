#include "qrngl/frame/SCRFactory.h"
#include "qrngl/frame/SCRenderInfra.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCScene.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Remembers the types it was asked for and answers each with a scene component.
class RecordingFactory : public qrnsg::IFactory {
public:
    std::shared_ptr<qrnsg::Schema> create(short type) override {
        asked.push_back(type);
        return std::make_shared<qrnsg::SCScene>();
    }
    std::vector<short> asked;
};

TEST(SCRFactoryTest, MakesTheInfrastructureComponentAndHandsOnEveryOtherType) {
    auto next = std::make_shared<RecordingFactory>();
    auto factory = qrnglr::createFactory(next);
    ASSERT_NE(factory, nullptr);

    auto infra = factory->create(18);
    ASSERT_NE(infra, nullptr);
    EXPECT_EQ(infra->type(), 18);
    auto typed = std::dynamic_pointer_cast<qrngl::SCRenderInfra>(infra);
    ASSERT_NE(typed, nullptr);
    for (void* slot : typed->slots)
        EXPECT_EQ(slot, nullptr);
    EXPECT_TRUE(next->asked.empty());

    // Every other type, known to this link or not, goes to the next one.
    EXPECT_NE(factory->create(0), nullptr);
    EXPECT_NE(factory->create(2), nullptr);
    EXPECT_NE(factory->create(-1), nullptr);
    EXPECT_EQ(next->asked, (std::vector<short>{0, 2, -1}));

    // Each call makes a new component; in front of the data factories, unknown types get none.
    EXPECT_NE(factory->create(18), infra);
    EXPECT_EQ(qrnglr::createFactory(std::make_shared<qrnsg::SCFactory>())->create(99), nullptr);

    // Copies are independent.
    qrngl::SCRenderInfra a;
    int x = 0;
    a.slots[2] = &x;
    qrngl::SCRenderInfra b(a);
    a.clear();
    EXPECT_EQ(b.slots[2], &x);
    EXPECT_EQ(a.slots[2], nullptr);
    EXPECT_EQ(b.type(), 18);
}

} // namespace
