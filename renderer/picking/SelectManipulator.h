#pragma once

#include "qrn/IDocument.h"
#include "qrngl/IManipulator.h"
#include "qrngl/IPickCanvas.h"
#include "qrngl/picking/SelectionSet.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// Selects by clicking: a click (press and release within a few pixels, neither consumed by
// an earlier tool) takes the entity under the cursor in the set's mode; Shift or Ctrl adds
// and toggles; a click on empty space without them clears. selectBox takes every entity seen
// in a window rectangle (the camera's box-select drag hands it over).
class QRNGL_EXPORT SelectManipulator : public IManipulator {
public:
    enum : short { ORDER = 1000 };
    enum : int { CLICK_SLOP = 3, PICK_SIZE = 4 };

    SelectManipulator(std::shared_ptr<qrn::IDocument> document, std::shared_ptr<SelectionSet> set,
                      std::shared_ptr<Cursor> cursor);

    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                int y) override;
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button, int x,
                              int y) override;
    short order() const override { return ORDER; }
    void init() override;

    // The entity a click at (x, y) would take (0 for none), without selecting it.
    unsigned int pickAt(int x, int y) const;
    // Selects at a window point as a click with these key flags does; true when changed.
    bool selectAt(int x, int y, unsigned int flags);
    // Selects what a window rectangle shows (what it covers, with select-through).
    bool selectBox(int x0, int y0, int x1, int y1, unsigned int flags);
    const std::shared_ptr<qrn::IDocument>& document() const { return m_document; }
    // The selection-mode canvas a select-through box pick uses.
    void setSelectThroughCanvas(std::shared_ptr<IPickCanvas> canvas) {
        m_throughCanvas = std::move(canvas);
    }

private:
    // The name kept of a pick: its part's in PART mode.
    unsigned int keep(unsigned int name) const;
    bool apply(const std::vector<unsigned int>& names, unsigned int flags, bool box);

    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<SelectionSet> m_set;
    std::shared_ptr<IPickCanvas> m_throughCanvas;
    bool m_pressed = false;
    int m_pressX = 0;
    int m_pressY = 0;
};

} // namespace qrngl
