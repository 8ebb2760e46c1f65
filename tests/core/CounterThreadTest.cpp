#include "core/HWcounterThread.h"
#include "core/RenderPassInfo.h"
#include "doubles/FakeClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

// A counter source that the test controls stands in the place of the library's own: core::HWcounter is
// defined here.

namespace {

struct Source {
    std::atomic<bool> isReady{true};
    std::atomic<bool> givesSamples{true};
    std::atomic<unsigned> activityReads{0};
    std::atomic<unsigned> deInits{0};
};

Source source;

}  // namespace

namespace core {

HWcounter::HWcounter() : mState(0) {}
HWcounter::~HWcounter() {
    deInit();
}

int HWcounter::init() {
    mState = source.isReady ? 1 : 3;
    return mState;
}

void HWcounter::deInit() {
    if (mState == 1) {
        ++source.deInits;
        mState = 0;
    }
}

bool HWcounter::readGpuUsage(double* usage) {
    *usage = 12.5;
    return mState == 1;
}

bool HWcounter::readGpuActivity(unsigned long long* timestamp, double* usage, double* vertexActivity,
                                double* fragmentActivity) {
    const unsigned read = ++source.activityReads;
    if (!source.givesSamples) {
        return false;
    }
    EXPECT_EQ(*vertexActivity, 0.0);
    EXPECT_EQ(*fragmentActivity, 0.0);
    *timestamp = 1000000ULL * read;
    *usage = read;
    *vertexActivity = 0.25;
    *fragmentActivity = 0.5 / read;
    return true;
}

bool HWcounter::getCpuGpuTimeDiff(unsigned long long* diff) {
    *diff = 111;
    return true;
}

bool HWcounter::getRealtimeMonotonictimeDiff(unsigned long long* diff) {
    *diff = 222;
    return true;
}

}  // namespace core

namespace {

using core::HWcounterThread;
using core::ShaderActivity;

constexpr auto API = static_cast<core::RenderingApiType>(0);

class CounterThread : public testing::Test {
protected:
    CounterThread() {
        source.isReady = true;
        source.givesSamples = true;
        source.activityReads = 0;
    }
    ~CounterThread() override { doubles::releaseWallClock(); }

