#include "qrnglutils/MeshStripEntry.h"

#include "qrngl/GL.h"

#include <algorithm>
#include <cstddef>

namespace qrnglutils {

namespace {
const void* offset(std::size_t bytes) {
    return reinterpret_cast<const void*>(bytes);
}
} // namespace

MeshStripEntry::MeshStripEntry(const qrnsg::Mesh& mesh)
    : m_indices(mesh.indices.begin(), mesh.indices.end()), m_indexCount(mesh.indices.size()),
      m_coarseCount(mesh.coarseIndices.size() - mesh.coarseIndices.size() % 3),
      m_hasNormals(mesh.normals.size() == mesh.vertices.size() && !mesh.vertices.empty()),
      m_hasTexCoords(mesh.texCoords.size() == mesh.vertices.size() && !mesh.vertices.empty()),
      m_shortIndices(mesh.vertices.size() <= 0xFFFF) {
    m_stride = 3 + (m_hasNormals ? 3 : 0) + (m_hasTexCoords ? 2 : 0);
    m_indices.insert(m_indices.end(), mesh.coarseIndices.begin(),
                     mesh.coarseIndices.begin() + static_cast<std::ptrdiff_t>(m_coarseCount));
    m_vertices.reserve(mesh.vertices.size() * static_cast<std::size_t>(m_stride));
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
        const auto& v = mesh.vertices[i];
        m_vertices.insert(m_vertices.end(), {v[0], v[1], v[2]});
        if (m_hasNormals) {
            const auto& n = mesh.normals[i];
            m_vertices.insert(m_vertices.end(), {n[0], n[1], n[2]});
        }
        if (m_hasTexCoords) {
            const auto& t = mesh.texCoords[i];
            m_vertices.insert(m_vertices.end(), {t[0], t[1]});
        }
    }
}

MeshStripEntry::~MeshStripEntry() = default;

void MeshStripEntry::prepare() const {
    if (m_prepared)
        return;
    m_prepared = true;
    if (GLEW_VERSION_1_5) {
        glGenBuffers(1, &m_vbo);
        glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(m_vertices.size() * sizeof(float)),
                     m_vertices.data(), GL_STATIC_DRAW);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glGenBuffers(1, &m_ibo);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_ibo);
        if (m_shortIndices) {
            std::vector<std::uint16_t> shorts(m_indices.begin(), m_indices.end());
            glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                         static_cast<GLsizeiptr>(shorts.size() * sizeof(std::uint16_t)),
                         shorts.data(), GL_STATIC_DRAW);
        } else {
            glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                         static_cast<GLsizeiptr>(m_indices.size() * sizeof(std::uint32_t)),
                         m_indices.data(), GL_STATIC_DRAW);
        }
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    } else {
        // Without buffer objects, display lists hold the geometry on the driver's side.
        auto compile = [this](std::size_t first, std::size_t count) {
            unsigned int list = glGenLists(1);
            glNewList(list, GL_COMPILE);
            glBegin(GL_TRIANGLES);
            for (std::size_t k = first; k < first + count; ++k) {
                const float* v = &m_vertices[static_cast<std::size_t>(m_indices[k]) * m_stride];
                if (m_hasNormals)
                    glNormal3fv(v + 3);
                if (m_hasTexCoords)
                    glTexCoord2fv(v + (m_hasNormals ? 6 : 3));
                glVertex3fv(v);
            }
            glEnd();
            glEndList();
            return list;
        };
        m_list = compile(0, m_indexCount);
        if (m_coarseCount > 0)
            m_coarseList = compile(m_indexCount, m_coarseCount);
    }
    std::vector<float>().swap(m_vertices);
    std::vector<std::uint32_t>().swap(m_indices);
}

void MeshStripEntry::bind() const {
    const GLsizei stride = static_cast<GLsizei>(m_stride * sizeof(float));
    glBindBuffer(GL_ARRAY_BUFFER, m_vbo);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, stride, offset(0));
    if (m_hasNormals) {
        glEnableClientState(GL_NORMAL_ARRAY);
        glNormalPointer(GL_FLOAT, stride, offset(3 * sizeof(float)));
    }
    if (m_hasTexCoords) {
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(2, GL_FLOAT, stride, offset((m_hasNormals ? 6 : 3) * sizeof(float)));
    }
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_ibo);
}

