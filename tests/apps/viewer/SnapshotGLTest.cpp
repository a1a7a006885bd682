#include "ImageBaseline.h"

#include "qrnviewer/BuiltinScene.h"
#include "qrnviewer/DocumentBuilder.h"
#include "qrnviewer/Snapshot.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

// The built-in scene drawn off screen, as the viewer's main command does, against its
// baseline. Tolerance: 8 levels a channel on at most 0.5% of the pixels, for rasteriser
// differences at edges between Mesa versions.
TEST(SnapshotGLTest, BuiltinSceneMatchesItsBaseline) {
    auto document = qrnviewer::DocumentBuilder::build(qrnviewer::BuiltinScene::make());
    const std::string path = (std::filesystem::current_path() / "builtin_scene.png").string();
    std::string error;
    ASSERT_TRUE(qrnviewer::Snapshot::write(document, 320, 240, path, error)) << error;
    qrnimage::Image image;
    ASSERT_TRUE(qrnimage::Image::loadPng(path, image, &error)) << error;
    EXPECT_EQ(image.width(), 320u);
    EXPECT_EQ(image.height(), 240u);
    qrntest::expectMatchesBaseline(image, "builtin_scene", 8, 320 * 240 / 200);
}

TEST(SnapshotGLTest, UnwritablePathIsReported) {
    auto document = qrnviewer::DocumentBuilder::build(qrnviewer::BuiltinScene::make());
    std::string error;
    EXPECT_FALSE(qrnviewer::Snapshot::write(document, 16, 16, "/nonexistent-dir/x.png", error));
    EXPECT_NE(error.find("/nonexistent-dir/x.png"), std::string::npos) << error;
}

} // namespace
