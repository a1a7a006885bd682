#include "qrngl/frame/linux/Glx.h"

#include <X11/Xutil.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace qrngl {

namespace {

// Xlib's default handler ends the process on any protocol error; a refused visual or a window
// that is gone must only make the step fail.
int g_errors = 0;

int countError(Display*, XErrorEvent*) {
    ++g_errors;
    return 0;
}

class ErrorTrap {
public:
    explicit ErrorTrap(Display* display) : m_display(display) {
        XSync(m_display, False);
        m_errors = g_errors;
        m_previous = XSetErrorHandler(&countError);
    }
    ~ErrorTrap() {
        XSync(m_display, False);
        XSetErrorHandler(m_previous);
    }
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;

    bool failed() {
        XSync(m_display, False);
        return g_errors != m_errors;
    }

private:
    Display* m_display;
    int m_errors;
    XErrorHandler m_previous;
};

XVisualInfo* visualInfo(Display* display, int format) {
    if (!display || format == 0)
        return nullptr;
    XVisualInfo pattern = {};
    pattern.visualid = static_cast<VisualID>(format);
    int count = 0;
    return XGetVisualInfo(display, VisualIDMask, &pattern, &count);
}

int glConfig(Display* display, XVisualInfo* visual, int attribute) {
    int value = 0;
    return glXGetConfig(display, visual, attribute, &value) == 0 ? value : 0;
}

// Bit count and position of a channel mask of a TrueColor visual.
void channel(unsigned long mask, std::uint8_t& bits, std::uint8_t& shift) {
    bits = 0;
    shift = 0;
    if (!mask)
        return;
    while (!(mask & 1)) {
        mask >>= 1;
        ++shift;
    }
    while (mask & 1) {
        mask >>= 1;
        ++bits;
    }
}

// Makes a context with make(lists), sharing the lists of share where the server lets it; lists
// that cannot be shared leave a working context without them. shared tells which it was.
template <typename Make>
GLXContext createSharing(Display* display, GLXContext share, bool& shared, Make make) {
    shared = false;
    const GLXContext attempts[] = {share, nullptr};
    for (std::size_t i = share ? 0 : 1; i < 2; ++i) {
        ErrorTrap trap(display);
        GLXContext context = make(attempts[i]);
        if (trap.failed() && context) {
            glXDestroyContext(display, context);
            context = nullptr;
        }
        if (context) {
            shared = attempts[i] != nullptr;
            return context;
        }
    }
    return nullptr;
}

} // namespace

Display* Glx::defaultDisplay() {
    // Kept open for the life of the process: contexts and their lists live on it.
    static Display* display = XOpenDisplay(nullptr);
    return display;
}

Window Glx::window(HWND handle) {
    return static_cast<Window>(reinterpret_cast<std::uintptr_t>(handle));
}

Window Glx::window(HDC handle) {
    return static_cast<Window>(reinterpret_cast<std::uintptr_t>(handle));
}

HWND Glx::windowHandle(Window window) {
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(window));
}

HDC Glx::drawableHandle(Window window) {
    return reinterpret_cast<HDC>(static_cast<std::uintptr_t>(window));
}

GLXContext Glx::context(HGLRC handle) {
    return reinterpret_cast<GLXContext>(handle);
}

HGLRC Glx::contextHandle(GLXContext context) {
    return reinterpret_cast<HGLRC>(context);
}

