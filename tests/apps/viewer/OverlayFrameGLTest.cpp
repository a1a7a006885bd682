// Frames whose only change is an overlay put the kept model back and draw the overlays over it:
// the picture must be the very one a full frame draws, single-sampled and multisampled, and a
// change of the model between two marks must still redraw it.
#include "GLTest.h"
#include "TestDocument.h"
#include "ViewerCanvases.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrngl/frame/RCBuffer.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/StandardView.h"
#include "qrnviewer/EventRouter.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <vector>

namespace qrntest {
namespace {

using qrnviewer::InputEvent;
constexpr unsigned int kWidth = 320, kHeight = 240;

InputEvent event(InputEvent::Kind kind, int x, int y, unsigned int flags = 0,
                 unsigned int key = 0) {
    InputEvent e;
    e.kind = kind;
    e.x = x, e.y = y, e.flags = flags, e.key = key;
    return e;
}
InputEvent key(unsigned int vk) {
    return event(InputEvent::KEY_DOWN, 0, 0, 0, vk);
}

class OverlayFrameGLTest : public GLTest {
protected:
    unsigned int width() const override { return kWidth; }
    unsigned int height() const override { return kHeight; }

    std::vector<unsigned char> frame(const std::shared_ptr<qrngl::IRenderContext>& on,
                                     qrngl::ICanvas& canvas) {
        on->activate();
        canvas.Invalidate();
        canvas.OnDraw();
        on->activate();
        std::vector<unsigned char> rgba(kWidth * kHeight * 4);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        return rgba;
    }

