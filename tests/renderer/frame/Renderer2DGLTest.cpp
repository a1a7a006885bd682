#include "GLTest.h"

#include "qrn2d/SCScene2D.h"
#include "qrngl/GL.h"
#include "qrngl/frame/Renderer2D.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qrntest {
namespace {

using qrn2d::Entity;
using qrn2d::SCScene2D;
using qrngl::Renderer2D;
using qrnmath::Vec3;
using qrnmath::Vec4;

const Vec4 kRed{1, 0, 0, 1}, kGreen{0, 1, 0, 1}, kBlue{0, 0, 1, 1}, kYellow{1, 1, 0, 1},
    kMagenta{1, 0, 1, 1}, kCyan{0, 1, 1, 1};
const Rgba kBlackPx{0, 0, 0, 255}, kRedPx{255, 0, 0, 255}, kGreenPx{0, 255, 0, 255},
    kBluePx{0, 0, 255, 255}, kYellowPx{255, 255, 0, 255}, kMagentaPx{255, 0, 255, 255},
    kCyanPx{0, 255, 255, 255};

Entity entity(std::uint32_t kind, std::vector<Vec3> points, double lineWidth = 1.0) {
    Entity e;
    e.kind = kind;
    e.points = std::move(points);
    e.lineWidth = lineWidth;
    return e;
}

Entity hline(std::uint32_t kind, float x0, float x1, float y) {
    return entity(kind, {Vec3(x0, y, 0.0f), Vec3(x1, y, 0.0f)});
}

// A red 100 x 50 sheet: with its margin of 1 the border runs from (-1, -1) to (101, 51).
std::shared_ptr<SCScene2D> sheetScene() {
    auto scene = std::make_shared<SCScene2D>();
    qrn2d::Sheet sheet;
    sheet.lowerLeft = Vec3(0.0f, 0.0f, 0.0f);
    sheet.upperRight = Vec3(100.0f, 50.0f, 0.0f);
    sheet.color = kRed;
    scene->addSheet(sheet);
    return scene;
}

// One sheet unit a pixel, sheet coordinates on pixel centres: x lands in column x + 13, y in
// row 57 - y from the top, so the whole bordered sheet fits with room on every side.
class Renderer2DGLTest : public GLTest {
protected:
    unsigned int width() const override { return 128; }
    unsigned int height() const override { return 64; }

    void SetUp() override {
        GLTest::SetUp();
        if (HasFatalFailure())
            return;
        glViewport(0, 0, 128, 64);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-13.5, 114.5, -6.5, 57.5, -1.0, 1.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_LIGHTING);
        glDisable(GL_BLEND);
        glDisable(GL_LINE_SMOOTH);
        fill(0.0f, 0.0f, 0.0f);
        EXPECT_NO_GL_ERROR();
    }

    Rgba at(int x, int y) const {
        return pixel(static_cast<unsigned int>(x + 13), static_cast<unsigned int>(57 - y));
    }

    std::size_t allPixels() const { return static_cast<std::size_t>(width()) * height(); }

    // The list enables GL_LINE, no capability: each render raises that one error only.
    void render(const Renderer2D& renderer) const {
        renderer.render();
        const std::string invalidEnum =
            reinterpret_cast<const char*>(gluErrorString(GL_INVALID_ENUM));
        EXPECT_EQ(takeGLErrors(), invalidEnum);
    }
};

