// Pick times beside the frame time of the same model, at 1024x768: a point pick after the view
// turned (the pick canvas must draw afresh) on each pick canvas, hover picks in an unchanged
// view on the canvas that keeps its names, and a box pick of a quarter of the window. Prints
// each against its goal at the end.
#include "BenchModels.h"
#include "BenchScene.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/ISelector.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrngl/picking/PBOPickCanvas.h"
#include "qrngl/picking/PickCanvas.h"
#include "qrngl/picking/PickingHelper.h"
#include "qrngl/picking/RBOPickCanvas.h"
#include "qrnsg/SCSceneTopo.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using qrnbench::BenchScene;
using qrnbench::kHeight;
using qrnbench::kWidth;

constexpr int kPickSize = 4;
constexpr unsigned short kMask = 7; // faces, edges and vertices

enum Kind { PBO, RBO, SELECTION, KINDS };
const char* const kKindNames[KINDS] = {"PBO", "RBO", "selection"};

// The box: a quarter of the window, centred.
constexpr int kBox[4] = {kWidth / 4, kHeight / 4, 3 * kWidth / 4, 3 * kHeight / 4};

struct PickCase {
    BenchScene scene;
    std::shared_ptr<qrngl::SCRenderer> renderer;
    std::shared_ptr<qrnsg::SCSceneTopo> topology;
    std::array<std::shared_ptr<qrngl::IPickCanvas>, KINDS> canvases;
};

std::vector<std::unique_ptr<PickCase>> g_cases;

// Counts the picks that named an entity of the model, so that picks of nothing show.
class Tally : public qrngl::ISelector {
public:
    explicit Tally(std::shared_ptr<qrnsg::SCSceneTopo> topology)
        : m_topology(std::move(topology)) {}
    void select(unsigned int, const qrngl::FilterResult& result) override {
        ++picks;
        for (unsigned int name : result.names())
            if (m_topology && m_topology->resolve(name).valid())
                ++entities;
        if (!result.names().empty())
            ++hits;
    }
    double picks = 0, hits = 0, entities = 0;

private:
    std::shared_ptr<qrnsg::SCSceneTopo> m_topology;
};

// Turns the model a few pixels' worth, back and forth, so that each view differs from the last
// and the model stays where it was.
void turn(PickCase& c, int step) {
    qrngl::CameraHelper::rotate(c.renderer->camera, step % 2 ? -3 : 3, step % 2 ? 2 : -2);
}

void report(benchmark::State& state, const Tally& tally) {
    if (tally.picks <= 0)
        return;
    state.counters["hit%"] = 100.0 * tally.hits / tally.picks;
    state.counters["entities"] = tally.entities / tally.picks;
}

void pickAfterTurn(benchmark::State& state, PickCase* c, Kind kind) {
    c->renderer->pickCanvas = c->canvases[kind];
    auto filter = std::make_shared<qrngl::EntityFilter>(kMask, qrngl::EntityFilter::NEAREST);
    auto tally = std::make_shared<Tally>(c->topology);
    int step = 0;
    for (auto _ : state) {
        turn(*c, step++);
        qrngl::PickingHelper::pick(c->canvases[kind], filter, tally, 0, kWidth / 2, kHeight / 2,
                                   kPickSize);
    }
    report(state, *tally);
}

// The cursor crosses the middle of the window, one pixel of a grid after another.
void hover(benchmark::State& state, PickCase* c) {
    c->renderer->pickCanvas = c->canvases[PBO];
    auto filter = std::make_shared<qrngl::EntityFilter>(kMask, qrngl::EntityFilter::NEAREST);
    auto tally = std::make_shared<Tally>(c->topology);
    turn(*c, 0);
    // The first pick in the view draws; the hovering after it does not.
    qrngl::PickingHelper::pick(c->canvases[PBO], filter, nullptr, 0, 0, 0, kPickSize);
    int step = 0;
    for (auto _ : state) {
        const int x = kWidth / 4 + (step % 32) * static_cast<int>(kWidth) / 64;
        const int y = kHeight / 4 + ((step / 32) % 32) * static_cast<int>(kHeight) / 64;
        ++step;
        qrngl::PickingHelper::pick(c->canvases[PBO], filter, tally, 0, x, y, kPickSize);
    }
    turn(*c, 1);
    report(state, *tally);
}

void boxAfterTurn(benchmark::State& state, PickCase* c, Kind kind) {
    c->renderer->pickCanvas = c->canvases[kind];
    auto filter = std::make_shared<qrngl::EntityFilter>(kMask, qrngl::EntityFilter::ALL);
    auto tally = std::make_shared<Tally>(c->topology);
    int step = 0;
    for (auto _ : state) {
        turn(*c, step++);
        qrngl::PickingHelper::pickbox(c->renderer, filter, tally, 0, kBox[0], kBox[1], kBox[2],
                                      kBox[3]);
    }
    report(state, *tally);
}

