// The window contexts on X11: real windows on the test's X server, drawn with GLX.
// GoogleTest first: Xlib's macros (None, Bool) would clash with its names.
#include <gtest/gtest.h>

#include "ContextLog.h"
#include "GlxTestApi.h"
#include "MemoryLogger.h"
#include "qrngl/GL.h"
#include "qrngl/frame/RCTemp.h"
#include "qrngl/frame/RCWindow.h"

#include <GL/glx.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <unistd.h>

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
        if (!display)
            return;
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
    auto context = std::make_shared<RCWindow>(display, handle(w), nullptr);
    ASSERT_TRUE(context->create());
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(context->currentGLRC()));
    // It draws on a window of the chosen visual: the host's, or a child covering it.
    const Window shownOn =
        static_cast<Window>(reinterpret_cast<std::uintptr_t>(context->currentDC()));
    EXPECT_EQ(glXGetCurrentDrawable(), shownOn);
    XWindowAttributes drawn = {}, host = {};
    ASSERT_TRUE(XGetWindowAttributes(display, shownOn, &drawn));
    ASSERT_TRUE(XGetWindowAttributes(display, w, &host));
    if (shownOn != w) {
        Window root = 0, parentOf = 0, *children = nullptr;
        unsigned int count = 0;
        XQueryTree(display, shownOn, &root, &parentOf, &children, &count);
        XFree(children);
        EXPECT_EQ(parentOf, w);
        EXPECT_EQ(drawn.map_state, IsViewable);
        EXPECT_EQ(std::make_pair(drawn.width, drawn.height),
                  std::make_pair(host.width, host.height));
    }
    // GLX 1.3 and ARB multisampling: the 4-sample format; the GLEW helper logs first.
    const Lines info = {L"OpenGL Version : " + widen(glGetString(GL_VERSION)),
                        widen(glGetString(GL_VENDOR)), L"HWA: " + widen(glGetString(GL_RENDERER))};
    const Lines expected = Lines{L"RCTEMP:opengl context created", L"RCWindow:glewInit() success"} +
                           info + Lines{L"RCWindow: ARB pixel format selected"} + templateDump() +
                           Lines{L"RCWindow:opengl context created"};
    EXPECT_EQ(log.take(), expected);
    EXPECT_EQ(get(GL_SAMPLE_BUFFERS), 1);
    EXPECT_EQ(get(GL_SAMPLES), 4);
    EXPECT_EQ(get(GL_DOUBLEBUFFER), 1);
    for (auto least : {std::make_pair(GL_DEPTH_BITS, 16), {GL_STENCIL_BITS, 2}, {GL_ALPHA_BITS, 8}})
        EXPECT_GE(get(least.first), least.second);
    drawFrame();
    EXPECT_EQ(read(1, 1), (Rgb{255, 0, 0}));
    EXPECT_EQ(read(16, 16), (Rgb{0, 255, 0}));

    // deactivate presents the frame on the window and keeps the context current.
    context->deactivate();
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(context->currentGLRC()));
    glFinish();
    EXPECT_EQ(shown(shownOn, 1, 1), (Rgb{255, 0, 0}));
    EXPECT_EQ(shown(shownOn, 16, 16), (Rgb{0, 255, 0}));
    // A child follows the host window's size at the next frame.
    XResizeWindow(display, w, kSize + 8, kSize + 4);
    XSync(display, False);
    context->activate();
    XSync(display, False);
    ASSERT_TRUE(XGetWindowAttributes(display, shownOn, &drawn));
    EXPECT_EQ(drawn.width, static_cast<int>(kSize) + 8);
    EXPECT_EQ(drawn.height, static_cast<int>(kSize) + 4);
    // Uncovering the host repaints it: a child's exposures are sent on to the host.
    XSelectInput(display, w, StructureNotifyMask | ExposureMask);
    XSync(display, False);
    XEvent event;
    while (XCheckTypedWindowEvent(display, w, Expose, &event)) {
    }
    int x = 0, y = 0;
    Window unused = 0;
    XTranslateCoordinates(display, w, DefaultRootWindow(display), 0, 0, &x, &y, &unused);
    XSetWindowAttributes over = {};
    over.override_redirect = True;
    const Window cover =
        XCreateWindow(display, DefaultRootWindow(display), x, y, kSize, kSize, 0, CopyFromParent,
                      InputOutput, CopyFromParent, CWOverrideRedirect, &over);
    XMapWindow(display, cover);
    XSync(display, False);
    XDestroyWindow(display, cover);
    bool exposed = false;
    for (int i = 0; i < 200 && !exposed; ++i) {
        XSync(display, False);
        exposed = XCheckTypedWindowEvent(display, w, Expose, &event);
        if (!exposed)
            usleep(10000);
    }
    EXPECT_TRUE(exposed) << "no Expose reached the host";
    // A copy shares the handles; activate makes the context current again after another one.
    RCWindow copy(*context);
    glXMakeCurrent(display, None, nullptr);
    copy.activate();
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(context->currentGLRC()));

    // destroy deletes the context and its child window, never the host's; it logs nothing.
    context->destroy();
    EXPECT_EQ(glXGetCurrentContext(), nullptr);
    EXPECT_EQ(context->currentGLRC(), nullptr);
    EXPECT_TRUE(windowExists(w));
    EXPECT_EQ(windowExists(shownOn), shownOn == w);
    EXPECT_TRUE(log.lines().empty());

    // The portable constructor: the window id alone, used on the process's own connection.
    RCWindow byId(handle(w), nullptr);
    ASSERT_TRUE(byId.create());
    drawFrame();
    EXPECT_EQ(read(16, 16), (Rgb{0, 255, 0}));
    byId.destroy();
}

