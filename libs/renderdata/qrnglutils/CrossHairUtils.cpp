#include "qrnglutils/CrossHairUtils.h"

#include "qrngl/GL.h"

namespace qrnglutils {

void CrossHairUtils::createCrossHair(int x, int y, qrnsg::Polyline& polyline, int viewportHeight) {
    // Lower-left origin: window row y is row h - 1 - y, its centre line half a pixel up.
    const float px = static_cast<float>(x);
    const float py = static_cast<float>(viewportHeight - 1) - static_cast<float>(y);
    const float cx = px + 0.5f;
    const float cy = py + 0.5f;
    const float gap = static_cast<float>(GAP);
    const float arm = static_cast<float>(ARM);
    polyline = qrnsg::Polyline();
    // Every arm runs left to right or bottom to top: rasterisers differ on whether a line
    // ending exactly on a pixel edge draws that pixel, and one direction keeps the arms alike.
    polyline.addStrip({{px - arm, cy, 0.0f}, {px - gap + 1.0f, cy, 0.0f}});
    polyline.addStrip({{px + gap, cy, 0.0f}, {px + arm + 1.0f, cy, 0.0f}});
    polyline.addStrip({{cx, py - arm, 0.0f}, {cx, py - gap + 1.0f, 0.0f}});
    polyline.addStrip({{cx, py + gap, 0.0f}, {cx, py + arm + 1.0f, 0.0f}});
}

void CrossHairUtils::createCrossHair(int x, int y, qrnsg::Polyline& polyline) {
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);
    createCrossHair(x, y, polyline, viewport[3]);
}

} // namespace qrnglutils
