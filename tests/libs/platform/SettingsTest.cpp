#include "PlatformTestUtil.h"

#include "qrnplatform/Environment.h"
#include "qrnplatform/File.h"
#include "qrnplatform/Settings.h"

#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>

#ifdef _WIN32
#include <windows.h>
#endif

using qrnplatform::Environment;
using qrnplatform::Settings;

namespace {

// Each test gets settings of its own: on Linux a fresh configuration folder, on Windows (and
// under Wine) a key of a made-up application in the real registry, deleted afterwards.
class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_app = platformtest::uniqueName(L"qrnplatform-test-");
#ifndef _WIN32
        m_config = std::make_unique<platformtest::TempFolder>();
        m_oldConfigHome = Environment::getVariable(L"XDG_CONFIG_HOME");
        ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME", m_config->path()));
#endif
    }

    void TearDown() override {
#ifdef _WIN32
        ::RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\" + m_app).c_str());
#else
        if (m_oldConfigHome.empty())
            Environment::unsetVariable(L"XDG_CONFIG_HOME");
        else
            Environment::setVariable(L"XDG_CONFIG_HOME", m_oldConfigHome);
        m_config.reset();
#endif
    }

    Settings settings(const std::wstring& subKey) const {
        return Settings(subKey, m_app);
    }

#ifndef _WIN32
    std::filesystem::path file() const {
        return platformtest::fsPath(*m_config / (m_app + L"/settings.ini"));
    }
    std::string fileText() const {
        std::ifstream in(file(), std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }
    void writeFile(const std::string& text) const {
        std::filesystem::create_directories(file().parent_path());
        std::ofstream(file(), std::ios::binary) << text;
    }

    std::unique_ptr<platformtest::TempFolder> m_config;
    std::wstring m_oldConfigHome;
#endif
    std::wstring m_app;
};

} // namespace

TEST_F(SettingsTest, KeyFollowsTheRegistryLayout) {
    EXPECT_EQ(Settings(L"Settings\\Tools", L"qrnview").keyPath(),
              L"Software\\qrnview\\qrnview\\Settings\\Tools");
    EXPECT_EQ(Settings(L"Settings\\Measurement").appName(), L"qrnplatform_unit_tests");
}

TEST_F(SettingsTest, ValuesRoundTripAndOverwrite) {
    Settings tools = settings(L"Settings\\Tools");
    unsigned int value = 42;
    EXPECT_FALSE(tools.readDword(L"Operation", value));
    EXPECT_EQ(value, 42u);

    ASSERT_TRUE(tools.writeDword(L"Operation", 3));
    ASSERT_TRUE(tools.writeDword(L"Largest", 0xFFFFFFFFu));
    ASSERT_TRUE(tools.writeDword(L"Zero", 0));
    ASSERT_TRUE(tools.writeDword(L"L\u00e4nge", 12));
    EXPECT_TRUE(tools.readDword(L"Operation", value));
    EXPECT_EQ(value, 3u);
    EXPECT_TRUE(tools.readDword(L"Largest", value));
    EXPECT_EQ(value, 0xFFFFFFFFu);
    EXPECT_TRUE(tools.readDword(L"Zero", value));
    EXPECT_EQ(value, 0u);
    EXPECT_TRUE(tools.readDword(L"L\u00e4nge", value));
    EXPECT_EQ(value, 12u);

    // A second object on the same key sees the stored values, not a cache.
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Operation", 7));
    EXPECT_TRUE(tools.readDword(L"Operation", value));
    EXPECT_EQ(value, 7u);
    // Names compare without regard to case, as in the registry.
    ASSERT_TRUE(tools.writeDword(L"OPERATION", 8));
    EXPECT_TRUE(tools.readDword(L"operation", value));
    EXPECT_EQ(value, 8u);
}

TEST_F(SettingsTest, SubKeysAndApplicationsAreKeptApart) {
    Settings tools = settings(L"Settings\\Tools");
    Settings measurement = settings(L"Settings\\Measurement");
    ASSERT_TRUE(tools.writeDword(L"Operation", 1));
    ASSERT_TRUE(measurement.writeDword(L"Operation", 2));
    unsigned int value = 0;
    EXPECT_TRUE(tools.readDword(L"Operation", value));
    EXPECT_EQ(value, 1u);
    EXPECT_TRUE(measurement.readDword(L"Operation", value));
    EXPECT_EQ(value, 2u);
    EXPECT_FALSE(settings(L"Settings").readDword(L"Operation", value));
    EXPECT_FALSE(Settings(L"Settings\\Tools", m_app + L"-other").readDword(L"Operation", value));

    EXPECT_TRUE(tools.removeValue(L"Operation"));
    EXPECT_FALSE(tools.readDword(L"Operation", value));
    EXPECT_FALSE(tools.removeValue(L"Operation"));
    EXPECT_TRUE(measurement.readDword(L"Operation", value));
    EXPECT_EQ(value, 2u);
    EXPECT_FALSE(settings(L"Settings\\Missing").removeValue(L"Operation"));
}

