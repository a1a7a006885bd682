#include "MemoryLogger.h"
#include "qrn/FileLogger.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace fs = std::filesystem;

TEST(LogManager, SingletonHandsMessagesToTheSetLoggerOrDropsThem) {
    auto& manager = qrn::LogManager::getInstance();
    EXPECT_EQ(&manager, &qrn::LogManager::getInstance());
    ASSERT_TRUE(manager.getLogger());
    EXPECT_FALSE(manager.getLogger()->isEnabled()) << "the default logger drops messages";
    manager.getLogger()->log(L"dropped");
    std::shared_ptr<qrntest::MemoryLogger> memory;
    {
        qrntest::ScopedMemoryLogger scoped;
        memory = scoped.logger;
        qrn::LogManager::getInstance().getLogger()->log(L"first");
    }
    // Set to none, the default takes over again.
    ASSERT_TRUE(manager.getLogger());
    EXPECT_FALSE(manager.getLogger()->isEnabled());
    manager.getLogger()->log(L"after");
    EXPECT_EQ(memory->lines, (std::vector<std::wstring>{L"first"}));
}

TEST(FileLogger, AppendsUtf8LinesFlushedAtOnceAndDropsThemWhereItCannotOpen) {
    const fs::path dir = fs::temp_directory_path() / "qrn_filelogger_test";
    fs::remove_all(dir);
    fs::create_directories(dir);
    const fs::path file = dir / "viewer.log";
    const auto text = [&file] {
        std::ifstream in(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    };
    const std::string line = "L\xC3\xA4ufer \xC3\x98"
                             "12 \xE2\x80\x93 \xE6\xAD\xAF\xE8\xBB\x8A\n";
    {
        qrn::FileLogger logger(file.wstring());
        ASSERT_TRUE(logger.isOpen());
        EXPECT_TRUE(logger.isEnabled());
        logger.log(L"Läufer Ø12 – 歯車");
        EXPECT_EQ(text(), line); // while still open: nothing waits in a buffer
    }
    {
        qrn::FileLogger again(file.wstring()); // appends, does not truncate
        again.log(L"next");
        EXPECT_EQ(text(), line + "next\n");
    }
    qrn::FileLogger folder(dir.wstring());
    EXPECT_FALSE(folder.isOpen());
    EXPECT_FALSE(folder.isEnabled());
    folder.log(L"lost");
    EXPECT_TRUE(fs::is_directory(dir));
    std::error_code ignored; // Windows keeps an open file's folder
    fs::remove_all(dir, ignored);
}
