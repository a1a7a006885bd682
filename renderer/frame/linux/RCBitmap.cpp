// Headless backend: an EGL context without a display server (Mesa's surfaceless platform when
// it is there) drawing into a frame buffer object; deactivate() copies the frame into the
// memory image, as a bitmap context's frame lands in its DIB.
#include "qrngl/frame/RCBitmap.h"

#include "qrngl/GL.h"
#include "qrngl/frame/FrameBufferObject.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstring>
#include <vector>

namespace qrngl {

namespace {

struct Surface {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLSurface pbuffer = EGL_NO_SURFACE; // only where surfaceless contexts are missing
    FrameBufferObject target;
    std::vector<unsigned char> image;
};

// EGL displays are per process: every bitmap context shares one, terminated with the last.
int g_displayUsers = 0;
EGLDisplay g_display = EGL_NO_DISPLAY;

bool hasExtension(const char* list, const char* name) {
    if (!list)
        return false;
    std::size_t n = std::strlen(name);
    for (const char* p = std::strstr(list, name); p; p = std::strstr(p + 1, name))
        if ((p == list || p[-1] == ' ') && (p[n] == ' ' || p[n] == '\0'))
            return true;
    return false;
}

EGLDisplay acquireDisplay() {
    if (g_displayUsers++ > 0)
        return g_display;
    const char* client = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    EGLDisplay d = EGL_NO_DISPLAY;
    if (hasExtension(client, "EGL_MESA_platform_surfaceless")) {
        auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
            eglGetProcAddress("eglGetPlatformDisplayEXT"));
        if (getPlatformDisplay)
            d = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    }
    if (d == EGL_NO_DISPLAY)
        d = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    EGLint major = 0, minor = 0;
    if (d != EGL_NO_DISPLAY && !eglInitialize(d, &major, &minor))
        d = EGL_NO_DISPLAY;
    g_display = d;
    return d;
}

void releaseDisplay() {
    if (g_displayUsers > 0 && --g_displayUsers == 0 && g_display != EGL_NO_DISPLAY) {
        eglTerminate(g_display);
        g_display = EGL_NO_DISPLAY;
    }
}

Surface* surfaceOf(void* p) {
    return static_cast<Surface*>(p);
}

} // namespace

RCBitmap::RCBitmap(unsigned int width, unsigned int height)
    : m_dc(nullptr), m_bitmap(nullptr), m_rc(nullptr), m_width(width ? width : 1),
      m_height(height ? height : 1), m_bits(nullptr) {}

RCBitmap::~RCBitmap() {
    destroy();
}

bool RCBitmap::createBitmap() {
    auto* s = new Surface;
    s->image.assign(static_cast<std::size_t>(stride()) * m_height, 0);
    m_bitmap = s;
    m_bits = s->image.data();
    s->display = acquireDisplay();
    m_dc = reinterpret_cast<HDC>(s->display);
    return s->display != EGL_NO_DISPLAY;
}

bool RCBitmap::setPixelFormat() {
    Surface* s = surfaceOf(m_bitmap);
    if (!eglBindAPI(EGL_OPENGL_API))
        return false;
    const EGLint attributes[] = {EGL_RENDERABLE_TYPE,
                                 EGL_OPENGL_BIT,
                                 EGL_SURFACE_TYPE,
                                 EGL_PBUFFER_BIT,
                                 EGL_RED_SIZE,
                                 8,
                                 EGL_GREEN_SIZE,
                                 8,
                                 EGL_BLUE_SIZE,
                                 8,
                                 EGL_DEPTH_SIZE,
                                 16,
                                 EGL_STENCIL_SIZE,
                                 2,
                                 EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglChooseConfig(s->display, attributes, &config, 1, &count) || count < 1)
        return false;
    EGLContext context = eglCreateContext(s->display, config, EGL_NO_CONTEXT, nullptr);
    if (context == EGL_NO_CONTEXT)
        return false;
    m_rc = reinterpret_cast<HGLRC>(context);
    if (!hasExtension(eglQueryString(s->display, EGL_EXTENSIONS), "EGL_KHR_surfaceless_context")) {
        const EGLint size[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
        s->pbuffer = eglCreatePbufferSurface(s->display, config, size);
    }
    return true;
}

bool RCBitmap::create() {
    if (m_rc)
        return true;
    if (!createBitmap() || !setPixelFormat()) {
        destroy();
        return false;
    }
    Surface* s = surfaceOf(m_bitmap);
    EGLContext context = reinterpret_cast<EGLContext>(m_rc);
    if (!eglMakeCurrent(s->display, s->pbuffer, s->pbuffer, context)) {
        destroy();
        return false;
    }
    // Built for GLX, GLEW reports a missing GLX display once it has loaded the GL entry points.
    GLenum glew = glewInit();
    if ((glew != GLEW_OK && glew != 4 /* GLEW_ERROR_NO_GLX_DISPLAY */) || !glGenFramebuffers) {
        destroy();
        return false;
    }
    if (!s->target.create(m_width, m_height, 0, true)) {
        destroy();
        return false;
    }
    glDrawBuffer(GL_COLOR_ATTACHMENT0);
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glViewport(0, 0, static_cast<GLsizei>(m_width), static_cast<GLsizei>(m_height));
    activate();
    return true;
}

void RCBitmap::destroy() {
    Surface* s = surfaceOf(m_bitmap);
    if (!s)
        return;
    if (m_rc) {
        EGLContext context = reinterpret_cast<EGLContext>(m_rc);
        if (s->target.framebuffer && eglMakeCurrent(s->display, s->pbuffer, s->pbuffer, context))
            s->target.destroy();
        eglMakeCurrent(s->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(s->display, context);
        m_rc = nullptr;
    }
    if (s->pbuffer != EGL_NO_SURFACE)
        eglDestroySurface(s->display, s->pbuffer);
    if (s->display != EGL_NO_DISPLAY)
        releaseDisplay();
    delete s;
    m_bitmap = nullptr;
    m_bits = nullptr;
    m_dc = nullptr;
}

void RCBitmap::activate() {
    Surface* s = surfaceOf(m_bitmap);
    if (!s || !m_rc)
        return;
    eglMakeCurrent(s->display, s->pbuffer, s->pbuffer, reinterpret_cast<EGLContext>(m_rc));
    glBindFramebuffer(GL_FRAMEBUFFER, s->target.framebuffer);
}

void RCBitmap::deactivate() {
    Surface* s = surfaceOf(m_bitmap);
    if (!s || !m_rc || eglGetCurrentContext() != reinterpret_cast<EGLContext>(m_rc))
        return;
    // The frame lands in the memory image, bottom-up rows of BGR padded to four bytes.
    glBindFramebuffer(GL_FRAMEBUFFER, s->target.framebuffer);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, static_cast<GLsizei>(m_width), static_cast<GLsizei>(m_height), GL_BGR,
                 GL_UNSIGNED_BYTE, s->image.data());
    eglMakeCurrent(s->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

HDC RCBitmap::currentDC() const {
    return m_dc;
}

HGLRC RCBitmap::currentGLRC() const {
    return m_rc;
}

} // namespace qrngl
