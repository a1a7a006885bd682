// qrnview_fuzz: seeded random input through the viewer's event router and its whole chain of
// tools, on the demo or a model file, drawing frames off screen as it goes. After every frame:
// no OpenGL error, a finite camera with an orthonormal rotation, and a picture that shows the
// model while the camera looks at it. Prints the seed and the events; on a failure, writes the
// events up to it as an event log that replays it.
//
// qrnview_fuzz [MODEL] [--events N] [--seed S] [--frame-every K] [--log-failure FILE]
#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/ModelReader.h"
#include "qrnimport/StandardView.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnviewer/EventLog.h"
#include "qrnviewer/EventRouter.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/Replay.h"
#include "qrnviewer/Snapshot.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using qrnviewer::InputEvent;

constexpr unsigned int kWidth = 320, kHeight = 240;

// Every key the viewer and its tools answer (Q aside: it only asks to quit).
const unsigned int kKeys[] = {
    '1', '2', '3', '4', '5', '6',  '7',  '[', ']', 33,  34,  'F',  36,  37,  38,      39,  40,
    'W', 'G', 'M', 'R', 'P', 'Z',  'B',  'S', 'X', 'N', 27,  'E',  'T', 'A', 'D',     'I', 'U',
    'V', 'O', 'C', 'H', '0', 0x71, 0x72, 'L', 'J', 'K', '9', 0x2E, 16,  17,  0x60 + 3};

// Events as users and broken devices make them: clicks and drags with any buttons and
// chords, wheels from a hair to absurd, keys, touch gestures in any order, points far off
// the window, and times that stand still or jump.
class Generator {
public:
    explicit Generator(std::uint64_t seed) : m_random(seed) {}
    InputEvent next() {
        InputEvent e;
        m_time += pick({0, 1, 5, 16, 40, 200}) + (chance(0.002) ? pick({60000, 600000}) : 0);
        e.time = m_time;
        e.x = coordinate(kWidth);
        e.y = coordinate(kHeight);
        e.flags = static_cast<unsigned int>(uniform(0, 31));
        e.button = static_cast<qrngl::MouseButton>(uniform(0, 2));
        e.touch = chance(0.05);
        const int kind = uniform(0, 99);
        // Users fit the view and show all again now and then: frames then show the model.
        if (++m_count % 97 == 0) {
            e.kind = InputEvent::KEY_DOWN;
            e.key = m_count % 2 ? 'F' : 'U';
            e.button = qrngl::LEFT;
            return e;
        }
        if (kind < 35) {
            e.kind = InputEvent::MOTION;
        } else if (kind < 50) {
            e.kind = InputEvent::BUTTON_DOWN;
        } else if (kind < 65) {
            e.kind = InputEvent::BUTTON_UP;
        } else if (kind < 72) {
            e.kind = InputEvent::WHEEL;
            e.delta = pick({1, -1, 120, -120, 1200, -1200, 120000, -120000, 2147483, -2147483});
        } else if (kind < 86) {
            e.kind = chance(0.6) ? InputEvent::KEY_DOWN : InputEvent::KEY_UP;
            e.key = kKeys[uniform(0, sizeof kKeys / sizeof kKeys[0] - 1)];
        } else if (kind < 96) {
            static const InputEvent::Kind gestures[] = {
                InputEvent::PAN, InputEvent::ZOOM, InputEvent::ROTATE, InputEvent::TWO_FINGER_TAP};
            e.kind = gestures[uniform(0, 3)];
            e.flags = static_cast<unsigned int>(uniform(0, 7));
            e.delta = pick({0, 5, -5, 100, -100, 9000, -36000, 1000000});
        } else {
            e.kind = InputEvent::WAIT;
            e.flags = 0;
        }
        // Only buttons, wheels and motion carry a button.
        if (e.kind != InputEvent::BUTTON_DOWN && e.kind != InputEvent::BUTTON_UP)
            e.button = qrngl::LEFT;
        return e;
    }

