// RCBuffer on Windows (run under Wine): a real WGL pixel buffer, the lists it shares, and
// every failure path through the recording table.
#include "qrngl/frame/RCBuffer.h"
#include "MemoryLogger.h"
#include "SlantedEdge.h"
#include "WglTestApi.h"
#include "qrngl/GL.h"
#include "qrngl/frame/RCTemp.h"

#include <GL/wglew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qrntest {
namespace {

using qrngl::RCBuffer;
using Calls = std::vector<std::string>;

// The temporary context's end once it has a context, the same on every path out of create.
const Calls kTearDown = {
    "SwapBuffers", "wglMakeCurrent(null)", "wglMakeCurrent(null)", "wglDeleteContext",
    "ReleaseDC",   "DestroyWindow"};

Calls operator+(Calls a, const Calls& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

bool endsWith(const Calls& calls, const Calls& tail) {
    return calls.size() >= tail.size() && std::equal(tail.rbegin(), tail.rend(), calls.rbegin());
}

// The pairs the buffer's pixel format is asked with.
std::vector<int> formatPairs(bool multisample) {
    std::vector<int> pairs = {WGL_DRAW_TO_PBUFFER_ARB, 1,
                              WGL_SUPPORT_OPENGL_ARB,  1,
                              WGL_ACCELERATION_ARB,    WGL_FULL_ACCELERATION_ARB,
                              WGL_COLOR_BITS_ARB,      24,
                              WGL_DEPTH_BITS_ARB,      16,
                              WGL_STENCIL_BITS_ARB,    2,
                              WGL_PIXEL_TYPE_ARB,      WGL_TYPE_RGBA_ARB};
    if (multisample)
        pairs.insert(pairs.end(), {WGL_SAMPLE_BUFFERS_ARB, 1, WGL_SAMPLES_ARB, 4});
    pairs.insert(pairs.end(), {WGL_RED_BITS_ARB, 8, WGL_GREEN_BITS_ARB, 8, WGL_BLUE_BITS_ARB, 8,
                               WGL_DOUBLE_BUFFER_ARB, 0});
    return pairs;
}

class RCBufferTest : public ::testing::Test {
protected:
    void TearDown() override { wglMakeCurrent(nullptr, nullptr); }
    ScopedMemoryLogger log;
    ScopedWgl wgl;
};

TEST_F(RCBufferTest, DrawsIntoAPixelBufferThatStaysCurrent) {
    for (bool multisample : {false, true}) {
        SCOPED_TRACE(multisample ? "multisampled" : "single sample");
        wgl.take();
        RCBuffer buffer(40, 30, multisample, nullptr);
        ASSERT_TRUE(buffer.create());
        const Calls calls = wgl.take();
        // GLEW loaded through the temporary context, torn down before the buffer is current.
        const auto made = std::find(calls.begin(), calls.end(), "wglCreatePbufferARB");
        EXPECT_EQ(std::count(calls.begin(), made, "glewInit"), 1);
        EXPECT_EQ(Calls(made, calls.end()),
                  (Calls{"wglCreatePbufferARB", "wglGetPbufferDCARB", "wglCreateContext"} +
                   kTearDown + Calls{"wglMakeCurrent", "wglGetPbufferDCARB", "wglMakeCurrent"}));
        EXPECT_EQ(wglRecord().arbList, formatPairs(multisample));
        EXPECT_TRUE(wglRecord().arbFloats.empty());
        EXPECT_EQ(wglRecord().arbMaxFormats, 1u);
        EXPECT_EQ(wglRecord().pbuffer.width, 40);
        EXPECT_EQ(wglRecord().pbuffer.height, 30);
        EXPECT_EQ(wglRecord().pbuffer.attributes, std::vector<int>{0});
        EXPECT_EQ(wglGetCurrentContext(), buffer.currentGLRC());
        GLint samples = -1;
        glGetIntegerv(GL_SAMPLES, &samples);
        EXPECT_EQ(samples, multisample ? 4 : 0);
        drawSlantedEdge(30);
        // deactivate only flushes: no call, the context stays current.
        buffer.deactivate();
        EXPECT_EQ(wgl.take(), Calls{});
        EXPECT_EQ(wglGetCurrentContext(), buffer.currentGLRC());
        const std::set<int> levels = greyLevels(30);
        EXPECT_TRUE(levels.count(0) && levels.count(255));
        if (!multisample)
            EXPECT_EQ(levels.size(), 2u);
        else if (levels.size() == 2) // Mesa's software rasteriser, natively as under Wine
            std::printf("pixel buffer: %d samples, yet no in-between grey on an edge\n", samples);
        buffer.destroy();
        EXPECT_EQ(wgl.take(), (Calls{"wglMakeCurrent(null)", "wglDeleteContext",
                                     "wglReleasePbufferDCARB", "wglDestroyPbufferARB"}));
        EXPECT_EQ(wglGetCurrentContext(), nullptr);
        EXPECT_EQ(buffer.currentGLRC(), nullptr);
        // A second destroy calls nothing, so leaves another context current.
        buffer.destroy();
        EXPECT_EQ(wgl.take(), Calls{});
        // Only the temporary context speaks; the pixel buffer itself logs nothing.
        for (const std::wstring& line : log.take())
            EXPECT_EQ(line.rfind(L"RCTEMP:", 0), 0u);
    }
}

TEST_F(RCBufferTest, SharesTheParentsListsAndLeavesGlewAlone) {
    auto parent = std::make_shared<qrngl::RCTemp>(8, 8, nullptr);
    ASSERT_TRUE(parent->create());
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glEndList();
    wgl.take();

    RCBuffer buffer(16, 16, false, parent);
    ASSERT_TRUE(buffer.create());
    const Calls calls = wgl.take();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "glewInit"), 0);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "wglShareLists"), 1);
    glCallList(list);
    unsigned char rgb[3] = {};
    glReadPixels(3, 3, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, rgb);
    EXPECT_EQ(rgb[1], 255);
    EXPECT_EQ(rgb[0] + rgb[2], 0);
    buffer.destroy();
    parent->destroy();
}

