// The on-screen context of the host's window; every window-system call goes through WglApi.
#include "qrngl/frame/RCWindow.h"

#include "qrn/LogManager.h"
#include "qrngl/GL.h"
#include "qrngl/frame/RCTemp.h"
#include "qrngl/frame/win32/WglApi.h"

#include <GL/wglew.h>

namespace qrngl {

RCWindow::RCWindow(HWND window, std::shared_ptr<IRenderContext> parent)
    : m_window(window), m_dc(nullptr), m_rc(nullptr), m_parent(std::move(parent)),
      m_display(nullptr) {}

// Windows has one window system: the display is not needed.
RCWindow::RCWindow(HDISPLAY, HWND window, std::shared_ptr<IRenderContext> parent)
    : RCWindow(window, std::move(parent)) {}

RCWindow::RCWindow(const RCWindow&) = default;
RCWindow& RCWindow::operator=(const RCWindow&) = default;
RCWindow::~RCWindow() = default;

bool RCWindow::create() {
    const WglApi& api = WglApi::get();
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();

    // The ARB entry points need a current context before the real format can be chosen.
    RCTemp temp(0, 0, std::shared_ptr<IRenderContext>());
    if (!temp.create()) {
        temp.destroy();
        return false;
    }
    temp.activate();
    if (api.glewInit() != 0) {
        // The temporary context is left as it is.
        logger->log(L"RCWindow:glewInit() failed");
        return false;
    }
    logger->log(L"RCWindow:glewInit() success");
    logOpenglInfo();
    PIXELFORMATDESCRIPTOR descriptor = temp;
    // deactivate then destroy: SwapBuffers, release twice, delete, ReleaseDC, DestroyWindow.
    temp.deactivate();
    temp.destroy();

    m_dc = api.getDC(m_window);
    int format = 0;
    if (api.hasArbPixelFormat() && api.hasArbMultisample()) {
        const int attributes[24] = {WGL_DRAW_TO_WINDOW_ARB,
                                    1,
                                    WGL_SUPPORT_OPENGL_ARB,
                                    1,
                                    WGL_ACCELERATION_ARB,
                                    WGL_FULL_ACCELERATION_ARB,
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
        UINT count = 0;
        // Once the driver offers ARB formats, a refusal is final: no classic retry.
        if (!api.choosePixelFormatARB(m_dc, attributes, floatAttributes, 1, &format, &count)) {
            logger->log(L"RCWindow: ARB pixel format selection failed");
            return false;
        }
        logger->log(L"RCWindow: ARB pixel format selected");
    } else {
        format = api.choosePixelFormat(m_dc, &descriptor);
        if (format == 0) {
            logger->log(L"RCWindow:pixel format selection failed");
            return false;
        }
        logger->log(L"RCWindow: Normal pixel format selected");
    }
    // The template, also on the ARB path.
    RCTemp::pixelFormatDescriptorInfo(descriptor);
    if (!api.setPixelFormat(m_dc, format, &descriptor)) {
        logger->log(L"RCWindow:pixel format set failed");
        return false;
    }
    m_rc = api.createContext(m_dc);
    logger->log(m_rc ? L"RCWindow:opengl context created"
                     : L"RCWindow:opengl context creation failed");
    if (m_parent && api.shareLists(m_parent->currentGLRC(), m_rc))
        logger->log(L"RCWindow:Shared opengl context");
    if (api.makeCurrent(m_dc, m_rc)) {
        activate();
        return true;
    }
    api.deleteContext(m_rc);
    m_rc = nullptr;
    logger->log(L"RCWindow:setting opengl context current failed");
    return false;
}

void RCWindow::destroy() {
    const WglApi& api = WglApi::get();
    deactivate();
    api.makeCurrent(m_dc, nullptr);
    api.deleteContext(m_rc);
    api.releaseDC(m_window, m_dc);
    m_rc = nullptr;
    m_dc = nullptr;
}

void RCWindow::activate() {
    WglApi::get().makeCurrent(m_dc, m_rc);
}

void RCWindow::deactivate() {
    WglApi::get().swapBuffers(m_dc);
}

HDC RCWindow::currentDC() const {
    return m_dc;
}

HGLRC RCWindow::currentGLRC() const {
    return m_rc;
}

} // namespace qrngl
