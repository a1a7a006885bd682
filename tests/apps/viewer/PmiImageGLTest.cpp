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

#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;
using qrnimport::ModelData;

// Pixels in the PMI's dark blue, which nothing else of these models shows.
std::size_t pmiPixels(const qrnimage::Image& image, unsigned int* left = nullptr,
                      unsigned int* top = nullptr) {
    std::size_t n = 0;
    for (unsigned int y = 0; y < image.height(); ++y)
        for (unsigned int x = 0; x < image.width(); ++x) {
            const auto* p = image.pixel(x, y);
            if (std::abs(p[0] - 13) <= 3 && std::abs(p[1] - 38) <= 3 && std::abs(p[2] - 153) <= 3) {
                ++n;
                if (left && x < *left)
                    *left = x;
                if (top && y < *top)
                    *top = y;
            }
        }
    return n;
}

// The model drawn as the viewer shows it first: iso, fitted to the model and its PMI.
qrnimage::Image picture(const ModelData& model, unsigned int width, unsigned int height,
                        const std::string& name, bool pmiShown = true) {
    auto document = qrnimport::DocumentBuilder::build(model);
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    qrngl::CameraHelper::setViewport(width, height, renderer->camera);
    EXPECT_TRUE(qrnimport::StandardView::apply("iso", model.extent(), renderer->camera));
    qrnviewer::PmiDisplay(document).setShown(pmiShown);
    const std::string path = (fs::current_path() / (name + ".png")).string();
    std::string error;
    EXPECT_TRUE(qrnviewer::Snapshot::write(document, width, height, path, error)) << error;
    qrnimage::Image image;
    EXPECT_TRUE(qrnimage::Image::loadPng(path, image, &error)) << error;
    return image;
}

TEST(PmiImageGLTest, TheDemoWithItsNote) {
    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnimport::DemoAssembly::model(model, error)) << error;
    qrnimport::DemoAssembly::addNote(model);
    ASSERT_EQ(model.pmi.size(), 1u);
    const qrnimage::Image image = picture(model, 640, 480, "pmi_demo_note");
    ASSERT_EQ(image.width(), 640u);
    // The note and its leader show, the note left of the model, facing the viewer.
    unsigned int left = 640, top = 480;
    EXPECT_GT(pmiPixels(image, &left, &top), 150u);
    EXPECT_LT(left, 150u);
    EXPECT_EQ(pmiPixels(picture(model, 640, 480, "pmi_demo_note_hidden", false)), 0u);
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
    EXPECT_EQ(pmiPixels(picture(model, 800, 600, "pmi_nist_ctc_01_hidden", false)), 0u);
    qrntest::expectMatchesBaseline(image, "pmi_nist_ctc_01_iso", 8, 800 * 600 / 200);
}

} // namespace