TEST_F(SettingsTest, ReadingCanCreateTheKey) {
    Settings tools = settings(L"Settings\\Tools");
    unsigned int value = 42;
    EXPECT_EQ(tools.readDwordCreatingKey(L"Operation", value), Settings::VALUE_MISSING);
    EXPECT_EQ(value, 42u);
    // The key is there now, empty: a value written to it reads back, other keys are untouched.
    ASSERT_TRUE(tools.writeDword(L"Operation", 9));
    EXPECT_EQ(tools.readDwordCreatingKey(L"operation", value), Settings::VALUE_READ);
    EXPECT_EQ(value, 9u);
    EXPECT_EQ(tools.readDwordCreatingKey(L"Other", value), Settings::VALUE_MISSING);
    EXPECT_EQ(value, 9u);
    EXPECT_FALSE(settings(L"Settings").readDword(L"Operation", value));
#ifdef _WIN32
    HKEY key = nullptr;
    const std::wstring created = settings(L"Settings\\Created").keyPath();
    ASSERT_NE(::RegOpenKeyExW(HKEY_CURRENT_USER, created.c_str(), 0, KEY_READ, &key),
              ERROR_SUCCESS);
    EXPECT_EQ(settings(L"Settings\\Created").readDwordCreatingKey(L"Operation", value),
              Settings::VALUE_MISSING);
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, created.c_str(), 0, KEY_READ, &key),
              ERROR_SUCCESS);
    ::RegCloseKey(key);

    // Under a volatile key no persistent key can be created.
    HKEY parent = nullptr;
    const std::wstring volatilePath = L"Software\\" + m_app + L"-volatile";
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, volatilePath.c_str(), 0, nullptr,
                                REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &parent, nullptr),
              ERROR_SUCCESS);
    ::RegCloseKey(parent);
    EXPECT_EQ(Settings(L"Settings\\Tools", m_app + L"-volatile")
                  .readDwordCreatingKey(L"Operation", value),
              Settings::KEY_UNAVAILABLE);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, volatilePath.c_str());
#else
    EXPECT_EQ(fileText(), "[Settings\\Tools]\nOperation=9\n");
    // A missing section is added as an empty one after what the file holds.
    EXPECT_EQ(settings(L"Settings\\Created").readDwordCreatingKey(L"Operation", value),
              Settings::VALUE_MISSING);
    EXPECT_EQ(fileText(), "[Settings\\Tools]\nOperation=9\n\n[Settings\\Created]\n");

    // No file can be made beneath a configuration folder that is a file.
    const std::wstring blocker = *m_config / L"not-a-folder";
    std::ofstream(platformtest::fsPath(blocker)) << "x";
    ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME", blocker));
    EXPECT_EQ(tools.readDwordCreatingKey(L"Operation", value), Settings::KEY_UNAVAILABLE);
    EXPECT_EQ(value, 9u);
#endif
}

#ifdef _WIN32

TEST_F(SettingsTest, OnlyDwordValuesAreRead) {
    Settings tools = settings(L"Settings\\Tools");
    ASSERT_TRUE(tools.writeDword(L"Operation", 5));
    HKEY key = nullptr;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, tools.keyPath().c_str(), 0, KEY_SET_VALUE, &key),
              ERROR_SUCCESS);
    const wchar_t text[] = L"3";
    const unsigned long long wide = 4;
    const unsigned char bytes[4] = {1, 0, 0, 0};
    ::RegSetValueExW(key, L"Text", 0, REG_SZ, reinterpret_cast<const BYTE*>(text), sizeof text);
    ::RegSetValueExW(key, L"Wide", 0, REG_QWORD, reinterpret_cast<const BYTE*>(&wide), sizeof wide);
    ::RegSetValueExW(key, L"Bytes", 0, REG_BINARY, bytes, sizeof bytes);
    ::RegCloseKey(key);

    unsigned int value = 99;
    EXPECT_FALSE(tools.readDword(L"Text", value));
    EXPECT_FALSE(tools.readDword(L"Wide", value));
    EXPECT_FALSE(tools.readDword(L"Bytes", value));
    EXPECT_EQ(value, 99u);
    EXPECT_TRUE(tools.readDword(L"Operation", value));
    EXPECT_EQ(value, 5u);
}

#else

TEST_F(SettingsTest, FileHoldsSectionsNamedBySubKey) {
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Operation", 3));
    EXPECT_EQ(fileText(), "[Settings\\Tools]\nOperation=3\n");
    EXPECT_EQ(settings(L"Settings\\Tools").location(),
              qrnplatform::Text::fromUtf8(file().u8string()) + L" [Settings\\Tools]");
    // Written by replacing the file whole: no temporary file is left beside it.
    std::size_t entries = 0;
    for (const auto& entry : std::filesystem::directory_iterator(file().parent_path())) {
        EXPECT_EQ(entry.path().filename(), "settings.ini");
        ++entries;
    }
    EXPECT_EQ(entries, 1u);
}

