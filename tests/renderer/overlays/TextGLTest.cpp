#include "GLTest.h"

#include "qrngl/Font.h"
#include "qrngl/GL.h"
#include "qrngl/IRenderer.h"
#include "qrngl/frame/RendererFactory.h"
#include "qrngl/overlays/FontRenderer.h"
#include "qrngl/overlays/Text3DLeaderRenderer.h"
#include "qrngl/resources/StringTable.h"
#include "qrnglutils/TextStripEntry.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsgutils/ResourceLoader.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <vector>

namespace qrntest {
namespace {

using qrnmath::MatrixUtils;
using qrnmath::Vec3;

// Lit pixels: their box (x from the left, y from the bottom), count, and count a column and row.
struct Ink {
    int left = 1 << 20, right = -1, bottom = 1 << 20, top = -1;
    std::size_t count = 0;
    std::vector<int> columns, rows;
    bool empty() const { return count == 0; }
    int width() const { return right - left + 1; }
    int height() const { return top - bottom + 1; }
    // The fullest column and row as shares of the box from the left and the bottom.
    float stem() const { return fullest(columns, left, width()); }
    float foot() const { return fullest(rows, bottom, height()); }
    static float fullest(const std::vector<int>& v, int from, int n) {
        const auto begin = v.begin() + from;
        return float(std::max_element(begin, begin + n) - begin) / float(n);
    }
};

// Texts drawn white on black in a pixel-for-unit projection.
class TextGLTest : public GLTest {
protected:
    unsigned int width() const override { return 160; }
    unsigned int height() const override { return 80; }

    void SetUp() override {
        GLTest::SetUp();
        glViewport(0, 0, static_cast<GLsizei>(width()), static_cast<GLsizei>(height()));
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, width(), 0, height(), -100, 100);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_LIGHTING);
        fill(0.0f, 0.0f, 0.0f);
        glColor3f(1.0f, 1.0f, 1.0f);
    }

    Ink ink() const {
        Ink k;
        k.columns.assign(width(), 0);
        k.rows.assign(height(), 0);
        for (unsigned int y = 0; y < height(); ++y)
            for (unsigned int x = 0; x < width(); ++x) {
                if (pixel(x, y).r < 128)
                    continue;
                const int up = static_cast<int>(height() - 1 - y);
                ++k.columns[x];
                ++k.rows[static_cast<std::size_t>(up)];
                k.left = std::min(k.left, static_cast<int>(x));
                k.right = std::max(k.right, static_cast<int>(x));
                k.bottom = std::min(k.bottom, up);
                k.top = std::max(k.top, up);
                ++k.count;
            }
        return k;
    }

    // Draws a text as the canvas draws a renderer, between a matrix push and pop.
    Ink draw(const std::wstring& text, const Vec3& at, float scale,
             const qrnmath::Mat4& matrix = MatrixUtils::identity()) {
        fill(0.0f, 0.0f, 0.0f);
        auto t = std::make_shared<qrnsg::Text3D>();
        t->text = text;
        t->position = at;
        t->matrix = matrix;
        qrngl::FontRenderer renderer(t, scale);
        glPushMatrix();
        renderer.render();
        glPopMatrix();
        return ink();
    }
};

TEST_F(TextGLTest, GlyphsLieAtTheAnchorSizedByTheScaleAndTurnedByTheMatrix) {
    const Ink h = draw(L"H", Vec3(20, 20, 0), 40.0f);
    ASSERT_FALSE(h.empty());
    // An H stands on the baseline, a little right of the anchor, capitals about 0.7 em high.
    EXPECT_NEAR(h.bottom, 20, 1);
    EXPECT_GE(h.left, 20);
    EXPECT_LE(h.left, 26);
    EXPECT_NEAR(h.height() / 40.0, 0.7, 0.1);

    const Ink half = draw(L"H", Vec3(20, 20, 0), 20.0f);
    EXPECT_NEAR(double(half.height()) / h.height(), 0.5, 0.08);
    EXPECT_NEAR(double(half.width()) / h.width(), 0.5, 0.12);

    // Drawn in the matrix's inverse: a quarter turn one way turns the baseline down.
    const Ink turned =
        draw(L"HH", Vec3(80, 70, 0), 20.0f, MatrixUtils::rotation(Vec3(0, 0, 1), 1.5707964f));
    ASSERT_FALSE(turned.empty());
    EXPECT_GT(turned.height(), turned.width());
    EXPECT_LE(turned.top, 70);
    EXPECT_GE(turned.left, 79) << "the letters' tops point right";

    // The text is narrowed as a whole and drawn with the lists from the base alone: a character
    // above 254 shows as the narrowed text has it (scene texts draw it with the shared font).
    const Ink sign = draw(L"\u230025", Vec3(10, 20, 0), 30.0f);
    const Ink narrowed = draw(L"?25", Vec3(10, 20, 0), 30.0f);
    ASSERT_FALSE(narrowed.empty());
    EXPECT_EQ(sign.count, narrowed.count);
    EXPECT_EQ(sign.left, narrowed.left);
    EXPECT_EQ(sign.right, narrowed.right);
}

