// Canvas factories through real plug-ins: loading, choice, release, and their frames.
#include "GLTest.h"
#include "TestDocument.h"

#include "qrn2d/SCScene2D.h"
#include "qrngl/GL.h"
#include "qrngl/frame/CanvasFactoryCreator.h"
#include "qrngl/frame/CanvasFactoryHelper.h"
#include "qrngl/frame/PrintCanvas.h"
#include "qrnplatform/SharedLibrary.h"
#include "qrnplatform/Text.h"

#include <cstdio>
#include <filesystem>
#include <iterator>

namespace qrntest {
namespace {

using qrngl::CanvasFactoryCreator;
using qrngl::CanvasFactoryManager;

std::wstring path(const char* utf8) {
    return qrnplatform::Text::fromUtf8(utf8);
}

std::size_t count(const CanvasFactoryManager& manager) {
    return static_cast<std::size_t>(std::distance(manager.begin(), manager.end()));
}

// A document with one sheet: a 100 x 60 sheet, a horizontal line across its middle.
std::shared_ptr<qrn::Document> sheetDocument(const TestDocument& base) {
    auto scene = std::make_shared<qrn2d::SCScene2D>();
    qrn2d::Sheet sheet;
    sheet.lowerLeft = qrnmath::Vec3(0.0f, 0.0f, 0.0f);
    sheet.upperRight = qrnmath::Vec3(100.0f, 60.0f, 0.0f);
    scene->addSheet(sheet);
    qrn2d::Entity line;
    line.points = {qrnmath::Vec3(10.0f, 30.0f, 0.0f), qrnmath::Vec3(90.0f, 30.0f, 0.0f)};
    scene->addEntity(scene->addView(0, L"Main"), line, scene->addColor({0.0f, 0.0f, 1.0f, 1.0f}));
    auto document = std::make_shared<qrn::Document>(nullptr);
    document->setSchema(scene);
    document->setSchema(base.renderer->clone());
    return document;
}

TEST(CanvasFactories, OnlyLibrariesWithBothEntriesAreLoadedAndTheFirstThatAcceptsWins) {
    TestDocument model;
    auto sheet = sheetDocument(model);
    auto manager = std::make_shared<CanvasFactoryManager>();
    for (auto document :
         {std::shared_ptr<qrn::IDocument>(model.document), std::shared_ptr<qrn::IDocument>(sheet),
          std::shared_ptr<qrn::IDocument>()})
        EXPECT_EQ(manager->get(document), nullptr);

    // A missing file, a text file, and a library without the entries are passed over.
    const std::filesystem::path text = std::filesystem::temp_directory_path() / "qrn-not-a.plugin";
    std::FILE* out = std::fopen(text.string().c_str(), "wb");
    ASSERT_NE(out, nullptr);
    std::fputs("not a library\n", out);
    std::fclose(out);
    CanvasFactoryCreator load(manager);
    load(text.wstring());
    load(text.wstring() + L".missing");
    load(path(QRNTEST_NOT_A_PLUGIN));
    load(L""); // would name the program itself
    std::filesystem::remove(text);
    EXPECT_EQ(count(*manager), 0u);

    load(path(QRNTEST_PLUGIN_3D));
    load(path(QRNTEST_PLUGIN_2D));
    ASSERT_EQ(count(*manager), 2u);
    const auto scene3d = *manager->begin();
    const auto sheet2d = *std::next(manager->begin());
    EXPECT_EQ(manager->get(model.document), scene3d);
    EXPECT_EQ(manager->get(sheet), sheet2d);
    EXPECT_EQ(manager->get(nullptr), nullptr);

    // Of two that accept a document (counting accepts all), the one added first draws it.
    load(path(QRNTEST_PLUGIN_COUNTING));
    const auto counting = *std::next(manager->begin(), 2);
    EXPECT_EQ(manager->get(model.document), scene3d);
    manager->erase(manager->begin());
    EXPECT_EQ(manager->get(model.document), counting);
    EXPECT_EQ(manager->get(sheet), sheet2d);
}

TEST(CanvasFactories, AFactoryIsGivenBackWhenItsHelperGoes) {
    qrnplatform::SharedLibrary probe(path(QRNTEST_PLUGIN_COUNTING));
    const auto live = probe.function<int (*)()>("qrntest_live_factories");
    ASSERT_NE(live, nullptr);
    TestDocument model;
    {
        auto manager = std::make_shared<CanvasFactoryManager>();
        CanvasFactoryCreator{manager}(path(QRNTEST_PLUGIN_COUNTING));
        EXPECT_EQ(live(), 1);
        auto helper = std::dynamic_pointer_cast<qrngl::CanvasFactoryHelper>(*manager->begin());
        ASSERT_NE(helper, nullptr);
        {
            qrngl::CanvasFactoryHelper copy(*helper);
            EXPECT_EQ(live(), 2) << "a copy has a factory of its own";
            EXPECT_NE(copy.factory(), helper->factory());
        }
        EXPECT_EQ(live(), 1);
        auto canvas = manager->get(model.document)->createCanvas(nullptr, model.document);
        EXPECT_NE(canvas, nullptr);
        canvas.reset(); // canvases go before their factory
        helper.reset();
        manager.reset();
        EXPECT_EQ(live(), 0);
    }
    // A library that is not valid hands out nothing and is given nothing back.
    qrngl::CanvasFactoryHelper invalid(std::make_shared<qrn::DLLFuncPtrHelper<void>>(
        path(QRNTEST_NOT_A_PLUGIN).c_str(), "create", "destroy"));
    EXPECT_EQ(invalid.factory(), nullptr);
}

class PluginCanvasGLTest : public GLTest {
protected:
    void SetUp() override {
        GLTest::SetUp();
        manager = std::make_shared<CanvasFactoryManager>();
        CanvasFactoryCreator load(manager);
        load(path(QRNTEST_PLUGIN_3D));
        load(path(QRNTEST_PLUGIN_2D));
        ASSERT_EQ(count(*manager), 2u);
    }

