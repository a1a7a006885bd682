#pragma once

#include "qrngl/Font.h"
#include "qrngl/IStripEntry.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/Text.h"

#include <memory>
#include <string>
#include <vector>

namespace qrnglutils {

// The outline font that the texts of one scene share, made on first use with the context
// current.
class QRNGLUTILS_EXPORT TextFont {
public:
    TextFont(std::wstring face, std::wstring fallback);
    // Null when no font can be made (no context, no face).
    std::shared_ptr<qrngl::Font> get() const;

private:
    std::wstring m_face;
    std::wstring m_fallback;
    mutable std::shared_ptr<qrngl::Font> m_font;
    mutable bool m_tried = false;
};

// One scene text in glyph outlines, made ready on first draw: one buffer of line loops drawn
// in one call where the font gives its glyphs' contours, else one display list. It draws in its own
// frame: the em is the text's height, the baseline runs along x, the anchor at the origin lies
// on the text's box as its alignment says; the frame places it. Seen from behind or upside
// down, it turns about its box's centre so that it reads from left to right, upright.
class QRNGLUTILS_EXPORT TextStripEntry : public qrngl::IStripEntry {
public:
    TextStripEntry(const qrnsg::Text& text, std::shared_ptr<TextFont> font);
    TextStripEntry(const TextStripEntry&) = delete;
    TextStripEntry& operator=(const TextStripEntry&) = delete;

    void render() const override;
    // Compiles the list now (needs a current context), so that no frame pays for it.
    void prepare() const;
    void release() override;

    // The box in em from the anchor: left, bottom, right, top; valid once drawn.
    const float* box() const { return m_box; }

private:
    void compile(const qrngl::Font& font) const;
    void draw() const;

    qrnsg::Text m_text;
    std::shared_ptr<TextFont> m_font;
    mutable unsigned int m_list = 0; // the glyph lists' way
    mutable unsigned int m_vbo = 0;  // the contours' way, or the points where no buffers
    mutable std::vector<float> m_points;
    mutable std::vector<int> m_firsts;
    mutable std::vector<int> m_counts;
    mutable bool m_compiled = false;
    mutable float m_box[4] = {0.0f, 0.0f, 0.0f, 0.0f};
};

} // namespace qrnglutils
