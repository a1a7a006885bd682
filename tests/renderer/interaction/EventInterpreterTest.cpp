#include "interaction/CATIAEventInterpreter.h"
#include "interaction/EventInterpreterFactory.h"
#include "interaction/InventorEventInterpreter.h"
#include "interaction/NXEventInterpreter.h"
#include "interaction/ProEEventInterpreter.h"
#include "interaction/QrnEventInterpreter.h"
#include "interaction/SEEventInterpreter.h"
#include "interaction/SWEventInterpreter.h"
#include "qrngl/IManipulator.h"
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
// What one motion step yields; empty when interpret refuses it and the camera does nothing.
using Outcome = std::optional<Op>;

const Op NONE = IEventInterpreter::NONE;
const Op ROTATE = IEventInterpreter::ROTATE;
const Op BOXSELECT = IEventInterpreter::BOXSELECT;
const Op PAN = IEventInterpreter::PAN;
const Op ZOOM = IEventInterpreter::ZOOM;
const Op ZOOMBOX = IEventInterpreter::ZOOMBOX;
const Op NORMALVIEW = IEventInterpreter::NORMALVIEW;
const Op SPIN = IEventInterpreter::SPIN;
const Outcome REFUSED = std::nullopt;

const unsigned int L = qrngl::KEY_LBUTTON;
const unsigned int R = qrngl::KEY_RBUTTON;
const unsigned int M = qrngl::KEY_MBUTTON;
const unsigned int SHIFT = qrngl::KEY_SHIFT;
const unsigned int CTRL = qrngl::KEY_CONTROL;
const unsigned int ALL = IEventInterpreter::ALL_OPERATIONS;

const Op kRequestable[] = {ROTATE, BOXSELECT, PAN, ZOOM, ZOOMBOX, NORMALVIEW, SPIN, NONE};

const int F4 = 0x73;

std::string describe(const Outcome& outcome) {
    if (!outcome)
        return "refused";
    switch (*outcome) {
    case NONE:
        return "NONE";
    case ROTATE:
        return "ROTATE";
    case BOXSELECT:
        return "BOXSELECT";
    case PAN:
        return "PAN";
    case ZOOM:
        return "ZOOM";
    case ZOOMBOX:
        return "ZOOMBOX";
    case NORMALVIEW:
        return "NORMALVIEW";
    case SPIN:
        return "SPIN";
    }
    return std::to_string(static_cast<unsigned int>(*outcome));
}

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
struct Convention {
    const char* name;
    int mouseStyle;
};
const Convention kConventions[COLUMNS] = {{"Qrn", 0}, {"CATIA", 1}, {"ProE", 2},    {"SE", 6},
                                          {"NX", 4},  {"SW", 5},    {"Inventor", 3}};

std::shared_ptr<IEventInterpreter> make(Column column, bool is2D = false) {
    return qrngl::EventInterpreterFactory::create(kConventions[column].mouseStyle, is2D);
}

std::shared_ptr<IEventInterpreter> makeWithMask(Column column, unsigned int mask) {
    auto interpreter = make(column);
    interpreter->setAvailOperations(mask);
    return interpreter;
}

// Holds a key down while it lives: on Windows through the system's input queue, so that
// GetAsyncKeyState sees it; elsewhere reported as the host reports it.
class HeldKey {
public:
    explicit HeldKey(int virtualKey) : m_key(virtualKey) { press(true); }
    ~HeldKey() { press(false); }
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

private:
    void press(bool down) {
#ifdef _WIN32
        INPUT input = {};
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = static_cast<WORD>(m_key);
        input.ki.dwFlags = down ? 0 : KEYEVENTF_KEYUP;
        ::SendInput(1, &input, sizeof input);
#else
        qrnplatform::Input::setKeyDown(m_key, down);
#endif
    }
    int m_key;
};

// The bindings of every convention with a full mask, outside the 2D viewer, whatever the left
// button's requested operation (the left drag itself is checked apart). Every gesture moves by
// the same mostly vertical step, as the right-button zoom wants.
const int kDx = 2, kDy = -7;
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