TEST_F(RCWindowGLXTest, HelperAndChildContextsShareTheParentsDisplayLists) {
    row = 1;
    ScopedMemoryLogger log;
    auto parent = std::make_shared<RCWindow>(display, handle(hostWindow()), nullptr);
    ASSERT_TRUE(parent->create());
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glColor3f(0, 0, 1);
    glRectf(-1, -1, 1, 1);
    glEndList();
    log.take();

    // An on-screen child says that it shares.
    RCWindow child(display, handle(hostWindow()), parent);
    ASSERT_TRUE(child.create());
    Lines lines = log.take();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(Lines(lines.end() - 2, lines.end()),
              (Lines{L"RCWindow:opengl context created", L"RCWindow:Shared opengl context"}));
    glViewport(0, 0, kSize, kSize);
    glCallList(list);
    child.deactivate();
    glFinish();
    EXPECT_EQ(shown(static_cast<Window>(reinterpret_cast<std::uintptr_t>(child.currentDC())), 5, 5),
              (Rgb{0, 0, 255}));
    child.destroy();

    // So does a helper context, on a hidden window of its own of the size asked for, with the
    // classic template: double-buffered, no multisampling.
    RCTemp temp(display, 16, 8, parent);
    ASSERT_TRUE(temp.create());
    EXPECT_EQ(log.take(),
              (Lines{L"RCTEMP:opengl context created", L"RCTEMP:Shared opengl context"}));
    EXPECT_TRUE(glIsList(list));
    const Window hidden = static_cast<Window>(reinterpret_cast<std::uintptr_t>(temp.currentDC()));
    XWindowAttributes a;
    ASSERT_TRUE(XGetWindowAttributes(display, hidden, &a));
    EXPECT_EQ(a.map_state, IsUnmapped);
    EXPECT_EQ(std::make_pair(a.width, a.height), std::make_pair(16, 8));
    EXPECT_EQ(get(GL_SAMPLE_BUFFERS), 0);
    EXPECT_EQ(get(GL_DOUBLEBUFFER), 1);
    // deactivate releases it; destroy takes the window it made with it.
    temp.deactivate();
    EXPECT_EQ(glXGetCurrentContext(), nullptr);
    temp.activate();
    EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(temp.currentGLRC()));
    temp.destroy();
    EXPECT_EQ(temp.currentGLRC(), nullptr);
    EXPECT_FALSE(windowExists(hidden));

    // A parent without a context has no lists to share: the window context still works but
    // omits the message; the helper context logs it whatever the outcome.
    auto empty = std::make_shared<RCTemp>(display, 4, 4, nullptr);
    RCWindow unshared(display, handle(hostWindow()), empty);
    ASSERT_TRUE(unshared.create());
    EXPECT_EQ(log.take().back(), L"RCWindow:opengl context created");
    EXPECT_FALSE(glIsList(list));
    unshared.destroy();
    RCTemp unsharedTemp(display, 4, 4, empty);
    ASSERT_TRUE(unsharedTemp.create());
    EXPECT_EQ(log.take().back(), L"RCTEMP:Shared opengl context");
    EXPECT_FALSE(glIsList(list));
    unsharedTemp.destroy();
    parent->destroy();

    // The portable constructor uses the process's connection; a given window is left alone.
    RCTemp own(4, 4, nullptr);
    ASSERT_TRUE(own.create());
    EXPECT_NE(own.currentDC(), nullptr);
    own.destroy();
    Window w = hostWindow();
    RCTemp external(display, handle(w), 32, 32, nullptr);
    ASSERT_TRUE(external.create());
    EXPECT_EQ(external.currentDC(), drawable(w));
    external.destroy();
    EXPECT_TRUE(windowExists(w));
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

int g_steps = 0; // counts calls of one step, so that only a later one fails

