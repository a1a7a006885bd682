#pragma once

#include "qrngl/NamesInitializer.h"
#include "qrnglutils/PickVisitor.h"
#include "qrnglutils/qrnglutils_export.h"

namespace qrnglutils {

// The polyline pass of a pick: a part's edges each under its own name; a polyline that
// belongs to no part (a PMI item's lines) as one edge-like entity.
class QRNGLUTILS_EXPORT PolylinePairPicker {
public:
    static void draw(const PickVisitor& visitor, const qrngl::NamesInitializer& names);
};

} // namespace qrnglutils
