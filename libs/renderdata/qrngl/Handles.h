#pragma once

// Window-system handles without the window-system headers. On Windows these are the very
// types <windows.h> declares; elsewhere they are opaque handles of the platform backend
// (an X11 window, a GLX drawable or EGL surface, a GLX or EGL context).
#ifdef _WIN32
struct HWND__;
struct HDC__;
struct HGLRC__;
typedef struct HWND__* HWND;
typedef struct HDC__* HDC;
typedef struct HGLRC__* HGLRC;
namespace qrngl {
using ::HDC;
using ::HGLRC;
using ::HWND;
} // namespace qrngl
#else
namespace qrngl {
struct HWND__;
struct HDC__;
struct HGLRC__;
typedef HWND__* HWND;
typedef HDC__* HDC;
typedef HGLRC__* HGLRC;
} // namespace qrngl
#endif
