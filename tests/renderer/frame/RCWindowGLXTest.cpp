// The window contexts on X11: real windows on the test's X server (Xvfb under scripts/test),
// drawn with GLX.
// GoogleTest first: Xlib's macros (None, Bool) would clash with its names.
#include <gtest/gtest.h>

#include "ContextLog.h"
#include "MemoryLogger.h"
#include "qrngl/GL.h"
#include "qrngl/frame/RCTemp.h"
#include "qrngl/frame/RCWindow.h"

#include <GL/glx.h>
#include <X11/Xutil.h>

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace qrntest {
namespace {

using qrngl::RCTemp;
using qrngl::RCWindow;

int g_xErrors = 0;
int countXError(Display*, XErrorEvent*) {
    ++g_xErrors;
    return 0;
}

std::wstring widen(const GLubyte* text) {
    std::string s(reinterpret_cast<const char*>(text));
    return std::wstring(s.begin(), s.end());
}

using Rgb = std::tuple<int, int, int>;

class RCWindowGLXTest : public ::testing::Test {
protected:
    static constexpr unsigned int kSize = 32;

    void SetUp() override {
        display = XOpenDisplay(nullptr);
        ASSERT_NE(display, nullptr) << "needs an X display: run under xvfb-run";
        previousHandler = XSetErrorHandler(&countXError);
        g_xErrors = 0;
    }
    void TearDown() override {
        glXMakeCurrent(display, None, nullptr);
        for (Window w : windows)
            XDestroyWindow(display, w);
        XSync(display, False);
        EXPECT_EQ(g_xErrors, 0) << "X protocol errors";
        XSetErrorHandler(previousHandler);
        XCloseDisplay(display);
    }

    // A host window as a toolkit makes it: the screen's default visual, mapped. Other tests on
    // the server open their windows at the top left; these keep to the bottom right, each test
    // in a row of its own, so that no window hides another's pixels.
    Window hostWindow() {
        const int screen = DefaultScreen(display);
        const int x = DisplayWidth(display, screen) - 160 + 40 * static_cast<int>(windows.size());
        const int y = DisplayHeight(display, screen) - 160 + 40 * row;
        Window w =
            XCreateSimpleWindow(display, RootWindow(display, screen), x, y, kSize, kSize, 0, 0, 0);
        XSelectInput(display, w, StructureNotifyMask);
        XMapWindow(display, w);
        XEvent e;
        do
            XNextEvent(display, &e);
        while (e.type != MapNotify);
        windows.push_back(w);
        return w;
    }

    bool windowExists(Window w) {
        XSync(display, False);
        const int before = g_xErrors;
        XWindowAttributes a;
        XGetWindowAttributes(display, w, &a);
        XSync(display, False);
        const bool exists = g_xErrors == before;
        g_xErrors = before;
        return exists;
    }

    // What the X server shows of the window: the presented frame.
    Rgb shown(Window w, int x, int y) {
        XImage* image = XGetImage(display, w, x, y, 1, 1, AllPlanes, ZPixmap);
        if (!image)
            return Rgb{-1, -1, -1};
        unsigned long p = XGetPixel(image, 0, 0);
        Rgb c{static_cast<int>((p & image->red_mask) >> 16),
              static_cast<int>((p & image->green_mask) >> 8),
              static_cast<int>(p & image->blue_mask)};
        XDestroyImage(image);
        return c;
    }

    static GLint get(GLenum what) {
        GLint value = -1;
        glGetIntegerv(what, &value);
        return value;
    }
    static Rgb read(int x, int y) {
        unsigned char c[3] = {};
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(x, y, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, c);
        return Rgb{c[0], c[1], c[2]};
    }

    // Red everywhere, a green square in the middle.
    static void drawFrame() {
        glViewport(0, 0, kSize, kSize);
        glClearColor(1, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glColor3f(0, 1, 0);
        glRectf(-0.5f, -0.5f, 0.5f, 0.5f);
    }

    Display* display = nullptr;
    XErrorHandler previousHandler = nullptr;
    std::vector<Window> windows;
    int row = 0;
};

qrngl::HWND handle(Window w) {
    return reinterpret_cast<qrngl::HWND>(static_cast<std::uintptr_t>(w));
}

qrngl::HDC drawable(Window w) {
    return reinterpret_cast<qrngl::HDC>(static_cast<std::uintptr_t>(w));
}

TEST_F(RCWindowGLXTest, HostWindowGetsAMultisampledContextThatDrawsAndPresents) {
    ScopedMemoryLogger log;
    Window w = hostWindow();
    auto context = std::make_shared<RCWindow>(display, w, nullptr);
    ASSERT_TRUE(context->create());
    EXPECT_EQ(context->currentDC(), drawable(w));
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(context->currentGLRC()));
    EXPECT_EQ(glXGetCurrentDrawable(), w);

    // GLX 1.3 and GLX_ARB_multisample: the 4-sample format, chosen by the ARB path.
    const Lines info = {L"OpenGL Version : " + widen(glGetString(GL_VERSION)),
                        widen(glGetString(GL_VENDOR)), L"HWA: " + widen(glGetString(GL_RENDERER))};
    // The helper context that loads GLEW logs first.
    const Lines expected = Lines{L"RCTEMP:opengl context created", L"RCWindow:glewInit() success"} +
                           info + Lines{L"RCWindow: ARB pixel format selected"} + templateDump() +
                           Lines{L"RCWindow:opengl context created"};
    EXPECT_EQ(log.take(), expected);
    EXPECT_EQ(get(GL_SAMPLE_BUFFERS), 1);
    EXPECT_EQ(get(GL_SAMPLES), 4);
    EXPECT_GE(get(GL_DEPTH_BITS), 16);
    EXPECT_GE(get(GL_STENCIL_BITS), 2);
    EXPECT_GE(get(GL_ALPHA_BITS), 8);
    EXPECT_EQ(get(GL_DOUBLEBUFFER), 1);

    drawFrame();
    EXPECT_EQ(read(1, 1), (Rgb{255, 0, 0}));
    EXPECT_EQ(read(16, 16), (Rgb{0, 255, 0}));
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));

    // deactivate presents the frame on the window and keeps the context current.
    context->deactivate();
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(context->currentGLRC()));
    glFinish();
    EXPECT_EQ(shown(w, 1, 1), (Rgb{255, 0, 0}));
    EXPECT_EQ(shown(w, 16, 16), (Rgb{0, 255, 0}));

    // A copy shares the handles; activate makes the context current again after another one.
    RCWindow copy(*context);
    EXPECT_EQ(copy.currentGLRC(), context->currentGLRC());
    glXMakeCurrent(display, None, nullptr);
    copy.activate();
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(context->currentGLRC()));

    // destroy releases and deletes the context, never the host's window; it logs nothing.
    context->destroy();
    EXPECT_EQ(glXGetCurrentContext(), nullptr);
    EXPECT_EQ(context->currentGLRC(), nullptr);
    EXPECT_TRUE(windowExists(w));
    EXPECT_TRUE(log.lines().empty());

    // The portable constructor: the window id alone, used on the process's own connection.
    RCWindow byId(handle(w), nullptr);
    ASSERT_TRUE(byId.create());
    drawFrame();
    EXPECT_EQ(read(16, 16), (Rgb{0, 255, 0}));
    EXPECT_EQ(read(1, 1), (Rgb{255, 0, 0}));
    byId.destroy();
}

