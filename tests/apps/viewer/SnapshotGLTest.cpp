// Off-screen frames written as PNG files; meshes put in drawing order keep their faces and picks.
#include "ViewerTestSupport.h"

#include "qrngl/SCRenderer.h"
#include "qrngl/picking/SelectManipulator.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/Shapes.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/Snapshot.h"

#include "qrnmath/MatrixUtils.h"

#include <array>
#include <set>

namespace {

// A red box: background at the corner, the lit box in the middle; an unwritable path named.
TEST(SnapshotGLTest, WritesTheFrameAtTheAskedSizeOrSaysWhyNot) {
    qrnimport::ModelData model;
    qrnimport::ModelData::Part part;
    part.meshes.push_back(qrnimport::Shapes::box(qrnmath::Vec3(0, 0, 0), qrnmath::Vec3(1, 1, 1)));
    part.meshMaterials.push_back(model.addMaterial(qrnsg::MMaterial::fromColor(1, 0, 0)));
    model.addNode(L"Box", -1, qrnmath::MatrixUtils::identity(), model.addPart(part));
    auto document = qrnimport::DocumentBuilder::build(model);
    viewertest::TempDir dir;
    std::string error;
    ASSERT_TRUE(qrnviewer::Snapshot::write(document, 64, 48, dir.file("box.png"), error)) << error;
    const qrnimage::Image image = viewertest::loadPng(dir.file("box.png"));
    ASSERT_TRUE(image.width() == 64u && image.height() == 48u);
    EXPECT_EQ(image.pixel(0, 0)[0], 230);
    EXPECT_GT(image.pixel(32, 24)[0], 100);
    EXPECT_LT(image.pixel(32, 24)[1], 60);
    EXPECT_FALSE(qrnviewer::Snapshot::write(document, 16, 16, "/nonexistent-dir/x.png", error));
    EXPECT_NE(error.find("/nonexistent-dir/x.png"), std::string::npos) << error;
}

using Options = qrnimport::DocumentBuilder::Options;

// The faces a grid of picks takes on a document.
std::vector<unsigned int> pickedFaces(const std::shared_ptr<qrn::Document>& document) {
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    auto selection = std::make_shared<qrngl::SelectionSet>();
    selection->setMode(qrngl::SelectionSet::FACE);
    std::vector<unsigned int> names;
    qrnviewer::Snapshot::Settings settings;
    settings.width = 160;
    settings.height = 120;
    settings.beforeFrame = [&](const std::shared_ptr<qrngl::IRenderContext>& context,
                               qrngl::ICanvasFactory& factory) {
        auto canvas = factory.createPickCanvas(context, document);
        ASSERT_TRUE(canvas && canvas->OnCreate());
        canvas->OnSize(0, 0, settings.width, settings.height);
        renderer->pickCanvas = canvas;
        qrngl::SelectManipulator select(document, selection, nullptr);
        for (int y = 3; y < 120; y += 6)
            for (int x = 4; x < 160; x += 8)
                names.push_back(select.pickAt(x, y));
        context->activate();
        canvas->OnDestroy();
        renderer->pickCanvas.reset();
    };
    std::string error;
    EXPECT_TRUE(qrnviewer::Snapshot::write(document, settings, qrnviewer::RendererPlugins::shared(),
                                           "", error))
        << error;
    return names;
}

using Triangle = std::array<float, 9>;

// Each face's triangles as corner positions, in an order of their own, part by part.
std::vector<std::vector<Triangle>> faceTriangles(qrn::Document& document) {
    auto scene = document.get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    auto topology = document.get<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO);
    std::vector<std::vector<Triangle>> faces;
    for (const auto& part : topology->parts)
        for (const auto& face : part.entities.faces) {
            const auto& mesh = scene->meshes[static_cast<std::size_t>(
                part.meshes[static_cast<std::size_t>(face.mesh)])];
            faces.emplace_back();
            for (unsigned int t = face.firstTriangle; t < face.firstTriangle + face.triangleCount;
                 ++t) {
                std::array<std::array<float, 3>, 3> corners;
                for (unsigned int c = 0; c < 3; ++c) {
                    const auto& v = mesh.vertices[mesh.indices[t * 3 + c]];
                    corners[c] = {v[0], v[1], v[2]};
                }
                // The winding stays; only where the triangle starts may change.
                std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()),
                            corners.end());
                Triangle flat;
                for (std::size_t i = 0; i < 9; ++i)
                    flat[i] = corners[i / 3][i % 3];
                faces.back().push_back(flat);
            }
            std::sort(faces.back().begin(), faces.back().end());
        }
    return faces;
}

