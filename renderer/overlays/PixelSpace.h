#pragma once

// Not part of the library's interface: the overlays' way of drawing in window pixels.

namespace qrngl {

// While it lives, drawing is in window pixels (one unit a pixel, origin at the viewport's
// lower-left corner) over the scene whatever its depth, blended by alpha: both matrices pushed,
// depth testing off, blending on. When it goes, depth testing is on and blending off (the
// frame's own state, whatever it was before), both matrices are popped and the model-view
// matrix is the current one; a clip plane that was on is on again.
class PixelSpace {
public:
    PixelSpace();
    ~PixelSpace();
    PixelSpace(const PixelSpace&) = delete;
    PixelSpace& operator=(const PixelSpace&) = delete;

private:
    bool m_clipped = false;
};

} // namespace qrngl
