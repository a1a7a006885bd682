#include "qrn/LogManager.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

class MemoryLogger : public qrn::ILogger {
public:
    void log(const std::wstring& message) override { lines.push_back(message); }
    bool isEnabled() const override { return true; }
    std::vector<std::wstring> lines;
};

} // namespace

TEST(LogManager, SingletonHandsMessagesToTheSetLoggerOrDropsThem) {
    auto& manager = qrn::LogManager::getInstance();
    EXPECT_EQ(&manager, &qrn::LogManager::getInstance());
    ASSERT_TRUE(manager.getLogger());
    EXPECT_FALSE(manager.getLogger()->isEnabled()) << "the default logger drops messages";
    manager.getLogger()->log(L"dropped");

    auto memory = std::make_shared<MemoryLogger>();
    manager.setLogger(memory);
    qrn::LogManager::getInstance().getLogger()->log(L"first");
    EXPECT_EQ(memory->lines, (std::vector<std::wstring>{L"first"}));

    manager.setLogger(nullptr);
    ASSERT_TRUE(manager.getLogger());
    EXPECT_FALSE(manager.getLogger()->isEnabled());
    manager.getLogger()->log(L"after");
    EXPECT_EQ(memory->lines.size(), 1u);
}
