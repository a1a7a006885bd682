// Clusters of closed solids left out of still frames: the picture, and what a click picks, is
// the one drawn with every triangle, from every side, zoomed in past the model's edges, cut,
// and in perspective.
#include "GLTest.h"
#include "ViewerCanvases.h"

#include "qrngl/Camera.h"
#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/StandardView.h"
#include "qrnsg/SCScene.h"
#include "qrnviewer/Sectioning.h"

#include <functional>
#include <vector>

namespace qrntest {
namespace {

constexpr unsigned int kWidth = 320, kHeight = 240;

class ClusterCullingGLTest : public GLTest {
protected:
    unsigned int width() const override { return kWidth; }
    unsigned int height() const override { return kHeight; }
};

TEST_F(ClusterCullingGLTest, LeftOutClustersChangeNoPixelAndNoPick) {
    qrnimport::ModelData model;
    std::string error;
    ASSERT_TRUE(qrnimport::DemoAssembly::model(model, error)) << error;
    // The demo's meshes are small: clusters from a few triangles on.
    qrnimport::DocumentBuilder::Options options;
    options.clustersFrom = 64;
    options.clusterFaceFrom = 16;
    auto document = qrnimport::DocumentBuilder::build(model, options);
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    auto scene = document->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    std::size_t clusters = 0;
    for (const auto& mesh : scene->meshes)
        clusters += mesh.closed ? mesh.clusters.size() : 0;
    ASSERT_GT(clusters, 20u);
    viewertest::ViewerCanvases canvases(document, context, kWidth, kHeight);
    ASSERT_TRUE(canvases.made);
    const auto& canvas = canvases.canvas;
    const auto& picks = canvases.picks;
    qrnviewer::Sectioning section(document, nullptr);

    struct View {
        const char* what;
        std::function<void()> set;
        bool fewer; // clusters must be left out
    };
    auto iso = [&] {
        qrnimport::StandardView::apply("iso", model.extent(), renderer->camera);
        renderer->camera->setProjection(qrngl::Camera::ORTHOGRAPHIC);
    };
    const std::vector<View> views = {
        {"iso", iso, true},
        {"turned", [&] { qrngl::CameraHelper::rotate(renderer->camera, 150, 40); }, true},
        {"zoomed past the edges",
         [&] { qrngl::CameraHelper::zoom(renderer->camera, 100, 90, 3.0f, true); }, true},
        {"perspective", [&] { renderer->camera->setProjection(qrngl::Camera::PERSPECTIVE); }, true},
        {"cut",
         [&] {
             qrnviewer::Sectioning::Settings cut;
             cut.axis = 0;
             ASSERT_TRUE(section.apply(cut, error)) << error;
         },
         false},
    };
    for (const auto& view : views) {
        SCOPED_TRACE(view.what);
        view.set();
        std::vector<unsigned char> frames[2];
        std::size_t triangles[2] = {};
        std::vector<unsigned int> hits[2];
        for (int culled = 0; culled < 2; ++culled) {
            renderer->clusterCulling = culled == 1;
            context->activate();
            canvas->Invalidate();
            canvas->OnDraw();
            triangles[culled] = renderer->lastFrame.triangles;
            context->activate();
            frames[culled].resize(kWidth * kHeight * 4);
            glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, frames[culled].data());
            for (int y = 10; y < static_cast<int>(kHeight); y += 20)
                for (int x = 10; x < static_cast<int>(kWidth); x += 20)
                    hits[culled].push_back(qrngl::EntityFilter::nearest(picks, 7, x, y, 2));
        }
        std::size_t differ = 0;
        for (std::size_t i = 0; i < frames[0].size(); ++i)
            differ += frames[0][i] != frames[1][i];
        EXPECT_EQ(differ, 0u) << "bytes unlike the frame with every cluster";
        EXPECT_EQ(hits[1], hits[0]);
        if (view.fewer) {
            EXPECT_LT(triangles[1], triangles[0] * 9 / 10);
        } else {
            EXPECT_EQ(triangles[1], triangles[0]) << "nothing is left out of a cut";
        }
    }
    EXPECT_NO_GL_ERROR();
}

} // namespace
} // namespace qrntest