void MeshStripEntry::unbind() const {
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    if (m_hasTexCoords)
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    if (m_hasNormals)
        glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    // Unbound again so that later client-side arrays are not read as buffer offsets.
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void MeshStripEntry::render() const {
    if (m_indexCount == 0)
        return;
    prepare();
    if (m_list) {
        glCallList(m_list);
        return;
    }
    if (m_indexCount / 3 > BATCH_TRIANGLES) {
        renderRanges({Range{0, static_cast<unsigned int>(m_indexCount / 3)}}, nullptr);
        return;
    }
    bind();
    drawElements(0, m_indexCount);
    unbind();
}

void MeshStripEntry::renderCoarse() const {
    if (m_coarseCount == 0) {
        render();
        return;
    }
    prepare();
    if (m_coarseList) {
        glCallList(m_coarseList);
        return;
    }
    if (m_list) {
        glCallList(m_list);
        return;
    }
    bind();
    drawElements(m_indexCount, m_coarseCount);
    unbind();
}

void MeshStripEntry::drawElements(std::size_t first, std::size_t count) const {
    const std::size_t indexBytes = m_shortIndices ? sizeof(std::uint16_t) : sizeof(std::uint32_t);
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(count),
                   m_shortIndices ? GL_UNSIGNED_SHORT : GL_UNSIGNED_INT,
                   offset(first * indexBytes));
}

void MeshStripEntry::renderRanges(const std::vector<Range>& ranges,
                                  const std::function<void(std::size_t)>& before) const {
    if (m_indexCount == 0 || ranges.empty())
        return;
    prepare();
    if (m_list) {
        // A display list holds the whole mesh only.
        IStripEntry::renderRanges(ranges, before);
        return;
    }
    bind();
    const std::size_t triangles = m_indexCount / 3;
    if (!before && glMultiDrawElements) {
        // One call a batch of triangles, the frame flushed between batches: a software
        // rasteriser spends more on a call than on a cluster's triangles, starts on a batch
        // while the next is bound, and holds one batch of the frame at a time, not all.
        const std::size_t indexBytes =
            m_shortIndices ? sizeof(std::uint16_t) : sizeof(std::uint32_t);
        std::vector<GLsizei> counts;
        std::vector<const void*> offsets;
        std::size_t batch = 0;
        auto submit = [&] {
            if (counts.empty())
                return;
            glMultiDrawElements(GL_TRIANGLES, counts.data(),
                                m_shortIndices ? GL_UNSIGNED_SHORT : GL_UNSIGNED_INT,
                                offsets.data(), static_cast<GLsizei>(counts.size()));
            counts.clear();
            offsets.clear();
            batch = 0;
        };
        for (const Range& range : ranges) {
            std::size_t first = range.first;
            std::size_t left =
                first < triangles ? std::min<std::size_t>(range.count, triangles - first) : 0;
            while (left > 0) {
                const std::size_t take = std::min(left, BATCH_TRIANGLES - batch);
                counts.push_back(static_cast<GLsizei>(take * 3));
                offsets.push_back(offset(first * 3 * indexBytes));
                first += take;
                left -= take;
                batch += take;
                if (batch == BATCH_TRIANGLES) {
                    submit();
                    glFlush();
                }
            }
        }
        submit();
        unbind();
        return;
    }
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        const std::size_t first = ranges[i].first;
        if (first >= triangles)
            continue;
        const std::size_t count = std::min<std::size_t>(ranges[i].count, triangles - first);
        if (before)
            before(i);
        drawElements(first * 3, count * 3);
    }
    unbind();
}

void MeshStripEntry::release() {
    if (m_vbo)
        glDeleteBuffers(1, &m_vbo);
    if (m_ibo)
        glDeleteBuffers(1, &m_ibo);
    if (m_list)
        glDeleteLists(m_list, 1);
    if (m_coarseList)
        glDeleteLists(m_coarseList, 1);
    m_vbo = m_ibo = m_list = m_coarseList = 0;
    m_indexCount = m_coarseCount = 0;
}

} // namespace qrnglutils