TEST_F(RCWindowGLXTest, ChildContextsShareTheParentsDisplayLists) {
    row = 1;
    ScopedMemoryLogger log;
    auto parent = std::make_shared<RCWindow>(display, hostWindow(), nullptr);
    ASSERT_TRUE(parent->create());
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glColor3f(0, 0, 1);
    glRectf(-1, -1, 1, 1);
    glEndList();
    log.take();

    // An on-screen child says that it shares.
    Window w = hostWindow();
    RCWindow child(display, w, parent);
    ASSERT_TRUE(child.create());
    std::vector<std::wstring> lines = log.take();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], L"RCWindow:opengl context created");
    EXPECT_EQ(lines.back(), L"RCWindow:Shared opengl context");
    EXPECT_TRUE(glIsList(list));
    glViewport(0, 0, kSize, kSize);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glCallList(list);
    EXPECT_EQ(read(5, 5), (Rgb{0, 0, 255}));
    child.deactivate();
    glFinish();
    EXPECT_EQ(shown(w, 5, 5), (Rgb{0, 0, 255}));
    child.destroy();

    // So does a helper context on its own hidden window.
    RCTemp temp(display, 8, 8, parent);
    ASSERT_TRUE(temp.create());
    EXPECT_EQ(log.take(), (std::vector<std::wstring>{L"RCTEMP:opengl context created",
                                                     L"RCTEMP:Shared opengl context"}));
    EXPECT_TRUE(glIsList(list));
    temp.destroy();

    // A parent without a context has no lists to share: the window context still works but
    // omits the message; the helper context logs it whatever the outcome.
    auto empty = std::make_shared<RCTemp>(display, 4, 4, nullptr);
    RCWindow unshared(display, hostWindow(), empty);
    ASSERT_TRUE(unshared.create());
    lines = log.take();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), L"RCWindow:opengl context created");
    EXPECT_FALSE(glIsList(list));
    unshared.destroy();

    RCTemp unsharedTemp(display, 4, 4, empty);
    ASSERT_TRUE(unsharedTemp.create());
    EXPECT_EQ(log.take(), (std::vector<std::wstring>{L"RCTEMP:opengl context created",
                                                     L"RCTEMP:Shared opengl context"}));
    EXPECT_FALSE(glIsList(list));
    unsharedTemp.destroy();
    parent->destroy();
}

