// RCBuffer and RCBitmap on Windows (run under Wine): a real WGL pixel buffer, the lists it
// shares, and every call of both contexts and every failure path through the recording table.
#include "qrngl/frame/RCBuffer.h"
#include "MemoryLogger.h"
#include "SlantedEdge.h"
#include "WglTestApi.h"
#include "qrngl/GL.h"
#include "qrngl/frame/RCBitmap.h"
#include "qrngl/frame/RCTemp.h"

#include <GL/wglew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qrntest {
namespace {

using qrngl::RCBitmap;
using qrngl::RCBuffer;
using Calls = std::vector<std::string>;

// The temporary context's end, the same on every path out of create.
const Calls kTearDown = {
    "SwapBuffers", "wglMakeCurrent(null)", "wglMakeCurrent(null)", "wglDeleteContext",
    "ReleaseDC",   "DestroyWindow"};

bool endsWith(const Calls& calls, const Calls& tail) {
    return calls.size() >= tail.size() && std::equal(tail.rbegin(), tail.rend(), calls.rbegin());
}

class RCBufferTest : public ::testing::Test {
protected:
    void TearDown() override { wglMakeCurrent(nullptr, nullptr); }
    ScopedMemoryLogger log;
    ScopedWgl wgl;
};

TEST_F(RCBufferTest, DrawsIntoAPixelBufferThatStaysCurrent) {
    for (bool multisample : {false, true}) {
        SCOPED_TRACE(multisample ? "multisampled" : "single sample");
        wgl.take();
        RCBuffer buffer(40, 40, multisample, nullptr);
        ASSERT_TRUE(buffer.create());
        Calls calls = wgl.take();
        const Calls created = {"wglCreatePbufferARB", "wglGetPbufferDCARB", "wglCreateContext"};
        const auto made = std::search(calls.begin(), calls.end(), created.begin(), created.end());
        ASSERT_NE(made, calls.end());
        // GLEW loaded through the temporary context, torn down before the buffer is current.
        EXPECT_EQ(std::count(calls.begin(), made, "glewInit"), 1);
        EXPECT_EQ(Calls(made + 3, calls.end()),
                  (Calls{"SwapBuffers", "wglMakeCurrent(null)", "wglMakeCurrent(null)",
                         "wglDeleteContext", "ReleaseDC", "DestroyWindow", "wglMakeCurrent",
                         "wglGetPbufferDCARB", "wglMakeCurrent"}));
        // Exactly the pairs asked for, the samples only when multisampled, floats none.
        Calls none;
        std::vector<int> expected = {WGL_DRAW_TO_PBUFFER_ARB, 1,
                                     WGL_SUPPORT_OPENGL_ARB,  1,
                                     WGL_ACCELERATION_ARB,    WGL_FULL_ACCELERATION_ARB,
                                     WGL_COLOR_BITS_ARB,      24,
                                     WGL_DEPTH_BITS_ARB,      16,
                                     WGL_STENCIL_BITS_ARB,    2,
                                     WGL_PIXEL_TYPE_ARB,      WGL_TYPE_RGBA_ARB};
        if (multisample)
            expected.insert(expected.end(), {WGL_SAMPLE_BUFFERS_ARB, 1, WGL_SAMPLES_ARB, 4});
        expected.insert(expected.end(), {WGL_RED_BITS_ARB, 8, WGL_GREEN_BITS_ARB, 8,
                                         WGL_BLUE_BITS_ARB, 8, WGL_DOUBLE_BUFFER_ARB, 0});
        EXPECT_EQ(wglRecord().arbList, expected);
        EXPECT_TRUE(wglRecord().arbFloats.empty());
        EXPECT_EQ(wglRecord().arbMaxFormats, 1u);

        EXPECT_EQ(wglGetCurrentContext(), buffer.currentGLRC());
        GLint samples = 0;
        glGetIntegerv(GL_SAMPLES, &samples);
        EXPECT_EQ(samples > 1, multisample);
        drawSlantedEdge(40);
        glFinish();
        const std::set<int> levels = greyLevels(40);
        EXPECT_TRUE(levels.count(0) && levels.count(255));
        // Wine on Mesa reports the samples but draws with one: only a real driver smooths.
        if (multisample)
            std::printf("pixel buffer: %d samples, %zu grey levels on an edge\n", samples,
                        levels.size());
        else
            EXPECT_EQ(levels.size(), 2u);
        // deactivate only flushes: no call, the context stays current.
        buffer.deactivate();
        EXPECT_EQ(wgl.take(), none);
        EXPECT_EQ(wglGetCurrentContext(), buffer.currentGLRC());
        buffer.destroy();
        EXPECT_EQ(wgl.take(), (Calls{"wglMakeCurrent(null)", "wglDeleteContext",
                                     "wglReleasePbufferDCARB", "wglDestroyPbufferARB"}));
        EXPECT_EQ(wglGetCurrentContext(), nullptr);
        // Only the temporary context speaks; the pixel buffer itself logs nothing.
        for (const std::wstring& line : log.lines())
            EXPECT_EQ(line.rfind(L"RCTEMP:", 0), 0u);
        log.lines().clear();
    }
}

TEST_F(RCBufferTest, SharesTheParentsListsAndLeavesGlewAlone) {
    auto parent = std::make_shared<qrngl::RCTemp>(8, 8, nullptr);
    ASSERT_TRUE(parent->create());
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glEndList();
    wgl.take();

    RCBuffer buffer(16, 16, false, parent);
    ASSERT_TRUE(buffer.create());
    const Calls calls = wgl.take();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "glewInit"), 0);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "wglShareLists"), 1);
    glCallList(list);
    unsigned char rgb[3] = {};
    glReadPixels(3, 3, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, rgb);
    EXPECT_EQ(rgb[1], 255);
    EXPECT_EQ(rgb[0] + rgb[2], 0);
    buffer.destroy();
    parent->destroy();
}

