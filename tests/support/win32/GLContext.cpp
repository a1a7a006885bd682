#include <windows.h>

#include "GLContext.h"

#include "qrngl/GL.h"
#include "qrngl/frame/RCTemp.h"

#include <vector>

namespace qrntest {

namespace {

const wchar_t* windowClass() {
    static const wchar_t* name = [] {
        WNDCLASSW c = {};
        c.style = CS_OWNDC;
        c.lpfnWndProc = &DefWindowProcW;
        c.hInstance = GetModuleHandleW(nullptr);
        c.lpszClassName = L"QrnGLTestWindow";
        RegisterClassW(&c);
        return L"QrnGLTestWindow";
    }();
    return name;
}

// A hidden borderless window, so that its client area is exactly the frame, with a helper
// context on it; deactivate() keeps the frame as a bitmap context would.
class WindowImageContext : public qrngl::IRenderContext {
public:
    WindowImageContext(unsigned int width, unsigned int height)
        : m_width(width), m_height(height),
          m_window(CreateWindowExW(0, windowClass(), L"qrn GL test", WS_POPUP, 0, 0,
                                   static_cast<int>(width), static_cast<int>(height), nullptr,
                                   nullptr, GetModuleHandleW(nullptr), nullptr)),
          m_context(m_window, width, height, nullptr) {}
    ~WindowImageContext() override {
        if (m_window)
            DestroyWindow(m_window);
    }

    bool create() override {
        if (!m_window || !m_context.create())
            return false;
        // As the window context does: extension entry points for what the tests draw.
        m_context.activate();
        if (glewInit() != GLEW_OK)
            return false;
        m_image.assign(static_cast<std::size_t>((m_width * 3 + 3) & ~3u) * m_height, 0);
        return true;
    }
    void destroy() override {
        m_context.destroy();
        m_image.clear();
    }
    void activate() override { m_context.activate(); }
    void deactivate() override {
        if (m_context.currentGLRC() && wglGetCurrentContext() == m_context.currentGLRC()) {
            GLint readBuffer = GL_BACK;
            glGetIntegerv(GL_READ_BUFFER, &readBuffer);
            glReadBuffer(GL_BACK);
            glPixelStorei(GL_PACK_ALIGNMENT, 4);
            glReadPixels(0, 0, static_cast<GLsizei>(m_width), static_cast<GLsizei>(m_height),
                         GL_BGR, GL_UNSIGNED_BYTE, m_image.data());
            glReadBuffer(static_cast<GLenum>(readBuffer));
        }
        m_context.deactivate();
    }
    qrngl::HDC currentDC() const override { return m_context.currentDC(); }
    qrngl::HGLRC currentGLRC() const override { return m_context.currentGLRC(); }

    const unsigned char* image() const { return m_image.empty() ? nullptr : m_image.data(); }

private:
    unsigned int m_width;
    unsigned int m_height;
    HWND m_window;
    qrngl::RCTemp m_context;
    std::vector<unsigned char> m_image;
};

} // namespace

std::shared_ptr<qrngl::IRenderContext> makeGLContext(unsigned int width, unsigned int height) {
    return std::make_shared<WindowImageContext>(width, height);
}

const unsigned char* presentedImage(const qrngl::IRenderContext& context) {
    return dynamic_cast<const WindowImageContext&>(context).image();
}

} // namespace qrntest