    void check(const std::shared_ptr<qrngl::IRenderContext>& on) {
        qrnimport::ModelData model;
        std::string error;
        ASSERT_TRUE(qrnimport::DemoAssembly::model(model, error)) << error;
        // Clusters bound a tinted part on screen: the demo's small meshes get them too.
        qrnimport::DocumentBuilder::Options options;
        options.clustersFrom = 64;
        auto document = qrnimport::DocumentBuilder::build(model, options);
        viewertest::ViewerCanvases canvases(document, on, kWidth, kHeight);
        ASSERT_TRUE(canvases.made);
        const auto& renderer = canvases.renderer;
        const auto& canvas = canvases.canvas;
        qrnimport::StandardView::apply("iso", model.extent(), renderer->camera);
        // The model's own renderers run only when the model is drawn.
        int modelDraws = 0;
        renderer->addPostRenderer(calling<qrngl::IPostRenderer>([&] { ++modelDraws; }, 1));
        auto router = std::make_unique<qrnviewer::EventRouter>(document, nullptr, nullptr);
        const unsigned int L = qrngl::KEY_LBUTTON;
        enum Expect { OVERLAY, MODEL, EITHER };
        struct Step {
            const char* what;
            std::vector<InputEvent> events;
            Expect expect;
            std::function<void()> before = {};
            std::function<void(const std::vector<unsigned char>&)> after = {};
        };
        auto strips = document->get<qrngl::SCStripRenderer>(qrnsg::SCHEMA_STRIP_RENDERER);
        std::vector<unsigned char> unselected;
        // A part's tint from its stencil value against the tint of its triangles drawn again.
        auto tintsAlike = [&](const std::vector<unsigned char>& stencilTint) {
            EXPECT_TRUE(strips->stencilHoldsParts);
            const auto values = strips->partStencil;
            strips->partStencil.assign(values.size(), 255);
            canvas->OnSize(0, 0, kWidth, kHeight);
            const auto drawnAgain = frame(on, *canvas);
            strips->partStencil = values;
            std::size_t tinted = 0, unlike = 0;
            for (std::size_t i = 0; i + 3 < drawnAgain.size(); i += 4) {
                int tint = 0, apart = 0;
                for (std::size_t k = i; k < i + 3; ++k) {
                    tint = std::max(tint, std::abs(drawnAgain[k] - unselected[k]));
                    apart = std::max(apart, std::abs(drawnAgain[k] - stencilTint[k]));
                }
                tinted += tint > 8;
                unlike += apart > 24;
            }
            EXPECT_GT(tinted, 500u);
            EXPECT_LT(unlike, tinted / 50) << "of " << tinted << " tinted pixels";
        };
        const std::vector<Step> steps = {
            {"first frame", {}, MODEL, {}},
            // Copies are kept once overlays change alone: the first such frame draws all.
            {"first mark", {}, MODEL, [&] { renderer->markOverlayChange(); }},
            {"hover a part", {event(InputEvent::MOTION, 160, 120)}, OVERLAY, {}},
            {"hover nothing",
             {event(InputEvent::MOTION, 4, 4)},
             OVERLAY,
             {},
             [&](const auto& drawn) { unselected = drawn; }},
            {"click a part",
             {event(InputEvent::BUTTON_DOWN, 160, 120, L), event(InputEvent::BUTTON_UP, 160, 120)},
             OVERLAY,
             {},
             tintsAlike},
            {"box select tool", {key('X')}, EITHER, {}},
            {"rubber band",
             {event(InputEvent::BUTTON_DOWN, 60, 50, L), event(InputEvent::MOTION, 230, 190, L)},
             OVERLAY,
             {}},
            {"rubber band ends", {event(InputEvent::BUTTON_UP, 230, 190)}, EITHER, {}},
            // Hidden in the batch after a hover: the hover's mark must not hide it.
            {"hover, then hide the selection",
             {event(InputEvent::MOTION, 150, 110), key('D')},
             MODEL,
             {}},
            {"a stale mark, the camera turned",
             {},
             MODEL,
             [&] {
                 renderer->markOverlayChange();
                 qrngl::CameraHelper::rotate(renderer->camera, 40, 10);
             }},
            {"show all", {key('U')}, MODEL, {}},
            {"cut", {key('L')}, MODEL, {}},
        };
        std::vector<unsigned char> last;
        for (const auto& step : steps) {
            SCOPED_TRACE(step.what);
            if (step.before)
                step.before();
            for (const auto& e : step.events) {
                router->route(e);
                if (e.kind == InputEvent::KEY_DOWN)
                    router->route(event(InputEvent::KEY_UP, 0, 0, 0, e.key));
            }
            router->takeRepaint();
            const int draws = modelDraws;
            const auto drawn = frame(on, *canvas);
            if (step.expect != EITHER) {
                EXPECT_EQ(modelDraws > draws, step.expect == MODEL);
            }
            // The same frame drawn whole.
            canvas->OnSize(0, 0, kWidth, kHeight);
            const auto whole = frame(on, *canvas);
            EXPECT_GT(modelDraws, draws);
            std::size_t differ = 0;
            for (std::size_t i = 0; i < whole.size(); ++i)
                differ += drawn[i] != whole[i];
            EXPECT_EQ(differ, 0u) << "bytes unlike a full frame's";
            if (step.expect == OVERLAY) {
                EXPECT_TRUE(drawn != last) << "the overlay does not show";
            }
            last = drawn;
            if (step.after)
                step.after(drawn);
        }
        EXPECT_NO_GL_ERROR();
        router.reset();
    }
};

TEST_F(OverlayFrameGLTest, AnOverlayFrameIsTheFullFrameWithoutDrawingTheModel) {
    {
        SCOPED_TRACE("single-sampled");
        check(context);
    }
    SCOPED_TRACE("multisampled");
#ifndef _WIN32
    if (!std::getenv("DISPLAY"))
        GTEST_SKIP() << "*** a multisampled buffer needs an X display: run under xvfb-run ***";
#endif
    // A thread has one API's context current at a time: the fixture's is let go.
    context->deactivate();
    auto multisampled = std::make_shared<qrngl::RCBuffer>(kWidth, kHeight, true, nullptr);
    ASSERT_TRUE(multisampled->create());
    check(multisampled);
    multisampled->destroy();
    context->activate();
}

} // namespace
} // namespace qrntest
