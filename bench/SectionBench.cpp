// Sectioning beside the frame time of the same model, at 1024x768: the frame cut through the
// model's centre with caps in part colours and in one colour, the frame while the plane moves
// (a step along its normal before each frame, as a drag does), and the profile of the centre
// plane. Prints each against its goal at the end.
#include "BenchModels.h"
#include "BenchScene.h"

#include "qrngl/SCClipping.h"
#include "qrnviewer/Sectioning.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using qrnbench::BenchScene;
using qrngl::SCClipping;

struct SectionCase {
    BenchScene scene;
    std::unique_ptr<qrnviewer::Sectioning> section;
    std::shared_ptr<SCClipping> clipping;
};

std::vector<std::unique_ptr<SectionCase>> g_cases;

// Cut across x through the centre (or not), with the given caps.
void cut(SectionCase& c, bool on, qrnviewer::Sectioning::Caps caps) {
    qrnviewer::Sectioning::Settings settings;
    settings.axis = on ? 0 : -1;
    settings.caps = caps;
    std::string error;
    if (!on)
        c.section->manipulator()->setClipType(SCClipping::NONE);
    else if (!c.section->apply(settings, error))
        std::fprintf(stderr, "%s: %s\n", c.scene.name.c_str(), error.c_str());
}

void cutFrame(benchmark::State& state, SectionCase* c, bool on, qrnviewer::Sectioning::Caps caps) {
    cut(*c, on, caps);
    qrnbench::frameTime(state, &c->scene);
    cut(*c, false, caps);
}

// A drag moves the plane by a few pixels' worth a frame: 0.5 % of the model's size, to and fro.
void movingFrame(benchmark::State& state, SectionCase* c) {
    cut(*c, true, qrnviewer::Sectioning::PART_COLOURS);
    const double step = 0.005 * c->scene.model.extent().diagonal();
    c->scene.context->activate();
    int n = 0;
    for (auto _ : state) {
        c->section->manipulator()->offsetSection(step, (n++ / 10) % 2 == 0);
        c->scene.canvas->Invalidate();
        c->scene.canvas->OnDraw();
    }
    cut(*c, false, qrnviewer::Sectioning::PART_COLOURS);
}

void profile(benchmark::State& state, SectionCase* c) {
    cut(*c, true, qrnviewer::Sectioning::PART_COLOURS);
    std::size_t segments = 0;
    for (auto _ : state) {
        c->section->manipulator()->showProfile(); // on: computed
        segments = c->clipping->segmentPlane.size();
        c->section->manipulator()->showProfile(); // off: dropped
    }
    state.counters["nodes cut"] = static_cast<double>(segments);
    cut(*c, false, qrnviewer::Sectioning::PART_COLOURS);
}

void addCase(const std::string& name, qrnimport::ModelData model) {
    auto c = std::make_unique<SectionCase>();
    c->scene.name = name;
    c->scene.model = std::move(model);
    if (!c->scene.prepare(false))
        return;
    c->section = std::make_unique<qrnviewer::Sectioning>(c->scene.document, nullptr);
    c->clipping = c->scene.document->get<SCClipping>(qrnsg::SCHEMA_CLIPPING);
    SectionCase* raw = c.get();
    using qrnviewer::Sectioning;
    qrnbench::addTimed("frame/" + name, [raw](benchmark::State& s) {
        cutFrame(s, raw, false, Sectioning::PART_COLOURS);
    });
    qrnbench::addTimed("capped-parts/" + name, [raw](benchmark::State& s) {
        cutFrame(s, raw, true, Sectioning::PART_COLOURS);
    });
    qrnbench::addTimed("capped-single/" + name,
                       [raw](benchmark::State& s) { cutFrame(s, raw, true, Sectioning::SINGLE); });
    qrnbench::addTimed("cut-uncapped/" + name,
                       [raw](benchmark::State& s) { cutFrame(s, raw, true, Sectioning::OFF); });
    qrnbench::addTimed("moving-plane/" + name, [raw](benchmark::State& s) { movingFrame(s, raw); });
    qrnbench::addTimed("profile/" + name, [raw](benchmark::State& s) { profile(s, raw); });
    g_cases.push_back(std::move(c));
}

void line(const qrnbench::TimeReporter& reporter, const std::string& label,
          const std::string& benchmark, double frame, double limit) {
    const double t = reporter.time(benchmark);
    if (t < 0)
        return;
    char goal[32] = "";
    if (limit > 0)
        std::snprintf(goal, sizeof goal, "%s %g frame%s", limit >= 1 ? "<=" : "<", limit,
                      limit == 1 ? "" : "s");
    std::printf("  %-28s %9.3f ms %7.2f frames  %-13s %s\n", label.c_str(), t, t / frame, goal,
                limit <= 0           ? ""
                : t <= limit * frame ? "met"
                                     : "MISSED");
}

} // namespace

int main(int argc, char** argv) {
    qrnbench::TimeReporter reporter(argc, argv);
    benchmark::Initialize(&argc, argv);
    for (const char* file : {"pm2_tess_fine.glb", "trj4_pm2-ec-214.stp"}) {
        const std::string path = qrnbench::BenchModels::sharedModel(file);
        if (path.empty())
            continue;
        qrnimport::ModelData model = qrnbench::BenchModels::read(path);
        if (model.triangleCount() > 0)
            addCase(file, std::move(model));
    }
    if (g_cases.empty())
        addCase("demo", qrnbench::BenchModels::demo());

    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const auto& c : g_cases) {
        const std::string& name = c->scene.name;
        const double frame = reporter.time("frame/" + name);
        if (frame <= 0)
            continue;
        std::printf("\nsection of %s (%zu triangles) across x through its centre, %ux%u: "
                    "frame %.3f ms\n",
                    name.c_str(), c->scene.model.triangleCount(), qrnbench::kWidth,
                    qrnbench::kHeight, frame);
        line(reporter, "capped, part colours", "capped-parts/" + name, frame, 3.0);
        line(reporter, "capped, one colour", "capped-single/" + name, frame, 3.0);
        line(reporter, "cut, no caps", "cut-uncapped/" + name, frame, 0.0);
        line(reporter, "while the plane moves", "moving-plane/" + name, frame, 3.0);
        line(reporter, "profile", "profile/" + name, frame, 1.0);
    }
    for (auto& c : g_cases) {
        c->section.reset();
        c->scene.release();
    }
    g_cases.clear();
    benchmark::Shutdown();
    return 0;
}
