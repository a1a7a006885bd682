#include "qrngl/Font.h"

#include "qrngl/GL.h"
#include "qrngl/linux/Typeface.h"

#include <cmath>

namespace qrngl {

struct Font::Source {
    std::shared_ptr<Typeface> face;
    int pixelSize = 0; // bitmaps
};

Font::Font() = default;

Font::~Font() {
    deleteLists();
}

std::shared_ptr<Font> Font::createOutline(const std::wstring& faceName,
                                          const std::wstring& fallback) {
    if (!glGetString(GL_VERSION))
        return nullptr;
    auto face = Typeface::find(faceName);
    if (!face)
        face = Typeface::find(fallback);
    if (!face)
        return nullptr;
    std::shared_ptr<Font> font(new Font);
    font->m_kind = OUTLINE;
    font->m_faceName = face->family();
    font->m_source = std::make_unique<Source>();
    font->m_source->face = face;
    font->m_advances.assign(CODES, 0.0f);
    font->m_base = glGenLists(CODES);
    if (font->m_base == 0 ||
        !face->compileOutlines(0, CODES, font->m_base, 0.0f, font->m_advances.data()))
        return nullptr;
    return font;
}

std::shared_ptr<Font> Font::createLabel(float dpi) {
    if (!glGetString(GL_VERSION))
        return nullptr;
    auto face = Typeface::find(L"sans-serif");
    if (!face)
        return nullptr;
    if (dpi <= 0.0f)
        dpi = 96.0f;
    // As tall as Windows' system font (16 pixels at 96 dots per inch) at this density.
    const int target = std::max(8, static_cast<int>(std::lround(16.0f * dpi / 96.0f)));
    int size = target;
    while (size > 6 && face->lineHeight(size) > target)
        --size;
    std::shared_ptr<Font> font(new Font);
    font->m_kind = BITMAP;
    font->m_faceName = face->family();
    font->m_lineHeight = face->lineHeight(size);
    font->m_source = std::make_unique<Source>();
    font->m_source->face = face;
    font->m_source->pixelSize = size;
    font->m_advances.assign(CODES, 0.0f);
    font->m_base = glGenLists(CODES);
    if (font->m_base == 0 ||
        !face->compileBitmaps(0, CODES, font->m_base, size, font->m_advances.data()))
        return nullptr;
    return font;
}

bool Font::contours(wchar_t c, std::vector<std::vector<float>>& out, float& advance) const {
    if (m_kind != OUTLINE)
        return false;
    Typeface::Outline glyph;
    // A quarter pixel at the sizes texts are read at, and far fewer lines to draw than the
    // lists' one design unit.
    const float deviation = 0.01f;
    // A character no face has draws nothing and does not move on, as its list does.
    if (m_source->face->glyphOutline(static_cast<unsigned long>(c), deviation, glyph))
        out = std::move(glyph.contours);
    advance = glyph.advanceX;
    return true;
}

bool Font::makeGlyph(wchar_t c, unsigned int list, float& advance) const {
    const auto code = static_cast<unsigned long>(c);
    Typeface& face = *m_source->face;
    if (!face.has(code) && !face.faceFor(code))
        return false;
    return m_kind == OUTLINE ? face.compileOutlines(code, 1, list, 0.0f, &advance)
                             : face.compileBitmaps(code, 1, list, m_source->pixelSize, &advance);
}

} // namespace qrngl
