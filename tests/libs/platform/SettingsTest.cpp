#include "PlatformTestUtil.h"

#include "qrnplatform/Environment.h"
#include "qrnplatform/File.h"
#include "qrnplatform/Settings.h"

#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <sstream>

#ifdef _WIN32
#include <windows.h>
#endif

using qrnplatform::Environment;
using qrnplatform::Settings;

namespace {

// Each test gets settings of its own: on Linux a fresh configuration folder (each test runs in
// a process of its own), on Windows a key of a made-up application, deleted afterwards.
class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override {
#ifndef _WIN32
        ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME", m_config->path()));
#endif
    }
    void TearDown() override {
#ifdef _WIN32
        ::RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\" + m_app).c_str());
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

    std::unique_ptr<platformtest::TempFolder> m_config =
        std::make_unique<platformtest::TempFolder>();
#endif
    const std::wstring m_app = platformtest::uniqueName(L"qrnplatform-test-");
};

// The value read, or nothing when it reads as missing; a failed read leaves the value alone.
std::optional<unsigned int> read(const Settings& settings, const std::wstring& name) {
    unsigned int value = 0xDEADBEEFu;
    if (settings.readDword(name, value))
        return value;
    EXPECT_EQ(value, 0xDEADBEEFu) << "a failed read changed the value";
    return std::nullopt;
}

} // namespace

TEST_F(SettingsTest, ValuesRoundTripAndOverwriteKeptApartBySubKeyAndApplication) {
    Settings tools = settings(L"Settings\\Tools");
    EXPECT_FALSE(read(tools, L"Operation"));
    const std::pair<const wchar_t*, unsigned int> values[] = {
        {L"Operation", 3}, {L"Largest", 0xFFFFFFFFu}, {L"Zero", 0}, {L"L\u00e4nge", 12}};
    for (const auto& v : values)
        ASSERT_TRUE(tools.writeDword(v.first, v.second));
    for (const auto& v : values)
        EXPECT_EQ(read(tools, v.first), v.second);
    // A second object on the same key sees the stored values, not a cache; names ignore case.
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Operation", 7));
    EXPECT_EQ(read(tools, L"Operation"), 7u);
    ASSERT_TRUE(tools.writeDword(L"OPERATION", 8));
    EXPECT_EQ(read(tools, L"operation"), 8u);

    EXPECT_EQ(Settings(L"Settings\\Tools", L"qrnview").keyPath(),
              L"Software\\qrnview\\qrnview\\Settings\\Tools");
    EXPECT_EQ(Settings(L"Settings\\Measurement").appName(), L"qrnplatform_unit_tests");

    // Subkeys and applications are kept apart.
    Settings measurement = settings(L"Settings\\Measurement");
    ASSERT_TRUE(tools.writeDword(L"Operation", 1));
    ASSERT_TRUE(measurement.writeDword(L"Operation", 2));
    EXPECT_EQ(read(tools, L"Operation"), 1u);
    EXPECT_EQ(read(measurement, L"Operation"), 2u);
    EXPECT_FALSE(read(settings(L"Settings"), L"Operation"));
    EXPECT_FALSE(read(Settings(L"Settings\\Tools", m_app + L"-other"), L"Operation"));

    EXPECT_TRUE(tools.removeValue(L"Operation"));
    EXPECT_FALSE(read(tools, L"Operation"));
    EXPECT_FALSE(tools.removeValue(L"Operation"));
    EXPECT_EQ(read(measurement, L"Operation"), 2u);
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
    const unsigned char bytes[4] = {1};
    ::RegSetValueExW(key, L"Text", 0, REG_SZ, reinterpret_cast<const BYTE*>(text), sizeof text);
    ::RegSetValueExW(key, L"Wide", 0, REG_QWORD, reinterpret_cast<const BYTE*>(&wide), sizeof wide);
    ::RegSetValueExW(key, L"Bytes", 0, REG_BINARY, bytes, sizeof bytes);
    ::RegCloseKey(key);
    for (const wchar_t* name : {L"Text", L"Wide", L"Bytes"})
        EXPECT_FALSE(read(tools, name));
    EXPECT_EQ(read(tools, L"Operation"), 5u);
    // Text values are read as text, and only those.
    std::wstring folder = L"unchanged";
    EXPECT_TRUE(tools.readString(L"Text", folder));
    EXPECT_EQ(folder, L"3");
    for (const wchar_t* name : {L"Operation", L"Wide", L"Missing"})
        EXPECT_FALSE(tools.readString(name, folder));
    EXPECT_EQ(folder, L"3");
}

#else

TEST_F(SettingsTest, ValuesThatAreNotNumbersReadAsMissing) {
    writeFile("[Settings\\Tools]\n"
              "Word=abc\nNegative=-1\nTooLarge=4294967296\nHex=0x10\nEmpty=\nMixed=12a\n"
              "Wraps=18446744073709551617\nLargest=4294967295\nSpaced = 7 \r\n"
              "LeadingZeros=0000000000007\n");
    Settings tools = settings(L"Settings\\Tools");
    for (const wchar_t* name :
         {L"Word", L"Negative", L"TooLarge", L"Hex", L"Empty", L"Mixed", L"Wraps"})
        EXPECT_FALSE(read(tools, name)) << qrnplatform::Text::toUtf8(name);
    EXPECT_EQ(read(tools, L"Largest"), 4294967295u);
    EXPECT_EQ(read(tools, L"Spaced"), 7u);
    EXPECT_EQ(read(tools, L"LeadingZeros"), 7u);
    // As text, every value reads as it stands, without the spaces around it.
    std::wstring text = L"unchanged";
    EXPECT_TRUE(tools.readString(L"spaced", text));
    EXPECT_EQ(text, L"7");
    EXPECT_TRUE(tools.readString(L"Empty", text));
    EXPECT_EQ(text, L"");
    EXPECT_FALSE(tools.readString(L"Missing", text));
    EXPECT_FALSE(settings(L"Settings\\Other").readString(L"Word", text));
}

