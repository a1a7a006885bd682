#pragma once

// The X11 and GLX steps behind the window contexts, each the counterpart of one Windows call
// (named beside it). Handles: an HWND or HDC carries the X window id, an HGLRC the GLXContext;
// a pixel format is the id of a GL-capable X visual (one per GLX frame-buffer configuration).
#include "qrngl/GL.h"
#include "qrngl/frame/RCTemp.h"
#include "qrngl/qrngl_export.h"

#include <GL/glxew.h>

namespace qrngl {

class Glx {
public:
    Glx() = delete;

    // The dwFlags bits of a pixel format descriptor.
    enum : std::uint32_t {
        DOUBLEBUFFER = 0x1,
        STEREO = 0x2,
        DRAW_TO_WINDOW = 0x4,
        SUPPORT_OPENGL = 0x20,
    };

    // The process's own connection to $DISPLAY, opened on first use; null without a server.
    static Display* defaultDisplay();

    static Window window(HWND handle);
    static Window window(HDC handle);
    static HWND windowHandle(Window window);
    static HDC drawableHandle(Window window);
    static GLXContext context(HGLRC handle);
    static HGLRC contextHandle(GLXContext context);

    // The steps below go through GlxApi's table; each names the Windows call it stands for.
    // CreateWindowExW: an unmapped window of the visual (the screen's own for 0), at least 1x1.
    static Window createHiddenWindow(Display* display, int format, unsigned int width,
                                     unsigned int height);
    // DestroyWindow
    static void destroyWindow(Display* display, Window window);
    // ChoosePixelFormat: glXChooseVisual with the descriptor's buffers; 0 when none matches.
    static int choosePixelFormat(Display* display, const PixelFormatDescriptor& descriptor);
    // SetPixelFormat: an X window's visual is fixed when it is made, so this tells whether the
    // format can draw into it (same depth; drawing goes through the window's visual).
    static bool setPixelFormat(Display* display, Window window, int format);
    // DescribePixelFormat: fills the descriptor; the number of GL visuals, 0 for an unknown one.
    static int describePixelFormat(Display* display, int format, PixelFormatDescriptor* descriptor);
    // wglChoosePixelFormatARB: glXChooseFBConfig (a GLX list, None-terminated); false when the
    // call is missing or fails. No match is a success with count 0.
    static bool choosePixelFormatARB(Display* display, const int* attributes, int* format,
                                     unsigned int* count);
    // wglCreateContext and wglShareLists in one: GLX shares lists when a context is made.
    // shared tells whether the lists of share are shared; without share it is false.
    static GLXContext createContext(Display* display, int format, GLXContext share, bool& shared);
    // wglDeleteContext
    static void deleteContext(Display* display, GLXContext context);
    // wglMakeCurrent: a null context releases the current one; true only when a context was
    // made current, so that a context that could not be created is reported here.
    static bool makeCurrent(Display* display, Window window, GLXContext context);
    // SwapBuffers
    static void swapBuffers(Display* display, Window window);
    // A window of the format's visual showing in the host window: the host itself when it has
    // that visual, else a new mapped child window of it, of the host's size; 0 on failure.
    static Window windowOfFormat(Display* display, Window host, int format);
    // Gives a child window its host's size when they differ.
    static void fitToHost(Display* display, Window child, Window host);
};

// The GLX steps of the contexts as one table that tests replace to reach the failure paths
// (a refused configuration, a driver without pixel buffers). Formats of the pixel-buffer steps
// are GLX frame-buffer configuration ids (GLX_FBCONFIG_ID).
struct QRNGL_EXPORT GlxApi {
    Window (*createHiddenWindow)(Display*, int format, unsigned int width, unsigned int height);
    void (*destroyWindow)(Display*, Window);
    int (*choosePixelFormat)(Display*, const PixelFormatDescriptor&);
    bool (*setPixelFormat)(Display*, Window, int format);
    int (*describePixelFormat)(Display*, int format, PixelFormatDescriptor*);
    bool (*choosePixelFormatARB)(Display*, const int* attributes, int* format, unsigned int* count);
    GLXContext (*createContext)(Display*, int format, GLXContext share, bool& shared);
    void (*deleteContext)(Display*, GLXContext);
    bool (*makeCurrent)(Display*, Window, GLXContext);
    void (*swapBuffers)(Display*, Window);
    Window (*windowOfFormat)(Display*, Window host, int format);
    void (*fitToHost)(Display*, Window child, Window host);

    // GLEW, with a context current: loads the GLX extension entry points too.
    unsigned int (*glewInit)();
    bool (*hasPbuffer)();     // GLX 1.3 pixel buffers (WGLEW_ARB_pbuffer)
    bool (*hasFBConfig)();    // GLX 1.3 frame-buffer configurations (WGLEW_ARB_pixel_format)
    bool (*hasMultisample)(); // GLX_ARB_multisample (WGLEW_ARB_multisample)
    // wglChoosePixelFormatARB for pixel buffers: the first matching configuration's id.
    bool (*chooseFBConfig)(Display*, const int* attributes, int* format, unsigned int* count);
    // wglCreatePbufferARB (its DC is the pbuffer drawable itself); 0 on failure.
    GLXPbuffer (*createPbuffer)(Display*, int format, unsigned int width, unsigned int height);
    // wglDestroyPbufferARB
    void (*destroyPbuffer)(Display*, GLXPbuffer);
    // wglCreateContext and wglShareLists on a configuration (see createContext).
    GLXContext (*createNewContext)(Display*, int format, GLXContext share, bool& shared);
    // wglMakeCurrent on any drawable; a null context releases.
    bool (*makeContextCurrent)(Display*, GLXDrawable, GLXContext);
    // wglGetCurrentContext and wglGetCurrentDC's display.
    GLXContext (*currentContext)();
    Display* (*currentDisplay)();

    // The table every context calls through.
    static const GlxApi& get();
    static void set(const GlxApi& api);
    // The system's own steps.
    static GlxApi system();
};

} // namespace qrngl