TEST(EventInterpreter, BindingTableOfEveryConvention) {
    for (int c = 0; c < COLUMNS; ++c) {
        const Column column = static_cast<Column>(c);
        SCOPED_TRACE(kConventions[c].name);
        for (Op requested : kRequestable) {
            SCOPED_TRACE("requested " + describe(requested));
            // Left drag: the requested operation; NONE is no operation to perform.
            const Outcome left = requested == NONE ? REFUSED : Outcome(requested);
            EXPECT_EQ(describe(step(*make(column), L, requested, kDx, kDy)), describe(left));
            for (const Binding& binding : kBindings) {
                // A fresh interpreter each time, so that no gesture sees another's state.
                EXPECT_EQ(describe(step(*make(column), binding.flags, requested, kDx, kDy)),
                          describe(binding.expected[c]))
                    << binding.gesture << " drag";
            }
        }
    }
}

TEST(EventInterpreter, LeftClickWithoutMotionIsNoDrag) {
    for (int c = 0; c < COLUMNS; ++c) {
        SCOPED_TRACE(kConventions[c].name);
        for (Op requested : kRequestable) {
            // Inventor's zoom box is the one left-button operation that needs no motion.
            const Outcome expected = c == INVENTOR && requested == ZOOMBOX ? ZOOMBOX : REFUSED;
            EXPECT_EQ(describe(step(*make(static_cast<Column>(c)), L, requested, 0, 0)),
                      describe(expected))
                << "requested " << describe(requested);
        }
    }
}

TEST(EventInterpreter, RightButtonZoomIsAMostlyVerticalGesture) {
    struct Case {
        unsigned int flags;
        int dx, dy;
        Outcome expected;
    };
    const Case cases[] = {
        {R, 5, 4, REFUSED},
        {R, 4, 4, ZOOM},
        {R, 0, 0, REFUSED},
        {R, -4, 4, ZOOM},
        {R, 4, -5, ZOOM},
        {R, -5, -4, REFUSED},
        {R, 0, -1, ZOOM},
        {R, 1, 0, REFUSED},
        {R | SHIFT, 0, 0, ZOOM},
        {R | SHIFT, 5, 4, REFUSED},
        {R | SHIFT, 4, 4, ZOOM},
        {R | SHIFT, 1, 0, REFUSED},
        // Right and Shift count whatever else is held.
        {R | SHIFT | CTRL, 0, 3, ZOOM},
        // Not a right-only drag, and Shift is not held: nothing.
        {R | CTRL, 0, 3, REFUSED},
    };
    for (int c = 0; c < COLUMNS; ++c) {
        SCOPED_TRACE(kConventions[c].name);
        for (const Case& k : cases) {
            EXPECT_EQ(describe(step(*make(static_cast<Column>(c)), k.flags, ROTATE, k.dx, k.dy)),
                      describe(k.expected))
                << "flags " << k.flags << " dx " << k.dx << " dy " << k.dy;
        }
    }
}

TEST(EventInterpreter, MaskGovernsTheLeftButtonButNotTheRightButtonGestures) {
    for (int c = 0; c < COLUMNS; ++c) {
        const Column column = static_cast<Column>(c);
        SCOPED_TRACE(kConventions[c].name);

        auto noZoom = makeWithMask(column, ALL & ~ZOOM);
        EXPECT_EQ(step(*noZoom, R, ROTATE, 0, 5), ZOOM);
        EXPECT_EQ(step(*noZoom, R | SHIFT, ROTATE, 0, 0), ZOOM);
        EXPECT_EQ(step(*noZoom, L, ZOOM, 0, 5), REFUSED);

        auto noPan = makeWithMask(column, ALL & ~PAN);
        EXPECT_EQ(step(*noPan, L | R, ROTATE, 4, 1), PAN);
        EXPECT_EQ(step(*noPan, L, PAN, 4, 1), REFUSED);
        // Middle + Ctrl pans only with the PAN bit.
        EXPECT_EQ(step(*noPan, M | CTRL, ROTATE, 4, 1), REFUSED);

        auto nothing = makeWithMask(column, 0);
        EXPECT_EQ(step(*nothing, L | R, ROTATE, 4, 1), PAN);
        EXPECT_EQ(step(*nothing, R, ROTATE, 1, 4), ZOOM);
        for (Op requested : kRequestable)
            EXPECT_EQ(step(*nothing, L, requested, 4, 1), REFUSED) << describe(requested);
        for (unsigned int flags : {M, M | CTRL, M | SHIFT, M | R})
            EXPECT_EQ(step(*nothing, flags, ROTATE, 4, 1), REFUSED) << "flags " << flags;
    }
}

