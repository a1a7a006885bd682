#include "qrngl/linux/Typeface.h"

#include "qrngl/GL.h"
#include "qrnplatform/Text.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace qrngl {

namespace {

// Windows font names mapped as a Windows user would see them: fontconfig alone gives a sans
// face for "Century", which is a serif.
const char kAliases[] = R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <alias binding="same">
    <family>Century</family>
    <prefer><family>C059</family><family>Century Schoolbook L</family>
      <family>TeX Gyre Schola</family><family>serif</family></prefer>
  </alias>
  <alias binding="same">
    <family>Arial Unicode MS</family>
    <prefer><family>DejaVu Sans</family><family>Liberation Sans</family>
      <family>Droid Sans Fallback</family><family>sans-serif</family></prefer>
  </alias>
</fontconfig>
)";

} // namespace

// The process's FreeType library, fontconfig configuration and open faces.
struct TypefaceLibrary {
    std::mutex mutex;
    FT_Library library = nullptr;
    FcConfig* config = nullptr;
    std::map<std::pair<std::string, int>, std::weak_ptr<Typeface>> faces;
    std::map<std::uintptr_t, std::shared_ptr<Typeface>> handles;
    std::uintptr_t nextHandle = 1;

    static TypefaceLibrary& get() {
        static TypefaceLibrary* instance = new TypefaceLibrary; // outlives every face
        return *instance;
    }

    bool ready() {
        if (!library && FT_Init_FreeType(&library) != 0)
            library = nullptr;
        if (!config) {
            config = FcInitLoadConfigAndFonts();
            if (config)
                FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(kAliases),
                                               FcFalse);
        }
        return library && config;
    }

    // The face of a fontconfig match (mutex held).
    std::shared_ptr<Typeface> open(FcPattern* match) {
        FcChar8* file = nullptr;
        FcChar8* family = nullptr;
        int index = 0;
        if (FcPatternGetString(match, FC_FILE, 0, &file) != FcResultMatch)
            return nullptr;
        FcPatternGetInteger(match, FC_INDEX, 0, &index);
        FcPatternGetString(match, FC_FAMILY, 0, &family);
        const auto key = std::make_pair(std::string(reinterpret_cast<char*>(file)), index);
        if (auto known = faces[key].lock())
            return known;
        FT_Face face = nullptr;
        if (FT_New_Face(library, key.first.c_str(), index, &face) != 0)
            return nullptr;
        std::shared_ptr<Typeface> typeface(new Typeface(
            face, qrnplatform::Text::fromUtf8(family ? reinterpret_cast<char*>(family) : ""),
            key.first));
        faces[key] = typeface;
        return typeface;
    }

    FcPattern* pattern(const std::wstring& family, unsigned long code) {
        FcPattern* p = FcPatternCreate();
        FcPatternAddString(
            p, FC_FAMILY,
            reinterpret_cast<const FcChar8*>(qrnplatform::Text::toUtf8(family).c_str()));
        FcPatternAddBool(p, FC_SCALABLE, FcTrue);
        if (code) {
            FcCharSet* set = FcCharSetCreate();
            FcCharSetAddChar(set, static_cast<FcChar32>(code));
            FcPatternAddCharSet(p, FC_CHARSET, set);
            FcCharSetDestroy(set);
        }
        FcConfigSubstitute(config, p, FcMatchPattern);
        FcDefaultSubstitute(p);
        return p;
    }
};

Typeface::Typeface(void* face, std::wstring family, std::string file)
    : m_face(face), m_family(std::move(family)), m_file(std::move(file)) {}

Typeface::~Typeface() {
    TypefaceLibrary& lib = TypefaceLibrary::get();
    std::lock_guard<std::mutex> lock(lib.mutex);
    FT_Done_Face(static_cast<FT_Face>(m_face));
}

