#pragma once

#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// A texture of the renderer component.
class QRNGLDATA_EXPORT ITexture {
public:
    virtual ~ITexture();
    virtual void bind() const = 0;
};

} // namespace qrngl
