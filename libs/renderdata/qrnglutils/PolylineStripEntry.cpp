#include "qrnglutils/PolylineStripEntry.h"

#include "qrngl/GL.h"

namespace qrnglutils {

PolylineStripEntry::PolylineStripEntry(const qrnsg::Polyline& polyline)
    : m_isPoints(false), m_pointSize(1.0f) {
    for (const auto& p : polyline.points)
        m_points.insert(m_points.end(), {p[0], p[1], p[2]});
    std::size_t n = polyline.stripCount();
    for (std::size_t i = 0; i < n; ++i) {
        std::size_t first = polyline.strips[i];
        std::size_t end = i + 1 < n ? polyline.strips[i + 1] : polyline.points.size();
        if (end > first + 1) {
            m_firsts.push_back(static_cast<int>(first));
            m_counts.push_back(static_cast<int>(end - first));
        }
    }
}

PolylineStripEntry::PolylineStripEntry(const qrnsg::PointSet& points)
    : m_isPoints(true), m_pointSize(points.size) {
    for (const auto& p : points.points)
        m_points.insert(m_points.end(), {p[0], p[1], p[2]});
    if (!points.points.empty()) {
        m_firsts.push_back(0);
        m_counts.push_back(static_cast<int>(points.points.size()));
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

void PolylineStripEntry::render() const {
    if (m_counts.empty())
        return;
    prepare();
    GLboolean lit = glIsEnabled(GL_LIGHTING);
    if (lit)
        glDisable(GL_LIGHTING);
    if (m_vbo)
        glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, m_vbo ? nullptr : m_points.data());
    if (m_isPoints) {
        glPointSize(m_pointSize);
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
    glDisableClientState(GL_VERTEX_ARRAY);
    if (m_vbo)
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    if (lit)
        glEnable(GL_LIGHTING);
}

void PolylineStripEntry::release() {
    if (m_vbo)
        glDeleteBuffers(1, &m_vbo);
    m_vbo = 0;
    m_counts.clear();
    m_firsts.clear();
}

} // namespace qrnglutils
