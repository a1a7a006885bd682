#include "WglTestApi.h"

#include <algorithm>

namespace qrntest {

namespace {

WglRecord& record() {
    static WglRecord r;
    return r;
}

void note(const char* name) {
    record().calls.push_back(name);
}

HMODULE WINAPI getModuleHandleW(LPCWSTR name) {
    note("GetModuleHandleW");
    return record().next.getModuleHandleW(name);
}

HWND WINAPI createWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR title, DWORD style, int x,
                            int y, int width, int height, HWND parent, HMENU menu,
                            HINSTANCE instance, LPVOID param) {
    note("CreateWindowExW");
    record().window = {exStyle, className, title,  style, x,        y,
                       width,   height,    parent, menu,  instance, param};
    return record().next.createWindowExW(exStyle, className, title, style, x, y, width, height,
                                         parent, menu, instance, param);
}

BOOL WINAPI destroyWindow(HWND window) {
    note("DestroyWindow");
    return record().next.destroyWindow(window);
}

HDC WINAPI getDC(HWND window) {
    note("GetDC");
    return record().next.getDC(window);
}

int WINAPI releaseDC(HWND window, HDC dc) {
    note("ReleaseDC");
    return record().next.releaseDC(window, dc);
}

int WINAPI choosePixelFormat(HDC dc, const PIXELFORMATDESCRIPTOR* descriptor) {
    note("ChoosePixelFormat");
    record().chosenWith = *descriptor;
    return record().next.choosePixelFormat(dc, descriptor);
}

BOOL WINAPI setPixelFormat(HDC dc, int format, const PIXELFORMATDESCRIPTOR* descriptor) {
    note("SetPixelFormat");
    return record().next.setPixelFormat(dc, format, descriptor);
}

int WINAPI describePixelFormat(HDC dc, int format, UINT size, LPPIXELFORMATDESCRIPTOR d) {
    note("DescribePixelFormat");
    return record().next.describePixelFormat(dc, format, size, d);
}

BOOL WINAPI swapBuffers(HDC dc) {
    note("SwapBuffers");
    return record().next.swapBuffers(dc);
}

HGLRC WINAPI createContext(HDC dc) {
    note("wglCreateContext");
    return record().next.createContext(dc);
}

BOOL WINAPI deleteContext(HGLRC rc) {
    note("wglDeleteContext");
    return record().next.deleteContext(rc);
}

BOOL WINAPI makeCurrent(HDC dc, HGLRC rc) {
    note(rc ? "wglMakeCurrent" : "wglMakeCurrent(null)");
    return record().next.makeCurrent(dc, rc);
}

BOOL WINAPI shareLists(HGLRC parent, HGLRC rc) {
    note("wglShareLists");
    return record().next.shareLists(parent, rc);
}

BOOL WINAPI choosePixelFormatARB(HDC dc, const int* ints, const FLOAT* floats, UINT maxFormats,
                                 int* formats, UINT* count) {
    note("wglChoosePixelFormatARB");
    record().arbAttributes.assign(ints, ints + 24);
    record().arbList.clear();
    for (const int* p = ints; p[0] != 0; p += 2)
        record().arbList.insert(record().arbList.end(), {p[0], p[1]});
    if (floats)
        record().arbFloats.assign(floats, floats + 2);
    else
        record().arbFloats.clear();
    record().arbMaxFormats = maxFormats;
    return record().next.choosePixelFormatARB(dc, ints, floats, maxFormats, formats, count);
}

HDC WINAPI createCompatibleDC(HDC dc) {
    note("CreateCompatibleDC");
    return record().next.createCompatibleDC(dc);
}

HBITMAP WINAPI createDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits,
                                HANDLE section, DWORD offset) {
    note("CreateDIBSection");
    return record().next.createDIBSection(dc, info, usage, bits, section, offset);
}

HGDIOBJ WINAPI selectObject(HDC dc, HGDIOBJ object) {
    note("SelectObject");
    return record().next.selectObject(dc, object);
}

BOOL WINAPI deleteObject(HGDIOBJ object) {
    note("DeleteObject");
    record().deleted.push_back(object);
    return record().next.deleteObject(object);
}

HFONT WINAPI createFontIndirectW(const LOGFONTW* font) {
    note("CreateFontIndirectW");
    record().font = *font;
    HFONT made = record().next.createFontIndirectW(font);
    record().fonts.push_back(made);
    return made;
}

int WINAPI getTextFaceW(HDC dc, int count, LPWSTR name) {
    note("GetTextFaceW");
    return record().next.getTextFaceW(dc, count, name);
}

HDC WINAPI getCurrentDC() {
    note("wglGetCurrentDC");
    return record().next.getCurrentDC();
}

