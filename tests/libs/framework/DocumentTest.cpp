#include "qrn/Document.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnui/Updater.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

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

TEST(Updater, ListenersHearEachHintInRegistrationOrder) {
    auto doc = std::make_shared<qrn::Document>(nullptr);
    qrnui::Updater updater;
    std::vector<int> calls;
    for (int i = 0; i < 3; ++i)
        updater.addListener([&calls, i, doc](const qrnui::Hint& h) {
            calls.push_back(i * 100 + h.code() + (h.document() == doc ? 10 : 0));
        });
    qrn::IUpdater& base = updater;
    base.update(qrnui::Hint(7, doc));
    base.update(qrnui::Hint(8, nullptr));
    EXPECT_EQ(calls, (std::vector<int>{17, 117, 217, 8, 108, 208}));

    // A listener may register others while notified; they hear from the next hint on.
    int late = 0;
    updater.addListener([&](const qrnui::Hint&) {
        for (int i = 0; i < 16; ++i)
            updater.addListener([&late](const qrnui::Hint&) { ++late; });
    });
    updater.update(qrnui::Hint(1, nullptr));
    EXPECT_EQ(late, 0);
    updater.update(qrnui::Hint(2, nullptr));
    EXPECT_EQ(late, 16);
}
