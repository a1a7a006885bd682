#pragma once

#include "qrngl/IStripEntry.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/Mesh.h"

#include <cstdint>
#include <vector>

namespace qrnglutils {

// A mesh drawn from buffer objects with one indexed draw call. The geometry is interleaved
// when made and uploaded on first use (or by prepare()); the CPU copy is then dropped.
class QRNGLUTILS_EXPORT MeshStripEntry : public qrngl::IStripEntry {
public:
    explicit MeshStripEntry(const qrnsg::Mesh& mesh);
    ~MeshStripEntry() override;
    MeshStripEntry(const MeshStripEntry&) = delete;
    MeshStripEntry& operator=(const MeshStripEntry&) = delete;

    void render() const override;
    // Ranges of triangles.
    void renderRanges(const std::vector<Range>& ranges,
                      const std::function<void(std::size_t)>& before) const override;
    // Uploads the geometry now; needs a current context.
    void prepare() const;
    // Frees the GPU objects; needs the context they were made in (or one sharing with it).
    void release();
    std::size_t triangleCount() const { return m_indexCount / 3; }

private:
    void bind() const;
    void unbind() const;

    mutable std::vector<float> m_vertices; // position, normal, optional texture coordinate
    mutable std::vector<std::uint32_t> m_indices;
    std::size_t m_indexCount;
    int m_stride; // floats per vertex
    bool m_hasNormals;
    bool m_hasTexCoords;
    bool m_shortIndices;
    mutable unsigned int m_vbo = 0;
    mutable unsigned int m_ibo = 0;
    mutable unsigned int m_list = 0; // used where buffer objects are missing
    mutable bool m_prepared = false;
};

} // namespace qrnglutils
