#include "ImageBaseline.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/StandardView.h"
#include "qrnviewer/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>

namespace {

using qrnimport::ModelData;

constexpr unsigned int kWidth = 320, kHeight = 240;
constexpr int kBackground = 230;

bool isBackground(const std::uint8_t* p) {
    return std::abs(p[0] - kBackground) <= 2 && std::abs(p[1] - kBackground) <= 2 &&
           std::abs(p[2] - kBackground) <= 2;
}

// Hue in 30 degree sectors for clearly coloured pixels, -1 for greys.
int hueSector(const std::uint8_t* p) {
    const int r = p[0], g = p[1], b = p[2];
    const int hi = std::max({r, g, b}), lo = std::min({r, g, b});
    if (hi < 40 || hi - lo < hi / 4)
        return -1;
    double h = 0.0;
    const double d = hi - lo;
    if (hi == r)
        h = std::fmod((g - b) / d + 6.0, 6.0);
    else if (hi == g)
        h = (b - r) / d + 2.0;
    else
        h = (r - g) / d + 4.0;
    return static_cast<int>(h * 60.0) / 30;
}

// The demo drawn in the standard views, as the viewer shows it before any file is opened.
// Tolerance as for the built-in scene: 8 levels a channel on at most 0.5% of the pixels.
class DemoAssemblyImageGLTest : public ::testing::TestWithParam<const char*> {
protected:
    static void SetUpTestSuite() {
        s_model = std::make_unique<ModelData>();
        s_ok = qrnimport::DemoAssembly::model(*s_model, s_error);
    }
    static void TearDownTestSuite() { s_model.reset(); }

    static std::unique_ptr<ModelData> s_model;
    static bool s_ok;
    static std::string s_error;
};

std::unique_ptr<ModelData> DemoAssemblyImageGLTest::s_model;
bool DemoAssemblyImageGLTest::s_ok = false;
std::string DemoAssemblyImageGLTest::s_error;

TEST_P(DemoAssemblyImageGLTest, ViewMatchesItsBaseline) {
    ASSERT_TRUE(s_ok) << s_error;
    const std::string view = GetParam();
    auto document = qrnimport::DocumentBuilder::build(*s_model);
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    ASSERT_TRUE(renderer);
    qrngl::CameraHelper::setViewport(kWidth, kHeight, renderer->camera); // the fit's shape
    ASSERT_TRUE(qrnimport::StandardView::apply(view, s_model->bbox(), renderer->camera));

    const std::string name = "demo_assembly_" + view;
    const std::string path = (std::filesystem::current_path() / (name + ".png")).string();
    std::string error;
    ASSERT_TRUE(qrnviewer::Snapshot::write(document, kWidth, kHeight, path, error)) << error;
    qrnimage::Image image;
    ASSERT_TRUE(qrnimage::Image::loadPng(path, image, &error)) << error;
    ASSERT_EQ(image.width(), kWidth);
    ASSERT_EQ(image.height(), kHeight);

    // Independent of the baseline: the background shows at the corners, the model fills a
    // good part of the frame around its middle, in several colours.
    for (unsigned int y : {0u, kHeight - 1})
        for (unsigned int x : {0u, kWidth - 1}) {
            const auto* p = image.pixel(x, y);
            EXPECT_TRUE(isBackground(p)) << view << " corner " << x << "," << y << ": " << int(p[0])
                                         << " " << int(p[1]) << " " << int(p[2]);
        }
    std::size_t covered = 0, red = 0;
    unsigned int x0 = kWidth, x1 = 0, y0 = kHeight, y1 = 0;
    std::map<int, std::size_t> sectors;
    for (unsigned int y = 0; y < kHeight; ++y)
        for (unsigned int x = 0; x < kWidth; ++x) {
            const auto* p = image.pixel(x, y);
            if (isBackground(p))
                continue;
            ++covered;
            x0 = std::min(x0, x);
            x1 = std::max(x1, x);
            y0 = std::min(y0, y);
            y1 = std::max(y1, y);
            const int s = hueSector(p);
            if (s >= 0)
                ++sectors[s];
            if (p[0] > 150 && p[1] < 90 && p[2] < 90)
                ++red;
        }
    const double fraction = static_cast<double>(covered) / (kWidth * kHeight);
    EXPECT_GT(fraction, 0.1) << view;
    EXPECT_LT(fraction, 0.85) << view;
    EXPECT_NEAR((x0 + x1) / 2.0, kWidth / 2.0, kWidth * 0.1) << view;
    EXPECT_NEAR((y0 + y1) / 2.0, kHeight / 2.0, kHeight * 0.1) << view;
    std::size_t colours = 0;
    for (const auto& [sector, count] : sectors)
        colours += count >= 40 ? 1 : 0;
    EXPECT_GE(colours, 3u) << view;
    if (view == "iso") { // the shaft's coloured end face looks this way
        EXPECT_GT(red, 4u);
    }

    qrntest::expectMatchesBaseline(image, name, 8, kWidth * kHeight / 200);
}

INSTANTIATE_TEST_SUITE_P(StandardViews, DemoAssemblyImageGLTest,
                         ::testing::Values("iso", "front", "top"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param);
                         });

} // namespace
