#include "qrn/Document.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/states/ExplodeStateIterator.h"
#include "qrngl/states/ProgressTracker.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCFactory.h"
#include "qrnsgutils/Placements.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using qrnmath::Vec3;
using qrnsgutils::ExplosionGraph;
using qrnsgutils::ExplosionNode;

struct Reports : qrn::IStatusManager {
    void setStatus(const std::wstring&) override {}
    void setProgress(const std::wstring& task, int percent) override {
        tasks.push_back(task);
        percents.push_back(percent);
    }
    void endProgress() override {}
    std::vector<std::wstring> tasks;
    std::vector<int> percents;
};

std::shared_ptr<qrn::Document> document() {
    auto d = std::make_shared<qrn::Document>(
        std::make_shared<qrngl::SCGLFactory>(std::make_shared<qrnsg::SCFactory>()));
    for (short type : {qrnsg::SCHEMA_SCENE_RES, qrnsg::SCHEMA_SCENE_TOPO, qrnsg::SCHEMA_INFO})
        d->addSchema(type);
    return d;
}

// A cube of side `size` centred at c, as a node of the structure.
std::shared_ptr<ExplosionNode> cube(int node, const Vec3& c, float size) {
    const Vec3 half(size / 2, size / 2, size / 2);
    return std::make_shared<ExplosionNode>(node, qrnsg::BBox(c - half, c + half));
}

// A level of n cubes of side 10 side by side along x, each with the given level below it.
std::shared_ptr<ExplosionGraph>
level(int n, int& next, const std::function<std::shared_ptr<ExplosionGraph>()>& below) {
    auto g = std::make_shared<ExplosionGraph>();
    for (int i = 0; i < n; ++i) {
        g->nodes.push_back(cube(next++, Vec3(10.0f * i, 0, 0), 10.0f));
        if (below)
            g->nodes.back()->child = below();
    }
    return g;
}

// The axis a level's second node was placed along, beyond the first.
int axisOf(const ExplosionGraph& g) {
    const Vec3 t = g.nodes.at(1)->centre() + g.nodes.at(1)->translation - g.nodes.at(0)->centre();
    for (int a = 0; a < 3; ++a)
        if (std::abs(t[a]) > 1e-3f)
            return a;
    return -1;
}

TEST(ExplodeTest, NeighboursGoJustClearAlongEachLevelsOwnDirection) {
    auto doc = document();
    Reports reports;
    qrngl::ProgressTracker tracker(&reports, 100, 0);
    qrnsgutils::ExplodeOptions options;
    // Two nodes of extent 10: the first stays, the second goes to (5 + 5 + 0) x 1.01 = 10.1
    // beyond it, whatever it stood before.
    {
        auto g = std::make_shared<ExplosionGraph>();
        g->nodes = {cube(0, Vec3(0, 0, 0), 10.0f), cube(1, Vec3(3, 4, 0), 10.0f)};
        qrngl::ExplodeStateIterator(doc, options, g).simpleExplode(tracker);
        EXPECT_EQ(g->nodes[0]->translation, Vec3(0, 0, 0));
        EXPECT_NEAR(g->nodes[1]->distance, 10.1f, 1e-5f);
        const Vec3 placed = g->nodes[1]->centre() + g->nodes[1]->translation;
        EXPECT_NEAR(placed.distance(Vec3(10.1f, 0, 0)), 0.0f, 1e-5f);
        for (const auto& n : g->nodes) // only the working positions are reset
            EXPECT_EQ(n->localTransform, qrnmath::MatrixUtils::identity());
    }
    // Four levels of two nodes: x, y, z, then x again; a level of one node hands its axis on.
    int next = 0;
    auto four = level(2, next, [&] {
        return level(2, next, [&] { return level(2, next, [&] { return level(2, next, {}); }); });
    });
    qrngl::ExplodeStateIterator(doc, options, four).simpleExplode(tracker);
    const ExplosionGraph* g = four.get();
    for (int expected : {0, 1, 2, 0}) {
        EXPECT_EQ(axisOf(*g), expected);
        g = g->nodes[0]->child.get();
    }
    auto single = std::make_shared<ExplosionGraph>();
    single->nodes.push_back(cube(next++, Vec3(0, 0, 0), 30.0f));
    single->nodes[0]->child = level(2, next, {});
    options.axis = 2;
    qrngl::ExplodeStateIterator(doc, options, single).simpleExplode(tracker);
    EXPECT_EQ(axisOf(*single->nodes[0]->child), 2);
    // Without the components an explosion moves nothing.
    auto bare = std::make_shared<qrn::Document>(nullptr);
    auto g2 = level(3, next, {});
    qrngl::ExplodeStateIterator(bare, options, g2).simpleExplode(tracker);
    EXPECT_EQ(g2->nodes[2]->translation, Vec3(0, 0, 0));
    EXPECT_TRUE(reports.percents.empty()) << "progress only when the options ask";
}

