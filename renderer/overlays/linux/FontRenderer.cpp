#include "qrngl/overlays/FontRenderer.h"

#include "qrngl/GL.h"
#include "qrngl/linux/Typeface.h"

namespace qrngl {

// As on Windows, with a FreeType face for the GDI font: the handle is made, its outlines built
// as WGL_FONT_LINES builds them, and released at once; the renderer keeps the handle and
// releases it again when destroyed, which does nothing then, as a second DeleteObject does.
void FontRenderer::buildOutlines(const std::vector<wchar_t>& beyond) {
    std::shared_ptr<Typeface> face = Typeface::find(faceName());
    m_font = Typeface::createHandle(face);
    if (face) {
        face->compileOutlines(0, OUTLINES, m_listBase, 0.0f, nullptr, false);
        if (!beyond.empty()) {
            m_beyond = beyond;
            m_beyondBase = glGenLists(static_cast<GLsizei>(beyond.size()));
            for (std::size_t i = 0; i < beyond.size(); ++i)
                face->compileOutlines(static_cast<unsigned long>(beyond[i]), 1,
                                      m_beyondBase + static_cast<unsigned int>(i), 0.0f, nullptr);
        }
    }
    Typeface::deleteHandle(m_font);
}

FontRenderer::~FontRenderer() {
    glDeleteLists(m_listBase, LISTS);
    if (!m_beyond.empty())
        glDeleteLists(m_beyondBase, static_cast<GLsizei>(m_beyond.size()));
    Typeface::deleteHandle(m_font);
}

} // namespace qrngl
