#include "qrnsgutils/Placements.h"

#include "qrnmath/MatrixUtils.h"

namespace qrnsgutils {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;

namespace {

template <class Local>
Mat4 chain(const qrnsg::SCSceneTopo& topology, int node, Local local) {
    Mat4 m = MatrixUtils::identity();
    // Guarded against a parent loop in damaged data.
    for (std::size_t steps = 0;
         node >= 0 && static_cast<std::size_t>(node) < topology.nodes.size() &&
         steps <= topology.nodes.size();
         ++steps) {
        const auto& n = topology.nodes[static_cast<std::size_t>(node)];
        m = MatrixUtils::multiply(local(n), m);
        node = n.parent;
    }
    return m;
}

void place(qrnsg::RTState& state, const std::vector<int>& ids, const Mat4& world) {
    for (int id : ids)
        if (auto* pair = state.transforms.find(id)) {
            pair->first = world;
            if (auto* flags = state.flags.find(id))
                *flags = static_cast<unsigned char>(*flags | qrnsg::RTState::HAS_TRANSFORM);
        }
}

} // namespace

Mat4 Placements::world(const qrnsg::SCSceneTopo& topology, int node) {
    return chain(topology, node, [](const qrnsg::SCSceneTopo::Node& n) { return n.local; });
}

Mat4 Placements::initialWorld(const qrnsg::SCSceneTopo& topology, int node) {
    return chain(topology, node, [](const qrnsg::SCSceneTopo::Node& n) { return n.initial; });
}

void Placements::update(const qrnsg::SCSceneTopo& topology, qrnsg::SCSceneRT& rt, int node) {
    const std::size_t count = topology.nodes.size();
    std::vector<Mat4> worlds(count), initialWorlds(count);
    std::vector<char> inside(count, 0);
    for (std::size_t i = 0; i < count; ++i) {
        const auto& n = topology.nodes[i];
        const bool parentKnown = n.parent >= 0 && static_cast<std::size_t>(n.parent) < i;
        inside[i] = node < 0 || static_cast<int>(i) == node ||
                    (parentKnown && inside[static_cast<std::size_t>(n.parent)]);
        if (!inside[i])
            continue;
        // Parents come first: one pass; the subtree's root takes its parents' chain.
        const Mat4 parent = parentKnown && inside[static_cast<std::size_t>(n.parent)]
                                ? worlds[static_cast<std::size_t>(n.parent)]
                                : world(topology, n.parent);
        worlds[i] = MatrixUtils::multiply(parent, n.local);
        const Mat4 initialParent = parentKnown && inside[static_cast<std::size_t>(n.parent)]
                                       ? initialWorlds[static_cast<std::size_t>(n.parent)]
                                       : initialWorld(topology, n.parent);
        initialWorlds[i] = MatrixUtils::multiply(initialParent, n.initial);
        place(rt.meshes, n.meshIds, worlds[i]);
        place(rt.polylines, n.polylineIds, worlds[i]);
        place(rt.points, n.pointIds, worlds[i]);
        if (n.pmiPolylineIds.empty() && n.pmiTextIds.empty())
            continue;
        // Annotations are in model coordinates: they take the node's move from where it was
        // read.
        Mat4 back;
        if (!MatrixUtils::invert(initialWorlds[i], back))
            continue;
        const Mat4 moved = MatrixUtils::multiply(worlds[i], back);
        place(rt.polylines, n.pmiPolylineIds, moved);
        place(rt.texts, n.pmiTextIds, moved);
    }
}

void Placements::translate(qrnsg::SCSceneTopo& topology, qrnsg::SCSceneRT& rt,
                           const std::vector<qrnmath::Vec3>& own, float fraction) {
    // In the parent's frame as read: local = W0(parent)^-1 T(t) W0(parent) initial, so that the
    // node's model placement is its parents' moved by t.
    for (std::size_t i = 0; i < topology.nodes.size(); ++i) {
        auto& n = topology.nodes[i];
        const qrnmath::Vec3 t = i < own.size() ? own[i] * fraction : qrnmath::Vec3(0, 0, 0);
        if (rt.nodeMoved.size() != topology.nodes.size())
            rt.nodeMoved.assign(topology.nodes.size(), 0);
        rt.nodeMoved[i] = t == qrnmath::Vec3(0, 0, 0) ? 0 : 1;
        if (t == qrnmath::Vec3(0, 0, 0)) {
            n.local = n.initial;
            continue;
        }
        const Mat4 parent = initialWorld(topology, n.parent);
        Mat4 inverse;
        if (!MatrixUtils::invert(parent, inverse)) {
            n.local = n.initial;
            continue;
        }
        n.local = MatrixUtils::multiply(
            inverse, MatrixUtils::multiply(MatrixUtils::translation(t),
                                           MatrixUtils::multiply(parent, n.initial)));
    }
    update(topology, rt);
}

void Placements::reset(qrnsg::SCSceneTopo& topology, qrnsg::SCSceneRT& rt) {
    for (auto& n : topology.nodes)
        n.local = n.initial;
    rt.nodeMoved.assign(topology.nodes.size(), 0);
    update(topology, rt);
}

} // namespace qrnsgutils
