#include "qrngl/IManipulator.h"
#include "qrngl/interaction/CATIAEventInterpreter.h"
#include "qrngl/interaction/EventInterpreterFactory.h"
#include "qrngl/interaction/InventorEventInterpreter.h"
#include "qrngl/interaction/NXEventInterpreter.h"
#include "qrngl/interaction/ProEEventInterpreter.h"
#include "qrngl/interaction/QrnEventInterpreter.h"
#include "qrngl/interaction/SEEventInterpreter.h"
#include "qrngl/interaction/SWEventInterpreter.h"
#include "qrnplatform/Input.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

using qrngl::IEventInterpreter;
using Op = IEventInterpreter::Operation;
// What one motion step yields; empty when interpret refuses it.
using Outcome = std::optional<Op>;

const Op NONE = IEventInterpreter::NONE, ROTATE = IEventInterpreter::ROTATE,
         BOXSELECT = IEventInterpreter::BOXSELECT, PAN = IEventInterpreter::PAN,
         ZOOM = IEventInterpreter::ZOOM, ZOOMBOX = IEventInterpreter::ZOOMBOX,
         NORMALVIEW = IEventInterpreter::NORMALVIEW, SPIN = IEventInterpreter::SPIN;
const Outcome REFUSED = std::nullopt;
const unsigned int L = qrngl::KEY_LBUTTON, R = qrngl::KEY_RBUTTON, M = qrngl::KEY_MBUTTON,
                   SHIFT = qrngl::KEY_SHIFT, CTRL = qrngl::KEY_CONTROL,
                   ALL = IEventInterpreter::ALL_OPERATIONS;
const Op kRequestable[] = {ROTATE, BOXSELECT, PAN, ZOOM, ZOOMBOX, NORMALVIEW, SPIN, NONE};
const int F4 = 0x73;

// One motion step. A refusal must leave the result as the caller had it.
Outcome step(IEventInterpreter& interpreter, unsigned int flags, Op requested, int dx, int dy) {
    const Op untouched = static_cast<Op>(0xBADu);
    Op result = untouched;
    if (interpreter.interpret(flags, requested, dx, dy, result))
        return result;
    EXPECT_EQ(result, untouched) << "a refused step changed the result";
    return REFUSED;
}

// The conventions in the order of the table columns, with their mouse styles.
enum Column { QRN, CATIA, PROE, SE, NX, SW, INVENTOR, COLUMNS };
const char* const kNames[COLUMNS] = {"Qrn", "CATIA", "ProE", "SE", "NX", "SW", "Inventor"};
const int kStyles[COLUMNS] = {0, 1, 2, 6, 4, 5, 3};

std::shared_ptr<IEventInterpreter> make(int column, bool is2D = false, unsigned int mask = ALL) {
    auto interpreter = qrngl::EventInterpreterFactory::create(kStyles[column], is2D);
    interpreter->setAvailOperations(mask);
    return interpreter;
}
Outcome fresh(int column, unsigned int flags, Op requested, int dx, int dy) {
    return step(*make(column), flags, requested, dx, dy);
}

// Holds a key down while it lives (on Windows through the input queue, for GetAsyncKeyState).
struct HeldKey {
    explicit HeldKey(int key) : key(key) { press(true); }
    ~HeldKey() { press(false); }
    void press(bool down) {
#ifdef _WIN32
        INPUT input = {};
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = static_cast<WORD>(key);
        input.ki.dwFlags = down ? 0 : KEYEVENTF_KEYUP;
        ::SendInput(1, &input, sizeof input);
#else
        qrnplatform::Input::setKeyDown(key, down);
#endif
    }
    int key;
};

struct Binding {
    const char* gesture;
    unsigned int flags;
    Outcome expected[COLUMNS];
};

// clang-format off
const Binding kBindings[] = {
//   gesture           flags       Qrn      CATIA    ProE     SE       NX       SW       Inventor
    {"middle",         M,         {SPIN,    PAN,     ROTATE,  ROTATE,  ROTATE,  ROTATE,  PAN}},
    {"middle + Ctrl",  M | CTRL,  {PAN,     PAN,     PAN,     PAN,     PAN,     PAN,     PAN}},
    {"middle + Shift", M | SHIFT, {REFUSED, REFUSED, PAN,     PAN,     REFUSED, REFUSED, REFUSED}},
    {"middle + right", M | R,     {REFUSED, ROTATE,  REFUSED, REFUSED, PAN,     REFUSED, REFUSED}},
    {"left + right",   L | R,     {PAN,     PAN,     PAN,     PAN,     PAN,     PAN,     PAN}},
    {"right",          R,         {ZOOM,    ZOOM,    ZOOM,    ZOOM,    ZOOM,    ZOOM,    ZOOM}},
    {"right + Shift",  R | SHIFT, {ZOOM,    ZOOM,    ZOOM,    ZOOM,    ZOOM,    ZOOM,    ZOOM}},
};
// clang-format on

