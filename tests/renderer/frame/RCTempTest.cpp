// RCTemp on Windows (run under Wine): the hidden window, the context on it, the pixel format
// probes, and every failure path reached by replacing one window-system call.
#include "qrngl/frame/RCTemp.h"
#include "ContextLog.h"
#include "MemoryLogger.h"
#include "WglTestApi.h"
#include "qrngl/GL.h"
#include "qrngl/frame/RCWindow.h"

#include <GL/wglew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace qrntest {
namespace {

using qrngl::RCTemp;

bool clearsAndReadsBack(float r, float g, float b) {
    glClearColor(r, g, b, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    unsigned char c[3] = {};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(1, 1, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, c);
    return c[0] == r * 255 && c[1] == g * 255 && c[2] == b * 255 && glGetError() == GL_NO_ERROR;
}

class RCTempTest : public ::testing::Test {
protected:
    void TearDown() override { wglMakeCurrent(nullptr, nullptr); }
    ScopedMemoryLogger log;
    ScopedWgl wgl;
};

TEST_F(RCTempTest, OwnHiddenWindowGetsAContextThatIsReleasedOnDeactivate) {
    RCTemp temp(24, 16, nullptr);
    ASSERT_TRUE(temp.create());
    EXPECT_EQ(log.take(), Lines{L"RCTEMP:opengl context created"});
    EXPECT_EQ(wgl.take(), (std::vector<std::string>{"GetModuleHandleW", "CreateWindowExW", "GetDC",
                                                    "ChoosePixelFormat", "SetPixelFormat",
                                                    "wglCreateContext", "wglMakeCurrent"}));
    // A never-shown popup of the STATIC class, sized as asked.
    const WglRecord::Window& w = wglRecord().window;
    EXPECT_EQ(w.exStyle, 0u);
    EXPECT_EQ(w.className, L"STATIC");
    EXPECT_EQ(w.title, L"Temp Window for OpenGL");
    EXPECT_EQ(w.style, 0x80880020u);
    EXPECT_EQ(w.x, 0);
    EXPECT_EQ(w.y, 0);
    EXPECT_EQ(w.width, 24);
    EXPECT_EQ(w.height, 16);
    EXPECT_EQ(w.parent, nullptr);
    EXPECT_EQ(w.menu, nullptr);
    EXPECT_EQ(w.instance, GetModuleHandleW(nullptr));
    EXPECT_EQ(w.param, nullptr);
    HWND hidden = WindowFromDC(temp.currentDC());
    ASSERT_NE(hidden, nullptr);
    EXPECT_FALSE(IsWindowVisible(hidden));
    PIXELFORMATDESCRIPTOR expected = temp;
    EXPECT_EQ(std::memcmp(&wglRecord().chosenWith, &expected, sizeof expected), 0);

    EXPECT_EQ(wglGetCurrentContext(), temp.currentGLRC());
    EXPECT_TRUE(clearsAndReadsBack(0, 1, 0));
    GLint depth = 0, stencil = 0;
    glGetIntegerv(GL_DEPTH_BITS, &depth);
    glGetIntegerv(GL_STENCIL_BITS, &stencil);
    EXPECT_GE(depth, 16);
    EXPECT_GE(stencil, 2);

    // deactivate presents, then releases.
    temp.deactivate();
    EXPECT_EQ(wgl.take(), (std::vector<std::string>{"SwapBuffers", "wglMakeCurrent(null)"}));
    EXPECT_EQ(wglGetCurrentContext(), nullptr);
    temp.activate();
    EXPECT_EQ(wglGetCurrentContext(), temp.currentGLRC());
    EXPECT_TRUE(clearsAndReadsBack(1, 0, 1));

    // Copies share the handles; destructors call nothing.
    {
        RCTemp copy(temp);
        EXPECT_EQ(copy.currentGLRC(), temp.currentGLRC());
    }
    wgl.take();

    // destroy takes down what create made, the window included.
    temp.destroy();
    EXPECT_EQ(wgl.take(), (std::vector<std::string>{"wglMakeCurrent(null)", "wglDeleteContext",
                                                    "ReleaseDC", "DestroyWindow"}));
    EXPECT_FALSE(IsWindow(hidden));
    EXPECT_EQ(wglGetCurrentContext(), nullptr);
    EXPECT_TRUE(log.take().empty());
}

TEST_F(RCTempTest, GivenWindowIsUsedAndLeftAlone) {
    TestWindow window(16, 16);
    RCTemp temp(window.hwnd, 16, 16, nullptr);
    ASSERT_TRUE(temp.create());
    EXPECT_EQ(wgl.count("CreateWindowExW"), 0);
    EXPECT_EQ(temp.currentDC(), window.dc);
    EXPECT_TRUE(clearsAndReadsBack(0, 0, 1));
    temp.destroy();
    EXPECT_EQ(wgl.count("DestroyWindow"), 0);
    EXPECT_TRUE(IsWindow(window.hwnd));
}

TEST_F(RCTempTest, SharesWithTheParentAndSaysSoWhateverTheResult) {
    TestWindow parentWindow(8, 8);
    auto parent = std::make_shared<qrngl::RCWindow>(parentWindow.hwnd, nullptr);
    ASSERT_TRUE(parent->create());
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glEndList();
    log.take();

    RCTemp shared(8, 8, parent);
    ASSERT_TRUE(shared.create());
    EXPECT_EQ(log.take(),
              (Lines{L"RCTEMP:opengl context created", L"RCTEMP:Shared opengl context"}));
    EXPECT_TRUE(glIsList(list));
    shared.destroy();

    wgl.next().shareLists = [](HGLRC, HGLRC) -> BOOL { return FALSE; };
    RCTemp unshared(8, 8, parent);
    ASSERT_TRUE(unshared.create());
    EXPECT_EQ(log.take(),
              (Lines{L"RCTEMP:opengl context created", L"RCTEMP:Shared opengl context"}));
    EXPECT_FALSE(glIsList(list));
    EXPECT_TRUE(clearsAndReadsBack(1, 1, 1));
    unshared.destroy();
    parent->destroy();
}

TEST_F(RCTempTest, FailuresAreLoggedAndReportedAsFalse) {
    auto attempt = [&](const char* what) {
        SCOPED_TRACE(what);
        RCTemp temp(8, 8, nullptr);
        const bool created = temp.create();
        const HGLRC rc = temp.currentGLRC();
        temp.destroy();
        wgl.next() = qrngl::WglApi::system();
        EXPECT_EQ(rc, nullptr);
        return created;
    };

    wgl.next().choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 0; };
    EXPECT_FALSE(attempt("choose"));
    EXPECT_EQ(log.take(), Lines{L"RCTEMP:pixel format selection failed"});

    wgl.next().setPixelFormat = [](HDC, int, const PIXELFORMATDESCRIPTOR*) -> BOOL {
        return FALSE;
    };
    EXPECT_FALSE(attempt("set"));
    EXPECT_EQ(log.take(), Lines{L"RCTEMP:pixel format set failed"});

    // No context is not a failure yet; the following wglMakeCurrent reports it.
    wgl.next().createContext = [](HDC) -> HGLRC { return nullptr; };
    wgl.next().makeCurrent = [](HDC dc, HGLRC rc) -> BOOL {
        return rc ? qrngl::WglApi::system().makeCurrent(dc, rc) : FALSE;
    };
    wgl.take();
    EXPECT_FALSE(attempt("create"));
    EXPECT_EQ(log.take(), (Lines{L"RCTEMP:opengl context creation failed",
                                 L"RCTEMP:setting opengl context current failed"}));

    wgl.next().makeCurrent = [](HDC, HGLRC rc) -> BOOL {
        return rc ? FALSE : qrngl::WglApi::system().makeCurrent(nullptr, nullptr);
    };
    wgl.take();
    EXPECT_FALSE(attempt("make current"));
    EXPECT_EQ(log.take(), (Lines{L"RCTEMP:opengl context created",
                                 L"RCTEMP:setting opengl context current failed"}));
    std::vector<std::string> calls = wgl.take();
    const std::vector<std::string> deleted = {"wglMakeCurrent", "wglDeleteContext"};
    EXPECT_NE(std::search(calls.begin(), calls.end(), deleted.begin(), deleted.end()), calls.end());

    // Without the module handle no window is made.
    wgl.next().getModuleHandleW = [](LPCWSTR) -> HMODULE { return nullptr; };
    wgl.next().choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 0; };
    EXPECT_FALSE(attempt("module"));
    EXPECT_EQ(wgl.count("CreateWindowExW"), 0);
    EXPECT_EQ(log.take(), Lines{L"RCTEMP:pixel format selection failed"});
}

