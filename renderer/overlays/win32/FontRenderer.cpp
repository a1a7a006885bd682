#include "qrngl/frame/win32/WglApi.h"

#include "qrngl/overlays/FontRenderer.h"

#include <vector>

namespace qrngl {

namespace {

bool hasGlyph(const WglApi& api, HDC dc, wchar_t c) {
    WORD index = 0xFFFF;
    return api.getGlyphIndicesW(dc, &c, 1, &index, GGI_MARK_NONEXISTING_GLYPHS) == 1 &&
           index != 0xFFFF;
}

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

void FontRenderer::buildOutlines(const std::vector<wchar_t>& beyond) {
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

    // Characters the base's lists cannot hold, from this font or, where it has no glyph, from
    // the face meant for them.
    if (!beyond.empty()) {
        m_beyond = beyond;
        m_beyondBase = glGenLists(static_cast<GLsizei>(beyond.size()));
        HFONT fallback = nullptr;
        for (std::size_t i = 0; i < beyond.size(); ++i) {
            const wchar_t c = beyond[i];
            api.selectObject(dc, m_font);
            if (!hasGlyph(api, dc, c)) {
                if (!fallback) {
                    const LOGFONTW other = outlineFont(fallbackFaceName());
                    fallback = api.createFontIndirectW(&other);
                }
                api.selectObject(dc, fallback);
            }
            GLYPHMETRICSFLOAT glyph = {};
            api.useFontOutlinesW(dc, static_cast<DWORD>(c), 1,
                                 m_beyondBase + static_cast<unsigned int>(i), 0.0f, 0.001f,
                                 WGL_FONT_LINES, &glyph);
        }
        // The DC as the outline call left it, so that the release below is the same.
        api.selectObject(dc, made ? static_cast<HGDIOBJ>(m_font) : previous);
        if (fallback)
            api.deleteObject(fallback);
    }

    // The font goes now; the renderer keeps its handle and deletes it again when destroyed.
    HGDIOBJ font = api.selectObject(dc, previous);
    api.deleteObject(font);
}

FontRenderer::~FontRenderer() {
    glDeleteLists(m_listBase, LISTS);
    if (!m_beyond.empty())
        glDeleteLists(m_beyondBase, static_cast<GLsizei>(m_beyond.size()));
    WglApi::get().deleteObject(m_font);
}

} // namespace qrngl
