// Models drawn as the viewer shows them, against baselines (8 levels a channel on at most 0.5%
// of the pixels): the demo assembly in the standard views, and PMI shown and hidden.
#include "ImageBaseline.h"
#include "ViewerTestSupport.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/picking/SelectManipulator.h"
#include "qrngl/picking/SelectionRenderer.h"
#include "qrngl/states/ExplodeStateIterator.h"
#include "qrnglutils/ViewActivator.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/ModelReader.h"
#include "qrnimport/StandardView.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsg/SCView.h"
#include "qrnsgutils/ExplosionGraph.h"
#include "qrnsgutils/InstanceWalker.h"
#include "qrnsgutils/Placements.h"
#include "qrnviewer/EntityText.h"
#include "qrnviewer/Explosion.h"
#include "qrnviewer/PmiDisplay.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/Sectioning.h"
#include "qrnviewer/Snapshot.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <functional>

namespace {

using namespace viewertest;
using qrnimport::ModelData;
using qrnmath::Vec3;

// The model in a standard view fitted to it (and its PMI), written under `name` and read back.
qrnimage::Image
picture(const ModelData& model, unsigned int width, unsigned int height, const std::string& name,
        const std::string& view = "iso", bool pmiShown = true,
        const qrnviewer::Sectioning::Settings& cut = {},
        const std::function<void(const std::shared_ptr<qrn::Document>&)>& before = {}) {
    auto document = qrnimport::DocumentBuilder::build(model);
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    qrngl::CameraHelper::setViewport(width, height, renderer->camera); // the fit's shape
    EXPECT_TRUE(qrnimport::StandardView::apply(view, model.extent(), renderer->camera));
    qrnviewer::PmiDisplay(document).setShown(pmiShown);
    qrnviewer::Sectioning section(document, nullptr);
    std::string sectionError;
    EXPECT_TRUE(section.apply(cut, sectionError)) << sectionError;
    if (before)
        before(document);
    const std::string path = (fs::current_path() / (name + ".png")).string();
    std::string error;
    EXPECT_TRUE(qrnviewer::Snapshot::write(document, width, height, path, error)) << error;
    const qrnimage::Image image = loadPng(path);
    EXPECT_TRUE(image.width() == width && image.height() == height) << name;
    return image;
}

const ModelData& demo() {
    static const ModelData model = [] {
        ModelData m;
        std::string error;
        EXPECT_TRUE(qrnimport::DemoAssembly::model(m, error)) << error;
        return m;
    }();
    return model;
}

class DemoAssemblyImageGLTest : public ::testing::TestWithParam<const char*> {};

TEST_P(DemoAssemblyImageGLTest, ViewMatchesItsBaseline) {
    const std::string view = GetParam(), name = "demo_assembly_" + view;
    const unsigned int width = 320, height = 240;
    ASSERT_FALSE(demo().parts.empty());
    const qrnimage::Image image = picture(demo(), width, height, name, view);
    // Independent of the baseline: the background shows at the corners, the model fills a
    // good part of the frame around its middle.
    for (unsigned int y : {0u, height - 1})
        for (unsigned int x : {0u, width - 1})
            EXPECT_TRUE(background(image.pixel(x, y))) << view << " corner " << x << "," << y;
    const Pixels model = pixels(image, [](auto p) { return !background(p); });
    EXPECT_GT(model.count, width * height / 10) << view;
    EXPECT_LT(model.count, width * height * 85 / 100) << view;
    EXPECT_NEAR((model.x0 + model.x1) / 2.0, width / 2.0, width * 0.1) << view;
    EXPECT_NEAR((model.y0 + model.y1) / 2.0, height / 2.0, height * 0.1) << view;
    qrntest::expectMatchesBaseline(image, name, 8, width * height / 200);
}

INSTANTIATE_TEST_SUITE_P(StandardViews, DemoAssemblyImageGLTest,
                         ::testing::Values("iso", "front", "top"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param);
                         });