// The system's own steps, behind the table.
namespace {

Window systemCreateHiddenWindow(Display* display, int format, unsigned int width,
                                unsigned int height) {
    if (!display)
        return 0;
    const int screen = DefaultScreen(display);
    const Window root = RootWindow(display, screen);
    XVisualInfo* info = visualInfo(display, format);
    Visual* visual = info ? info->visual : DefaultVisual(display, screen);
    const int depth = info ? info->depth : DefaultDepth(display, screen);
    ErrorTrap trap(display);
    XSetWindowAttributes attributes = {};
    attributes.colormap = XCreateColormap(display, root, visual, AllocNone);
    attributes.border_pixel = 0;
    attributes.override_redirect = True;
    // Never mapped: X allows no empty window, so 0 by 0 becomes 1 by 1.
    Window window = XCreateWindow(display, root, 0, 0, std::max(width, 1u), std::max(height, 1u), 0,
                                  depth, InputOutput, visual,
                                  CWColormap | CWBorderPixel | CWOverrideRedirect, &attributes);
    XFreeColormap(display, attributes.colormap);
    if (info)
        XFree(info);
    if (trap.failed())
        return 0;
    return window;
}

void systemDestroyWindow(Display* display, Window window) {
    if (!display || !window)
        return;
    ErrorTrap trap(display);
    XDestroyWindow(display, window);
}

int systemChoosePixelFormat(Display* display, const PixelFormatDescriptor& descriptor) {
    if (!display)
        return 0;
    std::vector<int> attributes;
    if (descriptor.iPixelType == 0)
        attributes.push_back(GLX_RGBA);
    if (descriptor.dwFlags & Glx::DOUBLEBUFFER)
        attributes.push_back(GLX_DOUBLEBUFFER);
    if (descriptor.dwFlags & Glx::STEREO)
        attributes.push_back(GLX_STEREO);
    const int perChannel = descriptor.cColorBits / 3;
    for (int channel : {GLX_RED_SIZE, GLX_GREEN_SIZE, GLX_BLUE_SIZE})
        attributes.insert(attributes.end(), {channel, perChannel});
    attributes.insert(attributes.end(),
                      {GLX_ALPHA_SIZE, descriptor.cAlphaBits, GLX_DEPTH_SIZE, descriptor.cDepthBits,
                       GLX_STENCIL_SIZE, descriptor.cStencilBits, None});
    XVisualInfo* info = glXChooseVisual(display, DefaultScreen(display), attributes.data());
    if (!info)
        return 0;
    const int format = static_cast<int>(info->visualid);
    XFree(info);
    return format;
}

bool systemSetPixelFormat(Display* display, Window window, int format) {
    XVisualInfo* info = visualInfo(display, format);
    if (!info)
        return false;
    const int depth = info->depth;
    XFree(info);
    if (!window)
        return false;
    ErrorTrap trap(display);
    XWindowAttributes attributes = {};
    const Status status = XGetWindowAttributes(display, window, &attributes);
    return !trap.failed() && status != 0 && attributes.depth == depth;
}

int systemDescribePixelFormat(Display* display, int format, PixelFormatDescriptor* descriptor) {
    XVisualInfo* info = visualInfo(display, format);
    if (!info)
        return 0;
    if (!glConfig(display, info, GLX_USE_GL)) {
        XFree(info);
        return 0;
    }
    PixelFormatDescriptor d = {};
    d.nSize = sizeof d;
    d.nVersion = 1;
    d.dwFlags = Glx::DRAW_TO_WINDOW | Glx::SUPPORT_OPENGL;
    if (glConfig(display, info, GLX_DOUBLEBUFFER))
        d.dwFlags |= Glx::DOUBLEBUFFER;
    if (glConfig(display, info, GLX_STEREO))
        d.dwFlags |= Glx::STEREO;
    d.iPixelType = glConfig(display, info, GLX_RGBA) ? 0 : 1;
    channel(info->red_mask, d.cRedBits, d.cRedShift);
    channel(info->green_mask, d.cGreenBits, d.cGreenShift);
    channel(info->blue_mask, d.cBlueBits, d.cBlueShift);
    d.cColorBits = static_cast<std::uint8_t>(d.cRedBits + d.cGreenBits + d.cBlueBits);
    d.cAlphaBits = static_cast<std::uint8_t>(glConfig(display, info, GLX_ALPHA_SIZE));
    if (d.cAlphaBits)
        d.cAlphaShift = std::max({static_cast<std::uint8_t>(d.cRedShift + d.cRedBits),
                                  static_cast<std::uint8_t>(d.cGreenShift + d.cGreenBits),
                                  static_cast<std::uint8_t>(d.cBlueShift + d.cBlueBits)});
    d.cAccumRedBits = static_cast<std::uint8_t>(glConfig(display, info, GLX_ACCUM_RED_SIZE));
    d.cAccumGreenBits = static_cast<std::uint8_t>(glConfig(display, info, GLX_ACCUM_GREEN_SIZE));
    d.cAccumBlueBits = static_cast<std::uint8_t>(glConfig(display, info, GLX_ACCUM_BLUE_SIZE));
    d.cAccumAlphaBits = static_cast<std::uint8_t>(glConfig(display, info, GLX_ACCUM_ALPHA_SIZE));
    d.cAccumBits = static_cast<std::uint8_t>(d.cAccumRedBits + d.cAccumGreenBits +
                                             d.cAccumBlueBits + d.cAccumAlphaBits);
    d.cDepthBits = static_cast<std::uint8_t>(glConfig(display, info, GLX_DEPTH_SIZE));
    d.cStencilBits = static_cast<std::uint8_t>(glConfig(display, info, GLX_STENCIL_SIZE));
    d.cAuxBuffers = static_cast<std::uint8_t>(glConfig(display, info, GLX_AUX_BUFFERS));
    XFree(info);
    *descriptor = d;

    // Like Windows, the number of formats there are.
    XVisualInfo pattern = {};
    pattern.screen = DefaultScreen(display);
    int count = 0;
    XVisualInfo* all = XGetVisualInfo(display, VisualScreenMask, &pattern, &count);
    int glCount = 0;
    for (int i = 0; i < count; ++i)
        if (glConfig(display, &all[i], GLX_USE_GL))
            ++glCount;
    if (all)
        XFree(all);
    return std::max(glCount, 1);
}

bool systemChoosePixelFormatARB(Display* display, const int* attributes, int* format,
                                unsigned int* count) {
    // Straight from libGL, so that probing needs no extension loading first.
    static const auto chooseConfig = reinterpret_cast<PFNGLXCHOOSEFBCONFIGPROC>(
        glXGetProcAddressARB(reinterpret_cast<const GLubyte*>("glXChooseFBConfig")));
    static const auto configAttribute = reinterpret_cast<PFNGLXGETFBCONFIGATTRIBPROC>(
        glXGetProcAddressARB(reinterpret_cast<const GLubyte*>("glXGetFBConfigAttrib")));
    if (!display || !chooseConfig || !configAttribute)
        return false;
    ErrorTrap trap(display);
    int n = 0;
    GLXFBConfig* configs = chooseConfig(display, DefaultScreen(display), attributes, &n);
    if (trap.failed()) {
        if (configs)
            XFree(configs);
        return false;
    }
    *count = 0;
    if (configs && n > 0) {
        int visual = 0;
        configAttribute(display, configs[0], GLX_VISUAL_ID, &visual);
        *format = visual;
        *count = 1;
    }
    if (configs)
        XFree(configs);
    return true;
}

GLXContext systemCreateContext(Display* display, int format, GLXContext share, bool& shared) {
    shared = false;
    XVisualInfo* info = visualInfo(display, format);
    if (!info)
        return nullptr;
    GLXContext context = createSharing(display, share, shared, [&](GLXContext lists) {
        return glXCreateContext(display, info, lists, True);
    });
    XFree(info);
    return context;
}

void systemDeleteContext(Display* display, GLXContext context) {
    if (display && context)
        glXDestroyContext(display, context);
}

bool systemMakeCurrent(Display* display, Window window, GLXContext context) {
    if (!display)
        return false;
    // A release refused by the server (the thread's current context is another API's, such
    // as EGL's) fails that step only.
    ErrorTrap trap(display);
    if (!context) {
        glXMakeCurrent(display, None, nullptr);
        return false;
    }
    const Bool made = glXMakeCurrent(display, window, context);
    return !trap.failed() && made;
}

void systemSwapBuffers(Display* display, Window window) {
    if (!display || !window)
        return;
    if (glXGetCurrentDrawable() == window) {
        glXSwapBuffers(display, window);
        return;
    }
    // A drawable that no context draws to is unknown to GLX: the request fails.
    ErrorTrap trap(display);
    glXSwapBuffers(display, window);
}

Window systemWindowOfFormat(Display* display, Window host, int format) {
    XVisualInfo* info = visualInfo(display, format);
    if (!info || !host) {
        if (info)
            XFree(info);
        return 0;
    }
    ErrorTrap trap(display);
    XWindowAttributes attributes = {};
    Window window = 0;
    if (XGetWindowAttributes(display, host, &attributes)) {
        if (XVisualIDFromVisual(attributes.visual) == info->visualid) {
            window = host;
        } else {
            XSetWindowAttributes set = {};
            set.colormap = XCreateColormap(display, host, info->visual, AllocNone);
            set.border_pixel = 0;
            // Input goes to the host: the child only shows the frames.
            set.event_mask = NoEventMask;
            set.do_not_propagate_mask = NoEventMask;
            window = XCreateWindow(display, host, 0, 0, std::max(attributes.width, 1),
                                   std::max(attributes.height, 1), 0, info->depth, InputOutput,
                                   info->visual, CWColormap | CWBorderPixel | CWEventMask, &set);
            XFreeColormap(display, set.colormap);
            if (window)
                XMapWindow(display, window);
        }
    }
    XFree(info);
    if (trap.failed())
        return 0;
    return window;
}

void systemFitToHost(Display* display, Window child, Window host) {
    if (!display || !child || !host || child == host)
        return;
    ErrorTrap trap(display);
    XWindowAttributes h = {}, c = {};
    if (XGetWindowAttributes(display, host, &h) && XGetWindowAttributes(display, child, &c) &&
        (h.width != c.width || h.height != c.height))
        XResizeWindow(display, child, static_cast<unsigned int>(std::max(h.width, 1)),
                      static_cast<unsigned int>(std::max(h.height, 1)));
}

} // namespace

} // namespace qrngl