// A welded grid of n x n squares in shuffled order, its rows in two faces.
qrnimport::ModelData::Part weldedGrid(unsigned int n) {
    qrnimport::ModelData::Part part;
    part.meshes.emplace_back();
    qrnsg::Mesh& mesh = part.meshes.back();
    for (unsigned int y = 0; y <= n; ++y)
        for (unsigned int x = 0; x <= n; ++x) {
            mesh.vertices.emplace_back(static_cast<float>(x), static_cast<float>(y), 0.0f);
            mesh.normals.emplace_back(0.0f, 0.0f, 1.0f);
        }
    for (unsigned int half = 0; half < 2; ++half) {
        std::vector<std::array<unsigned int, 3>> triangles;
        for (unsigned int y = half * n / 2; y < (half + 1) * n / 2; ++y)
            for (unsigned int x = 0; x < n; ++x) {
                const unsigned int a = y * (n + 1) + x, b = a + 1, c = a + n + 1, d = c + 1;
                triangles.push_back({a, b, d});
                triangles.push_back({a, d, c});
            }
        for (std::size_t i = 0; i < triangles.size(); ++i) // a fixed shuffle
            std::swap(triangles[i], triangles[(i * 7919) % triangles.size()]);
        qrnsg::PartEntities::Face face;
        face.firstTriangle = static_cast<unsigned int>(mesh.triangleCount());
        face.triangleCount = static_cast<unsigned int>(triangles.size());
        part.entities.faces.push_back(face);
        for (const auto& t : triangles)
            mesh.indices.insert(mesh.indices.end(), t.begin(), t.end());
    }
    return part;
}

} // namespace

TEST(SnapshotGLTest, MeshesInCacheOrderKeepTheirFacesAndPicks) {
    qrnimport::ModelData model;
    std::string error;
    ASSERT_TRUE(qrnimport::DemoAssembly::model(model, error)) << error;
    model.parts.push_back(weldedGrid(16));

    Options asRead;
    asRead.cacheOrder = false;
    asRead.coarse = false;
    asRead.clusters = false;
    Options everything;
    everything.coarseFrom = 0;
    everything.cacheOrderFrom = 0;
    everything.clustersFrom = 0;
    everything.clusterFaceFrom = 16;
    const auto read = qrnimport::DocumentBuilder::build(model, asRead);
    const auto prepared = qrnimport::DocumentBuilder::build(model, everything);

    // Every face keeps its triangles, winding included; the order does change, the shuffled
    // grid's too; the coarse triangles name existing vertices.
    EXPECT_EQ(faceTriangles(*prepared), faceTriangles(*read));
    const auto& before = read->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE)->meshes;
    const auto& after = prepared->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE)->meshes;
    std::size_t reordered = 0, coarse = 0;
    for (std::size_t m = 0; m < after.size(); ++m) {
        EXPECT_TRUE(before[m].coarseIndices.empty());
        reordered += after[m].indices != before[m].indices ? 1 : 0;
        coarse += after[m].coarseIndices.size() / 3;
        for (unsigned int i : after[m].coarseIndices)
            ASSERT_LT(i, after[m].vertices.size());
    }
    EXPECT_GT(reordered, 1u);
    EXPECT_GT(coarse, 0u);
    // Clusters follow one another over every triangle, each inside a face or made of whole
    // faces.
    auto topology = prepared->get<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO);
    std::size_t clusters = 0;
    for (const auto& part : topology->parts)
        for (std::size_t pm = 0; pm < part.meshes.size(); ++pm) {
            const auto& mesh = after[static_cast<std::size_t>(part.meshes[pm])];
            unsigned int next = 0;
            for (const auto& c : mesh.clusters) {
                ASSERT_EQ(c.firstTriangle, next);
                next += c.triangleCount;
                for (const auto& f : part.entities.faces) {
                    const unsigned int end = f.firstTriangle + f.triangleCount;
                    if (f.mesh != static_cast<int>(pm) || end <= c.firstTriangle ||
                        f.firstTriangle >= next)
                        continue;
                    EXPECT_TRUE((f.firstTriangle >= c.firstTriangle && end <= next) ||
                                (c.firstTriangle >= f.firstTriangle && next <= end));
                }
            }
            EXPECT_EQ(next, mesh.clusters.empty() ? 0u : mesh.triangleCount());
            clusters += mesh.clusters.size();
        }
    EXPECT_GT(clusters, after.size());
    EXPECT_NE(after.back().indices, before.back().indices);

    const auto picked = pickedFaces(read);
    EXPECT_GT(std::set<unsigned int>(picked.begin(), picked.end()).size(), 10u);
    EXPECT_EQ(pickedFaces(prepared), picked);
}
