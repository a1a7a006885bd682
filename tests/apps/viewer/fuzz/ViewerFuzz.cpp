// qrnview_fuzz: seeded random input through the viewer's event router and its whole chain of
// tools, on the demo or a model file, drawing frames off screen as it goes. After every frame:
// no OpenGL error, a finite camera with an orthonormal rotation, a picture that shows the
// model while the camera looks at it, and, every eighth still frame, the picture the frame
// gives when drawn again whole (overlay frames keep the model's image). Prints the seed and the
// events; on a failure, writes the events up to it as an event log that replays it.
//
// qrnview_fuzz [MODEL] [--events N] [--seed S] [--frame-every K] [--log-failure FILE]
//              [--minimise SECONDS] [--fail-in-mode M]
//
// A failing log is shrunk before it is written: chunks of events are left out as long as a
// fresh document fed the rest still fails the same way (for at most SECONDS, 0: not at all).
// --fail-in-mode makes every frame drawn in render mode M a failure, to try the shrinking.
#include "qrngl/CameraHelper.h"
#include "qrngl/GL.h"
#include "qrngl/ICanvas.h"
#include "qrngl/ICanvasFactory.h"
#include "qrngl/IPickCanvas.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCRenderer.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/ModelReader.h"
#include "qrnimport/StandardView.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnplatform/Input.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsgutils/InstanceWalker.h"
#include "qrnviewer/EventLog.h"
#include "qrnviewer/EventRouter.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/Replay.h"
#include "qrnviewer/Snapshot.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
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
    int failInMode = -1; // a frame drawn in this render mode counts as a failure
    int minimise = 300;  // fresh replays the shrinking of a failing log may take
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
        else if (arg == "--fail-in-mode" && hasValue)
            o.failInMode = std::atoi(argv[++i]);
        else if (arg == "--minimise" && hasValue)
            o.minimise = std::max(0.0, std::atof(argv[++i]));
        else if (!arg.empty() && arg[0] != '-' && o.model.empty())
            o.model = arg;
        else
            return false;
    }
    return o.events > 0;
}

// What a frame must be: a reason when it is not.
std::string checkFrame(const qrngl::SCRenderer& renderer, const qrnsg::SCSceneRT& rt,
                       const qrnsg::SCScene& scene, const qrngl::SCClipping* clipping,
                       int failInMode, long long& looked) {
    if (renderer.renderMode == failInMode)
        return "a frame in render mode " + std::to_string(failInMode);
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
    // A shown part's centre in the view (not behind the eye, inside the window, on the kept
    // side of a cut): some of it shows, unless the camera is zoomed in so far that it sits
    // inside a part. Parts, not the model: exploded parts leave the model's centre empty.
    const qrnmath::Mat4 toScreen = qrngl::CameraHelper::getModelToScreen(camera);
    const bool cut = clipping && clipping->hasPlane();
    bool partInView = false;
    qrnsgutils::InstanceWalker::walk(
        rt.meshes, scene.meshes.size(),
        [&](const qrnsgutils::InstanceWalker::Instance& instance) {
            const qrnmath::Vec3 local =
                scene.meshes[static_cast<std::size_t>(instance.drawable)].bbox().center();
            const qrnmath::Vec3 centre =
                instance.transform
                    ? qrnmath::MatrixUtils::transformPoint(*instance.transform, local)
                    : local;
            if (cut) {
                const qrnmath::Vec4& p = clipping->planes.front();
                if (p[0] * centre[0] + p[1] * centre[1] + p[2] * centre[2] + p[3] < 0.0f)
                    return;
            }
            const qrnmath::Vec3 at = qrnmath::MatrixUtils::transformPoint(toScreen, centre);
            partInView = partInView || (at[2] > 0.0f && at[2] < 1.0f && at[0] >= 0 &&
                                        at[0] < kWidth && at[1] >= 0 && at[1] < kHeight);
        },
        true);
    const bool looking = partInView && camera->zoomFactor() > 0.05f && camera->zoomFactor() < 20.0f;
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

// A document of the model with its canvases and the viewer's router, fed events in batches
// with a frame drawn and checked after each.
class Rig {
public:
    Rig(std::shared_ptr<qrn::Document> document, const qrnsg::BBox& box,
        const std::shared_ptr<qrngl::IRenderContext>& context, qrngl::ICanvasFactory& factory,
        const Options& options, const std::string& state, bool closes)
        : m_document(std::move(document)), m_closes(closes), m_context(context), m_options(options),
          m_renderer(m_document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER)),
          m_rt(m_document->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT)),
          m_scene(m_document->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE)),
          m_canvas(factory.createCanvas(context, m_document)),
          m_picks(factory.createPickCanvas(context, m_document)) {
        qrngl::CameraHelper::setViewport(kWidth, kHeight, m_renderer->camera);
        qrnimport::StandardView::apply("iso", box, m_renderer->camera);
        // Every run starts with no saved state and no key held, as a replayed log does.
        std::error_code ignored;
        std::filesystem::remove(state, ignored);
        for (int key = 0; key < 256; ++key)
            qrnplatform::Input::setKeyDown(key, false);
        if (!m_canvas || !m_picks || !m_picks->OnCreate())
            return;
        m_canvas->OnCreate();
        m_canvas->OnSize(0, 0, kWidth, kHeight);
        m_picks->OnSize(0, 0, kWidth, kHeight);
        m_renderer->pickCanvas = m_picks;
        m_renderer->addPostRenderer(m_modelDraws);
        m_router = std::make_unique<qrnviewer::EventRouter>(m_document, nullptr, nullptr);
        m_router->setStateFiles(state, state);
    }
    ~Rig() {
        m_router.reset();
        m_context->activate();
        if (m_picks)
            m_picks->OnDestroy();
        m_renderer->pickCanvas.reset();
        m_renderer->removePostRenderer(m_modelDraws);
        if (m_canvas)
            m_canvas->OnDestroy();
        if (m_closes)
            m_document->close();
    }
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    // Replays the batch, draws a frame and checks it: the reason it fails, or empty.
    std::string frame(std::vector<InputEvent> batch) {
        if (!m_router)
            return "the plug-in made no canvas";
        // Times run from the batch's first event, as a log's do.
        const std::uint64_t start = batch.empty() ? 0 : batch.front().time;
        for (auto& e : batch)
            e.time -= start;
        qrnviewer::Replay::run(*m_router, batch);
        m_context->activate();
        const long long modelDraws = m_modelDraws->count;
        m_canvas->Invalidate();
        m_canvas->OnDraw();
        m_context->activate();
        ++frames;
        // A frame that kept the model and drew only overlays, and now and then any other, is
        // drawn again whole: the two must not be told apart (frames in motion may draw less).
        const bool overlays = m_modelDraws->count == modelDraws;
        if (overlays || (frames % 8 == 0 && !m_renderer->motion && !m_renderer->sizeCulling)) {
            std::vector<unsigned char> drawn(kWidth * kHeight * 4), whole(drawn.size());
            glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, drawn.data());
            m_canvas->OnSize(0, 0, kWidth, kHeight);
            m_canvas->Invalidate();
            m_canvas->OnDraw();
            m_context->activate();
            glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, whole.data());
            ++redrawn;
            overlayFrames += overlays ? 1 : 0;
            if (drawn != whole)
                return std::string(overlays ? "an overlay frame" : "a frame") +
                       " unlike the same frame drawn whole";
        }
        return checkFrame(*m_renderer, *m_rt, *m_scene,
                          m_document->get<qrngl::SCClipping>(qrnsg::SCHEMA_CLIPPING).get(),
                          m_options.failInMode, looked);
    }

    long long frames = 0, looked = 0, redrawn = 0, overlayFrames = 0;

