// Recorded input replayed through the viewer's event routing on the demo assembly: each mouse
// convention's drags turn, pan and zoom as named and match their baseline; keys animate; touch
// input and gestures reach the gesture manipulator.
#include "ImageBaseline.h"
#include "ViewerTestSupport.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/StandardView.h"
#include "qrnplatform/Input.h"
#include "qrnviewer/EventLog.h"
#include "qrnviewer/EventRouter.h"
#include "qrnviewer/Replay.h"
#include "qrnviewer/Snapshot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sstream>

namespace {

using qrngl::MouseButton;
using qrnviewer::InputEvent;

constexpr unsigned int kWidth = 320, kHeight = 240;
enum : unsigned int { VK_ESCAPE = 27, VK_SHIFT = 0x10, VK_CONTROL = 0x11, VK_F4 = 0x73 };

std::vector<InputEvent> parse(const std::string& text) {
    std::istringstream in(text);
    std::vector<InputEvent> events;
    std::string error;
    EXPECT_TRUE(qrnviewer::EventLog::parse(in, events, error)) << error;
    return events;
}

// Writes an event log as a user's session would have made it, 20 ms between events.
class LogWriter {
public:
    void event(const char* kind, const char* button, unsigned int flags, unsigned int key = 0) {
        char line[128];
        std::snprintf(line, sizeof line, "%d %s %s 0x%02x %d %d 0 %u\n", m_time, kind, button,
                      flags, m_x, m_y, key);
        m_text += line, m_time += 20;
    }
    void key(unsigned int vk) { event("keydown", "-", 0, vk), event("keyup", "-", 0, vk); }
    void wait(int ms) { m_time += ms, event("wait", "-", 0); }
    // Keys held around the drag, buttons held through it (pressed in order), buttons clicked
    // once those are down, then the motion in equal steps from the middle of the window.
    struct Gesture {
        std::vector<unsigned int> keys;
        std::vector<MouseButton> hold, click;
        int dx, dy, steps;
    };
    void drag(const Gesture& g) {
        static const char* names[] = {"left", "middle", "right"};
        static const unsigned int bit[] = {qrngl::KEY_LBUTTON, qrngl::KEY_MBUTTON,
                                           qrngl::KEY_RBUTTON};
        unsigned int flags = 0;
        m_x = kWidth / 2, m_y = kHeight / 2;
        for (unsigned int k : g.keys) {
            event("keydown", "-", flags, k);
            flags |= k == VK_SHIFT ? qrngl::KEY_SHIFT : k == VK_CONTROL ? qrngl::KEY_CONTROL : 0u;
        }
        for (MouseButton b : g.hold)
            event("down", names[b], flags |= bit[b]);
        for (MouseButton b : g.click) {
            event("down", names[b], flags | bit[b]);
            event("up", names[b], flags);
        }
        for (int i = 0; i < g.steps; ++i)
            m_x += g.dx, m_y += g.dy, event("move", "-", flags);
        for (auto b = g.hold.rbegin(); b != g.hold.rend(); ++b)
            event("up", names[*b], flags &= ~bit[*b]);
        for (unsigned int k : g.keys)
            event("keyup", "-", 0, k);
        wait(100);
    }
    std::vector<InputEvent> events() const { return parse(m_text); }

private:
    std::string m_text = "# generated\n";
    int m_time = 0, m_x = 0, m_y = 0;
};

using Gesture = LogWriter::Gesture;
const MouseButton L = qrngl::LEFT, M = qrngl::MIDDLE, R = qrngl::RIGHT;

struct Convention {
    int style;
    const char* name;
    Gesture rotate, pan, zoom;
    int foreign; // a convention under which this log moves the camera otherwise
};

// Each convention's own rotate, pan and zoom drags, in different directions so that every
// picture differs (zoom drags go down: in), and a convention that reads the log otherwise.
// clang-format off
const Convention kConventions[] = {
    {0, "qrn",      {{}, {M}, {}, 6, 0, 8},     {{VK_CONTROL}, {M}, {}, 5, 3, 6},
     {{}, {R}, {}, 0, 4, 8}, 1},  // CATIA pans with the middle button
    {1, "catia",    {{}, {M, R}, {}, 0, 6, 8},  {{}, {M}, {}, -5, 0, 6},
     {{}, {M}, {R}, 0, 4, 8}, 2}, // ProE does nothing with middle and right
    {2, "proe",     {{}, {M}, {}, -6, 0, 8},    {{VK_SHIFT}, {M}, {}, 0, -4, 6},
     {{}, {R}, {}, 0, 4, 8}, 3},  // Inventor pans with the middle button
    {3, "inventor", {{VK_F4}, {L}, {}, 4, 4, 8}, {{}, {M}, {}, 4, -3, 6},
     {{}, {R}, {}, 0, 4, 8}, 4},  // NX rotates with the middle button
    {4, "nx",       {{}, {M}, {}, 0, -6, 8},    {{}, {M, R}, {}, -4, 3, 6},
     {{}, {R}, {}, 0, 4, 8}, 5},  // SW does nothing with middle and right
    {5, "sw",       {{}, {M}, {}, 6, 3, 8},     {{VK_CONTROL}, {M}, {}, 0, 4, 6},
     {{}, {R}, {}, 0, 3, 8}, 1},  // CATIA pans with the middle button
    {6, "se",       {{}, {M}, {}, -4, 5, 8},    {{VK_SHIFT}, {M}, {}, 5, 0, 6},
     {{}, {R}, {}, 0, 5, 8}, 5},  // SW does nothing with Shift and middle
};
// clang-format on

// The angle in degrees between two rotations, from their difference, which stays exact for
// small angles: |A - B| = 2 sqrt(2) sin(angle / 2) over the 3x3 parts.
float angleBetween(const qrnmath::Mat4& a, const qrnmath::Mat4& b) {
    double sum = 0.0;
    for (int i = 0; i < 3; ++i)
        for (int k = 0; k < 3; ++k)
            sum += (a[i * 4 + k] - b[i * 4 + k]) * (a[i * 4 + k] - b[i * 4 + k]);
    return static_cast<float>(2.0 * std::asin(std::min(1.0, std::sqrt(sum / 8.0))) * 57.29578);
}

void PrintTo(const Convention& c, std::ostream* os) {
    *os << c.name;
}

class ReplayTest : public ::testing::Test {
protected:
    // The demo (made once) as the viewer opens it, in a window of the test's size.
    void SetUp() override {
        static qrnimport::ModelData model;
        static std::string error;
        static const bool ok = qrnimport::DemoAssembly::model(model, error);
        ASSERT_TRUE(ok) << error;
        for (unsigned int vk : {VK_SHIFT, VK_CONTROL, VK_F4}) // held by an earlier test's log
            qrnplatform::Input::setKeyDown(static_cast<int>(vk), false);
        document = qrnimport::DocumentBuilder::build(model);
        camera = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER)->camera;
        qrngl::CameraHelper::setViewport(kWidth, kHeight, camera);
        qrnimport::StandardView::apply("iso", model.bbox(), camera);
        start = *camera;
    }
    // Plays the log as qrnview --replay does, on a fresh document. The left button pans, so that
    // only F4 makes Inventor's left drag turn.
    void play(const std::vector<InputEvent>& events, int style) {
        SetUp();
        document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER)->mouseStyle = style;
        router.reset(); // one router a document: it owns the renderer's notifier
        router = std::make_unique<qrnviewer::EventRouter>(document, nullptr, nullptr);
        router->setOperation(qrngl::IEventInterpreter::PAN);
        qrnviewer::Replay::run(*router, events);
    }

    std::shared_ptr<qrn::Document> document;
    std::shared_ptr<qrngl::Camera> camera;
    qrngl::Camera start;
    std::unique_ptr<qrnviewer::EventRouter> router;
};

