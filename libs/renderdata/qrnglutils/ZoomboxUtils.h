#pragma once

#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Polyline.h"

namespace qrnglutils {

// The rubber-band rectangle of a box zoom, in the overlay's pixel coordinates: one unit a
// pixel, origin at the lower-left corner of the viewport. The inputs are the two window
// pixels of the drag (press point and current point, in either order), y growing downwards.
//
// The box covers both corner pixels and everything between them. The fill is two triangles
// on the pixel edges around the box, facing +z. The outline is the four sides, each a strip
// of its own across the box's full length, one pixel inside the edge: drawn two pixels wide
// (the zoom box's line width) they cover exactly the two outer rings of the box's pixels,
// corners included, and nothing outside it.
class QRNGLUTILS_EXPORT ZoomboxUtils {
public:
    // Replaces mesh and polyline with the box between window pixels (x0, y0) and (x1, y1)
    // of a viewport viewportHeight pixels high.
    static void createGeometry(int x0, int y0, int x1, int y1, qrnsg::Mesh& mesh,
                               qrnsg::Polyline& polyline, int viewportHeight);
    // The same in the viewport of the current context (GL_VIEWPORT is read).
    static void createGeometry(int x0, int y0, int x1, int y1, qrnsg::Mesh& mesh,
                               qrnsg::Polyline& polyline);
};

} // namespace qrnglutils
