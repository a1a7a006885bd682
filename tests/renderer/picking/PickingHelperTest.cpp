#include "qrngl/picking/PickingHelper.h"
#include "qrngl/picking/OGLPickCanvas.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qrngl {
namespace {

// A pick canvas that notes the calls it gets and answers with set hits.
struct RecordingCanvas : IPickCanvas {
    template <class... T>
    void note(std::string call, T... values) const {
        ((call += " " + std::to_string(values)), ...);
        calls.push_back(call);
    }
    void OnDraw() const override { note("OnDraw"); }
    bool OnCreate() override { return true; }
    void OnDestroy() override {}
    void OnSize(unsigned, unsigned, unsigned, unsigned) override {}
    void Invalidate() override { note("Invalidate"); }
    void Set(int x, int y, int size, unsigned short type) override {
        note("Set", x, y, size, type);
    }
    const std::vector<PickResult>& Get() const override { return hits; }
    void SetPickBox(int w, int h, int size, unsigned short type) override {
        note("SetPickBox", w, h, size, type);
    }
    void OnDrawPickBox(int x, int y, int w, int h) override { note("OnDrawPickBox", x, y, w, h); }
    void GetPickBox(int, int, std::vector<PickResult>& out) override { out = hits; }

    mutable std::vector<std::string> calls;
    std::vector<PickResult> hits{PickResult(0.5f, 0.5f, {7u})};
};

struct Selector : ISelector {
    void select(unsigned int flags, const FilterResult& result) override {
        ++calls;
        lastFlags = flags;
        empty = result.empty();
    }
    int calls = 0;
    unsigned int lastFlags = 0;
    bool empty = false;
};

struct KeepAll : IFilter {
    unsigned short& type() override { return mask; }
    void filter(const std::vector<PickResult>& hits) override {
        m_result.clear();
        for (const auto& h : hits)
            m_result.add(h.names().front(), h.minDepth());
    }
    unsigned short mask = 6;
};

struct Fixture : ::testing::Test {
    std::shared_ptr<SCRenderer> renderer(unsigned w, unsigned h, float zoom) {
        auto r = std::make_shared<SCRenderer>();
        r->camera->setViewport(w, h);
        r->camera->setZoomFactor(zoom);
        r->pickCanvas = canvas;
        return r;
    }
    std::shared_ptr<RecordingCanvas> canvas = std::make_shared<RecordingCanvas>();
    std::shared_ptr<Selector> selector = std::make_shared<Selector>();
};

TEST_F(Fixture, PointPickWithoutFilterDrawsMask39AndSelectsNothing) {
    PickingHelper::pick(canvas, nullptr, selector, 8, 10, 20, 5);
    EXPECT_EQ(canvas->calls, (std::vector<std::string>{"Set 10 20 5 39", "OnDraw"}));
    EXPECT_EQ(selector->calls, 1);
    EXPECT_EQ(selector->lastFlags, 8u);
    EXPECT_TRUE(selector->empty) << "without a filter the selector gets an empty result";

    auto filter = std::make_shared<KeepAll>();
    PickingHelper::pick(canvas, filter, selector, 0, 1, 2, 3);
    EXPECT_EQ(canvas->calls.back(), "OnDraw");
    EXPECT_EQ(canvas->calls[2], "Set 1 2 3 6");
    EXPECT_FALSE(selector->empty);
    EXPECT_EQ(filter->get().name(0), 7u);

    // An empty canvas does nothing, the selector included.
    PickingHelper::pick(nullptr, filter, selector, 0, 1, 2, 3);
    EXPECT_EQ(selector->calls, 2);
}

TEST_F(Fixture, TheApertureFollowsTheWindowAndABoxItsLowerLeftCorner) {
    // 800 x 300 at zoom 1: 30, then r = 0.5 makes it 15; the square centred on (400, 100).
    auto r = renderer(800, 300, 1.0f);
    PickingHelper::pickPoints(r, nullptr, selector, 0, 400, 100, 4);
    EXPECT_EQ(canvas->calls, (std::vector<std::string>{"Invalidate", "SetPickBox 15 15 4 39",
                                                       "OnDrawPickBox 392 192 15 15"}));
    // At zoom 0.25, r = 2: the aperture stays 30.
    canvas->calls.clear();
    r = renderer(800, 300, 0.25f);
    PickingHelper::pickPoints(r, nullptr, selector, 0, 400, 100, 4);
    EXPECT_EQ(canvas->calls[1], "SetPickBox 30 30 4 39");
    // Below 2 pixels nothing is picked.
    canvas->calls.clear();
    r = renderer(15, 300, 1.0f);
    const int before = selector->calls;
    PickingHelper::pickPoints(r, nullptr, selector, 0, 4, 4, 4);
    EXPECT_EQ(canvas->calls, (std::vector<std::string>{"Invalidate"}));
    EXPECT_EQ(selector->calls, before);

    // A box pick takes its lower left corner, however dragged; a zero width is at the origin.
    r = renderer(500, 400, 1.0f);
    for (auto c : std::vector<std::array<int, 4>>{
             {100, 50, 40, 80}, {40, 50, 100, 80}, {40, 80, 100, 50}, {100, 80, 40, 50}}) {
        canvas->calls.clear();
        PickingHelper::pickbox(r, nullptr, selector, 0, c[0], c[1], c[2], c[3]);
        EXPECT_EQ(canvas->calls, (std::vector<std::string>{"SetPickBox 60 30 0 39",
                                                           "OnDrawPickBox 40 320 60 30"}));
    }
    canvas->calls.clear();
    PickingHelper::pickbox(r, nullptr, selector, 0, 100, 50, 100, 80);
    EXPECT_EQ(canvas->calls[1], "OnDrawPickBox 0 0 0 30");
}

// The selection buffer as OpenGL leaves it, read without a context.
struct BufferCanvas : OGLPickCanvas {
    BufferCanvas() : OGLPickCanvas(nullptr, nullptr) {}
    void OnDraw() const override {}
    void OnDrawPickBox(int, int, int, int) override {}
    void fill(const std::vector<unsigned int>& words) {
        std::copy(words.begin(), words.end(), m_buffer.begin());
    }
};

TEST(OGLPickCanvasTest, HitRecordsBecomeHitsAndRecordsWithoutNamesAreSkipped) {
    BufferCanvas canvas;
    canvas.Set(1, 2, 3, 1);
    // Two names at depths 2^30 and 2^31, no names, one name at depth 0.
    canvas.fill({2, 0x40000000u, 0x80000000u, 11, 12, 0, 5, 6, 1, 0, 0xFFFFFFFFu, 13});
    canvas.processHits(3);
    const auto& hits = canvas.Get();
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_FLOAT_EQ(hits[0].minDepth(), 0.5f);
    EXPECT_FLOAT_EQ(hits[0].maxDepth(), 1.0f);
    EXPECT_EQ(hits[0].names(), (std::vector<unsigned int>{11, 12}));
    EXPECT_FLOAT_EQ(hits[1].maxDepth(), 2.0f);
    EXPECT_EQ(hits[1].names(), (std::vector<unsigned int>{13}));
    // No count, no hits; Set empties them.
    canvas.Set(1, 2, 3, 1);
    canvas.processHits(0);
    EXPECT_TRUE(canvas.Get().empty());
}

} // namespace
} // namespace qrngl
