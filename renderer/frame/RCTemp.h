#pragma once

#include "qrngl/IRenderContext.h"
#include "qrngl/qrngl_export.h"

#include <cstdint>
#include <memory>
#include <string>

namespace qrngl {

// The fields of a Windows pixel format descriptor, in its layout (40 bytes), so that a context
// can hold one without the Windows headers. On Windows it converts bit for bit; on X11 it is the
// backend's own descriptor, with the Windows meaning of every field and flag.
struct PixelFormatDescriptor {
    std::uint16_t nSize;
    std::uint16_t nVersion;
    std::uint32_t dwFlags;
    std::uint8_t iPixelType;
    std::uint8_t cColorBits;
    std::uint8_t cRedBits;
    std::uint8_t cRedShift;
    std::uint8_t cGreenBits;
    std::uint8_t cGreenShift;
    std::uint8_t cBlueBits;
    std::uint8_t cBlueShift;
    std::uint8_t cAlphaBits;
    std::uint8_t cAlphaShift;
    std::uint8_t cAccumBits;
    std::uint8_t cAccumRedBits;
    std::uint8_t cAccumGreenBits;
    std::uint8_t cAccumBlueBits;
    std::uint8_t cAccumAlphaBits;
    std::uint8_t cDepthBits;
    std::uint8_t cStencilBits;
    std::uint8_t cAuxBuffers;
    std::uint8_t iLayerType;
    std::uint8_t bReserved;
    std::uint32_t dwLayerMask;
    std::uint32_t dwVisibleMask;
    std::uint32_t dwDamageMask;
};

// A short-lived context on a hidden window (its own, or one it is given): it loads the
// extension entry points before the real pixel format is chosen, and probes pixel formats.
// deactivate() presents and releases the context. On X11 the hidden window is an unmapped
// window, formats are visual ids (classic) or GLXFBConfig ids (ARB), and the constructors with
// a display name the connection (the others, and a null display, use the process's own
// connection to $DISPLAY; Windows has no such connection and ignores it).
class QRNGL_EXPORT RCTemp : public IRenderContext {
public:
    RCTemp(unsigned int width, unsigned int height, std::shared_ptr<IRenderContext> parent);
    RCTemp(HWND window, unsigned int width, unsigned int height,
           std::shared_ptr<IRenderContext> parent);
    RCTemp(HDISPLAY display, unsigned int width, unsigned int height,
           std::shared_ptr<IRenderContext> parent);
    RCTemp(HDISPLAY display, HWND window, unsigned int width, unsigned int height,
           std::shared_ptr<IRenderContext> parent);
    RCTemp(const RCTemp&);
    RCTemp& operator=(const RCTemp&);
    ~RCTemp() override;

    bool create() override;
    void destroy() override;
    void activate() override;
    // Presents the frame and releases the context.
    void deactivate() override;
    HDC currentDC() const override;
    HGLRC currentGLRC() const override;

    // The template given to the classic pixel format choice.
    operator PIXELFORMATDESCRIPTOR() const;

    // Zeroes all 40 bytes, then sets nSize 40 and nVersion 1.
    static void initPixelFormatDescriptor(PIXELFORMATDESCRIPTOR* descriptor);
    // Whether the driver describes the format (setting it on a hidden window is only tried).
    static bool isValidPixelFormat(const int& format);
    // Asks for a format without naming the acceleration; format is 0 when the call failed.
    static bool tryGetAccelerationOffPixelFormat(int& format);
    // Logs the descriptor's fields, one message each.
    static void pixelFormatDescriptorInfo(const PIXELFORMATDESCRIPTOR& descriptor);
    // Append the decimal text of the value; return the number of characters appended.
    static int getValStr(std::wstring& text, unsigned char value);
    static int getValStr(std::wstring& text, unsigned long value);

private:
    bool m_externalWindow;
    HWND m_window;
    HDC m_dc;
    HGLRC m_rc;
    PixelFormatDescriptor m_descriptor;
    unsigned int m_width;
    unsigned int m_height;
    std::shared_ptr<IRenderContext> m_parent;
    HDISPLAY m_display;
};

} // namespace qrngl
