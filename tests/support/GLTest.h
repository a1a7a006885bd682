#pragma once

#include "qrngl/IRenderContext.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

namespace qrntest {

// A pixel's colour, 8 bits a channel.
struct Rgba {
    std::uint8_t r = 0, g = 0, b = 0, a = 0;
    int operator[](int i) const { return i == 0 ? r : i == 1 ? g : i == 2 ? b : a; }
    friend bool operator==(const Rgba& x, const Rgba& y) {
        return x.r == y.r && x.g == y.g && x.b == y.b && x.a == y.a;
    }
};

// Names every pending OpenGL error; empty when there is none. Reading clears them.
std::string takeGLErrors();

// Fails the current test with the pending OpenGL errors, if any.
#define EXPECT_NO_GL_ERROR()                                                                       \
    do {                                                                                           \
        std::string glErrors_ = ::qrntest::takeGLErrors();                                         \
        EXPECT_TRUE(glErrors_.empty()) << "OpenGL errors: " << glErrors_;                          \
    } while (0)

// The one fixture of OpenGL tests: a context of width() x height() without a visible window
// (see GLContext.h), created and current for the test body. TearDown fails the test on any
// OpenGL error left pending.
class GLTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    virtual unsigned int width() const { return 64; }
    virtual unsigned int height() const { return 64; }

    // A pixel of the current frame buffer, x from the left and y from the top; alpha reads 255.
    Rgba pixel(unsigned int x, unsigned int y) const;
    // The same pixel of the last frame deactivate() presented (black before the first).
    Rgba presentedPixel(unsigned int x, unsigned int y) const;
    // Fills the frame buffer with one colour, so that a test can tell whether anything drew.
    void fill(float r, float g, float b) const;
    // Counts the pixels of the frame buffer within tolerance of a colour.
    std::size_t countPixels(const Rgba& color, int tolerance = 2) const;

    std::shared_ptr<qrngl::IRenderContext> context;
};

// True when each channel is within tolerance.
bool near(const Rgba& a, const Rgba& b, int tolerance = 2);
std::ostream& operator<<(std::ostream& os, const Rgba& c);

} // namespace qrntest