TEST(EventInterpreter, OperationIsAvailableOnlyWithEveryBit) {
    auto interpreter = make(QRN);
    EXPECT_EQ(interpreter->getAvailOperations(), 0xFFFFFFFFu);
    struct Case {
        unsigned int mask;
        Op requested;
        Outcome expected;
    };
    const Case cases[] = {
        {0x2, BOXSELECT, REFUSED},
        {0x1, BOXSELECT, REFUSED},
        {0x3, BOXSELECT, BOXSELECT},
        {0x10, NORMALVIEW, REFUSED},
        {0x1, NORMALVIEW, REFUSED},
        {0x11, NORMALVIEW, NORMALVIEW},
        {0x10, ZOOMBOX, ZOOMBOX},
        {0x2, ROTATE, ROTATE},
        {0x20, SPIN, SPIN},
        {0x1F, SPIN, REFUSED},
        {0x4, PAN, PAN},
        {0x8, ZOOM, ZOOM},
        {ALL & ~0x1u, BOXSELECT, REFUSED},
    };
    for (const Case& k : cases) {
        interpreter->setAvailOperations(k.mask);
        EXPECT_EQ(interpreter->getAvailOperations(), k.mask);
        EXPECT_EQ(describe(step(*interpreter, L, k.requested, 2, 5)), describe(k.expected))
            << "mask " << k.mask << " requested " << describe(k.requested);
    }
}

TEST(EventInterpreter, QrnMiddleButtonSpinsWithoutFallingBackToRotate) {
    EXPECT_EQ(step(*make(QRN), M, ROTATE, 0, 0), SPIN) << "no motion test on the middle button";
    EXPECT_EQ(step(*makeWithMask(QRN, ALL & ~SPIN), M, SPIN, 3, 1), ROTATE);
    EXPECT_EQ(step(*makeWithMask(QRN, SPIN), M, ROTATE, 3, 1), SPIN);
    EXPECT_EQ(step(*makeWithMask(QRN, ALL & ~SPIN & ~ROTATE), M, ROTATE, 3, 1), REFUSED);

    auto sheet = make(QRN, true);
    EXPECT_TRUE(sheet->is2D());
    EXPECT_EQ(step(*sheet, M, ROTATE, 3, 1), REFUSED) << "ROTATE is available, SPIN is not used";
    sheet->setAvailOperations(ALL & ~SPIN);
    EXPECT_EQ(step(*sheet, M, ROTATE, 3, 1), REFUSED);
    EXPECT_EQ(step(*sheet, M | CTRL, ROTATE, 3, 1), PAN);
}

TEST(EventInterpreter, DrawingSheetViewerRefusesOnlySomeRotations) {
    for (int c = 0; c < COLUMNS; ++c) {
        const Column column = static_cast<Column>(c);
        SCOPED_TRACE(kConventions[c].name);
        auto sheet = make(column, true);
        EXPECT_EQ(step(*sheet, L, ROTATE, 3, 1), REFUSED);
        EXPECT_EQ(step(*sheet, L, SPIN, 3, 1), REFUSED);
        for (Op requested : {PAN, ZOOM, ZOOMBOX, BOXSELECT, NORMALVIEW})
            EXPECT_EQ(step(*sheet, L, requested, 0, 4), requested) << describe(requested);
        EXPECT_EQ(step(*sheet, L | R, ROTATE, 3, 1), PAN);
        EXPECT_EQ(step(*sheet, R, ROTATE, 1, 3), ZOOM);
    }
    // The CAD-style middle-button rotations are deliberately not refused in 2D.
    for (Column column : {PROE, SE, NX, SW})
        EXPECT_EQ(step(*make(column, true), M, PAN, 3, 1), ROTATE) << kConventions[column].name;
    EXPECT_EQ(step(*make(CATIA, true), M | R, PAN, 3, 1), ROTATE);
    EXPECT_EQ(step(*make(QRN, true), M, PAN, 3, 1), REFUSED);
}