// The model's PMI shown, against the baseline, and hidden; the picture with the PMI.
qrnimage::Image expectPmiShownAndHidden(const ModelData& model, unsigned int width,
                                        unsigned int height, const std::string& name,
                                        const std::string& hidden) {
    const qrnimage::Image image = picture(model, width, height, name);
    EXPECT_EQ(pixels(picture(model, width, height, hidden, "iso", false), pmiBlue).count, 0u);
    qrntest::expectMatchesBaseline(image, name, 8, width * height / 200);
    return image;
}

TEST(PmiImageGLTest, TheDemoWithItsNote) {
    ModelData model = demo();
    qrnimport::DemoAssembly::addNote(model);
    ASSERT_EQ(model.pmi.size(), 1u);
    // The note and its leader show, the note left of the model, facing the viewer.
    const Pixels note = pixels(
        expectPmiShownAndHidden(model, 640, 480, "pmi_demo_note", "pmi_demo_note_hidden"), pmiBlue);
    EXPECT_GT(note.count, 150u);
    EXPECT_LT(note.x0, 150u);
}

// The NIST parts in their first saved view, their PMI as the authors drew it: only the
// annotations the view lists show, and none when PMI is hidden.
TEST(PmiImageGLTest, TheNistPartsInTheirFirstSavedView) {
    const struct {
        const char* file;
        const wchar_t* view;
        const char* name;
        std::size_t items, listed;
    } files[] = {{"nist_ctc_01_asme1_ap242-e1.stp", L"MBD_0", "pmi_nist_ctc_01_mbd_0", 23, 23},
                 {"nist_ftc_08_asme1_ap242-2.stp", L"MBD_A", "pmi_nist_ftc_08_mbd_a", 60, 15}};
    for (const auto& f : files) {
        SCOPED_TRACE(f.file);
        const fs::path file = fs::path(QRN_SHARED_MODELS) / f.file;
        if (!fs::exists(file))
            GTEST_SKIP() << "*** SHARED MODELS MISSING: " << file.string() << " not found ***";
        ModelData model;
        std::string error;
        ASSERT_TRUE(qrnimport::ModelReader::read(file.string(), model, error)) << error;
        ASSERT_EQ(model.pmi.size(), f.items);
        std::size_t shown = 0;
        auto inView = [&](bool pmi) {
            return [&, pmi](const std::shared_ptr<qrn::Document>& doc) {
                auto views = doc->get<qrnsg::SCView>(qrnsg::SCHEMA_VIEW);
                auto renderer = doc->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
                const int v = views->find(f.view);
                ASSERT_GE(v, 0);
                ASSERT_TRUE(qrnglutils::ViewActivator::apply(*views, v, renderer->camera));
                qrnviewer::PmiDisplay display(doc);
                display.setShown(pmi);
                display.setView(v);
                auto pmiItems = doc->get<qrnsg::SCPmi>(qrnsg::SCHEMA_PMI);
                auto rt = doc->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
                auto scene = doc->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
                shown = 0;
                for (const auto& item : pmiItems->items) {
                    qrnsgutils::InstanceWalker::Instance instance;
                    shown += !item.polylineIds.empty() && qrnsgutils::InstanceWalker::visible(
                                                              rt->polylines, item.polylineIds[0],
                                                              scene->polylines.size(), instance)
                                 ? 1
                                 : 0;
                }
            };
        };
        const qrnimage::Image hidden = picture(model, 800, 600, std::string(f.name) + "_hidden",
                                               "iso", false, {}, inView(false));
        EXPECT_EQ(shown, 0u);
        EXPECT_EQ(pixels(hidden, pmiBlue).count, 0u);
        const qrnimage::Image image =
            picture(model, 800, 600, f.name, "iso", true, {}, inView(true));
        EXPECT_EQ(shown, f.listed);
        EXPECT_GT(pixels(image, pmiBlue).count, 2000u);
        qrntest::expectMatchesBaseline(image, f.name, 8, 800 * 600 / 200);
    }
}

