#pragma once

#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// One prepared drawable of the strip renderer: a mesh, a polyline, a point set or a text whose
// geometry already lives on the GPU, so that drawing it is one draw call.
class QRNGLDATA_EXPORT IStripEntry {
public:
    virtual ~IStripEntry();
    virtual void render() const = 0;
};

} // namespace qrngl
