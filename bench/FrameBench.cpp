// Frame time of real and generated models against the floor: the same triangles drawn from one
// buffer with one call, in the same context, with the same camera, light and present.
// Also the time to import the models. Prints the frame-to-floor ratios at the end.
#include "BenchModels.h"
#include "FloorDrawable.h"

#include "qrngl/GL.h"
#include "qrngl/MMaterialRenderer.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrngl/frame/Canvas.h"
#include "qrngl/frame/RCBitmap.h"
#include "qrnglutils/SceneBuilder.h"
#include "qrnviewer/DocumentBuilder.h"
#include "qrnviewer/occt/DemoAssembly.h"
#include "qrnviewer/occt/ModelReader.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <vector>

namespace {

constexpr unsigned int kWidth = 1024;
constexpr unsigned int kHeight = 768;

struct Case {
    std::string name;
    qrnviewer::ModelData model;
    std::shared_ptr<qrngl::RCBitmap> context;
    std::shared_ptr<qrn::Document> document;
    std::shared_ptr<qrngl::Canvas> canvas;
    std::unique_ptr<qrnbench::FloorDrawable> floor;
};

std::vector<std::unique_ptr<Case>> g_cases;

bool prepare(Case& c) {
    c.context = std::make_shared<qrngl::RCBitmap>(kWidth, kHeight);
    if (!c.context->create()) {
        std::fprintf(stderr, "no OpenGL context for %s\n", c.name.c_str());
        return false;
    }
    c.document = qrnviewer::DocumentBuilder::build(c.model);
    c.canvas = std::make_shared<qrngl::Canvas>(c.context, c.document);
    c.canvas->OnCreate();
    c.canvas->OnSize(0, 0, kWidth, kHeight);
    qrnglutils::SceneBuilder::prepare(
        *c.document->get<qrngl::SCStripRenderer>(qrnsg::SCHEMA_STRIP_RENDERER));
    c.floor = std::make_unique<qrnbench::FloorDrawable>(c.model);
    c.context->deactivate();
    return true;
}

void frame(benchmark::State& state, Case* c) {
    c->context->activate();
    for (auto _ : state) {
        c->canvas->Invalidate();
        c->canvas->OnDraw(); // presents: the frame is read into the memory image
    }
    state.counters["triangles"] = static_cast<double>(c->model.triangleCount());
    state.counters["instances"] = static_cast<double>(c->model.instanceCount());
}

void floorFrame(benchmark::State& state, Case* c) {
    auto renderer = c->document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    qrnsg::MMaterial material = qrnsg::MMaterial::fromColor(0.7f, 0.7f, 0.7f);
    for (auto _ : state) {
        c->context->activate();
        glClearColor(0.9f, 0.9f, 0.9f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
        glEnable(GL_NORMALIZE);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        renderer->viewRenderer->render();
        renderer->sceneSetupRenderer->render();
        { qrngl::MMaterialRenderer apply(material); }
        c->floor->render();
        c->context->deactivate();
    }
    state.counters["triangles"] = static_cast<double>(c->floor->triangleCount());
}

// Keeps the real time of each run, to print the ratios after the console output.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& r : runs)
            if (r.run_type == Run::RT_Iteration)
                times[r.run_name.function_name] = r.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> times;
};

void addCase(const std::string& name, qrnviewer::ModelData model) {
    auto c = std::make_unique<Case>();
    c->name = name;
    c->model = std::move(model);
    if (!prepare(*c))
        return;
    Case* raw = c.get();
    benchmark::RegisterBenchmark(("frame/" + name).c_str(), frame, raw)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark(("floor/" + name).c_str(), floorFrame, raw)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    g_cases.push_back(std::move(c));
}

void addImport(const std::string& name, const std::string& path) {
    benchmark::RegisterBenchmark(("import/" + name).c_str(),
                                 [path](benchmark::State& state) {
                                     for (auto _ : state) {
                                         qrnviewer::ModelData model;
                                         std::string error;
                                         if (!qrnviewer::ModelReader::read(path, model, error)) {
                                             state.SkipWithError(error.c_str());
                                             break;
                                         }
                                         benchmark::DoNotOptimize(model);
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->UseRealTime();
}

qrnviewer::ModelData readOrEmpty(const std::string& path) {
    qrnviewer::ModelData model;
    std::string error;
    if (!path.empty() && !qrnviewer::ModelReader::read(path, model, error))
        std::fprintf(stderr, "cannot read %s: %s\n", path.c_str(), error.c_str());
    return model;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    {
        qrnviewer::ModelData demo;
        std::string error;
        if (qrnviewer::DemoAssembly::model(demo, error))
            addCase("demo", std::move(demo));
        else
            std::fprintf(stderr, "no demo assembly: %s\n", error.c_str());
    }
    addCase("generated-1M", qrnbench::BenchModels::generatedAssembly(1000000));
    for (const char* file : {"pm2_tess_fine.glb", "as1-oc-214-mat.stp", "trj4_pm2-ec-214.stp"}) {
        std::string path = qrnbench::BenchModels::sharedModel(file);
        if (path.empty())
            continue;
        qrnviewer::ModelData model = readOrEmpty(path);
        if (model.triangleCount() > 0)
            addCase(file, std::move(model));
        addImport(file, path);
    }

    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nframe time / floor time (1024x768, goal at most 1.2 on large models):\n");
    for (const auto& c : g_cases) {
        auto f = reporter.times.find("frame/" + c->name);
        auto g = reporter.times.find("floor/" + c->name);
        if (f == reporter.times.end() || g == reporter.times.end() || g->second <= 0)
            continue;
        std::printf("  %-22s %9zu triangles %6zu instances  frame %8.2f ms  floor %8.2f ms  "
                    "ratio %.2f\n",
                    c->name.c_str(), c->model.triangleCount(), c->model.instanceCount(), f->second,
                    g->second, f->second / g->second);
    }
    // GPU objects go with their own context.
    for (auto& c : g_cases) {
        c->context->activate();
        c->floor.reset();
        c->context->destroy();
    }
    g_cases.clear();
    benchmark::Shutdown();
    return 0;
}
