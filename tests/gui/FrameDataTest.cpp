#include "gui/FrameData.h"
#include "gui/RenderPassData.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(RenderPassData, NeverEndsBeforeItStarts) {
    gui::RenderPassData data(0.0F, {7});
    data.setIndex(3);
    data.addValue(8);
    EXPECT_TRUE(data.mIndex == 3 && data.mValues == (std::vector<unsigned>{7, 8}));
    data.addTimestampInfo(10, 4);
    EXPECT_TRUE(data.mStartTime == 10 && data.mEndTime == 10);
    data.addTimestampInfo(-5, -2);
    EXPECT_TRUE(data.mStartTime == -5 && data.mEndTime == -2);
}

TEST(FrameData, IsValidWithPassesAndATimeThatPasses) {
    const long double notANumber = std::numeric_limits<long double>::quiet_NaN();
    const struct {
        long double start, end;
        bool hasPass, isValid;
    } cases[] = {{0, 16, true, true},  {0, 16, false, false},        {5, 5, true, false},
                 {10, 4, true, false}, {0, notANumber, true, false}, {-3, -1, true, true}};
    for (const auto& c : cases) {
        gui::FrameData frame(1, {});
        EXPECT_FALSE(frame.isValid());
        if (c.hasPass) {
            frame.addRenderPassInfo({0.0F, {}});
        }
        frame.addFrameTimeInfo(c.start, c.end);
        EXPECT_EQ(frame.isValid(), c.isValid)
            << static_cast<double>(c.start) << ".." << static_cast<double>(c.end);
    }
}

}  // namespace
