#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Schema.h"

#include <vector>

namespace qrngl {

// The meshes of the scene as display lists, by drawable index: the form hosts without the
// strip renderer's buffers hand the renderer. Each list draws its triangles with normals in
// the current material.
class QRNGLDATA_EXPORT SCListRenderer : public qrnsg::Schema {
public:
    SCListRenderer();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    // Compiles a list per mesh; with the context current. Replaces lists built before.
    void build(const std::vector<qrnsg::Mesh>& meshes);
    // Deletes the lists; with the context current.
    void release();
    void close() override { release(); }
    std::size_t size() const { return m_lists.size(); }
    // A drawable is drawn between begin and end of its index, which keep the current colour
    // and normal from leaking out of the list.
    void begin(int index) const;
    void render(int index) const;
    void end(int index) const;

private:
    std::vector<unsigned int> m_lists;
};

} // namespace qrngl