// Every convention with a full mask in 3D, a fresh interpreter per gesture.
TEST(EventInterpreter, BindingTableOfEveryConvention) {
    for (int c = 0; c < COLUMNS; ++c) {
        SCOPED_TRACE(kNames[c]);
        for (Op requested : kRequestable) {
            SCOPED_TRACE(testing::Message() << "requested " << requested);
            // Left drag: the requested operation; NONE is none to perform.
            EXPECT_EQ(fresh(c, L, requested, 2, -7),
                      requested == NONE ? REFUSED : Outcome(requested));
            // A left click without motion is no drag, but for Inventor's zoom box.
            EXPECT_EQ(fresh(c, L, requested, 0, 0),
                      c == INVENTOR && requested == ZOOMBOX ? ZOOMBOX : REFUSED);
            for (const Binding& b : kBindings)
                EXPECT_EQ(fresh(c, b.flags, requested, 2, -7), b.expected[c]) << b.gesture;
        }
    }
}

TEST(EventInterpreter, RightButtonZoomIsAMostlyVerticalGestureAndIgnoresTheMask) {
    struct Case {
        unsigned int flags;
        int dx, dy;
        Outcome expected;
    };
    // clang-format off
    const Case cases[] = {
        {R, 5, 4, REFUSED}, {R, 4, 4, ZOOM}, {R, 0, 0, REFUSED}, {R, -5, -4, REFUSED},
        {R, 4, -5, ZOOM}, {R | SHIFT, 0, 0, ZOOM}, {R | SHIFT, 5, 4, REFUSED},
        {R | SHIFT | CTRL, 0, 3, ZOOM}, {R | CTRL, 0, 3, REFUSED}};
    // clang-format on
    for (int c = 0; c < COLUMNS; ++c) {
        SCOPED_TRACE(kNames[c]);
        for (const Case& k : cases)
            EXPECT_EQ(fresh(c, k.flags, ROTATE, k.dx, k.dy), k.expected)
                << "flags " << k.flags << " dx " << k.dx << " dy " << k.dy;
        // The mask governs the left button, not the right-button gestures.
        auto noZoom = make(c, false, ALL & ~ZOOM);
        EXPECT_EQ(step(*noZoom, R, ROTATE, 0, 5), ZOOM);
        EXPECT_EQ(step(*noZoom, R | SHIFT, ROTATE, 0, 0), ZOOM);
        EXPECT_EQ(step(*noZoom, L, ZOOM, 0, 5), REFUSED);
        auto noPan = make(c, false, ALL & ~PAN);
        EXPECT_EQ(step(*noPan, L | R, ROTATE, 4, 1), PAN);
        EXPECT_EQ(step(*noPan, L, PAN, 4, 1), REFUSED);
        EXPECT_EQ(step(*noPan, M | CTRL, ROTATE, 4, 1), REFUSED);
        auto nothing = make(c, false, 0);
        EXPECT_EQ(step(*nothing, L | R, ROTATE, 4, 1), PAN);
        EXPECT_EQ(step(*nothing, R, ROTATE, 1, 4), ZOOM);
        for (Op requested : kRequestable)
            EXPECT_EQ(step(*nothing, L, requested, 4, 1), REFUSED) << requested;
        for (unsigned int flags : {M, M | CTRL, M | SHIFT, M | R})
            EXPECT_EQ(step(*nothing, flags, ROTATE, 4, 1), REFUSED) << "flags " << flags;
    }
}

TEST(EventInterpreter, OperationIsAvailableOnlyWithEveryBit) {
    auto interpreter = make(QRN);
    EXPECT_EQ(qrngl::EventInterpreterFactory::create(0, false)->getAvailOperations(), 0xFFFFFFFFu);
    struct Case {
        unsigned int mask;
        Op requested;
        Outcome expected;
    };
    // clang-format off
    const Case cases[] = {
        {0x2, BOXSELECT, REFUSED}, {0x1, BOXSELECT, REFUSED}, {0x3, BOXSELECT, BOXSELECT},
        {0x10, NORMALVIEW, REFUSED}, {0x11, NORMALVIEW, NORMALVIEW}, {0x10, ZOOMBOX, ZOOMBOX},
        {0x2, ROTATE, ROTATE}, {0x1F, SPIN, REFUSED}, {0x20, SPIN, SPIN}, {0x4, PAN, PAN},
        {0x8, ZOOM, ZOOM}};
    // clang-format on
    for (const Case& k : cases) {
        interpreter->setAvailOperations(k.mask);
        EXPECT_EQ(interpreter->getAvailOperations(), k.mask);
        EXPECT_EQ(step(*interpreter, L, k.requested, 2, 5), k.expected)
            << "mask " << k.mask << " requested " << k.requested;
    }
}