class ReplayImageGLTest : public ReplayTest, public ::testing::WithParamInterface<Convention> {};

// Each drag alone turns, pans (the model following the pointer: right is +x, down in the window
// -y in view space) or zooms in; all three in one log move the camera otherwise under another
// convention, and give their picture.
TEST_P(ReplayImageGLTest, GesturesDoAsTheySayAndTheLogGivesItsPicture) {
    const Convention& c = GetParam();
    const float radius = start.sphereRadius();
    auto sign = [&](float v) { return v > 0.01f * radius ? 1 : v < -0.01f * radius ? -1 : 0; };
    LogWriter log;
    for (const Gesture* g : {&c.rotate, &c.pan, &c.zoom}) {
        LogWriter alone;
        alone.drag(*g), log.drag(*g);
        play(alone.events(), c.style);
        const float turned = angleBetween(camera->modelRotation(), start.modelRotation());
        const qrnmath::Vec3 moved = camera->modelTranslation();
        EXPECT_TRUE(g == &c.rotate ? turned > 10.0f : turned < 0.01f) << turned;
        EXPECT_TRUE(g == &c.zoom ? camera->zoomFactor() < 0.9f : camera->zoomFactor() == 1.0f)
            << camera->zoomFactor();
        EXPECT_TRUE(g != &c.pan || (sign(moved[0]) == sign(float(g->dx) * radius) &&
                                    sign(moved[1]) == sign(-float(g->dy) * radius)))
            << "pan " << moved[0] << " " << moved[1];
    }
    play(log.events(), c.foreign);
    const qrngl::Camera foreign = *camera;
    play(log.events(), c.style);
    const qrnmath::Vec3 d = camera->modelTranslation() - foreign.modelTranslation();
    EXPECT_TRUE(angleBetween(camera->modelRotation(), foreign.modelRotation()) > 1.0f ||
                std::sqrt(d.lengthSquared()) > 0.01f * radius ||
                std::fabs(camera->zoomFactor() - foreign.zoomFactor()) > 0.01f)
        << c.name << " log under style " << c.foreign;

    const std::string name = std::string("replay_") + c.name;
    const std::string path = (std::filesystem::current_path() / (name + ".png")).string();
    std::string error;
    ASSERT_TRUE(qrnviewer::Snapshot::write(document, kWidth, kHeight, path, error)) << error;
    qrntest::expectMatchesBaseline(viewertest::loadPng(path), name, 8, kWidth * kHeight / 200);
}

