// FontRenderer on Windows (run under Wine): the GDI font and the outline call exactly as made,
// the font released at once and again by the destructor, and glyphs a failure leaves out.
#include "WglTestApi.h"

#include "qrngl/frame/RCTemp.h"
#include "qrngl/overlays/FontRenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

namespace {

using qrntest::ScopedWgl;
using qrntest::wglRecord;

TEST(FontRendererWglTest, OneFontOneOutlineCallAndTheFontDeletedTwice) {
    qrngl::RCTemp context(16, 16, nullptr);
    ASSERT_TRUE(context.create());
    context.activate();
    ScopedWgl wgl;
    auto text = std::make_shared<qrnsg::Text3D>();
    text->text = L"Datum A";
    float scale = 3.0f;
    HFONT font = nullptr;
    {
        qrngl::FontRenderer renderer(text, scale);
        font = renderer.font();
        ASSERT_NE(font, nullptr);
        EXPECT_EQ(wgl.take(), (std::vector<std::string>{"wglGetCurrentDC", "CreateFontIndirectW",
                                                        "SelectObject", "wglUseFontOutlinesW",
                                                        "SelectObject", "DeleteObject"}));
        const LOGFONTW& f = wglRecord().font;
        EXPECT_EQ(f.lfHeight, 5);
        EXPECT_EQ(f.lfWidth, 0);
        EXPECT_EQ(f.lfEscapement, 0);
        EXPECT_EQ(f.lfOrientation, 0);
        EXPECT_EQ(f.lfWeight, 400);
        EXPECT_EQ(f.lfItalic, 0);
        EXPECT_EQ(f.lfUnderline, 1);
        EXPECT_EQ(f.lfStrikeOut, 0);
        EXPECT_EQ(f.lfCharSet, 0);
        EXPECT_EQ(f.lfOutPrecision, 0);
        EXPECT_EQ(f.lfClipPrecision, 0);
        EXPECT_EQ(f.lfQuality, 2);
        EXPECT_EQ(f.lfPitchAndFamily, 1);
        EXPECT_EQ(std::wstring(f.lfFaceName), L"Century");
        ASSERT_EQ(wglRecord().outlines.size(), 1u);
        const auto& o = wglRecord().outlines[0];
        EXPECT_EQ(o.first, 0u);
        EXPECT_EQ(o.count, 255u);
        EXPECT_EQ(o.base, renderer.listBase());
        EXPECT_EQ(o.deviation, 0.0f);
        EXPECT_EQ(o.extrusion, 0.001f);
        EXPECT_EQ(o.format, WGL_FONT_LINES);
        EXPECT_EQ(wglRecord().deleted, (std::vector<HGDIOBJ>{font}));
    }
    EXPECT_EQ(wglRecord().deleted, (std::vector<HGDIOBJ>{font, font}))
        << "the destructor deletes the handle it kept";

    // A failed outline call is not reported: the previous object goes back at once and the
    // text list is still made.
    wgl.take();
    wgl.next().useFontOutlinesW = [](HDC, DWORD, DWORD, DWORD, FLOAT, FLOAT, int,
                                     LPGLYPHMETRICSFLOAT) -> BOOL { return FALSE; };
    qrngl::FontRenderer failed(text, scale);
    EXPECT_EQ(wgl.take(),
              (std::vector<std::string>{"wglGetCurrentDC", "CreateFontIndirectW", "SelectObject",
                                        "wglUseFontOutlinesW", "SelectObject", "SelectObject",
                                        "DeleteObject"}));
    EXPECT_TRUE(glIsList(failed.listBase()));
    context.deactivate();
    context.destroy();
}

} // namespace
