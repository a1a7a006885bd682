#pragma once

#include "qrn/qrn_export.h"

namespace qrn {

// A captured state of something in the document (a camera, visibility, placements) that can
// be put back: the unit of undo and redo.
class QRN_EXPORT IState {
public:
    virtual ~IState();
    // Puts the captured state back.
    virtual void restore() = 0;
};

} // namespace qrn