TEST_F(RCBufferTest, EveryFailureTearsTheTemporaryContextDown) {
    struct Case {
        const char* name;
        void (*fail)(qrngl::WglApi&);
        Calls tail; // what the failing path ends with
    };
    const Case cases[] = {
        {"helper context",
         [](qrngl::WglApi& a) {
             a.choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 0; };
         },
         {"ChoosePixelFormat", "SwapBuffers", "wglMakeCurrent(null)", "wglMakeCurrent(null)",
          "ReleaseDC", "DestroyWindow"}},
        {"glew", [](qrngl::WglApi& a) { a.glewInit = [] { return 1u; }; }, Calls{"glewInit"}},
        {"no pbuffers", [](qrngl::WglApi& a) { a.hasArbPbuffer = [] { return false; }; }, {}},
        {"no format",
         [](qrngl::WglApi& a) {
             a.choosePixelFormatARB = [](HDC, const int*, const FLOAT*, UINT, int*, UINT*) -> BOOL {
                 return FALSE;
             };
         },
         Calls{"wglChoosePixelFormatARB"}},
        {"no format chosen",
         [](qrngl::WglApi& a) {
             // The call succeeds but names none: no buffer can be made of it.
             a.choosePixelFormatARB = [](HDC, const int*, const FLOAT*, UINT, int* format,
                                         UINT* count) -> BOOL {
                 *format = 0;
                 *count = 0;
                 return TRUE;
             };
         },
         {}},
        {"refused current",
         [](qrngl::WglApi& a) {
             a.makeCurrent = [](HDC dc, HGLRC rc) -> BOOL {
                 // Only the buffer's own context, made after the pixel buffer, is refused.
                 const Calls& calls = wglRecord().calls;
                 const bool buffer =
                     std::find(calls.begin(), calls.end(), "wglCreatePbufferARB") != calls.end();
                 return rc && buffer ? FALSE : qrngl::WglApi::system().makeCurrent(dc, rc);
             };
         },
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        wglRecord().next = qrngl::WglApi::system();
        c.fail(wgl.next());
        wgl.take();
        RCBuffer buffer(16, 16, false, nullptr);
        EXPECT_FALSE(buffer.create());
        Calls calls = wgl.take();
        EXPECT_EQ(buffer.currentGLRC(), nullptr);
        const bool bufferAsked =
            std::string(c.name) == "refused current" || std::string(c.name) == "no format chosen";
        if (std::string(c.name) == "refused current") {
            EXPECT_TRUE(endsWith(calls, {"wglMakeCurrent", "wglDeleteContext"}));
            calls.resize(calls.size() - 2);
        }
        if (std::string(c.name) == "helper context") {
            EXPECT_TRUE(endsWith(calls, c.tail));
            continue;
        }
        EXPECT_TRUE(endsWith(calls, kTearDown));
        Calls before(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(kTearDown.size()));
        EXPECT_TRUE(endsWith(before, c.tail));
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "wglCreatePbufferARB"),
                  bufferAsked ? 1 : 0);
        buffer.destroy();
    }
    wglRecord().next = qrngl::WglApi::system();
    // Multisampling asked of a driver without the extension: the list without samples.
    wgl.next().hasArbMultisample = [] { return false; };
    RCBuffer buffer(16, 16, true, nullptr);
    ASSERT_TRUE(buffer.create());
    EXPECT_EQ(
        std::find(wglRecord().arbList.begin(), wglRecord().arbList.end(), WGL_SAMPLE_BUFFERS_ARB),
        wglRecord().arbList.end());
    buffer.destroy();
}

