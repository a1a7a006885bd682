#include "qrn/FileLogger.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace fs = std::filesystem;

namespace {

class FileLoggerTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() /
                (std::string("qrn_filelogger_") +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
    }
    void TearDown() override {
        std::error_code ec;
        fs::remove_all(m_dir, ec);
    }
    static std::string readAll(const fs::path& p) {
        std::ifstream in(p, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    fs::path m_dir;
};

const char kLine[] = "L\xC3\xA4ufer \xC3\x98"
                     "12 \xE2\x80\x93 \xE6\xAD\xAF\xE8\xBB\x8A\n";

} // namespace

TEST_F(FileLoggerTest, AppendsUtf8LinesFlushedAtOnce) {
    const fs::path file = m_dir / "viewer.log";
    {
        qrn::FileLogger logger(file.wstring());
        ASSERT_TRUE(logger.isOpen());
        EXPECT_TRUE(logger.isEnabled());
        logger.log(L"Läufer Ø12 – 歯車");
        EXPECT_EQ(readAll(file), kLine); // while still open: nothing waits in a buffer
    }
    qrn::FileLogger again(file.wstring()); // appends, does not truncate
    again.log(L"next");
    EXPECT_EQ(readAll(file), std::string(kLine) + "next\n");
}

TEST_F(FileLoggerTest, UnopenablePathDropsMessages) {
    qrn::FileLogger logger(m_dir.wstring());
    EXPECT_FALSE(logger.isOpen());
    EXPECT_FALSE(logger.isEnabled());
    logger.log(L"lost");
    EXPECT_TRUE(fs::is_directory(m_dir));
}
