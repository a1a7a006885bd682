// Frame time of real and generated models against the floor: the same triangles drawn from one
// buffer with one call, in the same context, with the same camera, light and present.
// Also the time to import the models. Prints the frame-to-floor ratios at the end.
#include "BenchModels.h"
#include "BenchScene.h"

#include "qrngl/GL.h"
#include "qrngl/MMaterialRenderer.h"
#include "qrngl/SCRenderer.h"
#include "qrnviewer/occt/ModelReader.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using qrnbench::BenchScene;

std::vector<std::unique_ptr<BenchScene>> g_cases;

void floorFrame(benchmark::State& state, BenchScene* c) {
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

void addCase(const std::string& name, qrnviewer::ModelData model) {
    auto c = std::make_unique<BenchScene>();
    c->name = name;
    c->model = std::move(model);
    if (!c->prepare(true))
        return;
    BenchScene* raw = c.get();
    benchmark::RegisterBenchmark(("frame/" + name).c_str(), qrnbench::frameTime, raw)
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

} // namespace

int main(int argc, char** argv) {
    qrnbench::TimeReporter reporter(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (qrnviewer::ModelData demo = qrnbench::BenchModels::demo(); demo.triangleCount() > 0)
        addCase("demo", std::move(demo));
    addCase("generated-1M", qrnbench::BenchModels::generatedAssembly(1000000));
    for (const char* file : {"pm2_tess_fine.glb", "as1-oc-214-mat.stp", "trj4_pm2-ec-214.stp"}) {
        std::string path = qrnbench::BenchModels::sharedModel(file);
        if (path.empty())
            continue;
        qrnviewer::ModelData model = qrnbench::BenchModels::read(path);
        if (model.triangleCount() > 0)
            addCase(file, std::move(model));
        addImport(file, path);
    }

    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nframe time / floor time (1024x768, goal at most 1.2 on large models):\n");
    for (const auto& c : g_cases) {
        const double f = reporter.time("frame/" + c->name);
        const double g = reporter.time("floor/" + c->name);
        if (f < 0 || g <= 0)
            continue;
        std::printf("  %-22s %9zu triangles %6zu instances  frame %8.2f ms  floor %8.2f ms  "
                    "ratio %.2f\n",
                    c->name.c_str(), c->model.triangleCount(), c->model.instanceCount(), f, g,
                    f / g);
    }
    // GPU objects go with their own context.
    for (auto& c : g_cases)
        c->release();
    g_cases.clear();
    benchmark::Shutdown();
    return 0;
}
