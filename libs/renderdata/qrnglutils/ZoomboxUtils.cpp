#include "qrnglutils/ZoomboxUtils.h"

#include "qrngl/GL.h"

#include <algorithm>

namespace qrnglutils {

void ZoomboxUtils::createGeometry(int x0, int y0, int x1, int y1, qrnsg::Mesh& mesh,
                                  qrnsg::Polyline& polyline, int viewportHeight) {
    // Pixel edges around the box; window row y is row h - 1 - y with the origin at the bottom.
    const float l = static_cast<float>(std::min(x0, x1));
    const float r = static_cast<float>(std::max(x0, x1) + 1);
    const float b = static_cast<float>(viewportHeight - 1 - std::max(y0, y1));
    const float t = static_cast<float>(viewportHeight - std::min(y0, y1));

    mesh = qrnsg::Mesh();
    mesh.vertices = {{l, b, 0.0f}, {r, b, 0.0f}, {r, t, 0.0f}, {l, t, 0.0f}};
    mesh.normals.assign(4, qrnmath::Vec3(0.0f, 0.0f, 1.0f));
    mesh.indices = {0, 1, 2, 0, 2, 3}; // counter-clockwise seen from +z

    // Left to right and bottom to top, like the cross-hair's arms, so that all four sides
    // meet the same end rule of the rasteriser.
    polyline = qrnsg::Polyline();
    polyline.addStrip({{l, b + 1.0f, 0.0f}, {r, b + 1.0f, 0.0f}});
    polyline.addStrip({{l, t - 1.0f, 0.0f}, {r, t - 1.0f, 0.0f}});
    polyline.addStrip({{l + 1.0f, b, 0.0f}, {l + 1.0f, t, 0.0f}});
    polyline.addStrip({{r - 1.0f, b, 0.0f}, {r - 1.0f, t, 0.0f}});
}

void ZoomboxUtils::createGeometry(int x0, int y0, int x1, int y1, qrnsg::Mesh& mesh,
                                  qrnsg::Polyline& polyline) {
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);
    createGeometry(x0, y0, x1, y1, mesh, polyline, viewport[3]);
}

} // namespace qrnglutils
