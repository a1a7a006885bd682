// The viewer's manipulator chain: events go from the lowest order() to the highest, and what a
// tool consumes the tools after it leave alone.
#include "ManipulatorTestSupport.h"
#include "qrngl/interaction/GestureManipulator.h"
#include "qrnviewer/EventRouter.h"

#include <algorithm>
#include <vector>

namespace {

using qrngl::CHANGED;
using qrngl::FrameStatus;
using qrngl::UNCHANGED;
using qrnviewer::InputEvent;
using IE = qrngl::IEventInterpreter;
using Statuses = std::vector<FrameStatus>;

const unsigned int kVkLeft = 37;

// A tool at a given place in the chain that notes the status each press and release brings
// and, when told to, takes every press and key.
class Probe : public qrngl::IManipulator {
public:
    struct Call {
        short order;
        InputEvent::Kind kind;
        FrameStatus status;
    };
    Probe(short order, std::vector<Call>& calls, bool takes)
        : IManipulator(nullptr), m_order(order), m_calls(calls), m_takes(takes) {}

    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, qrngl::MouseButton button,
                                int x, int y) override {
        m_calls.push_back({m_order, InputEvent::BUTTON_DOWN, status});
        return m_takes ? CHANGED : IManipulator::mouseButtonDown(status, flags, button, x, y);
    }
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, qrngl::MouseButton button,
                              int x, int y) override {
        m_calls.push_back({m_order, InputEvent::BUTTON_UP, status});
        return IManipulator::mouseButtonUp(status, flags, button, x, y);
    }
    FrameStatus keyDown(FrameStatus status, unsigned int key, unsigned int count,
                        unsigned int keyFlags) override {
        return m_takes ? CHANGED : IManipulator::keyDown(status, key, count, keyFlags);
    }
    short order() const override { return m_order; }

private:
    short m_order;
    std::vector<Call>& m_calls;
    bool m_takes;
};

class ManipulatorChainTest : public qrntest::ManipulatorTest {
protected:
    void SetUp() override {
        ManipulatorTest::SetUp();
        router = std::make_unique<qrnviewer::EventRouter>(frame->document, nullptr, nullptr);
        router->setOperation(IE::ROTATE);
    }
    void TearDown() override {
        router.reset();
        ManipulatorTest::TearDown();
    }
    std::shared_ptr<Probe> add(short order, bool takes = false) {
        auto probe = std::make_shared<Probe>(order, calls, takes);
        renderer->addManipulator(probe);
        return probe;
    }
    void send(InputEvent::Kind kind, unsigned int flags, int x, int y, unsigned int key = 0) {
        InputEvent e;
        e.kind = kind, e.button = button, e.flags = flags, e.x = x, e.y = y, e.key = key;
        e.touch = touch;
        router->route(e);
    }
    // Press at (100, 100), three steps of dx to the right, release; dx 0 is a click.
    void drag(int dx) {
        const unsigned int held = button == qrngl::MIDDLE ? qrngl::KEY_MBUTTON : qrngl::KEY_LBUTTON;
        send(InputEvent::BUTTON_DOWN, held, 100, 100);
        for (int i = 1; i <= 3; ++i)
            send(InputEvent::MOTION, held, 100 + i * dx, 100);
        send(InputEvent::BUTTON_UP, 0, 100 + 3 * dx, 100);
    }
    Statuses seenBy(short order, InputEvent::Kind kind) const {
        Statuses seen;
        for (const auto& c : calls)
            if (c.order == order && c.kind == kind)
                seen.push_back(c.status);
        return seen;
    }
    bool cameraIs(const qrngl::Camera& c) const {
        return camera->modelRotation() == c.modelRotation() &&
               camera->modelTranslation() == c.modelTranslation() &&
               camera->zoomFactor() == c.zoomFactor();
    }

    std::vector<Probe::Call> calls;
    std::unique_ptr<qrnviewer::EventRouter> router;
    qrngl::MouseButton button = qrngl::LEFT;
    bool touch = false;
};

