// RCWindow on Windows (run under Wine): real windows drawn through WGL, and every failure path
// reached by replacing one window-system call.
#include "qrngl/frame/RCWindow.h"
#include "ContextLog.h"
#include "MemoryLogger.h"
#include "WglTestApi.h"
#include "qrngl/GL.h"
#include "qrngl/frame/RCTemp.h"

#include <GL/wglew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace qrntest {
namespace {

using qrngl::RCTemp;
using qrngl::RCWindow;

// The test's window: the call is refused only for its DC, not for the helper context's.
HDC g_failDC = nullptr;

std::wstring widen(const GLubyte* text) {
    std::string s(text ? reinterpret_cast<const char*>(text) : "");
    return std::wstring(s.begin(), s.end());
}

// The three lines of OpenGL information, as a context of this driver reports them.
Lines g_glInfo;

// What create() logs up to the choice of the format.
Lines glewLines() {
    return Lines{L"RCTEMP:opengl context created", L"RCWindow:glewInit() success"} + g_glInfo;
}

struct Rgb {
    int r, g, b;
    friend bool operator==(const Rgb& x, const Rgb& y) {
        return x.r == y.r && x.g == y.g && x.b == y.b;
    }
};
std::ostream& operator<<(std::ostream& os, const Rgb& c) {
    return os << "(" << c.r << ", " << c.g << ", " << c.b << ")";
}

Rgb readBack(int x, int y) {
    unsigned char c[3] = {};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, c);
    return Rgb{c[0], c[1], c[2]};
}

class RCWindowTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        RCTemp probe(0, 0, nullptr);
        ASSERT_TRUE(probe.create());
        g_glInfo = {L"OpenGL Version : " + widen(glGetString(GL_VERSION)),
                    widen(glGetString(GL_VENDOR)), L"HWA: " + widen(glGetString(GL_RENDERER))};
        probe.destroy();
    }
    void TearDown() override {
        g_failDC = nullptr;
        wglMakeCurrent(nullptr, nullptr);
    }
    ScopedMemoryLogger log;
    ScopedWgl wgl;
};

