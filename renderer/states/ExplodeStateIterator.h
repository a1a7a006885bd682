#pragma once

#include "qrn/IDocument.h"
#include "qrngl/qrngl_export.h"
#include "qrngl/states/ProgressTracker.h"
#include "qrnmath/Tuple.h"
#include "qrnsgutils/ExplodeOptions.h"
#include "qrnsgutils/ExplosionGraph.h"

#include <memory>

namespace qrngl {

// Lays an assembly out exploded, level by level: within a level every node after the first
// goes onto the line through the first node's centre along the level's direction, just clear
// of the node before it; the levels below explode along the next direction. The placements
// are recorded in the graph.
class QRNGL_EXPORT ExplodeStateIterator {
public:
    ExplodeStateIterator(std::shared_ptr<qrn::IDocument> document,
                         const qrnsgutils::ExplodeOptions& options,
                         std::shared_ptr<qrnsgutils::ExplosionGraph> graph);

    void simpleExplode(ProgressTracker& tracker);

private:
    // The reference of one level.
    struct ExplodeInfo {
        qrnmath::Vec3 direction;
        qrnmath::Vec3 reference; // the centre of the level's first node
        float halfExtent = 0.0f; // half its extent along the direction
    };
    void simpleExplode(qrnsgutils::ExplosionGraph& graph, const qrnsgutils::ExplodeOptions& options,
                       ProgressTracker& tracker);
    bool getReferanceNodeInfo(const qrnsgutils::ExplosionGraph& graph, int axis,
                              ExplodeInfo& info) const;
    void nodeTransform(qrnsgutils::ExplosionGraph& graph, const qrnsgutils::ExplodeOptions& options,
                       const ExplodeInfo& reference, ProgressTracker& tracker);
    void propogate(qrnsgutils::ExplosionGraph& graph, const qrnsgutils::ExplodeOptions& options,
                   ProgressTracker& tracker, int axis);
    static void resetExplodeTrasnform(qrnsgutils::ExplosionGraph& graph);
    // Bounds and camera refitted to the layout so far.
    void updateRenderState() const;

    std::shared_ptr<qrn::IDocument> m_document;
    qrnsgutils::ExplodeOptions m_options;
    std::shared_ptr<qrnsgutils::ExplosionGraph> m_graph;
};

} // namespace qrngl
