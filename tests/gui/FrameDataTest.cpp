#include "gui/FrameData.h"
#include "gui/RenderPassData.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

gui::RenderPassData pass(unsigned index, std::vector<unsigned> values = {}) {
    gui::RenderPassData data(0.0F, values);
    data.setIndex(index);
    return data;
}

TEST(RenderPassData, NeverEndsBeforeItStarts) {
    gui::RenderPassData data = pass(3, {7});
    data.addValue(8);
    EXPECT_EQ(data.mValues, (std::vector<unsigned>{7, 8}));
    EXPECT_EQ(data.mIndex, 3U);
    data.addTimestampInfo(10, 4);
    EXPECT_EQ(data.mStartTime, 10);
    EXPECT_EQ(data.mEndTime, 10);
    data.addTimestampInfo(-5, -2);
    EXPECT_EQ(data.mStartTime, -5);
    EXPECT_EQ(data.mEndTime, -2);
}

TEST(FrameData, IsValidWithPassesAndATimeThatPasses) {
    const long double notANumber = std::numeric_limits<long double>::quiet_NaN();
    struct Case {
        long double start;
        long double end;
        bool hasPass;
        bool isValid;
    };
    const Case cases[] = {{0, 16, true, true},  {0, 16, false, false},        {5, 5, true, false},
                          {10, 4, true, false}, {0, notANumber, true, false}, {notANumber, 1, true, false},
                          {-3, -1, true, true}};
    for (const Case& c : cases) {
        gui::FrameData frame(1, {});
        EXPECT_FALSE(frame.isValid());
        if (c.hasPass) {
            frame.addRenderPassInfo(pass(0));
        }
        frame.addFrameTimeInfo(c.start, c.end);
        EXPECT_EQ(frame.isValid(), c.isValid)
            << static_cast<double>(c.start) << ".." << static_cast<double>(c.end);
    }
}

TEST(FrameData, CopiesAreIndependent) {
    gui::FrameData frame(9, {pass(1, {2, 3})});
    frame.addFrameTimeInfo(10, 4);
    EXPECT_EQ(frame.mStartTime, 10);
    EXPECT_EQ(frame.mEndTime, 4) << "no order is enforced";
    gui::FrameData copy(0, {});
    copy = frame;
    copy.mRenderPasses[0].mTexts.emplace_back("text");
    copy.mRenderPasses[0].mValues[0] = 99;
    EXPECT_TRUE(frame.mRenderPasses[0].mTexts.empty());
    EXPECT_EQ(frame.mRenderPasses[0].mValues[0], 2U);
    EXPECT_EQ(copy.mFrameId, 9U);
}

}  // namespace
