#include "GLTest.h"

#include "GLContext.h"

#include "qrngl/GL.h"

#include <cstdlib>
#include <ostream>
#include <vector>

namespace qrntest {

std::string takeGLErrors() {
    std::string out;
    for (int i = 0; i < 32; ++i) {
        GLenum e = glGetError();
        if (e == GL_NO_ERROR)
            break;
        const char* name = reinterpret_cast<const char*>(gluErrorString(e));
        if (!out.empty())
            out += ", ";
        out += name ? name : std::to_string(e);
    }
    return out;
}

void GLTest::SetUp() {
    context = makeGLContext(width(), height());
    ASSERT_TRUE(context->create()) << "no OpenGL context";
    // The host loads entry points beyond 1.1; GLEW's probing may leave an error behind.
    glewInit();
    takeGLErrors();
}

void GLTest::TearDown() {
    if (!context)
        return;
    context->activate();
    EXPECT_NO_GL_ERROR();
    context->destroy();
}

Rgba GLTest::pixel(unsigned int x, unsigned int y) const {
    std::uint8_t c[3] = {};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(static_cast<GLint>(x), static_cast<GLint>(height() - 1 - y), 1, 1, GL_RGB,
                 GL_UNSIGNED_BYTE, c);
    return Rgba{c[0], c[1], c[2], 255};
}

Rgba GLTest::presentedPixel(unsigned int x, unsigned int y) const {
    const unsigned char* image = presentedImage(*context);
    if (!image)
        return Rgba{0, 0, 0, 255};
    const unsigned int stride = (width() * 3 + 3) & ~3u;
    const unsigned char* row = image + (height() - 1 - y) * stride;
    return Rgba{row[x * 3 + 2], row[x * 3 + 1], row[x * 3], 255};
}

void GLTest::fill(float r, float g, float b) const {
    glClearColor(r, g, b, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

std::size_t GLTest::countPixels(const Rgba& color, int tolerance) const {
    std::vector<std::uint8_t> data(static_cast<std::size_t>(width()) * height() * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, static_cast<GLsizei>(width()), static_cast<GLsizei>(height()), GL_RGB,
                 GL_UNSIGNED_BYTE, data.data());
    std::size_t n = 0;
    for (std::size_t i = 0; i < data.size(); i += 3)
        if (near(Rgba{data[i], data[i + 1], data[i + 2], 255}, color, tolerance))
            ++n;
    return n;
}

bool near(const Rgba& a, const Rgba& b, int tolerance) {
    for (int i = 0; i < 4; ++i)
        if (std::abs(a[i] - b[i]) > tolerance)
            return false;
    return true;
}

std::ostream& operator<<(std::ostream& os, const Rgba& c) {
    return os << "(" << c[0] << ", " << c[1] << ", " << c[2] << ", " << c[3] << ")";
}

} // namespace qrntest
