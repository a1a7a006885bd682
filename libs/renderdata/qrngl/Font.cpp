#include "qrngl/Font.h"

#include "qrngl/GL.h"

#include <string>

namespace qrngl {

void Font::callLists(unsigned int base, const std::wstring& text,
                     const std::function<unsigned int(wchar_t)>& other) {
    glListBase(base);
    std::string run;
    auto flush = [&run] {
        if (!run.empty())
            glCallLists(static_cast<GLsizei>(run.size()), GL_UNSIGNED_BYTE, run.data());
        run.clear();
    };
    for (const wchar_t c : text) {
        if (static_cast<unsigned long>(c) < CODES) {
            run += static_cast<char>(static_cast<unsigned char>(c));
        } else {
            flush();
            if (const unsigned int list = other ? other(c) : 0u)
                glCallList(list);
        }
    }
    flush();
}

void Font::deleteLists() {
    if (m_base != 0)
        glDeleteLists(m_base, CODES);
    for (const auto& g : m_glyphs)
        if (g.second.list != 0)
            glDeleteLists(g.second.list, 1);
}

float Font::width(const std::wstring& text) const {
    float w = 0.0f;
    for (const wchar_t c : text) {
        if (static_cast<unsigned long>(c) < CODES) {
            if (static_cast<std::size_t>(c) < m_advances.size())
                w += m_advances[static_cast<std::size_t>(c)];
        } else {
            auto g = m_glyphs.find(c);
            if (g != m_glyphs.end())
                w += g->second.advance;
        }
    }
    return w;
}

void Font::prepare(const std::wstring& text) const {
    GLint compiling = 0;
    glGetIntegerv(GL_LIST_INDEX, &compiling);
    if (compiling != 0)
        return;
    for (const wchar_t c : text) {
        if (static_cast<unsigned long>(c) < CODES || m_glyphs.count(c))
            continue;
        Glyph g;
        g.list = glGenLists(1);
        if (g.list != 0 && !makeGlyph(c, g.list, g.advance)) {
            glDeleteLists(g.list, 1);
            g = Glyph();
        }
        m_glyphs[c] = g;
    }
}

void Font::draw(const std::wstring& text) const {
    prepare(text);
    callLists(m_base, text, [this](wchar_t c) {
        auto g = m_glyphs.find(c);
        return g == m_glyphs.end() ? 0u : g->second.list;
    });
}

} // namespace qrngl
