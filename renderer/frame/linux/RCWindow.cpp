// The on-screen context of the host's X window, through GLX (see Glx.h for the counterpart of
// each Windows step).
#include "qrngl/frame/RCWindow.h"

#include "qrn/LogManager.h"
#include "qrngl/frame/RCTemp.h"
#include "qrngl/frame/linux/ExposeForwarder.h"
#include "qrngl/frame/linux/Glx.h"

namespace qrngl {

namespace {

Display* orDefault(_XDisplay* display) {
    return display ? display : Glx::defaultDisplay();
}

} // namespace

RCWindow::RCWindow(HWND window, std::shared_ptr<IRenderContext> parent)
    : m_window(window), m_dc(nullptr), m_rc(nullptr), m_parent(std::move(parent)),
      m_display(nullptr) {}

RCWindow::RCWindow(HDISPLAY display, HWND window, std::shared_ptr<IRenderContext> parent)
    : m_window(window), m_dc(nullptr), m_rc(nullptr), m_parent(std::move(parent)),
      m_display(display) {}

RCWindow::RCWindow(const RCWindow&) = default;
RCWindow& RCWindow::operator=(const RCWindow&) = default;
RCWindow::~RCWindow() = default;

bool RCWindow::create() {
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    m_display = orDefault(m_display);

    // GLEW needs a current context before the real format can be chosen.
    RCTemp temp(m_display, 0, 0, std::shared_ptr<IRenderContext>());
    if (!temp.create()) {
        temp.destroy();
        return false;
    }
    temp.activate();
    const GlxApi& glx = GlxApi::get();
    if (glx.glewInit() != GLEW_OK) {
        // The temporary context is left as it is.
        logger->log(L"RCWindow:glewInit() failed");
        return false;
    }
    logger->log(L"RCWindow:glewInit() success");
    logOpenglInfo();
    PIXELFORMATDESCRIPTOR descriptor = temp;
    // deactivate then destroy: swap, release twice, delete, destroy the window.
    temp.deactivate();
    temp.destroy();

    int format = 0;
    if (glx.hasFBConfig() && glx.hasMultisample()) {
        const int attributes[] = {GLX_DRAWABLE_TYPE,
                                  GLX_WINDOW_BIT,
                                  GLX_RENDER_TYPE,
                                  GLX_RGBA_BIT,
                                  GLX_CONFIG_CAVEAT,
                                  GLX_NONE, // full acceleration
                                  GLX_X_RENDERABLE,
                                  True,
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
        unsigned int count = 0;
        // Once GLX offers configurations, a refusal is final: no classic retry.
        if (!Glx::choosePixelFormatARB(m_display, attributes, &format, &count)) {
            logger->log(L"RCWindow: ARB pixel format selection failed");
            return false;
        }
        logger->log(L"RCWindow: ARB pixel format selected");
    } else {
        format = Glx::choosePixelFormat(m_display, descriptor);
        if (format == 0) {
            logger->log(L"RCWindow:pixel format selection failed");
            return false;
        }
        logger->log(L"RCWindow: Normal pixel format selected");
    }
    // The template, also on the ARB path.
    RCTemp::pixelFormatDescriptorInfo(descriptor);
    // Drivers draw only through the visual a window was made with (Mesa alone tolerates
    // another): where the host's differs, a child window of the chosen visual shows the frames.
    const Window host = Glx::window(m_window);
    const Window shown = Glx::windowOfFormat(m_display, host, format);
    m_dc = Glx::drawableHandle(shown ? shown : host);
    if (shown && shown != host && !ExposeForwarder::add(m_display, shown, host))
        logger->log(L"RCWindow: exposures of the child window cannot reach the host");
    if (!Glx::setPixelFormat(m_display, Glx::window(m_dc), format)) {
        logger->log(L"RCWindow:pixel format set failed");
        return false;
    }
    bool shared = false;
    m_rc = Glx::contextHandle(Glx::createContext(
        m_display, format, m_parent ? Glx::context(m_parent->currentGLRC()) : nullptr, shared));
    logger->log(m_rc ? L"RCWindow:opengl context created"
                     : L"RCWindow:opengl context creation failed");
    if (shared)
        logger->log(L"RCWindow:Shared opengl context");
    if (Glx::makeCurrent(m_display, Glx::window(m_dc), Glx::context(m_rc))) {
        activate();
        return true;
    }
    Glx::deleteContext(m_display, Glx::context(m_rc));
    m_rc = nullptr;
    logger->log(L"RCWindow:setting opengl context current failed");
    return false;
}

void RCWindow::destroy() {
    Display* display = orDefault(m_display);
    deactivate();
    Glx::makeCurrent(display, Glx::window(m_dc), nullptr);
    Glx::deleteContext(display, Glx::context(m_rc));
    m_rc = nullptr;
    // The host's window is never destroyed; a child made for the visual is.
    if (m_dc && Glx::window(m_dc) != Glx::window(m_window)) {
        ExposeForwarder::remove(Glx::window(m_dc));
        Glx::destroyWindow(display, Glx::window(m_dc));
    }
    m_dc = nullptr;
}

void RCWindow::activate() {
    Display* display = orDefault(m_display);
    // A child follows the host window's size, which the host changes without telling.
    if (m_dc && Glx::window(m_dc) != Glx::window(m_window))
        Glx::fitToHost(display, Glx::window(m_dc), Glx::window(m_window));
    Glx::makeCurrent(display, Glx::window(m_dc), Glx::context(m_rc));
}

void RCWindow::deactivate() {
    Glx::swapBuffers(orDefault(m_display), Glx::window(m_dc));
}

HDC RCWindow::currentDC() const {
    return m_dc;
}

HGLRC RCWindow::currentGLRC() const {
    return m_rc;
}

} // namespace qrngl
