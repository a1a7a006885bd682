#include "qrnsgutils/ExplosionGraph.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnsgutils/InstanceWalker.h"

namespace qrnsgutils {

using qrnmath::Vec3;

namespace {

// The model box of a node's subtree, from its meshes placed as the run-time component says.
qrnsg::BBox subtreeBox(const qrnsg::SCSceneTopo& topology, const qrnsg::SCSceneRT& rt,
                       const std::vector<qrnsg::Mesh>& meshes,
                       const std::vector<std::vector<int>>& children, int node,
                       std::vector<qrnsg::BBox>& meshBoxes) {
    qrnsg::BBox box;
    std::vector<int> stack{node};
    while (!stack.empty()) {
        const int n = stack.back();
        stack.pop_back();
        for (int id : topology.nodes[static_cast<std::size_t>(n)].meshIds) {
            InstanceWalker::Instance instance;
            if (!InstanceWalker::visible(rt.meshes, id, meshes.size(), instance, false))
                continue;
            auto& local = meshBoxes[static_cast<std::size_t>(instance.drawable)];
            if (local.isEmpty())
                local = meshes[static_cast<std::size_t>(instance.drawable)].bbox();
            if (local.isEmpty())
                continue;
            box.add(instance.transform ? local.transformed(*instance.transform) : local);
        }
        for (int c : children[static_cast<std::size_t>(n)])
            stack.push_back(c);
    }
    return box;
}

std::shared_ptr<ExplosionGraph>
level(const qrnsg::SCSceneTopo& topology, const qrnsg::SCSceneRT& rt,
      const std::vector<qrnsg::Mesh>& meshes, const std::vector<std::vector<int>>& children,
      const std::vector<int>& members, std::vector<qrnsg::BBox>& meshBoxes) {
    auto graph = std::make_shared<ExplosionGraph>();
    for (int n : members) {
        const qrnsg::BBox box = subtreeBox(topology, rt, meshes, children, n, meshBoxes);
        if (box.isEmpty())
            continue;
        auto node = std::make_shared<ExplosionNode>(n, box);
        const auto& below = children[static_cast<std::size_t>(n)];
        if (!below.empty())
            node->child = level(topology, rt, meshes, children, below, meshBoxes);
        graph->nodes.push_back(node);
    }
    return graph;
}

} // namespace

std::shared_ptr<ExplosionGraph> ExplosionGraph::build(const qrnsg::SCSceneTopo& topology,
                                                      const qrnsg::SCSceneRT& rt,
                                                      const std::vector<qrnsg::Mesh>& meshes,
                                                      int root) {
    const std::size_t count = topology.nodes.size();
    std::vector<std::vector<int>> children(count);
    std::vector<int> roots;
    for (std::size_t i = 0; i < count; ++i) {
        const int parent = topology.nodes[i].parent;
        if (parent >= 0 && static_cast<std::size_t>(parent) < count)
            children[static_cast<std::size_t>(parent)].push_back(static_cast<int>(i));
        else
            roots.push_back(static_cast<int>(i));
    }
    std::vector<qrnsg::BBox> meshBoxes(meshes.size());
    std::vector<int> top = root >= 0 && static_cast<std::size_t>(root) < count
                               ? children[static_cast<std::size_t>(root)]
                               : roots;
    // A model of one root assembly explodes what is in it.
    if (root < 0 && top.size() == 1 && !children[static_cast<std::size_t>(top[0])].empty())
        top = children[static_cast<std::size_t>(top[0])];
    return level(topology, rt, meshes, children, top, meshBoxes);
}

bool ExplosionGraph::getExplosionDir(int axis, const std::shared_ptr<qrnsg::SCSceneTopo>&,
                                     const std::shared_ptr<qrnsg::SCInfo>&,
                                     const std::shared_ptr<qrnsg::SCSceneRes>&, Vec3& direction) {
    if (axis < 0 || axis > 2)
        return false;
    direction = Vec3(0.0f, 0.0f, 0.0f);
    direction[axis] = 1.0f;
    return true;
}

void ExplosionGraph::setTransform(const std::shared_ptr<ExplosionNode>& node,
                                  const Vec3& translation, float distance, float scale,
                                  const std::shared_ptr<qrnsg::SCSceneTopo>&,
                                  const std::shared_ptr<qrnsg::SCSceneRes>&) {
    if (!node)
        return;
    node->translation = translation * scale;
    node->distance = distance * scale;
}

void ExplosionGraph::add(const Vec3& above, std::vector<Vec3>& out) const {
    for (const auto& node : nodes) {
        const Vec3 total = above + node->translation;
        if (node->node() >= 0 && static_cast<std::size_t>(node->node()) < out.size())
            out[static_cast<std::size_t>(node->node())] = total;
        if (node->child)
            node->child->add(total, out);
    }
}

void ExplosionGraph::translations(std::size_t nodeCount, std::vector<Vec3>& out) const {
    out.assign(nodeCount, Vec3(0.0f, 0.0f, 0.0f));
    add(Vec3(0.0f, 0.0f, 0.0f), out);
}

qrnsg::BBox ExplosionGraph::explodedBox() const {
    qrnsg::BBox box;
    for (const auto& node : nodes)
        if (!node->box().isEmpty()) {
            box.add(node->box().min() + node->translation);
            box.add(node->box().max() + node->translation);
        }
    return box;
}

} // namespace qrnsgutils