TEST_F(TextGLTest, AnEmptyTextOnlyMovesTheMatrixAndCodesAbove254HaveNoOutline) {
    const qrnmath::Mat4 turn = MatrixUtils::rotation(Vec3(1, 2, 3), 0.7f);
    auto t = std::make_shared<qrnsg::Text3D>();
    t->position = Vec3(5, 6, 7);
    t->matrix = turn;
    float scale = 2.0f;
    qrngl::FontRenderer empty(t, scale);
    glPushMatrix();
    glLoadIdentity();
    empty.render();
    qrnmath::Mat4 after;
    glGetFloatv(GL_MODELVIEW_MATRIX, after.data());
    glPopMatrix();
    // Translation and scale stay; the turn is undone.
    const qrnmath::Mat4 expected = MatrixUtils::multiply(MatrixUtils::translation(Vec3(5, 6, 7)),
                                                         MatrixUtils::scaling(Vec3(2, 2, 2)));
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(after[i], expected[i], 1e-4f) << i;
    EXPECT_TRUE(ink().empty());

    // The 256 lists from the base: 1 to 254 draw their glyphs, 255 is reserved and empty; the
    // destructor deletes all of them.
    auto gone = std::make_unique<qrngl::FontRenderer>(t, scale);
    const unsigned int goneBase = gone->listBase();
    EXPECT_TRUE(glIsList(goneBase) && glIsList(goneBase + 200));
    gone.reset();
    EXPECT_FALSE(glIsList(goneBase) || glIsList(goneBase + 200));
    t->text = L"x";
    qrngl::FontRenderer x(t, scale);
    const unsigned int base = x.listBase();
    for (unsigned int code : {static_cast<unsigned int>('A'), 0xD8u /* Ø */, 0xB1u /* ± */, 255u}) {
        fill(0.0f, 0.0f, 0.0f);
        glPushMatrix();
        glLoadIdentity();
        glTranslatef(40, 20, 0);
        glScalef(40, 40, 40);
        const unsigned char c = static_cast<unsigned char>(code);
        glListBase(base);
        glCallLists(1, GL_UNSIGNED_BYTE, &c);
        glPopMatrix();
        EXPECT_EQ(ink().empty(), code == 255u) << "code " << code;
    }
}

// A renderer factory that counts what it is asked for and hands out the library's renderers.
class CountingFactory : public qrngl::RendererFactory {
public:
    int polylines = 0;
    std::shared_ptr<qrngl::IRenderer> createPolylineRenderer(const qrnsg::Polyline& p) override {
        ++polylines;
        return qrngl::RendererFactory::createPolylineRenderer(p);
    }
};