TEST_F(SettingsTest, FileHoldsSectionsNamedBySubKeyAndWritingKeepsEverythingElse) {
    writeFile("; edited by hand\nTop=1\n\n"
              "[Settings\\Measurement]\nUnit=2\n# a comment\nMode = 5\n\n"
              "[Settings\\Tools]\nOperation=1\nSnap=abc\n"
              "[Other]\nOperation=9\n");
    namespace fs = std::filesystem;
    fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Operation", 4));
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Grid", 10));
    ASSERT_TRUE(settings(L"Settings\\Measurement").writeDword(L"Extra", 6));
    ASSERT_TRUE(settings(L"Settings\\View").writeDword(L"Mode", 2));
    ASSERT_TRUE(settings(L"Other").removeValue(L"Operation"));
    EXPECT_EQ(fileText(), "; edited by hand\nTop=1\n\n"
                          "[Settings\\Measurement]\nUnit=2\n# a comment\nMode = 5\nExtra=6\n\n"
                          "[Settings\\Tools]\nOperation=4\nSnap=abc\nGrid=10\n"
                          "[Other]\n\n"
                          "[Settings\\View]\nMode=2\n");
    EXPECT_EQ(read(settings(L"Settings\\Measurement"), L"Mode"), 5u);
    EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    // A fresh file holds the section named by the subkey.
    std::filesystem::remove(file());
    ASSERT_TRUE(settings(L"Settings\\Tools").writeDword(L"Operation", 3));
    EXPECT_EQ(fileText(), "[Settings\\Tools]\nOperation=3\n");
    EXPECT_EQ(settings(L"Settings\\Tools").location(),
              qrnplatform::Text::fromUtf8(file().u8string()) + L" [Settings\\Tools]");
    // Written by replacing the file whole: no temporary file is left beside it.
    for (const auto& entry : std::filesystem::directory_iterator(file().parent_path()))
        EXPECT_EQ(entry.path().filename(), "settings.ini");
}

TEST_F(SettingsTest, RefusesWhatItCannotHoldAndFallsBackToHome) {
    Settings tools = settings(L"Settings\\Tools");
    for (const wchar_t* name : {L"a=b", L"line\nbreak", L""})
        EXPECT_FALSE(tools.writeDword(name, 1));
    EXPECT_FALSE(settings(L"Bad]Section").writeDword(L"Operation", 1));
    EXPECT_FALSE(std::filesystem::exists(file()));

    const std::wstring oldHome = Environment::getVariable(L"HOME");
    // A relative XDG_CONFIG_HOME is to be ignored.
    ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME", L"relative/config"));
    ASSERT_TRUE(Environment::setVariable(L"HOME", m_config->path()));
    const bool written = tools.writeDword(L"Operation", 3);
    Environment::setVariable(L"HOME", oldHome);
    EXPECT_TRUE(written);
    EXPECT_TRUE(qrnplatform::File::exists(*m_config / (L".config/" + m_app + L"/settings.ini")));

    // A configuration folder that is a file cannot hold settings.
    const std::wstring blocker = *m_config / L"blocker";
    std::ofstream(platformtest::fsPath(blocker)) << "x";
    ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME", blocker));
    EXPECT_FALSE(tools.writeDword(L"Operation", 3));
    EXPECT_FALSE(read(tools, L"Operation"));
}

#endif

#ifndef _WIN32
TEST_F(SettingsTest, ADamagedFileIsNamedAndWhatItStillHoldsIsRead) {
    using namespace std::string_literals;
    EXPECT_EQ(Settings::damage(m_app), L"") << "no file is no damage";
    const struct {
        std::string text;
        std::wstring said; // after the path; empty: nothing wrong
    } cases[] = {
        {"; fine\n[Settings\\Tools]\nOperation=2\n\n# end\n", L""},
        {"[Settings\\Tools]\nOperation=2\ngarbage here\n", L" line 3 is no setting"},
        {"[Settings\\Tools]\nOperation=2\n=5\n", L" line 3 is no setting"},
        {"[Settings\\Tools]\nOperation=2\nX=\x01\x02\n", L" line 3 is not text"},
        {"[Settings\\Tools]\nOperation=2\n\xff\xfe=1\n", L" line 3 is not text"},
        {"[Settings\\Tools]\nOperation=2\nA=\0\n"s, L" line 3 is not text"},
    };
    const std::wstring path = qrnplatform::Text::fromUtf8(file().u8string());
    for (const auto& c : cases) {
        writeFile(c.text);
        EXPECT_EQ(Settings::damage(m_app), c.said.empty() ? L"" : path + c.said) << c.text;
        EXPECT_EQ(read(settings(L"Settings\\Tools"), L"Operation"), 2u) << c.text;
    }
    std::filesystem::remove(file());
    std::filesystem::create_directories(file());
    EXPECT_EQ(Settings::damage(m_app), path + L" cannot be read: not a file");
    EXPECT_FALSE(read(settings(L"Settings\\Tools"), L"Operation"));
}
#endif
