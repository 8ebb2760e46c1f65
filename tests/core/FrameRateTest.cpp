#include "core/StateInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <thread>
#include <vector>

namespace {

/// Feeds one sample of this many frames per second.
float feed(core::StateInfo& state, double fps) {
    return state.getFPS(1, 1000000.0 / fps);
}

/// The median of tenths of a frame per second by sorting: the middle one, or the mean of the middle two.
float medianBySorting(std::vector<float> rates) {
    std::vector<float> tenths;
    for (const float rate : rates) {
        tenths.push_back(std::clamp(std::round(rate * 10.0F), 0.0F, 1200.0F));
    }
    std::sort(tenths.begin(), tenths.end());
    const std::size_t half = tenths.size() / 2;
    const float middle = tenths.size() % 2 == 1 ? tenths[half] : (tenths[half - 1] + tenths[half]) * 0.5F;
    return middle * 0.1F;
}

TEST(FrameRate, IsZeroBeforeTheFirstSample) {
    core::StateInfo state;
    EXPECT_EQ(state.getAverageFPS(), 0.0F);
    EXPECT_EQ(state.getWindowAverageFPS(), 0.0F);
    EXPECT_EQ(state.getMedianFPS(), 0.0F);
    EXPECT_EQ(state.getFpsStability(), 0.0F);
}

TEST(FrameRate, ReturnsFramesPerSecondOfTheInterval) {
    core::StateInfo state;
    EXPECT_FLOAT_EQ(state.getFPS(60, 1000000.0), 60.0F);
    EXPECT_FLOAT_EQ(state.getFPS(3, 50000.0), 60.0F);
    EXPECT_FLOAT_EQ(state.getMedianFPS(), 60.0F);
    EXPECT_FLOAT_EQ(state.getFpsStability(), 100.0F);
}

TEST(FrameRate, CapsTheFiguresButNotTheStatistics) {
    core::StateInfo state;
    state.mMaxFps = 60.0F;
    EXPECT_EQ(state.getFPS(150, 1000000.0), 60.0F);
    EXPECT_EQ(state.getAverageFPS(), 60.0F);
    EXPECT_EQ(state.getWindowAverageFPS(), 60.0F);
    EXPECT_EQ(state.getMaxFPS(), 60.0F);
    EXPECT_EQ(state.mFpsSum, 150.0F);
    EXPECT_EQ(state.mFpsHistogram[1200], 1U);
    EXPECT_FLOAT_EQ(state.getMedianFPS(), 120.0F) << "the median is not capped by the device";
}

TEST(FrameRate, MedianAgreesWithSorting) {
    std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same samples in every run
    for (const double spread : {0.3, 5.0, 70.0}) {
        core::StateInfo state;
        std::vector<float> rates;
        std::uniform_real_distribution<double> rate(std::max(0.5, 50.0 - spread), 50.0 + spread);
        for (int i = 0; i < 400; ++i) {
            const double fps = rate(random);
            feed(state, fps);
            rates.push_back(static_cast<float>(1000000.0 / (1000000.0 / fps)));
            ASSERT_NEAR(state.getMedianFPS(), medianBySorting(rates), 0.001F)
                << "after " << i + 1 << " samples";
        }
    }
}

TEST(FrameRate, StabilityIsTheShareWithinAFifthOfTheMedian) {
    struct Case {
        std::vector<double> samples;
        float stability;
    };
    const Case cases[] = {
        {{60.0, 60.0, 60.0}, 100.0F},
        {{50.0, 50.0, 50.0, 10.0}, 75.0F},
        {{50.0, 50.0, 50.0, 40.0, 60.0}, 100.0F},  // both bounds belong to the range
        {{50.0, 50.0, 50.0, 39.8, 60.2}, 60.0F},
        {{110.0, 110.0, 110.0}, 100.0F},  // the upper bound lies beyond the last bin
    };
    for (const Case& c : cases) {
        core::StateInfo state;
        for (const double sample : c.samples) {
            feed(state, sample);
        }
        EXPECT_NEAR(state.getFpsStability(), c.stability, 0.001F) << testing::PrintToString(c.samples);
    }
}

TEST(FrameRate, WindowIsTheMeanOfTheLastHundred) {
    core::StateInfo state;
    state.mMaxFps = 1000.0F;
    for (int i = 1; i <= 250; ++i) {
        feed(state, i);
        const int first = std::max(1, i - 99);
        ASSERT_NEAR(state.getWindowAverageFPS(), static_cast<float>(first + i) * 0.5F, 0.05F) << i;
    }
    EXPECT_EQ(state.mWindowFpsCount, 100U);
    EXPECT_NEAR(state.getAverageFPS(), 125.5F, 0.05F);
}

TEST(FrameRate, ResetAfterTheRingHasWrappedReadsLowUntilItIsFullAgain) {
    core::StateInfo state;
    for (int i = 0; i < 130; ++i) {
        feed(state, 50.0);
    }
    state.resetFps();
    EXPECT_EQ(state.getWindowAverageFPS(), 0.0F);
    EXPECT_EQ(state.getMedianFPS(), 0.0F);
    for (int i = 1; i <= 100; ++i) {
        feed(state, 50.0);
        ASSERT_NEAR(state.getWindowAverageFPS(), 0.5F * static_cast<float>(i), 0.01F);
    }
    EXPECT_EQ(state.mFpsCount, 100U);
}

TEST(FrameRate, ObjectsOfTwoThreadsShareTheRingsSlotsOnly) {
    std::vector<std::thread> threads;
    for (const unsigned fps : {30U, 60U}) {
        threads.emplace_back([fps] {
            core::StateInfo state;
            for (unsigned i = 1; i <= 2000; ++i) {
                state.getFPS(fps, 1000000.0);
                ASSERT_EQ(state.mFpsCount, i);
            }
            EXPECT_EQ(state.getAverageFPS(), static_cast<float>(fps));
            EXPECT_EQ(state.getMedianFPS(), static_cast<float>(fps));
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(FrameRate, ARequestedResetIsDoneByTheNextSampleOnly) {
    core::StateInfo state;
    feed(state, 30.0);
    core::StateInfo::mIsNeedToResetFps = true;
    feed(state, 60.0);
    feed(state, 60.0);
    EXPECT_FALSE(core::StateInfo::mIsNeedToResetFps);
    EXPECT_EQ(state.mFpsCount, 2U);
    EXPECT_FLOAT_EQ(state.getAverageFPS(), 60.0F);
}

}  // namespace
