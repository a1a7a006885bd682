#pragma once

// Window-system handles without the window-system headers; the one public header where the
// platforms differ. On Windows HWND, HDC, HGLRC and PIXELFORMATDESCRIPTOR are the very types
// <windows.h> declares; elsewhere they are opaque handles of the platform backend (an X11
// window, a GLX drawable or EGL surface, a GLX or EGL context) and the backend's own pixel
// format descriptor (qrngl::PixelFormatDescriptor). HFONT is a GDI font on Windows and a
// handle to a FreeType face elsewhere. HDISPLAY is the window system's
// connection: Xlib's Display on X11; Windows has one window system and no such handle (null).
#ifdef _WIN32
struct HWND__;
struct HDC__;
struct HGLRC__;
struct HFONT__;
typedef struct HWND__* HWND;
typedef struct HDC__* HDC;
typedef struct HGLRC__* HGLRC;
typedef struct HFONT__* HFONT;
struct tagPIXELFORMATDESCRIPTOR;
typedef struct tagPIXELFORMATDESCRIPTOR PIXELFORMATDESCRIPTOR;
namespace qrngl {
using ::HDC;
using ::HFONT;
using ::HGLRC;
using ::HWND;
using ::PIXELFORMATDESCRIPTOR;
struct HDISPLAY__;
typedef HDISPLAY__* HDISPLAY;
} // namespace qrngl
#else
struct _XDisplay;
namespace qrngl {
struct HWND__;
struct HDC__;
struct HGLRC__;
struct HFONT__;
typedef HWND__* HWND;
typedef HDC__* HDC;
typedef HGLRC__* HGLRC;
typedef HFONT__* HFONT;
struct PixelFormatDescriptor;
typedef PixelFormatDescriptor PIXELFORMATDESCRIPTOR;
typedef ::_XDisplay* HDISPLAY;
} // namespace qrngl
#endif
