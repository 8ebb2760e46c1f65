#include "doubles/FakeClock.h"
#include "utils/StringFormat.h"
#include "utils/Time.h"
#include "utils/UpdateHelper.h"
#include "utils/ValueDamper.h"

#include <gmock/gmock.h>

namespace {

TEST(Clock, AnUpdateIsDueEvery120Milliseconds) {
    doubles::setWallClock(4294967296 * 5 - 50000);  // wraps within the first interval
    EXPECT_EQ(utils::getUtcTime_usec(), 4294917296U);
    EXPECT_EQ(utils::getUtcTime_msec(), 21474786U);
    EXPECT_EQ(utils::getUtcTimes_sec(), 21474U);
    UpdateHelper helper;
    // Microseconds that pass, and how long the update that is due then has taken.
    const std::pair<std::int64_t, double> steps[] = {
        {0, 0}, {119999, 0}, {1, 120000}, {119999, 0}, {100001, 220000}};
    for (const auto& [passed, duration] : steps) {
        doubles::advanceWallClock(passed);
        helper.incFrameCount();
        EXPECT_EQ(helper.isUpdateDuration(), duration > 0);
        EXPECT_EQ(helper.mUpdateDuration, duration);
        if (duration > 0) {
            EXPECT_EQ(helper.mFrameCount, duration == 120000 ? 3U : 2U);
            helper.resetUpdateDuration();
        }
    }
    doubles::releaseWallClock();
}

TEST(ValueDamper, IsTheMeanOfTheLastWindowAndOneMore) {
    for (const int window : {0, 1, 3}) {
        utils::ValueDamper damper(static_cast<unsigned>(window));
        for (int i = 1; i <= 20; ++i) {
            const int first = std::max(1, i - window);
            EXPECT_FLOAT_EQ(damper.setValueUnclamped(static_cast<float>(i)),
                            static_cast<float>(first + i) * 0.5F)
                << "window " << window << ", value " << i;
        }
    }
    utils::ValueDamper clamping;
    EXPECT_EQ(clamping.setValue(1.7F), 1.0F);
    EXPECT_EQ(clamping.setValue(-0.2F), 0.5F);
}

TEST(StringFormat, MeasuresBeforeItFormats) {
    EXPECT_EQ(utils::strFormat("%s", std::string(5000, 'x').c_str()), std::string(5000, 'x'));
    EXPECT_EQ(utils::strFormat("%s", ""), "");
    EXPECT_EQ(utils::toString(4294967295U), "4294967295");
}

}  // namespace
