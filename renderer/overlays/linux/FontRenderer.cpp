#include "qrngl/overlays/FontRenderer.h"

#include "qrngl/GL.h"
#include "qrngl/linux/Typeface.h"

namespace qrngl {

// As on Windows, with a FreeType face for the GDI font: the handle is made, its outlines built
// as WGL_FONT_LINES builds them, and released at once; the renderer keeps the handle and
// releases it again when destroyed, which does nothing then, as a second DeleteObject does.
void FontRenderer::buildOutlines() {
    std::shared_ptr<Typeface> face = Typeface::find(faceName());
    m_font = Typeface::createHandle(face);
    if (face)
        face->compileOutlines(0, OUTLINES, m_listBase, 0.0f, nullptr, false);
    Typeface::deleteHandle(m_font);
}

FontRenderer::~FontRenderer() {
    glDeleteLists(m_listBase, LISTS);
    Typeface::deleteHandle(m_font);
}

} // namespace qrngl
