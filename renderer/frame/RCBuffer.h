#pragma once

#include "qrngl/IRenderContext.h"
#include "qrngl/frame/RCTemp.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// An off-screen context on a pixel buffer of width x height, multisampled on request where the
// driver can, sharing display lists and textures with a parent context when one is given.
// deactivate() only flushes: the context stays current and no buffer is swapped. On Windows
// the buffer is a WGL_ARB_pbuffer; on X11 a GLX 1.3 pbuffer (the DC is the pbuffer drawable,
// the pixel format the GLX frame-buffer configuration's id).
class QRNGL_EXPORT RCBuffer : public IRenderContext {
public:
    RCBuffer(unsigned int width, unsigned int height, bool multisample,
             std::shared_ptr<IRenderContext> parent);
    RCBuffer(const RCBuffer& other);
    RCBuffer(RCBuffer&& other) noexcept;
    RCBuffer& operator=(const RCBuffer& other);
    RCBuffer& operator=(RCBuffer&& other) noexcept;
    ~RCBuffer() override;

    bool create() override;
    void destroy() override;
    void activate() override;
    void deactivate() override;
    HDC currentDC() const override;
    HGLRC currentGLRC() const override;

    unsigned int width() const { return m_width; }
    unsigned int height() const { return m_height; }
    bool multisample() const { return m_multisample; }

private:
    // The pixel format for the buffer, asked of the driver through the temporary context; the
    // driver's answer (non-zero on success).
    int choosePixelFormat(RCTemp temp, unsigned int maxFormats, int& format);

    unsigned int m_width;
    unsigned int m_height;
    void* m_pbuffer; // HPBUFFERARB on Windows, the GLXPbuffer on X11
    HDC m_dc;
    HGLRC m_rc;
    std::shared_ptr<IRenderContext> m_parent;
    bool m_multisample;
};

} // namespace qrngl
