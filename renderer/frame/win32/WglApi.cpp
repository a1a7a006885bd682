#include "frame/win32/WglApi.h"

#include "qrngl/GL.h"

#include <GL/wglew.h>

namespace qrngl {

namespace {

BOOL WINAPI glewChoosePixelFormatARB(HDC dc, const int* intAttributes, const FLOAT* floatAttributes,
                                     UINT maxFormats, int* formats, UINT* count) {
    if (!wglChoosePixelFormatARB)
        return FALSE;
    return wglChoosePixelFormatARB(dc, intAttributes, floatAttributes, maxFormats, formats, count);
}

unsigned int initGlew() {
    return glewInit();
}

bool glewHasArbPixelFormat() {
    return WGLEW_ARB_pixel_format != GL_FALSE;
}

bool glewHasArbMultisample() {
    return WGLEW_ARB_multisample != GL_FALSE;
}

WglApi& current() {
    static WglApi api = WglApi::system();
    return api;
}

} // namespace

WglApi WglApi::system() {
    WglApi api;
    api.getModuleHandleW = &GetModuleHandleW;
    api.createWindowExW = &CreateWindowExW;
    api.destroyWindow = &DestroyWindow;
    api.getDC = &GetDC;
    api.releaseDC = &ReleaseDC;
    api.choosePixelFormat = &ChoosePixelFormat;
    api.setPixelFormat = &SetPixelFormat;
    api.describePixelFormat = &DescribePixelFormat;
    api.swapBuffers = &SwapBuffers;
    api.createContext = &wglCreateContext;
    api.deleteContext = &wglDeleteContext;
    api.makeCurrent = &wglMakeCurrent;
    api.shareLists = &wglShareLists;
    api.choosePixelFormatARB = &glewChoosePixelFormatARB;
    api.glewInit = &initGlew;
    api.hasArbPixelFormat = &glewHasArbPixelFormat;
    api.hasArbMultisample = &glewHasArbMultisample;
    return api;
}

const WglApi& WglApi::get() {
    return current();
}

void WglApi::set(const WglApi& api) {
    current() = api;
}

} // namespace qrngl