TEST_F(RCWindowTest, HostWindowGetsAMultisampledContextThatDrawsAndStaysCurrent) {
    TestWindow window(32, 32);
    auto context = std::make_shared<RCWindow>(window.hwnd, nullptr);
    ASSERT_TRUE(context->create());
    EXPECT_EQ(context->currentDC(), window.dc);
    ASSERT_NE(context->currentGLRC(), nullptr);
    EXPECT_EQ(wglGetCurrentContext(), context->currentGLRC());
    ASSERT_TRUE(glGetString(GL_VERSION));

    // The driver has both ARB extensions: the 4-sample format is chosen by the ARB call.
    EXPECT_EQ(log.take(), glewLines() + Lines{L"RCWindow: ARB pixel format selected"} +
                              templateDump() + Lines{L"RCWindow:opengl context created"});
    // clang-format off
    const std::vector<int> attributes = {
        WGL_DRAW_TO_WINDOW_ARB, 1, WGL_SUPPORT_OPENGL_ARB, 1, WGL_ACCELERATION_ARB,
        WGL_FULL_ACCELERATION_ARB, WGL_COLOR_BITS_ARB, 24, WGL_ALPHA_BITS_ARB, 8,
        WGL_DEPTH_BITS_ARB, 16, WGL_STENCIL_BITS_ARB, 2, WGL_DOUBLE_BUFFER_ARB, 1,
        WGL_PIXEL_TYPE_ARB, WGL_TYPE_RGBA_ARB, WGL_SAMPLE_BUFFERS_ARB, 1, WGL_SAMPLES_ARB, 4,
        0, 0};
    // clang-format on
    EXPECT_EQ(wglRecord().arbAttributes, attributes);
    EXPECT_EQ(wglRecord().arbFloats, (std::vector<float>{0, 0}));
    EXPECT_EQ(wglRecord().arbMaxFormats, 1u);
    // The helper context loads GLEW, is torn down, then the window gets its format.
    // clang-format off
    EXPECT_EQ(wgl.take(), (std::vector<std::string>{"GetModuleHandleW", "CreateWindowExW",
        "GetDC", "ChoosePixelFormat", "SetPixelFormat", "wglCreateContext", "wglMakeCurrent",
        "wglMakeCurrent", "glewInit", "SwapBuffers", "wglMakeCurrent(null)",
        "wglMakeCurrent(null)", "wglDeleteContext", "ReleaseDC", "DestroyWindow", "GetDC",
        "wglChoosePixelFormatARB", "SetPixelFormat", "wglCreateContext", "wglMakeCurrent",
        "wglMakeCurrent"}));
    // clang-format on
    EXPECT_EQ(wglRecord().window.width, 0);
    EXPECT_EQ(wglRecord().window.height, 0);

    GLint sampleBuffers = 0, samples = 0, depth = 0, stencil = 0;
    glGetIntegerv(GL_SAMPLE_BUFFERS, &sampleBuffers);
    glGetIntegerv(GL_SAMPLES, &samples);
    glGetIntegerv(GL_DEPTH_BITS, &depth);
    glGetIntegerv(GL_STENCIL_BITS, &stencil);
    EXPECT_EQ(sampleBuffers, 1);
    EXPECT_EQ(samples, 4);
    EXPECT_GE(depth, 16);
    EXPECT_GE(stencil, 2);

    glViewport(0, 0, 32, 32);
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(readBack(3, 3), (Rgb{0, 0, 255}));
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));

    // deactivate presents and nothing more: the context stays current.
    context->deactivate();
    EXPECT_EQ(wgl.take(), std::vector<std::string>{"SwapBuffers"});
    EXPECT_EQ(wglGetCurrentContext(), context->currentGLRC());
    wglMakeCurrent(nullptr, nullptr);
    context->activate();
    EXPECT_EQ(wglGetCurrentContext(), context->currentGLRC());
    EXPECT_EQ(wgl.take(), std::vector<std::string>{"wglMakeCurrent"});

    // The destructor only lets go of the parent: nothing is called.
    { RCWindow copy(*context); }
    EXPECT_TRUE(wgl.take().empty());

    // destroy: one last swap, release, delete, release the DC; the window is the host's.
    context->destroy();
    EXPECT_EQ(wgl.take(), (std::vector<std::string>{"SwapBuffers", "wglMakeCurrent(null)",
                                                    "wglDeleteContext", "ReleaseDC"}));
    EXPECT_EQ(wglGetCurrentContext(), nullptr);
    EXPECT_TRUE(IsWindow(window.hwnd));
    EXPECT_TRUE(log.take().empty());
}