std::shared_ptr<Typeface> Typeface::find(const std::wstring& family) {
    TypefaceLibrary& lib = TypefaceLibrary::get();
    std::lock_guard<std::mutex> lock(lib.mutex);
    if (!lib.ready())
        return nullptr;
    FcPattern* p = lib.pattern(family, 0);
    FcResult result = FcResultNoMatch;
    FcPattern* match = FcFontMatch(lib.config, p, &result);
    FcPatternDestroy(p);
    if (!match)
        return nullptr;
    auto face = lib.open(match);
    FcPatternDestroy(match);
    return face;
}

bool Typeface::has(unsigned long code) const {
    return FT_Get_Char_Index(static_cast<FT_Face>(m_face), code) != 0;
}

std::shared_ptr<Typeface> Typeface::faceFor(unsigned long code) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (has(code))
            return nullptr; // the caller's own face: see below
        auto known = m_fallbacks.find(code);
        if (known != m_fallbacks.end())
            if (auto face = known->second.lock())
                return face;
    }
    TypefaceLibrary& lib = TypefaceLibrary::get();
    std::shared_ptr<Typeface> found;
    {
        std::lock_guard<std::mutex> lock(lib.mutex);
        if (!lib.ready())
            return nullptr;
        FcPattern* p = lib.pattern(m_family, code);
        FcResult result = FcResultNoMatch;
        FcCharSet* coverage = nullptr;
        FcFontSet* sorted = FcFontSort(lib.config, p, FcFalse, &coverage, &result);
        if (sorted) {
            for (int i = 0; i < sorted->nfont && !found; ++i) {
                FcCharSet* set = nullptr;
                if (FcPatternGetCharSet(sorted->fonts[i], FC_CHARSET, 0, &set) != FcResultMatch ||
                    !FcCharSetHasChar(set, static_cast<FcChar32>(code)))
                    continue;
                FcPattern* match = FcFontRenderPrepare(lib.config, p, sorted->fonts[i]);
                if (match) {
                    found = lib.open(match);
                    FcPatternDestroy(match);
                }
            }
            FcFontSetDestroy(sorted);
        }
        if (coverage)
            FcCharSetDestroy(coverage);
        FcPatternDestroy(p);
    }
    if (found && !found->has(code))
        found.reset();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_fallbacks[code] = found;
    return found;
}

namespace {

// Flattens FreeType's contours in font units into em-unit loops.
struct Flattener {
    std::vector<std::vector<float>>* contours;
    double scale;     // em per font unit
    double tolerance; // font units
    FT_Vector last{};

    void add(double x, double y) {
        contours->back().push_back(static_cast<float>(x * scale));
        contours->back().push_back(static_cast<float>(y * scale));
    }
    static int moveTo(const FT_Vector* to, void* user) {
        auto* f = static_cast<Flattener*>(user);
        f->contours->emplace_back();
        f->add(to->x, to->y);
        f->last = *to;
        return 0;
    }
    static int lineTo(const FT_Vector* to, void* user) {
        auto* f = static_cast<Flattener*>(user);
        f->add(to->x, to->y);
        f->last = *to;
        return 0;
    }
    // A curve of n chords deviates from its control polygon's second differences by d / n^2.
    int segments(double secondDifference) const {
        const double n = std::ceil(std::sqrt(secondDifference / (4.0 * tolerance)));
        return static_cast<int>(std::clamp(n, 1.0, 64.0));
    }
    static int conicTo(const FT_Vector* c, const FT_Vector* to, void* user) {
        auto* f = static_cast<Flattener*>(user);
        const double x0 = f->last.x, y0 = f->last.y;
        const double dx = x0 - 2.0 * c->x + to->x, dy = y0 - 2.0 * c->y + to->y;
        const int n = f->segments(std::hypot(dx, dy));
        for (int i = 1; i <= n; ++i) {
            const double t = static_cast<double>(i) / n, u = 1.0 - t;
            f->add(u * u * x0 + 2 * u * t * c->x + t * t * to->x,
                   u * u * y0 + 2 * u * t * c->y + t * t * to->y);
        }
        f->last = *to;
        return 0;
    }
    static int cubicTo(const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* to, void* user) {
        auto* f = static_cast<Flattener*>(user);
        const double x0 = f->last.x, y0 = f->last.y;
        const double d1 = std::hypot(x0 - 2.0 * c1->x + c2->x, y0 - 2.0 * c1->y + c2->y);
        const double d2 = std::hypot(c1->x - 2.0 * c2->x + to->x, c1->y - 2.0 * c2->y + to->y);
        const int n = f->segments(3.0 * std::max(d1, d2));
        for (int i = 1; i <= n; ++i) {
            const double t = static_cast<double>(i) / n, u = 1.0 - t;
            const double a = u * u * u, b = 3 * u * u * t, cc = 3 * u * t * t, d = t * t * t;
            f->add(a * x0 + b * c1->x + cc * c2->x + d * to->x,
                   a * y0 + b * c1->y + cc * c2->y + d * to->y);
        }
        f->last = *to;
        return 0;
    }
};

} // namespace

