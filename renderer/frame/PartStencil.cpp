#include "qrngl/frame/PartStencil.h"

#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/InstanceWalker.h"

#include <algorithm>
#include <utility>

namespace qrngl {

std::vector<unsigned char> PartStencil::assign(const qrnsg::SCSceneTopo& topology,
                                               const qrnsg::SCScene& scene,
                                               const qrnsg::RTState& meshes) {
    std::vector<std::pair<std::size_t, int>> parts; // triangles, node
    int largestId = -1;
    for (std::size_t n = 0; n < topology.nodes.size(); ++n) {
        if (!topology.partOf(static_cast<int>(n)))
            continue;
        std::size_t triangles = 0;
        for (int id : topology.nodes[n].meshIds) {
            qrnsgutils::InstanceWalker::Instance at;
            if (qrnsgutils::InstanceWalker::visible(meshes, id, scene.meshes.size(), at, false))
                triangles += scene.meshes[static_cast<std::size_t>(at.drawable)].triangleCount();
            largestId = std::max(largestId, id);
        }
        parts.emplace_back(triangles, static_cast<int>(n));
    }
    std::vector<unsigned char> values(static_cast<std::size_t>(largestId + 1), NONE);
    // The largest first; equal ones in node order.
    std::stable_sort(parts.begin(), parts.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    for (std::size_t k = 0; k < parts.size(); ++k) {
        const std::size_t shared = SHARED;
        const auto value = static_cast<unsigned char>(k + 1 < shared ? k + 1 : shared);
        for (int id : topology.nodes[static_cast<std::size_t>(parts[k].second)].meshIds)
            if (id >= 0)
                values[static_cast<std::size_t>(id)] = value;
    }
    return values;
}

} // namespace qrngl
