// A bitmap context: a DIB section selected into a memory DC, with a GDI-compatible pixel
// format, drawn to by a plain WGL context; every GDI and WGL call goes through WglApi.
#include <windows.h>

#include "qrngl/frame/RCBitmap.h"
#include "qrngl/frame/win32/WglApi.h"

namespace qrngl {

namespace {

// Shared by every bitmap context.
const PIXELFORMATDESCRIPTOR kBitmapFormat = {40, // nSize
                                             1,  // nVersion
                                             PFD_DRAW_TO_BITMAP | PFD_SUPPORT_GDI |
                                                 PFD_SUPPORT_OPENGL, // dwFlags (0x38)
                                             PFD_TYPE_RGBA,          // iPixelType
                                             24,                     // cColorBits
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,  // colour, alpha, accumulation
                                             16, // cDepthBits
                                             2,  // cStencilBits
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0};

} // namespace

RCBitmap::RCBitmap(unsigned int width, unsigned int height)
    : m_dc(nullptr), m_bitmap(nullptr), m_rc(nullptr), m_width(width), m_height(height),
      m_bits(nullptr) {}

RCBitmap::~RCBitmap() {
    if (m_rc || m_bitmap)
        destroy();
}

bool RCBitmap::createBitmap() {
    const WglApi& api = WglApi::get();
    m_dc = api.createCompatibleDC(nullptr);
    BITMAPINFOHEADER header = {};
    header.biSize = 40;
    header.biWidth = static_cast<LONG>(m_width);
    header.biHeight = static_cast<LONG>(m_height);
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biCompression = BI_RGB;
    HBITMAP bitmap = api.createDIBSection(m_dc, reinterpret_cast<BITMAPINFO*>(&header),
                                          DIB_RGB_COLORS, &m_bits, nullptr, 0);
    if (!bitmap)
        return false;
    m_bitmap = bitmap;
    api.selectObject(m_dc, bitmap);
    return true;
}

bool RCBitmap::setPixelFormat() {
    const WglApi& api = WglApi::get();
    int format = api.choosePixelFormat(m_dc, &kBitmapFormat);
    if (format == 0)
        return false;
    api.setPixelFormat(m_dc, format, &kBitmapFormat);
    return true;
}

bool RCBitmap::create() {
    if (!createBitmap())
        return false;
    if (!setPixelFormat())
        return false;
    m_rc = WglApi::get().createContext(m_dc);
    activate();
    return true;
}

void RCBitmap::destroy() {
    const WglApi& api = WglApi::get();
    deactivate();
    if (m_rc) {
        api.deleteContext(m_rc);
        m_rc = nullptr;
    }
    if (m_bitmap) {
        api.deleteObject(static_cast<HBITMAP>(m_bitmap));
        m_bitmap = nullptr;
        m_bits = nullptr;
    }
}

void RCBitmap::activate() {
    WglApi::get().makeCurrent(m_dc, m_rc);
}

void RCBitmap::deactivate() {
    const WglApi& api = WglApi::get();
    api.swapBuffers(m_dc);
    api.makeCurrent(m_dc, nullptr);
}

HDC RCBitmap::currentDC() const {
    return m_dc;
}

HGLRC RCBitmap::currentGLRC() const {
    return m_rc;
}

} // namespace qrngl
