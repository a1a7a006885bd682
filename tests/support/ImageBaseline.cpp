#include "ImageBaseline.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#ifndef QRN_BASELINE_DIR
#error QRN_BASELINE_DIR must name the baseline folder
#endif

namespace qrntest {

void expectMatchesBaseline(const qrnimage::Image& actual, const std::string& name, int tolerance,
                           std::size_t maxDiffering) {
    namespace fs = std::filesystem;
    const fs::path baseline = fs::path(QRN_BASELINE_DIR) / (name + ".png");
    const fs::path outDir = fs::current_path() / "image-output";
    std::string error;
    const char* update = std::getenv("QRN_UPDATE_BASELINES");
    if (update && std::string(update) == "1") {
        fs::create_directories(baseline.parent_path());
        ASSERT_TRUE(actual.savePng(baseline.string(), &error)) << error;
        std::printf("updated baseline %s\n", baseline.string().c_str());
        return;
    }
    fs::create_directories(outDir);
    const fs::path actualPath = outDir / (name + ".actual.png");
    qrnimage::Image expected;
    if (!qrnimage::Image::loadPng(baseline.string(), expected, &error)) {
        actual.savePng(actualPath.string());
        FAIL() << "missing baseline " << baseline << " (" << error << "); actual image written to "
               << actualPath << "; run with QRN_UPDATE_BASELINES=1 to accept it";
    }
    auto c = qrnimage::Image::compare(actual, expected, tolerance);
    if (!c.sameSize) {
        actual.savePng(actualPath.string());
        FAIL() << "size " << actual.width() << "x" << actual.height() << " differs from baseline "
               << expected.width() << "x" << expected.height() << "; actual: " << actualPath;
    }
    if (c.differing > maxDiffering) {
        const fs::path diffPath = outDir / (name + ".diff.png");
        actual.savePng(actualPath.string());
        c.difference.savePng(diffPath.string());
        ADD_FAILURE() << c.differing << " pixels differ from " << baseline << " by more than "
                      << tolerance << " (at most " << maxDiffering << " allowed; largest "
                      << c.maxChannelDifference << "); actual: " << actualPath
                      << ", difference: " << diffPath;
    }
}

} // namespace qrntest