INSTANTIATE_TEST_SUITE_P(Conventions, ReplayImageGLTest, ::testing::ValuesIn(kConventions),
                         [](const ::testing::TestParamInfo<Convention>& info) {
                             return std::string(info.param.name);
                         });

using ReplayRoutingTest = ReplayTest;

TEST_F(ReplayRoutingTest, ViewKeysAnimateOnTheTimerAndUndo) {
    const qrnmath::Mat4 top = qrnsg::SCView::standardRotation(qrnsg::SCView::TOP);
    LogWriter log;
    log.key('5'); // top, over 50 ticks of 30 ms
    log.wait(600);
    play(log.events(), 0);
    EXPECT_GT(angleBetween(camera->modelRotation(), top), 1.0f) << "the animation should run on";

    log.wait(1500);
    log.event("keydown", "-", 0, VK_CONTROL);
    log.key('Z');
    play(log.events(), 0);
    EXPECT_LT(angleBetween(camera->modelRotation(), start.modelRotation()), 0.01f) << "undone";
    log.key('Y');
    play(log.events(), 0);
    EXPECT_EQ(camera->modelRotation(), top) << "redone";
}

TEST_F(ReplayRoutingTest, SpinKeepsTurningUntilEscapeAndMCyclesTheConvention) {
    LogWriter log;
    log.key('S');
    log.drag({{}, {L}, {}, 5, 0, 4});
    play(log.events(), 0);
    const qrnmath::Mat4 released = camera->modelRotation();
    log.wait(300);
    log.key(VK_ESCAPE);
    play(log.events(), 0);
    const qrnmath::Mat4 stopped = camera->modelRotation();
    EXPECT_GT(angleBetween(stopped, released), 5.0f) << "the spin should go on after the release";
    log.wait(300);
    log.key('M'), log.key('M');
    play(log.events(), 0);
    EXPECT_LT(angleBetween(camera->modelRotation(), stopped), 0.01f) << "Escape ends the spin";
    EXPECT_EQ(router->mouseStyle(), 2);
    EXPECT_EQ(router->cameraManipulator()->getOperation(), qrngl::IEventInterpreter::SPIN);
}

