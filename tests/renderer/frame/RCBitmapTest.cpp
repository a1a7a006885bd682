// RCBitmap on Windows (run under Wine), through the recording table: Wine has no OpenGL for
// memory bitmaps and chooses no format for them, so the calls are what is checked.
#include "qrngl/frame/RCBitmap.h"
#include "MemoryLogger.h"
#include "WglTestApi.h"
#include "qrngl/frame/RCTemp.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qrntest {
namespace {

using qrngl::RCBitmap;
using Calls = std::vector<std::string>;

Calls operator+(Calls a, const Calls& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST(RCBitmapTest, CallsGdiAndWglInItsOrderAndFailsWithoutFormatOrImage) {
    ScopedMemoryLogger log;
    ScopedWgl wgl;
    qrngl::RCTemp other(8, 8, nullptr);
    ASSERT_TRUE(other.create());
    wgl.next().choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 1; };
    wgl.take();
    RCBitmap bitmap(37, 16);
    EXPECT_TRUE(bitmap.create());
    const Calls current = {bitmap.currentGLRC() ? "wglMakeCurrent" : "wglMakeCurrent(null)"};
    EXPECT_EQ(wgl.take(), Calls({"CreateCompatibleDC", "CreateDIBSection", "SelectObject",
                                 "ChoosePixelFormat", "SetPixelFormat", "wglCreateContext"}) +
                              current);
    EXPECT_NE(bitmap.bits(), nullptr);
    const PIXELFORMATDESCRIPTOR& chosen = wglRecord().chosenWith;
    EXPECT_EQ(chosen.dwFlags, 0x38u); // to a bitmap, GDI and OpenGL
    EXPECT_EQ(chosen.cColorBits, 24);
    EXPECT_EQ(chosen.cDepthBits, 16);
    EXPECT_EQ(chosen.cStencilBits, 2);
    // deactivate presents and releases whatever context is current.
    other.activate();
    wgl.take();
    bitmap.deactivate();
    EXPECT_EQ(wgl.take(), (Calls{"SwapBuffers", "wglMakeCurrent(null)"}));
    EXPECT_EQ(wglGetCurrentContext(), nullptr);
    bitmap.activate();
    EXPECT_EQ(wgl.take(), current);
    // The context and the image go; the memory DC is kept.
    const Calls context = bitmap.currentGLRC() ? Calls{"wglDeleteContext"} : Calls{};
    bitmap.destroy();
    EXPECT_EQ(wgl.take(),
              (Calls{"SwapBuffers", "wglMakeCurrent(null)"} + context + Calls{"DeleteObject"}));
    EXPECT_EQ(bitmap.bits(), nullptr);
    other.destroy();
    wgl.take();

    wgl.next().choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 0; };
    RCBitmap noFormat(8, 8);
    EXPECT_FALSE(noFormat.create());
    EXPECT_EQ(wgl.take(), (Calls{"CreateCompatibleDC", "CreateDIBSection", "SelectObject",
                                 "ChoosePixelFormat"}));
    // What was made before the failure goes with destroy.
    noFormat.destroy();
    EXPECT_EQ(wgl.take(), (Calls{"SwapBuffers", "wglMakeCurrent(null)", "DeleteObject"}));
    wgl.next().createDIBSection = [](HDC, const BITMAPINFO*, UINT, void**, HANDLE,
                                     DWORD) -> HBITMAP { return nullptr; };
    RCBitmap noImage(8, 8);
    EXPECT_FALSE(noImage.create());
    EXPECT_EQ(wgl.take(), (Calls{"CreateCompatibleDC", "CreateDIBSection"}));
}

} // namespace
} // namespace qrntest