TEST_F(RCWindowGLXTest, HelperContextDrawsOnAnUnmappedWindowAndReleasesOnDeactivate) {
    row = 2;
    ScopedMemoryLogger log;
    RCTemp temp(display, 16, 8, nullptr);
    ASSERT_TRUE(temp.create());
    EXPECT_EQ(log.take(), std::vector<std::wstring>{L"RCTEMP:opengl context created"});
    const Window hidden = static_cast<Window>(reinterpret_cast<std::uintptr_t>(temp.currentDC()));
    ASSERT_NE(hidden, 0u);
    XWindowAttributes a;
    ASSERT_TRUE(XGetWindowAttributes(display, hidden, &a));
    EXPECT_EQ(a.map_state, IsUnmapped);
    EXPECT_EQ(a.width, 16);
    EXPECT_EQ(a.height, 8);
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(temp.currentGLRC()));

    // The classic template: double-buffered, no multisampling.
    EXPECT_EQ(get(GL_SAMPLE_BUFFERS), 0);
    EXPECT_GE(get(GL_DEPTH_BITS), 16);
    EXPECT_GE(get(GL_STENCIL_BITS), 2);
    glClearColor(0, 1, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(read(2, 2), (Rgb{0, 255, 0}));

    temp.deactivate();
    EXPECT_EQ(glXGetCurrentContext(), nullptr);
    temp.activate();
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(temp.currentGLRC()));

    // destroy takes the window it made with it.
    temp.destroy();
    EXPECT_EQ(glXGetCurrentContext(), nullptr);
    EXPECT_EQ(temp.currentGLRC(), nullptr);
    EXPECT_FALSE(windowExists(hidden));

    // The portable constructor makes its window on the process's own connection.
    RCTemp own(4, 4, nullptr);
    ASSERT_TRUE(own.create());
    EXPECT_NE(own.currentDC(), nullptr);
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(read(0, 0), (Rgb{0, 0, 255}));
    own.destroy();
    log.take();

    // A given window is used and left alone.
    Window w = hostWindow();
    RCTemp external(display, handle(w), 32, 32, nullptr);
    ASSERT_TRUE(external.create());
    EXPECT_EQ(external.currentDC(), drawable(w));
    external.destroy();
    EXPECT_TRUE(windowExists(w));
    EXPECT_TRUE(log.take() == std::vector<std::wstring>{L"RCTEMP:opengl context created"});
}

TEST_F(RCWindowGLXTest, ProbesDescribeFormatsAndChooseWithTheTruncatedList) {
    ScopedMemoryLogger log;
    // The visual of a GL format the classic choice would give.
    int attributes[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_DEPTH_SIZE, 16, None};
    XVisualInfo* vi = glXChooseVisual(display, DefaultScreen(display), attributes);
    ASSERT_NE(vi, nullptr);
    const int visual = static_cast<int>(vi->visualid);
    XFree(vi);
    EXPECT_TRUE(RCTemp::isValidPixelFormat(visual));
    EXPECT_TRUE(log.take().empty());
    EXPECT_FALSE(RCTemp::isValidPixelFormat(0));
    EXPECT_FALSE(RCTemp::isValidPixelFormat(0x7fffffff));
    EXPECT_TRUE(log.take().empty());

    // Only window and RGBA reach GLX, so the first match is the plainest format: single
    // buffered and without depth or multisampling, unlike the rest of the list.
    int format = -1;
    ASSERT_TRUE(RCTemp::tryGetAccelerationOffPixelFormat(format));
    ASSERT_NE(format, 0);
    XVisualInfo pattern = {};
    pattern.visualid = static_cast<VisualID>(format);
    int n = 0;
    XVisualInfo* chosen = XGetVisualInfo(display, VisualIDMask, &pattern, &n);
    ASSERT_NE(chosen, nullptr);
    int doubleBuffer = 1, depth = 1, sampleBuffers = 1;
    glXGetConfig(display, chosen, GLX_DOUBLEBUFFER, &doubleBuffer);
    glXGetConfig(display, chosen, GLX_DEPTH_SIZE, &depth);
    glXGetConfig(display, chosen, GLX_SAMPLE_BUFFERS, &sampleBuffers);
    const bool sameDepth = chosen->depth == DefaultDepth(display, DefaultScreen(display));
    XFree(chosen);
    EXPECT_EQ(doubleBuffer, 0);
    EXPECT_EQ(depth, 0);
    EXPECT_EQ(sampleBuffers, 0);
    // "succeeded" follows a refusal too.
    std::vector<std::wstring> expected;
    if (!sameDepth)
        expected.push_back(L"tryGetAcc:SetPixelFormat failed");
    expected.push_back(L"tryGetAcc:SetPixelFormat succeeded");
    EXPECT_EQ(log.take(), expected);
}

} // namespace
} // namespace qrntest
