#pragma once

#include <string>
#include <vector>

namespace qrntest {

using Lines = std::vector<std::wstring>;

// What pixelFormatDescriptorInfo writes for the window template of the contexts: 24-bit RGBA
// colour, 16-bit depth, 2-bit stencil, double-buffered.
inline std::vector<std::wstring> templateDump() {
    return {L"PIXELFORMATDESCRIPTOR ", L"dwFlags",           L" PFD_DRAW_TO_WINDOW",
            L" PFD_SUPPORT_OPENGL",    L" PFD_DOUBLEBUFFER", L"iPixelType = 0",
            L"cColorBits = 24",        L"cRedBits = 0",      L"cRedShift = 0",
            L"cGreenBits = 0",         L"cGreenShift = 0",   L"cGreenShift = 0",
            L"cBlueBits = 0",          L"cBlueShift = 0",    L"cDepthBits = 16",
            L"cStencilBits = 2",       L"iLayerType = 0"};
}

inline std::vector<std::wstring> operator+(std::vector<std::wstring> a,
                                           const std::vector<std::wstring>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

} // namespace qrntest
