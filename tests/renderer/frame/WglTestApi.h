#pragma once

// Windows only: puts a recording table in front of the contexts' window-system calls. Every
// call is recorded by name and handed to next, which starts as the system's own functions and
// which a test changes to make a call fail.
#include <windows.h>

#include "qrngl/frame/win32/WglApi.h"

#include <string>
#include <vector>

namespace qrntest {

struct WglRecord {
    std::vector<std::string> calls;
    qrngl::WglApi next;
    // The arguments of the last calls that tests look at.
    std::vector<int> arbAttributes; // the 24 words given to wglChoosePixelFormatARB
    std::vector<int> arbList;       // its pairs up to the ending 0
    std::vector<float> arbFloats;   // its two float words
    UINT arbMaxFormats = 0;
    PIXELFORMATDESCRIPTOR chosenWith = {}; // the descriptor given to ChoosePixelFormat
    struct Pbuffer {                       // what wglCreatePbufferARB was given
        int width, height;
        std::vector<int> attributes; // up to and with the ending 0
    } pbuffer = {};
    struct Window {
        DWORD exStyle;
        std::wstring className, title;
        DWORD style;
        int x, y, width, height;
        HWND parent;
        HMENU menu;
        HINSTANCE instance;
        LPVOID param;
    } window = {};
    LOGFONTW font = {};           // the last font asked of CreateFontIndirectW
    std::vector<HFONT> fonts;     // the fonts it made, in order
    std::vector<HGDIOBJ> deleted; // what DeleteObject was given, in order
    struct Outlines {             // what wglUseFontOutlinesW was given
        DWORD first, count, base;
        FLOAT deviation, extrusion;
        int format;
    };
    std::vector<Outlines> outlines;
};

WglRecord& wglRecord();

// Installs the recording table for its lifetime, with next set to the system's functions.
class ScopedWgl {
public:
    ScopedWgl();
    ~ScopedWgl();
    ScopedWgl(const ScopedWgl&) = delete;
    ScopedWgl& operator=(const ScopedWgl&) = delete;

    qrngl::WglApi& next() { return wglRecord().next; }
    std::vector<std::string>& calls() { return wglRecord().calls; }
    // Takes the calls so far, leaving none.
    std::vector<std::string> take();
    int count(const std::string& name) const;
};

// A top-level window of a test class with its own DC, client size width x height, shown
// without activation; destroyed with the object.
class TestWindow {
public:
    TestWindow(int width, int height);
    ~TestWindow();
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    HWND hwnd;
    HDC dc; // the window's own DC: the one GetDC returns to the contexts
};

} // namespace qrntest
