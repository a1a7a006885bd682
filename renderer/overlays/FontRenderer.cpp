#include "qrngl/overlays/FontRenderer.h"

#include "qrngl/GL.h"
#include "qrngl/resources/StringTable.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsgutils/ResourceLoader.h"
#include "qrnsgutils/StringUtils.h"

namespace qrngl {

FontRenderer::FontRenderer(const std::shared_ptr<qrnsg::Text3D>& text, float& scale) {
    compileList(text ? *text : qrnsg::Text3D(), scale);
}

FontRenderer::FontRenderer(const FontRenderer& other) = default;
FontRenderer& FontRenderer::operator=(const FontRenderer& other) = default;

void FontRenderer::render() const {
    glCallList(m_listBase);
}

std::wstring FontRenderer::faceName() {
    return qrnsgutils::ResourceLoader::getString(libraryModule(), IDS_OUTLINE_FONT);
}

std::wstring FontRenderer::fallbackFaceName() {
    return qrnsgutils::ResourceLoader::getString(libraryModule(), IDS_UNICODE_FONT);
}

void FontRenderer::compileList(const qrnsg::Text3D& text, float scale) {
    const std::string narrow = qrnsgutils::StringUtils::convert(text.text);
    const qrnmath::Vec3 anchor = text.position;
    const qrnmath::Mat4 matrix = text.matrix;
    const qrnmath::Mat4 inverse = qrnmath::MatrixUtils::inverse(matrix, 0.001f);
    m_listBase = glGenLists(LISTS);

    buildOutlines();

    // Code 0 never occurs in a text: its list becomes the text's.
    glNewList(m_listBase, GL_COMPILE);
    glTranslatef(anchor[0], anchor[1], anchor[2]);
    glScalef(scale, scale, scale);
    glMultMatrixf(inverse.data());
    glListBase(m_listBase);
    glCallLists(static_cast<GLsizei>(narrow.size()), GL_UNSIGNED_BYTE, narrow.data());
    glMultMatrixf(matrix.data());
    glEndList();
}

} // namespace qrngl
