#pragma once

#include "qrngl/ICanvas.h"
#include "qrngl/PickResult.h"
#include "qrngldata/qrngldata_export.h"

#include <vector>

namespace qrngl {

// A canvas that draws the scene to find the entities under a window point or inside a
// rectangle instead of drawing it for the eye.
class QRNGLDATA_EXPORT IPickCanvas : public ICanvas {
public:
    ~IPickCanvas() override;

    // The pick point in window coordinates (origin top left), the pick square's size in
    // pixels and the entity-type mask (1 faces, 2 edges, 4 points).
    virtual void Set(int x, int y, int size, unsigned short type) = 0;
    // The hits of the last pass.
    virtual const std::vector<PickResult>& Get() const = 0;
    // Whether the canvas answers point queries of its own; not by default.
    virtual bool isAdvancePointFilterSupported() const;
    // The hits of a point query; none by default.
    virtual void GetPoints(int x, int y, std::vector<PickResult>& hits) const;
    // Prepares a rectangular pick; nothing by default.
    virtual void SetPickBox(int width, int height, int size, unsigned short type);
    // The hits of the rectangular pick; none by default.
    virtual void GetPickBox(int width, int height, std::vector<PickResult>& hits);
    // Runs the rectangular pass, the lower-left corner in OpenGL window coordinates (origin
    // bottom left); nothing by default.
    virtual void OnDrawPickBox(int x, int y, int width, int height);
};

} // namespace qrngl
