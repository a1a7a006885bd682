#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnsg/MMaterial.h"

namespace qrngl {

// Applies a surface material on construction. The material state it issues persists after it
// is destroyed: it stays in force until the next material, which is how the frame uses it.
class QRNGLDATA_EXPORT MMaterialRenderer {
public:
    explicit MMaterialRenderer(const qrnsg::MMaterial& material);
    ~MMaterialRenderer();
    MMaterialRenderer(const MMaterialRenderer&) = delete;
    MMaterialRenderer& operator=(const MMaterialRenderer&) = delete;
};

} // namespace qrngl
