#include <windows.h>

#include "qrngl/Font.h"

#include "qrngl/GL.h"

#include <vector>

namespace qrngl {

struct Font::Source {
    HFONT font = nullptr;     // outlines: kept for the characters made later
    HFONT fallback = nullptr; // made when a character needs it
    std::wstring fallbackName;
};

namespace {

// The outline font as the 3D texts make theirs.
HFONT createOutlineFont(const std::wstring& face) {
    LOGFONTW f = {};
    f.lfHeight = 5;
    f.lfWeight = FW_NORMAL;
    f.lfUnderline = 1;
    f.lfCharSet = ANSI_CHARSET;
    f.lfQuality = PROOF_QUALITY;
    f.lfPitchAndFamily = FIXED_PITCH;
    lstrcpynW(f.lfFaceName, face.c_str(), LF_FACESIZE);
    return CreateFontIndirectW(&f);
}

// The face the DC's font resolved to ("C059-Roman"): GetTextFaceW answers with the name asked
// for when a substitute stands in for it.
std::wstring textFace(HDC dc) {
    const UINT size = GetOutlineTextMetricsW(dc, 0, nullptr);
    if (size >= sizeof(OUTLINETEXTMETRICW)) {
        std::vector<char> buffer(size);
        auto* metrics = reinterpret_cast<OUTLINETEXTMETRICW*>(buffer.data());
        if (GetOutlineTextMetricsW(dc, size, metrics) != 0 && metrics->otmpFaceName)
            return reinterpret_cast<const wchar_t*>(
                buffer.data() + reinterpret_cast<UINT_PTR>(metrics->otmpFaceName));
    }
    wchar_t name[LF_FACESIZE] = {};
    GetTextFaceW(dc, LF_FACESIZE, name);
    return name;
}

bool hasGlyph(HDC dc, wchar_t c) {
    WORD index = 0xFFFF;
    return GetGlyphIndicesW(dc, &c, 1, &index, GGI_MARK_NONEXISTING_GLYPHS) == 1 && index != 0xFFFF;
}

} // namespace

Font::Font() = default;

Font::~Font() {
    deleteLists();
    if (m_source) {
        if (m_source->font)
            DeleteObject(m_source->font);
        if (m_source->fallback)
            DeleteObject(m_source->fallback);
    }
}

std::shared_ptr<Font> Font::createOutline(const std::wstring& face, const std::wstring& fallback) {
    HDC dc = wglGetCurrentDC();
    if (!dc)
        return nullptr;
    std::shared_ptr<Font> font(new Font);
    font->m_kind = OUTLINE;
    font->m_source = std::make_unique<Source>();
    font->m_source->fallbackName = fallback;
    font->m_source->font = createOutlineFont(face);
    if (!font->m_source->font)
        return nullptr;
    HGDIOBJ previous = SelectObject(dc, font->m_source->font);
    font->m_faceName = textFace(dc);
    std::vector<GLYPHMETRICSFLOAT> metrics(CODES + 1);
    font->m_base = glGenLists(CODES);
    const BOOL made =
        font->m_base != 0 && wglUseFontOutlinesW(dc, 0, CODES, font->m_base, 0.0f, 0.001f,
                                                 WGL_FONT_LINES, metrics.data());
    SelectObject(dc, previous);
    if (!made)
        return nullptr;
    for (unsigned int c = 0; c < CODES; ++c)
        font->m_advances.push_back(metrics[c].gmfCellIncX);
    return font;
}

std::shared_ptr<Font> Font::createLabel(float) {
    HDC dc = wglGetCurrentDC();
    if (!dc)
        return nullptr;
    std::shared_ptr<Font> font(new Font);
    font->m_kind = BITMAP;
    font->m_source = std::make_unique<Source>();
    // The system font is a stock object: selected, never deleted. Windows sizes it for the
    // screen's density itself.
    HGDIOBJ previous = SelectObject(dc, GetStockObject(SYSTEM_FONT));
    font->m_faceName = textFace(dc);
    font->m_base = glGenLists(CODES);
    const BOOL made = font->m_base != 0 && wglUseFontBitmapsW(dc, 0, CODES, font->m_base);
    // Wine compiles the empty glyphs (spaces, controls) as empty bitmaps, which Mesa refuses
    // with an out-of-memory error; every other glyph is made.
    while (glGetError() != GL_NO_ERROR) {
    }
    TEXTMETRICW metrics = {};
    GetTextMetricsW(dc, &metrics);
    font->m_lineHeight = metrics.tmHeight;
    std::vector<INT> widths(CODES, 0);
    GetCharWidth32W(dc, 0, CODES - 1, widths.data());
    SelectObject(dc, previous);
    if (!made)
        return nullptr;
    font->m_advances.assign(widths.begin(), widths.end());
    return font;
}

bool Font::contours(wchar_t, std::vector<std::vector<float>>&, float&) const {
    return false;
}

bool Font::makeGlyph(wchar_t c, unsigned int list, float& advance) const {
    HDC dc = wglGetCurrentDC();
    if (!dc)
        return false;
    HGDIOBJ face =
        m_kind == OUTLINE ? static_cast<HGDIOBJ>(m_source->font) : GetStockObject(SYSTEM_FONT);
    HGDIOBJ previous = SelectObject(dc, face);
    if (!hasGlyph(dc, c)) {
        if (m_kind == OUTLINE && !m_source->fallback)
            m_source->fallback = createOutlineFont(m_source->fallbackName);
        if (m_kind == OUTLINE && m_source->fallback)
            SelectObject(dc, m_source->fallback);
        if (!hasGlyph(dc, c)) {
            SelectObject(dc, previous);
            return false;
        }
    }
    BOOL made = FALSE;
    if (m_kind == OUTLINE) {
        GLYPHMETRICSFLOAT metrics = {};
        made = wglUseFontOutlinesW(dc, static_cast<DWORD>(c), 1, list, 0.0f, 0.001f, WGL_FONT_LINES,
                                   &metrics);
        advance = metrics.gmfCellIncX;
    } else {
        made = wglUseFontBitmapsW(dc, static_cast<DWORD>(c), 1, list);
        while (glGetError() != GL_NO_ERROR) { // as in createLabel
        }
        INT w = 0;
        GetCharWidth32W(dc, static_cast<UINT>(c), static_cast<UINT>(c), &w);
        advance = static_cast<float>(w);
    }
    SelectObject(dc, previous);
    return made == TRUE;
}

} // namespace qrngl
