#pragma once

#include "qrnimage/Image.h"

#include <string>

namespace qrntest {

// Compares an image with the baseline PNG tests/baselines/<name>.png. A pixel differs when a
// channel differs by more than tolerance; the test fails when more than maxDiffering pixels
// differ, or when the baseline is missing. On failure the actual image and a difference image
// are written beside the test's binary (under image-output/) and their paths reported.
// With QRN_UPDATE_BASELINES=1 in the environment the baseline is (re)written instead.
void expectMatchesBaseline(const qrnimage::Image& actual, const std::string& name, int tolerance,
                           std::size_t maxDiffering);

} // namespace qrntest
