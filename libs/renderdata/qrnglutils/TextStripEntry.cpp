#include "qrnglutils/TextStripEntry.h"

#include "qrngl/GL.h"

#include <vector>

namespace qrnglutils {

namespace {

// The box around a text line is centred on the anchor's height.
const float kHalfHeight = qrnsg::Text::BOX_HALF_HEIGHT;
const float kBaseline = qrnsg::Text::BOX_BELOW - kHalfHeight;
const float kPadding = qrnsg::Text::FRAME_PADDING;

std::vector<std::wstring> compartments(const std::wstring& text, bool framed) {
    std::vector<std::wstring> parts;
    if (!framed)
        return {text};
    std::wstring part;
    for (const wchar_t c : text + L"|") {
        if (c != L'|') {
            part += c;
            continue;
        }
        const std::size_t first = part.find_first_not_of(L' ');
        parts.push_back(first == std::wstring::npos
                            ? std::wstring()
                            : part.substr(first, part.find_last_not_of(L' ') - first + 1));
        part.clear();
    }
    return parts;
}

} // namespace

TextFont::TextFont(std::wstring face, std::wstring fallback)
    : m_face(std::move(face)), m_fallback(std::move(fallback)) {}

std::shared_ptr<qrngl::Font> TextFont::get() const {
    if (!m_tried) {
        m_tried = true;
        m_font = qrngl::Font::createOutline(m_face, m_fallback);
    }
    return m_font;
}

TextStripEntry::TextStripEntry(const qrnsg::Text& text, std::shared_ptr<TextFont> font)
    : m_text(text), m_font(std::move(font)) {}

void TextStripEntry::compile(const qrngl::Font& font) const {
    const std::vector<std::wstring> parts = compartments(m_text.text, m_text.framed);
    const float padding = m_text.framed ? kPadding : 0.0f;
    std::vector<float> widths;
    float total = 0.0f;
    for (const auto& part : parts) {
        font.prepare(part); // lists of characters above code 254, made before this one
        widths.push_back(font.width(part));
        total += widths.back() + 2.0f * padding;
    }
    const float left = m_text.align == qrnsg::Text::LEFT    ? 0.0f
                       : m_text.align == qrnsg::Text::RIGHT ? -total
                                                            : -total / 2.0f;
    m_box[0] = left;
    m_box[1] = -kHalfHeight;
    m_box[2] = left + total;
    m_box[3] = kHalfHeight;

    // Every glyph's contours, the frame and its rules as line loops of one buffer, drawn in
    // one call, where the font gives the contours; else glyph list by glyph list.
    std::vector<float> points;
    auto loop = [&](const std::vector<float>& xy, float dx, float dy) {
        m_firsts.push_back(static_cast<int>(points.size() / 2));
        m_counts.push_back(static_cast<int>(xy.size() / 2));
        for (std::size_t p = 0; p + 1 < xy.size(); p += 2)
            points.insert(points.end(), {xy[p] + dx, xy[p + 1] + dy});
    };
    bool contours = true;
    float x = left;
    for (std::size_t i = 0; i < parts.size() && contours; ++i) {
        float pen = x + padding;
        for (const wchar_t c : parts[i]) {
            std::vector<std::vector<float>> glyph;
            float advance = 0.0f;
            if (!font.contours(c, glyph, advance)) {
                contours = false;
                break;
            }
            for (const auto& contour : glyph)
                loop(contour, pen, kBaseline);
            pen += advance;
        }
        x += widths[i] + 2.0f * padding;
    }
    std::vector<std::vector<float>> frame;
    if (m_text.framed) {
        frame.push_back(
            {m_box[0], m_box[1], m_box[2], m_box[1], m_box[2], m_box[3], m_box[0], m_box[3]});
        x = left;
        for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
            x += widths[i] + 2.0f * padding;
            frame.push_back({x, m_box[1], x, m_box[3]});
        }
    }
    if (contours) {
        for (const auto& f : frame)
            loop(f, 0.0f, 0.0f);
        m_points = std::move(points);
        if (GLEW_VERSION_1_5 && !m_points.empty()) {
            glGenBuffers(1, &m_vbo);
            glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
            glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(m_points.size() * sizeof(float)),
                         m_points.data(), GL_STATIC_DRAW);
            glBindBuffer(GL_ARRAY_BUFFER, 0);
            m_points.clear();
        }
        return;
    }
    m_firsts.clear();
    m_counts.clear();
    m_list = glGenLists(1);
    if (m_list == 0)
        return;
    glNewList(m_list, GL_COMPILE);
    x = left;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        glPushMatrix();
        glTranslatef(x + padding, kBaseline, 0.0f);
        font.draw(parts[i]);
        glPopMatrix();
        x += widths[i] + 2.0f * padding;
    }
    for (const auto& f : frame) {
        glBegin(GL_LINE_LOOP);
        for (std::size_t p = 0; p + 1 < f.size(); p += 2)
            glVertex2f(f[p], f[p + 1]);
        glEnd();
    }
    glEndList();
}

