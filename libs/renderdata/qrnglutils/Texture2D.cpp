#include "qrnglutils/Texture2D.h"

#include "qrngl/GL.h"

namespace qrnglutils {

Texture2D::Texture2D(unsigned int width, unsigned int height, std::vector<std::uint8_t> rgba)
    : m_width(width), m_height(height), m_rgba(std::move(rgba)) {}

void Texture2D::bind() const {
    if (!m_name && m_rgba.size() >= static_cast<std::size_t>(m_width) * m_height * 4) {
        glGenTextures(1, &m_name);
        glBindTexture(GL_TEXTURE_2D, m_name);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, static_cast<GLsizei>(m_width),
                     static_cast<GLsizei>(m_height), 0, GL_RGBA, GL_UNSIGNED_BYTE, m_rgba.data());
        std::vector<std::uint8_t>().swap(m_rgba);
    }
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, m_name);
}

} // namespace qrnglutils