    // F let go (it may be held), pressed and released, then a wait while the view moves there.
    std::vector<InputEvent> fit() {
        std::vector<InputEvent> out(4);
        out[0].kind = out[2].kind = InputEvent::KEY_UP;
        out[1].kind = InputEvent::KEY_DOWN;
        out[3].kind = InputEvent::WAIT;
        for (std::size_t i = 0; i < out.size(); ++i) {
            out[i].key = i < 3 ? 'F' : 0;
            out[i].time = m_time += i < 3 ? 1 : 3000;
        }
        return out;
    }

private:
    int uniform(int a, int b) { return std::uniform_int_distribution<int>(a, b)(m_random); }
    bool chance(double p) { return std::bernoulli_distribution(p)(m_random); }
    int pick(std::initializer_list<int> values) {
        return *(values.begin() + uniform(0, static_cast<int>(values.size()) - 1));
    }
    // Mostly inside, sometimes just outside, now and then absurdly far.
    int coordinate(unsigned int size) {
        const int s = static_cast<int>(size);
        if (chance(0.9))
            return uniform(0, s - 1);
        return chance(0.7) ? uniform(-s, 2 * s) : pick({-100000, 100000, 2000000000});
    }
    std::mt19937_64 m_random;
    std::uint64_t m_time = 0;
    long long m_count = 0;
};

struct Options {
    std::string model;
    long long events = 20000;
    std::uint64_t seed = 1;
    int frameEvery = 50;
    std::string failureLog = "qrnview_fuzz_failure.log";
};

bool parse(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--events" && hasValue)
            o.events = std::atoll(argv[++i]);
        else if (arg == "--seed" && hasValue)
            o.seed = std::strtoull(argv[++i], nullptr, 10);
        else if (arg == "--frame-every" && hasValue)
            o.frameEvery = std::max(1, std::atoi(argv[++i]));
        else if (arg == "--log-failure" && hasValue)
            o.failureLog = argv[++i];
        else if (!arg.empty() && arg[0] != '-' && o.model.empty())
            o.model = arg;
        else
            return false;
    }
    return o.events > 0;
}

