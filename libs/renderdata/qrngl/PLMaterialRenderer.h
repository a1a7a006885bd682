#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnsg/PLMaterial.h"

namespace qrngl {

// Applies a line-and-text material (colour, width, stipple; blending for a translucent colour)
// while it lives, and gives the previous state back when destroyed.
class QRNGLDATA_EXPORT PLMaterialRenderer {
public:
    explicit PLMaterialRenderer(const qrnsg::PLMaterial& material);
    ~PLMaterialRenderer();
    PLMaterialRenderer(const PLMaterialRenderer&) = delete;
    PLMaterialRenderer& operator=(const PLMaterialRenderer&) = delete;
};

} // namespace qrngl