namespace qrngl {

namespace {

// The pixel-buffer steps straight from libGL's GLX 1.3 entry points.
template <typename F>
F glxEntry(const char* name) {
    return reinterpret_cast<F>(glXGetProcAddressARB(reinterpret_cast<const GLubyte*>(name)));
}

// The configuration of an id. Looked up among all of them: Mesa's glXChooseFBConfig does not
// honour GLX_FBCONFIG_ID alone.
GLXFBConfig fbConfig(Display* display, int id) {
    static const auto configs = glxEntry<PFNGLXGETFBCONFIGSPROC>("glXGetFBConfigs");
    static const auto configAttribute =
        glxEntry<PFNGLXGETFBCONFIGATTRIBPROC>("glXGetFBConfigAttrib");
    if (!display || !configs || !configAttribute || id == 0)
        return nullptr;
    int n = 0;
    GLXFBConfig* all = configs(display, DefaultScreen(display), &n);
    GLXFBConfig config = nullptr;
    for (int i = 0; all && i < n && !config; ++i) {
        int value = 0;
        if (configAttribute(display, all[i], GLX_FBCONFIG_ID, &value) == Success && value == id)
            config = all[i];
    }
    if (all)
        XFree(all);
    return config;
}

unsigned int systemGlewInit() {
    return glewInit();
}

bool systemHasGlx13() {
    return GLXEW_VERSION_1_3 != GL_FALSE;
}

bool systemHasMultisample() {
    return GLXEW_ARB_multisample != GL_FALSE;
}

bool systemChooseFBConfig(Display* display, const int* attributes, int* format,
                          unsigned int* count) {
    static const auto chooseConfig = glxEntry<PFNGLXCHOOSEFBCONFIGPROC>("glXChooseFBConfig");
    static const auto configAttribute =
        glxEntry<PFNGLXGETFBCONFIGATTRIBPROC>("glXGetFBConfigAttrib");
    if (!display || !chooseConfig || !configAttribute)
        return false;
    int n = 0;
    GLXFBConfig* configs = chooseConfig(display, DefaultScreen(display), attributes, &n);
    *count = 0;
    if (configs && n > 0) {
        int id = 0;
        configAttribute(display, configs[0], GLX_FBCONFIG_ID, &id);
        *format = id;
        *count = 1;
    }
    if (configs)
        XFree(configs);
    return true;
}

GLXPbuffer systemCreatePbuffer(Display* display, int format, unsigned int width,
                               unsigned int height) {
    static const auto create = glxEntry<PFNGLXCREATEPBUFFERPROC>("glXCreatePbuffer");
    GLXFBConfig config = fbConfig(display, format);
    if (!create || !config)
        return 0;
    // Not preserved and not the largest available: a buffer of exactly the size asked, or none.
    const int attributes[] = {GLX_PBUFFER_WIDTH,
                              static_cast<int>(width),
                              GLX_PBUFFER_HEIGHT,
                              static_cast<int>(height),
                              GLX_LARGEST_PBUFFER,
                              False,
                              None};
    ErrorTrap trap(display);
    GLXPbuffer pbuffer = create(display, config, attributes);
    return trap.failed() ? 0 : pbuffer;
}

void systemDestroyPbuffer(Display* display, GLXPbuffer pbuffer) {
    static const auto destroy = glxEntry<PFNGLXDESTROYPBUFFERPROC>("glXDestroyPbuffer");
    if (!display || !pbuffer || !destroy)
        return;
    ErrorTrap trap(display);
    destroy(display, pbuffer);
}

GLXContext systemCreateNewContext(Display* display, int format, GLXContext share, bool& shared) {
    static const auto create = glxEntry<PFNGLXCREATENEWCONTEXTPROC>("glXCreateNewContext");
    shared = false;
    GLXFBConfig config = fbConfig(display, format);
    if (!create || !config)
        return nullptr;
    return createSharing(display, share, shared, [&](GLXContext lists) {
        return create(display, config, GLX_RGBA_TYPE, lists, True);
    });
}

bool systemMakeContextCurrent(Display* display, GLXDrawable drawable, GLXContext context) {
    static const auto makeCurrent = glxEntry<PFNGLXMAKECONTEXTCURRENTPROC>("glXMakeContextCurrent");
    if (!display || !makeCurrent)
        return false;
    if (!context) {
        makeCurrent(display, None, None, nullptr);
        return false;
    }
    ErrorTrap trap(display);
    const Bool made = makeCurrent(display, drawable, drawable, context);
    return !trap.failed() && made;
}

GLXContext systemCurrentContext() {
    return glXGetCurrentContext();
}

Display* systemCurrentDisplay() {
    return glXGetCurrentDisplay();
}

GlxApi& current() {
    static GlxApi api = GlxApi::system();
    return api;
}

} // namespace

GlxApi GlxApi::system() {
    GlxApi api;
    api.createHiddenWindow = &systemCreateHiddenWindow;
    api.destroyWindow = &systemDestroyWindow;
    api.choosePixelFormat = &systemChoosePixelFormat;
    api.setPixelFormat = &systemSetPixelFormat;
    api.describePixelFormat = &systemDescribePixelFormat;
    api.choosePixelFormatARB = &systemChoosePixelFormatARB;
    api.createContext = &systemCreateContext;
    api.deleteContext = &systemDeleteContext;
    api.makeCurrent = &systemMakeCurrent;
    api.swapBuffers = &systemSwapBuffers;
    api.windowOfFormat = &systemWindowOfFormat;
    api.fitToHost = &systemFitToHost;
    api.glewInit = &systemGlewInit;
    api.hasPbuffer = &systemHasGlx13;
    api.hasFBConfig = &systemHasGlx13;
    api.hasMultisample = &systemHasMultisample;
    api.chooseFBConfig = &systemChooseFBConfig;
    api.createPbuffer = &systemCreatePbuffer;
    api.destroyPbuffer = &systemDestroyPbuffer;
    api.createNewContext = &systemCreateNewContext;
    api.makeContextCurrent = &systemMakeContextCurrent;
    api.currentContext = &systemCurrentContext;
    api.currentDisplay = &systemCurrentDisplay;
    return api;
}

const GlxApi& GlxApi::get() {
    return current();
}

void GlxApi::set(const GlxApi& api) {
    current() = api;
}

Window Glx::createHiddenWindow(Display* display, int format, unsigned int width,
                               unsigned int height) {
    return GlxApi::get().createHiddenWindow(display, format, width, height);
}

void Glx::destroyWindow(Display* display, Window window) {
    GlxApi::get().destroyWindow(display, window);
}

int Glx::choosePixelFormat(Display* display, const PixelFormatDescriptor& descriptor) {
    return GlxApi::get().choosePixelFormat(display, descriptor);
}

bool Glx::setPixelFormat(Display* display, Window window, int format) {
    return GlxApi::get().setPixelFormat(display, window, format);
}

int Glx::describePixelFormat(Display* display, int format, PixelFormatDescriptor* descriptor) {
    return GlxApi::get().describePixelFormat(display, format, descriptor);
}

bool Glx::choosePixelFormatARB(Display* display, const int* attributes, int* format,
                               unsigned int* count) {
    return GlxApi::get().choosePixelFormatARB(display, attributes, format, count);
}

GLXContext Glx::createContext(Display* display, int format, GLXContext share, bool& shared) {
    return GlxApi::get().createContext(display, format, share, shared);
}

void Glx::deleteContext(Display* display, GLXContext context) {
    GlxApi::get().deleteContext(display, context);
}

bool Glx::makeCurrent(Display* display, Window window, GLXContext context) {
    return GlxApi::get().makeCurrent(display, window, context);
}

void Glx::swapBuffers(Display* display, Window window) {
    GlxApi::get().swapBuffers(display, window);
}

Window Glx::windowOfFormat(Display* display, Window host, int format) {
    return GlxApi::get().windowOfFormat(display, host, format);
}

void Glx::fitToHost(Display* display, Window child, Window host) {
    GlxApi::get().fitToHost(display, child, host);
}

} // namespace qrngl
