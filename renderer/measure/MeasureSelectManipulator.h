#pragma once

#include "qrn/IDocument.h"
#include "qrngl/ClickTracker.h"
#include "qrngl/IFilter.h"
#include "qrngl/IManipulator.h"
#include "qrngl/ISelector.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// Selects measurements by a click on their labels, and deselects them by another; a click
// that finds no measurement tries the markups. A drag selects nothing.
class QRNGL_EXPORT MeasureSelectManipulator : public IManipulator {
public:
    enum : short { ORDER = 202 };
    explicit MeasureSelectManipulator(std::shared_ptr<qrn::IDocument> document);
    short order() const override { return ORDER; }
    void init() override;
    bool setCursor() override { return false; }
    FrameStatus mouseMotion(unsigned int flags, int x, int y) override;
    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                int y) override;
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button, int x,
                              int y) override;
    FrameStatus mouseButtonDblClk(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                  int y) override;
    FrameStatus mouseWheel(unsigned int, int, float) override { return UNCHANGED; }
    void customize(std::shared_ptr<IFilter> filter, std::shared_ptr<ISelector> selector);
    // Whether a click that finds no measurement selects a markup (a host whose own selection
    // takes markups turns it off).
    void setMarkups(bool on) { m_markups = on; }

private:
    bool doMeasureSelect(unsigned int flags, int x, int y);
    bool doMarkUpSelect(unsigned int flags, int x, int y);

    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<IFilter> m_filter;
    std::shared_ptr<ISelector> m_selector;
    bool m_markups = true;
    ClickTracker m_click;
};

} // namespace qrngl