TEST_F(Renderer2DGLTest, CompilesTheListOnceAndReplaysIt) {
    auto scene = sheetScene();
    const int view = scene->addView(0, L"Main");
    const int green = scene->addColor(kGreen);
    scene->addEntity(view, hline(0, 10.0f, 60.0f, 20.0f), green);

    Renderer2D renderer(context->currentDC(), scene, 0);
    EXPECT_EQ(renderer.displayList(), Renderer2D::NO_LIST);
    render(renderer);
    const unsigned int list = renderer.displayList();
    ASSERT_NE(list, Renderer2D::NO_LIST);
    EXPECT_EQ(at(30, 20), kGreenPx);
    const float diagonal = scene->maxDiagonal;

    // Edits after the first render reach neither the list nor the diagonal.
    scene->entities[0].points[0] = Vec3(10.0f, 30.0f, 0.0f);
    scene->entities[0].points[1] = Vec3(60.0f, 30.0f, 0.0f);
    scene->colors[static_cast<std::size_t>(green)] = kBlue;
    scene->addEntity(view, hline(0, 10.0f, 60.0f, 40.0f), scene->addColor(kYellow));
    scene->sheets[0].upperRight = Vec3(400.0f, 300.0f, 0.0f);
    scene->sheets[0].color = kCyan;

    fill(0.0f, 0.0f, 0.0f);
    render(renderer);
    EXPECT_EQ(renderer.displayList(), list);
    EXPECT_EQ(glIsList(list + 1), GL_FALSE) << "a second list was made";
    EXPECT_EQ(at(30, 20), kGreenPx);
    EXPECT_EQ(countPixels(kBluePx) + countPixels(kYellowPx) + countPixels(kCyanPx), 0u);
    EXPECT_EQ(at(-1, 25), kRedPx);
    EXPECT_FLOAT_EQ(scene->maxDiagonal, diagonal);
}

TEST_F(Renderer2DGLTest, DrawsTheSheetBorderWithItsMarginAndKeepsTheLargestDiagonal) {
    auto scene = sheetScene();
    // A view listing an entity the scene does not hold: with no entities it is never read.
    scene->viewEntities[scene->addView(0, L"Detail")] = {0};
    scene->entityColors[0] = 0;
    Renderer2D renderer(context->currentDC(), scene, 0);
    glLineWidth(5.0f); // the border sets its own width
    render(renderer);

    // One unit outside the sheet, one pixel wide; nothing on the sheet's edges or inside.
    const int border[][2] = {{-1, 25}, {101, 25}, {50, -1}, {50, 51}, {-1, 2}, {98, 51}};
    for (const auto& p : border)
        EXPECT_EQ(at(p[0], p[1]), kRedPx) << p[0] << ", " << p[1];
    const int black[][2] = {{0, 25},  {100, 25}, {50, 0},  {50, 50}, {50, 25},
                            {-2, 25}, {102, 25}, {50, 52}, {50, -2}};
    for (const auto& p : black)
        EXPECT_EQ(at(p[0], p[1]), kBlackPx) << p[0] << ", " << p[1];
    // Only the closed outline: about 2 x 103 + 2 x 53 pixels.
    const std::size_t red = countPixels(kRedPx);
    EXPECT_GE(red, 306u);
    EXPECT_LE(red, 312u);
    EXPECT_EQ(red + countPixels(kBlackPx), allPixels());
    const float large = std::sqrt(102.0f * 102.0f + 52.0f * 52.0f);
    EXPECT_NEAR(scene->maxDiagonal, large, 1e-3f);

    // A small sheet's margin is a fifth of a unit; the larger diagonal already known stays.
    qrn2d::Sheet small;
    small.lowerLeft = Vec3(10.0f, 10.0f, 0.0f);
    small.upperRight = Vec3(30.0f, 20.0f, 0.0f);
    small.color = kGreen;
    const int smallIndex = scene->addSheet(small);
    Renderer2D smallRenderer(context->currentDC(), scene, smallIndex);
    render(smallRenderer);
    EXPECT_EQ(at(10, 15), kGreenPx);
    EXPECT_EQ(at(30, 15), kGreenPx);
    EXPECT_NEAR(scene->maxDiagonal, large, 1e-3f);
    scene->maxDiagonal = 0.0f;
    Renderer2D smallAgain(context->currentDC(), scene, smallIndex);
    render(smallAgain);
    EXPECT_NEAR(scene->maxDiagonal, std::sqrt(20.4f * 20.4f + 10.4f * 10.4f), 1e-3f);

    // A sheet outside the sheet vector has no border, but its views draw.
    for (int sheet : {1, -1}) {
        SCOPED_TRACE(sheet);
        auto scene = sheetScene();
        const int view = scene->addView(sheet, L"Main");
        scene->addEntity(view, hline(0, 10.0f, 60.0f, 20.0f), scene->addColor(kGreen));
        fill(0.0f, 0.0f, 0.0f);
        Renderer2D renderer(context->currentDC(), scene, sheet);
        render(renderer);
        EXPECT_EQ(countPixels(kRedPx), 0u);
        EXPECT_EQ(at(30, 20), kGreenPx); // the sheet's views still draw
        EXPECT_EQ(scene->maxDiagonal, 0.0f);
    }
}

