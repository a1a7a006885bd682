// The descriptor helpers of RCTemp need no window system: the same on every platform.
#ifdef _WIN32
#include <windows.h>
#endif

#include "ContextLog.h"
#include "MemoryLogger.h"
#include "qrngl/frame/RCTemp.h"

#include <gtest/gtest.h>

#include <cstring>

namespace qrntest {
namespace {

using qrngl::PIXELFORMATDESCRIPTOR;
using qrngl::RCTemp;

PIXELFORMATDESCRIPTOR zeroed() {
    PIXELFORMATDESCRIPTOR d;
    std::memset(&d, 0, sizeof d);
    return d;
}

TEST(RCTempDescriptor, TemplateIsTheDoubleBufferedWindowFormatOfBothConstructors) {
    PIXELFORMATDESCRIPTOR expected = zeroed();
    expected.nSize = 40;
    expected.nVersion = 1;
    expected.dwFlags = 0x25; // draw to window, support OpenGL, double buffer
    expected.cColorBits = 24;
    expected.cDepthBits = 16;
    expected.cStencilBits = 2;
    ASSERT_EQ(sizeof expected, 40u);

    RCTemp own(3, 4, nullptr);
    RCTemp external(reinterpret_cast<qrngl::HWND>(1), 3, 4, nullptr);
    RCTemp copy(own);
    for (const RCTemp* temp : {&own, &external, &copy}) {
        PIXELFORMATDESCRIPTOR d = *temp;
        EXPECT_EQ(std::memcmp(&d, &expected, sizeof d), 0);
    }
    // Nothing is made before create().
    EXPECT_EQ(own.currentDC(), nullptr);
    EXPECT_EQ(own.currentGLRC(), nullptr);

    // initPixelFormatDescriptor clears every byte before setting the size and version.
    PIXELFORMATDESCRIPTOR d;
    std::memset(&d, 0xAB, sizeof d);
    RCTemp::initPixelFormatDescriptor(&d);
    PIXELFORMATDESCRIPTOR header = zeroed();
    header.nSize = 40;
    header.nVersion = 1;
    EXPECT_EQ(std::memcmp(&d, &header, sizeof d), 0);

    // getValStr appends the decimal text and counts it.
    std::wstring text = L"cDepthBits = ";
    EXPECT_EQ(RCTemp::getValStr(text, static_cast<unsigned char>(255)), 3);
    EXPECT_EQ(RCTemp::getValStr(text, static_cast<unsigned char>(0)), 1);
    EXPECT_EQ(text, L"cDepthBits = 2550");
    EXPECT_EQ(RCTemp::getValStr(text, 4294967295ul), 10);
    EXPECT_EQ(text, L"cDepthBits = 25504294967295");
}

TEST(RCTempDescriptor, InfoLogsEveryFieldInItsOrderAndSkipsTheEmptyOptionalOnes) {
    ScopedMemoryLogger log;
    PIXELFORMATDESCRIPTOR d = RCTemp(0, 0, nullptr);
    RCTemp::pixelFormatDescriptorInfo(d);
    EXPECT_EQ(log.take(), templateDump());

    // Every flag, an overlay plane, every optional field; values chosen so that no two
    // fields could be swapped unnoticed. The green shift is written twice under its label.
    d = zeroed();
    d.dwFlags = 0x1 | 0x2 | 0x4 | 0x8 | 0x10 | 0x20 | 0x40 | 0x80 | 0x100 | 0x800 | 0x1000 |
                0x2000 | 0x4000 | 0x8000;
    // clang-format off
    d.bReserved = 0x21; d.iPixelType = 1; d.cColorBits = 32; d.cRedBits = 8; d.cRedShift = 16;
    d.cGreenBits = 7; d.cGreenShift = 9; d.cBlueBits = 6; d.cBlueShift = 1; d.cDepthBits = 24;
    d.cStencilBits = 8; d.cAuxBuffers = 4; d.iLayerType = 3; d.dwVisibleMask = 4294967295u;
    d.cAlphaBits = 5; d.cAlphaShift = 27; d.cAccumBits = 64; d.cAccumRedBits = 16;
    d.cAccumGreenBits = 17; d.cAccumBlueBits = 18; d.cAccumAlphaBits = 13;
    // clang-format on
    RCTemp::pixelFormatDescriptorInfo(d);
    // clang-format off
    const std::vector<std::wstring> full = {
        L"PIXELFORMATDESCRIPTOR ", L"dwFlags", L" PFD_DRAW_TO_WINDOW", L" PFD_DRAW_TO_BITMAP",
        L" PFD_SUPPORT_GDI", L" PFD_SUPPORT_OPENGL", L" PFD_GENERIC_ACCELERATED",
        L" PFD_SUPPORT_DIRECTDRAW", L" PFD_DIRECT3D_ACCELERATED", L" PFD_SUPPORT_COMPOSITION",
        L" PFD_GENERIC_FORMAT", L" PFD_NEED_PALETTE", L" PFD_NEED_SYSTEM_PALETTE",
        L" PFD_DOUBLEBUFFER", L" PFD_STEREO", L" PFD_SWAP_LAYER_BUFFERS", L" overlay",
        L"iPixelType = 1", L"cColorBits = 32", L"cRedBits = 8", L"cRedShift = 16",
        L"cGreenBits = 7", L"cGreenShift = 9", L"cGreenShift = 9", L"cBlueBits = 6",
        L"cBlueShift = 1", L"cDepthBits = 24", L"cStencilBits = 8", L"cAuxBuffers = 4",
        L"iLayerType = 3", L"dwVisibleMask = 4294967295", L"cAlphaBits = 5",
        L"cAlphaShift = 27", L"cAccumBits = 64", L"cAccumRedBits = 16",
        L"cAccumGreenBits = 17", L"cAccumBlueBits = 18", L"cAccumAlphaBits = 13"};
    // clang-format on
    EXPECT_EQ(log.take(), full);

    // Only the low four bits of bReserved count overlay planes; each optional field stands
    // alone (alpha and accumulation go by their total).
    d = zeroed();
    d.bReserved = 0x30;
    d.cAuxBuffers = 1;
    d.cAlphaShift = 24;   // without alpha bits: not written
    d.cAccumRedBits = 16; // without accumulation bits: not written
    d.dwVisibleMask = 0;
    RCTemp::pixelFormatDescriptorInfo(d);
    EXPECT_EQ(log.take(),
              (std::vector<std::wstring>{L"PIXELFORMATDESCRIPTOR ", L"dwFlags", L"iPixelType = 0",
                                         L"cColorBits = 0", L"cRedBits = 0", L"cRedShift = 0",
                                         L"cGreenBits = 0", L"cGreenShift = 0", L"cGreenShift = 0",
                                         L"cBlueBits = 0", L"cBlueShift = 0", L"cDepthBits = 0",
                                         L"cAuxBuffers = 1", L"iLayerType = 0"}));
}

} // namespace
} // namespace qrntest
