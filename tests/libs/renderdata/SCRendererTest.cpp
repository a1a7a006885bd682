#include "qrngl/SCRenderer.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/SCStripRenderer.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCScene.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace qrngl;

namespace {

template <class Base>
struct Stub : Base {
    Stub(short order, int tag) : ord(order), tag(tag) {}
    void render() const override {}
    short order() const override { return ord; }
    const short ord;
    const int tag;
};

template <class Set>
std::vector<int> tags(const Set& s) {
    std::vector<int> out;
    for (const auto& r : s)
        out.push_back(dynamic_cast<const Stub<typename Set::key_type::element_type>&>(*r).tag);
    return out;
}

} // namespace

TEST(SCRenderer, PreAndPostRenderersKeepTheirOrder) {
    using Pre = Stub<IPreRenderer>;
    using Post = Stub<IPostRenderer>;
    SCRenderer r;
    auto preB = std::make_shared<Pre>(5, 2);
    r.addPreRenderer(std::make_shared<Pre>(1, 3));
    r.addPreRenderer(std::make_shared<Pre>(5, 1));
    r.addPreRenderer(std::make_shared<Pre>(9, 4));
    r.addPreRenderer(preB);
    r.addPreRenderer(nullptr);
    r.addPreRenderer(std::make_shared<Pre>(5, 5));
    EXPECT_EQ(tags(r.preRenderers), (std::vector<int>{4, 1, 2, 5, 3}));
    // Removal is by identity, not by order.
    EXPECT_TRUE(r.removePreRenderer(preB));
    EXPECT_FALSE(r.removePreRenderer(preB));
    EXPECT_EQ(tags(r.preRenderers), (std::vector<int>{4, 1, 5, 3}));

    auto post = std::make_shared<Post>(0, 2);
    r.addPostRenderer(std::make_shared<Post>(3, 1));
    r.addPostRenderer(post);
    r.addPostRenderer(std::make_shared<Post>(-2, 3));
    r.addPostRenderer(std::make_shared<Post>(0, 4));
    EXPECT_EQ(tags(r.postRenderers), (std::vector<int>{3, 2, 4, 1}));
    EXPECT_TRUE(r.removePostRenderer(post));
    EXPECT_EQ(tags(r.postRenderers), (std::vector<int>{3, 4, 1}));
}

TEST(SCRenderer, ReadyFlagDeepCameraCloneAndTheFactory) {
    SCRenderer r;
    r.flags = 0x80;
    r.setReady(true);
    EXPECT_TRUE(r.isReady());
    EXPECT_EQ(r.flags, 0x81);
    r.setReady(false);
    EXPECT_EQ(r.flags, 0x80);

    r.camera->setFieldOfView(25.0f);
    auto copy = std::dynamic_pointer_cast<SCRenderer>(r.clone());
    ASSERT_TRUE(copy && copy->camera);
    copy->camera->setFieldOfView(50.0f);
    EXPECT_EQ(r.camera->fieldOfView(), 25.0f);
    r.clear();
    EXPECT_EQ(r.flags, 0);
    ASSERT_TRUE(r.camera);
    EXPECT_EQ(copy->camera->fieldOfView(), 50.0f);

    SCGLFactory chain(std::make_shared<qrnsg::SCFactory>());
    EXPECT_TRUE(std::dynamic_pointer_cast<SCRenderer>(chain.create(qrnsg::SCHEMA_RENDERER)));
    EXPECT_TRUE(
        std::dynamic_pointer_cast<SCStripRenderer>(chain.create(qrnsg::SCHEMA_STRIP_RENDERER)));
    EXPECT_TRUE(std::dynamic_pointer_cast<qrnsg::SCScene>(chain.create(qrnsg::SCHEMA_SCENE)));
    EXPECT_EQ(chain.create(qrnsg::SCHEMA_MARKUP), nullptr);
    EXPECT_EQ(SCGLFactory(nullptr).create(qrnsg::SCHEMA_SCENE), nullptr);
}