BOOL WINAPI useFontOutlinesW(HDC dc, DWORD first, DWORD count, DWORD base, FLOAT deviation,
                             FLOAT extrusion, int format, LPGLYPHMETRICSFLOAT metrics) {
    note("wglUseFontOutlinesW");
    record().outlines.push_back({first, count, base, deviation, extrusion, format});
    return record().next.useFontOutlinesW(dc, first, count, base, deviation, extrusion, format,
                                          metrics);
}

HPBUFFERARB WINAPI createPbufferARB(HDC dc, int format, int width, int height,
                                    const int* attributes) {
    note("wglCreatePbufferARB");
    record().pbuffer = {width, height, {}};
    for (const int* p = attributes; p; p = *p ? p + 1 : nullptr)
        record().pbuffer.attributes.push_back(*p);
    return record().next.createPbufferARB(dc, format, width, height, attributes);
}

HDC WINAPI getPbufferDCARB(HPBUFFERARB pbuffer) {
    note("wglGetPbufferDCARB");
    return record().next.getPbufferDCARB(pbuffer);
}

int WINAPI releasePbufferDCARB(HPBUFFERARB pbuffer, HDC dc) {
    note("wglReleasePbufferDCARB");
    return record().next.releasePbufferDCARB(pbuffer, dc);
}

BOOL WINAPI destroyPbufferARB(HPBUFFERARB pbuffer) {
    note("wglDestroyPbufferARB");
    return record().next.destroyPbufferARB(pbuffer);
}

unsigned int glewInit() {
    note("glewInit");
    return record().next.glewInit();
}

bool hasArbPixelFormat() {
    return record().next.hasArbPixelFormat();
}

bool hasArbMultisample() {
    return record().next.hasArbMultisample();
}

bool hasArbPbuffer() {
    return record().next.hasArbPbuffer();
}

qrngl::WglApi recording() {
    qrngl::WglApi api;
    api.getModuleHandleW = &getModuleHandleW;
    api.createWindowExW = &createWindowExW;
    api.destroyWindow = &destroyWindow;
    api.getDC = &getDC;
    api.releaseDC = &releaseDC;
    api.choosePixelFormat = &choosePixelFormat;
    api.setPixelFormat = &setPixelFormat;
    api.describePixelFormat = &describePixelFormat;
    api.swapBuffers = &swapBuffers;
    api.createCompatibleDC = &createCompatibleDC;
    api.createDIBSection = &createDIBSection;
    api.selectObject = &selectObject;
    api.deleteObject = &deleteObject;
    api.createFontIndirectW = &createFontIndirectW;
    api.getTextFaceW = &getTextFaceW;
    api.getCurrentDC = &getCurrentDC;
    api.useFontOutlinesW = &useFontOutlinesW;
    api.createPbufferARB = &createPbufferARB;
    api.getPbufferDCARB = &getPbufferDCARB;
    api.releasePbufferDCARB = &releasePbufferDCARB;
    api.destroyPbufferARB = &destroyPbufferARB;
    api.createContext = &createContext;
    api.deleteContext = &deleteContext;
    api.makeCurrent = &makeCurrent;
    api.shareLists = &shareLists;
    api.choosePixelFormatARB = &choosePixelFormatARB;
    api.glewInit = &glewInit;
    api.hasArbPixelFormat = &hasArbPixelFormat;
    api.hasArbMultisample = &hasArbMultisample;
    api.hasArbPbuffer = &hasArbPbuffer;
    return api;
}

const wchar_t* windowClass() {
    static const wchar_t* name = [] {
        WNDCLASSW c = {};
        c.style = CS_OWNDC;
        c.lpfnWndProc = &DefWindowProcW;
        c.hInstance = GetModuleHandleW(nullptr);
        c.lpszClassName = L"QrnTestWindow";
        RegisterClassW(&c);
        return L"QrnTestWindow";
    }();
    return name;
}

} // namespace

WglRecord& wglRecord() {
    return record();
}

ScopedWgl::ScopedWgl() {
    record() = WglRecord();
    record().next = qrngl::WglApi::system();
    qrngl::WglApi::set(recording());
}

ScopedWgl::~ScopedWgl() {
    qrngl::WglApi::set(qrngl::WglApi::system());
}

std::vector<std::string> ScopedWgl::take() {
    std::vector<std::string> out;
    out.swap(record().calls);
    return out;
}

int ScopedWgl::count(const std::string& name) const {
    return static_cast<int>(std::count(record().calls.begin(), record().calls.end(), name));
}

TestWindow::TestWindow(int width, int height)
    : hwnd(CreateWindowExW(WS_EX_NOACTIVATE, windowClass(), L"qrn test", WS_POPUP, 0, 0, width,
                           height, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr)),
      dc(GetDC(hwnd)) {
    ShowWindow(hwnd, SW_SHOWNOACTIVATE);
}

TestWindow::~TestWindow() {
    ReleaseDC(hwnd, dc);
    DestroyWindow(hwnd);
}

} // namespace qrntest
