#pragma once

#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// What the host's animation timer drives: one step per tick.
class QRNGLDATA_EXPORT IViewState {
public:
    virtual ~IViewState();
    virtual void animate() = 0;
};

} // namespace qrngl
