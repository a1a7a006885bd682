#pragma once

#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// Something that draws into the frame. It reaches its data through references it was given
// when made.
class QRNGLDATA_EXPORT IRenderer {
public:
    virtual ~IRenderer();
    virtual void render() const = 0;
    virtual short order() const;
};

} // namespace qrngl
