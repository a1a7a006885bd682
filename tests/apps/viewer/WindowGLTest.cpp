// qrnview's window on a real X display: it opens and draws what the off-screen frame shows,
// and X input reaches the tools in their terms, animates on the event loop's timer, and is
// recorded and played back as off screen.
// Needs an X server (the test command runs under Xvfb); without one it skips, loudly.
#include "ImageBaseline.h"

#include "qrnimage/Image.h"
#include "qrnviewer/EventLog.h"

#include <gtest/gtest.h>
// After GoogleTest: Xlib defines None as a macro.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using qrnviewer::InputEvent;

constexpr unsigned int kWidth = 320, kHeight = 240;

std::string quoted(const fs::path& p) {
    return "'" + p.string() + "'";
}

// Runs qrnview to its end; what it printed in output.
int qrnview(const std::string& args, std::string& output) {
    std::FILE* pipe = popen((std::string("'") + QRNVIEW_EXE + "' " + args + " 2>&1").c_str(), "r");
    if (!pipe)
        return -1;
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        output.append(buffer, n);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

qrnimage::Image load(const fs::path& path) {
    qrnimage::Image image;
    std::string error;
    EXPECT_TRUE(qrnimage::Image::loadPng(path.string(), image, &error)) << error;
    return image;
}

// The share of pixels that differ by more than a small tolerance. The window multisamples and
// the off-screen context does not, so edges differ and the rest agrees.
double differing(const qrnimage::Image& a, const qrnimage::Image& b) {
    if (a.width() != b.width() || a.height() != b.height())
        return 1.0;
    return static_cast<double>(qrnimage::Image::compare(a, b, 24).differing) /
           (a.width() * a.height());
}

class WindowGLTest : public ::testing::Test {
protected:
    void SetUp() override {
        display = XOpenDisplay(nullptr);
        if (!display)
            GTEST_SKIP() << "\n*** no X display (DISPLAY='"
                         << (std::getenv("DISPLAY") ? std::getenv("DISPLAY") : "")
                         << "'): the window tests did not run; run them under xvfb-run ***";
        dir = fs::temp_directory_path() /
              ("qrnview-window-" + std::to_string(::getpid()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(dir);
    }
    void TearDown() override {
        if (display)
            XCloseDisplay(display);
        if (!dir.empty())
            fs::remove_all(dir);
    }

    // The mapped top-level window of the process (tests beside this one may show windows of
    // the same title); 0 after a minute.
    Window findWindow(pid_t pid) {
        const Atom netWmPid = XInternAtom(display, "_NET_WM_PID", False);
        auto isOf = [&](Window w) {
            Atom type = 0;
            int format = 0;
            unsigned long items = 0, left = 0;
            unsigned char* value = nullptr;
            XWindowAttributes attributes;
            const bool of = XGetWindowProperty(display, w, netWmPid, 0, 1, False, XA_CARDINAL,
                                               &type, &format, &items, &left, &value) == Success &&
                            value && items == 1 &&
                            *reinterpret_cast<unsigned long*>(value) == std::uint64_t(pid) &&
                            XGetWindowAttributes(display, w, &attributes) &&
                            attributes.map_state == IsViewable;
            if (value)
                XFree(value);
            return of;
        };
        for (int tries = 0; tries < 600; ++tries) {
            Window root = 0, parent = 0, *children = nullptr, found = 0;
            unsigned int count = 0;
            if (XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count))
                for (unsigned int i = 0; i < count && !found; ++i)
                    found = isOf(children[i]) ? children[i] : 0;
            if (children)
                XFree(children);
            if (found)
                return found;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return 0;
    }

    // Input as the server would deliver it to the window's client. Key, button and motion
    // events share their layout up to the detail (key code, button, or 0 for a plain motion).
    void send(Window window, int type, unsigned int detail, int x, int y, unsigned int state) {
        XEvent e{};
        e.xkey =
            XKeyEvent{type, 0, True,  display, window, DefaultRootWindow(display), 0, ++time, x, y,
                      x,    y, state, detail,  True};
        XSendEvent(display, window, False, 0, &e);
    }
    // What the window shows on the screen now.
    qrnimage::Image shown(Window window) {
        qrnimage::Image image(kWidth, kHeight);
        XImage* x = XGetImage(display, window, 0, 0, kWidth, kHeight, AllPlanes, ZPixmap);
        for (unsigned int row = 0; x && row < kHeight; ++row)
            for (unsigned int column = 0; column < kWidth; ++column) {
                const unsigned long p = XGetPixel(x, int(column), int(row));
                std::uint8_t* q = image.pixel(column, row);
                q[0] = std::uint8_t(p >> 16);
                q[1] = std::uint8_t(p >> 8);
                q[2] = std::uint8_t(p);
                q[3] = 255;
            }
        if (x)
            XDestroyImage(x);
        return image;
    }
    unsigned int keycode(KeySym sym) { return XKeysymToKeycode(display, sym); }

    Display* display = nullptr;
    fs::path dir;
    Time time = 1000;
};

TEST_F(WindowGLTest, OpensAndDrawsWhatTheOffScreenFrameShows) {
    std::string output;
    ASSERT_EQ(qrnview("--size 320x240 --screenshot " + quoted(dir / "window.png"), output), 0)
        << output;
    ASSERT_EQ(qrnview("--size 320x240 --snapshot " + quoted(dir / "offscreen.png"), output), 0)
        << output;
    const qrnimage::Image window = load(dir / "window.png");
    ASSERT_EQ(window.width(), kWidth);
    ASSERT_EQ(window.height(), kHeight);
    EXPECT_LT(differing(window, load(dir / "offscreen.png")), 0.03);
    qrntest::expectMatchesBaseline(window, "window_demo_iso", 8, kWidth * kHeight / 200);
}

TEST_F(WindowGLTest, XInputReachesTheToolsInTheirTerms) {
    const fs::path log = dir / "recorded.log", output = dir / "output.txt";
    // Started without waiting for it, so that input can be sent to its window.
    std::vector<std::string> args = {QRNVIEW_EXE, "--size", "320x240", "--record", log.string()};
    std::vector<char*> argv;
    for (auto& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, QRNVIEW_EXE, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ASSERT_EQ(spawned, 0);

    const Window window = findWindow(pid);
    std::string printed;
    if (window) {
        send(window, MotionNotify, 0, 100, 100, 0);
        send(window, ButtonPress, Button1, 100, 100, 0);
        for (int x = 110; x <= 160; x += 10)
            send(window, MotionNotify, 0, x, 100, Button1Mask);
        send(window, ButtonRelease, Button1, 160, 100, Button1Mask);
        send(window, KeyPress, keycode(XK_Control_L), 160, 100, 0);
        send(window, ButtonPress, Button2, 160, 100, ControlMask);
        send(window, MotionNotify, 0, 170, 110, ControlMask | Button2Mask);
        send(window, ButtonRelease, Button2, 170, 110, ControlMask | Button2Mask);
        send(window, KeyRelease, keycode(XK_Control_L), 170, 110, ControlMask);
        send(window, KeyPress, keycode(XK_F4), 170, 110, 0);
        send(window, KeyRelease, keycode(XK_F4), 170, 110, 0);
        // Out of the corner where the windows of other tests open, so that what it shows is
        // its own.
        const int screen = DefaultScreen(display);
        XMoveWindow(display, window, DisplayWidth(display, screen) - int(kWidth),
                    DisplayHeight(display, screen) - int(kHeight));
        XRaiseWindow(display, window);
        send(window, KeyPress, keycode(XK_5), 170, 110, 0); // top, on the loop's timer
        send(window, KeyRelease, keycode(XK_5), 170, 110, 0);
        XFlush(display);
        ASSERT_EQ(
            qrnview("--size 320x240 --view top --snapshot " + quoted(dir / "top.png"), printed), 0);
        const qrnimage::Image top = load(dir / "top.png");
        // The animation fits the view its own way: edges may lie a pixel off.
        for (int tries = 0; tries < 100 && differing(shown(window), top) > 0.08; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_LT(differing(shown(window), top), 0.08) << "the window never showed the top view";
        send(window, KeyPress, keycode(XK_q), 170, 110, 0); // quits
        XFlush(display);
    } else {
        kill(pid, SIGTERM);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    std::ifstream in(output);
    printed.assign(std::istreambuf_iterator<char>(in), {});
    ASSERT_TRUE(window) << "qrnview showed no window\n" << printed;
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << printed;

    std::vector<InputEvent> events;
    std::string error;
    ASSERT_TRUE(qrnviewer::EventLog::read(log.string(), events, error)) << error;
    auto find = [&](InputEvent::Kind kind, unsigned int flags, int x, int y, unsigned int key) {
        for (const auto& e : events)
            if (e.kind == kind && e.flags == flags && e.key == key &&
                (kind == InputEvent::KEY_DOWN || kind == InputEvent::KEY_UP ||
                 (e.x == x && e.y == y)))
                return true;
        return false;
    };
    // Button flags are the state after the event, keys are virtual-key codes.
    EXPECT_TRUE(find(InputEvent::BUTTON_DOWN, 0x01, 100, 100, 0)) << "left press";
    EXPECT_TRUE(find(InputEvent::MOTION, 0x01, 130, 100, 0)) << "left drag";
    EXPECT_TRUE(find(InputEvent::BUTTON_UP, 0x00, 160, 100, 0)) << "left release";
    EXPECT_TRUE(find(InputEvent::KEY_DOWN, 0, 0, 0, 0x11)) << "Ctrl";
    EXPECT_TRUE(find(InputEvent::BUTTON_DOWN, 0x18, 160, 100, 0)) << "Ctrl+middle press";
    EXPECT_TRUE(find(InputEvent::MOTION, 0x18, 170, 110, 0)) << "Ctrl+middle drag";
    EXPECT_TRUE(find(InputEvent::BUTTON_UP, 0x08, 170, 110, 0)) << "Ctrl+middle release";
    EXPECT_TRUE(find(InputEvent::KEY_UP, 0, 0, 0, 0x11)) << "Ctrl released";
    EXPECT_TRUE(find(InputEvent::KEY_DOWN, 0, 0, 0, 0x73)) << "F4";
    EXPECT_TRUE(find(InputEvent::KEY_DOWN, 0, 0, 0, 'Q')) << "Q";

    // Played back, what was recorded moves the model, in the window as off screen.
    std::string run;
    const std::string replay = "--size 320x240 --replay " + quoted(log);
    ASSERT_EQ(qrnview(replay + " --screenshot " + quoted(dir / "window.png"), run), 0) << run;
    ASSERT_EQ(qrnview(replay + " --snapshot " + quoted(dir / "replayed.png"), run), 0) << run;
    ASSERT_EQ(qrnview("--size 320x240 --snapshot " + quoted(dir / "start.png"), run), 0) << run;
    const qrnimage::Image replayed = load(dir / "replayed.png");
    EXPECT_LT(differing(load(dir / "window.png"), replayed), 0.03);
    EXPECT_GT(differing(replayed, load(dir / "start.png")), 0.1) << "the replay moved nothing";
}

} // namespace
