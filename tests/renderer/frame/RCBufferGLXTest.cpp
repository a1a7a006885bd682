// The pixel-buffer context on X11: real GLX pbuffers on the test's X server (Xvfb under
// scripts/test), and every failure path reached by replacing one step of the GLX table.
// GoogleTest first: Xlib's macros (None, Bool) would clash with its names.
#include <gtest/gtest.h>

#include "GlxTestApi.h"
#include "SlantedEdge.h"
#include "qrngl/GL.h"
#include "qrngl/frame/RCBuffer.h"
#include "qrngl/frame/RCTemp.h"
#include "qrngl/frame/linux/Glx.h"

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qrntest {
namespace {

using qrngl::RCBuffer;

// The temporary context's end, the same on every path out of create.
const std::vector<std::string> kTearDown = {"swapBuffers",       "makeCurrent(null)",
                                            "makeCurrent(null)", "makeCurrent(null)",
                                            "deleteContext",     "destroyWindow"};

bool endsWith(const std::vector<std::string>& calls, const std::vector<std::string>& tail) {
    return calls.size() >= tail.size() && std::equal(tail.rbegin(), tail.rend(), calls.rbegin());
}

bool contains(const std::vector<std::string>& calls, const std::string& name) {
    return std::find(calls.begin(), calls.end(), name) != calls.end();
}

class RCBufferGLXTest : public ::testing::Test {
protected:
    void SetUp() override {
        Display* display = XOpenDisplay(nullptr);
        ASSERT_NE(display, nullptr) << "needs an X display: run under xvfb-run";
        XCloseDisplay(display);
    }
    void TearDown() override {
        if (Display* display = glXGetCurrentDisplay())
            glXMakeCurrent(display, None, nullptr);
    }
};

TEST_F(RCBufferGLXTest, DrawsOffScreenMultisampledOnRequestAndStaysCurrent) {
    // Single sampled, multisampled, and multisampling asked for where the driver lacks it.
    for (int kind = 0; kind < 3; ++kind) {
        SCOPED_TRACE(kind);
        const bool multisample = kind == 1;
        ScopedGlx glx;
        if (kind == 2)
            g_next.hasMultisample = [] { return false; };
        RCBuffer buffer(48, 40, kind != 0, nullptr);
        ASSERT_TRUE(buffer.create());
        const auto calls = glx.take();
        // Without a parent, GLEW is loaded through a temporary context torn down first.
        EXPECT_TRUE(contains(calls, "glewInit"));
        const auto made = std::find(calls.begin(), calls.end(), "makeContextCurrent");
        EXPECT_NE(made, calls.end());
        EXPECT_EQ(std::find(made, calls.end(), "destroyWindow"), calls.end());
        EXPECT_TRUE(contains({calls.begin(), made}, "destroyWindow"));
        EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(buffer.currentGLRC()));
        EXPECT_EQ(glXGetCurrentDrawable(),
                  static_cast<GLXDrawable>(reinterpret_cast<std::uintptr_t>(buffer.currentDC())));
        GLint samples = -1;
        glGetIntegerv(GL_SAMPLES, &samples);
        EXPECT_EQ(samples > 1, multisample);
        // deactivate neither presents nor releases; multisampling shows as in-between greys.
        drawSlantedEdge(40);
        buffer.deactivate();
        // Only a multisampled buffer asks for the current context, to resolve into the pbuffer.
        EXPECT_EQ(glx.take(), multisample ? std::vector<std::string>{"currentContext"}
                                          : std::vector<std::string>{});
        EXPECT_EQ(glXGetCurrentContext(), reinterpret_cast<GLXContext>(buffer.currentGLRC()));
        const std::set<int> levels = greyLevels(40);
        if (multisample)
            EXPECT_GT(levels.size(), 2u);
        else
            EXPECT_EQ(levels, (std::set<int>{0, 255}));
        // A copy shares the handles; the first destroy frees them, a second finds nothing.
        RCBuffer copy(buffer);
        buffer.destroy();
        std::vector<std::string> destroyed = {"makeContextCurrent(null)", "deleteContext",
                                              "destroyPbuffer"};
        if (multisample)
            destroyed.insert(destroyed.begin(), {"currentContext", "makeContextCurrent"});
        EXPECT_EQ(glx.take(), destroyed);
        EXPECT_EQ(buffer.currentGLRC(), nullptr);
        EXPECT_EQ(glXGetCurrentContext(), nullptr);
        g_next.deleteContext = [](Display*, GLXContext) {};
        g_next.destroyPbuffer = [](Display*, GLXPbuffer) {};
        copy.destroy();
        g_next = qrngl::GlxApi::system();
    }
}

TEST_F(RCBufferGLXTest, SharesAParentsListsAndTearsTheTemporaryContextDownOnEveryFailure) {
    auto parent = std::make_shared<qrngl::RCTemp>(8, 8, nullptr);
    ASSERT_TRUE(parent->create());
    ASSERT_EQ(glewInit(), 0u);
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glEndList();
    {
        // With a parent, GLEW is not loaded again.
        ScopedGlx glx;
        RCBuffer buffer(16, 16, false, parent);
        ASSERT_TRUE(buffer.create());
        EXPECT_FALSE(contains(glx.take(), "glewInit"));
        glCallList(list);
        unsigned char rgb[3] = {};
        glReadPixels(3, 3, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, rgb);
        EXPECT_EQ(std::vector<int>(rgb, rgb + 3), (std::vector<int>{0, 255, 0}));
        buffer.destroy();
    }

    struct Case {
        const char* name;
        void (*fail)();
        bool parent;
        const char* lastStep; // the step that failed, or the last before the tear-down
    };
    const Case cases[] = {
        {"helper context",
         [] {
             g_next.choosePixelFormat = [](Display*, const qrngl::PixelFormatDescriptor&) {
                 return 0;
             };
         },
         false, "choosePixelFormat"},
        {"glew", [] { g_next.glewInit = [] { return 1u; }; }, false, "glewInit"},
        {"no pbuffers", [] { g_next.hasPbuffer = [] { return false; }; }, false, "hasPbuffer"},
        {"no configuration",
         [] {
             g_next.chooseFBConfig = [](Display*, const int*, int*, unsigned int* count) {
                 *count = 0;
                 return true;
             };
         },
         false, "chooseFBConfig"},
        {"refused current",
         [] {
             g_next.makeContextCurrent = [](Display*, GLXDrawable, GLXContext) { return false; };
         },
         true, "createNewContext"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ScopedGlx glx;
        c.fail();
        RCBuffer buffer(16, 16, false, c.parent ? parent : nullptr);
        EXPECT_FALSE(buffer.create());
        std::vector<std::string> calls = glx.take();
        EXPECT_EQ(buffer.currentGLRC(), nullptr);
        if (std::string(c.name) == "refused current") {
            // The buffer's own context is deleted once it cannot be made current.
            EXPECT_TRUE(endsWith(calls, {"makeContextCurrent", "deleteContext"}));
            calls.resize(calls.size() - 2);
        }
        if (std::string(c.name) == "helper context")
            EXPECT_TRUE(
                endsWith(calls, {"choosePixelFormat", "swapBuffers", "makeCurrent(null)",
                                 "makeCurrent(null)", "makeCurrent(null)", "destroyWindow"}));
        else
            EXPECT_TRUE(endsWith(calls, kTearDown));
        EXPECT_TRUE(contains(calls, c.lastStep));
        EXPECT_FALSE(contains(calls, "makeContextCurrent") && c.parent == false);
    }
    parent->destroy();
}

} // namespace
} // namespace qrntest