TEST_F(RCBufferTest, EveryFailureTearsTheTemporaryContextDown) {
    using Api = qrngl::WglApi;
    struct Case {
        const char* name;
        void (*fail)(Api&);
        Calls tail; // what the failing create ends with
    };
    const Case cases[] = {
        // Without a context the temporary one has nothing to delete.
        {"temporary context",
         [](Api& a) { a.choosePixelFormat = [](HDC, const PIXELFORMATDESCRIPTOR*) { return 0; }; },
         {"ChoosePixelFormat", "SwapBuffers", "wglMakeCurrent(null)", "wglMakeCurrent(null)",
          "ReleaseDC", "DestroyWindow"}},
        {"glew", [](Api& a) { a.glewInit = [] { return 1u; }; }, Calls{"glewInit"} + kTearDown},
        {"no pbuffers", [](Api& a) { a.hasArbPbuffer = [] { return false; }; },
         Calls{"glewInit"} + kTearDown},
        {"no ARB formats", [](Api& a) { a.hasArbPixelFormat = [] { return false; }; },
         Calls{"glewInit"} + kTearDown},
        {"format refused",
         [](Api& a) {
             a.choosePixelFormatARB = [](HDC, const int*, const FLOAT*, UINT, int*, UINT*) -> BOOL {
                 return FALSE;
             };
         },
         Calls{"wglChoosePixelFormatARB"} + kTearDown},
        {"no format named",
         [](Api& a) {
             a.choosePixelFormatARB = [](HDC, const int*, const FLOAT*, UINT, int* format,
                                         UINT* count) -> BOOL {
                 *format = 0;
                 *count = 0;
                 return TRUE;
             };
         },
         Calls{"wglCreatePbufferARB", "wglGetPbufferDCARB", "wglCreateContext"} + kTearDown},
        {"buffer not made current",
         [](Api& a) {
             a.makeCurrent = [](HDC dc, HGLRC rc) -> BOOL {
                 // Only the buffer's own context, made after the pixel buffer, is refused.
                 return rc && wglRecord().pbuffer.width ? FALSE : Api::system().makeCurrent(dc, rc);
             };
         },
         Calls{"wglCreateContext"} + kTearDown + Calls{"wglMakeCurrent", "wglDeleteContext"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        wglRecord() = WglRecord();
        wglRecord().next = Api::system();
        c.fail(wgl.next());
        RCBuffer buffer(16, 16, false, nullptr);
        EXPECT_FALSE(buffer.create());
        EXPECT_TRUE(endsWith(wgl.take(), c.tail));
        EXPECT_EQ(buffer.currentGLRC(), nullptr);
        EXPECT_EQ(wglGetCurrentContext(), nullptr);
        buffer.destroy();
    }

    // Multisampling asked of a driver without the extension: the list without samples.
    wglRecord().next = Api::system();
    wgl.next().hasArbMultisample = [] { return false; };
    RCBuffer buffer(16, 16, true, nullptr);
    ASSERT_TRUE(buffer.create());
    EXPECT_EQ(wglRecord().arbList, formatPairs(false));
    buffer.destroy();
}

} // namespace
} // namespace qrntest
