#include "doubles/FakeClock.h"
#include "doubles/RecordingPrimitives.h"
#include "drawers/AnimatedRenderPassDrawer.h"
#include "drawers/FixedRenderPassDrawer.h"
#include "drawers/TextblockDrawer.h"
#include "gui/FrameData.h"

#include <gmock/gmock.h>
#include <ostra/Ostra.h>

namespace {

using testing::ElementsAre;

template <typename Base>
class Recording : public Base {
public:
    Recording() {
        this->mPosition = {0.1F, 0.8F};
        this->mSize = {0.5F, 0.05F};
    }
    std::unique_ptr<drawer::TextblockDrawer> createTextblockDrawer(unsigned lines, unsigned hint) override {
        EXPECT_TRUE(lines == 1 && hint == 35);
        return std::make_unique<drawer::TextblockDrawer>(
            doubles::createRecordingText, std::make_unique<doubles::RecordingRect>(), lines, hint);
    }
    unsigned getOrientation() override { return mIsLandscape; }
    unsigned mIsLandscape = 1;
};

struct AnimatedRow : Recording<drawer::AnimatedRenderPassDrawer> {
    void onPreDrawWidgets() override {}
    void onPostDrawWidgets() override {}
};

using TimeLine = Recording<drawer::FixedRenderPassDrawer>;

struct Pass {
    long double start;
    long double end;
    std::vector<unsigned> values{};
};

gui::FrameData makeFrame(unsigned id, long double duration, const std::vector<Pass>& passes) {
    gui::FrameData frame(id, {});
    unsigned index = 1;
    for (const Pass& p : passes) {
        gui::RenderPassData data(0.0F, p.values);
        data.setIndex(index++);
        data.addTimestampInfo(p.start, p.end);
        frame.addRenderPassInfo(data);
    }
    frame.addFrameTimeInfo(0, duration);
    return frame;
}

/// Passes with `values` three-digit numbers each.
gui::FrameData makeRow(unsigned id, std::size_t passes, std::size_t values) {
    return makeFrame(id, 16, std::vector<Pass>(passes, Pass{0, 1, std::vector<unsigned>(values, 123)}));
}

TEST(RenderPassRow, IsAsWideAsItsLongestTextNeeds) {
    // A text of v three-digit values, such as " 1 123 123 ", is 3 + 4 v characters long.
    const struct {
        std::size_t passes, values;
        unsigned orientation;
        float textWidth;
    } cases[] = {
        {7, 1, 1, 1.0F},   // 7 x 7 x 0.02 = 0.98 fits
        {8, 1, 1, 1.25F},  // 1.12 overhangs by less than a quarter
        {9, 2, 0, 3.96F},  // 9 x 11 x 0.02, and in portrait a character is twice as wide
    };
    AnimatedRow row;
    for (const auto& c : cases) {
        row.mIsLandscape = c.orientation;
        row.addFrameInfo(makeRow(1, c.passes, c.values));
        row.draw();
        EXPECT_NEAR(row.mTextWidth, c.textWidth, 1e-5F) << c.passes;
    }
}

class Marquee : public testing::Test {
protected:
    Marquee() {
        doubles::setWallClock(START);
        row.mMarqueeCycles = 2;
        row.addFrameInfo(makeRow(1, 10, 2));  // 10 x 12 x 0.02 = 2.4 in a widget 1.0 wide
        row.mLastTickMs = static_cast<std::uint32_t>(START / 1000);
    }
    ~Marquee() override { doubles::releaseWallClock(); }

    void step(std::int64_t milliseconds) {
        doubles::advanceWallClock(milliseconds * 1000);
        row.draw();
        EXPECT_LE(row.mMarqueeOffset, 0.0F);
        EXPECT_GE(row.mMarqueeOffset, 1.0F - row.mTextWidth);
        EXPECT_EQ(row.mTranslation, glm::vec3(row.mMarqueeOffset, 0.0F, 0.0F));
    }