// Where a model point lands in a window of the camera's size, origin top left.
std::pair<int, int> onScreen(const qrngl::Camera& camera, const Vec3& p,
                             const qrnmath::Mat4* place = nullptr) {
    qrnmath::Mat4 m =
        qrnmath::MatrixUtils::multiply(camera.getProjectionMatrix(), camera.getViewMatrix());
    if (place)
        m = qrnmath::MatrixUtils::multiply(m, *place);
    const qrnmath::Vec4 c = qrnmath::MatrixUtils::transform(m, qrnmath::Vec4(p[0], p[1], p[2], 1));
    return {static_cast<int>((c[0] / c[3] + 1.0f) * 0.5f * camera.viewportWidth()),
            static_cast<int>((1.0f - c[1] / c[3]) * 0.5f * camera.viewportHeight())};
}

// A click on a callout's line, in the window's first mode (parts), names the dimension it
// presents, and its highlight covers the faces that dimension is about.
TEST(PmiImageGLTest, APickedCalloutNamesItsItemAndTintsItsFaces) {
    const fs::path file = fs::path(QRN_SHARED_MODELS) / "nist_ctc_01_asme1_ap242-e1.stp";
    if (!fs::exists(file))
        GTEST_SKIP() << "*** SHARED MODELS MISSING: " << file.string() << " not found ***";
    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnimport::ModelReader::read(file.string(), model, error)) << error;
    auto doc = qrnimport::DocumentBuilder::build(model);
    // The selection's renderer holds the document it is in: closing it breaks the ring.
    std::vector<std::shared_ptr<qrn::Document>> built{doc};
    struct Closer {
        std::vector<std::shared_ptr<qrn::Document>>& documents;
        ~Closer() {
            for (auto& d : documents)
                d->close();
        }
    } closer{built};
    auto renderer = doc->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    auto views = doc->get<qrnsg::SCView>(qrnsg::SCHEMA_VIEW);
    auto pmi = doc->get<qrnsg::SCPmi>(qrnsg::SCHEMA_PMI);
    auto scene = doc->get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
    auto rt = doc->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    auto topology = doc->get<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO);
    const unsigned int width = 800, height = 600;
    qrngl::CameraHelper::setViewport(width, height, renderer->camera);
    ASSERT_TRUE(qrnglutils::ViewActivator::apply(*views, views->find(L"MBD_0"), renderer->camera));
    const auto item = std::find_if(pmi->items.begin(), pmi->items.end(), [](const auto& i) {
        return i.description.rfind(L"diameter 35 0/-0.2", 0) == 0;
    });
    ASSERT_NE(item, pmi->items.end());
    ASSERT_FALSE(item->faces.empty());
    using Instance = qrnsgutils::InstanceWalker::Instance;
    Instance line;
    ASSERT_TRUE(qrnsgutils::InstanceWalker::visible(rt->polylines, item->polylineIds.at(0),
                                                    scene->polylines.size(), line));
    // The middles of its lines on screen: where they pass over the part, a click takes the part.
    const auto& points = scene->polylines[static_cast<std::size_t>(line.drawable)].points;
    std::vector<std::pair<int, int>> clicks;
    for (std::size_t p = 1; p < points.size(); ++p)
        clicks.push_back(
            onScreen(*renderer->camera, (points[p - 1] + points[p]) * 0.5f, line.transform));
    // And its filled text, clear of the part.
    Instance text;
    ASSERT_TRUE(qrnsgutils::InstanceWalker::visible(rt->meshes, item->meshIds.at(0),
                                                    scene->meshes.size(), text));
    const auto& glyphs = scene->meshes[static_cast<std::size_t>(text.drawable)];
    for (std::size_t t = 0; t + 2 < glyphs.indices.size(); t += 3)
        clicks.push_back(
            onScreen(*renderer->camera,
                     (glyphs.vertices[glyphs.indices[t]] + glyphs.vertices[glyphs.indices[t + 1]] +
                      glyphs.vertices[glyphs.indices[t + 2]]) *
                         (1.0f / 3.0f),
                     text.transform));

    auto selection = std::make_shared<qrngl::SelectionSet>(); // parts, as the window starts
    std::string said, hiddenSaid;
    unsigned int picked = 0;
    qrnviewer::Snapshot::Settings settings;
    settings.width = width;
    settings.height = height;
    settings.beforeFrame = [&](const std::shared_ptr<qrngl::IRenderContext>& context,
                               qrngl::ICanvasFactory& factory) {
        auto canvas = factory.createPickCanvas(context, doc);
        ASSERT_TRUE(canvas && canvas->OnCreate());
        canvas->OnSize(0, 0, width, height);
        renderer->pickCanvas = canvas;
        qrngl::SelectManipulator select(doc, selection, nullptr);
        qrnviewer::PmiDisplay display(doc);
        for (const auto& click : clicks) {
            // Hidden PMI is not there to be picked.
            display.setShown(false);
            const std::string hidden =
                qrnviewer::EntityText::describe(doc, select.pickAt(click.first, click.second));
            display.setShown(true);
            const unsigned int name = select.pickAt(click.first, click.second);
            if (qrnsg::EntityNames::kindOf(name) != qrnsg::EntityNames::EDGE_LIKE)
                continue;
            hiddenSaid = hidden;
            said = qrnviewer::EntityText::describe(doc, name);
            selection->add({name});
            picked = name;
            break;
        }
        context->activate();
        canvas->OnDestroy();
        renderer->pickCanvas.reset();
    };
    renderer->addPostRenderer(std::make_shared<qrngl::SelectionRenderer>(doc, selection));
    const std::string path = (fs::current_path() / "pmi_nist_ctc_01_picked.png").string();
    ASSERT_TRUE(qrnviewer::Snapshot::write(doc, settings, qrnviewer::RendererPlugins::shared(),
                                           path, error))
        << error;
    EXPECT_THAT(said, ::testing::MatchesRegex("dimension [0-9]+: diameter 35 0/-0.2 mm"));
    EXPECT_EQ(hiddenSaid.find("dimension"), std::string::npos) << hiddenSaid;
    // The same highlight without the faces: what they add lies over their own box.
    const auto index = static_cast<std::size_t>(item - pmi->items.begin());
    ModelData bare = model;
    bare.pmi[index].faces.clear();
    auto plain = qrnimport::DocumentBuilder::build(bare);
    built.push_back(plain);
    auto plainRenderer = plain->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    qrngl::CameraHelper::setViewport(width, height, plainRenderer->camera);
    ASSERT_TRUE(qrnglutils::ViewActivator::apply(*plain->get<qrnsg::SCView>(qrnsg::SCHEMA_VIEW),
                                                 views->find(L"MBD_0"), plainRenderer->camera));
    auto same = std::make_shared<qrngl::SelectionSet>();
    same->add({picked});
    plainRenderer->addPostRenderer(std::make_shared<qrngl::SelectionRenderer>(plain, same));
    const std::string lines = (fs::current_path() / "pmi_nist_ctc_01_picked_lines.png").string();
    ASSERT_TRUE(qrnviewer::Snapshot::write(plain, width, height, lines, error)) << error;
    int x0 = width, y0 = height, x1 = -1, y1 = -1;
    for (const auto& face : model.pmi[index].faces) {
        const auto& node = topology->nodes[static_cast<std::size_t>(face.first)];
        const auto& f =
            topology->partOf(face.first)->entities.faces[static_cast<std::size_t>(face.second)];
        Instance mesh;
        ASSERT_TRUE(qrnsgutils::InstanceWalker::visible(
            rt->meshes, node.meshIds.at(static_cast<std::size_t>(f.mesh)), scene->meshes.size(),
            mesh));
        const auto& m = scene->meshes[static_cast<std::size_t>(mesh.drawable)];
        for (unsigned int c = 3 * f.firstTriangle; c < 3 * (f.firstTriangle + f.triangleCount);
             ++c) {
            const auto at = onScreen(*renderer->camera, m.vertices[m.indices[c]], mesh.transform);
            x0 = std::min(x0, at.first), y0 = std::min(y0, at.second);
            x1 = std::max(x1, at.first), y1 = std::max(y1, at.second);
        }
    }
    const qrnimage::Image with = loadPng(path), without = loadPng(lines);
    std::size_t added = 0, outside = 0;
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x)
            if (selectionTint(with.pixel(x, y)) && !selectionTint(without.pixel(x, y))) {
                ++added;
                const int ix = static_cast<int>(x), iy = static_cast<int>(y);
                outside += ix < x0 - 2 || ix > x1 + 2 || iy < y0 - 2 || iy > y1 + 2 ? 1 : 0;
            }
    EXPECT_GT(added, 100u) << "the holes it dimensions, tinted";
    EXPECT_EQ(outside, 0u);
}

