#include "qrnplatform/Input.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

using qrnplatform::Input;

namespace {

// Keys no other test presses, so that tests running beside this one cannot disturb it.
const int kPressedKey = 0x77; // F8
const int kIdleKey = 0x76;    // F7

#ifdef _WIN32

void sendKey(int virtualKey, bool down) {
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = static_cast<WORD>(virtualKey);
    input.ki.dwFlags = down ? 0 : KEYEVENTF_KEYUP;
    ASSERT_EQ(::SendInput(1, &input, sizeof input), 1u);
}

TEST(Input, KeysAreTheSystemsAndTouchNeedsEveryBitOfTheSignature) {
    EXPECT_EQ(::GetAsyncKeyState(kIdleKey), 0);
    EXPECT_FALSE(Input::isKeyDown(kIdleKey));

    sendKey(kPressedKey, true);
    EXPECT_TRUE(Input::isKeyDown(kPressedKey));
    EXPECT_FALSE(Input::isKeyDown(kIdleKey));
    sendKey(kPressedKey, false);
    EXPECT_FALSE(Input::isKeyDown(kPressedKey));

    // What a host reports does not override the system.
    Input::setKeyDown(kIdleKey, true);
    EXPECT_FALSE(Input::isKeyDown(kIdleKey));

    // Outside any message there is no extra information.
    EXPECT_FALSE(Input::isTouchMessage());

    struct Case {
        ULONG_PTR info;
        bool fromTouch;
    };
    const Case cases[] = {
        {0xFF515700, true},  {0xFF515780, true},  {0xFF5157FF, true},  {0xFFFFFFFF, true},
        {0xFF515600, false}, {0xFF415700, false}, {0x7F515700, false}, {0xFF505700, false},
        {0x00515700, false}, {0, false},
    };
    for (const Case& k : cases) {
        ::SetMessageExtraInfo(static_cast<LPARAM>(k.info));
        EXPECT_EQ(Input::isTouchMessage(), k.fromTouch) << std::hex << k.info;
    }
    ::SetMessageExtraInfo(0);

    Input::setTouchMessage(true);
    EXPECT_FALSE(Input::isTouchMessage());
}

#else

TEST(Input, KeysAndTouchAreWhatTheHostReports) {
    EXPECT_FALSE(Input::isKeyDown(kPressedKey));

    Input::setKeyDown(kPressedKey, true);
    EXPECT_TRUE(Input::isKeyDown(kPressedKey));
    EXPECT_FALSE(Input::isKeyDown(kIdleKey));
    EXPECT_FALSE(Input::isKeyDown(kPressedKey + 1));
    Input::setKeyDown(kIdleKey, true);
    Input::setKeyDown(kPressedKey, false);
    EXPECT_FALSE(Input::isKeyDown(kPressedKey));
    EXPECT_TRUE(Input::isKeyDown(kIdleKey));
    Input::setKeyDown(kIdleKey, false);

    // Codes are bytes: anything else is never down and reports of it change nothing.
    for (int code : {-1, 256, 256 + kPressedKey, 100000})
        Input::setKeyDown(code, true);
    for (int code : {-1, 256, 256 + kPressedKey, 100000})
        EXPECT_FALSE(Input::isKeyDown(code)) << code;
    for (int code = 0; code < 256; ++code)
        EXPECT_FALSE(Input::isKeyDown(code)) << code;
    Input::setKeyDown(255, true);
    EXPECT_TRUE(Input::isKeyDown(255));
    Input::setKeyDown(255, false);

    EXPECT_FALSE(Input::isTouchMessage());
    Input::setTouchMessage(true);
    EXPECT_TRUE(Input::isTouchMessage());
    Input::setTouchMessage(false);
    EXPECT_FALSE(Input::isTouchMessage());
}

#endif

} // namespace