    static constexpr std::int64_t START = 1795555555000000;
    AnimatedRow row;
};

// D = 1.4 x 2.5 / 0.00025 = 14000 ms: a pause of 840, sliding left to 6580, a pause to 7420, back to 13160.
TEST_F(Marquee, SlidesLeftPausesAndSlidesBack) {
    const std::pair<std::uint32_t, float> offsets[] = {{840, 0.0F},   {3640, -0.7F},  {6600, -1.4F},
                                                       {7400, -1.4F}, {10220, -0.7F}, {13500, 0.0F}};
    for (const auto& [elapsed, offset] : offsets) {
        while (row.mElapsedMs + 10 <= elapsed) {
            step(10);
        }
        EXPECT_NEAR(row.mMarqueeOffset, offset, 0.03F) << elapsed;
    }
    for (unsigned cycle = 1; cycle <= 2; ++cycle) {
        EXPECT_EQ(row.mMarqueeCyclesDone, cycle - 1);
        while (row.mMarqueeCyclesDone < cycle) {
            step(100);
        }
    }
    step(3000);
    EXPECT_TRUE(!row.mIsAnimating && row.mMarqueeOffset == 0.0F) << "all cycles done";
    row.resetAnimation();
    EXPECT_EQ(row.mMarqueeCyclesDone, 0U);
}

TEST_F(Marquee, ARowThatFitsAndOneWithAFrameBeforeEveryDrawStayInPlace) {
    for (unsigned id = 2; id < 100; ++id) {
        row.addFrameInfo(makeRow(id, 10, 2));
        step(100);
        ASSERT_EQ(row.mMarqueeOffset, 0.0F);
    }
    row.addFrameInfo(makeRow(2, 2, 1));
    for (int i = 1; i <= 40; ++i) {
        step(100);
        ASSERT_EQ(row.mMarqueeOffset, 0.0F);
        ASSERT_EQ(row.mMarqueeCyclesDone, i == 40 ? 1U : 0U) << "T / speed = 4000 ms";
    }
}

TEST(RenderPassDump, IsWrittenOncePerFrame) {
    AnimatedRow row;
    Ostra::FrameDump dump{};
    row.addFrameInfo(makeFrame(0xFFFFFFFFU, 16, {{0, 1, {1, 2}}}));
    row.dump(dump);
    EXPECT_TRUE(dump.renderPasses.empty()) << "the id that stands for nothing dumped yet";
    row.addFrameInfo(makeFrame(0x80000001U, 16.5L, {{2, 5.5L, {10, 20, 30}}, {5, 9, {7}}, {9, 8, {}}}));
    row.dump(dump);
    EXPECT_EQ(dump.renderPassFrameId, -2147483647);
    EXPECT_EQ(dump.frameDuration, 16.5F);
    std::vector<std::tuple<std::uint64_t, std::uint64_t, double>> passes;
    for (const auto& pass : dump.renderPasses) {
        passes.emplace_back(pass.firstValue, pass.secondValue, pass.duration);
    }
    EXPECT_THAT(passes, ElementsAre(std::tuple(10, 20, 3.5), std::tuple(7, 0, 4.0), std::tuple(0, 0, 0.0)));
    Ostra::FrameDump second{};
    row.dump(second);
    EXPECT_TRUE(second.renderPassFrameId == 0 && second.renderPasses.empty());
}

TEST(RenderPassTimeLine, PlacesTheBlocks) {
    struct Block {
        float start, width;
        bool isThin = false;
    };
    const struct {
        const char* name;
        std::vector<Pass> passes;
        std::vector<Block> blocks;  // in shares of the widget's width; the frame lasts 10, the gap is 0.0025
    } cases[] = {
        {"out of order", {{6, 10}, {0, 2}, {3, 5}}, {{0.0F, 0.2F}, {0.3F, 0.2F}, {0.6F, 0.4F}}},
        {"touching", {{0, 5}, {5, 10}}, {{0.0F, 0.5F}, {0.5025F, 0.4975F}}},
        {"overlapping", {{0, 5}, {3, 8}}, {{0.0F, 0.5F}, {0.5025F, 0.2975F}}},
        {"covered", {{0, 5}, {3, 5}}, {{0.0F, 0.5F}, {0.4975F, 0.01F, true}}},
        {"thin", {{5, 5.05L}}, {{0.4925F, 0.01F, true}}},
        {"thin at the start", {{0, 0.05L}}, {{0.0F, 0.01F, true}}},
        {"past the end", {{8, 13}}, {{0.8F, 0.2F}}},
        {"from past the end", {{12, 14}}, {{1.0F, 0.0F}}},
        {"pushed past the end", {{8, 13}, {12, 14}}, {{0.8F, 0.2F}, {1.0F, 0.0F, true}}},
        {"both from the start", {{0, 4}, {0, 4}}, {{0.0F, 0.4F}, {0.0F, 0.4F}}},
    };
    TimeLine line;
    line.addFrameInfo(makeFrame(1, 10, {}));
    EXPECT_FALSE(line.mFrameData.isValid()) << "a frame without passes is refused";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        line.addFrameInfo(makeFrame(1, 10, c.passes));
        line.draw();
        ASSERT_EQ(line.mTextblocks.size(), c.blocks.size());
        for (std::size_t i = 0; i < c.blocks.size(); ++i) {
            const auto& [start, width, isThin] = c.blocks[i];
            const drawer::TextblockDrawer& block = *line.mTextblocks[i];
            EXPECT_NEAR((block.mPosition.x - 0.1F) / 0.5F, start, 1e-5F) << i;
            EXPECT_NEAR(block.mSize.x / 0.5F, width, 1e-5F) << i;
            EXPECT_EQ(block.mLines.empty(), isThin) << i;
            EXPECT_EQ(block.mBackground->mColor, glm::vec4(0.0F, isThin ? 0.2F : 0.0F, 0.0F, 1.0F)) << i;
        }
    }
}

}  // namespace