TEST(EventInterpreter, MiddleButtonRulesIn3DAnd2D) {
    // Qrn spins without a motion test, and never falls back to ROTATE in 2D.
    EXPECT_EQ(fresh(QRN, M, ROTATE, 0, 0), SPIN);
    EXPECT_EQ(step(*make(QRN, false, ALL & ~SPIN), M, SPIN, 3, 1), ROTATE);
    EXPECT_EQ(step(*make(QRN, false, ALL & ~SPIN & ~ROTATE), M, ROTATE, 3, 1), REFUSED);
    auto sheet = make(QRN, true);
    EXPECT_TRUE(sheet->is2D());
    EXPECT_EQ(step(*sheet, M, ROTATE, 3, 1), REFUSED);
    EXPECT_EQ(step(*sheet, M | CTRL, ROTATE, 3, 1), PAN);

    // The 2D viewer refuses left-button rotations only.
    for (int c = 0; c < COLUMNS; ++c) {
        SCOPED_TRACE(kNames[c]);
        auto flat = make(c, true);
        EXPECT_EQ(step(*flat, L, ROTATE, 3, 1), REFUSED);
        EXPECT_EQ(step(*flat, L, SPIN, 3, 1), REFUSED);
        for (Op requested : {PAN, ZOOM, ZOOMBOX, BOXSELECT, NORMALVIEW})
            EXPECT_EQ(step(*flat, L, requested, 0, 4), requested) << requested;
    }
    // The CAD middle-button rotations need no motion, are not refused in 2D, and without the
    // ROTATE bit fall to the library's own rules.
    for (Column c : {PROE, SE, NX, SW}) {
        SCOPED_TRACE(kNames[c]);
        EXPECT_EQ(fresh(c, M, PAN, 0, 0), ROTATE);
        EXPECT_EQ(step(*make(c, true), M, PAN, 3, 1), ROTATE);
        EXPECT_EQ(step(*make(c, false, ALL & ~ROTATE), M, PAN, 3, 1), SPIN);
        EXPECT_EQ(step(*make(c, false, ALL & ~ROTATE & ~SPIN), M, PAN, 3, 1), REFUSED);
    }
    EXPECT_EQ(step(*make(CATIA, true), M | R, PAN, 3, 1), ROTATE);
    // Without PAN the pan modifiers fall through; with it they pan whatever else is held.
    EXPECT_EQ(step(*make(PROE, false, ALL & ~PAN), M | SHIFT, ROTATE, 3, 1), REFUSED);
    EXPECT_EQ(step(*make(NX, false, ALL & ~PAN), M | R, ROTATE, 3, 1), REFUSED);
    EXPECT_EQ(fresh(SE, M | SHIFT | L, ROTATE, 3, 1), PAN);
    EXPECT_EQ(fresh(NX, M | R | SHIFT, ROTATE, 3, 1), PAN);
    EXPECT_EQ(step(*make(INVENTOR, false, ALL & ~PAN), M, ROTATE, 3, 1), SPIN);
}

TEST(EventInterpreter, CATIAZoomLatchLastsUntilTheMiddleButtonIsReleased) {
    qrngl::CATIAEventInterpreter catia(false);
    EXPECT_FALSE(catia.isZoomLatched());
    // Middle pressed, then right while it is held.
    EXPECT_FALSE(catia.pre(M, ROTATE, 10, 10));
    EXPECT_TRUE(catia.pre(M | R, ROTATE, 10, 10));
    EXPECT_TRUE(catia.isZoomLatched());
    // Right released; middle alone zooms on mostly vertical motion.
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), ZOOM);
    EXPECT_EQ(step(catia, M, ROTATE, 4, -4), ZOOM);
    EXPECT_EQ(step(catia, M, ROTATE, 6, 1), REFUSED);
    EXPECT_EQ(step(catia, M, ROTATE, 0, 0), REFUSED);
    // Another press reports the latch without changing it.
    EXPECT_TRUE(catia.pre(M | L, ROTATE, 10, 10));
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), ZOOM);
    // Releasing the middle button ends it, once.
    EXPECT_TRUE(catia.post(0, ROTATE, 10, 10));
    EXPECT_FALSE(catia.isZoomLatched());
    EXPECT_FALSE(catia.post(0, ROTATE, 10, 10));
    EXPECT_EQ(step(catia, M, ROTATE, 6, 1), PAN);

    // A drag with both buttons ends it too.
    ASSERT_TRUE(catia.pre(M | R, ROTATE, 10, 10));
    EXPECT_EQ(step(catia, M | R, ROTATE, 6, 1), ROTATE);
    EXPECT_FALSE(catia.isZoomLatched());

    // Latched without ZOOM: pan; without ZOOM and PAN: the library's own rules.
    ASSERT_TRUE(catia.pre(M | R, ROTATE, 10, 10));
    catia.setAvailOperations(ALL & ~ZOOM);
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), PAN);
    catia.setAvailOperations(ALL & ~ZOOM & ~PAN);
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), SPIN);
    catia.setAvailOperations(ALL & ~ROTATE);
    EXPECT_EQ(step(catia, M | R, ROTATE, 6, 1), REFUSED);
    EXPECT_FALSE(catia.isZoomLatched());

    // Only CATIA keeps state at presses and releases.
    for (Column c : {QRN, PROE, SE, NX, SW, INVENTOR}) {
        auto interpreter = make(c);
        EXPECT_FALSE(interpreter->pre(M | R, ROTATE, 1, 1)) << kNames[c];
        EXPECT_FALSE(interpreter->post(M | R, ROTATE, 1, 1)) << kNames[c];
        EXPECT_EQ(step(*interpreter, M, ROTATE, 1, 6), fresh(c, M, ROTATE, 1, 6));
    }
}