bool Typeface::outline(unsigned long code, float deviation, Outline& out) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto known = m_outlines.find({code, deviation});
    if (known != m_outlines.end()) {
        out = known->second;
        return true;
    }
    auto* face = static_cast<FT_Face>(m_face);
    const FT_UInt index = FT_Get_Char_Index(face, code);
    if (index == 0 || FT_Load_Glyph(face, index, FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP) != 0)
        return false;
    const double units = face->units_per_EM > 0 ? face->units_per_EM : 1000.0;
    Outline glyph;
    glyph.advanceX = static_cast<float>(face->glyph->advance.x / units);
    glyph.advanceY = static_cast<float>(face->glyph->advance.y / units);
    if (face->glyph->format == FT_GLYPH_FORMAT_OUTLINE) {
        Flattener f{&glyph.contours, 1.0 / units, std::max(1.0, deviation * units)};
        FT_Outline_Funcs funcs{};
        funcs.move_to = &Flattener::moveTo;
        funcs.line_to = &Flattener::lineTo;
        funcs.conic_to = &Flattener::conicTo;
        funcs.cubic_to = &Flattener::cubicTo;
        FT_Outline_Decompose(&face->glyph->outline, &funcs, &f);
        // A loop closes itself: a last point on the first is dropped.
        for (auto& c : glyph.contours)
            if (c.size() >= 4 && c[c.size() - 2] == c[0] && c.back() == c[1])
                c.resize(c.size() - 2);
    }
    m_outlines[{code, deviation}] = glyph;
    out = std::move(glyph);
    return true;
}

bool Typeface::bitmap(unsigned long code, int pixelSize, Bitmap& out) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto* face = static_cast<FT_Face>(m_face);
    const FT_UInt index = FT_Get_Char_Index(face, code);
    if (index == 0 || FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(pixelSize)) != 0 ||
        FT_Load_Glyph(face, index, FT_LOAD_RENDER | FT_LOAD_TARGET_MONO) != 0)
        return false;
    const FT_Bitmap& b = face->glyph->bitmap;
    out.width = static_cast<int>(b.width);
    out.height = static_cast<int>(b.rows);
    out.originX = static_cast<float>(-face->glyph->bitmap_left);
    out.originY = static_cast<float>(out.height - face->glyph->bitmap_top);
    out.advance = static_cast<float>(face->glyph->advance.x) / 64.0f;
    const int rowBytes = (out.width + 7) / 8;
    out.bits.assign(static_cast<std::size_t>(rowBytes * out.height), 0);
    for (int row = 0; row < out.height; ++row) {
        const unsigned char* src = b.buffer + row * b.pitch;
        unsigned char* dst = out.bits.data() + (out.height - 1 - row) * rowBytes;
        if (b.pixel_mode == FT_PIXEL_MODE_MONO) {
            std::copy(src, src + rowBytes, dst);
        } else { // grey: a pixel is set from half coverage
            for (int x = 0; x < out.width; ++x)
                if (src[x] >= 128)
                    dst[x / 8] |= static_cast<unsigned char>(0x80 >> (x % 8));
        }
    }
    return true;
}

