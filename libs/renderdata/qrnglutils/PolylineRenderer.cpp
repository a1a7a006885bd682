#include "qrnglutils/PolylineRenderer.h"

#include "qrngl/GL.h"

namespace qrnglutils {

PolylineRenderer::PolylineRenderer(const qrnsg::Polyline& polyline) {
    for (const auto& p : polyline.points)
        m_points.insert(m_points.end(), {p[0], p[1], p[2]});
    const std::size_t n = polyline.stripCount();
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t first = polyline.strips[i];
        const std::size_t end = i + 1 < n ? polyline.strips[i + 1] : polyline.points.size();
        if (end > first + 1 && end <= polyline.points.size()) {
            m_firsts.push_back(static_cast<int>(first));
            m_counts.push_back(static_cast<int>(end - first));
        }
    }
}

PolylineRenderer::PolylineRenderer(const qrnsg::PointSet& points)
    : m_pointSize(points.size > 0.0f ? points.size : 1.0f) {
    for (const auto& p : points.points)
        m_points.insert(m_points.end(), {p[0], p[1], p[2]});
    if (!points.points.empty()) {
        m_firsts.push_back(0);
        m_counts.push_back(static_cast<int>(points.points.size()));
    }
}

void PolylineRenderer::render() const {
    if (m_counts.empty())
        return;
    const GLboolean lit = glIsEnabled(GL_LIGHTING);
    if (lit)
        glDisable(GL_LIGHTING);
    // Client arrays are read as buffer offsets while a buffer object is bound.
    if (GLEW_VERSION_1_5)
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, m_points.data());
    GLfloat size = 1.0f;
    if (m_pointSize > 0.0f) {
        glGetFloatv(GL_POINT_SIZE, &size);
        glPointSize(m_pointSize);
    }
    for (std::size_t i = 0; i < m_counts.size(); ++i)
        glDrawArrays(m_pointSize > 0.0f ? GL_POINTS : GL_LINE_STRIP, m_firsts[i], m_counts[i]);
    if (m_pointSize > 0.0f)
        glPointSize(size);
    glDisableClientState(GL_VERTEX_ARRAY);
    if (lit)
        glEnable(GL_LIGHTING);
}

} // namespace qrnglutils