TEST_F(RCBufferTest, BitmapContextCallsGdiAndWglInItsOrder) {
    // Wine has no OpenGL for memory bitmaps and chooses no format for them: the format is
    // given, and the calls are what is checked.
    wgl.next().choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 1; };
    RCBitmap bitmap(32, 16);
    EXPECT_TRUE(bitmap.create());
    EXPECT_EQ(wgl.take(),
              (Calls{"CreateCompatibleDC", "CreateDIBSection", "SelectObject", "ChoosePixelFormat",
                     "SetPixelFormat", "wglCreateContext",
                     bitmap.currentGLRC() ? "wglMakeCurrent" : "wglMakeCurrent(null)"}));
    EXPECT_NE(bitmap.bits(), nullptr);
    const PIXELFORMATDESCRIPTOR& chosen = wglRecord().chosenWith;
    EXPECT_EQ(chosen.dwFlags, 0x38u);
    EXPECT_EQ(chosen.cColorBits, 24);
    EXPECT_EQ(chosen.cDepthBits, 16);
    EXPECT_EQ(chosen.cStencilBits, 2);
    bitmap.deactivate();
    EXPECT_EQ(wgl.take(), (Calls{"SwapBuffers", "wglMakeCurrent(null)"}));
    bitmap.destroy();
    Calls destroyed = wgl.take();
    EXPECT_EQ(destroyed.back(), "DeleteObject");
    EXPECT_EQ(std::count(destroyed.begin(), destroyed.end(), "DeleteDC"), 0);

    // No format or no DIB section: false, and nothing made after it.
    wgl.next().choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 0; };
    RCBitmap noFormat(8, 8);
    EXPECT_FALSE(noFormat.create());
    EXPECT_EQ(wgl.count("wglCreateContext"), 0);
    noFormat.destroy();
    wgl.take();
    wgl.next().createDIBSection = [](HDC, const BITMAPINFO*, UINT, void**, HANDLE,
                                     DWORD) -> HBITMAP { return nullptr; };
    RCBitmap noBitmap(8, 8);
    EXPECT_FALSE(noBitmap.create());
    EXPECT_EQ(wgl.take(), (Calls{"CreateCompatibleDC", "CreateDIBSection"}));
}

} // namespace
} // namespace qrntest
