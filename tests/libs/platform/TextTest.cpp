#include "qrnplatform/Text.h"

#include <gtest/gtest.h>

using qrnplatform::Text;

namespace {

// UTF-8, independent of the code under test, for whole-range checks.
void encode(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

} // namespace

TEST(Text, EveryScalarValueRoundTrips) {
    std::string utf8;
    std::size_t expectedUnits = 0;
    for (char32_t c = 1; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF)
            continue;
        encode(utf8, c);
        expectedUnits += sizeof(wchar_t) == 2 && c >= 0x10000 ? 2 : 1;
    }
    // Beyond the basic plane one wchar_t on Linux, a surrogate pair on Windows.
    const std::wstring wide = Text::fromUtf8(utf8);
    EXPECT_EQ(wide.size(), expectedUnits);
    EXPECT_TRUE(Text::toUtf8(wide) == utf8);
    EXPECT_EQ(Text::toUtf8(L""), "");
    EXPECT_EQ(Text::fromUtf8(""), L"");
    EXPECT_EQ(Text::fromUtf8(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
}

TEST(Text, InvalidBytesUnpairedSurrogatesAndOutOfRangeValuesBecomeReplacements) {
    const std::wstring r = L"\uFFFD";
    EXPECT_EQ(Text::fromUtf8("a\xFF"
                             "b"),
              L"a" + r + L"b");
    EXPECT_EQ(Text::fromUtf8("\x80"), r);             // stray continuation byte
    EXPECT_EQ(Text::fromUtf8("a\xE2\x82"), L"a" + r); // truncated at the end
    EXPECT_EQ(Text::fromUtf8("\xE2\x82"
                             "z"),
              r + L"z");                                          // truncated, then ASCII
    EXPECT_EQ(Text::fromUtf8("\xC0\xAF"), r + r);                 // overlong '/'
    EXPECT_EQ(Text::fromUtf8("\xE0\x80\xAF"), r + r + r);         // overlong, three bytes
    EXPECT_EQ(Text::fromUtf8("\xED\xA0\x80"), r + r + r);         // encoded surrogate
    EXPECT_EQ(Text::fromUtf8("\xF4\x90\x80\x80"), r + r + r + r); // above U+10FFFF
    EXPECT_EQ(Text::fromUtf8("\xF5\x80"), r + r);
    // The byte that breaks a sequence starts the next one.
    EXPECT_EQ(Text::fromUtf8("\xE2\xC3\xA4"), r + L"\u00e4");
    EXPECT_EQ(Text::fromUtf8("\xF0\x9F\x98"
                             "\xF0\x9F\x98\x80"),
              r + L"\U0001F600");

    const std::string u = "\xEF\xBF\xBD";
    std::wstring lone;
    lone += static_cast<wchar_t>(0xD83D);
    lone += L'a';
    lone += static_cast<wchar_t>(0xDE00);
    EXPECT_EQ(Text::toUtf8(lone), u + "a" + u);
    std::wstring highAtEnd(1, static_cast<wchar_t>(0xDBFF));
    EXPECT_EQ(Text::toUtf8(highAtEnd), u);
    // Only a low surrogate completes a pair; U+E000 lies just above them.
    std::wstring highThenPrivate(1, static_cast<wchar_t>(0xD83D));
    highThenPrivate += L'\uE000';
    EXPECT_EQ(Text::toUtf8(highThenPrivate), u + "\xEE\x80\x80");
    if (sizeof(wchar_t) == 4) {
        std::wstring tooLarge(1, static_cast<wchar_t>(0x110000));
        tooLarge += static_cast<wchar_t>(-1);
        EXPECT_EQ(Text::toUtf8(tooLarge), u + u);
    }
}