int Typeface::lineHeight(int pixelSize) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto* face = static_cast<FT_Face>(m_face);
    if (FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(pixelSize)) != 0)
        return pixelSize;
    const FT_Size_Metrics& m = face->size->metrics;
    return static_cast<int>((m.ascender - m.descender + 63) / 64);
}

HFONT Typeface::createHandle(const std::shared_ptr<Typeface>& face) {
    if (!face)
        return nullptr;
    TypefaceLibrary& lib = TypefaceLibrary::get();
    std::lock_guard<std::mutex> lock(lib.mutex);
    const std::uintptr_t id = lib.nextHandle++;
    lib.handles[id] = face;
    return reinterpret_cast<HFONT>(id);
}

std::shared_ptr<Typeface> Typeface::fromHandle(HFONT handle) {
    TypefaceLibrary& lib = TypefaceLibrary::get();
    std::lock_guard<std::mutex> lock(lib.mutex);
    auto found = lib.handles.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == lib.handles.end() ? nullptr : found->second;
}

bool Typeface::deleteHandle(HFONT handle) {
    std::shared_ptr<Typeface> face; // released outside the lock: its destructor takes it
    TypefaceLibrary& lib = TypefaceLibrary::get();
    std::lock_guard<std::mutex> lock(lib.mutex);
    auto found = lib.handles.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == lib.handles.end())
        return false;
    face = std::move(found->second);
    lib.handles.erase(found);
    return true;
}

bool Typeface::glyphOutline(unsigned long code, float deviation, Outline& out) {
    std::shared_ptr<Typeface> other = faceFor(code);
    return other ? other->outline(code, deviation, out)
                 : has(code) && outline(code, deviation, out);
}

bool Typeface::glyphBitmap(unsigned long code, int pixelSize, Bitmap& out) {
    std::shared_ptr<Typeface> other = faceFor(code);
    return other ? other->bitmap(code, pixelSize, out) : has(code) && bitmap(code, pixelSize, out);
}

bool Typeface::compileOutlines(unsigned long first, unsigned long count, unsigned int base,
                               float deviation, float* advances, bool fallback) {
    bool any = false;
    for (unsigned long i = 0; i < count; ++i) {
        const unsigned long code = first + i;
        Outline glyph;
        any = (fallback ? glyphOutline(code, deviation, glyph)
                        : has(code) && outline(code, deviation, glyph)) ||
              any;
        if (advances)
            advances[i] = glyph.advanceX;
        glNewList(base + static_cast<unsigned int>(i), GL_COMPILE);
        for (const auto& contour : glyph.contours) {
            glBegin(GL_LINE_LOOP);
            for (std::size_t p = 0; p + 1 < contour.size(); p += 2)
                glVertex2f(contour[p], contour[p + 1]);
            glEnd();
        }
        glTranslatef(glyph.advanceX, glyph.advanceY, 0.0f);
        glEndList();
    }
    return any;
}

bool Typeface::compileBitmaps(unsigned long first, unsigned long count, unsigned int base,
                              int pixelSize, float* advances) {
    GLint alignment = 4;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    bool any = false;
    for (unsigned long i = 0; i < count; ++i) {
        const unsigned long code = first + i;
        Bitmap glyph;
        any = glyphBitmap(code, pixelSize, glyph) || any;
        if (advances)
            advances[i] = glyph.advance;
        // An empty glyph (a space) moves on with one clear pixel: Mesa takes no empty bitmap
        // into a list.
        if (glyph.bits.empty()) {
            glyph.width = glyph.height = 1;
            glyph.originX = glyph.originY = 0.0f;
            glyph.bits.assign(1, 0);
        }
        glNewList(base + static_cast<unsigned int>(i), GL_COMPILE);
        glBitmap(glyph.width, glyph.height, glyph.originX, glyph.originY, glyph.advance, 0.0f,
                 glyph.bits.data());
        glEndList();
    }
    glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
    return any;
}

} // namespace qrngl
