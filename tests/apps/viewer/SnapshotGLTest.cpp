#include "qrngl/SCRenderer.h"
#include "qrngl/picking/SelectManipulator.h"
#include "qrnviewer/DocumentBuilder.h"
#include "qrnviewer/MeshOptimizer.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/Shapes.h"
#include "qrnviewer/Snapshot.h"
#include "qrnviewer/occt/DemoAssembly.h"

#include "qrnimage/Image.h"
#include "qrnmath/MatrixUtils.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <unistd.h>

namespace {

qrnviewer::ModelData oneBox() {
    qrnviewer::ModelData model;
    qrnviewer::ModelData::Part part;
    part.meshes.push_back(qrnviewer::Shapes::box(qrnmath::Vec3(0, 0, 0), qrnmath::Vec3(1, 1, 1)));
    part.meshMaterials.push_back(model.addMaterial(qrnsg::MMaterial::fromColor(1, 0, 0)));
    model.addNode(L"Box", -1, qrnmath::MatrixUtils::identity(), model.addPart(part));
    return model;
}

TEST(SnapshotGLTest, WritesTheFrameAtTheAskedSize) {
    auto document = qrnviewer::DocumentBuilder::build(oneBox());
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("qrn-snapshot-" + std::to_string(getpid()) + ".png"))
                                 .string();
    std::string error;
    ASSERT_TRUE(qrnviewer::Snapshot::write(document, 64, 48, path, error)) << error;
    qrnimage::Image image;
    ASSERT_TRUE(qrnimage::Image::loadPng(path, image, &error)) << error;
    std::filesystem::remove(path);
    EXPECT_EQ(image.width(), 64u);
    EXPECT_EQ(image.height(), 48u);
    // Background at the corner, the lit red box in the middle.
    EXPECT_EQ(image.pixel(0, 0)[0], 230);
    const auto* centre = image.pixel(32, 24);
    EXPECT_GT(centre[0], 100);
    EXPECT_LT(centre[1], 60);
}

TEST(SnapshotGLTest, UnwritablePathIsReported) {
    auto document = qrnviewer::DocumentBuilder::build(oneBox());
    std::string error;
    EXPECT_FALSE(qrnviewer::Snapshot::write(document, 16, 16, "/nonexistent-dir/x.png", error));
    EXPECT_NE(error.find("/nonexistent-dir/x.png"), std::string::npos) << error;
}

} // namespace

namespace {

using qrnviewer::MeshOptimizer;

// The faces a grid of picks takes on a model drawn with its meshes prepared as `meshes` says.
std::vector<unsigned int> pickedFaces(const qrnviewer::ModelData& model,
                                      const MeshOptimizer::Options& meshes) {
    auto document = qrnviewer::DocumentBuilder::build(model, meshes);
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

// Each face's triangles as corner positions, in an order of their own.
std::vector<std::vector<std::array<float, 9>>>
faceTriangles(const qrnviewer::ModelData::Part& part) {
    std::vector<std::vector<std::array<float, 9>>> faces;
    for (const auto& face : part.entities.faces) {
        const auto& mesh = part.meshes[static_cast<std::size_t>(face.mesh)];
        faces.emplace_back();
        for (unsigned int t = face.firstTriangle; t < face.firstTriangle + face.triangleCount;
             ++t) {
            std::array<std::array<float, 3>, 3> corners;
            for (int c = 0; c < 3; ++c) {
                const auto& v = mesh.vertices[mesh.indices[t * 3 + static_cast<unsigned int>(c)]];
                corners[static_cast<std::size_t>(c)] = {v[0], v[1], v[2]};
            }
            // The winding stays; only where the triangle starts may change.
            std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()),
                        corners.end());
            std::array<float, 9> flat;
            for (std::size_t i = 0; i < 9; ++i)
                flat[i] = corners[i / 3][i % 3];
            faces.back().push_back(flat);
        }
        std::sort(faces.back().begin(), faces.back().end());
    }
    return faces;
}

} // namespace

// A welded grid of n x n squares in shuffled order, its rows in two faces.
qrnviewer::ModelData::Part weldedGrid(unsigned int n) {
    qrnviewer::ModelData::Part part;
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

TEST(SnapshotGLTest, MeshesInCacheOrderKeepTheirFacesAndPicks) {
    qrnviewer::ModelData model;
    std::string error;
    ASSERT_TRUE(qrnviewer::DemoAssembly::model(model, error)) << error;
    model.parts.push_back(weldedGrid(16));

    // Every face keeps its triangles, winding included; the order does change; the coarse
    // triangles name existing vertices.
    MeshOptimizer::Options everything;
    everything.coarseFrom = 0;
    everything.cacheOrderFrom = 0;
    std::size_t reordered = 0, coarse = 0;
    for (const auto& part : model.parts) {
        auto optimised = part;
        MeshOptimizer::optimize(optimised.meshes, optimised.entities, everything);
        EXPECT_EQ(faceTriangles(optimised), faceTriangles(part));
        for (std::size_t m = 0; m < part.meshes.size(); ++m) {
            reordered += optimised.meshes[m].indices != part.meshes[m].indices ? 1 : 0;
            coarse += optimised.meshes[m].coarseIndices.size() / 3;
            for (unsigned int i : optimised.meshes[m].coarseIndices)
                ASSERT_LT(i, optimised.meshes[m].vertices.size());
        }
    }
    EXPECT_GT(reordered, 0u);
    EXPECT_GT(coarse, 0u);
    // The shuffled grid's triangles do come in another order.
    auto positions = [](const qrnsg::Mesh& mesh) {
        std::vector<float> out;
        for (unsigned int i : mesh.indices)
            out.insert(out.end(), mesh.vertices[i].data(), mesh.vertices[i].data() + 3);
        return out;
    };
    auto grid = model.parts.back();
    MeshOptimizer::optimize(grid.meshes, grid.entities, everything);
    EXPECT_NE(positions(grid.meshes[0]), positions(model.parts.back().meshes[0]));

    MeshOptimizer::Options asRead;
    asRead.cacheOrder = false;
    asRead.coarse = false;
    const auto before = pickedFaces(model, asRead);
    const auto after = pickedFaces(model, everything);
    EXPECT_GT(std::set<unsigned int>(before.begin(), before.end()).size(), 10u);
    EXPECT_EQ(after, before);
}