std::string pointName(Kind kind, const std::string& model) {
    return std::string("pick-after-turn/") + kKindNames[kind] + "/" + model;
}
std::string hoverName(const std::string& model) {
    return "hover/PBO/" + model;
}
std::string boxName(Kind kind, const std::string& model) {
    return std::string("box-after-turn/") + kKindNames[kind] + "/" + model;
}

void addCase(const std::string& name, qrnimport::ModelData model) {
    auto c = std::make_unique<PickCase>();
    c->scene.name = name;
    c->scene.model = std::move(model);
    if (!c->scene.prepare(false))
        return;
    auto& document = c->scene.document;
    c->renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    c->topology = std::dynamic_pointer_cast<qrnsg::SCSceneTopo>(
        document->getSchema(qrnsg::SCHEMA_SCENE_TOPO));
    if (!c->renderer || !c->renderer->camera) {
        std::fprintf(stderr, "no renderer component for %s\n", name.c_str());
        c->scene.release();
        return;
    }
    c->scene.context->activate();
    c->canvases[PBO] = std::make_shared<qrngl::PBOPickCanvas>(c->scene.context, document);
    c->canvases[RBO] = std::make_shared<qrngl::RBOPickCanvas>(c->scene.context, document);
    c->canvases[SELECTION] = std::make_shared<qrngl::PickCanvas>(c->scene.context, document);
    for (auto& canvas : c->canvases) {
        canvas->OnCreate();
        canvas->OnSize(0, 0, kWidth, kHeight);
    }
    c->scene.context->deactivate();

    PickCase* raw = c.get();
    qrnbench::addTimed("frame/" + name,
                       [raw](benchmark::State& s) { qrnbench::frameTime(s, &raw->scene); });
    for (Kind kind : {PBO, RBO, SELECTION})
        qrnbench::addTimed(pointName(kind, name),
                           [raw, kind](benchmark::State& s) { pickAfterTurn(s, raw, kind); });
    qrnbench::addTimed(hoverName(name), [raw](benchmark::State& s) { hover(s, raw); });
    for (Kind kind : {PBO, RBO})
        qrnbench::addTimed(boxName(kind, name),
                           [raw, kind](benchmark::State& s) { boxAfterTurn(s, raw, kind); });
    g_cases.push_back(std::move(c));
}

// One line of the summary: the time, its ratio to the frame and whether it meets its goal
// (limit in frames, or in milliseconds when perFrame is false).
void line(const qrnbench::TimeReporter& reporter, const std::string& label,
          const std::string& benchmark, double frame, double limit, bool perFrame) {
    const double t = reporter.time(benchmark);
    if (t < 0)
        return;
    const bool met = perFrame ? t <= limit * frame : t < limit;
    char goal[32];
    if (perFrame)
        std::snprintf(goal, sizeof goal, "<= %g frame%s", limit, limit == 1 ? "" : "s");
    else
        std::snprintf(goal, sizeof goal, "< %g ms", limit);
    std::printf("  %-30s %9.3f ms %8.3f frames  %-13s %s\n", label.c_str(), t, t / frame, goal,
                met ? "met" : "MISSED");
}

} // namespace

int main(int argc, char** argv) {
    qrnbench::TimeReporter reporter(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (qrnimport::ModelData demo = qrnbench::BenchModels::demo(); demo.triangleCount() > 0)
        addCase("demo", std::move(demo));
    const std::string path = qrnbench::BenchModels::sharedModel("pm2_tess_fine.glb");
    if (!path.empty()) {
        qrnimport::ModelData model = qrnbench::BenchModels::read(path);
        if (model.triangleCount() > 0)
            addCase("pm2_tess_fine.glb", std::move(model));
    }

    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const auto& c : g_cases) {
        const std::string& name = c->scene.name;
        const double frame = reporter.time("frame/" + name);
        if (frame <= 0)
            continue;
        std::printf("\npicks on %s (%zu triangles), %ux%u, pick size %d, mask %d: frame %.3f ms\n",
                    name.c_str(), c->scene.model.triangleCount(), kWidth, kHeight, kPickSize, kMask,
                    frame);
        for (Kind kind : {PBO, RBO, SELECTION})
            line(reporter, std::string("point after a turn, ") + kKindNames[kind],
                 pointName(kind, name), frame, 1.0, true);
        line(reporter, "hover, PBO", hoverName(name), frame, 1.0, false);
        for (Kind kind : {PBO, RBO})
            line(reporter, std::string("box 512x384 after a turn, ") + kKindNames[kind],
                 boxName(kind, name), frame, 2.0, true);
    }
    // GPU objects go with their own context.
    for (auto& c : g_cases) {
        c->scene.context->activate();
        for (auto& canvas : c->canvases)
            canvas->OnDestroy();
        c->scene.release();
    }
    g_cases.clear();
    benchmark::Shutdown();
    return 0;
}
