#pragma once

#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/Polyline.h"

namespace qrnglutils {

// The cross-hair figure of the screen overlay, in the overlay's pixel coordinates: one unit a
// pixel, origin at the lower-left corner of the viewport. The input is a window pixel with y
// growing downwards, as mouse events give it.
//
// Four arms around the pixel, each ARM - GAP + 1 pixels long, leaving a gap of GAP - 1 pixels
// on each side of the centre so that the pixel pointed at stays visible. The arms run along
// the centre lines of the pixel's row and column and end on pixel edges: the arm to the right
// covers the pixels x + GAP to x + ARM of row y, and likewise for the other three. A line of
// one pixel covers exactly that row or column; a wider one (the overlay's 1.5 is drawn two
// pixels wide, as aliased widths round to whole pixels) adds the neighbouring row or column.
class QRNGLUTILS_EXPORT CrossHairUtils {
public:
    enum : int { GAP = 3, ARM = 12 };

    // Replaces polyline with the figure centred at window pixel (x, y) of a viewport
    // viewportHeight pixels high.
    static void createCrossHair(int x, int y, qrnsg::Polyline& polyline, int viewportHeight);
    // The same in the viewport of the current context (GL_VIEWPORT is read).
    static void createCrossHair(int x, int y, qrnsg::Polyline& polyline);
};

} // namespace qrnglutils
