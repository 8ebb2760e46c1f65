#include "core/HWcounterAdreno.h"

#include <gtest/gtest.h>

// The library's own counter source, which has no access to counters.
TEST(UnavailableCounter, HasNothingToGive) {
    core::HWcounter counter;
    EXPECT_EQ(counter.mState, 0);
    unsigned long long number = 5;
    double usage = 5.0;
    double untouched = 5.0;
    EXPECT_FALSE(counter.readGpuActivity(&number, &untouched, &untouched, &untouched));
    EXPECT_EQ(number, 5U);
    EXPECT_FALSE(counter.readGpuUsage(&usage));
    EXPECT_EQ(usage, 0.0);
    EXPECT_FALSE(counter.getCpuGpuTimeDiff(&number));
    EXPECT_EQ(number, 0U);
    counter.mState = 2;
    EXPECT_EQ(counter.init(), 3);
    number = 5;
    EXPECT_FALSE(counter.getRealtimeMonotonictimeDiff(&number));
    EXPECT_EQ(number, 0U);
    counter.mState = 1;
    EXPECT_EQ(counter.init(), 1);
    EXPECT_TRUE(counter.getRealtimeMonotonictimeDiff(&number));
    counter.deInit();
    EXPECT_EQ(counter.mState, 0);
}
