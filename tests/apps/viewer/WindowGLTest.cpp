// qrnview's window on an X display (the tests skip without one): it draws what the off-screen
// frame shows, and X input reaches the tools, animates and replays.
#include "ImageBaseline.h"
#include "ViewerTestSupport.h"

#include "qrnviewer/EventLog.h"

#include <gmock/gmock.h>

// After GoogleTest: Xlib defines None as a macro.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>
#include <vector>

#include <fcntl.h>

namespace {

using namespace viewertest;

constexpr unsigned int kWidth = 320, kHeight = 240;

// The share of pixels that differ beyond a small tolerance (the window multisamples: edges differ).
double differing(const qrnimage::Image& a, const qrnimage::Image& b) {
    if (a.width() != b.width() || a.height() != b.height())
        return 1.0;
    return static_cast<double>(qrnimage::Image::compare(a, b, 24).differing) /
           (a.width() * a.height());
}

// Tries until done() says yes, every 100 ms, at most `tries` times.
void waitFor(const std::function<bool()>& done, int tries = 100) {
    for (int i = 0; i < tries && !done(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

class WindowGLTest : public ::testing::Test {
protected:
    void SetUp() override {
        display = XOpenDisplay(nullptr);
        if (!display)
            GTEST_SKIP() << "\n*** no X display: the window tests did not run; use xvfb-run ***";
    }
    void TearDown() override {
        if (display)
            XCloseDisplay(display);
    }

    // The process's mapped top-level window (other tests may show windows); 0 after a minute.
    // Another test's window may go while it is asked about: that error is not this test's.
    Window findWindow(pid_t pid) {
        const Atom netWmPid = XInternAtom(display, "_NET_WM_PID", False);
        Window found = 0;
        XSync(display, False);
        auto* const previous = XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
        waitFor(
            [&] {
                Window root = 0, parent = 0, *children = nullptr;
                unsigned int count = 0;
                XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count);
                for (unsigned int i = 0; i < count && !found; ++i) {
                    Atom type = 0;
                    int format = 0;
                    unsigned long items = 0, left = 0;
                    unsigned char* value = nullptr;
                    XWindowAttributes a;
                    if (XGetWindowProperty(display, children[i], netWmPid, 0, 1, False, XA_CARDINAL,
                                           &type, &format, &items, &left, &value) == Success &&
                        value && items == 1 &&
                        *reinterpret_cast<unsigned long*>(value) == ulong(pid) &&
                        XGetWindowAttributes(display, children[i], &a) && a.map_state == IsViewable)
                        found = children[i];
                    if (value)
                        XFree(value);
                }
                if (children)
                    XFree(children);
                return found != 0;
            },
            600);
        XSync(display, False);
        XSetErrorHandler(previous);
        return found;
    }

    // Input as the server delivers it; key, button and motion events share their layout.
    void send(int type, unsigned int detail, int x, int y, unsigned int state) {
        XEvent e{};
        e.xkey =
            XKeyEvent{type, 0, True,  display, window, DefaultRootWindow(display), 0, ++time, x, y,
                      x,    y, state, detail,  True};
        XSendEvent(display, window, False, 0, &e);
    }
    void key(KeySym sym, int x = 0, int y = 0) {
        send(KeyPress, XKeysymToKeycode(display, sym), x, y, 0);
        send(KeyRelease, XKeysymToKeycode(display, sym), x, y, 0);
        XFlush(display);
    }
    // What the window shows on the screen now.
    qrnimage::Image shown() {
        qrnimage::Image image(kWidth, kHeight);
        XImage* x = XGetImage(display, window, 0, 0, kWidth, kHeight, AllPlanes, ZPixmap);
        for (unsigned int row = 0; x && row < kHeight; ++row)
            for (unsigned int column = 0; column < kWidth; ++column) {
                const unsigned long p = XGetPixel(x, int(column), int(row));
                std::uint8_t* q = image.pixel(column, row);
                q[0] = std::uint8_t(p >> 16), q[1] = std::uint8_t(p >> 8), q[2] = std::uint8_t(p);
                q[3] = 255;
            }
        if (x)
            XDestroyImage(x);
        return image;
    }
    // qrnview run to its end with these arguments and an image file to write; that image.
    qrnimage::Image picture(const std::string& args, const char* png) {
        const ProcessResult run = qrnview("--size 320x240 " + args + " " + dir.quoted(png));
        EXPECT_EQ(run.exitCode, 0) << run.output;
        return loadPng(dir.file(png));
    }
    // qrnview started without waiting for it, so that input can be sent to its window, which is
    // moved to the right, out of the corner where other tests' windows open; what it prints goes
    // to a file.
    void start(const std::vector<std::string>& args, bool top) {
        const std::string output = dir.file("output.txt");
        pid = fork();
        if (pid == 0) {
            const int fd = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(fd, 1);
            dup2(fd, 2);
            std::vector<char*> argv{const_cast<char*>(QRNVIEW_EXE), const_cast<char*>("--size"),
                                    const_cast<char*>("320x240")};
            for (const auto& a : args)
                argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            execv(QRNVIEW_EXE, argv.data());
            _exit(127);
        }
        ASSERT_GT(pid, 0);
        window = findWindow(pid);
        if (window) {
            const int screen = DefaultScreen(display);
            XMoveWindow(display, window, DisplayWidth(display, screen) - int(kWidth),
                        top ? 0 : DisplayHeight(display, screen) - int(kHeight));
            XRaiseWindow(display, window);
            XFlush(display);
        }
    }
    // Quits it through its window (Q), or stops it when it showed none; true when it exited
    // with 0. What it printed comes back in printed.
    bool finish() {
        if (window) {
            send(KeyPress, XKeysymToKeycode(display, XK_q), 0, 0, 0);
            XFlush(display);
        } else {
            kill(pid, SIGTERM);
        }
        int status = 0;
        waitpid(pid, &status, 0);
        std::ifstream in(dir.file("output.txt"));
        printed.assign(std::istreambuf_iterator<char>(in), {});
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    Display* display = nullptr;
    TempDir dir;
    Time time = 1000;
    pid_t pid = 0;
    Window window = 0;
    std::string printed;
};

TEST_F(WindowGLTest, OpensAndDrawsWhatTheOffScreenFrameShows) {
    const qrnimage::Image window = picture("--screenshot", "window.png");
    EXPECT_LT(differing(window, picture("--snapshot", "offscreen.png")), 0.03);
    qrntest::expectMatchesBaseline(window, "window_demo_iso", 8, kWidth * kHeight / 200);
}

TEST_F(WindowGLTest, XInputReachesTheToolsInTheirTerms) {
    const std::string log = dir.file("recorded.log");
    start({"--record", log}, false);
    if (window) {
        send(MotionNotify, 0, 100, 100, 0);
        send(ButtonPress, Button1, 100, 100, 0);
        for (int x = 110; x <= 160; x += 10)
            send(MotionNotify, 0, x, 100, Button1Mask);
        send(ButtonRelease, Button1, 160, 100, Button1Mask);
        send(KeyPress, XKeysymToKeycode(display, XK_Control_L), 160, 100, 0);
        send(ButtonPress, Button2, 160, 100, ControlMask);
        send(MotionNotify, 0, 170, 110, ControlMask | Button2Mask);
        send(ButtonRelease, Button2, 170, 110, ControlMask | Button2Mask);
        send(KeyRelease, XKeysymToKeycode(display, XK_Control_L), 170, 110, ControlMask);
        key(XK_F4, 170, 110);
        key(XK_5, 170, 110); // top, on the loop's timer
        const qrnimage::Image top = picture("--view top --snapshot", "top.png");
        // The animation fits the view its own way: edges may lie a pixel off.
        waitFor([&] { return differing(shown(), top) <= 0.08; });
        EXPECT_LT(differing(shown(), top), 0.08) << "the window never showed the top view";
    }
    const bool exited = finish();
    ASSERT_TRUE(window) << "qrnview showed no window\n" << printed;
    ASSERT_TRUE(exited) << printed;

    std::vector<qrnviewer::InputEvent> events;
    std::string error;
    ASSERT_TRUE(qrnviewer::EventLog::read(log, events, error)) << error;
    // Button flags are the state after the event, keys virtual-key codes (Ctrl, F4, Q).
    std::string seen;
    for (auto e : events) {
        e.time = 0;
        if (e.kind == qrnviewer::InputEvent::KEY_DOWN || e.kind == qrnviewer::InputEvent::KEY_UP)
            e.x = e.y = 0;
        seen += qrnviewer::EventLog::format(e) + "\n";
    }
    for (const char* want :
         {"down left 0x01 100 100 0 0", "move - 0x01 130 100 0 0", "up left 0x00 160 100 0 0",
          "keydown - 0x00 0 0 0 17", "down middle 0x18 160 100 0 0", "move - 0x18 170 110 0 0",
          "up middle 0x08 170 110 0 0", "keyup - 0x00 0 0 0 17", "keydown - 0x00 0 0 0 115",
          "keydown - 0x00 0 0 0 81"})
        EXPECT_NE(seen.find(std::string("0 ") + want + "\n"), std::string::npos) << want;

    // Played back, what was recorded moves the model, in the window as off screen.
    const std::string replay = "--replay '" + log + "'";
    const qrnimage::Image replayed = picture(replay + " --snapshot", "replayed.png");
    EXPECT_LT(differing(picture(replay + " --screenshot", "window.png"), replayed), 0.03);
    EXPECT_GT(differing(replayed, picture("--snapshot", "start.png")), 0.1) << "nothing moved";
}

// A click on the first bearing unit's first bolt's head selects it (parts mode, the default),
// shows it highlighted and names it; G hides the demo's note and shows it again, W finds no
// saved view.
TEST_F(WindowGLTest, AClickSelectsTheBoltAndKeysShowAndHideThePmi) {
    start({}, true);
    std::size_t tintBefore = 0, tinted = 0, note = 0, hidden = 1, again = 0;
    const auto count = [&](bool (*is)(const std::uint8_t*)) { return pixels(shown(), is).count; };
    if (window) {
        waitFor([&] { return (note = count(pmiBlue)) >= 40; }, 50);
        tintBefore = count(selectionTint);
        send(MotionNotify, 0, 165, 133, 0);
        send(ButtonPress, Button1, 165, 133, 0);
        send(ButtonRelease, Button1, 165, 133, Button1Mask);
        XFlush(display);
        waitFor([&] { return (tinted = count(selectionTint)) >= tintBefore + 40; });
        waitFor([&] { return (note = count(pmiBlue)) >= 40; }, 50);
        key(XK_g);
        waitFor([&] { return (hidden = count(pmiBlue)) == 0; }, 50);
        key(XK_g);
        key(XK_w);
        waitFor([&] { return (again = count(pmiBlue)) >= note; }, 50);
    }
    const bool exited = finish();
    ASSERT_TRUE(window) << "qrnview showed no window\n" << printed;
    EXPECT_TRUE(exited) << printed;
    EXPECT_GE(tinted, tintBefore + 40) << "the bolt was not shown highlighted";
    EXPECT_THAT(printed, ::testing::HasSubstr("selected part Bolt 1 (Bolt M8x16)"));
    EXPECT_GE(note, 40u) << "the note shows";
    EXPECT_EQ(hidden, 0u);
    EXPECT_EQ(again, note);
    for (const char* said : {"qrnview: PMI hidden", "qrnview: PMI shown: 1 item",
                             "qrnview: the model has no saved views"})
        EXPECT_THAT(printed, ::testing::HasSubstr(said));
}

TEST_F(WindowGLTest, ThePlaneUnderThePointerIsDraggedAndKeysChangeTheCut) {
    start({"--section", "z"}, false);
    // Beside the model on the plane's quad: resting there grabs the plane (drawn in its
    // picked colour), a drag moves it and the offset is told; then the keys.
    const auto orange = [](const std::uint8_t* p) { return p[0] > p[2] + 40 && p[1] > p[2]; };
    std::size_t before = 0, grabbed = 0;
    if (window) {
        waitFor([&] { return pixels(shown(), background).count < kWidth * kHeight; }, 50);
        before = pixels(shown(), orange).count;
        send(MotionNotify, 0, 60, 120, 0);
        XFlush(display);
        waitFor([&] { return (grabbed = pixels(shown(), orange).count) > before + 2000; }, 50);
        send(ButtonPress, Button1, 60, 120, 0);
        for (int y = 118; y >= 100; y -= 2)
            send(MotionNotify, 0, 60, y, Button1Mask);
        send(ButtonRelease, Button1, 60, 100, Button1Mask);
        XFlush(display);
        for (KeySym k : {XK_k, XK_l})
            key(k, 200, 200);
    }
    const bool exited = finish();
    ASSERT_TRUE(window) << "qrnview showed no window\n" << printed;
    EXPECT_TRUE(exited) << printed;
    EXPECT_GT(grabbed, before + 2000) << "the plane under the pointer is not shown grabbed";
    EXPECT_THAT(printed, ::testing::ContainsRegex("qrnview: Offset: [1-9][0-9.]* mm"));
    EXPECT_THAT(printed, ::testing::HasSubstr("caps in one colour"));
    EXPECT_THAT(printed, ::testing::HasSubstr("qrnview: cut along X"));
}

} // namespace
