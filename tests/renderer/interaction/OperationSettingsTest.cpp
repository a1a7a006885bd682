#include "qrngl/interaction/OperationSettings.h"

#include "ManipulatorTestSupport.h"
#include "qrngl/IManipulator.h"
#include "qrngl/interaction/QrnEventInterpreter.h"
#include "qrnplatform/Settings.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <vector>

using qrngl::IEventInterpreter;
using qrngl::OperationSettings;
using qrnplatform::Environment;
using Op = IEventInterpreter::Operation;

namespace {

const std::wstring kApp = L"qrngl-interaction-test";

// Each test has settings of its own (see clearOperationSettings), kept under a made-up
// application's name, deleted afterwards.
class OperationSettingsTest : public ::testing::Test {
protected:
    void SetUp() override { TearDown(); }
    void TearDown() override {
#ifdef _WIN32
        ::RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\" + kApp).c_str());
#endif
        qrntest::clearOperationSettings();
    }
    qrnplatform::Settings tools() const {
        return qrnplatform::Settings(L"Settings\\Tools", kApp);
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
        return qrnplatform::Text::toUtf8(Environment::getVariable(L"XDG_CONFIG_HOME") + L"/" +
                                         kApp + L"/settings.ini");
    }
    std::string settingsText() const {
        std::ifstream in(settingsFile(), std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }
#endif
};

TEST_F(OperationSettingsTest, MissingOrUnreadableValueMeansRotateAndTheKeyIsCreated) {
    ASSERT_FALSE(keyExists());
    for (Op requested : {IEventInterpreter::PAN, IEventInterpreter::ZOOM}) {
        // The second load opens the key the first made and still finds no value.
        EXPECT_TRUE(OperationSettings::load(requested, kApp));
        EXPECT_EQ(requested, IEventInterpreter::ROTATE);
        EXPECT_TRUE(keyExists());
    }
#ifdef _WIN32
    HKEY key = nullptr;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, tools().keyPath().c_str(), 0, KEY_SET_VALUE, &key),
              ERROR_SUCCESS);
    const wchar_t text[] = L"4";
    ::RegSetValueExW(key, L"Operation", 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                     sizeof text);
    ::RegCloseKey(key);
#else
    EXPECT_EQ(settingsText(), "[Settings\\Tools]\n");
    std::ofstream(settingsFile(), std::ios::binary) << "[Settings\\Tools]\nOperation=pan\n";
#endif
    Op requested = IEventInterpreter::PAN;
    EXPECT_TRUE(OperationSettings::load(requested, kApp));
    EXPECT_EQ(requested, IEventInterpreter::ROTATE);
#ifndef _WIN32
    EXPECT_EQ(settingsText(), "[Settings\\Tools]\nOperation=pan\n") << "an existing key is kept";
#endif
}

TEST_F(OperationSettingsTest, StoredNumberIsTakenAsItIsAndTheExecutableIsTheDefaultApplication) {
    qrngl::QrnEventInterpreter interpreter(false);
    const std::vector<unsigned int> operations = {2, 3, 4, 8, 16, 17, 32};
    for (unsigned int stored :
         {2u, 3u, 4u, 8u, 16u, 17u, 32u, 1u, 0u, 5u, 1000u, 0x80000000u, 0xFFFFFFFFu}) {
        ASSERT_TRUE(tools().writeDword(L"Operation", stored));
        Op requested = stored == 4 ? IEventInterpreter::ZOOM : IEventInterpreter::PAN;
        EXPECT_TRUE(OperationSettings::load(requested, kApp));
        EXPECT_EQ(static_cast<unsigned int>(requested), stored);
        // A number that names no operation (or NONE) is kept; the left button then does nothing.
        Op result = IEventInterpreter::NONE;
        EXPECT_EQ(interpreter.interpret(qrngl::KEY_LBUTTON, requested, 0, 5, result),
                  std::count(operations.begin(), operations.end(), stored) == 1)
            << stored;
    }

    ASSERT_EQ(Environment::executableBaseName(), L"qrngl_interaction_unit_tests");
    ASSERT_TRUE(qrnplatform::Settings(L"Settings\\Tools").writeDword(L"Operation", 16));
    Op requested = IEventInterpreter::ROTATE;
    EXPECT_TRUE(OperationSettings::load(requested));
    EXPECT_EQ(requested, IEventInterpreter::ZOOMBOX);
}

TEST_F(OperationSettingsTest, KeyThatCannotBeOpenedLeavesTheOperationUnchanged) {
#ifdef _WIN32
    // A volatile key cannot hold the persistent key the settings are created as.
    HKEY parent = nullptr;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, (L"Software\\" + kApp).c_str(), 0, nullptr,
                                REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &parent, nullptr),
              ERROR_SUCCESS);
    ::RegCloseKey(parent);
#else
    // The configuration folder is a file: no settings file can be made beneath it.
    std::ofstream(qrnplatform::Text::toUtf8(Environment::getVariable(L"XDG_CONFIG_HOME"))) << "x";
#endif
    Op requested = IEventInterpreter::ZOOM;
    EXPECT_FALSE(OperationSettings::load(requested, kApp));
    EXPECT_EQ(requested, IEventInterpreter::ZOOM);
    EXPECT_FALSE(keyExists());
}

} // namespace