private:
    // A renderer of the model's stage, not an overlay: it runs when the model is drawn.
    struct ModelDraws : qrngl::IPostRenderer {
        void render() const override { ++count; }
        mutable long long count = 0;
    };
    std::shared_ptr<ModelDraws> m_modelDraws = std::make_shared<ModelDraws>();
    std::shared_ptr<qrn::Document> m_document;
    bool m_closes; // the document is the rig's own
    std::shared_ptr<qrngl::IRenderContext> m_context;
    const Options& m_options;
    std::shared_ptr<qrngl::SCRenderer> m_renderer;
    std::shared_ptr<qrnsg::SCSceneRT> m_rt;
    std::shared_ptr<qrnsg::SCScene> m_scene;
    std::shared_ptr<qrngl::ICanvas> m_canvas;
    std::shared_ptr<qrngl::IPickCanvas> m_picks;
    std::unique_ptr<qrnviewer::EventRouter> m_router;
};

// Shrinks a failing list of events (delta debugging): chunks are left out, halving their size
// when none can go, as long as a fresh document fed the rest fails with the same reason.
class Shrinker {
public:
    using Events = std::vector<std::size_t>; // indices into the failing run's events
    using Trial = std::function<std::string(const Events&)>;
    Shrinker(Trial trial, double seconds)
        : m_trial(std::move(trial)),
          m_end(std::chrono::steady_clock::now() +
                std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                    std::chrono::duration<double>(seconds))) {}

    Events shrink(Events events, const std::string& reason) {
        const auto fails = [&](const Events& candidate) {
            ++trials;
            return m_trial(candidate) == reason;
        };
        std::size_t parts = 2;
        while (events.size() >= 2 && !late()) {
            const std::size_t chunk = (events.size() + parts - 1) / parts;
            bool shrunk = false;
            // A chunk alone, then everything but a chunk (the same at two parts).
            for (int pass = parts > 2 ? 0 : 1; pass < 2 && !shrunk; ++pass)
                for (std::size_t from = 0; from < events.size() && !shrunk && !late();
                     from += chunk) {
                    const auto first = events.begin() + static_cast<std::ptrdiff_t>(from);
                    const auto last = events.begin() + static_cast<std::ptrdiff_t>(
                                                           std::min(events.size(), from + chunk));
                    Events candidate(first, last);
                    if (pass == 1) {
                        candidate.assign(events.begin(), first);
                        candidate.insert(candidate.end(), last, events.end());
                    }
                    if (fails(candidate)) {
                        events = std::move(candidate);
                        parts = pass == 0 ? 2 : std::max<std::size_t>(parts - 1, 2);
                        shrunk = true;
                    }
                }
            if (shrunk)
                continue;
            if (parts >= events.size())
                break;
            parts = std::min(parts * 2, events.size());
        }
        return events;
    }

    int trials = 0;

