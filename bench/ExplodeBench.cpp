// Exploded views: the layout of a generated assembly of 1,000 nodes in four levels without and
// with the bounds and camera refreshed per node, and the frame of the exploded pm2_tess_fine.glb
// beside the assembled one, at 1024x768. Prints each against its goal at the end.
#include "BenchModels.h"
#include "BenchScene.h"

#include "qrn/Document.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/states/ExplodeStateIterator.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnviewer/Explosion.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

namespace {

using qrnmath::Vec3;
using qrnsgutils::ExplosionGraph;
using qrnsgutils::ExplosionNode;

// 1,000 nodes in four levels: 10 assemblies of 9 subassemblies of 10 parts of no further
// level (10 + 90 + 900 = 1,000).
std::shared_ptr<ExplosionGraph> generated() {
    int next = 0;
    std::function<std::shared_ptr<ExplosionGraph>(int, float, const Vec3&)> level =
        [&](int depth, float size, const Vec3& at) {
            static const int kCounts[3] = {10, 9, 10};
            auto g = std::make_shared<ExplosionGraph>();
            for (int i = 0; i < kCounts[depth]; ++i) {
                const Vec3 c = at + Vec3(size * 1.2f * static_cast<float>(i), 0, 0);
                const Vec3 half(size / 2, size / 2, size / 2);
                auto node =
                    std::make_shared<ExplosionNode>(next++, qrnsg::BBox(c - half, c + half));
                if (depth < 2)
                    node->child = level(depth + 1, size / 12.0f, c);
                g->nodes.push_back(node);
            }
            return g;
        };
    return level(0, 100.0f, Vec3(0, 0, 0));
}

std::shared_ptr<qrn::Document> layoutDocument() {
    auto d = std::make_shared<qrn::Document>(
        std::make_shared<qrngl::SCGLFactory>(std::make_shared<qrnsg::SCFactory>()));
    for (short type : {qrnsg::SCHEMA_SCENE_RES, qrnsg::SCHEMA_SCENE_TOPO, qrnsg::SCHEMA_INFO,
                       qrnsg::SCHEMA_PMI, qrnsg::SCHEMA_SCENE_RT, qrnsg::SCHEMA_RENDERER})
        d->addSchema(type);
    return d;
}

std::size_t count(const ExplosionGraph& g) {
    std::size_t n = g.size();
    for (const auto& node : g.nodes)
        if (node->child)
            n += count(*node->child);
    return n;
}

void layout(benchmark::State& state, bool refresh) {
    auto doc = layoutDocument();
    qrnsgutils::ExplodeOptions options;
    options.updateRenderState = refresh ? 1 : 0;
    std::size_t nodes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto graph = generated();
        nodes = count(*graph);
        state.ResumeTiming();
        qrngl::ProgressTracker tracker(nullptr, 100, 0);
        qrngl::ExplodeStateIterator(doc, options, graph).simpleExplode(tracker);
    }
    state.counters["nodes"] = static_cast<double>(nodes);
}

std::unique_ptr<qrnbench::BenchScene> g_glb;

void explodedFrame(benchmark::State& state, bool exploded) {
    qrnviewer::Explosion explosion(g_glb->document);
    if (exploded)
        explosion.explodeFully(nullptr);
    qrnbench::frameTime(state, g_glb.get());
    if (exploded) {
        explosion.next(nullptr); // back together
        while (explosion.animate()) {
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    qrnbench::TimeReporter reporter(argc, argv);
    benchmark::Initialize(&argc, argv);
    qrnbench::addTimed("explode/1000-nodes", [](benchmark::State& s) { layout(s, false); });
    qrnbench::addTimed("explode/1000-nodes-refreshing",
                       [](benchmark::State& s) { layout(s, true); });
    const std::string path = qrnbench::BenchModels::sharedModel("pm2_tess_fine.glb");
    if (!path.empty()) {
        g_glb = std::make_unique<qrnbench::BenchScene>();
        g_glb->name = "pm2_tess_fine.glb";
        g_glb->model = qrnbench::BenchModels::read(path);
        if (g_glb->model.triangleCount() > 0 && g_glb->prepare(false)) {
            qrnbench::addTimed("frame/assembled/pm2_tess_fine.glb",
                               [](benchmark::State& s) { explodedFrame(s, false); });
            qrnbench::addTimed("frame/exploded/pm2_tess_fine.glb",
                               [](benchmark::State& s) { explodedFrame(s, true); });
        } else {
            g_glb.reset();
        }
    }
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double bare = reporter.time("explode/1000-nodes");
    const double refreshing = reporter.time("explode/1000-nodes-refreshing");
    std::printf("\nexplode of a generated assembly of 1,000 nodes in 4 levels:\n");
    if (bare >= 0)
        std::printf("  %-36s %9.3f ms  < 10 ms       %s\n", "without refreshing bounds", bare,
                    bare < 10.0 ? "met" : "MISSED");
    if (refreshing >= 0)
        std::printf("  %-36s %9.3f ms\n", "refreshing bounds and camera per node", refreshing);
    const double assembled = reporter.time("frame/assembled/pm2_tess_fine.glb");
    const double exploded = reporter.time("frame/exploded/pm2_tess_fine.glb");
    if (assembled > 0 && exploded >= 0)
        std::printf("  %-36s %9.3f ms  against %.3f ms assembled (%.2f)  %s\n",
                    "frame of the exploded glb", exploded, assembled, exploded / assembled,
                    exploded <= assembled * 1.05 ? "met" : "MISSED");
    if (g_glb)
        g_glb->release();
    g_glb.reset();
    benchmark::Shutdown();
    return 0;
}
