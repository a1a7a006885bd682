#pragma once

// Linux only: font faces found by fontconfig and read by FreeType, for the glyph lists that
// Windows makes with wglUseFontOutlinesW and wglUseFontBitmapsW. Not installed; the renderer
// library's outline texts use it too.
#include "qrngl/Handles.h"
#include "qrngldata/qrngldata_export.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace qrngl {

class QRNGLDATA_EXPORT Typeface {
public:
    // One glyph as WGL_FONT_LINES draws it: closed contours in em units (the em square is 1),
    // and the advance of the current point.
    struct Outline {
        std::vector<std::vector<float>> contours; // x, y pairs
        float advanceX = 0.0f;
        float advanceY = 0.0f;
    };
    // One glyph as glBitmap takes it: rows bottom-up, each padded to a byte.
    struct Bitmap {
        int width = 0, height = 0;
        float originX = 0.0f, originY = 0.0f; // from the current raster position to the lower left
        float advance = 0.0f;
        std::vector<unsigned char> bits;
    };

    ~Typeface();
    Typeface(const Typeface&) = delete;
    Typeface& operator=(const Typeface&) = delete;

    // The face fontconfig matches for a family name, as Windows would: "Century" is a
    // Century-like serif (C059), "Arial Unicode MS" a sans with wide coverage. Null when no
    // face can be read.
    static std::shared_ptr<Typeface> find(const std::wstring& family);

    // The face's family name and file, as fontconfig gave them.
    const std::wstring& family() const { return m_family; }
    const std::string& file() const { return m_file; }
    bool has(unsigned long code) const;
    // For a character this face lacks, the face fontconfig prefers for it after this one; null
    // when this face has it or no face does.
    std::shared_ptr<Typeface> faceFor(unsigned long code);

    // Contours flattened so that no chord strays more than `deviation` em from the curve (0:
    // one font design unit), from this face or, for a character it lacks, from the face
    // faceFor gives; false when no face has it.
    bool glyphOutline(unsigned long code, float deviation, Outline& out);
    // The same rendered one bit a pixel at a pixel size (the em height).
    bool glyphBitmap(unsigned long code, int pixelSize, Bitmap& out);
    // Ascender to descender at a pixel size, rounded up, as Windows' tmHeight.
    int lineHeight(int pixelSize);

    // GDI-like handles for the renderers that keep an HFONT: a handle stays valid until deleted
    // once; deleting it again (or a null or unknown one) returns false and does nothing.
    static HFONT createHandle(const std::shared_ptr<Typeface>& face);
    static std::shared_ptr<Typeface> fromHandle(HFONT handle);
    static bool deleteHandle(HFONT handle);

    // Compiles glyphs first .. first + count - 1 into the lists base + code - first, as
    // wglUseFontOutlinesW does with WGL_FONT_LINES (line loops, then a move by the advance);
    // characters the face lacks are taken from a fallback face when `fallback` says so, else
    // their lists stay empty, as a GDI font's would. `advances` receives each glyph's advance
    // (em) when given. False when no glyph could be made.
    bool compileOutlines(unsigned long first, unsigned long count, unsigned int base,
                         float deviation, float* advances, bool fallback = true);
    // The same with glBitmap glyphs, as wglUseFontBitmapsW does.
    bool compileBitmaps(unsigned long first, unsigned long count, unsigned int base, int pixelSize,
                        float* advances);

private:
    Typeface(void* face, std::wstring family, std::string file);
    // This face's own glyphs.
    bool outline(unsigned long code, float deviation, Outline& out);
    bool bitmap(unsigned long code, int pixelSize, Bitmap& out);
    friend struct TypefaceLibrary;

    void* m_face; // FT_Face
    std::wstring m_family;
    std::string m_file;
    std::mutex m_mutex;
    std::map<std::pair<unsigned long, float>, Outline> m_outlines; // by code and deviation
    std::map<unsigned long, std::weak_ptr<Typeface>> m_fallbacks;
};

} // namespace qrngl