TEST(EventInterpreter, CadMiddleRotationNeedsNoMotionButTheRotateBit) {
    for (Column column : {PROE, SE, NX, SW}) {
        SCOPED_TRACE(kConventions[column].name);
        EXPECT_EQ(step(*make(column), M, PAN, 0, 0), ROTATE);
        // Without the ROTATE bit the library's own rules decide: SPIN.
        EXPECT_EQ(step(*makeWithMask(column, ALL & ~ROTATE), M, PAN, 3, 1), SPIN);
        EXPECT_EQ(step(*makeWithMask(column, ALL & ~ROTATE & ~SPIN), M, PAN, 3, 1), REFUSED);
    }
    // Without the PAN bit the pan modifiers fall through to the library's own rules.
    EXPECT_EQ(step(*makeWithMask(PROE, ALL & ~PAN), M | SHIFT, ROTATE, 3, 1), REFUSED);
    EXPECT_EQ(step(*makeWithMask(NX, ALL & ~PAN), M | R, ROTATE, 3, 1), REFUSED);
    EXPECT_EQ(step(*makeWithMask(SW, ALL & ~PAN), M | CTRL, ROTATE, 3, 1), REFUSED);
    // A pan modifier pans whatever else is held.
    EXPECT_EQ(step(*make(SE), M | SHIFT | L, ROTATE, 3, 1), PAN);
    EXPECT_EQ(step(*make(NX), M | R | SHIFT, ROTATE, 3, 1), PAN);
}

TEST(EventInterpreter, CATIAZoomLatchLastsUntilTheMiddleButtonIsReleased) {
    qrngl::CATIAEventInterpreter catia(false);
    EXPECT_FALSE(catia.isZoomLatched());
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), PAN);

    // Press middle, then right while middle is held.
    EXPECT_FALSE(catia.pre(M, ROTATE, 10, 10));
    EXPECT_TRUE(catia.pre(M | R, ROTATE, 10, 10));
    EXPECT_TRUE(catia.isZoomLatched());
    // Right released (no call); drag with middle alone.
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), ZOOM);
    EXPECT_EQ(step(catia, M, ROTATE, 0, -2), ZOOM);
    EXPECT_EQ(step(catia, M, ROTATE, 4, -4), ZOOM);
    EXPECT_EQ(step(catia, M, ROTATE, 6, 1), REFUSED) << "mostly horizontal";
    EXPECT_EQ(step(catia, M, ROTATE, 0, 0), REFUSED);
    // Another press reports the latch without changing it.
    EXPECT_TRUE(catia.pre(M | L, ROTATE, 10, 10));
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), ZOOM);

    // Releasing the middle button ends it, once.
    EXPECT_TRUE(catia.post(0, ROTATE, 10, 10));
    EXPECT_FALSE(catia.isZoomLatched());
    EXPECT_FALSE(catia.post(0, ROTATE, 10, 10));
    EXPECT_EQ(step(catia, M, ROTATE, 6, 1), PAN);
    EXPECT_EQ(step(catia, M, ROTATE, 0, 0), REFUSED);

    // A drag with both buttons ends it too.
    ASSERT_TRUE(catia.pre(M | R, ROTATE, 10, 10));
    EXPECT_EQ(step(catia, M | R, ROTATE, 6, 1), ROTATE);
    EXPECT_FALSE(catia.isZoomLatched());
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), PAN);

    // Latched without the ZOOM bit: pan; without ZOOM and PAN: the library's own rules.
    ASSERT_TRUE(catia.pre(M | R, ROTATE, 10, 10));
    catia.setAvailOperations(ALL & ~ZOOM);
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), PAN);
    catia.setAvailOperations(ALL & ~ZOOM & ~PAN);
    EXPECT_EQ(step(catia, M, ROTATE, 1, 6), SPIN);
    EXPECT_TRUE(catia.isZoomLatched());
    // Both buttons without the ROTATE bit: the library's own rules refuse, the latch ends.
    catia.setAvailOperations(ALL & ~ROTATE);
    EXPECT_EQ(step(catia, M | R, ROTATE, 6, 1), REFUSED);
    EXPECT_FALSE(catia.isZoomLatched());

    // Only CATIA keeps state at presses and releases.
    for (Column column : {QRN, PROE, SE, NX, SW, INVENTOR}) {
        auto interpreter = make(column);
        EXPECT_FALSE(interpreter->pre(M | R, ROTATE, 1, 1)) << kConventions[column].name;
        EXPECT_FALSE(interpreter->post(M | R, ROTATE, 1, 1)) << kConventions[column].name;
        EXPECT_EQ(step(*interpreter, M, ROTATE, 1, 6), step(*make(column), M, ROTATE, 1, 6));
    }
}

