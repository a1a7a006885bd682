#pragma once

#include "FloorDrawable.h"

#include "qrn/Document.h"
#include "qrngl/IRenderContext.h"
#include "qrngl/frame/Canvas.h"
#include "qrnimport/ModelData.h"

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qrnbench {

// The window size every benchmark draws at.
constexpr unsigned int kWidth = 1024;
constexpr unsigned int kHeight = 768;

// A model made ready to draw in an off-screen context of its own, with the viewer's document
// and frame canvas, and on request the floor drawable of the same triangles.
struct BenchScene {
    std::string name;
    qrnimport::ModelData model;
    std::shared_ptr<qrngl::IRenderContext> context;
    std::shared_ptr<qrn::Document> document;
    std::shared_ptr<qrngl::Canvas> canvas;
    std::unique_ptr<FloorDrawable> floor;

    // False, saying why, when no context can be had. Leaves the context not current. A
    // window-like scene draws as the viewer's window does, four times multisampled, in a
    // pixel buffer (needs an X display).
    bool prepare(bool withFloor, bool windowLike = false);
    // Frees the GPU objects in their own context and the context.
    void release();
};

// Registers a benchmark timed in real milliseconds over at least a second: the large
// models' frames are slow, and a handful of runs is too few.
template <class Fn>
void addTimed(const std::string& label, Fn&& fn) {
    benchmark::RegisterBenchmark(label.c_str(), std::forward<Fn>(fn))
        ->Unit(benchmark::kMillisecond)
        ->MinTime(1.0)
        ->UseRealTime();
}

// The frame benchmark: Invalidate and a full draw, presented into the memory image.
void frameTime(benchmark::State& state, BenchScene* scene);

// Keeps the real time of each run, to print summaries after the console output.
// Colours only on a terminal and without --benchmark_color=false among the arguments, which
// are looked at before benchmark::Initialize takes them.
class TimeReporter : public benchmark::ConsoleReporter {
public:
    TimeReporter(int argc, char** argv);
    void ReportRuns(const std::vector<Run>& runs) override;
    // The adjusted real time of a benchmark in its unit (by its name without the run settings
    // Google Benchmark appends); negative when it did not run.
    double time(const std::string& name) const;

private:
    std::map<std::string, double> m_times;
};

} // namespace qrnbench