TEST_F(RCWindowTest, ClassicFormatWhereAnArbExtensionIsMissing) {
    for (int missing = 0; missing < 2; ++missing) {
        SCOPED_TRACE(missing == 0 ? "no WGL_ARB_pixel_format" : "no WGL_ARB_multisample");
        if (missing == 0)
            wgl.next().hasArbPixelFormat = [] { return false; };
        else
            wgl.next().hasArbMultisample = [] { return false; };
        TestWindow window(16, 16);
        RCWindow context(window.hwnd, nullptr);
        ASSERT_TRUE(context.create());
        EXPECT_EQ(log.take(), glewLines() + Lines{L"RCWindow: Normal pixel format selected"} +
                                  templateDump() + Lines{L"RCWindow:opengl context created"});
        EXPECT_EQ(wgl.count("wglChoosePixelFormatARB"), 0);
        // The window's format was chosen with the template.
        PIXELFORMATDESCRIPTOR expected = RCTemp(0, 0, nullptr);
        EXPECT_EQ(std::memcmp(&wglRecord().chosenWith, &expected, sizeof expected), 0);
        GLint sampleBuffers = -1, depth = 0, stencil = 0;
        glGetIntegerv(GL_SAMPLE_BUFFERS, &sampleBuffers);
        glGetIntegerv(GL_DEPTH_BITS, &depth);
        glGetIntegerv(GL_STENCIL_BITS, &stencil);
        EXPECT_EQ(sampleBuffers, 0);
        EXPECT_GE(depth, 16);
        EXPECT_GE(stencil, 2);
        glClearColor(1, 1, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        EXPECT_EQ(readBack(1, 1), (Rgb{255, 255, 0}));
        context.destroy();
        wgl.next() = qrngl::WglApi::system();
        wgl.take();
    }
}

TEST_F(RCWindowTest, ChildContextsShareTheParentsListsAndSayWhenTheyDo) {
    TestWindow parentWindow(16, 16);
    auto parent = std::make_shared<RCWindow>(parentWindow.hwnd, nullptr);
    ASSERT_TRUE(parent->create());
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glColor3f(0, 1, 0);
    glRectf(-1, -1, 1, 1);
    glEndList();
    log.take();

    TestWindow childWindow(16, 16);
    RCWindow child(childWindow.hwnd, parent);
    ASSERT_TRUE(child.create());
    Lines lines = log.take();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], L"RCWindow:opengl context created");
    EXPECT_EQ(lines.back(), L"RCWindow:Shared opengl context");
    EXPECT_TRUE(glIsList(list));
    glViewport(0, 0, 16, 16);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glCallList(list);
    EXPECT_EQ(readBack(8, 8), (Rgb{0, 255, 0}));
    child.destroy();

    // A refused share still leaves a working context; the message is simply left out.
    wgl.next().shareLists = [](HGLRC, HGLRC) -> BOOL { return FALSE; };
    wgl.take();
    TestWindow unsharedWindow(16, 16);
    RCWindow unshared(unsharedWindow.hwnd, parent);
    ASSERT_TRUE(unshared.create());
    EXPECT_EQ(log.take(), glewLines() + Lines{L"RCWindow: ARB pixel format selected"} +
                              templateDump() + Lines{L"RCWindow:opengl context created"});
    EXPECT_EQ(wgl.count("wglShareLists"), 1);
    EXPECT_FALSE(glIsList(list));
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(readBack(8, 8), (Rgb{255, 0, 0}));
    unshared.destroy();
    parent->destroy();
}

