#include "GLTest.h"

#include "qrngl/GL.h"
#include "qrngl/frame/RCBitmap.h"

namespace qrntest {
namespace {

class RCBitmapGLTest : public GLTest {
protected:
    unsigned int width() const override { return 37; } // rows padded to four bytes
    unsigned int height() const override { return 20; }
    // On Linux the fixture's context is the bitmap context itself.
    const qrngl::RCBitmap& bitmap() const { return dynamic_cast<const qrngl::RCBitmap&>(*context); }
};

TEST_F(RCBitmapGLTest, DrawsIntoItsOwnMemoryImageOnDeactivate) {
    EXPECT_NE(context->currentGLRC(), nullptr);
    EXPECT_NE(context->currentDC(), nullptr);
    EXPECT_EQ(bitmap().stride(), 112u);

    // A GL 1.x fixed-function context with the buffers a frame needs.
    GLint stencil = 0, depth = 0;
    glGetIntegerv(GL_STENCIL_BITS, &stencil);
    glGetIntegerv(GL_DEPTH_BITS, &depth);
    EXPECT_GE(stencil, 2);
    EXPECT_GE(depth, 16);

    fill(1.0f, 0.0f, 0.0f);
    // The left-most column blue, the top row green: checks orientation of the image.
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 1, 20);
    fill(0.0f, 0.0f, 1.0f);
    glScissor(0, 19, 37, 1);
    fill(0.0f, 1.0f, 0.0f);
    glDisable(GL_SCISSOR_TEST);
    EXPECT_EQ(pixel(10, 10), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(pixel(0, 10), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(pixel(10, 0), (Rgba{0, 255, 0, 255}));

    context->deactivate();
    EXPECT_EQ(presentedPixel(10, 10), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(presentedPixel(0, 10), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(presentedPixel(36, 0), (Rgba{0, 255, 0, 255}));
    EXPECT_EQ(presentedPixel(36, 19), (Rgba{255, 0, 0, 255}));

    // Released on deactivate; activate brings back the same frame buffer.
    context->activate();
    EXPECT_EQ(pixel(10, 10), (Rgba{255, 0, 0, 255}));

    // Two contexts keep their own images; the first outlives the second's teardown.
    qrngl::RCBitmap other(8, 8);
    ASSERT_TRUE(other.create());
    fill(0.0f, 1.0f, 0.0f);
    other.deactivate();

    context->activate();
    fill(0.0f, 0.0f, 1.0f);
    context->deactivate();
    const unsigned char* o = other.bits();
    EXPECT_EQ(o[0], 0); // blue, green, red
    EXPECT_EQ(o[1], 255);
    EXPECT_EQ(presentedPixel(3, 3), (Rgba{0, 0, 255, 255}));
    other.destroy();
    EXPECT_EQ(other.bits(), nullptr);
    EXPECT_EQ(other.currentGLRC(), nullptr);

    context->activate();
    fill(1.0f, 1.0f, 1.0f);
    EXPECT_EQ(pixel(1, 1), (Rgba{255, 255, 255, 255}));
}

} // namespace
} // namespace qrntest