TEST_F(TextGLTest, TheLeaderIsBlackAtSixtyPercentMadeAfreshEachFrame) {
    auto factory = std::make_shared<CountingFactory>();
    qrngl::Text3DLeaderRenderer leaders(nullptr, factory);
    struct Plain : qrngl::IPostRenderer {
        void render() const override {}
    };
    EXPECT_EQ(leaders.order(), Plain().order());
    fill(1.0f, 1.0f, 1.0f);
    leaders.render();
    EXPECT_EQ(countPixels(Rgba{255, 255, 255, 255}, 0), std::size_t(width() * height()))
        << "no leader, no drawing";
    EXPECT_EQ(factory->polylines, 0) << "and no factory call";

    auto leader = std::make_shared<qrnsg::Text3DLeader>();
    leader->polyline.addStrip({Vec3(10.5f, 40.5f, 0), Vec3(150.5f, 40.5f, 0)});
    leaders.set(leader);
    glColor3f(1.0f, 0.0f, 0.0f);
    leaders.render();
    // 60 % black over white leaves 40 % of it.
    EXPECT_TRUE(near(pixel(80, height() - 1 - 40), Rgba{102, 102, 102, 255}, 3))
        << pixel(80, height() - 1 - 40);
    EXPECT_EQ(pixel(80, 10), (Rgba{255, 255, 255, 255}));
    // The frame's state is given back: blending off, its colour current.
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_EQ(colour[0], 1.0f);
    leaders.render();
    EXPECT_EQ(factory->polylines, 2);
}

TEST_F(TextGLTest, TheTextFaceIsACenturyLikeSerifAndTheLabelFontABitmapOne) {
    // fontconfig (and Wine, through its font replacements) would give a sans face for the name.
    auto font = qrngl::Font::createOutline(qrngl::FontRenderer::faceName(),
                                           qrngl::FontRenderer::fallbackFaceName());
    ASSERT_TRUE(font);
    std::wcout << L"\"" << qrngl::FontRenderer::faceName() << L"\" resolved to " << font->faceName()
               << std::endl;
    EXPECT_EQ(font->faceName().rfind(L"C059", 0), 0u); // "C059", or "C059-Roman" on Windows
    EXPECT_EQ(font->kind(), qrngl::Font::OUTLINE);
    EXPECT_NEAR(font->width(L"M"), 0.9f, 0.15f) << "em units";
    glTranslatef(10, 20, 0);
    glScalef(30, 30, 30);
    font->draw(L"\u2300A");
    EXPECT_GT(ink().width(), 35) << "two glyphs of about 0.7 em";
    EXPECT_NEAR(font->width(L"\u2300A"), font->width(L"A") + font->width(L"\u2300"), 1e-5f);
    EXPECT_GT(font->width(L"\u2300"), 0.5f) << "from the fallback face";

    // The label font draws at the raster position, one line high.
    fill(0.0f, 0.0f, 0.0f);
    glLoadIdentity();
    font = qrngl::Font::createLabel(96.0f);
    ASSERT_TRUE(font);
    EXPECT_EQ(font->kind(), qrngl::Font::BITMAP);
    EXPECT_GE(font->lineHeight(), 12);
    EXPECT_LE(font->lineHeight(), 24);
    glRasterPos2i(10, 30);
    font->draw(L"Hello");
    const Ink k = ink();
    ASSERT_FALSE(k.empty());
    EXPECT_GE(k.left, 10);
    EXPECT_LE(k.left, 13);
    EXPECT_GE(k.bottom, 29);
    EXPECT_LE(k.top, 30 + font->lineHeight());
    EXPECT_NEAR(k.right + 1 - 10, font->width(L"Hello"), 3.0f);
}