TEST_F(ManipulatorChainTest, EventsGoFromTheLowestOrderToTheHighest) {
    for (short order : {1000, 200, 801, 600})
        add(order);
    send(InputEvent::BUTTON_DOWN, qrngl::KEY_LBUTTON, 10, 10);
    std::vector<short> orders;
    for (const auto& c : calls)
        orders.push_back(c.order);
    EXPECT_EQ(orders, (std::vector<short>{200, 600, 801, 1000}));

    // The gesture manipulator takes its turn just before the camera.
    const auto& chain = renderer->manipulators;
    const auto gesture = std::find_if(chain.begin(), chain.end(), [](const auto& m) {
        return std::dynamic_pointer_cast<qrngl::GestureManipulator>(m) != nullptr;
    });
    ASSERT_TRUE(gesture != chain.end() && gesture + 1 != chain.end());
    EXPECT_EQ(gesture[1], router->cameraManipulator());
    // What a tool does not handle passes the status on.
    for (FrameStatus s : {UNCHANGED, CHANGED})
        EXPECT_EQ(Probe(1, calls, false).mouseButtonDblClk(s, 0, qrngl::LEFT, 1, 1), s);
}

TEST_F(ManipulatorChainTest, WhatAToolBeforeTheCameraTakesMovesNothing) {
    add(1000);
    const qrngl::Camera start = *camera;
    for (short order : {200, 600}) {
        auto taker = add(order, true);
        // A rubber band would zoom at a release that the camera takes for its own.
        for (IE::Operation operation : {IE::ROTATE, IE::ZOOMBOX}) {
            router->setOperation(operation);
            drag(30);
        }
        button = qrngl::MIDDLE, drag(30), button = qrngl::LEFT; // the middle button turns
        touch = true, drag(-30), touch = false; // not back to where the last drag ended
        // The camera and the host leave a taken key alone: no turn, no new operation.
        for (unsigned int key : {kVkLeft, static_cast<unsigned int>('P')}) {
            send(InputEvent::KEY_DOWN, 0, 0, 0, key);
            send(InputEvent::KEY_UP, 0, 0, 0, key);
        }
        EXPECT_TRUE(cameraIs(start)) << order;
        EXPECT_EQ(router->cameraManipulator()->getOperation(), IE::ZOOMBOX);
        EXPECT_EQ(seenBy(1000, InputEvent::BUTTON_DOWN), Statuses(4, CHANGED)) << order;
        renderer->removeManipulator(taker);
        calls.clear();
    }
    EXPECT_FALSE(router->frame()->getUndoStack()->canUndo());
}

TEST_F(ManipulatorChainTest, ADragThatMovedTheViewIsNoClickForTheToolsAfterIt) {
    add(1000);
    qrngl::Camera before = *camera;
    drag(30);
    EXPECT_FALSE(cameraIs(before));
    drag(0);
    button = qrngl::MIDDLE; // turns
    before = *camera;
    drag(30);
    EXPECT_FALSE(cameraIs(before));
    button = qrngl::LEFT;
    touch = true; // the gesture manipulator turns
    before = *camera;
    drag(30);
    EXPECT_FALSE(cameraIs(before));
    EXPECT_EQ(seenBy(1000, InputEvent::BUTTON_DOWN), Statuses(4, UNCHANGED));
    EXPECT_EQ(seenBy(1000, InputEvent::BUTTON_UP),
              (Statuses{CHANGED, UNCHANGED, CHANGED, CHANGED}));
}

} // namespace

namespace {

// A tool whose press runs out of memory.
class Failing : public qrngl::IManipulator {
public:
    Failing() : IManipulator(nullptr) {}
    FrameStatus mouseButtonDown(FrameStatus, unsigned int, qrngl::MouseButton, int, int) override {
        throw std::bad_alloc();
    }
    short order() const override { return 300; }
};

TEST_F(ManipulatorChainTest, AToolThatFailsLosesItsEventNotTheViewer) {
    std::vector<std::string> said;
    router->setMessageSink([&](const std::string& text) { said.push_back(text); });
    auto failing = std::make_shared<Failing>();
    renderer->addManipulator(failing);
    EXPECT_NO_THROW(send(InputEvent::BUTTON_DOWN, qrngl::KEY_LBUTTON, 100, 100));
    ASSERT_FALSE(said.empty());
    EXPECT_NE(said.back().find("an input event failed and was dropped"), std::string::npos)
        << said.back();
    renderer->removeManipulator(failing);
    // A box selection released far outside the window selects what the window holds.
    router->setOperation(IE::BOXSELECT);
    EXPECT_NO_THROW(drag(40000));
}

} // namespace
