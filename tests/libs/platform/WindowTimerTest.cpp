#include "qrnplatform/WindowTimer.h"

#include <gtest/gtest.h>

#include <algorithm>

#ifdef _WIN32
#include <windows.h>
#endif

using qrnplatform::WindowTimer;

namespace {

#ifdef _WIN32
// The system's timers need a real window: a hidden one of this thread.
class TestWindow {
public:
    TestWindow()
        : m_hwnd(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 16, 16, nullptr, nullptr,
                                   ::GetModuleHandleW(nullptr), nullptr)) {}
    ~TestWindow() { ::DestroyWindow(m_hwnd); }
    void* handle() const { return m_hwnd; }

private:
    HWND m_hwnd;
};
#else
class TestWindow {
public:
    void* handle() { return &m_dummy; }

private:
    int m_dummy = 0;
};

std::uint64_t g_now = 0; // the host's clock
std::uint64_t testClock() {
    return g_now;
}
#endif

} // namespace

TEST(WindowTimer, RecordsWhatRunsOnWhichWindowAndTicks) {
    TestWindow a, b;
    ASSERT_TRUE(a.handle() && b.handle());
    EXPECT_EQ(WindowTimer::interval(a.handle(), 101), 0u);
    ASSERT_TRUE(WindowTimer::setTimer(a.handle(), 101, 30));
    ASSERT_TRUE(WindowTimer::setTimer(b.handle(), 101, 50));
    ASSERT_TRUE(WindowTimer::setTimer(a.handle(), 7, 1)); // below the system's minimum
    EXPECT_EQ(WindowTimer::interval(a.handle(), 101), 30u);
    EXPECT_EQ(WindowTimer::interval(b.handle(), 101), 50u);
    EXPECT_EQ(WindowTimer::interval(a.handle(), 7), 10u);
    // Setting it again restarts it with the new interval.
    ASSERT_TRUE(WindowTimer::setTimer(a.handle(), 101, 40));
    EXPECT_EQ(WindowTimer::interval(a.handle(), 101), 40u);

    EXPECT_TRUE(WindowTimer::killTimer(a.handle(), 101));
    EXPECT_FALSE(WindowTimer::killTimer(a.handle(), 101));
    EXPECT_EQ(WindowTimer::interval(a.handle(), 101), 0u);
    EXPECT_EQ(WindowTimer::interval(b.handle(), 101), 50u);
    EXPECT_TRUE(WindowTimer::killTimer(b.handle(), 101));
    EXPECT_TRUE(WindowTimer::killTimer(a.handle(), 7));
    EXPECT_FALSE(WindowTimer::setTimer(nullptr, 101, 30));

    WindowTimer::takeInvalidated();
    EXPECT_TRUE(WindowTimer::invalidate(b.handle()));
    EXPECT_TRUE(WindowTimer::invalidate(a.handle()));
    EXPECT_TRUE(WindowTimer::invalidate(b.handle()));
    EXPECT_FALSE(WindowTimer::invalidate(nullptr));
    EXPECT_EQ(WindowTimer::takeInvalidated(), (std::vector<void*>{b.handle(), a.handle()}));
    EXPECT_TRUE(WindowTimer::takeInvalidated().empty());

#ifdef _WIN32
    // The system delivers the ticks.
    TestWindow w;
    HWND hwnd = static_cast<HWND>(w.handle());
    ASSERT_TRUE(WindowTimer::setTimer(w.handle(), 101, 10));
    MSG msg;
    bool ticked = false;
    for (int i = 0; i < 100 && !ticked; ++i) {
        ::Sleep(10);
        while (::PeekMessageW(&msg, hwnd, WM_TIMER, WM_TIMER, PM_REMOVE))
            ticked = ticked || msg.wParam == 101;
    }
    EXPECT_TRUE(ticked);
    ASSERT_TRUE(WindowTimer::killTimer(w.handle(), 101));
    ::Sleep(50);
    EXPECT_FALSE(::PeekMessageW(&msg, hwnd, WM_TIMER, WM_TIMER, PM_REMOVE));
    EXPECT_EQ(WindowTimer::timeToNextTick(), -1);
    EXPECT_TRUE(WindowTimer::takeDueTicks().empty());
#else
    // The host drives the ticks.
    g_now = 1000;
    WindowTimer::setClock(testClock);
    EXPECT_EQ(WindowTimer::timeToNextTick(), -1);
    EXPECT_TRUE(WindowTimer::takeDueTicks().empty());
    WindowTimer::setTimer(a.handle(), 101, 30);
    g_now = 1010;
    WindowTimer::setTimer(b.handle(), 5, 10);
    EXPECT_EQ(WindowTimer::timeToNextTick(), 10);
    g_now = 1019;
    EXPECT_TRUE(WindowTimer::takeDueTicks().empty());
    g_now = 1020;
    auto ticks = WindowTimer::takeDueTicks();
    ASSERT_EQ(ticks.size(), 1u);
    EXPECT_EQ(ticks[0].window, b.handle());
    EXPECT_EQ(ticks[0].id, 5u);
    // Rescheduled one interval on: b at 1030, a still at 1030; both due then, a set first.
    EXPECT_EQ(WindowTimer::timeToNextTick(), 10);
    g_now = 1030;
    ticks = WindowTimer::takeDueTicks();
    ASSERT_EQ(ticks.size(), 2u);
    EXPECT_EQ(ticks[0].window, a.handle());
    EXPECT_EQ(ticks[1].window, b.handle());
    // A late loop gets each timer once, not a burst of missed ticks.
    g_now = 1200;
    EXPECT_EQ(WindowTimer::timeToNextTick(), 0);
    EXPECT_EQ(WindowTimer::takeDueTicks().size(), 2u);
    EXPECT_TRUE(WindowTimer::takeDueTicks().empty());
    EXPECT_EQ(WindowTimer::timeToNextTick(), 10);
    // A killed timer ticks no more.
    WindowTimer::killTimer(b.handle(), 5);
    g_now = 1230;
    ticks = WindowTimer::takeDueTicks();
    ASSERT_EQ(ticks.size(), 1u);
    EXPECT_EQ(ticks[0].id, 101u);
    WindowTimer::killTimer(a.handle(), 101);
    EXPECT_EQ(WindowTimer::timeToNextTick(), -1);
    WindowTimer::setClock(nullptr);
#endif
}
