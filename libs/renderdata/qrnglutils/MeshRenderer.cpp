#include "qrnglutils/MeshRenderer.h"

#include "qrngl/GL.h"

namespace qrnglutils {

MeshRenderer::MeshRenderer(const qrnsg::Mesh& mesh) {
    const std::size_t n = mesh.vertices.size();
    for (const auto& v : mesh.vertices)
        m_vertices.insert(m_vertices.end(), {v[0], v[1], v[2]});
    if (mesh.normals.size() == n)
        for (const auto& v : mesh.normals)
            m_normals.insert(m_normals.end(), {v[0], v[1], v[2]});
    // Indices past the vertices would make the driver read outside the arrays.
    for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3)
        if (mesh.indices[i] < n && mesh.indices[i + 1] < n && mesh.indices[i + 2] < n)
            m_indices.insert(m_indices.end(),
                             {mesh.indices[i], mesh.indices[i + 1], mesh.indices[i + 2]});
}

void MeshRenderer::render() const {
    if (m_indices.empty())
        return;
    // Client arrays are read as buffer offsets while a buffer object is bound.
    if (GLEW_VERSION_1_5) {
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    }
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, m_vertices.data());
    if (!m_normals.empty()) {
        glEnableClientState(GL_NORMAL_ARRAY);
        glNormalPointer(GL_FLOAT, 0, m_normals.data());
    }
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(m_indices.size()), GL_UNSIGNED_INT,
                   m_indices.data());
    if (!m_normals.empty())
        glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

} // namespace qrnglutils
