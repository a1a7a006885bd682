#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnsg/PLMaterial.h"

namespace qrngl {

// Applies a line-and-text material (colour, width, stipple) on construction; like
// MMaterialRenderer, the state persists until the next material.
class QRNGLDATA_EXPORT PLMaterialRenderer {
public:
    explicit PLMaterialRenderer(const qrnsg::PLMaterial& material);
    ~PLMaterialRenderer();
    PLMaterialRenderer(const PLMaterialRenderer&) = delete;
    PLMaterialRenderer& operator=(const PLMaterialRenderer&) = delete;
};

} // namespace qrngl
