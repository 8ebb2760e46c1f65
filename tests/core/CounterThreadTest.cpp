#include "core/HWcounterThread.h"
#include "core/RenderPassInfo.h"
#include "doubles/Emulator.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeCounters.h"
#include "doubles/FakeThreads.h"
#include "support/ChildProcess.h"
#include "support/Threads.h"

#include <gmock/gmock.h>

#include <system_error>
#include <thread>

// Of AskingCounters.cpp.
namespace core {
extern const std::string askedProperty;
}  // namespace core

namespace {

using core::HWcounterThread;
using core::ShaderActivity;

class CounterThread : public testing::Test {
protected:
    CounterThread() { source.reads = source.failingRead = 0; }
    ~CounterThread() override { doubles::releaseWallClock(); }

    /// A capture that ends by itself.
    static void capture(HWcounterThread& capture, unsigned long durationMs) {
        capture.startCapturing(durationMs);
        ASSERT_TRUE(support::waitUntil([&] { return !capture.mIsCapturing; }));
        capture.finishCapturing();
    }
    static void waitForReads(unsigned count) {
        ASSERT_TRUE(support::waitUntil([&] { return source.reads >= count; }));
    }

    static inline doubles::Counters& source = doubles::counters();
    HWcounterThread counter{static_cast<core::RenderingApiType>(0)};
    std::vector<ShaderActivity> vertex{3};
    std::vector<ShaderActivity> fragment;
};

// The clock moves on by a fixed step with every reading, so the number of samples is exact.
TEST_F(CounterThread, TheDurationDecidesTheNumberOfSamples) {
    const struct {
        unsigned long durationMs;
        std::int64_t clockStepUs;
        unsigned failingRead, samples;
    } cases[] = {{0, 500, 0, 0},    {10, 500, 0, 20},  {10, 499, 0, 10}, {10, 700, 0, 14},
                 {10, 10000, 0, 1}, {10, 10001, 0, 0}, {10, 500, 5, 4}};
    for (const auto& length : cases) {
        SCOPED_TRACE(length.clockStepUs);
        source.reads = 0;
        source.failingRead = length.failingRead;         // the capture ends without memory
        doubles::setWallClock(4294967295LL * 3 - 2000);  // wraps in 32 bits on the way
        doubles::setWallClockStep(length.clockStepUs);
        capture(counter, length.durationMs);
        counter.getGpuActivity(vertex, fragment);
        ASSERT_TRUE(vertex.size() == length.samples && fragment.size() == length.samples);
        for (std::size_t i = 0; i < fragment.size(); ++i) {
            EXPECT_DOUBLE_EQ(vertex[i].time, static_cast<double>(i + 1));
            EXPECT_FLOAT_EQ(vertex[i].activity, 0.25F);
            EXPECT_FLOAT_EQ(fragment[i].activity, 0.5F / static_cast<float>(i + 1));
        }
    }
}

TEST_F(CounterThread, PublishesOnlyWhatWasJoined) {
    counter.startCapturing(1000000);
    waitForReads(3);
    double usage = -1.0;
    EXPECT_TRUE(counter.getGpuUsage(usage));
    EXPECT_GE(usage, 1.0) << "during a capture, its own running figure";
    EXPECT_EQ(counter.mGpuUsage, 0.0);
    counter.getGpuActivity(vertex, fragment);
    EXPECT_TRUE(vertex.empty() && fragment.empty());
    if (!doubles::isEmulated()) {
        EXPECT_EQ(support::blockedSignals()["kordanix-gpu"], support::ALL_SIGNALS);
    }

    counter.finishCapturing();
    counter.getGpuActivity(vertex, fragment);
    EXPECT_EQ(vertex.size(), source.reads);
    EXPECT_EQ(counter.mGpuUsage, static_cast<double>(source.reads));
    EXPECT_TRUE(counter.getGpuUsage(usage) && usage == 12.5) << "between captures, the source itself";
    counter.getGpuActivity(counter.mVertexActivity, counter.mFragmentActivity);
    EXPECT_EQ(counter.mVertexActivity.size(), vertex.size()) << "a member handed to itself stays";
}

TEST_F(CounterThread, StartsNothingWhileACaptureRunsAndTellsWhenThereIsNoThread) {
    doubles::refusedThreads() = 1;
    EXPECT_THROW(counter.startCapturing(1), std::system_error);
    EXPECT_FALSE(counter.mIsCapturing);
    counter.startCapturing(1000000);
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGTERM), 0) << "the caller's signals are as they were";
    const std::thread::id running = counter.mThread.get_id();
    counter.startCapturing(1);
    EXPECT_EQ(counter.mThread.get_id(), running);
    counter.stopCapturing();
    ASSERT_TRUE(support::waitUntil([&] { return !counter.mIsCapturing; }));
    const unsigned reads = source.reads;
    counter.startCapturing(1000000);  // lets go of the ended thread
    waitForReads(reads + 1);
    counter.finishCapturing();
    EXPECT_FALSE(counter.mIsCapturing);
    EXPECT_EQ(counter.mVertexActivity.size(), source.reads - reads) << "nothing of the one before";
}

TEST_F(CounterThread, TakesTheClockOffsetOfItsApi) {
    for (const int api : {0, 1, 2}) {
        HWcounterThread other(static_cast<core::RenderingApiType>(api));
        capture(other, 0);
        unsigned long long cpuGpu = 9;
        unsigned long long realtime = 9;
        other.getCpuGpuTimeDiff(&cpuGpu);
        other.getRealtimeMonotonictimeDiff(&realtime);
        EXPECT_TRUE(cpuGpu == (api == 1 ? 111 : 0) && realtime == (api == 1 ? 0 : 222)) << api;
    }
}

TEST_F(CounterThread, AnUnavailableSourceEndsEveryCapture) {
    source.isReady = false;
    double usage = 7.0;
    capture(counter, 16);
    EXPECT_EQ(counter.mInitState, 3);
    counter.startCapturing(16);
    EXPECT_FALSE(counter.mIsCapturing);
    EXPECT_FALSE(counter.getGpuUsage(usage));
    EXPECT_TRUE(usage == 7.0 && counter.mVertexActivity.empty());
    counter.destroy();
    source.isReady = true;
    capture(counter, 0);
    EXPECT_EQ(counter.mInitState, 1) << "destroy() forgets that there was none";
}

TEST(ControlProperties, AreThereWhileASourceOfCountersIsLoaded) {
    EXPECT_EQ(core::askedProperty, "debug.kordanix.status");
}

TEST(RenderPassInfo, CountsWhatItIsGiven) {
    core::RenderPassInfo info;
    info.setRenderPassCount(5);
    info.addRenderPassInfo(20, 200);
    EXPECT_TRUE(info.getRenderPassCount() == 6 && info.getDrawCallCount(0) == 20);
    info.reset();
    EXPECT_TRUE(info.getRenderPassCount() == 0 && info.mDrawCallCounts.empty() &&
                info.mPayloadCounts.empty());
}

}  // namespace
