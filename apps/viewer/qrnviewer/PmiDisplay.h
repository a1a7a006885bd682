#pragma once

#include "qrn/IDocument.h"
#include "qrnsg/SCView.h"

#include <memory>
#include <string>

namespace qrnviewer {

// Which PMI the document shows: all of it, none, or in a saved view that lists its PMI, only
// that view's.
class PmiDisplay {
public:
    explicit PmiDisplay(std::shared_ptr<qrn::IDocument> document);

    bool shown() const { return m_shown; }
    void setShown(bool shown);
    // The saved view the camera is in (an index of the view component's views); -1: none.
    int view() const { return m_view; }
    void setView(int view);
    // The number of items the document has, and of those shown now.
    std::size_t items() const;
    std::size_t shownItems() const;
    // What the terminal says of it, e.g. "PMI shown: 21 items" or "PMI of view MBD_0: 12 of 21".
    std::string describe() const;

private:
    void apply() const;
    // The view component, and in `view` the saved view the camera is in when it lists its PMI
    // (else null); the component is returned to keep the view alive.
    std::shared_ptr<qrnsg::SCView> listingView(const qrnsg::SCView::View*& view) const;
    bool isShown(std::size_t item, const qrnsg::SCView::View* listing) const;

    std::weak_ptr<qrn::IDocument> m_document;
    bool m_shown = true;
    int m_view = -1;
};

} // namespace qrnviewer