TEST_F(RCTempTest, IsValidPixelFormatDependsOnlyOnTheDescription) {
    // Format 1 is one the driver describes.
    EXPECT_TRUE(RCTemp::isValidPixelFormat(1));
    EXPECT_TRUE(log.take().empty());
    EXPECT_EQ(wglRecord().window.width, 0);
    EXPECT_EQ(wglRecord().window.height, 0);
    EXPECT_EQ(wgl.count("CreateWindowExW"), wgl.count("DestroyWindow"));
    wgl.take();

    EXPECT_FALSE(RCTemp::isValidPixelFormat(0));
    EXPECT_FALSE(RCTemp::isValidPixelFormat(100000));
    EXPECT_EQ(wgl.count("SetPixelFormat"), 0);
    EXPECT_EQ(wgl.count("CreateWindowExW"), 2);
    EXPECT_EQ(wgl.count("DestroyWindow"), 2);
    EXPECT_TRUE(log.take().empty());

    // A refused format is valid still.
    wgl.next().setPixelFormat = [](HDC, int, const PIXELFORMATDESCRIPTOR*) -> BOOL {
        return FALSE;
    };
    EXPECT_TRUE(RCTemp::isValidPixelFormat(1));
    EXPECT_EQ(log.take(), Lines{L"Validation: SetPixelFormat failed"});

    // No window or no DC: false, and nothing is left behind.
    wgl.next().getDC = [](HWND) -> HDC { return nullptr; };
    wgl.take();
    EXPECT_FALSE(RCTemp::isValidPixelFormat(1));
    EXPECT_EQ(wgl.take(), (std::vector<std::string>{"GetModuleHandleW", "CreateWindowExW", "GetDC",
                                                    "DestroyWindow"}));
    wgl.next().createWindowExW = [](DWORD, LPCWSTR, LPCWSTR, DWORD, int, int, int, int, HWND, HMENU,
                                    HINSTANCE, LPVOID) -> HWND { return nullptr; };
    EXPECT_FALSE(RCTemp::isValidPixelFormat(1));
    EXPECT_EQ(wgl.count("GetDC"), 0);
    EXPECT_TRUE(log.take().empty());
}

