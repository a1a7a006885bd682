#pragma once

#include "qrngl/Handles.h"
#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// An OpenGL context bound to a device context. Drawing happens only between activate() and
// deactivate().
class QRNGLDATA_EXPORT IRenderContext {
public:
    IRenderContext() = default;
    IRenderContext(const IRenderContext&) = default;
    IRenderContext& operator=(const IRenderContext&) = default;
    virtual ~IRenderContext();

    // Builds the device context, pixel format and OpenGL context and makes it current.
    virtual bool create() = 0;
    virtual void destroy() = 0;
    virtual void activate() = 0;
    // Ends a frame (presents it); some contexts also release currency.
    virtual void deactivate() = 0;
    virtual HDC currentDC() const = 0;
    virtual HGLRC currentGLRC() const = 0;
};

} // namespace qrngl
