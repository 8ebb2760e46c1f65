#include "core/HWcounterThread.h"

#include <gtest/gtest.h>

#include <vector>

// The library's own counter source, which has no access to counters.

namespace {

TEST(UnavailableCounter, HasNothingToGive) {
    core::HWcounter counter;
    EXPECT_EQ(counter.mState, 0);
    unsigned long long number = 5;
    double usage = 5.0;
    double vertex = 5.0;
    double fragment = 5.0;
    EXPECT_FALSE(counter.readGpuActivity(&number, &usage, &vertex, &fragment));
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

TEST(UnavailableCounter, LeavesACaptureEmpty) {
    core::HWcounterThread counter(static_cast<core::RenderingApiType>(1));
    counter.startCapturing(16);
    counter.finishCapturing();
    counter.startCapturing(16);
    counter.finishCapturing();
    std::vector<core::ShaderActivity> vertex(2);
    std::vector<core::ShaderActivity> fragment(2);
    counter.getGpuActivity(vertex, fragment);
    EXPECT_TRUE(vertex.empty() && fragment.empty());
    double usage = 3.0;
    EXPECT_FALSE(counter.getGpuUsage(usage));
    EXPECT_EQ(counter.mGpuUsage, 0.0);
}

}  // namespace
