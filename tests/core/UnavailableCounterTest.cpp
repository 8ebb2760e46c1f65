#include "core/HWcounterAdreno.h"

#include <gtest/gtest.h>

// The library's own counter source, which has no access to counters.
TEST(UnavailableCounter, HasNothingToGive) {
    core::HWcounter counter;
    unsigned long long number = 5;
    double usage = 5.0;
    EXPECT_EQ(counter.mState, 0);
    EXPECT_FALSE(counter.readGpuActivity(&number, &usage, &usage, &usage));
    EXPECT_TRUE(number == 5 && usage == 5.0) << "nothing is written";
    EXPECT_FALSE(counter.readGpuUsage(&usage) || counter.getCpuGpuTimeDiff(&number));
    EXPECT_TRUE(number == 0 && usage == 0.0);
    counter.mState = 2;
    EXPECT_EQ(counter.init(), 3);
    EXPECT_FALSE(counter.getRealtimeMonotonictimeDiff(&number));
    counter.mState = 1;
    EXPECT_EQ(counter.init(), 1);
    EXPECT_TRUE(counter.getRealtimeMonotonictimeDiff(&number));
    counter.deInit();
    EXPECT_EQ(counter.mState, 0);
}
