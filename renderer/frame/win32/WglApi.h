#pragma once

// Windows only: the window-system calls of the render contexts and the text renderers, as one table
// that tests replace to reach the failure paths (a refused pixel format, a driver without the ARB
// extensions).
#include <windows.h>

#include "qrngl/GL.h"

#include <GL/wglew.h>

#include "qrngl/qrngl_export.h"

namespace qrngl {

struct QRNGL_EXPORT WglApi {
    // USER
    HMODULE(WINAPI* getModuleHandleW)(LPCWSTR moduleName);
    HWND(WINAPI* createWindowExW)
    (DWORD exStyle, LPCWSTR className, LPCWSTR windowName, DWORD style, int x, int y, int width,
     int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID param);
    BOOL(WINAPI* destroyWindow)(HWND window);
    HDC(WINAPI* getDC)(HWND window);
    int(WINAPI* releaseDC)(HWND window, HDC dc);
    // GDI
    int(WINAPI* choosePixelFormat)(HDC dc, const PIXELFORMATDESCRIPTOR* descriptor);
    BOOL(WINAPI* setPixelFormat)(HDC dc, int format, const PIXELFORMATDESCRIPTOR* descriptor);
    int(WINAPI* describePixelFormat)(HDC dc, int format, UINT size,
                                     LPPIXELFORMATDESCRIPTOR descriptor);
    BOOL(WINAPI* swapBuffers)(HDC dc);
    HDC(WINAPI* createCompatibleDC)(HDC dc);
    HBITMAP(WINAPI* createDIBSection)
    (HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD offset);
    HGDIOBJ(WINAPI* selectObject)(HDC dc, HGDIOBJ object);
    BOOL(WINAPI* deleteObject)(HGDIOBJ object);
    // GDI fonts, for the glyph lists of the texts
    HFONT(WINAPI* createFontIndirectW)(const LOGFONTW* font);
    int(WINAPI* getTextFaceW)(HDC dc, int count, LPWSTR name);
    // WGL
    HGLRC(WINAPI* createContext)(HDC dc);
    BOOL(WINAPI* deleteContext)(HGLRC rc);
    BOOL(WINAPI* makeCurrent)(HDC dc, HGLRC rc);
    BOOL(WINAPI* shareLists)(HGLRC parent, HGLRC rc);
    HDC(WINAPI* getCurrentDC)();
    BOOL(WINAPI* useFontOutlinesW)
    (HDC dc, DWORD first, DWORD count, DWORD listBase, FLOAT deviation, FLOAT extrusion, int format,
     LPGLYPHMETRICSFLOAT metrics);
    // WGL_ARB_pixel_format through GLEW; fails while GLEW has not loaded it.
    BOOL(WINAPI* choosePixelFormatARB)
    (HDC dc, const int* intAttributes, const FLOAT* floatAttributes, UINT maxFormats, int* formats,
     UINT* count);
    // WGL_ARB_pbuffer through GLEW; each fails while GLEW has not loaded it.
    HPBUFFERARB(WINAPI* createPbufferARB)
    (HDC dc, int format, int width, int height, const int* attributes);
    HDC(WINAPI* getPbufferDCARB)(HPBUFFERARB pbuffer);
    int(WINAPI* releasePbufferDCARB)(HPBUFFERARB pbuffer, HDC dc);
    BOOL(WINAPI* destroyPbufferARB)(HPBUFFERARB pbuffer);
    // GLEW
    unsigned int (*glewInit)();
    bool (*hasArbPixelFormat)(); // WGLEW_ARB_pixel_format
    bool (*hasArbMultisample)(); // WGLEW_ARB_multisample
    bool (*hasArbPbuffer)();     // WGLEW_ARB_pbuffer

    // The table every context calls through.
    static const WglApi& get();
    static void set(const WglApi& api);
    // The system's own functions.
    static WglApi system();
};

} // namespace qrngl
