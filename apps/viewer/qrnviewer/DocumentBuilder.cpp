#include "qrnviewer/DocumentBuilder.h"

#include "frame/SCRFactory.h"
#include "qrngl/CameraHelper.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrnglutils/LightRenderer.h"
#include "qrnglutils/SceneBuilder.h"
#include "qrnglutils/ViewRenderer.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"

#include <algorithm>

namespace qrnviewer {

std::shared_ptr<qrnsg::IFactory> DocumentBuilder::factoryChain() {
    return qrnglr::createFactory(
        std::make_shared<qrngl::SCGLFactory>(std::make_shared<qrnsg::SCFactory>()));
}

std::shared_ptr<qrn::Document> DocumentBuilder::build(const ModelData& model) {
    auto document = std::make_shared<qrn::Document>(factoryChain());
    document->addSchema(qrnsg::SCHEMA_SCENE);
    document->addSchema(qrnsg::SCHEMA_SCENE_RT);
    document->addSchema(qrnsg::SCHEMA_PMI);
    document->addSchema(qrnsg::SCHEMA_RENDERER);
    document->addSchema(qrnsg::SCHEMA_STRIP_RENDERER);
    document->addSchema(qrnsg::SCHEMA_RENDER_INFRA);
    auto scene = document->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    auto rt = document->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    auto strips = document->get<qrngl::SCStripRenderer>(qrnsg::SCHEMA_STRIP_RENDERER);

    // Materials: one mesh material index per model material, transparent ones marked.
    scene->materials = model.materials;
    for (std::size_t i = 0; i < model.materials.size(); ++i)
        rt->addMeshMaterial(static_cast<int>(i), model.materials[i].isTransparent());
    qrnsg::PLMaterial edge;
    edge.color = qrnmath::Vec4(0.1f, 0.1f, 0.1f, 1.0f);
    scene->plMaterials.push_back(edge);

    // Geometry, each part once; remember where each part's drawables start.
    std::vector<int> firstMesh(model.parts.size(), 0), edgeIndex(model.parts.size(), -1);
    for (std::size_t p = 0; p < model.parts.size(); ++p) {
        const auto& part = model.parts[p];
        firstMesh[p] = static_cast<int>(scene->meshes.size());
        scene->meshes.insert(scene->meshes.end(), part.meshes.begin(), part.meshes.end());
        if (part.edges.stripCount() > 0) {
            edgeIndex[p] = static_cast<int>(scene->polylines.size());
            scene->polylines.push_back(part.edges);
        }
    }

    // One primitive per placed mesh and per placed edge set.
    int nextId = 1;
    for (std::size_t n = 0; n < model.nodes.size(); ++n) {
        int p = model.nodes[n].part;
        if (p < 0)
            continue;
        const auto& part = model.parts[static_cast<std::size_t>(p)];
        const qrnmath::Mat4 world = model.worldTransform(static_cast<int>(n));
        for (std::size_t m = 0; m < part.meshes.size(); ++m) {
            int id = nextId++;
            int material = m < part.meshMaterials.size() ? part.meshMaterials[m] : -1;
            rt->meshes.add(id, firstMesh[static_cast<std::size_t>(p)] + static_cast<int>(m),
                           material, qrnsg::RTState::HAS_TRANSFORM);
            rt->meshes.transforms.find(id)->first = world;
        }
        if (edgeIndex[static_cast<std::size_t>(p)] >= 0) {
            int id = nextId++;
            rt->polylines.add(id, edgeIndex[static_cast<std::size_t>(p)], 0,
                              qrnsg::RTState::HAS_TRANSFORM);
            rt->polylines.transforms.find(id)->first = world;
        }
    }
    rt->sortMeshDrawOrder();
    qrnglutils::SceneBuilder::buildDrawables(*scene, *strips);

    // Camera, view and lights.
    auto camera = renderer->camera;
    qrnsg::BBox box = model.bbox();
    qrnmath::Vec3 center = box.isEmpty() ? qrnmath::Vec3() : box.center();
    float radius = box.isEmpty() ? 1.0f : std::max(box.diagonal() * 0.5f, 1e-3f);
    camera->setEye(center + qrnmath::Vec3(1.0f, -1.0f, 1.0f).normalized() * radius * 3.0f);
    camera->setTarget(center);
    camera->setUp(qrnmath::Vec3(0.0f, 0.0f, 1.0f));
    qrngl::CameraHelper::fit(camera, center, radius);
    renderer->viewRenderer = std::make_shared<qrnglutils::ViewRenderer>(camera);
    renderer->sceneSetupRenderer = std::make_shared<qrnglutils::LightRenderer>();
    renderer->setReady(true);
    return document;
}

} // namespace qrnviewer