// What a frame must be: a reason when it is not.
std::string checkFrame(const qrngl::SCRenderer& renderer, const qrnsg::SCSceneRT& rt,
                       const qrnsg::BBox& box, long long& looked) {
    const GLenum error = glGetError();
    if (error != GL_NO_ERROR)
        return "OpenGL error " + std::to_string(error);
    const auto& camera = renderer.camera;
    const qrnmath::Mat4 view = camera->getViewMatrix(), projection = camera->getProjectionMatrix();
    for (int i = 0; i < 16; ++i)
        if (!std::isfinite(view[i]) || !std::isfinite(projection[i]))
            return "a camera matrix is not finite";
    for (int r = 0; r < 3; ++r) {
        const qrnmath::Vec3 axis(view[r], view[4 + r], view[8 + r]);
        if (std::fabs(axis.length() - 1.0f) > 1e-3f)
            return "the camera's rotation is not orthonormal";
    }
    // The model's centre in the view (not behind the eye, inside the window): some of it
    // shows, unless the camera is zoomed in so far that it sits inside a part, or something
    // hides everything.
    const qrnmath::Vec3 at = qrnmath::MatrixUtils::transformPoint(
        qrngl::CameraHelper::getModelToScreen(camera), box.center());
    bool shown = false;
    for (const auto& flags : rt.meshes.flags)
        shown = shown || (flags.second & qrnsg::RTState::VISIBLE) != 0;
    const bool looking = shown && at[2] > 0.0f && at[2] < 1.0f && at[0] >= 0 && at[0] < kWidth &&
                         at[1] >= 0 && at[1] < kHeight && camera->zoomFactor() > 0.05f &&
                         camera->zoomFactor() < 20.0f;
    if (!looking)
        return std::string();
    ++looked;
    std::vector<unsigned char> rgba(kWidth * kHeight * 4);
    glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    std::size_t drawn = 0;
    const auto& bg = renderer.background;
    for (std::size_t p = 0; p < rgba.size(); p += 4)
        for (int c = 0; c < 3; ++c)
            if (std::abs(rgba[p + c] - static_cast<int>(bg[c] * 255.0f + 0.5f)) > 8) {
                ++drawn;
                break;
            }
    return drawn > 0 ? std::string() : "the picture is empty while the camera looks at the model";
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: qrnview_fuzz [MODEL] [--events N] [--seed S] "
                             "[--frame-every K] [--log-failure FILE]\n");
        return 2;
    }
    qrnimport::ModelData model;
    std::string error;
    const bool read = options.model.empty()
                          ? qrnimport::DemoAssembly::model(model, error)
                          : qrnimport::ModelReader::read(options.model, model, error);
    if (!read) {
        std::fprintf(stderr, "qrnview_fuzz: %s\n", error.c_str());
        return 1;
    }
    const qrnviewer::RendererPlugins plugins;
    auto document = qrnimport::DocumentBuilder::build(model);
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    auto rt = document->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    qrngl::CameraHelper::setViewport(kWidth, kHeight, renderer->camera);
    qrnimport::StandardView::apply("iso", model.extent(), renderer->camera);
    const qrnsg::BBox box = model.extent();
    const std::string state = (std::filesystem::temp_directory_path() /
                               ("qrnview_fuzz_" + std::to_string(options.seed) + ".state"))
                                  .string();

    std::string failure;
    long long failedAt = -1, frames = 0, looked = 0;
    std::vector<InputEvent> all;
    qrnviewer::Snapshot::Settings picture;
    picture.width = kWidth;
    picture.height = kHeight;
    picture.beforeFrame = [&](const std::shared_ptr<qrngl::IRenderContext>& context,
                              qrngl::ICanvasFactory& factory) {
        auto canvas = factory.createCanvas(context, document);
        auto picks = factory.createPickCanvas(context, document);
        if (!canvas || !picks || !picks->OnCreate()) {
            failure = "the plug-in made no canvas";
            return;
        }
        canvas->OnCreate();
        canvas->OnSize(0, 0, kWidth, kHeight);
        picks->OnSize(0, 0, kWidth, kHeight);
        renderer->pickCanvas = picks;
        {
            qrnviewer::EventRouter router(document, nullptr, nullptr);
            router.setStateFiles(state, state);
            Generator generator(options.seed);
            std::vector<InputEvent> batch;
            for (long long n = 0; n < options.events && failure.empty(); ++n) {
                batch.push_back(generator.next());
                all.push_back(batch.back());
                if (static_cast<long long>(batch.size()) < options.frameEvery &&
                    n + 1 < options.events)
                    continue;
                // Every fourth frame after a fit and its animation: the model in view.
                if (frames % 4 == 3)
                    for (InputEvent fit : generator.fit()) {
                        batch.push_back(fit);
                        all.push_back(fit);
                    }
                // Times run from the batch's first event, as a log's do.
                const std::uint64_t start = batch.front().time;
                for (auto& e : batch)
                    e.time -= start;
                qrnviewer::Replay::run(router, batch);
                batch.clear();
                context->activate();
                canvas->Invalidate();
                canvas->OnDraw();
                context->activate();
                failure = checkFrame(*renderer, *rt, box, looked);
                ++frames;
                if (!failure.empty())
                    failedAt = n;
            }
        }
        context->activate();
        picks->OnDestroy();
        renderer->pickCanvas.reset();
        canvas->OnDestroy();
    };
    if (!qrnviewer::Snapshot::write(document, picture, plugins, "", error)) {
        std::fprintf(stderr, "qrnview_fuzz: %s\n", error.c_str());
        return 1;
    }
    std::filesystem::remove(state);
    document->close();
    const char* name = options.model.empty() ? "the demo" : options.model.c_str();
    if (failure.empty()) {
        std::printf("qrnview_fuzz: %lld events on %s, seed %llu: no failure (%lld frames, the "
                    "picture checked in %lld)\n",
                    options.events, name, static_cast<unsigned long long>(options.seed), frames,
                    looked);
        return 0;
    }
    std::ofstream log(options.failureLog);
    log << qrnviewer::EventLog::header();
    for (std::size_t i = 0; i <= static_cast<std::size_t>(failedAt) && i < all.size(); ++i)
        log << qrnviewer::EventLog::format(all[i]) << "\n";
    std::printf("qrnview_fuzz: %s, seed %llu: %s after event %lld; replay %s with qrnview "
                "--replay\n",
                name, static_cast<unsigned long long>(options.seed), failure.c_str(), failedAt + 1,
                options.failureLog.c_str());
    return 1;
}
