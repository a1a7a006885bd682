#pragma once

#include "qrngl/Handles.h"
#include "qrngl/IRenderer.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/Text3D.h"

#include <memory>
#include <string>

namespace qrngl {

// One 3D text as one display list: the 256 lists from its base hold the outlines of the
// library's text face (string 103) for codes 0 to 254, and list base itself, compiled last,
// places, scales and turns the text and calls the outlines of its characters. Characters above
// code 254 have no outline (scene texts, which may hold any, are drawn with the shared Font). Made
// for the context current at construction (or one sharing its lists). The caller brackets render()
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
    // the base, the font released.
    void buildOutlines();

    unsigned int m_listBase = 0xFFFFFFFFu;
    HFONT m_font = nullptr;
};

} // namespace qrngl