TEST_F(Renderer2DGLTest, DrawsOnlyTheSheetsViewsInOrder) {
    auto scene = sheetScene();
    const int magenta = scene->addColor(kMagenta);
    const int green = scene->addColor(kGreen);
    const int blue = scene->addColor(kBlue);

    // Border views in any case are left out; a skipped view does not end the loop.
    struct Named {
        const wchar_t* name;
        bool skipped;
    };
    const Named named[] = {{L"sheetborder", true}, {L"Main", false},
                           {L"SHEETBORDER", true}, {L"Sheet Border", false},
                           {L"SheetBorder", true}, {L"SheetBorders", false},
                           {L"sHeEtBoRdEr", true}, {L"border", false}};
    for (std::size_t i = 0; i < 8; ++i) {
        const int view = scene->addView(0, named[i].name);
        const float y = 5.0f + 5.0f * static_cast<float>(i);
        scene->addEntity(view, hline(0, 10.0f, 40.0f, y), named[i].skipped ? magenta : green);
    }
    // Views of another sheet are not this renderer's.
    const int other = scene->addView(1, L"Other");
    scene->addEntity(other, hline(0, 60.0f, 90.0f, 10.0f), magenta);

    // Later views draw over earlier ones, and everything over the border.
    const int under = scene->addView(0, L"Under");
    scene->addEntity(under, hline(0, 50.0f, 90.0f, 45.0f), magenta);
    const int over = scene->addView(0, L"Over");
    scene->addEntity(over, hline(0, 50.0f, 90.0f, 45.0f), blue);
    scene->addEntity(over, entity(0, {Vec3(-1.0f, 10.0f, 0.0f), Vec3(-1.0f, 40.0f, 0.0f)}), blue);

    Renderer2D renderer(context->currentDC(), scene, 0);
    render(renderer);
    EXPECT_EQ(countPixels(kMagentaPx), 0u);
    for (std::size_t i = 0; i < 8; ++i) {
        const int y = 5 + 5 * static_cast<int>(i);
        EXPECT_EQ(at(25, y), named[i].skipped ? kBlackPx : kGreenPx) << "view " << i;
    }
    EXPECT_EQ(at(70, 45), kBluePx);
    EXPECT_EQ(at(-1, 25), kBluePx);
    EXPECT_EQ(at(-1, 45), kRedPx);
}

TEST_F(Renderer2DGLTest, DrawsLineAndFilledKindsAndLeavesOthersOut) {
    auto scene = sheetScene();
    const int view = scene->addView(0, L"Main");
    const int magenta = scene->addColor(kMagenta); // colour table indices differ from entity ids
    const int green = scene->addColor(kGreen);
    const int blue = scene->addColor(kBlue);
    const int yellow = scene->addColor(kYellow);

    // A Z of four points: filled as a triangle strip it is the whole square.
    const std::vector<Vec3> square = {Vec3(10.0f, 10.0f, 0.0f), Vec3(30.0f, 10.0f, 0.0f),
                                      Vec3(10.0f, 30.0f, 0.0f), Vec3(30.0f, 30.0f, 0.0f)};
    scene->addEntity(view, entity(4, square), blue);
    // The same Z as a line strip outlines it.
    std::vector<Vec3> outline = square;
    for (Vec3& p : outline)
        p[0] += 40.0f;
    scene->addEntity(view, entity(0, outline), yellow);

    const std::uint32_t lineKinds[] = {1, 2, 3, 8, 9};
    for (std::size_t i = 0; i < 5; ++i)
        scene->addEntity(view, hline(lineKinds[i], 80.0f, 95.0f, 5.0f + 5.0f * float(i)), green);
    Entity thick = hline(0, 25.0f, 35.0f, 45.0f);
    thick.lineWidth = 3.0;
    scene->addEntity(view, thick, scene->addColor(kCyan));
    scene->addEntity(view, hline(9, 25.0f, 35.0f, 48.0f), green);
    for (std::uint32_t kind : {5u, 6u, 7u, 10u, 11u, 0xFFFFFFFFu}) {
        scene->addEntity(view, hline(kind, 5.0f, 95.0f, 40.0f), magenta);
        scene->addEntity(view, entity(kind, square), magenta);
    }

    Renderer2D renderer(context->currentDC(), scene, 0);
    render(renderer);
    EXPECT_EQ(countPixels(kMagentaPx), 0u);

    // Filled: corners, middle and the parts a fan or a quad of the same points would miss.
    for (int x : {12, 20, 28})
        for (int y : {12, 20, 28})
            EXPECT_EQ(at(x, y), kBluePx) << x << ", " << y;
    EXPECT_GE(countPixels(kBluePx), 380u);

    EXPECT_EQ(at(60, 10), kYellowPx);
    EXPECT_EQ(at(60, 30), kYellowPx);
    EXPECT_EQ(at(60, 20), kYellowPx); // the diagonal
    EXPECT_EQ(at(52, 12), kBlackPx);
    EXPECT_EQ(at(68, 28), kBlackPx);
    EXPECT_EQ(at(55, 20), kBlackPx);

    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(at(88, 5 + 5 * static_cast<int>(i)), kGreenPx) << "kind " << lineKinds[i];
    EXPECT_EQ(at(50, 40), kBlackPx);
    // Width 3 covers three rows; kind 9 draws one.
    for (int y : {44, 45, 46, 48})
        EXPECT_EQ(at(30, y), y == 48 ? kGreenPx : kCyanPx) << y;
    for (int y : {43, 47, 49})
        EXPECT_EQ(at(30, y), kBlackPx) << y;
}