void TextStripEntry::draw() const {
    glPushAttrib(GL_ENABLE_BIT);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    glPushMatrix();
    glScalef(m_text.height, m_text.height, m_text.height);
    if (m_list) {
        glCallList(m_list);
    } else if (!m_counts.empty()) {
        if (GLEW_VERSION_1_5)
            glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
        glEnableClientState(GL_VERTEX_ARRAY);
        glVertexPointer(2, GL_FLOAT, 0, m_vbo ? nullptr : m_points.data());
        glMultiDrawArrays(GL_LINE_LOOP, m_firsts.data(), m_counts.data(),
                          static_cast<GLsizei>(m_counts.size()));
        glDisableClientState(GL_VERTEX_ARRAY);
        if (GLEW_VERSION_1_5)
            glBindBuffer(GL_ARRAY_BUFFER, 0);
    }
    glPopMatrix();
    glPopAttrib();
}

void TextStripEntry::prepare() const {
    if (m_compiled)
        return;
    const auto font = m_font ? m_font->get() : nullptr;
    if (!font)
        return;
    m_compiled = true;
    compile(*font);
}

void TextStripEntry::render() const {
    prepare();
    if (m_list == 0 && m_counts.empty())
        return;
    // Readable from any side: seen from behind, the text turns about its box's vertical axis;
    // upside down, about its normal; both, about its baseline's direction; always about the
    // box's centre.
    GLfloat view[16], projection[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, view);
    glGetFloatv(GL_PROJECTION_MATRIX, projection);
    const bool orthographic = projection[11] == 0.0f && projection[15] == 1.0f;
    // From the text towards the eye, in eye space.
    const float toEye[3] = {orthographic ? 0.0f : -view[12], orthographic ? 0.0f : -view[13],
                            orthographic ? 1.0f : -view[14]};
    const bool front = view[8] * toEye[0] + view[9] * toEye[1] + view[10] * toEye[2] >= 0.0f;
    const bool upright = view[5] >= 0.0f;
    if (front && upright) {
        draw();
        return;
    }
    const float centre = (m_box[0] + m_box[2]) / 2.0f * m_text.height;
    glPushMatrix();
    glTranslatef(centre, 0.0f, 0.0f);
    if (!front && upright)
        glRotatef(180.0f, 0.0f, 1.0f, 0.0f);
    else if (front)
        glRotatef(180.0f, 0.0f, 0.0f, 1.0f);
    else
        glRotatef(180.0f, 1.0f, 0.0f, 0.0f);
    glTranslatef(-centre, 0.0f, 0.0f);
    draw();
    glPopMatrix();
}

void TextStripEntry::release() {
    if (m_list)
        glDeleteLists(m_list, 1);
    if (m_vbo)
        glDeleteBuffers(1, &m_vbo);
    m_list = m_vbo = 0;
    m_points.clear();
    m_firsts.clear();
    m_counts.clear();
    m_compiled = false;
}

} // namespace qrnglutils
