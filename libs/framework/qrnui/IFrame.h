#pragma once

#include "qrn/IDocument.h"
#include "qrn/IUpdater.h"
#include "qrnui/UndoStack.h"
#include "qrnui/qrnui_export.h"

#include <memory>

namespace qrnui {

// The host's frame around one document: what tools need of the host beyond the document.
class QRNUI_EXPORT IFrame {
public:
    virtual ~IFrame();
    virtual std::shared_ptr<qrn::IDocument> getDocument() const = 0;
    virtual std::shared_ptr<UndoStack> getUndoStack() const = 0;
    // May be empty.
    virtual std::shared_ptr<qrn::IUpdater> getUpdater() const = 0;
    // True in the drawing-sheet (2D) viewer, which forbids some rotations.
    virtual bool is2DViewer() const = 0;
};

} // namespace qrnui
