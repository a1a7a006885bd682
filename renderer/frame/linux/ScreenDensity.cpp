#include "qrngl/frame/ScreenDensity.h"

#include "qrngl/frame/linux/Glx.h"

namespace qrngl {

float ScreenDensity::current() {
    Display* display = GlxApi::get().currentDisplay();
    if (!display)
        return 96.0f;
    const int screen = DefaultScreen(display);
    const int millimetres = DisplayHeightMM(display, screen);
    if (millimetres <= 0)
        return 96.0f;
    return static_cast<float>(DisplayHeight(display, screen)) * 25.4f /
           static_cast<float>(millimetres);
}

} // namespace qrngl
