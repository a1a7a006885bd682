#include "BenchScene.h"

#include "qrngl/SCStripRenderer.h"
#include "qrngl/frame/RCBitmap.h"
#include "qrngl/frame/RCBuffer.h"
#include "qrnglutils/SceneBuilder.h"
#include "qrnimport/DocumentBuilder.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace qrnbench {

bool BenchScene::prepare(bool withFloor, bool windowLike) {
    if (windowLike)
        context = std::make_shared<qrngl::RCBuffer>(kWidth, kHeight, true, nullptr);
    else
        context = std::make_shared<qrngl::RCBitmap>(kWidth, kHeight);
    if (!context->create()) {
        std::fprintf(stderr, "no OpenGL context for %s\n", name.c_str());
        return false;
    }
    document = qrnimport::DocumentBuilder::build(model);
    canvas = std::make_shared<qrngl::Canvas>(context, document);
    canvas->OnCreate();
    canvas->OnSize(0, 0, kWidth, kHeight);
    qrnglutils::SceneBuilder::prepare(
        *document->get<qrngl::SCStripRenderer>(qrnsg::SCHEMA_STRIP_RENDERER));
    if (withFloor)
        floor = std::make_unique<FloorDrawable>(model);
    context->deactivate();
    return true;
}

void BenchScene::release() {
    if (!context)
        return;
    context->activate();
    floor.reset();
    context->destroy();
}

void frameTime(benchmark::State& state, BenchScene* scene) {
    scene->context->activate();
    // The first frame makes the driver's programs for the frame's states; not what is timed.
    scene->canvas->Invalidate();
    scene->canvas->OnDraw();
    for (auto _ : state) {
        scene->canvas->Invalidate();
        scene->canvas->OnDraw(); // presents: the frame is read into the memory image
    }
    state.counters["triangles"] = static_cast<double>(scene->model.triangleCount());
    state.counters["instances"] = static_cast<double>(scene->model.instanceCount());
}

namespace {
benchmark::ConsoleReporter::OutputOptions outputOptions(int argc, char** argv) {
    bool colour = isatty(STDOUT_FILENO) != 0;
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--benchmark_color=false") == 0)
            colour = false;
    return colour ? benchmark::ConsoleReporter::OO_ColorTabular
                  : benchmark::ConsoleReporter::OO_Tabular;
}
} // namespace

TimeReporter::TimeReporter(int argc, char** argv) : ConsoleReporter(outputOptions(argc, argv)) {}

void TimeReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const auto& r : runs)
        if (r.run_type == Run::RT_Iteration && !r.error_occurred)
            m_times[r.run_name.function_name] = r.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(runs);
}

double TimeReporter::time(const std::string& name) const {
    auto it = m_times.find(name);
    if (it != m_times.end())
        return it->second;
    // Google Benchmark appends run settings (".../min_time:3.000") to the name.
    it = m_times.lower_bound(name + "/");
    return it != m_times.end() && it->first.compare(0, name.size() + 1, name + "/") == 0
               ? it->second
               : -1.0;
}

} // namespace qrnbench
