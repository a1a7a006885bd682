#pragma once

#include "qrngl/IRenderer.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/Mesh.h"

#include <vector>

namespace qrnglutils {

// Draws a mesh from client memory in the current matrices, with the current material. Meant
// for small geometry that is made anew often, such as the zoom box rebuilt on every mouse
// motion: it owns no GL objects, so it needs no context to be made or destroyed.
class QRNGLUTILS_EXPORT MeshRenderer : public qrngl::IRenderer {
public:
    explicit MeshRenderer(const qrnsg::Mesh& mesh);
    void render() const override;

private:
    std::vector<float> m_vertices;
    std::vector<float> m_normals; // empty unless one per vertex
    std::vector<unsigned int> m_indices;
};

} // namespace qrnglutils
