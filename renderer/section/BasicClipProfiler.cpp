#include "qrngl/section/BasicClipProfiler.h"

#include "qrngl/SCClipping.h"
#include "qrngl/SCGLFactory.h"
#include "qrnglutils/ClipplaneUtils.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/ChildNodeFinder.h"
#include "qrnsgutils/ProfileUtils.h"

namespace qrngl {

BasicClipProfiler::BasicClipProfiler(std::shared_ptr<qrn::IDocument> document,
                                     const float& tolerance)
    : m_document(document), m_tolerance(tolerance) {}

bool BasicClipProfiler::create(std::shared_ptr<qrnsg::IPairFunctor> visibility) {
    auto document = m_document.lock();
    if (!document)
        return false;
    auto resources = qrn::component<qrnsg::SCSceneRes>(document, qrnsg::SCHEMA_SCENE_RES);
    auto scene = qrn::component<qrnsg::SCScene>(document, qrnsg::SCHEMA_SCENE);
    auto rt = qrn::component<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT);
    auto clipping = qrn::component<SCClipping>(document, qrnsg::SCHEMA_CLIPPING);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(document, qrnsg::SCHEMA_SCENE_TOPO);
    auto info = qrn::component<qrnsg::SCInfo>(document, qrnsg::SCHEMA_INFO);
    if (!resources || !scene || !rt || !clipping || !topology || topology->empty())
        return false;
    // The geometry the drawables index: the scene's, or the resources' where it holds none.
    const std::vector<qrnsg::Mesh>& meshes =
        !scene->meshes.empty() ? scene->meshes : resources->meshes;
    qrnglutils::ClipplaneUtils::clearProfileData(clipping);
    const std::vector<int> nodes =
        qrnsgutils::ChildNodeFinder(*topology).findWithMeshes(info ? info->rootNode : -1);
    // The clip data come from the factory chain, as every component does.
    auto factory = std::make_shared<SCGLFactory>(std::make_shared<qrnsg::SCFactory>());
    std::int32_t nextSegment = 0;
    for (std::size_t p = 0; p < clipping->planes.size(); ++p) {
        auto made = factory->create(qrnsg::SCHEMA_PLANE_CLIP_DATA);
        auto planeData = std::dynamic_pointer_cast<SCPlaneClipData>(made);
        if (!planeData)
            planeData = std::make_shared<SCPlaneClipData>();
        const auto planeIndex = static_cast<std::int32_t>(p);
        clipping->profileHierarchy.add(-1 - planeIndex);
        for (int node : nodes) {
            qrnsgutils::ProfileUtils profile(meshes, *rt, *topology, m_tolerance,
                                             clipping->planes[p], visibility);
            std::vector<float> vertices;
            std::vector<int> indices;
            if (!profile.intersect(node, vertices, indices))
                continue;
            auto nodeMade = factory->create(qrnsg::SCHEMA_NODE_CLIP_DATA);
            auto nodeData = std::dynamic_pointer_cast<SCNodeClipData>(nodeMade);
            if (!nodeData)
                nodeData = std::make_shared<SCNodeClipData>();
            nodeData->node = node;
            nodeData->vertexArrays.push_back(std::move(vertices));
            nodeData->indexArrays.emplace_back(indices.begin(), indices.end());
            const std::int32_t segment = nextSegment++;
            nodeData->segments.set(segment,
                                   PrimitiveInfo{0, static_cast<std::int32_t>(indices.size())});
            nodeData->segmentArrays.set(segment, {0, 0});
            nodeData->hierarchy.add(segment);
            const auto nodeIndex = static_cast<std::int32_t>(planeData->nodeClipData.size());
            clipping->segmentPlane.set(segment, planeIndex);
            clipping->segmentNode.set(segment, nodeIndex);
            clipping->segmentIndex.set(segment, 0);
            clipping->profileHierarchy.add(segment, -1 - planeIndex);
            qrnsg::BBox bound;
            profile.getProfileBound(bound);
            planeData->bounds.set(node, bound);
            planeData->nodes.push_back(node);
            planeData->nodeClipData.push_back(nodeData);
        }
        clipping->planeClipData.push_back(planeData);
    }
    return true;
}

} // namespace qrngl