TEST(ExplodeImageGLTest, TheDemoExplodesLevelByLevelAndComesBack) {
    const unsigned int width = 320, height = 240;
    const qrnimage::Image assembled = picture(demo(), width, height, "explode_demo_assembled");
    std::size_t levels = 0;
    const qrnimage::Image exploded =
        picture(demo(), width, height, "explode_demo", "iso", true, {}, [&](const auto& doc) {
            qrnviewer::Explosion explosion(doc);
            ASSERT_TRUE(explosion.explodeFully(nullptr));
            levels = static_cast<std::size_t>(explosion.levels());
            // Every level laid out along its direction, each part clear of the one before it.
            auto topology = doc->template get<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO);
            auto rt = doc->template get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
            auto scene = doc->template get<qrnsg::SCScene>(qrnsg::SCHEMA_SCENE);
            qrnsgutils::Placements::reset(*topology, *rt);
            auto graph = qrnsgutils::ExplosionGraph::build(*topology, *rt, scene->meshes);
            qrngl::ProgressTracker tracker(nullptr, 100, 0);
            qrngl::ExplodeStateIterator(doc, {}, graph).simpleExplode(tracker);
            std::size_t checked = 0;
            std::function<void(const qrnsgutils::ExplosionGraph&, int)> check =
                [&](const qrnsgutils::ExplosionGraph& g, int axis) {
                    for (std::size_t k = 1; k < g.size(); ++k, ++checked)
                        EXPECT_GT(g.nodes[k]->box().min()[axis] + g.nodes[k]->translation[axis],
                                  g.nodes[k - 1]->box().max()[axis] +
                                      g.nodes[k - 1]->translation[axis])
                            << "node " << g.nodes[k]->node();
                    for (const auto& n : g.nodes)
                        if (n->child)
                            check(*n->child, g.size() > 1 ? (axis + 1) % 3 : axis);
                };
            check(*graph, 0);
            EXPECT_GE(checked, 5u);
            explosion.explodeFully(nullptr); // laid out again from where the check left it
        });
    EXPECT_GE(levels, 2u);
    qrntest::expectMatchesBaseline(exploded, "explode_demo", 8, width * height / 200);
    // Every level out and back in again: the first picture, exactly.
    const qrnimage::Image back =
        picture(demo(), width, height, "explode_demo_back", "iso", true, {}, [](const auto& doc) {
            qrnviewer::Explosion explosion(doc);
            for (int press = 0; press <= 10 && (press == 0 || explosion.level() != 0); ++press) {
                ASSERT_TRUE(explosion.next(nullptr));
                while (explosion.animate()) {
                }
            }
            EXPECT_EQ(explosion.level(), 0);
        });
    ASSERT_EQ(back.width(), assembled.width());
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x)
            ASSERT_EQ(std::memcmp(back.pixel(x, y), assembled.pixel(x, y), 4), 0) << x << "," << y;
}

