#pragma once

#include "qrn/qrn_export.h"

namespace qrnui {
class Hint;
}

namespace qrn {

// The document's update notifier: tools tell the host through it that something changed.
class QRN_EXPORT IUpdater {
public:
    virtual ~IUpdater();
    virtual void update(const qrnui::Hint& hint) = 0;
};

} // namespace qrn
