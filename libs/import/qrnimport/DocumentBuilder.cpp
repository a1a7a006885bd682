#include "qrnimport/DocumentBuilder.h"

#include "qrnimport/MeshOptimizer.h"

#include "qrngl/overlays/FontRenderer.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrngl/frame/SCRFactory.h"
#include "qrnglutils/LightRenderer.h"
#include "qrnglutils/SceneBuilder.h"
#include "qrnglutils/ViewRenderer.h"
#include "qrnimport/StandardView.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsg/SCView.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <new>
#include <thread>
#include <utility>

namespace qrnimport {

namespace {

qrnsg::SCInfo::UNITS unitOf(const std::wstring& name) {
    static const std::pair<const wchar_t*, qrnsg::SCInfo::UNITS> units[] = {
        {L"cm", qrnsg::SCInfo::CENTIMETRE}, {L"m", qrnsg::SCInfo::METRE},
        {L"in", qrnsg::SCInfo::INCH},       {L"ft", qrnsg::SCInfo::FOOT},
        {L"um", qrnsg::SCInfo::MICROMETRE}, {L"km", qrnsg::SCInfo::KILOMETRE},
        {L"mi", qrnsg::SCInfo::MILE}};
    for (const auto& u : units)
        if (name == u.first)
            return u.second;
    return qrnsg::SCInfo::MILLIMETRE;
}

// Each part's meshes with its faces, parts spread over the cores.
void optimizeMeshes(qrnsg::SCScene& scene, const std::vector<qrnsg::SCSceneTopo::Part>& parts,
                    const DocumentBuilder::Options& options) {
    std::atomic<std::size_t> next{0};
    auto work = [&] {
        for (std::size_t p = next++; p < parts.size(); p = next++) {
            std::vector<qrnsg::Mesh> meshes;
            for (int m : parts[p].meshes)
                meshes.push_back(std::move(scene.meshes[static_cast<std::size_t>(m)]));
            MeshOptimizer::optimize(meshes, parts[p].entities, options);
            for (std::size_t m = 0; m < meshes.size(); ++m)
                scene.meshes[static_cast<std::size_t>(parts[p].meshes[m])] = std::move(meshes[m]);
        }
    };
    const unsigned int wanted =
        options.threads ? options.threads : std::max(1u, std::thread::hardware_concurrency());
    const std::size_t threads = std::min<std::size_t>(wanted, parts.size());
    std::vector<std::thread> pool;
    for (std::size_t t = 1; t < threads; ++t)
        pool.emplace_back(work);
    work();
    for (auto& t : pool)
        t.join();
}

// The line materials of presented PMI, one per colour and width the file gives, and the
// unlit fill material of each.
class Styles {
public:
    int of(const ModelData::PmiItem& item, qrnsg::SCScene& scene) {
        qrnsg::PLMaterial m;
        m.color = defaultColour();
        // Authors draw on dark backgrounds; white or near-white is drawn in the PMI's own
        // colour on the viewer's light one.
        const auto& c = item.colour;
        if (item.coloured && 0.2126f * c[0] + 0.7152f * c[1] + 0.0722f * c[2] < 0.8f)
            m.color = qrnmath::Vec4(c[0], c[1], c[2], 1.0f);
        // Widths are lengths on the drawing: a millimetre is about 3.8 pixels at 96 dpi.
        m.width = item.lineWidth > 0.0f ? std::max(1.0f, std::round(item.lineWidth * 3.78f)) : 1.0f;
        for (const auto& known : m_lines)
            if (known.first == std::make_pair(m.color, m.width))
                return known.second;
        const int index = static_cast<int>(scene.plMaterials.size());
        scene.plMaterials.push_back(m);
        m_lines.emplace_back(std::make_pair(m.color, m.width), index);
        return index;
    }
    int fill(int line, qrnsg::SCScene& scene, qrnsg::SCSceneRT& rt) {
        const auto known = m_fills.find(line);
        if (known != m_fills.end())
            return known->second;
        const qrnmath::Vec4 c =
            line >= 0 ? scene.plMaterials[static_cast<std::size_t>(line)].color : defaultColour();
        qrnsg::MMaterial m;
        m.ambient = m.diffuse = m.specular = qrnmath::Vec4(0.0f, 0.0f, 0.0f, 1.0f);
        m.emission = qrnmath::Vec4(c[0], c[1], c[2], 1.0f);
        const int index = static_cast<int>(scene.materials.size());
        scene.materials.push_back(m);
        rt.addMeshMaterial(index, false);
        m_fills[line] = index;
        return index;
    }

