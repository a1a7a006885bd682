#pragma once

// The pixel density labels are sized for; not part of the library's interface.

namespace qrngl {

class ScreenDensity {
public:
    // Dots per inch of the screen the current context draws on; 96 without one (headless).
    static float current();
};

} // namespace qrngl
