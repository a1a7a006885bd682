#include "qrngl/frame/win32/WglApi.h"

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

HPBUFFERARB WINAPI glewCreatePbufferARB(HDC dc, int format, int width, int height,
                                        const int* attributes) {
    return wglCreatePbufferARB ? wglCreatePbufferARB(dc, format, width, height, attributes)
                               : nullptr;
}

HDC WINAPI glewGetPbufferDCARB(HPBUFFERARB pbuffer) {
    return wglGetPbufferDCARB ? wglGetPbufferDCARB(pbuffer) : nullptr;
}

int WINAPI glewReleasePbufferDCARB(HPBUFFERARB pbuffer, HDC dc) {
    return wglReleasePbufferDCARB ? wglReleasePbufferDCARB(pbuffer, dc) : 0;
}

BOOL WINAPI glewDestroyPbufferARB(HPBUFFERARB pbuffer) {
    return wglDestroyPbufferARB ? wglDestroyPbufferARB(pbuffer) : FALSE;
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

bool glewHasArbPbuffer() {
    return WGLEW_ARB_pbuffer != GL_FALSE;
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
    api.createCompatibleDC = &CreateCompatibleDC;
    api.createDIBSection = &CreateDIBSection;
    api.selectObject = &SelectObject;
    api.deleteObject = &DeleteObject;
    api.createFontIndirectW = &CreateFontIndirectW;
    api.getTextFaceW = &GetTextFaceW;
    api.createContext = &wglCreateContext;
    api.deleteContext = &wglDeleteContext;
    api.makeCurrent = &wglMakeCurrent;
    api.shareLists = &wglShareLists;
    api.getCurrentDC = &wglGetCurrentDC;
    api.useFontOutlinesW = &wglUseFontOutlinesW;
    api.choosePixelFormatARB = &glewChoosePixelFormatARB;
    api.createPbufferARB = &glewCreatePbufferARB;
    api.getPbufferDCARB = &glewGetPbufferDCARB;
    api.releasePbufferDCARB = &glewReleasePbufferDCARB;
    api.destroyPbufferARB = &glewDestroyPbufferARB;
    api.glewInit = &initGlew;
    api.hasArbPixelFormat = &glewHasArbPixelFormat;
    api.hasArbMultisample = &glewHasArbMultisample;
    api.hasArbPbuffer = &glewHasArbPbuffer;
    return api;
}

const WglApi& WglApi::get() {
    return current();
}

void WglApi::set(const WglApi& api) {
    current() = api;
}

} // namespace qrngl