TEST(ExplodeImageGLTest, ANoteMovesWithThePartItPointsAt) {
    ModelData model = demo();
    qrnimport::DemoAssembly::addNote(model);
    auto doc = qrnimport::DocumentBuilder::build(model);
    auto topology = doc->get<qrnsg::SCSceneTopo>(qrnsg::SCHEMA_SCENE_TOPO);
    auto rt = doc->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    auto pmi = doc->get<qrnsg::SCPmi>(qrnsg::SCHEMA_PMI);
    ASSERT_EQ(pmi->items.size(), 1u);
    int bolt = -1;
    for (std::size_t n = 0; n < topology->nodes.size(); ++n)
        if (!topology->nodes[n].pmiTextIds.empty())
            bolt = static_cast<int>(n);
    ASSERT_GE(bolt, 0);
    EXPECT_EQ(topology->nodes[static_cast<std::size_t>(bolt)].name, L"Bolt 1");
    const int mesh = topology->nodes[static_cast<std::size_t>(bolt)].meshIds.at(0);
    const int text = pmi->items[0].textIds.at(0), lines = pmi->items[0].polylineIds.at(0);
    const Vec3 before(rt->meshes.transforms.find(mesh)->first.data() + 12);
    qrnviewer::Explosion explosion(doc);
    ASSERT_TRUE(explosion.explodeFully(nullptr));
    const Vec3 moved = Vec3(rt->meshes.transforms.find(mesh)->first.data() + 12) - before;
    ASSERT_GT(moved.length(), 1.0f);
    for (const auto* pair : {rt->texts.transforms.find(text), rt->polylines.transforms.find(lines)})
        EXPECT_NEAR(Vec3(pair->first.data() + 12).distance(moved), 0.0f, 1e-3f);
}

