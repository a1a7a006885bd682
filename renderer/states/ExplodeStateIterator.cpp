#include "qrngl/states/ExplodeStateIterator.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"

namespace qrngl {

using qrnmath::MatrixUtils;
using qrnmath::Vec3;
using qrnsgutils::ExplodeOptions;
using qrnsgutils::ExplosionGraph;

ExplodeStateIterator::ExplodeStateIterator(std::shared_ptr<qrn::IDocument> document,
                                           const ExplodeOptions& options,
                                           std::shared_ptr<ExplosionGraph> graph)
    : m_document(std::move(document)), m_options(options), m_graph(std::move(graph)) {}

void ExplodeStateIterator::simpleExplode(ProgressTracker& tracker) {
    if (!m_graph)
        return;
    simpleExplode(*m_graph, m_options, tracker);
    resetExplodeTrasnform(*m_graph);
}

void ExplodeStateIterator::simpleExplode(ExplosionGraph& graph, const ExplodeOptions& options,
                                         ProgressTracker& tracker) {
    ExplodeInfo reference;
    if (getReferanceNodeInfo(graph, options.axis, reference))
        nodeTransform(graph, options, reference, tracker);
    // Successive levels along successive directions; a single node keeps its level's.
    const int childAxis = graph.size() > 1 ? (options.axis + 1) % 3 : options.axis;
    propogate(graph, options, tracker, childAxis);
}

bool ExplodeStateIterator::getReferanceNodeInfo(const ExplosionGraph& graph, int axis,
                                                ExplodeInfo& info) const {
    auto resources = qrn::component<qrnsg::SCSceneRes>(m_document, qrnsg::SCHEMA_SCENE_RES);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    auto infoComponent = qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO);
    if (!resources || !topology || !infoComponent || graph.nodes.empty())
        return false;
    const auto& first = *graph.nodes.front();
    info.reference = first.centre();
    if (!ExplosionGraph::getExplosionDir(axis, topology, infoComponent, resources, info.direction))
        return false;
    info.halfExtent = 0.5f * first.getMaxDistInDirection(info.direction);
    return true;
}

void ExplodeStateIterator::nodeTransform(ExplosionGraph& graph, const ExplodeOptions& options,
                                         const ExplodeInfo& reference, ProgressTracker& tracker) {
    auto resources = qrn::component<qrnsg::SCSceneRes>(m_document, qrnsg::SCHEMA_SCENE_RES);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    auto info = qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO);
    if (!resources || !topology || !info || graph.nodes.size() < 2)
        return;
    // The first node stays; each further one goes just beyond the one before it.
    for (std::size_t k = 1; k < graph.nodes.size(); ++k) {
        const auto& previous = *graph.nodes[k - 1];
        const auto& node = graph.nodes[k];
        const float dPrev = previous.getMaxDistInDirection(reference.direction);
        const Vec3 cPrev = MatrixUtils::transformPoint(previous.localTransform, previous.centre());
        const float gap = reference.reference.distance(cPrev);
        const float dNode = node->getMaxDistInDirection(reference.direction);
        const Vec3 offset = reference.reference - node->centre();
        const auto s = static_cast<float>(static_cast<double>(dNode) * 0.5 +
                                          static_cast<double>(dPrev) * 0.5 + gap);
        // A 1 % margin leaves a gap to be seen between neighbours.
        const float distance = s + s * 0.01f;
        const Vec3 translation = offset + reference.direction * distance;
        graph.setTransform(node, translation, distance, info->explodeScale, topology, resources);
        node->localTransform =
            MatrixUtils::multiply(node->localTransform, MatrixUtils::translation(translation));
        if (options.updateRenderState)
            updateRenderState();
        if (options.reportProgress)
            tracker.setProgress();
    }
}

void ExplodeStateIterator::propogate(ExplosionGraph& graph, const ExplodeOptions& options,
                                     ProgressTracker& tracker, int axis) {
    for (const auto& node : graph.nodes) {
        if (!node->child)
            continue;
        ExplodeOptions below;
        below.distance = node->getBoxDistance();
        below.flag4 = options.flag4;
        below.updateRenderState = options.updateRenderState;
        below.reportProgress = options.reportProgress;
        below.axis = axis;
        simpleExplode(*node->child, below, tracker);
    }
}

void ExplodeStateIterator::resetExplodeTrasnform(ExplosionGraph& graph) {
    for (const auto& node : graph.nodes) {
        node->localTransform = MatrixUtils::identity();
        if (node->child)
            resetExplodeTrasnform(*node->child);
    }
}

void ExplodeStateIterator::updateRenderState() const {
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!qrn::component<qrnsg::SCSceneRes>(m_document, qrnsg::SCHEMA_SCENE_RES) ||
        !qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO) ||
        !qrn::component<qrnsg::SCPmi>(m_document, qrnsg::SCHEMA_PMI) ||
        !qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO) ||
        !qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT) || !renderer ||
        !m_graph)
        return;
    const qrnsg::BBox box = m_graph->explodedBox();
    if (!box.isEmpty())
        CameraHelper::lookAt(renderer->camera, box);
}

} // namespace qrngl
