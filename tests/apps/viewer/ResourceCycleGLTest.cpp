// Opening, using and closing documents gives back every GL object: buffers, textures, frame
// and render buffers, display lists and pixel-pack buffers are counted in the one context
// that stays, off screen and in a window, around 50 cycles of the whole life of a document.
#include "GLTest.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/PrintCanvas.h"
#include "qrngl/frame/RCWindow.h"
#include "qrngl/frame/RendererFactory.h"
#include "qrngl/interaction/EntityGeometry.h"
#include "qrngl/measure/MeasureRenderer.h"
#include "qrngl/measure/SmartMeasureManipulator.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/StandardView.h"
#include "qrnviewer/Explosion.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/Sectioning.h"

#include <array>
#include <cstdint>

#ifndef _WIN32
#include <X11/Xlib.h>
#endif

namespace qrntest {
namespace {

// Live names of each kind, found by asking for every name up to a bound that covers what a
// driver hands out here (display lists start high: the fonts').
std::array<std::size_t, 5> liveObjects() {
    std::array<std::size_t, 5> n{};
    for (GLuint i = 1; i < 20000; ++i) {
        n[0] += glIsBuffer(i) == GL_TRUE; // vertex, index and pixel-pack buffers alike
        n[1] += glIsTexture(i) == GL_TRUE;
        n[2] += glIsFramebuffer(i) == GL_TRUE;
        n[3] += glIsRenderbuffer(i) == GL_TRUE;
        n[4] += glIsList(i) == GL_TRUE;
    }
    return n;
}

class ResourceCycleGLTest : public GLTest {
protected:
    unsigned int width() const override { return 320; }
    unsigned int height() const override { return 240; }

    // One document's whole life: drawn, picked by point and box, parts hidden and shown in
    // every render mode, a picture printed, cut, measured, exploded, then closed.
    void cycle(const qrnimport::ModelData& model) { cycle(model, context); }
    void cycle(const qrnimport::ModelData& model,
               const std::shared_ptr<qrngl::IRenderContext>& context) {
        auto document = qrnimport::DocumentBuilder::build(model);
        auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
        qrngl::CameraHelper::setViewport(width(), height(), renderer->camera);
        qrnimport::StandardView::apply("iso", model.extent(), renderer->camera);
        auto factory = qrnviewer::RendererPlugins::shared().factoryFor(document);
        ASSERT_TRUE(factory);
        auto canvas = factory->createCanvas(context, document);
        auto picks = factory->createPickCanvas(context, document);
        auto print = std::dynamic_pointer_cast<qrngl::PrintCanvas>(
            factory->createPrintCanvas(context, document));
        ASSERT_TRUE(canvas && picks && print && picks->OnCreate());
        canvas->OnCreate();
        print->OnCreate();
        for (auto* c : {static_cast<qrngl::ICanvas*>(canvas.get()),
                        static_cast<qrngl::ICanvas*>(print.get())})
            c->OnSize(0, 0, width(), height());
        picks->OnSize(0, 0, width(), height());
        renderer->pickCanvas = picks;
        {
            qrnviewer::Sectioning section(document, nullptr);
            qrnviewer::Explosion explosion(document);
            renderer->renderers[qrngl::SCRenderer::MEASURE_RENDERER] =
                std::make_shared<qrngl::MeasureRenderer>(
                    document, std::make_shared<qrngl::RendererFactory>());
            canvas->OnDraw();
            context->activate();
            const unsigned int hit = qrngl::EntityFilter::nearest(picks, 7, 160, 120, 4);
            EXPECT_NE(hit, 0u) << "the demo's middle";
            EXPECT_FALSE(qrngl::EntityFilter::inside(renderer, 7, 40, 40, 280, 200).empty());
            qrngl::EntityGeometry geometry(document);
            geometry.setShown(geometry.partsOf({hit}), false);
            qrngl::visibilityChanged(document);
            for (auto mode : {qrngl::SCRenderer::WIREFRAME, qrngl::SCRenderer::HIDDEN_LINE,
                              qrngl::SCRenderer::SHADED, qrngl::SCRenderer::SHADED_WITH_EDGES}) {
                renderer->renderMode = mode;
                canvas->OnDraw();
                context->activate();
            }
            geometry.setShown(geometry.allParts(), true);
            print->OnDraw();
            context->activate();
            qrnviewer::Sectioning::Settings cut;
            cut.axis = 2;
            cut.profile = true;
            std::string error;
            EXPECT_TRUE(section.apply(cut, error)) << error;
            qrngl::SmartMeasureManipulator smart(document, nullptr, nullptr);
            smart.setFilter(11);
            qrngl::EntityPick a, b;
            if (smart.getPickingResult(160, 120, a) && smart.getPickingResult(100, 150, b))
                smart.measurePair(static_cast<unsigned int>(a.second),
                                  static_cast<unsigned int>(b.second));
            explosion.explodeFully(nullptr);
            canvas->OnDraw();
            context->activate();
        }
        picks->OnDestroy();
        print->OnDestroy();
        canvas->OnDestroy();
        document->close();
    }

    // The first cycle makes what lives with the context (fonts, the plug-in's shared state);
    // the fifty after it must leave the counts where they were.
    void expectFlat(const std::shared_ptr<qrngl::IRenderContext>& context) {
        qrnimport::ModelData model;
        std::string error;
        ASSERT_TRUE(qrnimport::DemoAssembly::model(model, error)) << error;
        cycle(model, context);
        const auto before = liveObjects();
        for (int i = 0; i < 50; ++i)
            cycle(model, context);
        context->activate();
        const auto after = liveObjects();
        static const char* const kinds[] = {"buffers", "textures", "frame buffers",
                                            "render buffers", "display lists"};
        for (std::size_t k = 0; k < before.size(); ++k)
            EXPECT_EQ(after[k], before[k]) << kinds[k] << " leaked over 50 documents";
    }
};

TEST_F(ResourceCycleGLTest, FiftyDocumentsOpenedUsedAndClosedLeaveNoGLObject) {
    expectFlat(context);
}

#ifndef _WIN32
// The same in the context of a window on the screen, multisampled, as the viewer has it.
TEST_F(ResourceCycleGLTest, FiftyDocumentsInAWindowContextLeaveNoGLObject) {
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        GTEST_SKIP() << "*** needs an X display for a window: run under xvfb-run ***";
    const Window window =
        XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, width(), height(), 0, 0, 0);
    XMapWindow(display, window);
    XSync(display, False);
    // A thread has one API's context current at a time: the off-screen EGL one is let go.
    context->deactivate();
    auto onScreen = std::make_shared<qrngl::RCWindow>(
        reinterpret_cast<qrngl::HWND>(static_cast<std::uintptr_t>(window)), nullptr);
    ASSERT_TRUE(onScreen->create());
    expectFlat(onScreen);
    onScreen->destroy();
    XDestroyWindow(display, window);
    XCloseDisplay(display);
    context->activate();
}
#endif

} // namespace
} // namespace qrntest
