// qrnview's window on an X display (Xvfb in the test command; skipped loudly without one): it
// draws what the off-screen frame shows, and X input reaches the tools, animates and replays.
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
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using qrnviewer::InputEvent;

constexpr unsigned int kWidth = 320, kHeight = 240;

std::string quoted(const fs::path& p) {
    return "'" + p.string() + "'";
}

// The share of pixels that differ beyond a small tolerance (the window multisamples: edges differ).
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
            GTEST_SKIP() << "\n*** no X display: the window tests did not run; use xvfb-run ***";
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

    // The process's mapped top-level window (other tests may show windows); 0 after a minute.
    Window findWindow(pid_t pid) {
        const Atom netWmPid = XInternAtom(display, "_NET_WM_PID", False);
        for (int tries = 0; tries < 600; ++tries) {
            Window root = 0, parent = 0, *children = nullptr, found = 0;
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
                    value && items == 1 && *reinterpret_cast<unsigned long*>(value) == ulong(pid) &&
                    XGetWindowAttributes(display, children[i], &a) && a.map_state == IsViewable)
                    found = children[i];
                if (value)
                    XFree(value);
            }
            if (children)
                XFree(children);
            if (found)
                return found;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return 0;
    }

    // Input as the server delivers it; key, button and motion events share their layout.
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
                q[0] = std::uint8_t(p >> 16), q[1] = std::uint8_t(p >> 8), q[2] = std::uint8_t(p);
                q[3] = 255;
            }
        if (x)
            XDestroyImage(x);
        return image;
    }
    // qrnview run to its end with these arguments and an image file to write; that image.
    qrnimage::Image picture(const std::string& args, const char* png) {
        const std::string command = "'" + std::string(QRNVIEW_EXE) + "' --size 320x240 " + args +
                                    " " + quoted(dir / png) + " 2>&1";
        std::FILE* pipe = popen(command.c_str(), "r");
        std::string output, error;
        char buffer[4096];
        for (std::size_t n; pipe && (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
            output.append(buffer, n);
        EXPECT_TRUE(pipe && pclose(pipe) == 0) << output;
        qrnimage::Image image;
        EXPECT_TRUE(qrnimage::Image::loadPng((dir / png).string(), image, &error)) << error;
        return image;
    }
    unsigned int keycode(KeySym sym) { return XKeysymToKeycode(display, sym); }
    // qrnview started without waiting for it, so that input can be sent to its window; what it
    // prints goes to a file.
    pid_t start(const fs::path& output, const std::vector<std::string>& args) {
        const pid_t pid = fork();
        if (pid == 0) {
            const int fd = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(fd, 1);
            dup2(fd, 2);
            std::vector<char*> argv{const_cast<char*>(QRNVIEW_EXE)};
            for (const auto& a : args)
                argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            execv(QRNVIEW_EXE, argv.data());
            _exit(127);
        }
        return pid;
    }
    // Quits it through its window (Q), or stops it when it showed none; true when it exited
    // with 0. What it printed comes back in printed.
    bool finish(pid_t pid, Window window, const fs::path& output, std::string& printed) {
        if (window) {
            send(window, KeyPress, keycode(XK_q), 0, 0, 0);
            XFlush(display);
        } else {
            kill(pid, SIGTERM);
        }
        int status = 0;
        waitpid(pid, &status, 0);
        std::ifstream in(output);
        printed.assign(std::istreambuf_iterator<char>(in), {});
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    Display* display = nullptr;
    fs::path dir;
    Time time = 1000;
};

TEST_F(WindowGLTest, OpensAndDrawsWhatTheOffScreenFrameShows) {
    const qrnimage::Image window = picture("--screenshot", "window.png");
    EXPECT_LT(differing(window, picture("--snapshot", "offscreen.png")), 0.03);
    qrntest::expectMatchesBaseline(window, "window_demo_iso", 8, kWidth * kHeight / 200);
}

TEST_F(WindowGLTest, XInputReachesTheToolsInTheirTerms) {
    const fs::path log = dir / "recorded.log", output = dir / "output.txt";
    const pid_t pid = start(output, {"--size", "320x240", "--record", log.string()});
    ASSERT_GT(pid, 0);

    const Window window = findWindow(pid);
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
        // Out of the corner where other tests' windows open, so that what it shows is its own.
        const int screen = DefaultScreen(display);
        XMoveWindow(display, window, DisplayWidth(display, screen) - int(kWidth),
                    DisplayHeight(display, screen) - int(kHeight));
        XRaiseWindow(display, window);
        send(window, KeyPress, keycode(XK_5), 170, 110, 0); // top, on the loop's timer
        send(window, KeyRelease, keycode(XK_5), 170, 110, 0);
        XFlush(display);
        const qrnimage::Image top = picture("--view top --snapshot", "top.png");
        // The animation fits the view its own way: edges may lie a pixel off.
        for (int tries = 0; tries < 100 && differing(shown(window), top) > 0.08; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_LT(differing(shown(window), top), 0.08) << "the window never showed the top view";
    }
    std::string printed;
    const bool exited = finish(pid, window, output, printed);
    ASSERT_TRUE(window) << "qrnview showed no window\n" << printed;
    ASSERT_TRUE(exited) << printed;

    std::vector<InputEvent> events;
    std::string error;
    ASSERT_TRUE(qrnviewer::EventLog::read(log.string(), events, error)) << error;
    // Button flags are the state after the event, keys virtual-key codes (Ctrl, F4, Q).
    std::string seen;
    for (InputEvent e : events) {
        e.time = 0;
        if (e.kind == InputEvent::KEY_DOWN || e.kind == InputEvent::KEY_UP)
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
    const std::string replay = "--replay " + quoted(log);
    const qrnimage::Image replayed = picture(replay + " --snapshot", "replayed.png");
    EXPECT_LT(differing(picture(replay + " --screenshot", "window.png"), replayed), 0.03);
    EXPECT_GT(differing(replayed, picture("--snapshot", "start.png")), 0.1) << "nothing moved";
}

// Pixels tinted in the selection colour (magenta: red and blue well above green).
std::size_t selectionTinted(const qrnimage::Image& image) {
    std::size_t count = 0;
    for (unsigned int y = 0; y < image.height(); ++y)
        for (unsigned int x = 0; x < image.width(); ++x) {
            const std::uint8_t* p = image.pixel(x, y);
            count += (p[0] > p[1] + 60 && p[2] > p[1] + 50) ? 1 : 0;
        }
    return count;
}

TEST_F(WindowGLTest, AClickOnTheBoltSelectsItShowsItAndNamesIt) {
    const fs::path output = dir / "output.txt";
    const pid_t pid = start(output, {"--size", "320x240"});
    ASSERT_GT(pid, 0);
    const Window window = findWindow(pid);
    std::size_t before = 0, after = 0;
    if (window) {
        const int screen = DefaultScreen(display);
        XMoveWindow(display, window, DisplayWidth(display, screen) - int(kWidth),
                    DisplayHeight(display, screen) - int(kHeight));
        XRaiseWindow(display, window);
        XFlush(display);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        before = selectionTinted(shown(window));
        // The head of the first bearing unit's first bolt, in parts mode (the default).
        send(window, MotionNotify, 0, 165, 133, 0);
        send(window, ButtonPress, Button1, 165, 133, 0);
        send(window, ButtonRelease, Button1, 165, 133, Button1Mask);
        XFlush(display);
        for (int tries = 0; tries < 100 && (after = selectionTinted(shown(window))) < before + 40;
             ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    std::string printed;
    const bool exited = finish(pid, window, output, printed);
    ASSERT_TRUE(window) << "qrnview showed no window\n" << printed;
    EXPECT_TRUE(exited) << printed;
    EXPECT_NE(printed.find("selected part Bolt 1 (Bolt M8x16)"), std::string::npos) << printed;
    EXPECT_GE(after, before + 40) << "the bolt was not shown highlighted";
}

TEST_F(WindowGLTest, KeysShowAndHideThePmi) {
    const fs::path output = dir / "output.txt";
    const pid_t pid = start(output, {"--size", "320x240"});
    ASSERT_GT(pid, 0);
    const Window window = findWindow(pid);
    // The demo's note in the PMI's dark blue.
    const auto notePixels = [&] {
        const qrnimage::Image image = shown(window);
        std::size_t n = 0;
        for (unsigned y = 0; y < image.height(); ++y)
            for (unsigned x = 0; x < image.width(); ++x) {
                const auto* p = image.pixel(x, y);
                n += std::abs(p[0] - 13) <= 3 && std::abs(p[1] - 38) <= 3 &&
                     std::abs(p[2] - 153) <= 3;
            }
        return n;
    };
    std::size_t before = 0, hidden = 1, again = 0;
    if (window) {
        const int screen = DefaultScreen(display);
        XMoveWindow(display, window, DisplayWidth(display, screen) - int(kWidth), 0);
        XRaiseWindow(display, window);
        XFlush(display);
        for (int tries = 0; tries < 50 && (before = notePixels()) < 40; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        send(window, KeyPress, keycode(XK_g), 0, 0, 0);
        send(window, KeyRelease, keycode(XK_g), 0, 0, 0);
        XFlush(display);
        for (int tries = 0; tries < 50 && (hidden = notePixels()) > 0; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        send(window, KeyPress, keycode(XK_g), 0, 0, 0);
        send(window, KeyRelease, keycode(XK_g), 0, 0, 0);
        send(window, KeyPress, keycode(XK_w), 0, 0, 0);
        send(window, KeyRelease, keycode(XK_w), 0, 0, 0);
        XFlush(display);
        for (int tries = 0; tries < 50 && (again = notePixels()) < before; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    std::string printed;
    const bool exited = finish(pid, window, output, printed);
    ASSERT_TRUE(window) << "qrnview showed no window\n" << printed;
    EXPECT_TRUE(exited) << printed;
    EXPECT_GE(before, 40u) << "the note shows";
    EXPECT_EQ(hidden, 0u);
    EXPECT_EQ(again, before);
    EXPECT_NE(printed.find("qrnview: PMI hidden"), std::string::npos) << printed;
    EXPECT_NE(printed.find("qrnview: PMI shown: 1 item"), std::string::npos) << printed;
    EXPECT_NE(printed.find("qrnview: the model has no saved views"), std::string::npos) << printed;
}

} // namespace