    static void waitUntilDone(HWcounterThread& counter) {
        for (int i = 0; i < 5000 && counter.mIsCapturing; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ASSERT_FALSE(counter.mIsCapturing);
    }
};

struct LengthCase {
    unsigned long durationMs;
    std::int64_t clockStepUs;
    unsigned samples;
};

class CaptureLength : public CounterThread, public testing::WithParamInterface<LengthCase> {};

// The clock moves on by a fixed step with every reading, so the number of samples is exact.
TEST_P(CaptureLength, DecidesTheNumberOfSamples) {
    doubles::setWallClock(4294967295LL * 3 - 2000);  // wraps in 32 bits on the way
    doubles::setWallClockStep(GetParam().clockStepUs);
    HWcounterThread counter(API);
    counter.startCapturing(GetParam().durationMs);
    waitUntilDone(counter);
    counter.finishCapturing();
    std::vector<ShaderActivity> vertex(3);
    std::vector<ShaderActivity> fragment;
    counter.getGpuActivity(vertex, fragment);
    EXPECT_EQ(vertex.size(), GetParam().samples);
    EXPECT_EQ(fragment.size(), GetParam().samples);
    for (std::size_t i = 0; i < fragment.size(); ++i) {
        EXPECT_DOUBLE_EQ(vertex[i].time, static_cast<double>(i + 1));
        EXPECT_FLOAT_EQ(vertex[i].activity, 0.25F);
        EXPECT_FLOAT_EQ(fragment[i].activity, 0.5F / static_cast<float>(i + 1));
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, CaptureLength,
                         testing::Values(LengthCase{0, 500, 0}, LengthCase{1, 500, 2},
                                         LengthCase{10, 500, 20}, LengthCase{10, 499, 10},
                                         LengthCase{10, 700, 14}, LengthCase{10, 10000, 1},
                                         LengthCase{10, 10001, 0}));

TEST_F(CounterThread, PublishesOnlyWhatWasJoined) {
    HWcounterThread counter(API);
    counter.startCapturing(1000000);
    while (source.activityReads < 3) {
        std::this_thread::yield();
    }
    double usage = -1.0;
    EXPECT_TRUE(counter.getGpuUsage(usage));
    EXPECT_GE(usage, 1.0) << "during a capture, its own running figure";
    EXPECT_EQ(counter.mGpuUsage, 0.0);
    std::vector<ShaderActivity> vertex(1);
    std::vector<ShaderActivity> fragment(1);
    counter.getGpuActivity(vertex, fragment);
    EXPECT_TRUE(vertex.empty() && fragment.empty());

    counter.finishCapturing();
    counter.getGpuActivity(vertex, fragment);
    EXPECT_EQ(vertex.size(), source.activityReads);
    EXPECT_EQ(counter.mGpuUsage, static_cast<double>(source.activityReads));
    EXPECT_TRUE(counter.getGpuUsage(usage));
    EXPECT_EQ(usage, 12.5) << "between captures, the source itself";
    counter.getGpuActivity(counter.mVertexActivity, counter.mFragmentActivity);
    EXPECT_EQ(counter.mVertexActivity.size(), vertex.size()) << "a member handed to itself stays";
}

TEST_F(CounterThread, StartsNothingWhileACaptureRuns) {
    HWcounterThread counter(API);
    counter.startCapturing(1000000);
    const std::thread::id running = counter.mThread.get_id();
    counter.startCapturing(1);
    EXPECT_EQ(counter.mThread.get_id(), running);
    counter.stopCapturing();
    waitUntilDone(counter);
    const unsigned reads = source.activityReads;
    counter.startCapturing(1000000);  // lets go of the ended thread
    while (source.activityReads == reads) {
        std::this_thread::yield();
    }
    counter.joinThread();
    EXPECT_FALSE(counter.mIsCapturing);
    counter.finishCapturing();
    EXPECT_LE(counter.mVertexActivity.size(), source.activityReads - reads);
}

TEST_F(CounterThread, TakesTheClockOffsetOfItsApi) {
    for (const int api : {0, 1, 2}) {
        HWcounterThread counter(static_cast<core::RenderingApiType>(api));
        counter.startCapturing(0);
        waitUntilDone(counter);
        counter.finishCapturing();
        unsigned long long cpuGpu = 9;
        unsigned long long realtime = 9;
        counter.getCpuGpuTimeDiff(&cpuGpu);
        counter.getRealtimeMonotonictimeDiff(&realtime);
        EXPECT_EQ(cpuGpu, api == 1 ? 111U : 0U);
        EXPECT_EQ(realtime, api == 1 ? 0U : 222U);
    }
}

TEST_F(CounterThread, AnUnavailableSourceEndsEveryCapture) {
    source.isReady = false;
    HWcounterThread counter(API);
    double usage = 7.0;
    counter.startCapturing(16);
    counter.finishCapturing();
    EXPECT_EQ(counter.mInitState, 3);
    counter.startCapturing(16);
    EXPECT_FALSE(counter.mIsCapturing);
    EXPECT_FALSE(counter.getGpuUsage(usage));
    EXPECT_EQ(usage, 7.0);
    counter.destroy();
    EXPECT_EQ(counter.mInitState, 0);
    source.isReady = true;
    counter.startCapturing(0);
    counter.finishCapturing();
    EXPECT_EQ(counter.mInitState, 1) << "destroy() forgets that there was none";
}

TEST(RenderPassInfo, CountsWhatItIsGiven) {
    core::RenderPassInfo info;
    info.setRenderPassCount(5);
    EXPECT_EQ(info.getRenderPassCount(), 5);
    EXPECT_TRUE(info.mDrawCallCounts.empty());
    info.reset();
    info.addRenderPassInfo(10, 100);
    info.addRenderPassInfo(20, 200);
    EXPECT_EQ(info.getRenderPassCount(), 2);
    EXPECT_EQ(info.getDrawCallCount(1), 20);
    EXPECT_EQ(info.getPayloadCount(1), 200);
    info.reset();
    EXPECT_EQ(info.getRenderPassCount(), 0);
    EXPECT_TRUE(info.mDrawCallCounts.empty() && info.mPayloadCounts.empty());
}

}  // namespace