TEST(ExplodeTest, TheGraphOfAModelHoldsItsLevelsWithTheirBoxes) {
    // One root assembly of two parts, boxes [0, 10]^3 and [0, 10]^3 moved by 4 along y.
    qrnsg::Mesh box;
    for (int i = 0; i < 8; ++i)
        box.vertices.push_back(
            Vec3((i & 1) ? 10.f : 0.f, (i & 2) ? 10.f : 0.f, (i & 4) ? 10.f : 0.f));
    box.indices = {0, 1, 2};
    const std::vector<qrnsg::Mesh> meshes{box};
    qrnsg::SCSceneRT rt;
    rt.meshes.add(7, 0, -1);
    rt.meshes.add(8, 0, -1, qrnsg::RTState::HAS_TRANSFORM);
    rt.meshes.transforms.find(8)->first = qrnmath::MatrixUtils::translation(Vec3(0, 4, 0));
    qrnsg::SCSceneTopo topology;
    topology.nodes.resize(3);
    topology.nodes[1].parent = topology.nodes[2].parent = 0;
    topology.nodes[1].meshIds = {7};
    topology.nodes[2].meshIds = {8};
    auto graph = ExplosionGraph::build(topology, rt, meshes);
    ASSERT_EQ(graph->size(), 2u);
    EXPECT_EQ(graph->nodes[1]->node(), 2);
    EXPECT_EQ(graph->nodes[1]->box().min(), Vec3(0, 4, 0));
    EXPECT_FLOAT_EQ(graph->nodes[1]->getMaxDistInDirection(Vec3(0, 1, 0)), 10.0f);
    Reports reports;
    qrngl::ProgressTracker tracker(&reports, 100, 0);
    qrngl::ExplodeStateIterator(document(), {}, graph).simpleExplode(tracker);
    std::vector<Vec3> moved;
    graph->translations(3, moved);
    EXPECT_EQ(moved[1], Vec3(0, 0, 0));
    EXPECT_NEAR(moved[2].distance(Vec3(10.1f, -4.0f, 0.0f)), 0.0f, 1e-5f);
    EXPECT_NEAR(graph->explodedBox().max()[0], 20.1f, 1e-5f);
}

TEST(ExplodeTest, AMovedNodeTakesItsSubtreeAndComesBackExactly) {
    // Root 0 turned a quarter about z, A (1) placed in it, B (2) in A, each with a mesh.
    using qrnmath::MatrixUtils;
    qrnsg::SCSceneTopo topology;
    topology.nodes.resize(3);
    topology.nodes[0].initial = MatrixUtils::rotation(Vec3(0, 0, 1), 1.5707963f);
    topology.nodes[1].initial = MatrixUtils::translation(Vec3(10, 0, 0));
    topology.nodes[2].initial = MatrixUtils::translation(Vec3(0, 3, 0));
    topology.nodes[1].parent = 0;
    topology.nodes[2].parent = 1;
    qrnsg::SCSceneRT rt;
    for (int n = 0; n < 3; ++n) {
        topology.nodes[static_cast<std::size_t>(n)].local =
            topology.nodes[static_cast<std::size_t>(n)].initial;
        topology.nodes[static_cast<std::size_t>(n)].meshIds = {n + 10};
        rt.meshes.add(n + 10, 0, -1, qrnsg::RTState::HAS_TRANSFORM);
    }
    qrnsgutils::Placements::update(topology, rt);
    auto at = [&](int id) {
        return MatrixUtils::transformPoint(rt.meshes.transforms.find(id)->first, Vec3(0, 0, 0));
    };
    const Vec3 a = at(11), b = at(12);
    EXPECT_NEAR(a.distance(Vec3(0, 10, 0)), 0.0f, 1e-5f) << "turned with the root";
    // A moved by 5 along x in the model: B goes with it, the root stays.
    qrnsgutils::Placements::translate(topology, rt, {Vec3(), Vec3(5, 0, 0), Vec3()}, 1.0f);
    EXPECT_NEAR(at(11).distance(a + Vec3(5, 0, 0)), 0.0f, 1e-5f);
    EXPECT_NEAR(at(12).distance(b + Vec3(5, 0, 0)), 0.0f, 1e-5f);
    EXPECT_NEAR(at(10).distance(Vec3(0, 0, 0)), 0.0f, 1e-5f);
    qrnsgutils::Placements::reset(topology, rt);
    EXPECT_EQ(at(11), a);
    EXPECT_EQ(at(12), b);
}

TEST(ExplodeTest, ProgressSpreadsTheRangeOverTheSteps) {
    Reports reports;
    qrngl::ProgressTracker tracker(&reports, 100, 0);
    tracker.calcIncr(200); // fewer percent than steps: one percent every two steps
    EXPECT_EQ(tracker.increment(), 1);
    EXPECT_EQ(tracker.interval(), 2);
    tracker.calcIncr(50);
    EXPECT_EQ(tracker.increment(), 2);
    EXPECT_EQ(tracker.interval(), 1);
    for (int i = 0; i < 4; ++i)
        tracker.setProgress(); // reports when the counter has reached the interval
    EXPECT_EQ(reports.percents, (std::vector<int>{2, 4}));
    qrngl::ProgressTracker child(nullptr, 0, 0);
    tracker.setNextTracker(child);
    EXPECT_EQ(child.range(), 2);
    EXPECT_EQ(child.current(), 4);
    tracker.finish();
    EXPECT_EQ(reports.percents.back(), 100);
    EXPECT_EQ(reports.tasks.back(), L"exploding");
    qrngl::ProgressTracker silent(nullptr, 100, 0);
    silent.setProgress();
    silent.finish();
    EXPECT_EQ(silent.current(), 0) << "nothing without a status manager";
}

} // namespace