int g_arbFormat = 0;

TEST_F(RCTempTest, TryGetAccelerationOffPixelFormatSendsTheTruncatedList) {
    // clang-format off
    const std::vector<int> truncated = {
        WGL_DRAW_TO_WINDOW_ARB, 1, WGL_SUPPORT_OPENGL_ARB, 1, 0, 0, WGL_COLOR_BITS_ARB, 24,
        WGL_ALPHA_BITS_ARB, 8, WGL_DEPTH_BITS_ARB, 16, WGL_STENCIL_BITS_ARB, 2,
        WGL_DOUBLE_BUFFER_ARB, 1, WGL_PIXEL_TYPE_ARB, WGL_TYPE_RGBA_ARB,
        WGL_SAMPLE_BUFFERS_ARB, 1, WGL_SAMPLES_ARB, 4, 0, 0};
    // clang-format on
    g_arbFormat = 7;
    wgl.next().choosePixelFormatARB = [](HDC, const int*, const FLOAT*, UINT, int* formats,
                                         UINT* count) -> BOOL {
        *formats = g_arbFormat;
        *count = 1;
        return TRUE;
    };
    wgl.next().setPixelFormat = [](HDC, int format, const PIXELFORMATDESCRIPTOR*) -> BOOL {
        return format == g_arbFormat;
    };
    int format = -1;
    EXPECT_TRUE(RCTemp::tryGetAccelerationOffPixelFormat(format));
    EXPECT_EQ(format, 7);
    EXPECT_EQ(wglRecord().arbAttributes, truncated);
    EXPECT_EQ(wglRecord().arbFloats, (std::vector<float>{0, 0}));
    EXPECT_EQ(wglRecord().arbMaxFormats, 1u);
    EXPECT_EQ(log.take(), Lines{L"tryGetAcc:SetPixelFormat succeeded"});
    EXPECT_EQ(wgl.take(), (std::vector<std::string>{"GetModuleHandleW", "CreateWindowExW", "GetDC",
                                                    "wglChoosePixelFormatARB", "SetPixelFormat",
                                                    "ReleaseDC", "DestroyWindow"}));
    EXPECT_EQ(wglRecord().window.width, 0);

    // A refused format: both lines, and still true.
    g_arbFormat = 9;
    wgl.next().setPixelFormat = [](HDC, int, const PIXELFORMATDESCRIPTOR*) -> BOOL {
        return FALSE;
    };
    EXPECT_TRUE(RCTemp::tryGetAccelerationOffPixelFormat(format));
    EXPECT_EQ(format, 9);
    EXPECT_EQ(log.take(),
              (Lines{L"tryGetAcc:SetPixelFormat failed", L"tryGetAcc:SetPixelFormat succeeded"}));

    // The call fails: false, format 0, and no format is set.
    wgl.next().choosePixelFormatARB = [](HDC, const int*, const FLOAT*, UINT, int* formats,
                                         UINT*) -> BOOL {
        *formats = 5;
        return FALSE;
    };
    wgl.take();
    EXPECT_FALSE(RCTemp::tryGetAccelerationOffPixelFormat(format));
    EXPECT_EQ(format, 0);
    EXPECT_EQ(log.take(), Lines{L"tryGetAcc: wglChoosePixelFormatARB failed"});
    EXPECT_EQ(wgl.count("SetPixelFormat"), 0);
    EXPECT_EQ(wgl.count("DestroyWindow"), 1);

    // Through the driver, once GLEW has the entry point: the format it gives is real.
    wgl.next() = qrngl::WglApi::system();
    TestWindow window(8, 8);
    qrngl::RCWindow loader(window.hwnd, nullptr);
    ASSERT_TRUE(loader.create());
    log.take();
    EXPECT_TRUE(RCTemp::tryGetAccelerationOffPixelFormat(format));
    EXPECT_GT(format, 0);
    EXPECT_TRUE(RCTemp::isValidPixelFormat(format));
    loader.destroy();
}

} // namespace
} // namespace qrntest