TEST(EventInterpreter, InventorRotatesWithTheLeftButtonWhileF4IsHeld) {
    auto inventor = make(INVENTOR);
    ASSERT_FALSE(qrnplatform::Input::isKeyDown(F4));
    {
        HeldKey f4(F4);
        ASSERT_TRUE(qrnplatform::Input::isKeyDown(F4));
        for (Op requested : kRequestable)
            EXPECT_EQ(step(*inventor, L, requested, 3, 1), ROTATE) << requested;
        EXPECT_EQ(step(*inventor, L, PAN, 0, 0), ROTATE) << "no motion test";
        EXPECT_EQ(step(*inventor, L, ZOOMBOX, 0, 0), ROTATE) << "replaces the zoom box rule";
        EXPECT_EQ(step(*inventor, M, ROTATE, 3, 1), PAN) << "the middle button comes first";
        EXPECT_EQ(step(*inventor, L | R, ROTATE, 3, 1), PAN) << "left and right pan";
        EXPECT_EQ(step(*make(INVENTOR, true), L, PAN, 3, 1), ROTATE) << "no 2D test";
        EXPECT_EQ(step(*make(INVENTOR, false, ALL & ~ROTATE), L, PAN, 3, 1), PAN);
        EXPECT_EQ(fresh(QRN, L, PAN, 3, 1), PAN) << "other conventions ignore F4";
    }
    // Read at every step, not remembered.
    EXPECT_EQ(step(*inventor, L, PAN, 3, 1), PAN);
    EXPECT_EQ(step(*inventor, L, ZOOMBOX, 0, 0), ZOOMBOX);
    // The zoom box starts without motion only for the left button alone and with its bits.
    EXPECT_EQ(step(*inventor, L | SHIFT, ZOOMBOX, 0, 0), REFUSED);
    EXPECT_EQ(step(*make(INVENTOR, false, ALL & ~ZOOMBOX), L, ZOOMBOX, 0, 0), REFUSED);
}

TEST(EventInterpreter, FactoryMakesTheInterpreterOfTheMouseStyle) {
    const std::pair<int, const std::type_info*> cases[] = {
        {0, &typeid(qrngl::QrnEventInterpreter)},  {1, &typeid(qrngl::CATIAEventInterpreter)},
        {2, &typeid(qrngl::ProEEventInterpreter)}, {3, &typeid(qrngl::InventorEventInterpreter)},
        {4, &typeid(qrngl::NXEventInterpreter)},   {5, &typeid(qrngl::SWEventInterpreter)},
        {6, &typeid(qrngl::SEEventInterpreter)},   {7, &typeid(qrngl::QrnEventInterpreter)},
        {-1, &typeid(qrngl::QrnEventInterpreter)}, {INT_MIN, &typeid(qrngl::QrnEventInterpreter)}};
    for (const auto& k : cases) {
        for (bool is2D : {false, true}) {
            auto interpreter = qrngl::EventInterpreterFactory::create(k.first, is2D);
            ASSERT_NE(interpreter, nullptr) << k.first;
            const IEventInterpreter& made = *interpreter;
            EXPECT_TRUE(typeid(made) == *k.second) << k.first << ": " << typeid(made).name();
            EXPECT_EQ(interpreter->is2D(), is2D);
        }
    }
    // Unknown styles behave as the library's own: the middle button spins.
    for (int style : {7, -1})
        EXPECT_EQ(step(*qrngl::EventInterpreterFactory::create(style, false), M, ROTATE, 3, 1),
                  SPIN)
            << style;
}

} // namespace