TEST_F(RCWindowGLXTest, ClassicFallbackAndEveryFailureThroughTheTable) {
    row = 3;
    ScopedMemoryLogger log;
    ScopedGlx glx;
    // Creates a context on a fresh host window with the table as a case set it; whether it was
    // made, and the log without the three lines that describe the driver.
    auto attempt = [&](const char* what) {
        SCOPED_TRACE(what);
        g_steps = 0;
        RCWindow context(display, handle(hostWindow()), nullptr);
        const bool made = context.create();
        Lines lines = log.take();
        const auto version = std::find_if(lines.begin(), lines.end(), [](const std::wstring& l) {
            return l.rfind(L"OpenGL Version", 0) == 0;
        });
        if (version != lines.end())
            lines.erase(version, version + 3);
        if (made)
            context.destroy();
        glXMakeCurrent(display, None, nullptr);
        g_next = qrngl::GlxApi::system();
        return std::make_pair(made, lines);
    };
    const auto made = [](const wchar_t* how) {
        return std::make_pair(
            true, Lines{L"RCTEMP:opengl context created", L"RCWindow:glewInit() success", how} +
                      templateDump() + Lines{L"RCWindow:opengl context created"});
    };

    // Without configurations or without multisampling: the classic visual of the template.
    for (int missing = 0; missing < 2; ++missing) {
        if (missing == 0)
            g_next.hasFBConfig = [] { return false; };
        else
            g_next.hasMultisample = [] { return false; };
        glx.take();
        EXPECT_EQ(attempt("classic"), made(L"RCWindow: Normal pixel format selected"));
        const auto calls = glx.take();
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "choosePixelFormatARB"), 0);
    }
    struct Failure {
        const char* what;
        void (*fail)();
        Lines last; // the lines the attempt ends with
    };
    const Lines notCurrent = {L"RCWindow:opengl context created",
                              L"RCWindow:setting opengl context current failed"};
    const Failure failures[] = {
        {"helper format",
         [] {
             g_next.choosePixelFormat = [](Display*, const qrngl::PixelFormatDescriptor&) {
                 return 0;
             };
         },
         {L"RCTEMP:pixel format selection failed"}},
        {"glew",
         [] { g_next.glewInit = [] { return 1u; }; },
         {L"RCTEMP:opengl context created", L"RCWindow:glewInit() failed"}},
        {"ARB format",
         [] {
             g_next.choosePixelFormatARB = [](Display*, const int*, int*, unsigned int*) {
                 return false;
             };
         },
         {L"RCWindow: ARB pixel format selection failed"}},
        // The helper chooses twice (its window's visual, its format); the third is ours.
        {"classic format",
         [] {
             g_next.hasFBConfig = [] { return false; };
             g_next.choosePixelFormat = [](Display* d, const qrngl::PixelFormatDescriptor& p) {
                 return ++g_steps >= 3 ? 0 : qrngl::GlxApi::system().choosePixelFormat(d, p);
             };
         },
         {L"RCWindow:pixel format selection failed"}},
        {"set format",
         [] {
             g_next.setPixelFormat = [](Display* d, Window w, int f) {
                 return ++g_steps >= 2 ? false : qrngl::GlxApi::system().setPixelFormat(d, w, f);
             };
         },
         {L"RCWindow:pixel format set failed"}},
        {"no context",
         [] {
             g_next.createContext = [](Display* d, int f, GLXContext s, bool& shared) {
                 return ++g_steps >= 2 ? nullptr
                                       : qrngl::GlxApi::system().createContext(d, f, s, shared);
             };
         },
         {L"RCWindow:opengl context creation failed",
          L"RCWindow:setting opengl context current failed"}},
        {"not current",
         [] {
             g_next.makeCurrent = [](Display* d, Window w, GLXContext c) {
                 return c && ++g_steps >= 2 ? false : qrngl::GlxApi::system().makeCurrent(d, w, c);
             };
         },
         notCurrent},
    };
    for (const Failure& f : failures) {
        f.fail();
        auto r = attempt(f.what);
        EXPECT_FALSE(r.first) << f.what;
        ASSERT_GE(r.second.size(), f.last.size()) << f.what;
        EXPECT_EQ(
            Lines(r.second.end() - static_cast<std::ptrdiff_t>(f.last.size()), r.second.end()),
            f.last)
            << f.what;
    }
    // A failed glewInit leaves the helper context as it is: current, its window there.
    glXMakeCurrent(display, None, nullptr);

    // The helper context's own failures; a context that cannot be made current is deleted.
    const Failure helper[] = {
        {"set",
         [] { g_next.setPixelFormat = [](Display*, Window, int) { return false; }; },
         {L"RCTEMP:pixel format set failed"}},
        {"create",
         [] {
             g_next.createContext = [](Display*, int, GLXContext, bool&) -> GLXContext {
                 return nullptr;
             };
         },
         {L"RCTEMP:opengl context creation failed",
          L"RCTEMP:setting opengl context current failed"}},
        {"current",
         [] {
             g_next.makeCurrent = [](Display* d, Window w, GLXContext c) {
                 return c ? false : qrngl::GlxApi::system().makeCurrent(d, w, c);
             };
         },
         {L"RCTEMP:opengl context created", L"RCTEMP:setting opengl context current failed"}},
    };
    for (const Failure& f : helper) {
        f.fail();
        glx.take();
        RCTemp temp(display, 8, 8, nullptr);
        EXPECT_FALSE(temp.create()) << f.what;
        EXPECT_EQ(log.take(), f.last) << f.what;
        EXPECT_EQ(temp.currentGLRC(), nullptr) << f.what;
        if (std::string(f.what) == "current") {
            EXPECT_EQ(glx.take().back(), "deleteContext");
        }
        temp.destroy();
        g_next = qrngl::GlxApi::system();
    }
}

} // namespace
} // namespace qrntest
