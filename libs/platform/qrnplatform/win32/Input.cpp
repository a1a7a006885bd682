#include "qrnplatform/Input.h"

#include <windows.h>

namespace qrnplatform {

namespace {
// The signature the system puts into the extra information of mouse messages it makes from
// pen and touch input. Every bit of it must be set; the test masks with the signature itself.
const ULONG_PTR kTouchSignature = 0xFF515700;
} // namespace

bool Input::isKeyDown(int virtualKey) {
    return ::GetAsyncKeyState(virtualKey) != 0;
}

bool Input::isTouchMessage() {
    const ULONG_PTR info = static_cast<ULONG_PTR>(::GetMessageExtraInfo());
    return (info & kTouchSignature) == kTouchSignature;
}

void Input::setKeyDown(int, bool) {}

void Input::setTouchMessage(bool) {}

} // namespace qrnplatform
