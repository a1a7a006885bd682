// The descriptor helpers of RCTemp, the same on every platform: the descriptor is the Windows
// one, or the portable mirror of its layout (see RCTemp.h).
#include "qrngl/frame/RCTemp.h"

#include "qrn/LogManager.h"

#include <cstring>

namespace qrngl {

namespace {

enum : std::uint32_t {
    kDoubleBuffer = 0x1,
    kStereo = 0x2,
    kDrawToWindow = 0x4,
    kDrawToBitmap = 0x8,
    kSupportGdi = 0x10,
    kSupportOpengl = 0x20,
    kGenericFormat = 0x40,
    kNeedPalette = 0x80,
    kNeedSystemPalette = 0x100,
    kSwapLayerBuffers = 0x800,
    kGenericAccelerated = 0x1000,
    kSupportDirectDraw = 0x2000,
    kDirect3dAccelerated = 0x4000,
    kSupportComposition = 0x8000,
};

PixelFormatDescriptor toPortable(const PIXELFORMATDESCRIPTOR& descriptor) {
    PixelFormatDescriptor d;
    std::memcpy(&d, &descriptor, sizeof d);
    return d;
}

void logValue(qrn::ILogger& logger, const wchar_t* label, unsigned char value) {
    std::wstring message(label);
    RCTemp::getValStr(message, value);
    logger.log(message);
}

void logValue(qrn::ILogger& logger, const wchar_t* label, unsigned long value) {
    std::wstring message(label);
    RCTemp::getValStr(message, value);
    logger.log(message);
}

} // namespace

void RCTemp::initPixelFormatDescriptor(PIXELFORMATDESCRIPTOR* descriptor) {
    PixelFormatDescriptor d;
    std::memset(&d, 0, sizeof d);
    d.nSize = sizeof d;
    d.nVersion = 1;
    std::memcpy(descriptor, &d, sizeof d);
}

void RCTemp::pixelFormatDescriptorInfo(const PIXELFORMATDESCRIPTOR& descriptor) {
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    const PixelFormatDescriptor d = toPortable(descriptor);
    logger->log(L"PIXELFORMATDESCRIPTOR ");
    logger->log(L"dwFlags");
    static const struct {
        std::uint32_t flag;
        const wchar_t* name;
    } flags[] = {{kDrawToWindow, L" PFD_DRAW_TO_WINDOW"},
                 {kDrawToBitmap, L" PFD_DRAW_TO_BITMAP"},
                 {kSupportGdi, L" PFD_SUPPORT_GDI"},
                 {kSupportOpengl, L" PFD_SUPPORT_OPENGL"},
                 {kGenericAccelerated, L" PFD_GENERIC_ACCELERATED"},
                 {kSupportDirectDraw, L" PFD_SUPPORT_DIRECTDRAW"},
                 {kDirect3dAccelerated, L" PFD_DIRECT3D_ACCELERATED"},
                 {kSupportComposition, L" PFD_SUPPORT_COMPOSITION"},
                 {kGenericFormat, L" PFD_GENERIC_FORMAT"},
                 {kNeedPalette, L" PFD_NEED_PALETTE"},
                 {kNeedSystemPalette, L" PFD_NEED_SYSTEM_PALETTE"},
                 {kDoubleBuffer, L" PFD_DOUBLEBUFFER"},
                 {kStereo, L" PFD_STEREO"},
                 {kSwapLayerBuffers, L" PFD_SWAP_LAYER_BUFFERS"}};
    for (const auto& f : flags)
        if (d.dwFlags & f.flag)
            logger->log(f.name);
    // The low four bits of bReserved count the overlay planes.
    if (d.bReserved & 0xF)
        logger->log(L" overlay");
    logValue(*logger, L"iPixelType = ", d.iPixelType);
    logValue(*logger, L"cColorBits = ", d.cColorBits);
    logValue(*logger, L"cRedBits = ", d.cRedBits);
    logValue(*logger, L"cRedShift = ", d.cRedShift);
    logValue(*logger, L"cGreenBits = ", d.cGreenBits);
    // The green shift is written twice; log readers expect the pair.
    logValue(*logger, L"cGreenShift = ", d.cGreenShift);
    logValue(*logger, L"cGreenShift = ", d.cGreenShift);
    logValue(*logger, L"cBlueBits = ", d.cBlueBits);
    logValue(*logger, L"cBlueShift = ", d.cBlueShift);
    logValue(*logger, L"cDepthBits = ", d.cDepthBits);
    if (d.cStencilBits)
        logValue(*logger, L"cStencilBits = ", d.cStencilBits);
    if (d.cAuxBuffers)
        logValue(*logger, L"cAuxBuffers = ", d.cAuxBuffers);
    logValue(*logger, L"iLayerType = ", d.iLayerType);
    if (d.dwVisibleMask)
        logValue(*logger, L"dwVisibleMask = ", static_cast<unsigned long>(d.dwVisibleMask));
    if (d.cAlphaBits) {
        logValue(*logger, L"cAlphaBits = ", d.cAlphaBits);
        logValue(*logger, L"cAlphaShift = ", d.cAlphaShift);
    }
    if (d.cAccumBits) {
        logValue(*logger, L"cAccumBits = ", d.cAccumBits);
        logValue(*logger, L"cAccumRedBits = ", d.cAccumRedBits);
        logValue(*logger, L"cAccumGreenBits = ", d.cAccumGreenBits);
        logValue(*logger, L"cAccumBlueBits = ", d.cAccumBlueBits);
        logValue(*logger, L"cAccumAlphaBits = ", d.cAccumAlphaBits);
    }
}

int RCTemp::getValStr(std::wstring& text, unsigned char value) {
    return getValStr(text, static_cast<unsigned long>(value));
}

int RCTemp::getValStr(std::wstring& text, unsigned long value) {
    const std::wstring digits = std::to_wstring(value);
    text += digits;
    return static_cast<int>(digits.size());
}

} // namespace qrngl
