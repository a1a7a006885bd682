#pragma once

#include "qrngldata/qrngldata_export.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qrngl {

// A display-list font: one list per character code from a base, each drawing its glyph and
// moving on by its advance, for codes 0 to 254 (as Windows' wglUseFontOutlinesW and
// wglUseFontBitmapsW make them); characters above get lists of their own on first use, from a
// fallback face where the font has no such glyph. The lists belong to the context current when
// the font is made (and to those sharing its lists), which must be current when it is drawn and
// destroyed.
class QRNGLDATA_EXPORT Font {
public:
    enum Kind { OUTLINE, BITMAP };
    enum : unsigned int { CODES = 255 };

    ~Font();
    Font(const Font&) = delete;
    Font& operator=(const Font&) = delete;

    // Glyph outlines of a face as line loops (the em square is 1 unit, as WGL_FONT_LINES makes
    // them); null without a current context or when the face gives no glyph.
    static std::shared_ptr<Font> createOutline(const std::wstring& face,
                                               const std::wstring& fallback);
    // Bitmap glyphs for labels drawn at a raster position: the system font on Windows, a sans
    // face sized for a pixel density elsewhere (dots per inch; 0 stands for 96).
    static std::shared_ptr<Font> createLabel(float dpi = 0.0f);

    Kind kind() const { return m_kind; }
    unsigned int base() const { return m_base; }
    // Pixels from one label line to the next (Windows' tmHeight); 0 for outlines.
    int lineHeight() const { return m_lineHeight; }
    // The face the glyphs came from, as the system resolved the name asked for.
    const std::wstring& faceName() const { return m_faceName; }

    // How far the text moves the current point: em for outlines, pixels for bitmaps.
    float width(const std::wstring& text) const;
    // Makes the lists of the text's characters above code 254 that are not made yet; a list
    // cannot be made while another is compiled, so call it before compiling a text's list.
    void prepare(const std::wstring& text) const;
    // Draws the text from the current point (outlines) or raster position (bitmaps).
    void draw(const std::wstring& text) const;

    // A glyph's outline as closed contours (x, y pairs in em) and its advance, coarser than
    // the lists' (chords within a hundredth of the em), for drawing many glyphs in one call;
    // false where the platform gives no outline geometry (Windows makes outlines only as
    // lists) or for a bitmap font.
    bool contours(wchar_t c, std::vector<std::vector<float>>& out, float& advance) const;

    // Calls a text's glyph lists: codes 0 to 254 through glListBase(base) and glCallLists of
    // one byte a character, any other character through the list `other` gives (0: none).
    static void callLists(unsigned int base, const std::wstring& text,
                          const std::function<unsigned int(wchar_t)>& other);

private:
    struct Source; // the platform's face
    Font();
    // Makes the list of one character above 254; false when no face has it.
    bool makeGlyph(wchar_t c, unsigned int list, float& advance) const;
    void deleteLists();

    Kind m_kind = OUTLINE;
    unsigned int m_base = 0;
    int m_lineHeight = 0;
    std::wstring m_faceName;
    std::vector<float> m_advances; // codes 0 to 254
    std::unique_ptr<Source> m_source;
    struct Glyph {
        unsigned int list = 0;
        float advance = 0.0f;
    };
    mutable std::map<wchar_t, Glyph> m_glyphs; // above 254; list 0 where no face has one
};

} // namespace qrngl
