#pragma once

#include "qrngl/IRenderContext.h"
#include "qrngl/qrngl_export.h"

namespace qrngl {

// An off-screen context that renders into a memory image of width x height: 24-bit pixels in
// blue, green, red order, rows bottom-up, each row padded to four bytes (a Windows DIB's
// layout). On Windows it is a DIB section in a memory DC; elsewhere a headless EGL context
// that needs no display server. The image holds the last frame after deactivate().
class QRNGL_EXPORT RCBitmap : public IRenderContext {
public:
    RCBitmap(unsigned int width, unsigned int height);
    ~RCBitmap() override;
    RCBitmap(const RCBitmap&) = delete;
    RCBitmap& operator=(const RCBitmap&) = delete;

    bool create() override;
    void destroy() override;
    void activate() override;
    void deactivate() override;
    HDC currentDC() const override;
    HGLRC currentGLRC() const override;

    unsigned int width() const { return m_width; }
    unsigned int height() const { return m_height; }
    // The memory image; null before create().
    const unsigned char* bits() const { return static_cast<const unsigned char*>(m_bits); }
    unsigned int stride() const { return (m_width * 3 + 3) & ~3u; }

private:
    bool createBitmap();
    bool setPixelFormat();

    HDC m_dc;
    void* m_bitmap; // the DIB section's handle, or the headless backend's surface
    HGLRC m_rc;
    unsigned int m_width;
    unsigned int m_height;
    void* m_bits;
};

} // namespace qrngl
