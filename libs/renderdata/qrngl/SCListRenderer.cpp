#include "qrngl/SCListRenderer.h"

#include "qrngl/GL.h"

namespace qrngl {

SCListRenderer::SCListRenderer() : qrnsg::Schema(qrnsg::SCHEMA_LIST_RENDERER) {}

std::shared_ptr<qrnsg::Schema> SCListRenderer::clone() const {
    return std::make_shared<SCListRenderer>(*this);
}

// The lists belong to the context: dropping the names here leaves them to release().
void SCListRenderer::clear() {
    m_lists.clear();
}

void SCListRenderer::build(const std::vector<qrnsg::Mesh>& meshes) {
    release();
    m_lists.assign(meshes.size(), 0u);
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const qrnsg::Mesh& mesh = meshes[i];
        const GLuint list = glGenLists(1);
        if (!list)
            continue;
        glNewList(list, GL_COMPILE);
        glBegin(GL_TRIANGLES);
        for (std::size_t t = 0; t + 2 < mesh.indices.size(); t += 3) {
            // A triangle with an index past the vertices is left out whole.
            if (mesh.indices[t] >= mesh.vertices.size() ||
                mesh.indices[t + 1] >= mesh.vertices.size() ||
                mesh.indices[t + 2] >= mesh.vertices.size())
                continue;
            for (std::size_t k = t; k < t + 3; ++k) {
                const unsigned int index = mesh.indices[k];
                if (index < mesh.normals.size())
                    glNormal3fv(mesh.normals[index].data());
                glVertex3fv(mesh.vertices[index].data());
            }
        }
        glEnd();
        glEndList();
        m_lists[i] = list;
    }
}

void SCListRenderer::release() {
    for (unsigned int list : m_lists)
        if (list)
            glDeleteLists(list, 1);
    m_lists.clear();
}

void SCListRenderer::begin(int) const {
    glPushAttrib(GL_CURRENT_BIT);
}

void SCListRenderer::render(int index) const {
    if (index >= 0 && static_cast<std::size_t>(index) < m_lists.size() &&
        m_lists[static_cast<std::size_t>(index)])
        glCallList(m_lists[static_cast<std::size_t>(index)]);
}

void SCListRenderer::end(int) const {
    glPopAttrib();
}

} // namespace qrngl
