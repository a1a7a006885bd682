// The helper context on an unmapped X window, through GLX (see Glx.h for the counterpart of
// each Windows step).
#include "qrngl/frame/RCTemp.h"

#include "qrn/LogManager.h"
#include "qrngl/frame/linux/Glx.h"

#include <cstring>

namespace qrngl {

namespace {

PixelFormatDescriptor windowTemplate() {
    PixelFormatDescriptor d;
    RCTemp::initPixelFormatDescriptor(&d);
    d.dwFlags = Glx::DRAW_TO_WINDOW | Glx::SUPPORT_OPENGL | Glx::DOUBLEBUFFER;
    d.iPixelType = 0; // RGBA
    d.cColorBits = 24;
    d.cDepthBits = 16;
    d.cStencilBits = 2;
    return d;
}

Display* orDefault(_XDisplay* display) {
    return display ? display : Glx::defaultDisplay();
}

// The hidden window of the static probes.
Window probeWindow(Display* display) {
    return Glx::createHiddenWindow(display, 0, 0, 0);
}

} // namespace

RCTemp::RCTemp(unsigned int width, unsigned int height, std::shared_ptr<IRenderContext> parent)
    : RCTemp(static_cast<_XDisplay*>(nullptr), width, height, std::move(parent)) {}

RCTemp::RCTemp(HWND window, unsigned int width, unsigned int height,
               std::shared_ptr<IRenderContext> parent)
    : RCTemp(static_cast<_XDisplay*>(nullptr), window, width, height, std::move(parent)) {}

RCTemp::RCTemp(_XDisplay* display, unsigned int width, unsigned int height,
               std::shared_ptr<IRenderContext> parent)
    : RCTemp(display, nullptr, width, height, std::move(parent)) {
    m_externalWindow = false;
}

RCTemp::RCTemp(_XDisplay* display, HWND window, unsigned int width, unsigned int height,
               std::shared_ptr<IRenderContext> parent)
    : m_externalWindow(true), m_window(window), m_dc(nullptr), m_rc(nullptr),
      m_descriptor(windowTemplate()), m_width(width), m_height(height), m_parent(std::move(parent)),
      m_display(display) {}

RCTemp::RCTemp(const RCTemp&) = default;
RCTemp& RCTemp::operator=(const RCTemp&) = default;
RCTemp::~RCTemp() = default;

bool RCTemp::create() {
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    m_display = orDefault(m_display);
    if (!m_window && !m_externalWindow && m_display) {
        // Made with the visual the template selects: an X window's visual is fixed.
        m_window = Glx::windowHandle(Glx::createHiddenWindow(
            m_display, Glx::choosePixelFormat(m_display, m_descriptor), m_width, m_height));
    }
    m_dc = Glx::drawableHandle(Glx::window(m_window));
    const int format = Glx::choosePixelFormat(m_display, m_descriptor);
    if (format == 0) {
        logger->log(L"RCTEMP:pixel format selection failed");
        return false;
    }
    if (!Glx::setPixelFormat(m_display, Glx::window(m_dc), format)) {
        logger->log(L"RCTEMP:pixel format set failed");
        return false;
    }
    bool shared = false;
    m_rc = Glx::contextHandle(Glx::createContext(
        m_display, format, m_parent ? Glx::context(m_parent->currentGLRC()) : nullptr, shared));
    logger->log(m_rc ? L"RCTEMP:opengl context created" : L"RCTEMP:opengl context creation failed");
    // Logged whether or not the lists are shared: this context works without them.
    if (m_parent)
        logger->log(L"RCTEMP:Shared opengl context");
    if (Glx::makeCurrent(m_display, Glx::window(m_dc), Glx::context(m_rc)))
        return true;
    Glx::deleteContext(m_display, Glx::context(m_rc));
    m_rc = nullptr;
    logger->log(L"RCTEMP:setting opengl context current failed");
    return false;
}

void RCTemp::destroy() {
    Display* display = orDefault(m_display);
    Glx::makeCurrent(display, Glx::window(m_dc), nullptr);
    if (m_rc)
        Glx::deleteContext(display, Glx::context(m_rc));
    m_rc = nullptr;
    m_dc = nullptr; // the window itself: nothing to release
    if (m_window && !m_externalWindow) {
        Glx::destroyWindow(display, Glx::window(m_window));
        m_window = nullptr;
    }
}

void RCTemp::activate() {
    Glx::makeCurrent(orDefault(m_display), Glx::window(m_dc), Glx::context(m_rc));
}

void RCTemp::deactivate() {
    Display* display = orDefault(m_display);
    Glx::swapBuffers(display, Glx::window(m_dc));
    Glx::makeCurrent(display, Glx::window(m_dc), nullptr);
}

HDC RCTemp::currentDC() const {
    return m_dc;
}

HGLRC RCTemp::currentGLRC() const {
    return m_rc;
}

RCTemp::operator PIXELFORMATDESCRIPTOR() const {
    return m_descriptor;
}

bool RCTemp::isValidPixelFormat(const int& format) {
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    Display* display = Glx::defaultDisplay();
    const Window window = probeWindow(display);
    if (!window)
        return false;
    PixelFormatDescriptor descriptor;
    initPixelFormatDescriptor(&descriptor);
    if (Glx::describePixelFormat(display, format, &descriptor) == 0) {
        Glx::destroyWindow(display, window);
        return false;
    }
    // Only tried: a format GLX describes counts as valid even where this window refuses it.
    if (!Glx::setPixelFormat(display, window, format))
        logger->log(L"Validation: SetPixelFormat failed");
    Glx::destroyWindow(display, window);
    return true;
}

bool RCTemp::tryGetAccelerationOffPixelFormat(int& format) {
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    Display* display = Glx::defaultDisplay();
    const Window window = probeWindow(display);
    if (!window)
        return false;
    // The acceleration pair (the caveat) is left zero, and None ends the list: GLX sees only
    // the first two pairs. Kept so; the rest documents the format once looked for.
    const int attributes[] = {GLX_DRAWABLE_TYPE,
                              GLX_WINDOW_BIT,
                              GLX_RENDER_TYPE,
                              GLX_RGBA_BIT,
                              None,
                              None,
                              GLX_RED_SIZE,
                              8,
                              GLX_GREEN_SIZE,
                              8,
                              GLX_BLUE_SIZE,
                              8,
                              GLX_ALPHA_SIZE,
                              8,
                              GLX_DEPTH_SIZE,
                              16,
                              GLX_STENCIL_SIZE,
                              2,
                              GLX_DOUBLEBUFFER,
                              True,
                              GLX_SAMPLE_BUFFERS,
                              1,
                              GLX_SAMPLES,
                              4,
                              None,
                              None};
    int chosen = 0;
    unsigned int count = 0;
    bool result = false;
    if (!Glx::choosePixelFormatARB(display, attributes, &chosen, &count)) {
        logger->log(L"tryGetAcc: wglChoosePixelFormatARB failed");
        chosen = 0;
    } else {
        if (!Glx::setPixelFormat(display, window, chosen))
            logger->log(L"tryGetAcc:SetPixelFormat failed");
        // Written after a failure too.
        logger->log(L"tryGetAcc:SetPixelFormat succeeded");
        result = true;
    }
    Glx::destroyWindow(display, window);
    format = chosen;
    return result;
}

} // namespace qrngl
