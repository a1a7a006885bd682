#include "FloorDrawable.h"

#include "qrngl/GL.h"
#include "qrnmath/MatrixUtils.h"

#include <cstdint>
#include <vector>

namespace qrnbench {

FloorDrawable::FloorDrawable(const qrnimport::ModelData& model) {
    std::vector<float> vertices;
    std::vector<std::uint32_t> indices;
    for (std::size_t n = 0; n < model.nodes.size(); ++n) {
        int p = model.nodes[n].part;
        if (p < 0)
            continue;
        auto world = model.worldTransform(static_cast<int>(n));
        for (const auto& mesh : model.parts[static_cast<std::size_t>(p)].meshes) {
            auto base = static_cast<std::uint32_t>(vertices.size() / 6);
            for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
                auto v = qrnmath::MatrixUtils::transformPoint(world, mesh.vertices[i]);
                auto nn = i < mesh.normals.size()
                              ? qrnmath::MatrixUtils::transformVector(world, mesh.normals[i])
                              : qrnmath::Vec3(0, 0, 1);
                vertices.insert(vertices.end(), {v[0], v[1], v[2], nn[0], nn[1], nn[2]});
            }
            for (auto idx : mesh.indices)
                indices.push_back(base + idx);
        }
    }
    m_count = indices.size();
    glGenBuffers(1, &m_vbo);
    glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices.size() * sizeof(float)),
                 vertices.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glGenBuffers(1, &m_ibo);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_ibo);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                 static_cast<GLsizeiptr>(indices.size() * sizeof(std::uint32_t)), indices.data(),
                 GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
}

FloorDrawable::~FloorDrawable() {
    glDeleteBuffers(1, &m_vbo);
    glDeleteBuffers(1, &m_ibo);
}

void FloorDrawable::render() const {
    glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glVertexPointer(3, GL_FLOAT, 24, nullptr);
    glNormalPointer(GL_FLOAT, 24, reinterpret_cast<const void*>(12));
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_ibo);
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(m_count), GL_UNSIGNED_INT, nullptr);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

} // namespace qrnbench
