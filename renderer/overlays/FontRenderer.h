#pragma once

#include "qrngl/Handles.h"
#include "qrngl/IRenderer.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/Text3D.h"

#include <memory>
#include <string>
#include <vector>

namespace qrngl {

// One 3D text as one display list: the 256 lists from its base hold the outlines of the
// library's text face (string 103) for codes 0 to 254, and list base itself, compiled last,
// places, scales and turns the text and calls the outlines of its characters. Made for the
// context current at construction (or one sharing its lists). The caller brackets render()
// with a matrix push and pop: the list leaves the anchor's translation and the scale applied.
class QRNGL_EXPORT FontRenderer : public IRenderer {
public:
    enum : unsigned int { LISTS = 256, OUTLINES = 255 };

    FontRenderer(const std::shared_ptr<qrnsg::Text3D>& text, float& scale);
    // Copies share the lists and the font handle; each deletes them when destroyed.
    FontRenderer(const FontRenderer& other);
    FontRenderer& operator=(const FontRenderer& other);
    ~FontRenderer() override;

    void render() const override;

    unsigned int listBase() const { return m_listBase; }
    HFONT font() const { return m_font; }

    // The face asked for (string 103: "Century") and the one for characters it lacks (102).
    static std::wstring faceName();
    static std::wstring fallbackFaceName();

private:
    void compileList(const qrnsg::Text3D& text, float scale);
    // The platform's part: the font made and selected, the outlines of codes 0 to 254 built at
    // the base, the lists of `beyond` built at m_beyondBase, the font released.
    void buildOutlines(const std::vector<wchar_t>& beyond);

    unsigned int m_listBase = 0xFFFFFFFFu;
    HFONT m_font = nullptr;
    // Characters above code 254 have no list from the base; a text that holds some gets one list
    // for each, in the order of `m_beyond`.
    unsigned int m_beyondBase = 0;
    std::vector<wchar_t> m_beyond;
};

} // namespace qrngl
