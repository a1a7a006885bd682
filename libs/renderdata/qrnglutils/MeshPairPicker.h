#pragma once

#include "qrngl/NamesInitializer.h"
#include "qrnglutils/PickVisitor.h"
#include "qrnglutils/qrnglutils_export.h"

namespace qrnglutils {

// The mesh pass of a pick: every shown mesh instance, each face under its own name. A mesh
// that names no part is drawn whole under name 0, so that it still hides what lies behind.
class QRNGLUTILS_EXPORT MeshPairPicker {
public:
    static void draw(const PickVisitor& visitor, const qrngl::NamesInitializer& names);
};

} // namespace qrnglutils
