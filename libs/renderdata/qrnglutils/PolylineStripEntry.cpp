#include "qrnglutils/PolylineStripEntry.h"

#include "qrngl/GL.h"

#include <algorithm>

namespace qrnglutils {

PolylineStripEntry::PolylineStripEntry(const qrnsg::Polyline& polyline)
    : m_isPoints(false), m_pointSize(1.0f) {
    for (const auto& p : polyline.points)
        m_points.insert(m_points.end(), {p[0], p[1], p[2]});
    m_pointCount = polyline.points.size();
    std::size_t n = polyline.stripCount();
    for (std::size_t i = 0; i < n; ++i) {
        std::size_t first = polyline.strips[i];
        std::size_t end = i + 1 < n ? polyline.strips[i + 1] : polyline.points.size();
        m_firsts.push_back(static_cast<int>(first));
        m_counts.push_back(end > first ? static_cast<int>(end - first) : 0);
        m_hasStrips = m_hasStrips || end > first + 1;
    }
}

PolylineStripEntry::PolylineStripEntry(const qrnsg::PointSet& points)
    : m_isPoints(true), m_pointSize(points.size) {
    for (const auto& p : points.points)
        m_points.insert(m_points.end(), {p[0], p[1], p[2]});
    m_pointCount = points.points.size();
    if (!points.points.empty()) {
        m_firsts.push_back(0);
        m_counts.push_back(static_cast<int>(points.points.size()));
        m_hasStrips = true;
    }
}

PolylineStripEntry::~PolylineStripEntry() = default;

void PolylineStripEntry::prepare() const {
    if (m_prepared)
        return;
    m_prepared = true;
    if (!GLEW_VERSION_1_5)
        return; // drawn from the CPU copy instead
    glGenBuffers(1, &m_vbo);
    glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(m_points.size() * sizeof(float)),
                 m_points.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    std::vector<float>().swap(m_points);
}

void PolylineStripEntry::bind() const {
    prepare();
    if (m_vbo)
        glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, m_vbo ? nullptr : m_points.data());
    if (m_isPoints)
        glPointSize(m_pointSize);
}

void PolylineStripEntry::unbind() const {
    glDisableClientState(GL_VERTEX_ARRAY);
    if (m_vbo)
        glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void PolylineStripEntry::render() const {
    if (!m_hasStrips)
        return;
    GLboolean lit = glIsEnabled(GL_LIGHTING);
    if (lit)
        glDisable(GL_LIGHTING);
    bind();
    if (m_isPoints) {
        glDrawArrays(GL_POINTS, 0, m_counts[0]);
    } else if (m_counts.size() == 1) {
        glDrawArrays(GL_LINE_STRIP, m_firsts[0], m_counts[0]);
    } else if (glMultiDrawArrays) {
        glMultiDrawArrays(GL_LINE_STRIP, m_firsts.data(), m_counts.data(),
                          static_cast<GLsizei>(m_counts.size()));
    } else {
        for (std::size_t i = 0; i < m_counts.size(); ++i)
            glDrawArrays(GL_LINE_STRIP, m_firsts[i], m_counts[i]);
    }
    unbind();
    if (lit)
        glEnable(GL_LIGHTING);
}

void PolylineStripEntry::renderRanges(const std::vector<Range>& ranges,
                                      const std::function<void(std::size_t)>& before) const {
    if (!m_hasStrips || ranges.empty())
        return;
    GLboolean lit = glIsEnabled(GL_LIGHTING);
    if (lit)
        glDisable(GL_LIGHTING);
    bind();
    const std::size_t total = m_isPoints ? m_pointCount : m_counts.size();
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        const std::size_t first = ranges[i].first;
        if (first >= total)
            continue;
        const std::size_t end = std::min<std::size_t>(total, first + ranges[i].count);
        if (before)
            before(i);
        if (m_isPoints) {
            glDrawArrays(GL_POINTS, static_cast<GLint>(first), static_cast<GLsizei>(end - first));
            continue;
        }
        for (std::size_t s = first; s < end; ++s)
            if (m_counts[s] > 1)
                glDrawArrays(GL_LINE_STRIP, m_firsts[s], m_counts[s]);
    }
    unbind();
    if (lit)
        glEnable(GL_LIGHTING);
}

void PolylineStripEntry::renderColoured(const std::vector<unsigned char>& colours) const {
    if (colours.size() < 4 * m_pointCount)
        return;
    // Set while no buffer is bound, so that the pointer is read as client memory.
    if (glBindBuffer)
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, colours.data());
    glEnableClientState(GL_COLOR_ARRAY);
    render();
    glDisableClientState(GL_COLOR_ARRAY);
}

void PolylineStripEntry::release() {
    if (m_vbo)
        glDeleteBuffers(1, &m_vbo);
    m_vbo = 0;
    m_counts.clear();
    m_firsts.clear();
    m_hasStrips = false;
}

} // namespace qrnglutils
