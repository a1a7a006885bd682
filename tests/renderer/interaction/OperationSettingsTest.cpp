#include "interaction/OperationSettings.h"
#include "interaction/QrnEventInterpreter.h"
#include "qrngl/IManipulator.h"
#include "qrnplatform/Environment.h"
#include "qrnplatform/Settings.h"
#include "qrnplatform/Text.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

using qrngl::IEventInterpreter;
using qrngl::OperationSettings;
using qrnplatform::Environment;
using Op = IEventInterpreter::Operation;

namespace {

std::wstring uniqueName(const std::wstring& prefix) {
    static std::mt19937_64 random(std::random_device{}() ^
                                  static_cast<unsigned long long>(
                                      std::chrono::steady_clock::now().time_since_epoch().count()));
    return prefix + std::to_wstring(random() % 1000000000000ull);
}

// Each test has settings of its own: on Linux a fresh configuration folder, on Windows (and
// under Wine) the key of a made-up application in the real registry, deleted afterwards. The
// running executable's own key is cleaned up too, for the test that uses it.
class OperationSettingsTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_app = uniqueName(L"qrngl-interaction-test-");
#ifndef _WIN32
        m_config = std::filesystem::temp_directory_path() /
                   qrnplatform::Text::toUtf8(uniqueName(L"qrngl-interaction-config-"));
        std::filesystem::create_directories(m_config);
        m_oldConfigHome = Environment::getVariable(L"XDG_CONFIG_HOME");
        ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME",
                                             qrnplatform::Text::fromUtf8(m_config.u8string())));
#endif
    }

    void TearDown() override {
#ifdef _WIN32
        ::RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\" + m_app).c_str());
        ::RegDeleteTreeW(HKEY_CURRENT_USER,
                         (L"Software\\" + Environment::executableBaseName()).c_str());
#else
        if (m_oldConfigHome.empty())
            Environment::unsetVariable(L"XDG_CONFIG_HOME");
        else
            Environment::setVariable(L"XDG_CONFIG_HOME", m_oldConfigHome);
        std::error_code ignored;
        std::filesystem::remove_all(m_config, ignored);
#endif
    }

    qrnplatform::Settings tools() const {
        return qrnplatform::Settings(L"Settings\\Tools", m_app);
    }

    bool keyExists() const {
#ifdef _WIN32
        HKEY key = nullptr;
        if (::RegOpenKeyExW(HKEY_CURRENT_USER, tools().keyPath().c_str(), 0, KEY_READ, &key) !=
            ERROR_SUCCESS)
            return false;
        ::RegCloseKey(key);
        return true;
#else
        return settingsText().find("[Settings\\Tools]") != std::string::npos;
#endif
    }

#ifndef _WIN32
    std::filesystem::path settingsFile() const {
        return m_config / qrnplatform::Text::toUtf8(m_app) / "settings.ini";
    }
    std::string settingsText() const {
        std::ifstream in(settingsFile(), std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

    std::filesystem::path m_config;
    std::wstring m_oldConfigHome;
#endif
    std::wstring m_app;
};

TEST_F(OperationSettingsTest, MissingValueMeansRotateAndTheKeyIsCreated) {
    ASSERT_FALSE(keyExists());
    Op requested = IEventInterpreter::PAN;
    EXPECT_TRUE(OperationSettings::load(requested, m_app));
    EXPECT_EQ(requested, IEventInterpreter::ROTATE);
    EXPECT_TRUE(keyExists());
#ifndef _WIN32
    EXPECT_EQ(settingsText(), "[Settings\\Tools]\n");
#endif

    // Loading again opens the key it made and still finds no value.
    requested = IEventInterpreter::ZOOM;
    EXPECT_TRUE(OperationSettings::load(requested, m_app));
    EXPECT_EQ(requested, IEventInterpreter::ROTATE);
}

TEST_F(OperationSettingsTest, StoredNumberIsTakenAsItIs) {
    qrngl::QrnEventInterpreter interpreter(false);
    struct Case {
        unsigned int stored;
        bool namesAnOperation;
    };
    const Case cases[] = {{2, true},           {3, true},  {4, true},     {8, true},
                          {16, true},          {17, true}, {32, true},    {1, true},
                          {0, false},          {5, false}, {1000, false}, {0x80000000u, false},
                          {0xFFFFFFFFu, false}};
    for (const Case& k : cases) {
        ASSERT_TRUE(tools().writeDword(L"Operation", k.stored));
        Op requested = k.stored == 4 ? IEventInterpreter::ZOOM : IEventInterpreter::PAN;
        EXPECT_TRUE(OperationSettings::load(requested, m_app));
        EXPECT_EQ(static_cast<unsigned int>(requested), k.stored);
        // A number that names no operation is kept, and the left button then does nothing.
        Op result = IEventInterpreter::NONE;
        EXPECT_EQ(interpreter.interpret(qrngl::KEY_LBUTTON, requested, 0, 5, result),
                  k.namesAnOperation && k.stored != IEventInterpreter::NONE)
            << k.stored;
    }
}

TEST_F(OperationSettingsTest, UnreadableValueMeansRotate) {
#ifdef _WIN32
    ASSERT_TRUE(tools().writeDword(L"Other", 4));
    HKEY key = nullptr;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, tools().keyPath().c_str(), 0, KEY_SET_VALUE, &key),
              ERROR_SUCCESS);
    const wchar_t text[] = L"4";
    ::RegSetValueExW(key, L"Operation", 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                     sizeof text);
    ::RegCloseKey(key);
#else
    std::filesystem::create_directories(settingsFile().parent_path());
    std::ofstream(settingsFile(), std::ios::binary) << "[Settings\\Tools]\nOperation=pan\n";
#endif
    Op requested = IEventInterpreter::PAN;
    EXPECT_TRUE(OperationSettings::load(requested, m_app));
    EXPECT_EQ(requested, IEventInterpreter::ROTATE);
#ifndef _WIN32
    EXPECT_EQ(settingsText(), "[Settings\\Tools]\nOperation=pan\n") << "an existing key is kept";
#endif
}

TEST_F(OperationSettingsTest, KeyThatCannotBeOpenedLeavesTheOperationUnchanged) {
#ifdef _WIN32
    // A volatile key cannot hold the persistent key the settings are created as.
    HKEY parent = nullptr;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, (L"Software\\" + m_app).c_str(), 0, nullptr,
                                REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &parent, nullptr),
              ERROR_SUCCESS);
    ::RegCloseKey(parent);
#else
    // The configuration folder is a file: no settings file can be made beneath it.
    const std::filesystem::path blocker = m_config / "not-a-folder";
    std::ofstream(blocker) << "x";
    ASSERT_TRUE(Environment::setVariable(L"XDG_CONFIG_HOME",
                                         qrnplatform::Text::fromUtf8(blocker.u8string())));
#endif
    Op requested = IEventInterpreter::ZOOM;
    EXPECT_FALSE(OperationSettings::load(requested, m_app));
    EXPECT_EQ(requested, IEventInterpreter::ZOOM);
    EXPECT_FALSE(keyExists());
}

TEST_F(OperationSettingsTest, RunningExecutableIsTheDefaultApplication) {
    ASSERT_EQ(Environment::executableBaseName(), L"qrngl_interaction_unit_tests");
    ASSERT_TRUE(qrnplatform::Settings(L"Settings\\Tools").writeDword(L"Operation", 16));
    Op requested = IEventInterpreter::ROTATE;
    EXPECT_TRUE(OperationSettings::load(requested));
    EXPECT_EQ(requested, IEventInterpreter::ZOOMBOX);
}

} // namespace
