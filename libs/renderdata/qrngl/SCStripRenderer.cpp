#include "qrngl/SCStripRenderer.h"

namespace qrngl {

SCStripRenderer::SCStripRenderer() : qrnsg::Schema(qrnsg::SCHEMA_STRIP_RENDERER) {}

std::shared_ptr<qrnsg::Schema> SCStripRenderer::clone() const {
    return std::make_shared<SCStripRenderer>(*this);
}

void SCStripRenderer::clear() {
    meshes.clear();
    coarseMeshes.clear();
    polylines.clear();
    points.clear();
    texts.clear();
    partStencil.clear();
    stencilHoldsParts = false;
}

void SCStripRenderer::close() {
    for (auto* list : {&meshes, &coarseMeshes, &polylines, &points, &texts})
        for (const auto& entry : *list)
            if (entry)
                entry->release();
}

} // namespace qrngl
