#pragma once

#include "qrngl/IFilter.h"
#include "qrngl/IPickCanvas.h"
#include "qrngl/ISelector.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// The one way tools pick: runs a pick canvas's pass, gives the hits to the tool's filter and
// the filtered result to its selector. Either may be empty.
class QRNGL_EXPORT PickingHelper {
public:
    // The mask a pass draws when a tool has no filter: faces, edges, points and bit 32, the
    // tools' own drawables (clip plane, profile segments).
    enum : unsigned short { DEFAULT_TYPE = 39, TOOL_TYPE = 32 };

    // Point pick at window point (x, y) (origin top left) with a pick square of size pixels.
    static void pick(std::shared_ptr<IPickCanvas> canvas, std::shared_ptr<IFilter> filter,
                     std::shared_ptr<ISelector> selector, unsigned int flags, int x, int y,
                     int size);
    // Point pick over an aperture that follows the window and the zoom, on the renderer
    // component's pick canvas; skipped when the aperture falls below 2 pixels.
    static void pickPoints(std::shared_ptr<SCRenderer>& renderer, std::shared_ptr<IFilter> filter,
                           std::shared_ptr<ISelector> selector, unsigned int flags, int x, int y,
                           int size);
    // Rectangular pick between two window points, on the renderer component's pick canvas.
    static void pickbox(std::shared_ptr<SCRenderer>& renderer, std::shared_ptr<IFilter> filter,
                        std::shared_ptr<ISelector> selector, unsigned int flags, int x0, int y0,
                        int x1, int y1);

private:
    // The rectangle's lower-left corner in OpenGL window coordinates; (0, 0) for a rectangle
    // of zero width or height.
    static void getPBLowerLeft(int height, int x0, int y0, int x1, int y1, int& x, int& y);
    static void deliver(const std::shared_ptr<IPickCanvas>& canvas,
                        const std::vector<PickResult>& hits, const std::shared_ptr<IFilter>& filter,
                        const std::shared_ptr<ISelector>& selector, unsigned int flags);

    friend class PickingHelperTest;
};

} // namespace qrngl