TEST_F(Renderer2DGLTest, StippledLinesShowThePatternAndRestoreTheState) {
    auto scene = sheetScene();
    const int view = scene->addView(0, L"Main");
    Entity wide = hline(0, 0.0f, 96.0f, 10.0f);
    wide.stipple = true;
    wide.stipplePattern = 0x00FF;
    scene->addEntity(view, wide, scene->addColor(kGreen));
    Entity narrow = hline(9, 0.0f, 96.0f, 20.0f);
    narrow.stipple = true;
    narrow.stipplePattern = 0x0F0F;
    scene->addEntity(view, narrow, scene->addColor(kBlue));
    // A pattern without the flag, drawn after stippled ones: solid.
    Entity solid = hline(0, 0.0f, 96.0f, 30.0f);
    solid.stipplePattern = 0x00FF;
    scene->addEntity(view, solid, scene->addColor(kYellow));

    Renderer2D renderer(context->currentDC(), scene, 0);
    glEnable(GL_POINT_SMOOTH);
    render(renderer);
    // Client state and point smoothing are left off, and the list closed.
    EXPECT_EQ(glIsEnabled(GL_VERTEX_ARRAY), GL_FALSE);
    EXPECT_EQ(glIsEnabled(GL_POINT_SMOOTH), GL_FALSE);
    GLint listMode = -1;
    glGetIntegerv(GL_LIST_INDEX, &listMode);
    EXPECT_EQ(listMode, 0);

    // The pattern's bits from the lowest, each repeated twice along the line.
    for (int x = 0; x < 96; ++x) {
        EXPECT_EQ(at(x, 10), (x / 16) % 2 == 0 ? kGreenPx : kBlackPx) << "x " << x;
        EXPECT_EQ(at(x, 20), (x / 8) % 2 == 0 ? kBluePx : kBlackPx) << "x " << x;
        EXPECT_EQ(at(x, 30), kYellowPx) << "x " << x;
    }
    EXPECT_EQ(glIsEnabled(GL_LINE_STIPPLE), GL_FALSE);

    // Replayed, the list turns point smoothing off again and leaves no stipple on.
    fill(0.0f, 0.0f, 0.0f);
    glEnable(GL_POINT_SMOOTH);
    render(renderer);
    EXPECT_EQ(glIsEnabled(GL_POINT_SMOOTH), GL_FALSE);
    for (int y = 0; y < 50; ++y)
        EXPECT_EQ(at(-1, y), kRedPx) << "y " << y;
    EXPECT_EQ(glIsEnabled(GL_LINE_STIPPLE), GL_FALSE);
}

} // namespace
} // namespace qrntest