TEST(EventInterpreter, InventorRotatesWithTheLeftButtonWhileF4IsHeld) {
    auto inventor = make(INVENTOR);
    ASSERT_FALSE(qrnplatform::Input::isKeyDown(F4));
    EXPECT_EQ(step(*inventor, L, PAN, 3, 1), PAN);
    {
        HeldKey f4(F4);
        ASSERT_TRUE(qrnplatform::Input::isKeyDown(F4));
        for (Op requested : kRequestable)
            EXPECT_EQ(step(*inventor, L, requested, 3, 1), ROTATE) << describe(requested);
        EXPECT_EQ(step(*inventor, L, static_cast<Op>(1000u), 3, 1), ROTATE);
        EXPECT_EQ(step(*inventor, L, PAN, 0, 0), ROTATE) << "no motion test";
        EXPECT_EQ(step(*inventor, L | R, ROTATE, 3, 1), PAN);
        EXPECT_EQ(step(*inventor, R, ROTATE, 1, 3), ZOOM);
        EXPECT_EQ(step(*inventor, M, ROTATE, 3, 1), PAN) << "the middle button comes first";
        EXPECT_EQ(step(*make(INVENTOR, true), L, PAN, 3, 1), ROTATE) << "no 2D test";
        // Without the ROTATE bit the library's own rules decide.
        auto noRotate = makeWithMask(INVENTOR, ALL & ~ROTATE);
        EXPECT_EQ(step(*noRotate, L, PAN, 3, 1), PAN);
        EXPECT_EQ(step(*noRotate, L, ROTATE, 3, 1), REFUSED);
        // F4 replaces the zoom box rule.
        EXPECT_EQ(step(*inventor, L, ZOOMBOX, 0, 0), ROTATE);
        // Other conventions ignore F4.
        EXPECT_EQ(step(*make(QRN), L, PAN, 3, 1), PAN);
        EXPECT_EQ(step(*make(CATIA), L, ZOOMBOX, 0, 0), REFUSED);
    }
    // Read at every step, not remembered.
    EXPECT_FALSE(qrnplatform::Input::isKeyDown(F4));
    EXPECT_EQ(step(*inventor, L, PAN, 3, 1), PAN);
    EXPECT_EQ(step(*inventor, L, ROTATE, 0, 0), REFUSED);

    // The zoom box starts without motion, only for the left button alone and with its bits.
    EXPECT_EQ(step(*inventor, L, ZOOMBOX, 0, 0), ZOOMBOX);
    EXPECT_EQ(step(*inventor, L | SHIFT, ZOOMBOX, 0, 0), REFUSED);
    EXPECT_EQ(step(*makeWithMask(INVENTOR, ALL & ~ZOOMBOX), L, ZOOMBOX, 0, 0), REFUSED);
    EXPECT_EQ(step(*make(QRN), L, ZOOMBOX, 0, 0), REFUSED);
    // The middle button alone pans only with the PAN bit; else the library's own rules.
    EXPECT_EQ(step(*makeWithMask(INVENTOR, ALL & ~PAN), M, ROTATE, 3, 1), SPIN);
}

TEST(EventInterpreter, FactoryMakesTheInterpreterOfTheMouseStyle) {
    struct Case {
        int mouseStyle;
        const std::type_info& type;
    };
    const Case cases[] = {
        {0, typeid(qrngl::QrnEventInterpreter)},
        {1, typeid(qrngl::CATIAEventInterpreter)},
        {2, typeid(qrngl::ProEEventInterpreter)},
        {3, typeid(qrngl::InventorEventInterpreter)},
        {4, typeid(qrngl::NXEventInterpreter)},
        {5, typeid(qrngl::SWEventInterpreter)},
        {6, typeid(qrngl::SEEventInterpreter)},
        {7, typeid(qrngl::QrnEventInterpreter)},
        {-1, typeid(qrngl::QrnEventInterpreter)},
        {INT_MAX, typeid(qrngl::QrnEventInterpreter)},
        {INT_MIN, typeid(qrngl::QrnEventInterpreter)},
    };
    for (const Case& k : cases) {
        for (bool is2D : {false, true}) {
            auto interpreter = qrngl::EventInterpreterFactory::create(k.mouseStyle, is2D);
            ASSERT_NE(interpreter, nullptr) << k.mouseStyle;
            const IEventInterpreter& made = *interpreter;
            EXPECT_TRUE(typeid(made) == k.type) << k.mouseStyle << ": " << typeid(made).name();
            EXPECT_EQ(interpreter->is2D(), is2D);
            EXPECT_EQ(interpreter->getAvailOperations(), 0xFFFFFFFFu);
        }
    }
    // Unknown styles behave as the library's own: the middle button spins.
    for (int style : {7, -1})
        EXPECT_EQ(step(*qrngl::EventInterpreterFactory::create(style, false), M, ROTATE, 3, 1),
                  SPIN)
            << style;
}

} // namespace
