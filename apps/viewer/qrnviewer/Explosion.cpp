#include "qrnviewer/Explosion.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/states/ExplodeStateIterator.h"
#include "qrngl/states/ProgressTracker.h"
#include "qrnglutils/BBoxUtils.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/Placements.h"

#include <algorithm>
#include <functional>

namespace qrnviewer {

using qrnmath::Vec3;

Explosion::Explosion(std::shared_ptr<qrn::IDocument> document) : m_document(std::move(document)) {}

bool Explosion::layOut(qrn::IStatusManager* status) {
    if (m_graph)
        return m_levels > 0;
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    auto scene = qrn::component<qrnsg::SCScene>(m_document, qrnsg::SCHEMA_SCENE);
    if (!topology || !rt || !scene)
        return false;
    // Laid out from the placements as read.
    qrnsgutils::Placements::reset(*topology, *rt);
    m_graph = qrnsgutils::ExplosionGraph::build(*topology, *rt, scene->meshes);
    const std::size_t count = topology->nodes.size();
    m_depth.assign(count, -1);
    m_own.assign(count, Vec3(0, 0, 0));
    std::function<void(const qrnsgutils::ExplosionGraph&, int)> walk =
        [&](const qrnsgutils::ExplosionGraph& g, int depth) {
            if (g.size() > 1)
                m_levels = std::max(m_levels, depth + 1);
            for (const auto& node : g.nodes) {
                if (node->node() < 0 || static_cast<std::size_t>(node->node()) >= count)
                    continue;
                m_depth[static_cast<std::size_t>(node->node())] = depth;
                if (node->child)
                    walk(*node->child, depth + 1);
            }
        };
    walk(*m_graph, 0);
    // Each placed node is one step of the progress.
    std::size_t steps = 0;
    for (int d : m_depth)
        steps += d >= 0 ? 1 : 0;
    qrngl::ProgressTracker tracker(status, 100, 0);
    tracker.calcIncr(static_cast<int>(std::max<std::size_t>(steps, 1)));
    qrnsgutils::ExplodeOptions options;
    options.reportProgress = status ? 1 : 0;
    qrngl::ExplodeStateIterator(m_document, options, m_graph).simpleExplode(tracker);
    tracker.finish();
    if (status)
        status->endProgress();
    // Own translations: each node's total less its parent's level's.
    std::function<void(const qrnsgutils::ExplosionGraph&)> own =
        [&](const qrnsgutils::ExplosionGraph& g) {
            for (const auto& node : g.nodes) {
                if (node->node() >= 0 && static_cast<std::size_t>(node->node()) < count)
                    m_own[static_cast<std::size_t>(node->node())] = node->translation;
                if (node->child)
                    own(*node->child);
            }
        };
    own(*m_graph);
    m_now.assign(count, Vec3(0, 0, 0));
    return m_levels > 0;
}

std::vector<Vec3> Explosion::target() const {
    std::vector<Vec3> t(m_own.size(), Vec3(0, 0, 0));
    for (std::size_t i = 0; i < t.size(); ++i)
        if (m_depth[i] >= 0 && m_depth[i] < m_level)
            t[i] = m_own[i];
    return t;
}

void Explosion::apply(const std::vector<Vec3>& own) {
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    if (!topology || !rt)
        return;
    qrnsgutils::Placements::translate(*topology, *rt, own, 1.0f);
    m_now = own;
    if (auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER)) {
        // What can be hit has moved.
        if (renderer->pickCanvas)
            renderer->pickCanvas->Invalidate();
        renderer->update();
    }
    if (m_moved)
        m_moved();
}

bool Explosion::next(qrn::IStatusManager* status) {
    if (!layOut(status))
        return false;
    m_level = (m_level + 1) % (m_levels + 1);
    m_from = m_now;
    m_to = target();
    m_frame = 0;
    return true;
}

bool Explosion::explodeFully(qrn::IStatusManager* status) {
    if (!layOut(status))
        return false;
    m_level = m_levels;
    m_to = target();
    m_frame = FRAMES;
    apply(m_to);
    // The camera takes the whole exploded model in.
    auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto scene = qrn::component<qrnsg::SCScene>(m_document, qrnsg::SCHEMA_SCENE);
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    if (renderer && scene && rt)
        qrngl::CameraHelper::lookAt(renderer->camera,
                                    qrnglutils::BBoxUtils::get(*scene, *rt, true));
    return true;
}

void Explosion::show(int level) {
    if (level <= 0 && m_level == 0 && !m_graph)
        return; // never exploded: nothing to lay out
    if (!layOut(nullptr))
        return;
    m_level = std::min(std::max(level, 0), m_levels);
    m_frame = FRAMES;
    apply(target());
}

void Explosion::animateTo(int level) {
    if (level <= 0 && m_level == 0 && !m_graph)
        return;
    if (!layOut(nullptr))
        return;
    m_level = std::min(std::max(level, 0), m_levels);
    m_from = m_now;
    m_to = target();
    m_frame = 0;
}

void Explosion::assembled() {
    m_level = 0;
    m_frame = FRAMES;
    std::fill(m_now.begin(), m_now.end(), Vec3(0, 0, 0));
}

bool Explosion::animate() {
    if (m_frame >= FRAMES)
        return false;
    ++m_frame;
    const float f = ease(static_cast<float>(m_frame) / FRAMES);
    std::vector<Vec3> now(m_to.size());
    for (std::size_t i = 0; i < now.size(); ++i)
        now[i] = m_from[i] + (m_to[i] - m_from[i]) * f;
    apply(now);
    return m_frame < FRAMES;
}

} // namespace qrnviewer