TEST_F(ReplayRoutingTest, TouchAndGesturesReachTheGestureManipulatorOnly) {
    // A one-finger drag, a pan gesture, a rotate gesture, a pinch: each moves the camera once,
    // as the camera tools would, although the left button pans (see play).
    std::string log = "0 touchdown left 0x01 160 120 0 0\n"
                      "20 touchmove - 0x01 175 120 0 0\n"
                      "40 touchmove - 0x01 190 126 0 0\n"
                      "60 touchup left 0x00 190 126 0 0\n"
                      "100 pan - 0x01 100 100 0 0\n"
                      "120 pan - 0x00 140 80 0 0\n"
                      "140 pan - 0x04 160 70 0 0\n"
                      "160 rotate - 0x01 160 120 4500 0\n";
    for (int i = 0; i < 20; ++i)
        log += std::to_string(200 + 10 * i) + " zoom - 0x00 160 120 -3 0\n";
    auto expected = std::make_shared<qrngl::Camera>(start);
    qrngl::CameraHelper::rotate(expected, 15, 0);
    qrngl::CameraHelper::rotate(expected, 15, 6);
    qrngl::CameraHelper::translate(expected, 40, -20); // from the pan's previous point
    qrngl::CameraHelper::translate(expected, 20, -10);
    for (int i = 0; i < 20; ++i) // about where the touch went down
        qrngl::CameraHelper::zoom(expected, 160, 120, 1.01f, true);
    play(parse(log), 0);
    EXPECT_EQ(camera->modelRotation(), expected->modelRotation());
    EXPECT_EQ(camera->modelTranslation(), expected->modelTranslation());
    EXPECT_EQ(camera->zoomFactor(), expected->zoomFactor());
    EXPECT_GT(angleBetween(camera->modelRotation(), start.modelRotation()), 10.0f);

    // A two-finger tap goes home over 32 ticks of 30 ms.
    log += "500 twofingertap - 0x00 160 120 0 0\n900 wait - 0x00 0 0 0 0\n";
    play(parse(log), 0);
    EXPECT_GT(angleBetween(camera->modelRotation(), start.modelRotation()), 1.0f);
    EXPECT_LT(camera->zoomFactor(), 0.95f);
    log += "1500 wait - 0x00 0 0 0 0\n";
    play(parse(log), 0);
    EXPECT_LT(angleBetween(camera->modelRotation(), start.modelRotation()), 0.01f);
    EXPECT_LT(std::sqrt(camera->modelTranslation().lengthSquared()), 1e-3f * start.sphereRadius());
    EXPECT_NEAR(camera->zoomFactor(), 1.0f, 1e-4f);
}

TEST(EventLogTest, ReadsTheDocumentedLinesAndNamesTheBadOne) {
    const std::vector<std::string> lines = {
        "15 wheel - 0x08 10 20 -120 0",   "20 touchdown left 0x01 5 6 0 0",
        "25 touchmove - 0x01 7 6 0 0",    "30 pan - 0x01 7 6 0 0",
        "35 zoom - 0x00 8 9 -40 0",       "40 rotate - 0x00 8 9 -4500 0",
        "45 twofingertap - 0x00 8 9 0 0", "50 up right 0x00 8 9 0 0"};
    std::string text = "# a session\n\n";
    for (const auto& line : lines)
        text += "  " + line + "\n";
    std::vector<InputEvent> events = parse(text);
    std::string error;
    ASSERT_EQ(events.size(), lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(qrnviewer::EventLog::format(events[i]), lines[i]);
    EXPECT_TRUE(events[1].touch && events[2].touch && !events[7].touch);
    EXPECT_EQ(events[4].kind, InputEvent::ZOOM);
    for (const std::string& bad : std::vector<std::string>{
             "5 down - 0x01 1 2 0 0", "5 drag left 0x01 1 2 0 0", "5 move - 0x01 1 2 0",
             "5 keydown - 0 0 0 0 300", "5 move - 0x01 1 2x 0 0", "1 wait - 0 0 0 0 0",
             "5 touchdown - 0x01 1 2 0 0", "5 pan left 0x01 1 2 0 0",
             std::string("5 move - 0 1\0"
                         "2 2 0 0",
                         20),
             "86400001 wait - 0 0 0 0 0", "1125899906842624 wait - 0 0 0 0 0",
             "5 " + std::string(10000000, 'x') + " - 0 0 0 0 0"}) {
        // Line 2 is at time 3, so that only the bad line's own fault can refuse it.
        std::istringstream in(std::string("# header\n3 move - 0 0 0 0 0\n") + bad + "\n");
        EXPECT_FALSE(qrnviewer::EventLog::parse(in, events, error)) << bad.substr(0, 40);
        EXPECT_NE(error.find("line 3"), std::string::npos) << error.substr(0, 200);
        if (bad != "1 wait - 0 0 0 0 0") {
            EXPECT_EQ(error.find("time goes back"), std::string::npos) << error;
        }
        EXPECT_LT(error.size(), 200u) << "a long field is not echoed whole";
    }
    // Decimal numbers, not octal; an editor's byte-order mark is not part of the time.
    events = parse("\xEF\xBB\xBF"
                   "010 move - 0x10 010 0 0 0\n");
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].time, 10u);
    EXPECT_EQ(events[0].x, 10);
    EXPECT_EQ(events[0].flags, 16u);
}

} // namespace
