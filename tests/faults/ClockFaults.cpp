// A wall clock that is set back and forth under a running overlay.

#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeCounters.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeOstra.h"
#include "doubles/FakeProperties.h"
#include "doubles/FixedPasses.h"
#include "doubles/RecordingFactory.h"
#include "gui/WidgetsSettings.h"
#include "scene/Overlay.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <string>
#include <thread>

namespace faults {
namespace {

constexpr std::int64_t SECOND = 1000000;
constexpr std::int64_t HOUR = 3600 * SECOND;
constexpr std::int64_t YEAR = 365 * 24 * HOUR;
constexpr std::int64_t NOW = 1795557055 * SECOND;
constexpr std::int64_t FRAME = 16000;

class ClockFaults : public testing::Test {
protected:
    ClockFaults() {
        doubles::resetCompanion();
        doubles::setFile("/proc/self/cmdline", "app");
        doubles::setFile("/sys/kernel/gpu/gpu_busy", "37");
        doubles::setWallClock(NOW);
        // Every look at the clock takes a little, or a capture would never be over.
        doubles::setWallClockStep(5);
        for (const auto& [name, value] :
             {std::pair{"status", "true"}, {"proc", "app"}, {"devmode", "true"}, {"widget_memory", "true"}}) {
            doubles::setProperty(std::string("debug.kordanix.") + name, value);
        }
        mOverlay.attach();
    }
    ~ClockFaults() override { doubles::releaseWallClock(); }

    void frame() {
        doubles::advanceWallClock(FRAME);
        doubles::drawCalls().clear();
        mOverlay.beginFrame();
        mOverlay.draw();
        mOverlay.endFrame();
        for (const doubles::DrawCall& call : doubles::drawCalls()) {
            for (const float number : {call.position.x, call.position.y, call.size.x, call.size.y,
                                       call.translation.x, call.translation.y}) {
                ASSERT_LT(std::abs(number), 1000.0F) << call.what;
            }
        }
    }

    void frames(int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_NO_FATAL_FAILURE(frame());
        }
    }

    /// Frames until there are more results of captures than that; false when there are none in time.
    bool waitForResult(unsigned results) {
        for (int i = 0; i < 5000 && mPasses.reads == results; ++i) {
            frame();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return mPasses.reads > results;
    }

    bool capture() {
        doubles::companion().keyEvents = {{25, 1}};
        return waitForResult(mPasses.reads);
    }

    /// Where the first pass of the captured frame is drawn: it moves with the marquee.
    static float marquee() {
        for (const doubles::DrawCall& call : doubles::drawCalls()) {
            if (call.what.rfind(" 0 1000000000", 0) == 0) {
                return call.translation.x + call.position.x;
            }
        }
        return std::numeric_limits<float>::quiet_NaN();
    }

    static unsigned refreshes() { return doubles::timesOpened("/sys/kernel/gpu/gpu_busy"); }

    doubles::RecordingFactory mFactory;
    // Rows that are wider than their widget, so that they run through it.
    doubles::FixedPasses mPasses{4, {1000000000, 1000000000, 1000000000}};
    scene::Overlay mOverlay{mFactory, static_cast<core::RenderingApiType>(0), &mPasses};
};

TEST_F(ClockFaults, FiguresMarqueeCapturesAndDumpsGoOnAfterAJump) {
    ASSERT_NO_FATAL_FAILURE(frames(20));
    ASSERT_TRUE(mOverlay.isShown() && capture());
    doubles::companion().keyEvents = {{24, 1}};
    // A wrap of the microseconds in 32 bits is 2^32.
    for (const std::int64_t jump : {std::int64_t{-1}, -FRAME, -SECOND, -HOUR / 2, -(std::int64_t{1} << 32),
                                    -YEAR, -60 * YEAR, HOUR, std::int64_t{1} << 32, 30 * YEAR}) {
        SCOPED_TRACE(jump);
        doubles::setWallClock(NOW);
        ASSERT_NO_FATAL_FAILURE(frames(20));
        const std::size_t dumped = doubles::companion().dumps.size();

        // A capture of a second, as long as the frame before it, and the jump in the middle of it.
        const unsigned reads = doubles::counters().reads;
        const unsigned results = mPasses.reads;
        doubles::advanceWallClock(SECOND);
        doubles::companion().keyEvents = {{25, 1}};
        doubles::setWallClockStep(0);  // only so fast that it is not over yet
        ASSERT_NO_FATAL_FAILURE(frame());
        while (doubles::counters().reads == reads) {
            doubles::advanceWallClock(600);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        doubles::advanceWallClock(jump);
        ASSERT_NO_FATAL_FAILURE(frame());
        EXPECT_EQ(doubles::companion().dumps.size(), dumped + 2);
        EXPECT_TRUE(waitForResult(results)) << "the capture is not over";
        doubles::setWallClockStep(5);

        // At the latest an interval after the jump, and from then on in the same rhythm.
        unsigned before = refreshes();
        ASSERT_NO_FATAL_FAILURE(frames(9));
        EXPECT_GT(refreshes(), before);
        before = refreshes();
        ASSERT_NO_FATAL_FAILURE(frames(80));
        EXPECT_GE(refreshes(), before + 9);
        EXPECT_LE(refreshes(), before + 11);

        ASSERT_TRUE(capture());
        ASSERT_NO_FATAL_FAILURE(frames(2));
        const float start = marquee();
        ASSERT_NO_FATAL_FAILURE(frames(120));
        EXPECT_LT(marquee(), start);
    }
    const auto& dumps = doubles::companion().dumps;
    EXPECT_EQ(dumps.back().frameNumber, core::StateInfo::mFrameNumber);
    EXPECT_EQ(dumps.back().frameNumber - dumps.front().frameNumber + 1, dumps.size());
}

// A capture ends by the clock; when that stands still, the layer's end is its end as well.
TEST_F(ClockFaults, AClockThatStandsStillHoldsNothingUp) {
    ASSERT_NO_FATAL_FAILURE(frames(20));
    ASSERT_TRUE(capture());
    doubles::setWallClockStep(0);
    doubles::companion().keyEvents = {{25, 1}};
    const unsigned before = refreshes();
    for (int i = 0; i < 500; ++i) {
        doubles::advanceWallClock(-FRAME);
        ASSERT_NO_FATAL_FAILURE(frame());
    }
    EXPECT_LE(refreshes(), before + 1);
    mOverlay.detach();
}

}  // namespace
}  // namespace faults