TEST(TextStrings, TheStringTableInEachLanguageWithFallbacks) {
    const void* module = qrngl::libraryModule();
    ASSERT_NE(module, nullptr);
    using qrnsgutils::ResourceLoader;
    const struct {
        unsigned short language;
        const wchar_t *dimension, *angle, *area, *centre;
    } languages[] = {
        {0x0409, L"Dimension", L"Angle with standard plane", L"Area ~", L"Center"},
        {0x0407, L"Bema\u00DFung", L"Winkel zur Standardebene", L"Fl\u00E4che ~", L"Mittelpunkt"},
        {0x0411, L"\u5BF8\u6CD5", L"\u6A19\u6E96\u5E73\u9762\u3068\u306E\u89D2\u5EA6",
         L"\u9762\u7A4D ~", L"\u4E2D\u5FC3"},
    };
    for (const auto& l : languages) {
        SCOPED_TRACE(l.language);
        EXPECT_EQ(ResourceLoader::getString(module, 104, l.language), l.dimension);
        EXPECT_EQ(ResourceLoader::getString(module, 105, l.language), l.angle);
        EXPECT_EQ(ResourceLoader::getString(module, 106, l.language), l.area);
        EXPECT_EQ(ResourceLoader::getString(module, 107, l.language), l.centre);
        EXPECT_EQ(ResourceLoader::getString(module, 102, l.language), L"Arial Unicode MS");
        EXPECT_EQ(ResourceLoader::getString(module, 103, l.language), L"Century");
        EXPECT_FALSE(ResourceLoader::getString(module, 101, l.language).empty());
    }
    // Another variant of a language has its language's texts; one the table lacks, English.
    EXPECT_EQ(ResourceLoader::getString(module, 107, 0x0807 /* Swiss German */), L"Mittelpunkt");
    EXPECT_EQ(ResourceLoader::getString(module, 107, 0x0419 /* Russian */), L"Center");
    // A missing id gives an empty string.
    EXPECT_EQ(ResourceLoader::getString(module, 108, 0x0409), L"");
    EXPECT_EQ(ResourceLoader::getString(module, 100, 0x0407), L"");
    EXPECT_EQ(ResourceLoader::getString(nullptr, 104, 0x0409), L"");
    EXPECT_EQ(qrngl::FontRenderer::faceName(), L"Century");
}

TEST_F(TextGLTest, ASceneTextReadsFromEverySideAndFramesItsCompartments) {
    auto font = std::make_shared<qrnglutils::TextFont>(qrngl::FontRenderer::faceName(),
                                                       qrngl::FontRenderer::fallbackFaceName());
    qrnsg::Text text;
    text.text = L"L";
    text.height = 50.0f;
    text.align = qrnsg::Text::CENTRE;
    qrnglutils::TextStripEntry entry(text, font);
    // Seen as placed, from behind, upside down, and both: the stem left, the foot down.
    const struct {
        Vec3 axis;
        float angle;
    } turns[] = {{Vec3(0, 0, 1), 0.0f},
                 {Vec3(0, 1, 0), 3.1415927f},
                 {Vec3(0, 0, 1), 3.1415927f},
                 {Vec3(1, 0, 0), 3.1415927f}};
    for (const auto& t : turns) {
        SCOPED_TRACE(testing::Message()
                     << "turned " << t.angle << " about " << t.axis[0] << t.axis[1] << t.axis[2]);
        fill(0.0f, 0.0f, 0.0f);
        glPushMatrix();
        glTranslatef(80, 40, 0);
        glMultMatrixf(MatrixUtils::rotation(t.axis, t.angle).data());
        entry.render();
        glPopMatrix();
        const Ink k = ink();
        ASSERT_FALSE(k.empty());
        EXPECT_LT(k.stem(), 0.4f);
        EXPECT_LT(k.foot(), 0.4f);
        // Turned about its box's centre: it stays where it was.
        EXPECT_NEAR((k.left + k.right) / 2.0, 80.0, 6.0);
    }

    // A feature control frame: a box around all, a rule between compartments, the texts inside.
    qrnsg::Text frame;
    frame.text = L"A | B";
    frame.height = 30.0f;
    frame.framed = true;
    qrnglutils::TextStripEntry framed(frame, font);
    fill(0.0f, 0.0f, 0.0f);
    glPushMatrix();
    glTranslatef(20, 40, 0);
    framed.render();
    glPopMatrix();
    const float* box = framed.box();
    EXPECT_EQ(box[0], 0.0f) << "left aligned: the box starts at the anchor";
    EXPECT_NEAR(box[3] - box[1], 1.25f, 0.01f);
    const Ink k = ink();
    EXPECT_NEAR(k.left, 20, 1);
    EXPECT_NEAR(k.bottom, 40 + box[1] * 30.0f, 1.5);
    EXPECT_NEAR(k.top, 40 + box[3] * 30.0f, 1.5);
    EXPECT_NEAR(k.right, 20 + box[2] * 30.0f, 1.5);
    // The rule: a full-height column of ink inside the box.
    int rules = 0;
    for (int x = k.left + 3; x < k.right - 3; ++x)
        rules += k.columns[static_cast<std::size_t>(x)] >= k.height() - 1;
    EXPECT_GE(rules, 1);
    EXPECT_LE(rules, 2);
}

} // namespace
} // namespace qrntest
