#include "qrnviewer/DocumentBuilder.h"
#include "qrnviewer/Shapes.h"
#include "qrnviewer/Snapshot.h"

#include "qrnimage/Image.h"
#include "qrnmath/MatrixUtils.h"

#include <gtest/gtest.h>

#include <filesystem>
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