private:
    bool late() const { return std::chrono::steady_clock::now() > m_end; }

    Trial m_trial;
    std::chrono::steady_clock::time_point m_end;
};

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: qrnview_fuzz [MODEL] [--events N] [--seed S] "
                             "[--frame-every K] [--log-failure FILE] [--minimise SECONDS] "
                             "[--fail-in-mode M]\n");
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
    const qrnsg::BBox box = model.extent();
    const std::string state = (std::filesystem::temp_directory_path() /
                               ("qrnview_fuzz_" + std::to_string(options.seed) + ".state"))
                                  .string();

    std::string failure;
    long long frames = 0, looked = 0, redrawn = 0, overlayFrames = 0;
    std::vector<InputEvent> all;
    std::vector<long long> frameOf; // the frame after which each event was drawn
    Shrinker::Events shrunk;
    int trials = 0;
    bool reproduced = false;
    qrnviewer::Snapshot::Settings picture;
    picture.width = kWidth;
    picture.height = kHeight;
    picture.beforeFrame = [&](const std::shared_ptr<qrngl::IRenderContext>& context,
                              qrngl::ICanvasFactory& factory) {
        {
            Rig rig(document, box, context, factory, options, state, false);
            Generator generator(options.seed);
            std::vector<InputEvent> batch;
            for (long long n = 0; n < options.events && failure.empty(); ++n) {
                batch.push_back(generator.next());
                if (static_cast<long long>(batch.size()) < options.frameEvery &&
                    n + 1 < options.events)
                    continue;
                // Every fourth frame after a fit and its animation: the model in view.
                if (rig.frames % 4 == 3)
                    for (const InputEvent& fit : generator.fit())
                        batch.push_back(fit);
                all.insert(all.end(), batch.begin(), batch.end());
                frameOf.resize(all.size(), rig.frames);
                failure = rig.frame(std::move(batch));
                batch.clear();
            }
            frames = rig.frames;
            looked = rig.looked;
            redrawn = rig.redrawn;
            overlayFrames = rig.overlayFrames;
        }
        if (failure.empty() || options.minimise <= 0)
            return;
        // A fresh document each time, fed the events with frames where the run drew them.
        const auto trial = [&](const Shrinker::Events& events) {
            Rig rig(qrnimport::DocumentBuilder::build(model), box, context, factory, options, state,
                    true);
            std::vector<InputEvent> batch;
            for (std::size_t i = 0; i < events.size(); ++i) {
                batch.push_back(all[events[i]]);
                if (i + 1 < events.size() && frameOf[events[i + 1]] == frameOf[events[i]])
                    continue;
                const std::string reason = rig.frame(std::move(batch));
                if (!reason.empty())
                    return reason;
                batch.clear();
            }
            return std::string();
        };
        Shrinker::Events everything(all.size());
        for (std::size_t i = 0; i < everything.size(); ++i)
            everything[i] = i;
        reproduced = trial(everything) == failure;
        if (!reproduced)
            return;
        Shrinker shrinker(trial, options.minimise);
        shrunk = shrinker.shrink(everything, failure);
        trials = shrinker.trials + 1;
    };
    const bool drawn = qrnviewer::Snapshot::write(document, picture, plugins, "", error);
    document->close();
    std::filesystem::remove(state);
    if (!drawn) {
        std::fprintf(stderr, "qrnview_fuzz: %s\n", error.c_str());
        return 1;
    }
    const char* name = options.model.empty() ? "the demo" : options.model.c_str();
    if (failure.empty()) {
        std::printf("qrnview_fuzz: %lld events on %s, seed %llu: no failure (%lld frames, the "
                    "picture checked in %lld, drawn again whole in %lld, %lld of them overlay "
                    "frames)\n",
                    options.events, name, static_cast<unsigned long long>(options.seed), frames,
                    looked, redrawn, overlayFrames);
        return 0;
    }
    std::vector<InputEvent> written = all;
    if (reproduced) {
        written.clear();
        for (std::size_t i : shrunk)
            written.push_back(all[i]);
    }
    std::ofstream log(options.failureLog);
    log << qrnviewer::EventLog::header();
    for (const InputEvent& e : written)
        log << qrnviewer::EventLog::format(e) << "\n";
    std::printf("qrnview_fuzz: %s, seed %llu: %s after event %zu; replay %s with qrnview "
                "--replay\n",
                name, static_cast<unsigned long long>(options.seed), failure.c_str(), all.size(),
                options.failureLog.c_str());
    if (reproduced)
        std::printf("qrnview_fuzz: shrunk to %zu events in %d fresh replays\n", written.size(),
                    trials);
    else if (options.minimise > 0)
        std::printf("qrnview_fuzz: a fresh replay does not fail the same way: all %zu events "
                    "written\n",
                    written.size());
    return 1;
}
