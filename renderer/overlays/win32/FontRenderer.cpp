#include "qrngl/frame/win32/WglApi.h"

#include "qrngl/overlays/FontRenderer.h"

namespace qrngl {

namespace {

LOGFONTW outlineFont(const std::wstring& face) {
    LOGFONTW font = {};
    font.lfHeight = 5;
    font.lfWidth = 0;
    font.lfEscapement = 0;
    font.lfOrientation = 0;
    font.lfWeight = 400;
    font.lfItalic = 0;
    font.lfUnderline = 1; // outlines carry no underline
    font.lfStrikeOut = 0;
    font.lfCharSet = ANSI_CHARSET;
    font.lfOutPrecision = 0;
    font.lfClipPrecision = 0;
    font.lfQuality = PROOF_QUALITY;
    font.lfPitchAndFamily = FIXED_PITCH;
    if (face.size() < LF_FACESIZE)
        lstrcpyW(font.lfFaceName, face.c_str());
    return font;
}

} // namespace

void FontRenderer::buildOutlines() {
    const WglApi& api = WglApi::get();
    const LOGFONTW logFont = outlineFont(faceName());
    HDC dc = api.getCurrentDC();
    m_font = api.createFontIndirectW(&logFont);
    HGDIOBJ previous = api.selectObject(dc, m_font);
    GLYPHMETRICSFLOAT metrics[LISTS] = {};
    const BOOL made =
        api.useFontOutlinesW(dc, 0, OUTLINES, m_listBase, 0.0f, 0.001f, WGL_FONT_LINES, metrics);
    if (!made)
        api.selectObject(dc, previous);

    // The font goes now; the renderer keeps its handle and deletes it again when destroyed.
    HGDIOBJ font = api.selectObject(dc, previous);
    api.deleteObject(font);
}

FontRenderer::~FontRenderer() {
    glDeleteLists(m_listBase, LISTS);
    WglApi::get().deleteObject(m_font);
}

} // namespace qrngl
