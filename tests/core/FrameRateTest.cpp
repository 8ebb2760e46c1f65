#include "core/StateInfo.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>
#include <thread>

namespace {

/// Feeds one sample of this many frames per second.
void feed(core::StateInfo& state, double fps) {
    state.getFPS(1, 1000000.0 / fps);
}

TEST(FrameRate, MedianAgreesWithSorting) {
    std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same samples in every run
    for (const double spread : {0.3, 5.0, 70.0}) {
        core::StateInfo state;
        std::vector<float> tenths;
        std::uniform_real_distribution<double> rate(std::max(0.5, 50.0 - spread), 50.0 + spread);
        for (std::size_t count = 1; count <= 400; ++count) {
            const double fps = rate(random);
            feed(state, fps);
            tenths.push_back(std::min(std::round(static_cast<float>(fps) * 10.0F), 1200.0F));
            std::sort(tenths.begin(), tenths.end());
            const float median = (tenths[(count - 1) / 2] + tenths[count / 2]) * 0.05F;
            ASSERT_NEAR(state.getMedianFPS(), median, 0.001F) << "after " << count;
        }
    }
}

TEST(FrameRate, StabilityIsTheShareWithinAFifthOfTheMedianAndTheDeviceCapsTheFigures) {
    core::StateInfo state;
    for (const double fps : {50.0, 50.0, 50.0, 40.0, 60.0, 39.8, 60.2}) {  // both bounds belong to the range
        feed(state, fps);
    }
    EXPECT_NEAR(state.getFpsStability(), 500.0F / 7.0F, 0.001F);
    state.mMaxFps = 45.0F;
    EXPECT_EQ(state.getAverageFPS(), 45.0F);
    EXPECT_FLOAT_EQ(state.getMedianFPS(), 50.0F);
}

TEST(FrameRate, WindowIsTheLastHundredAndReadsLowAfterAResetUntilItIsFullAgain) {
    core::StateInfo state;
    state.mMaxFps = 1000.0F;
    for (int i = 1; i <= 250; ++i) {
        feed(state, i);
        const int first = std::max(1, i - 99);
        ASSERT_NEAR(state.getWindowAverageFPS(), static_cast<float>(first + i) * 0.5F, 0.05F) << i;
    }
    core::StateInfo::mIsNeedToResetFps = true;
    for (int i = 1; i <= 100; ++i) {
        feed(state, 50.0);
        ASSERT_EQ(state.mFpsCount, static_cast<unsigned>(i)) << "reset once, by the first";
        ASSERT_NEAR(state.getWindowAverageFPS(), 0.5F * static_cast<float>(i), 0.01F);
        ASSERT_FLOAT_EQ(state.getMedianFPS(), 50.0F);
    }
    EXPECT_FLOAT_EQ(state.getAverageFPS(), 50.0F);
}

TEST(FrameRate, ObjectsOfTwoThreadsShareTheRingsSlotsOnly) {
    const auto measure = [](unsigned fps) {
        core::StateInfo state;
        for (unsigned i = 1; i <= 2000; ++i) {
            state.getFPS(fps, 1000000.0);
        }
        EXPECT_EQ(state.getAverageFPS(), static_cast<float>(fps));
        EXPECT_EQ(state.getMedianFPS(), static_cast<float>(fps));
    };
    std::thread other(measure, 30);
    measure(60);
    other.join();
}

}  // namespace
