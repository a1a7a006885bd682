// The smart measure beside the frame time of the same model, at 1024x768: face to face (the
// largest planar faces of two parts that face each other), edge to edge (the longest straight
// edges of two parts) and a hole's radius, each picked by name and measured as a click does.
// Prints each against its goal at the end: well under a frame (a tenth).
#include "BenchModels.h"
#include "BenchScene.h"

#include "qrngl/SCMeasure.h"
#include "qrngl/measure/SmartMeasureManipulator.h"
#include "qrnsg/SCSceneTopo.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using qrnbench::BenchScene;
using qrnsg::EntityNames;
using qrnsg::PartEntities;

struct MeasureCase {
    BenchScene scene;
    unsigned int faces[2] = {0, 0}, edges[2] = {0, 0}, hole = 0;
    std::size_t faceTriangles = 0;
};

std::vector<std::unique_ptr<MeasureCase>> g_cases;

// The pairs: per placed part its largest planar face and longest straight edge, then the
// first two parts whose faces are parallel, and two parts' edges.
void choose(MeasureCase& c) {
    auto topology = qrn::component<qrnsg::SCSceneTopo>(c.scene.document, qrnsg::SCHEMA_SCENE_TOPO);
    struct Best {
        int node = -1, face = -1, edge = -1;
        unsigned int triangles = 0;
        float length = 0.0f;
    };
    std::vector<Best> parts;
    for (std::size_t n = 0; n < topology->nodes.size(); ++n) {
        const auto* part = topology->partOf(static_cast<int>(n));
        if (!part)
            continue;
        Best best;
        best.node = static_cast<int>(n);
        for (std::size_t f = 0; f < part->entities.faces.size(); ++f) {
            const auto& face = part->entities.faces[f];
            if (face.surface.type == PartEntities::Surface::PLANE &&
                face.triangleCount > best.triangles) {
                best.face = static_cast<int>(f);
                best.triangles = face.triangleCount;
            }
            if (face.surface.type == PartEntities::Surface::CYLINDER && !c.hole)
                c.hole = topology->name(best.node, EntityNames::FACE, static_cast<int>(f));
        }
        for (std::size_t e = 0; e < part->entities.edges.size(); ++e) {
            const auto& curve = part->entities.edges[e].curve;
            if (curve.type == PartEntities::Curve::LINE && curve.length > best.length) {
                best.edge = static_cast<int>(e);
                best.length = curve.length;
            }
        }
        parts.push_back(best);
    }
    auto axis = [&](const Best& b) {
        return topology->partOf(b.node)
            ->entities.faces[static_cast<std::size_t>(b.face)]
            .surface.axis;
    };
    for (std::size_t i = 0; i < parts.size() && !c.faces[0]; ++i)
        for (std::size_t j = i + 1; j < parts.size() && !c.faces[0]; ++j)
            if (parts[i].face >= 0 && parts[j].face >= 0 &&
                std::fabs(axis(parts[i]).dot(axis(parts[j]))) > 0.999f) {
                c.faces[0] = topology->name(parts[i].node, EntityNames::FACE, parts[i].face);
                c.faces[1] = topology->name(parts[j].node, EntityNames::FACE, parts[j].face);
                c.faceTriangles = parts[i].triangles + parts[j].triangles;
            }
    std::vector<const Best*> withEdges;
    for (const auto& p : parts)
        if (p.edge >= 0)
            withEdges.push_back(&p);
    if (withEdges.size() >= 2)
        for (int k = 0; k < 2; ++k)
            c.edges[k] =
                topology->name(withEdges[static_cast<std::size_t>(k)]->node, EntityNames::EDGE,
                               withEdges[static_cast<std::size_t>(k)]->edge);
}

void measure(benchmark::State& state, MeasureCase* c, unsigned int a, unsigned int b) {
    qrngl::SmartMeasureManipulator smart(c->scene.document, nullptr, nullptr);
    smart.setFilter(11);
    auto records = qrn::component<qrngl::SCMeasure>(c->scene.document, qrnsg::SCHEMA_MEASURE);
    float value = 0.0f;
    for (auto _ : state) {
        records->clearAll();
        if (b) {
            auto r = smart.measurePair(a, b);
            value = r ? r->value : -1.0f;
        } else {
            records->selection = {qrngl::EntityPick(EntityNames::FACE, static_cast<int>(a))};
            smart.measureSelectedEntities(0, 0, false);
            value = smart.last() ? smart.last()->value : -1.0f;
        }
    }
    state.counters["value"] = value;
}

void addCase(const std::string& name, qrnimport::ModelData model) {
    auto c = std::make_unique<MeasureCase>();
    c->scene.name = name;
    c->scene.model = std::move(model);
    if (!c->scene.prepare(false))
        return;
    choose(*c);
    MeasureCase* raw = c.get();
    qrnbench::addTimed("frame/" + name,
                       [raw](benchmark::State& s) { qrnbench::frameTime(s, &raw->scene); });
    if (raw->faces[0])
        qrnbench::addTimed("face-face/" + name, [raw](benchmark::State& s) {
            measure(s, raw, raw->faces[0], raw->faces[1]);
        });
    if (raw->edges[0])
        qrnbench::addTimed("edge-edge/" + name, [raw](benchmark::State& s) {
            measure(s, raw, raw->edges[0], raw->edges[1]);
        });
    if (raw->hole)
        qrnbench::addTimed("radius/" + name,
                           [raw](benchmark::State& s) { measure(s, raw, raw->hole, 0); });
    g_cases.push_back(std::move(c));
}

} // namespace

int main(int argc, char** argv) {
    qrnbench::TimeReporter reporter(argc, argv);
    benchmark::Initialize(&argc, argv);
    const std::string path = qrnbench::BenchModels::sharedModel("trj4_pm2-ec-214.stp");
    if (!path.empty()) {
        qrnimport::ModelData model = qrnbench::BenchModels::read(path);
        if (model.triangleCount() > 0)
            addCase("trj4_pm2-ec-214.stp", std::move(model));
    }
    if (g_cases.empty())
        addCase("demo", qrnbench::BenchModels::demo());

    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const auto& c : g_cases) {
        const std::string& name = c->scene.name;
        const double frame = reporter.time("frame/" + name);
        if (frame <= 0)
            continue;
        std::printf("\nsmart measure on %s (%zu triangles), %ux%u: frame %.3f ms\n", name.c_str(),
                    c->scene.model.triangleCount(), qrnbench::kWidth, qrnbench::kHeight, frame);
        const std::pair<const char*, std::string> rows[] = {{"face to face", "face-face/"},
                                                            {"edge to edge", "edge-edge/"},
                                                            {"hole radius", "radius/"}};
        for (const auto& row : rows) {
            const double t = reporter.time(row.second + name);
            if (t >= 0)
                std::printf("  %-14s %9.3f ms %7.3f frames  < 0.1 frames %s\n", row.first, t,
                            t / frame, t < 0.1 * frame ? "met" : "MISSED");
        }
        std::printf("  (the two faces: %zu triangles)\n", c->faceTriangles);
    }
    for (auto& c : g_cases)
        c->scene.release();
    g_cases.clear();
    benchmark::Shutdown();
    return 0;
}