    static qrnmath::Vec4 defaultColour() { return qrnmath::Vec4(0.05f, 0.15f, 0.6f, 1.0f); }

private:
    std::vector<std::pair<std::pair<qrnmath::Vec4, float>, int>> m_lines;
    std::map<int, int> m_fills;
};

// PMI and saved views. Each PMI item's lines and leaders are one polyline primitive in model
// coordinates, its texts text primitives in their annotation planes (facing the viewer when
// they have none); the PMI component lists them by item.
void addPmi(const ModelData& model, qrn::Document& document, int& nextId) {
    auto scene = document.get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    auto rt = document.get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    auto pmi = std::dynamic_pointer_cast<qrnsg::SCPmi>(document.addSchema(qrnsg::SCHEMA_PMI));
    auto views = std::dynamic_pointer_cast<qrnsg::SCView>(document.addSchema(qrnsg::SCHEMA_VIEW));
    if (!scene || !rt || !pmi || !views)
        return;

    Styles styles;
    int material = -1;
    if (!model.pmi.empty()) {
        qrnsg::PLMaterial lines;
        lines.color = Styles::defaultColour(); // dark blue, apart from the edges
        material = static_cast<int>(scene->plMaterials.size());
        scene->plMaterials.push_back(lines);
    }
    for (const auto& item : model.pmi) {
        qrnsg::SCPmi::Item entry;
        entry.name = item.name;
        switch (item.kind) {
        case ModelData::PmiItem::DIMENSION:
            entry.kind = qrnsg::SCPmi::DIMENSION;
            break;
        case ModelData::PmiItem::TOLERANCE:
            entry.kind = qrnsg::SCPmi::TOLERANCE;
            break;
        case ModelData::PmiItem::DATUM:
            entry.kind = qrnsg::SCPmi::DATUM;
            break;
        case ModelData::PmiItem::NOTE:
            entry.kind = qrnsg::SCPmi::NOTE;
            break;
        default:
            entry.kind = qrnsg::SCPmi::OTHER;
            break;
        }
        entry.description = item.description;
        if (auto topology = document.get<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO))
            for (const auto& face : item.faces)
                if (const unsigned int name =
                        topology->name(face.first, qrnsg::EntityNames::FACE, face.second))
                    entry.faces.push_back(name);
        qrnsg::Polyline lines = item.lines;
        lines.append(item.leaders);
        const int style = item.presented ? styles.of(item, *scene) : material;
        if (lines.stripCount() > 0) {
            int id = nextId++;
            rt->polylines.add(id, static_cast<int>(scene->polylines.size()), style);
            scene->polylines.push_back(std::move(lines));
            entry.polylineIds.push_back(id);
        }
        // Filled texts and arrowheads, in the lines' colour whatever the light.
        if (!item.fills.indices.empty()) {
            int id = nextId++;
            rt->meshes.add(id, static_cast<int>(scene->meshes.size()),
                           styles.fill(style, *scene, *rt));
            scene->meshes.push_back(item.fills);
            entry.meshIds.push_back(id);
        }
        for (const auto& text : item.texts) {
            int id = nextId++;
            // A text the file gives no plane for faces the viewer at one size on screen.
            rt->texts.add(id, static_cast<int>(scene->texts.size()), material,
                          item.hasPlane ? 0
                                        : qrnsg::RTState::ANCHORED | qrnsg::RTState::CONSTANT_SIZE);
            scene->texts.push_back(text);
            entry.textIds.push_back(id);
        }
        // An item belongs to the part it points at: the smallest placed part whose box holds
        // its target; it moves with that part.
        auto topology = document.get<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO);
        if (item.hasTarget && topology) {
            int owner = -1;
            float smallest = 0.0f;
            for (std::size_t n = 0; n < model.nodes.size() && n < topology->nodes.size(); ++n) {
                const int part = model.nodes[n].part;
                if (part < 0)
                    continue;
                const qrnsg::BBox local = model.parts[static_cast<std::size_t>(part)].bbox();
                if (local.isEmpty())
                    continue;
                const qrnsg::BBox box =
                    local.transformed(model.worldTransform(static_cast<int>(n)));
                const float slack = 1e-3f * box.diagonal();
                bool inside = true;
                for (int a = 0; a < 3; ++a)
                    inside = inside && item.target[a] >= box.min()[a] - slack &&
                             item.target[a] <= box.max()[a] + slack;
                if (inside && (owner < 0 || box.diagonal() < smallest)) {
                    owner = static_cast<int>(n);
                    smallest = box.diagonal();
                }
            }
            if (owner >= 0) {
                auto& node = topology->nodes[static_cast<std::size_t>(owner)];
                node.pmiPolylineIds.insert(node.pmiPolylineIds.end(), entry.polylineIds.begin(),
                                           entry.polylineIds.end());
                node.pmiTextIds.insert(node.pmiTextIds.end(), entry.textIds.begin(),
                                       entry.textIds.end());
            }
        }
        pmi->items.push_back(std::move(entry));
    }

