#pragma once

#include "qrngl/IStripEntry.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/Mesh.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qrnglutils {

// A mesh drawn from buffer objects with one indexed draw call. The geometry is interleaved
// when made and uploaded on first use (or by prepare()); the CPU copy is then dropped. The
// mesh's coarse indices, if any, follow the full ones in the same index buffer.
class QRNGLUTILS_EXPORT MeshStripEntry : public qrngl::IStripEntry {
public:
    explicit MeshStripEntry(const qrnsg::Mesh& mesh);
    ~MeshStripEntry() override;
    MeshStripEntry(const MeshStripEntry&) = delete;
    MeshStripEntry& operator=(const MeshStripEntry&) = delete;

    // Meshes of more triangles than this are drawn in batches of as many, flushed between.
    static constexpr std::size_t BATCH_TRIANGLES = 8192;

    void render() const override;
    // Ranges of triangles.
    void renderRanges(const std::vector<Range>& ranges,
                      const std::function<void(std::size_t)>& before) const override;
    // Uploads the geometry now; needs a current context.
    void prepare() const;
    // Frees the GPU objects; needs the context they were made in (or one sharing with it).
    void release() override;
    std::size_t triangleCount() const { return m_indexCount / 3; }
    std::size_t coarseTriangleCount() const { return m_coarseCount / 3; }
    // The coarse triangles over the same vertices (the full mesh where there are none).
    void renderCoarse() const;

    // The coarse version of a mesh as a drawable of its own.
    class QRNGLUTILS_EXPORT Coarse : public qrngl::IStripEntry {
    public:
        explicit Coarse(std::shared_ptr<const MeshStripEntry> mesh) : m_mesh(std::move(mesh)) {}
        void render() const override { m_mesh->renderCoarse(); }
        std::size_t triangleCount() const { return m_mesh->coarseTriangleCount(); }

    private:
        std::shared_ptr<const MeshStripEntry> m_mesh;
    };

private:
    void bind() const;
    void unbind() const;
    void drawElements(std::size_t first, std::size_t count) const;

    mutable std::vector<float> m_vertices; // position, normal, optional texture coordinate
    mutable std::vector<std::uint32_t> m_indices;
    std::size_t m_indexCount;
    std::size_t m_coarseCount;
    int m_stride; // floats per vertex
    bool m_hasNormals;
    bool m_hasTexCoords;
    bool m_shortIndices;
    mutable unsigned int m_vbo = 0;
    mutable unsigned int m_ibo = 0;
    mutable unsigned int m_list = 0; // used where buffer objects are missing
    mutable unsigned int m_coarseList = 0;
    mutable bool m_prepared = false;
};

} // namespace qrnglutils
