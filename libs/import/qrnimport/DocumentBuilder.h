#pragma once

#include "qrn/Document.h"
#include "qrnimport/ModelData.h"
#include "qrnimport/qrnimport_export.h"
#include "qrnsg/IFactory.h"

#include <cstddef>
#include <memory>

namespace qrnimport {

// How the meshes are prepared: triangles reordered for the vertex cache inside each face
// (a face stays the triangle range that picks name), and a coarse index list over the same
// vertices for frames drawn while the camera moves.
struct MeshPreparation {
    bool cacheOrder = true;
    // On the software rasteriser the order pays on large meshes only (a few per cent of
    // the frame); below this many triangles the reader's order stays.
    std::size_t cacheOrderFrom = 4096;
    bool coarse = true;
    std::size_t coarseFrom = 1024; // triangles; smaller meshes cost little already
    float coarseRatio = 0.1f;      // the triangles a coarse mesh aims at, of the full mesh
    float coarseError = 0.01f;     // the deviation it may have, of the mesh's extent
    // Clusters that still frames of closed solids leave out when they face away or lie
    // outside the view; faces of this many triangles are reordered into clusters of their own.
    bool clusters = true;
    std::size_t clustersFrom = 4096; // triangles of the mesh
    std::size_t clusterFaceFrom = 64;
    unsigned int threads = 0; // parts prepared at once; 0: one per core
};

// Fills a new document from model data: scene geometry (each part once), run-time state (one
// primitive per placed mesh and edge set, drawn in material order, transparent last), PMI and
// saved views, drawables, and a renderer component with a camera that fits the model in the
// iso view. The meshes are prepared for drawing once, the parts on all cores.
class QRNIMPORT_EXPORT DocumentBuilder {
public:
    using Options = MeshPreparation;

    // Null only when memory runs out; the model is left as it was.
    static std::shared_ptr<qrn::Document> build(const ModelData& model,
                                                const Options& options = Options());
    // The same, taking the model's meshes and edges instead of copying them, so that their
    // vertices are held once; the model keeps everything else (its parts without geometry).
    static std::shared_ptr<qrn::Document> build(ModelData&& model,
                                                const Options& options = Options());
    // The factory chain of such a document.
    static std::shared_ptr<qrnsg::IFactory> factoryChain();

private:
    // With `taken` (the model itself), geometry is moved out of it.
    static std::shared_ptr<qrn::Document> fill(const ModelData& model, const Options& options,
                                               ModelData* taken);
};

} // namespace qrnimport
