#pragma once

#include "qrngl/NamesInitializer.h"
#include "qrnglutils/PickVisitor.h"
#include "qrnglutils/qrnglutils_export.h"

namespace qrnglutils {

// The vertex pass of a pick: each vertex of a shown part under its own name.
class QRNGLUTILS_EXPORT VertexPairPicker {
public:
    static void draw(const PickVisitor& visitor, const qrngl::NamesInitializer& names);
};

} // namespace qrnglutils
