#include "qrngl/frame/ScreenDensity.h"

#include <windows.h>

namespace qrngl {

float ScreenDensity::current() {
    HDC screen = GetDC(nullptr);
    if (!screen)
        return 96.0f;
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? static_cast<float>(dpi) : 96.0f;
}

} // namespace qrngl