TEST(SectionImageGLTest, TrjCutThroughItsMiddleWithCaps) {
    const fs::path file = fs::path(QRN_SHARED_MODELS) / "trj4_pm2-ec-214.stp";
    if (!fs::exists(file))
        GTEST_SKIP() << "*** SHARED MODELS MISSING: " << file.string() << " not found ***";
    ModelData model;
    std::string error;
    ASSERT_TRUE(qrnimport::ModelReader::read(file.string(), model, error)) << error;
    const unsigned int width = 640, height = 480;
    qrnviewer::Sectioning::Settings cut;
    cut.axis = 0;
    cut.profile = true;
    const qrnimage::Image whole = picture(model, width, height, "section_trj4_whole");
    const qrnimage::Image parts =
        picture(model, width, height, "section_trj4_parts", "iso", true, cut);
    cut.caps = qrnviewer::Sectioning::SINGLE;
    const qrnimage::Image single =
        picture(model, width, height, "section_trj4_single", "iso", true, cut);
    // Independent of the baselines: the cut changes much of the picture, and the caps alone
    // change colour between the two modes.
    auto differ = [&](const qrnimage::Image& a, const qrnimage::Image& b) {
        std::size_t n = 0;
        for (unsigned int y = 0; y < height; ++y)
            for (unsigned int x = 0; x < width; ++x)
                for (int c = 0; c < 3; ++c)
                    if (std::abs(a.pixel(x, y)[c] - b.pixel(x, y)[c]) > 24) {
                        ++n;
                        break;
                    }
        return n;
    };
    EXPECT_GT(differ(whole, parts), width * height / 10);
    const std::size_t caps = differ(parts, single);
    EXPECT_GT(caps, width * height / 50);
    EXPECT_LT(caps, width * height / 5);
    qrntest::expectMatchesBaseline(parts, "section_trj4_parts", 8, width * height / 200);
    qrntest::expectMatchesBaseline(single, "section_trj4_single", 8, width * height / 200);
}

} // namespace
