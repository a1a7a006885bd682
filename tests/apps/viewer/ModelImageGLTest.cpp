// Models drawn as the viewer shows them, against baselines (8 levels a channel on at most 0.5%
// of the pixels): the demo assembly in the standard views, and PMI shown and hidden.
#include "ImageBaseline.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/ModelReader.h"
#include "qrnimport/StandardView.h"
#include "qrnviewer/PmiDisplay.h"
#include "qrnviewer/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace {

namespace fs = std::filesystem;
using qrnimport::ModelData;

bool isBackground(const std::uint8_t* p) {
    return std::abs(p[0] - 230) <= 2 && std::abs(p[1] - 230) <= 2 && std::abs(p[2] - 230) <= 2;
}

// Pixels in the PMI's dark blue, which nothing else of these models shows.
std::size_t pmiPixels(const qrnimage::Image& image, unsigned int* left = nullptr) {
    std::size_t n = 0;
    for (unsigned int y = 0; y < image.height(); ++y)
        for (unsigned int x = 0; x < image.width(); ++x) {
            const auto* p = image.pixel(x, y);
            if (std::abs(p[0] - 13) <= 3 && std::abs(p[1] - 38) <= 3 && std::abs(p[2] - 153) <= 3) {
                ++n;
                if (left)
                    *left = std::min(*left, x);
            }
        }
    return n;
}

// The model in a standard view fitted to it (and its PMI), written under `name` and read back.
qrnimage::Image picture(const ModelData& model, unsigned int width, unsigned int height,
                        const std::string& name, const std::string& view = "iso",
                        bool pmiShown = true) {
    auto document = qrnimport::DocumentBuilder::build(model);
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    qrngl::CameraHelper::setViewport(width, height, renderer->camera); // the fit's shape
    EXPECT_TRUE(qrnimport::StandardView::apply(view, model.extent(), renderer->camera));
    qrnviewer::PmiDisplay(document).setShown(pmiShown);
    const std::string path = (fs::current_path() / (name + ".png")).string();
    std::string error;
    EXPECT_TRUE(qrnviewer::Snapshot::write(document, width, height, path, error)) << error;
    qrnimage::Image image;
    EXPECT_TRUE(qrnimage::Image::loadPng(path, image, &error)) << error;
    EXPECT_TRUE(image.width() == width && image.height() == height) << name;
    return image;
}

const ModelData& demo() {
    static const ModelData model = [] {
        ModelData m;
        std::string error;
        EXPECT_TRUE(qrnimport::DemoAssembly::model(m, error)) << error;
        return m;
    }();
    return model;
}

class DemoAssemblyImageGLTest : public ::testing::TestWithParam<const char*> {};

TEST_P(DemoAssemblyImageGLTest, ViewMatchesItsBaseline) {
    const std::string view = GetParam(), name = "demo_assembly_" + view;
    const unsigned int width = 320, height = 240;
    ASSERT_FALSE(demo().parts.empty());
    const qrnimage::Image image = picture(demo(), width, height, name, view);
    // Independent of the baseline: the background shows at the corners, the model fills a
    // good part of the frame around its middle.
    for (unsigned int y : {0u, height - 1})
        for (unsigned int x : {0u, width - 1})
            EXPECT_TRUE(isBackground(image.pixel(x, y))) << view << " corner " << x << "," << y;
    std::size_t covered = 0;
    unsigned int x0 = width, x1 = 0, y0 = height, y1 = 0;
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x)
            if (!isBackground(image.pixel(x, y))) {
                ++covered;
                x0 = std::min(x0, x), x1 = std::max(x1, x);
                y0 = std::min(y0, y), y1 = std::max(y1, y);
            }
    EXPECT_GT(covered, width * height / 10) << view;
    EXPECT_LT(covered, width * height * 85 / 100) << view;
    EXPECT_NEAR((x0 + x1) / 2.0, width / 2.0, width * 0.1) << view;
    EXPECT_NEAR((y0 + y1) / 2.0, height / 2.0, height * 0.1) << view;
    qrntest::expectMatchesBaseline(image, name, 8, width * height / 200);
}

INSTANTIATE_TEST_SUITE_P(StandardViews, DemoAssemblyImageGLTest,
                         ::testing::Values("iso", "front", "top"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param);
                         });

TEST(PmiImageGLTest, TheDemoWithItsNote) {
    ModelData model = demo();
    qrnimport::DemoAssembly::addNote(model);
    ASSERT_EQ(model.pmi.size(), 1u);
    const qrnimage::Image image = picture(model, 640, 480, "pmi_demo_note");
    // The note and its leader show, the note left of the model, facing the viewer.
    unsigned int left = 640;
    EXPECT_GT(pmiPixels(image, &left), 150u);
    EXPECT_LT(left, 150u);
    EXPECT_EQ(pmiPixels(picture(model, 640, 480, "pmi_demo_note_hidden", "iso", false)), 0u);
    qrntest::expectMatchesBaseline(image, "pmi_demo_note", 8, 640 * 480 / 200);
}

TEST(PmiImageGLTest, TheNistPartWithItsPmi) {
    const fs::path file = fs::path(QRN_SHARED_MODELS) / "nist_ctc_01_asme1_ap242-e1.stp";
    if (!fs::exists(file))
        GTEST_SKIP() << "*** SHARED MODELS MISSING: " << file.string() << " not found ***";
    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnimport::ModelReader::read(file.string(), model, error)) << error;
    ASSERT_EQ(model.pmi.size(), 21u);
    const qrnimage::Image image = picture(model, 800, 600, "pmi_nist_ctc_01_iso");
    EXPECT_GT(pmiPixels(image), 3000u) << "21 items with their leaders";
    EXPECT_EQ(pmiPixels(picture(model, 800, 600, "pmi_nist_ctc_01_hidden", "iso", false)), 0u);
    qrntest::expectMatchesBaseline(image, "pmi_nist_ctc_01_iso", 8, 800 * 600 / 200);
}

} // namespace
