#include "qrnsgutils/StringUtils.h"

#include <gtest/gtest.h>

using qrnsgutils::StringUtils;

TEST(StringUtils, ConvertWidensOpenGLStringsAndUtf8) {
    EXPECT_EQ(StringUtils::convert(""), L"");
    EXPECT_EQ(StringUtils::convert("4.5 (Compatibility Profile) Mesa 22.3.6"),
              L"4.5 (Compatibility Profile) Mesa 22.3.6");
    EXPECT_EQ(StringUtils::convert("llvmpipe (LLVM 15.0.6, 256 bits)"),
              L"llvmpipe (LLVM 15.0.6, 256 bits)");
    // Multi-byte sequences become one character each; a stray byte does not stop the rest.
    EXPECT_EQ(StringUtils::convert("R\xC3\xA9sum\xC3\xA9"), L"R\u00E9sum\u00E9");
    EXPECT_EQ(StringUtils::convert("a\xFF"
                                   "b"),
              L"a\uFFFDb");
}

TEST(StringUtils, ConvertNarrowsToOneByteACharacterCode) {
    EXPECT_EQ(StringUtils::convert(std::wstring()), "");
    // Latin-1 keeps its codes (the display lists of glyphs are indexed by them); others are '?'.
    EXPECT_EQ(StringUtils::convert(std::wstring(L"\u00D820 \u00B10.1\u00B0 \u00FF")),
              "\xD8"
              "20 \xB1"
              "0.1\xB0 \xFF");
    EXPECT_EQ(StringUtils::convert(std::wstring(L"\u23002\u5BF8")), "?2?");
}