TEST_F(SettingsTest, ValuesThatAreNotNumbersReadAsMissing) {
    writeFile("[Settings\\Tools]\n"
              "Word=abc\nNegative=-1\nTooLarge=4294967296\nHex=0x10\nEmpty=\nMixed=12a\n"
              "Wraps=18446744073709551617\nLargest=4294967295\nSpaced = 7 \r\n"
              "LeadingZeros=0000000000007\n");
    Settings tools = settings(L"Settings\\Tools");
    unsigned int value = 99;
    for (const wchar_t* name :
         {L"Word", L"Negative", L"TooLarge", L"Hex", L"Empty", L"Mixed", L"Wraps"})
        EXPECT_FALSE(tools.readDword(name, value)) << qrnplatform::Text::toUtf8(name);
    EXPECT_EQ(value, 99u);
    EXPECT_TRUE(tools.readDword(L"Largest", value));
    EXPECT_EQ(value, 4294967295u);
    EXPECT_TRUE(tools.readDword(L"Spaced", value));
    EXPECT_EQ(value, 7u);
    EXPECT_TRUE(tools.readDword(L"LeadingZeros", value));
    EXPECT_EQ(value, 7u);
}

TEST_F(SettingsTest, WritingKeepsEverythingElse) {
    writeFile("; edited by hand\n"
              "Top=1\n"
              "\n"
              "[Settings\\Measurement]\n"
              "Unit=2\n"
              "# a comment\n"
              "Mode = 5\n"
              "\n"
              "[Settings\\Tools]\n"
              "Operation=1\n"
              "Snap=abc\n"
              "[Other]\n"
              "Operation=9\n");
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Operation", 4));
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Grid", 10));
    ASSERT_TRUE(settings(L"Settings\\Measurement").writeDword(L"Extra", 6));
    ASSERT_TRUE(settings(L"Settings\\View").writeDword(L"Mode", 2));
    ASSERT_TRUE(settings(L"Other").removeValue(L"Operation"));
    EXPECT_EQ(fileText(), "; edited by hand\n"
                          "Top=1\n"
                          "\n"
                          "[Settings\\Measurement]\n"
                          "Unit=2\n"
                          "# a comment\n"
                          "Mode = 5\n"
                          "Extra=6\n"
                          "\n"
                          "[Settings\\Tools]\n"
                          "Operation=4\n"
                          "Snap=abc\n"
                          "Grid=10\n"
                          "[Other]\n"
                          "\n"
                          "[Settings\\View]\n"
                          "Mode=2\n");
    unsigned int value = 0;
    EXPECT_TRUE(settings(L"Settings\\Measurement").readDword(L"Mode", value));
    EXPECT_EQ(value, 5u);
}

TEST_F(SettingsTest, KeepsTheFilePermissions) {
    writeFile("[Settings\\Tools]\nOperation=1\n");
    namespace fs = std::filesystem;
    fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Operation", 2));
    EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(SettingsTest, FallsBackToHomeAndFailsWithoutAFolder) {
    const std::wstring oldHome = Environment::getVariable(L"HOME");
    // A relative XDG_CONFIG_HOME is to be ignored.
    ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME", L"relative/config"));
    ASSERT_TRUE(Environment::setVariable(L"HOME", m_config->path()));
    const bool written = settings(L"Settings\\Tools").writeDword(L"Operation", 3);
    Environment::setVariable(L"HOME", oldHome);
    EXPECT_TRUE(written);
    EXPECT_TRUE(qrnplatform::File::exists(*m_config / (L".config/" + m_app + L"/settings.ini")));

    // A configuration folder that is a file cannot hold settings.
    const std::wstring blocker = *m_config / L"blocker";
    std::FILE* out = qrnplatform::File::open(blocker, "wb");
    ASSERT_NE(out, nullptr);
    std::fclose(out);
    ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME", blocker));
    unsigned int value = 0;
    EXPECT_FALSE(settings(L"Settings\\Tools").writeDword(L"Operation", 3));
    EXPECT_FALSE(settings(L"Settings\\Tools").readDword(L"Operation", value));
}

TEST_F(SettingsTest, RefusesNamesTheFileCannotHold) {
    Settings tools = settings(L"Settings\\Tools");
    EXPECT_FALSE(tools.writeDword(L"a=b", 1));
    EXPECT_FALSE(tools.writeDword(L"line\nbreak", 1));
    EXPECT_FALSE(tools.writeDword(L"", 1));
    EXPECT_FALSE(settings(L"Bad]Section").writeDword(L"Operation", 1));
    EXPECT_FALSE(std::filesystem::exists(file()));
}

#endif
