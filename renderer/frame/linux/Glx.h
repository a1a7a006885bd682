#pragma once

// The X11 and GLX steps behind the window contexts, each the counterpart of one Windows call
// (named beside it). Handles: an HWND or HDC carries the X window id, an HGLRC the GLXContext;
// a pixel format is the id of a GL-capable X visual (one per GLX frame-buffer configuration).
#include "frame/RCTemp.h"
#include "qrngl/GL.h"

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
};

} // namespace qrngl
