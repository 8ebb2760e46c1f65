#include "doubles/FakeClock.h"
#include "utils/StringFormat.h"
#include "utils/SystemInfoHelper.h"
#include "utils/Time.h"
#include "utils/UpdateHelper.h"
#include "utils/ValueDamper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

class Clock : public testing::Test {
protected:
    ~Clock() override { doubles::releaseWallClock(); }
};

TEST_F(Clock, ReadingsAreTheLow32BitsOfTheWallClock) {
    const std::int64_t now = 1795555555123456;
    doubles::setWallClock(now);
    EXPECT_EQ(utils::getUtcTime_usec(), static_cast<std::uint32_t>(now & 0xFFFFFFFF));
    EXPECT_EQ(utils::getUtcTime_msec(), static_cast<std::uint32_t>((now / 1000) & 0xFFFFFFFF));
    EXPECT_EQ(utils::getUtcTimes_sec(), 1795555555U);
    doubles::setWallClock(4294967296 * 5 - 100);
    const std::uint32_t before = utils::getUtcTime_usec();
    doubles::advanceWallClock(250);
    EXPECT_EQ(utils::getUtcTime_usec() - before, 250U) << "across a wrap";
}

TEST_F(Clock, AnUpdateIsDueEvery120Milliseconds) {
    doubles::setWallClock(4294967296 - 50000);  // wraps within the first interval
    UpdateHelper helper;
    EXPECT_FALSE(helper.isUpdateDuration());
    helper.incFrameCount();
    doubles::advanceWallClock(119999);
    EXPECT_FALSE(helper.isUpdateDuration());
    helper.incFrameCount();
    doubles::advanceWallClock(1);
    EXPECT_TRUE(helper.isUpdateDuration());
    EXPECT_EQ(helper.mFrameCount, 2U);
    EXPECT_EQ(helper.mUpdateDuration, 120000.0);
    doubles::advanceWallClock(60000);
    helper.resetUpdateDuration();
    EXPECT_EQ(helper.mFrameCount, 0U);
    EXPECT_EQ(helper.mUpdateDuration, 0.0);
    doubles::advanceWallClock(59999);
    EXPECT_FALSE(helper.isUpdateDuration());
    doubles::advanceWallClock(100001);
    EXPECT_TRUE(helper.isUpdateDuration()) << "counted from the last update, not from the reset";
    EXPECT_EQ(helper.mUpdateDuration, 220000.0);
    helper.initUpdateHelper();
    EXPECT_FALSE(helper.isUpdateDuration());
}

TEST(ValueDamper, IsTheMeanOfTheLastWindowAndOneMore) {
    for (const unsigned window : {0U, 1U, 3U, 10U}) {
        utils::ValueDamper damper(window);
        for (int i = 1; i <= 40; ++i) {
            float expected = 0.0F;
            int count = 0;
            for (int k = i; k > 0 && count <= static_cast<int>(window); --k, ++count) {
                expected += static_cast<float>(k);
            }
            EXPECT_FLOAT_EQ(damper.setValueUnclamped(static_cast<float>(i)),
                            expected / static_cast<float>(count))
                << "window " << window << ", value " << i;
            EXPECT_LE(damper.mSamples.size(), window + 1U);
        }
    }
}

TEST(ValueDamper, ClampsOnlyWhenAsked) {
    utils::ValueDamper damper;
    EXPECT_EQ(damper.setValue(1.7F), 1.0F);
    EXPECT_EQ(damper.setValue(-0.2F), 0.5F);
    EXPECT_EQ(damper.setValueUnclamped(3.5F), 1.5F);
    EXPECT_THAT(damper.mSamples, testing::ElementsAre(1, 0, 3.5F));
}

TEST(StringFormat, MeasuresBeforeItFormats) {
    EXPECT_EQ(utils::strFormat(" %d %s ", 3, "120 45"), " 3 120 45 ");
    EXPECT_EQ(utils::strFormat("%s", std::string(5000, 'x').c_str()), std::string(5000, 'x'));
    EXPECT_EQ(utils::strFormat("%s", ""), "");
    EXPECT_EQ(utils::toString(4294967295U), "4294967295");
    EXPECT_EQ(utils::toString(0U), "0");
}

}  // namespace