    std::shared_ptr<CanvasFactoryManager> manager;
};

TEST_F(PluginCanvasGLTest, SceneCanvasOptimiserAndPrintCanvasDrawTheModel) {
    TestDocument model;
    const int red = model.addMeshMaterial(qrnsg::MMaterial::fromColor(1, 0, 0), false);
    model.addMesh(rectangle(-0.5f, -0.5f, 0.5f, 0.5f), red);
    // The optimiser builds the drawables of a document that has none.
    model.strips->meshes.clear();
    auto factory = manager->get(model.document);
    ASSERT_NE(factory, nullptr);
    context->activate();
    auto optimize = factory->createOptimizer(nullptr, model.document);
    ASSERT_NE(optimize, nullptr);
    EXPECT_TRUE((*optimize)());
    EXPECT_EQ(model.strips->meshes.size(), 1u);

    auto canvas = factory->createCanvas(context, model.document);
    ASSERT_TRUE(canvas->OnCreate());
    canvas->OnSize(0, 0, width(), height());
    canvas->Invalidate();
    canvas->OnDraw();
    EXPECT_EQ(presentedPixel(32, 32), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(presentedPixel(2, 2), (Rgba{230, 230, 230, 255}));
    canvas->OnDestroy();

    auto print = std::dynamic_pointer_cast<qrngl::PrintCanvas>(
        factory->createPrintCanvas(context, model.document));
    ASSERT_NE(print, nullptr);
    print->OnSize(0, 0, width(), height());
    for (bool transparent : {false, true}) {
        SCOPED_TRACE(transparent ? "transparent" : "opaque");
        print->setTransparent(transparent);
        print->OnDraw(); // whether invalidated or not
        ASSERT_EQ(print->pixels().size(), std::size_t{64 * 64 * 4});
        EXPECT_EQ(print->pictureWidth(), 64u);
        auto at = [&](int x, int y) {
            const unsigned char* p = &print->pixels()[static_cast<std::size_t>(y * 64 + x) * 4];
            return Rgba{p[0], p[1], p[2], p[3]};
        };
        EXPECT_EQ(at(32, 32), (Rgba{255, 0, 0, 255}));
        EXPECT_EQ(at(2, 2), (transparent ? Rgba{0, 0, 0, 0} : Rgba{230, 230, 230, 255}));
        // Rows run from the top: the rectangle's top edge is at row 16.
        EXPECT_EQ(at(32, 15).a, transparent ? 0 : 255);
        EXPECT_EQ(at(32, 17), (Rgba{255, 0, 0, 255}));
    }
    EXPECT_EQ(model.renderer->background[0], 0.9f) << "the background is restored";
}

TEST_F(PluginCanvasGLTest, SheetCanvasFitsTheSheetIntoTheWindow) {
    TestDocument model;
    auto sheet = sheetDocument(model);
    auto factory = manager->get(sheet);
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory->createOptimizer(nullptr, sheet), nullptr);
    auto print =
        std::dynamic_pointer_cast<qrngl::PrintCanvas>(factory->createPrintCanvas(context, sheet));
    ASSERT_NE(print, nullptr);
    print->OnSize(0, 0, width(), height());
    print->OnDraw();
    ASSERT_EQ(print->pixels().size(), std::size_t{64 * 64 * 4});
    // The 100 x 60 sheet fills the width; its middle line crosses the window's middle row.
    std::size_t blue = 0;
    for (int y = 30; y <= 33; ++y)
        for (int x = 10; x < 54; ++x) {
            const unsigned char* p = &print->pixels()[static_cast<std::size_t>(y * 64 + x) * 4];
            blue += p[0] < 60 && p[1] < 60 && p[2] > 200;
        }
    EXPECT_GE(blue, 40u);
    // The sheet's display list enables GL_LINE, which names no capability: that error only.
    context->activate();
    EXPECT_EQ(takeGLErrors(), reinterpret_cast<const char*>(gluErrorString(GL_INVALID_ENUM)));
}

} // namespace
} // namespace qrntest
