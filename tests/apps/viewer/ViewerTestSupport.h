#pragma once
// What the viewer tests share: a scratch folder per test, commands run with their output, PNG
// files read, and pixels counted by colour.
#include "qrnimage/Image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace viewertest {

namespace fs = std::filesystem;

// A folder of its own per test, removed afterwards.
struct TempDir {
    fs::path path = fs::temp_directory_path() /
                    ("qrnview-" + std::to_string(::getpid()) + "-" +
                     ::testing::UnitTest::GetInstance()->current_test_info()->name());
    TempDir() { fs::create_directories(path); }
    ~TempDir() { fs::remove_all(path); }
    std::string file(const std::string& name) const { return (path / name).string(); }
    std::string quoted(const std::string& name) const { return "'" + file(name) + "'"; }
};

struct ProcessResult {
    int exitCode = -1;
    std::string output; // stdout and stderr together
};

// Runs a shell command line, its output merged.
inline ProcessResult runCommand(const std::string& command) {
    ProcessResult run;
    std::FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe)
        return run;
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        run.output.append(buffer, n);
    const int status = pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return run;
}

#ifdef QRNVIEW_EXE
inline ProcessResult qrnview(const std::string& args) {
    return runCommand("'" + std::string(QRNVIEW_EXE) + "' " + args);
}
#endif

inline qrnimage::Image loadPng(const std::string& path) {
    qrnimage::Image image;
    std::string error;
    EXPECT_TRUE(qrnimage::Image::loadPng(path, image, &error)) << error;
    return image;
}

// The pixels that a test says yes to: how many, and the box around them.
struct Pixels {
    std::size_t count = 0;
    unsigned int x0 = ~0u, y0 = ~0u, x1 = 0, y1 = 0;
};
inline Pixels pixels(const qrnimage::Image& image,
                     const std::function<bool(const std::uint8_t*)>& is) {
    Pixels found;
    for (unsigned int y = 0; y < image.height(); ++y)
        for (unsigned int x = 0; x < image.width(); ++x)
            if (is(image.pixel(x, y))) {
                ++found.count;
                found.x0 = std::min(found.x0, x), found.x1 = std::max(found.x1, x);
                found.y0 = std::min(found.y0, y), found.y1 = std::max(found.y1, y);
            }
    return found;
}

// The PMI's dark blue, which nothing else of the models shows.
inline bool pmiBlue(const std::uint8_t* p) {
    return std::abs(p[0] - 13) <= 3 && std::abs(p[1] - 38) <= 3 && std::abs(p[2] - 153) <= 3;
}
// The selection's tint, magenta: red and blue well above green.
inline bool selectionTint(const std::uint8_t* p) {
    return p[0] > p[1] + 60 && p[2] > p[1] + 50;
}
inline bool background(const std::uint8_t* p) {
    return std::abs(p[0] - 230) <= 2 && std::abs(p[1] - 230) <= 2 && std::abs(p[2] - 230) <= 2;
}

} // namespace viewertest