TEST_F(RCWindowTest, FailuresAreLoggedAndReportedAsFalse) {
    const Lines arbLines = Lines{L"RCWindow: ARB pixel format selected"} + templateDump();
    // Each case on a fresh window: a window takes a pixel format once.
    auto attempt = [&](const char* what) {
        SCOPED_TRACE(what);
        auto window = std::make_unique<TestWindow>(8, 8);
        g_failDC = window->dc;
        RCWindow context(window->hwnd, nullptr);
        const bool created = context.create();
        const Lines lines = log.take();
        wgl.next() = qrngl::WglApi::system();
        return std::make_pair(created, lines);
    };

    // The helper context cannot be made: it is torn down, and GLEW is not reached.
    wgl.next().choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 0; };
    wgl.take();
    auto r = attempt("helper format");
    EXPECT_FALSE(r.first);
    EXPECT_EQ(r.second, Lines{L"RCTEMP:pixel format selection failed"});
    EXPECT_EQ(wgl.take(), (std::vector<std::string>{"GetModuleHandleW", "CreateWindowExW", "GetDC",
                                                    "ChoosePixelFormat", "wglMakeCurrent(null)",
                                                    "ReleaseDC", "DestroyWindow"}));

    // GLEW fails: the helper context and its hidden window are left as they are.
    wgl.next().glewInit = [] { return 1u; };
    r = attempt("glewInit");
    EXPECT_FALSE(r.first);
    EXPECT_EQ(r.second, (Lines{L"RCTEMP:opengl context created", L"RCWindow:glewInit() failed"}));
    std::vector<std::string> calls = wgl.take();
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.back(), "glewInit");
    HGLRC leftCurrent = wglGetCurrentContext();
    EXPECT_NE(leftCurrent, nullptr);
    HWND leftWindow = FindWindowW(L"STATIC", L"Temp Window for OpenGL");
    EXPECT_NE(leftWindow, nullptr);
    wglMakeCurrent(nullptr, nullptr);
    wglDeleteContext(leftCurrent);
    DestroyWindow(leftWindow);

    // The ARB call fails: no retry with the classic choice.
    wgl.next().choosePixelFormatARB = [](HDC, const int*, const FLOAT*, UINT, int*, UINT*) -> BOOL {
        return FALSE;
    };
    wgl.take();
    r = attempt("ARB format");
    EXPECT_FALSE(r.first);
    Lines expected = glewLines();
    expected.push_back(L"RCWindow: ARB pixel format selection failed");
    EXPECT_EQ(r.second, expected);
    calls = wgl.take();
    EXPECT_EQ(calls.back(), "wglChoosePixelFormatARB");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "ChoosePixelFormat"), 1) << "helper only";

    // The classic choice fails for the window.
    wgl.next().hasArbPixelFormat = [] { return false; };
    wgl.next().choosePixelFormat = [](HDC dc, const PIXELFORMATDESCRIPTOR* d) {
        return dc == g_failDC ? 0 : qrngl::WglApi::system().choosePixelFormat(dc, d);
    };
    r = attempt("classic format");
    EXPECT_FALSE(r.first);
    expected = glewLines();
    expected.push_back(L"RCWindow:pixel format selection failed");
    EXPECT_EQ(r.second, expected);

    // The window refuses the format.
    wgl.next().setPixelFormat = [](HDC dc, int f, const PIXELFORMATDESCRIPTOR* d) -> BOOL {
        return dc == g_failDC ? FALSE : qrngl::WglApi::system().setPixelFormat(dc, f, d);
    };
    wgl.take();
    r = attempt("set format");
    EXPECT_FALSE(r.first);
    EXPECT_EQ(r.second, glewLines() + arbLines + Lines{L"RCWindow:pixel format set failed"});
    EXPECT_EQ(wgl.count("wglCreateContext"), 1) << "helper only";

    // No context: not a failure yet; the following wglMakeCurrent reports it.
    wgl.next().createContext = [](HDC dc) -> HGLRC {
        return dc == g_failDC ? nullptr : qrngl::WglApi::system().createContext(dc);
    };
    wgl.next().makeCurrent = [](HDC dc, HGLRC rc) -> BOOL {
        return rc ? qrngl::WglApi::system().makeCurrent(dc, rc) : dc != g_failDC;
    };
    r = attempt("context");
    EXPECT_FALSE(r.first);
    EXPECT_EQ(r.second, (glewLines() + arbLines +
                         Lines{L"RCWindow:opengl context creation failed",
                               L"RCWindow:setting opengl context current failed"}));

    // The context cannot be made current: it is deleted.
    wgl.next().makeCurrent = [](HDC dc, HGLRC rc) -> BOOL {
        return rc && dc == g_failDC ? FALSE : qrngl::WglApi::system().makeCurrent(dc, rc);
    };
    wgl.take();
    {
        TestWindow window(8, 8);
        g_failDC = window.dc;
        RCWindow context(window.hwnd, nullptr);
        EXPECT_FALSE(context.create());
        EXPECT_EQ(log.take(), (glewLines() + arbLines +
                               Lines{L"RCWindow:opengl context created",
                                     L"RCWindow:setting opengl context current failed"}));
        calls = wgl.take();
        ASSERT_GE(calls.size(), 2u);
        EXPECT_EQ(calls[calls.size() - 2], "wglMakeCurrent");
        EXPECT_EQ(calls.back(), "wglDeleteContext");
        EXPECT_EQ(context.currentGLRC(), nullptr);
        // The DC is kept after a failure.
        EXPECT_EQ(context.currentDC(), window.dc);
    }
}

} // namespace
} // namespace qrntest