    for (const auto& view : model.views) {
        qrnsg::SCView::View v;
        v.name = view.name;
        v.eye = view.eye;
        v.target = view.target;
        v.up = view.up;
        v.orthographic = view.orthographic;
        v.viewHeight = view.viewHeight;
        v.listsPmi = view.listsPmi;
        v.pmiItems = view.pmi;
        views->views.push_back(v);
    }
    for (const auto& section : model.sections)
        pmi->sections.push_back(std::make_shared<qrnsg::Section>(section));
}

} // namespace

std::shared_ptr<qrnsg::IFactory> DocumentBuilder::factoryChain() {
    return qrnglr::createFactory(
        std::make_shared<qrngl::SCGLFactory>(std::make_shared<qrnsg::SCFactory>()));
}

std::shared_ptr<qrn::Document> DocumentBuilder::build(const ModelData& model,
                                                      const Options& meshes) {
    try {
        return fill(model, meshes, nullptr);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::shared_ptr<qrn::Document> DocumentBuilder::build(ModelData&& model, const Options& meshes) {
    try {
        return fill(model, meshes, &model);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::shared_ptr<qrn::Document> DocumentBuilder::fill(const ModelData& model, const Options& meshes,
                                                     ModelData* taken) {
    // Measured before any geometry is taken out of the model.
    const qrnsg::BBox extent = model.extent();
    auto document = std::make_shared<qrn::Document>(factoryChain());
    document->addSchema(qrnsg::SCHEMA_SCENE);
    document->addSchema(qrnsg::SCHEMA_SCENE_RT);
    document->addSchema(qrnsg::SCHEMA_PMI);
    document->addSchema(qrnsg::SCHEMA_RENDERER);
    document->addSchema(qrnsg::SCHEMA_STRIP_RENDERER);
    document->addSchema(qrnsg::SCHEMA_RENDER_INFRA);
    // Without it the gesture home view does nothing.
    document->addSchema(qrnsg::SCHEMA_ANIMATION);
    // What sectioning and measurement read and write; the geometry lives in the scene, so
    // the resources stay empty.
    document->addSchema(qrnsg::SCHEMA_SCENE_RES);
    document->addSchema(qrnsg::SCHEMA_CLIPPING);
    document->addSchema(qrnsg::SCHEMA_MEASURE);
    document->addSchema(qrnsg::SCHEMA_TEMP_GRAPHICS);
    auto info = std::dynamic_pointer_cast<qrnsg::SCInfo>(document->addSchema(qrnsg::SCHEMA_INFO));
    if (info) {
        info->modelUnit = unitOf(model.lengthUnit);
        info->lengthUnit = unitOf(model.fileUnit.empty() ? model.lengthUnit : model.fileUnit);
    }
    auto topology = std::dynamic_pointer_cast<qrnsg::SCSceneTopo>(
        document->addSchema(qrnsg::SCHEMA_SCENE_TOPO));
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

    // Geometry, each part once, with its entities; vertices drawn as a point set.
    qrnsg::PLMaterial vertexMaterial;
    vertexMaterial.color = qrnmath::Vec4(0.1f, 0.1f, 0.1f, 1.0f);
    const int vertexMaterialIndex = static_cast<int>(scene->plMaterials.size());
    scene->plMaterials.push_back(vertexMaterial);
    std::vector<qrnsg::SCSceneTopo::Part> parts(model.parts.size());
    for (std::size_t p = 0; p < model.parts.size(); ++p) {
        const auto& part = model.parts[p];
        auto& entry = parts[p];
        entry.name = part.name;
        entry.entities = part.entities;
        if (entry.entities.faces.empty()) {
            // A part read without entities still picks: each mesh is one face.
            for (std::size_t m = 0; m < part.meshes.size(); ++m) {
                qrnsg::PartEntities::Face face;
                face.mesh = static_cast<int>(m);
                face.triangleCount = static_cast<unsigned int>(part.meshes[m].triangleCount());
                entry.entities.faces.push_back(face);
            }
        }
        for (std::size_t m = 0; m < part.meshes.size(); ++m) {
            entry.meshes.push_back(static_cast<int>(scene->meshes.size()));
            if (taken)
                scene->meshes.push_back(std::move(taken->parts[p].meshes[m]));
            else
                scene->meshes.push_back(part.meshes[m]);
        }
        if (part.edges.stripCount() > 0) {
            entry.polyline = static_cast<int>(scene->polylines.size());
            if (taken)
                scene->polylines.push_back(std::move(taken->parts[p].edges));
            else
                scene->polylines.push_back(part.edges);
        }
        if (!entry.entities.vertices.empty()) {
            entry.points = static_cast<int>(scene->points.size());
            qrnsg::PointSet points;
            points.points = entry.entities.vertices;
            points.size = 4.0f;
            scene->points.push_back(points);
        }
    }

    optimizeMeshes(*scene, parts, meshes);

    // One primitive per placed mesh, edge set and vertex set; the topology lists them by node.
    int nextId = 1;
    for (std::size_t n = 0; n < model.nodes.size(); ++n) {
        qrnsg::SCSceneTopo::Node* node = nullptr;
        if (topology) {
            topology->nodes.emplace_back();
            node = &topology->nodes.back();
            node->name = model.nodes[n].name;
            node->parent = model.nodes[n].parent;
            node->part = model.nodes[n].part;
            node->local = node->initial = model.nodes[n].local;
        }
        int p = model.nodes[n].part;
        if (p < 0)
            continue;
        const auto& part = model.parts[static_cast<std::size_t>(p)];
        const auto& entry = parts[static_cast<std::size_t>(p)];
        const qrnmath::Mat4 world = model.worldTransform(static_cast<int>(n));
        for (std::size_t m = 0; m < part.meshes.size(); ++m) {
            int id = nextId++;
            int material = m < part.meshMaterials.size() ? part.meshMaterials[m] : -1;
            rt->meshes.add(id, entry.meshes[m], material, qrnsg::RTState::HAS_TRANSFORM);
            rt->meshes.transforms.find(id)->first = world;
            if (node)
                node->meshIds.push_back(id);
        }
        if (entry.polyline >= 0) {
            int id = nextId++;
            rt->polylines.add(id, entry.polyline, 0, qrnsg::RTState::HAS_TRANSFORM);
            rt->polylines.transforms.find(id)->first = world;
            if (node)
                node->polylineIds.push_back(id);
        }
        if (entry.points >= 0) {
            // Vertices are there to be picked and highlighted; a frame does not show them.
            int id = nextId++;
            rt->points.add(id, entry.points, vertexMaterialIndex, qrnsg::RTState::HAS_TRANSFORM);
            rt->points.transforms.find(id)->first = world;
            if (node)
                node->pointIds.push_back(id);
        }
    }
    if (topology) {
        topology->parts = std::move(parts);
        topology->index();
    }
    addPmi(model, *document, nextId);
    rt->sortMeshDrawOrder();
    qrnglutils::SceneBuilder::buildDrawables(*scene, *strips, qrngl::FontRenderer::faceName(),
                                             qrngl::FontRenderer::fallbackFaceName());
    // The drawables hold the normals the frame reads; the scene keeps the positions and
    // triangles that picks, measures and cuts read.
    for (qrnsg::Mesh& mesh : scene->meshes)
        std::vector<qrnmath::Vec3>().swap(mesh.normals);

    // Camera, view and lights.
    StandardView::apply("iso", extent, renderer->camera);
    renderer->viewRenderer = std::make_shared<qrnglutils::ViewRenderer>(renderer->camera);
    renderer->sceneSetupRenderer = std::make_shared<qrnglutils::LightRenderer>();
    renderer->setReady(true);
    return document;
}

} // namespace qrnimport
