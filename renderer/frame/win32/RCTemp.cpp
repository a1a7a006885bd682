// The helper context on a hidden popup window; every window-system call goes through WglApi.
#include "qrngl/frame/RCTemp.h"

#include "qrn/LogManager.h"
#include "qrngl/GL.h"
#include "qrngl/frame/win32/WglApi.h"

#include <GL/wglew.h>

#include <cstddef>
#include <cstring>

namespace qrngl {

static_assert(sizeof(PixelFormatDescriptor) == sizeof(PIXELFORMATDESCRIPTOR) &&
                  offsetof(PixelFormatDescriptor, dwFlags) ==
                      offsetof(PIXELFORMATDESCRIPTOR, dwFlags) &&
                  offsetof(PixelFormatDescriptor, bReserved) ==
                      offsetof(PIXELFORMATDESCRIPTOR, bReserved) &&
                  offsetof(PixelFormatDescriptor, dwDamageMask) ==
                      offsetof(PIXELFORMATDESCRIPTOR, dwDamageMask),
              "the portable descriptor must keep the Windows layout");

namespace {

HWND createHiddenWindow(const WglApi& api, HINSTANCE instance, int width, int height) {
    return api.createWindowExW(0, L"STATIC", L"Temp Window for OpenGL",
                               WS_POPUP | WS_BORDER | WS_SYSMENU | 0x20, 0, 0, width, height,
                               nullptr, nullptr, instance, nullptr);
}

PIXELFORMATDESCRIPTOR toWindows(const PixelFormatDescriptor& d) {
    PIXELFORMATDESCRIPTOR out;
    std::memcpy(&out, &d, sizeof out);
    return out;
}

} // namespace

RCTemp::RCTemp(unsigned int width, unsigned int height, std::shared_ptr<IRenderContext> parent)
    : RCTemp(static_cast<HWND>(nullptr), width, height, std::move(parent)) {
    m_externalWindow = false;
}

// Windows has one window system: the display is not needed.
RCTemp::RCTemp(HDISPLAY, unsigned int width, unsigned int height,
               std::shared_ptr<IRenderContext> parent)
    : RCTemp(width, height, std::move(parent)) {}

RCTemp::RCTemp(HDISPLAY, HWND window, unsigned int width, unsigned int height,
               std::shared_ptr<IRenderContext> parent)
    : RCTemp(window, width, height, std::move(parent)) {}

RCTemp::RCTemp(HWND window, unsigned int width, unsigned int height,
               std::shared_ptr<IRenderContext> parent)
    : m_externalWindow(true), m_window(window), m_dc(nullptr), m_rc(nullptr), m_descriptor(),
      m_width(width), m_height(height), m_parent(std::move(parent)), m_display(nullptr) {
    PIXELFORMATDESCRIPTOR d;
    initPixelFormatDescriptor(&d);
    d.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    d.iPixelType = PFD_TYPE_RGBA;
    d.cColorBits = 24;
    d.cDepthBits = 16;
    d.cStencilBits = 2;
    std::memcpy(&m_descriptor, &d, sizeof d);
}

RCTemp::RCTemp(const RCTemp&) = default;
RCTemp& RCTemp::operator=(const RCTemp&) = default;
RCTemp::~RCTemp() = default;

bool RCTemp::create() {
    const WglApi& api = WglApi::get();
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    if (!m_window && !m_externalWindow) {
        HINSTANCE instance = api.getModuleHandleW(nullptr);
        if (instance)
            m_window = createHiddenWindow(api, instance, static_cast<int>(m_width),
                                          static_cast<int>(m_height));
    }
    m_dc = api.getDC(m_window);
    PIXELFORMATDESCRIPTOR descriptor = toWindows(m_descriptor);
    int format = api.choosePixelFormat(m_dc, &descriptor);
    if (format == 0) {
        logger->log(L"RCTEMP:pixel format selection failed");
        return false;
    }
    if (!api.setPixelFormat(m_dc, format, &descriptor)) {
        logger->log(L"RCTEMP:pixel format set failed");
        return false;
    }
    m_rc = api.createContext(m_dc);
    logger->log(m_rc ? L"RCTEMP:opengl context created" : L"RCTEMP:opengl context creation failed");
    if (m_parent) {
        // The message does not depend on the result: this context works without the lists.
        api.shareLists(m_parent->currentGLRC(), m_rc);
        logger->log(L"RCTEMP:Shared opengl context");
    }
    if (api.makeCurrent(m_dc, m_rc))
        return true;
    api.deleteContext(m_rc);
    m_rc = nullptr;
    logger->log(L"RCTEMP:setting opengl context current failed");
    return false;
}

void RCTemp::destroy() {
    const WglApi& api = WglApi::get();
    api.makeCurrent(m_dc, nullptr);
    if (m_rc)
        api.deleteContext(m_rc);
    m_rc = nullptr;
    if (m_dc)
        api.releaseDC(m_window, m_dc);
    m_dc = nullptr;
    if (m_window && !m_externalWindow) {
        api.destroyWindow(m_window);
        m_window = nullptr;
    }
}

void RCTemp::activate() {
    WglApi::get().makeCurrent(m_dc, m_rc);
}

void RCTemp::deactivate() {
    const WglApi& api = WglApi::get();
    api.swapBuffers(m_dc);
    api.makeCurrent(m_dc, nullptr);
}

HDC RCTemp::currentDC() const {
    return m_dc;
}

HGLRC RCTemp::currentGLRC() const {
    return m_rc;
}

RCTemp::operator PIXELFORMATDESCRIPTOR() const {
    return toWindows(m_descriptor);
}

bool RCTemp::isValidPixelFormat(const int& format) {
    const WglApi& api = WglApi::get();
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    HWND window = createHiddenWindow(api, api.getModuleHandleW(nullptr), 0, 0);
    if (!window)
        return false;
    HDC dc = api.getDC(window);
    if (!dc) {
        api.destroyWindow(window);
        return false;
    }
    PIXELFORMATDESCRIPTOR descriptor;
    initPixelFormatDescriptor(&descriptor);
    if (api.describePixelFormat(dc, format, sizeof descriptor, &descriptor) == 0) {
        api.releaseDC(window, dc);
        api.destroyWindow(window);
        return false;
    }
    // Only tried: a format the driver describes counts as valid even where this window
    // refuses it.
    if (!api.setPixelFormat(dc, format, &descriptor))
        logger->log(L"Validation: SetPixelFormat failed");
    api.releaseDC(window, dc);
    api.destroyWindow(window);
    return true;
}

bool RCTemp::tryGetAccelerationOffPixelFormat(int& format) {
    const WglApi& api = WglApi::get();
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    HWND window = createHiddenWindow(api, api.getModuleHandleW(nullptr), 0, 0);
    if (!window)
        return false;
    HDC dc = api.getDC(window);
    if (!dc) {
        api.destroyWindow(window);
        return false;
    }
    PIXELFORMATDESCRIPTOR descriptor;
    initPixelFormatDescriptor(&descriptor);
    // The acceleration pair is left zero, and a zero attribute ends the list: the driver sees
    // only the first two pairs. Kept so; the rest documents the format once looked for.
    const int attributes[24] = {WGL_DRAW_TO_WINDOW_ARB,
                                1,
                                WGL_SUPPORT_OPENGL_ARB,
                                1,
                                0,
                                0,
                                WGL_COLOR_BITS_ARB,
                                24,
                                WGL_ALPHA_BITS_ARB,
                                8,
                                WGL_DEPTH_BITS_ARB,
                                16,
                                WGL_STENCIL_BITS_ARB,
                                2,
                                WGL_DOUBLE_BUFFER_ARB,
                                1,
                                WGL_PIXEL_TYPE_ARB,
                                WGL_TYPE_RGBA_ARB,
                                WGL_SAMPLE_BUFFERS_ARB,
                                1,
                                WGL_SAMPLES_ARB,
                                4,
                                0,
                                0};
    const FLOAT floatAttributes[2] = {0, 0};
    int chosen = 0;
    UINT count = 0;
    bool result = false;
    if (!api.choosePixelFormatARB(dc, attributes, floatAttributes, 1, &chosen, &count)) {
        logger->log(L"tryGetAcc: wglChoosePixelFormatARB failed");
        chosen = 0;
    } else {
        if (!api.setPixelFormat(dc, chosen, &descriptor))
            logger->log(L"tryGetAcc:SetPixelFormat failed");
        // Written after a failure too.
        logger->log(L"tryGetAcc:SetPixelFormat succeeded");
        result = true;
    }
    api.releaseDC(window, dc);
    api.destroyWindow(window);
    format = chosen;
    return result;
}

} // namespace qrngl
