#include "qrn/Document.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"

#include <gtest/gtest.h>

#include <memory>

using namespace qrnsg;

namespace {

class CountingFactory : public SCFactory {
public:
    std::shared_ptr<Schema> create(short type) override {
        ++calls;
        return SCFactory::create(type);
    }
    int calls = 0;
};

} // namespace

TEST(Document, ComponentsAreMadeOnceAndKeptByType) {
    auto factory = std::make_shared<CountingFactory>();
    qrn::Document doc(factory);
    EXPECT_EQ(doc.getSchema(SCHEMA_SCENE), nullptr);
    auto scene = doc.addSchema(SCHEMA_SCENE);
    ASSERT_TRUE(scene);
    EXPECT_EQ(doc.addSchema(SCHEMA_SCENE), scene);
    EXPECT_EQ(factory->calls, 1);
    // A type no link knows is not recorded.
    EXPECT_EQ(doc.addSchema(SCHEMA_MARKUP), nullptr);
    EXPECT_FALSE(doc.hasSchema(SCHEMA_MARKUP));

    EXPECT_EQ(doc.get<SCScene>(SCHEMA_SCENE), scene);
    EXPECT_EQ(doc.get<SCSceneRT>(SCHEMA_SCENE), nullptr);
    EXPECT_EQ(doc.get<SCSceneRT>(SCHEMA_SCENE_RT), nullptr);

    auto rt = std::make_shared<SCSceneRT>();
    doc.setSchema(rt);
    doc.setSchema(nullptr);
    qrn::IDocument& base = doc;
    EXPECT_EQ(base.getSchema(SCHEMA_SCENE_RT), rt);
    EXPECT_EQ(doc.addSchema(SCHEMA_SCENE_RT), rt);

    EXPECT_TRUE(doc.removeSchema(SCHEMA_SCENE));
    EXPECT_FALSE(doc.removeSchema(SCHEMA_SCENE));
    EXPECT_NE(doc.addSchema(SCHEMA_SCENE), scene);
    EXPECT_EQ(qrn::Document(nullptr).addSchema(SCHEMA_SCENE), nullptr);
}
