#include "core/KeyEventInterceptor.h"
#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeOstra.h"
#include "doubles/Settings.h"
#include "drawers/Drawer.h"
#include "gui/WidgetsSettings.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>

namespace {

using core::StateInfo;
using testing::ElementsAre;

constexpr auto API = static_cast<core::RenderingApiType>(0);
constexpr Ostra::KeyEvent DUMP_KEY{24, 1};
constexpr Ostra::KeyEvent CAPTURE_KEY{25, 1};

/// Writes its number of the dump into a slot of its own.
struct CountingDrawer : drawer::Drawer {
    explicit CountingDrawer(std::size_t ownSlot) : slot(ownSlot) {}
    void draw() override { ADD_FAILURE() << "the hooks never draw"; }
    void dump(Ostra::FrameDump& frame) override { frame.values[slot].intValue = ++dumps; }
    void clear() override { ++clears; }
    std::size_t slot;
    std::uint64_t dumps = 0;
    int clears = 0;
};

class FrameHooks : public testing::Test {
protected:
    FrameHooks() {
        doubles::setFile("/proc/self/cmdline", "app");
        doubles::set({{"status", "true"}, {"proc", "app"}, {"devmode", "true"}, {"fixclock", "true"}});
        StateInfo::mIsWidgetsUpdated = true;  // as at the start of the process
        frame();
    }
    ~FrameHooks() override { StateInfo::onDetached(); }

    static void frame(std::vector<Ostra::KeyEvent> keys = {},
                      const std::vector<drawer::Drawer*>& drawers = {}) {
        doubles::companion().keyEvents = std::move(keys);
        StateInfo::onPreSwapBuffers(API);
        StateInfo::onPostSwapBuffers(drawers);
    }

    static inline std::vector<std::string>& calls = doubles::companion().calls;
};

TEST_F(FrameHooks, TheFirstFrameCountsAsAChangeAndReappliesTheClocks) {
    EXPECT_EQ(StateInfo::getFixClockState(), 1);
    frame();
    EXPECT_FALSE(StateInfo::isWidgetsUpdated());
    EXPECT_THAT(calls, ElementsAre("fixClock")) << "no change, no request";
}

TEST_F(FrameHooks, APublicationReachesTheFrameOnce) {
    frame();
    doubles::setProperty("debug.kordanix.settingsgeneration", "1");
    // The watcher looks for the property once a second.
    ASSERT_TRUE(support::waitUntil([] {
        if (!StateInfo::isWidgetsUpdated()) {
            StateInfo::onPreSwapBuffers(API);
        }
        return StateInfo::isWidgetsUpdated();
    }));
    EXPECT_EQ(calls.back(), "fixClock");
    StateInfo::onPreSwapBuffers(API);
    EXPECT_FALSE(StateInfo::isWidgetsUpdated());
}

TEST_F(FrameHooks, AChangeWhileTheOverlayIsOffReleasesTheClocks) {
    doubles::set({{"status", "false"}});
    gui::WidgetsSettings::wasChanged = true;
    StateInfo::onPreSwapBuffers(API);
    EXPECT_EQ(calls.back(), "unfixClock");
    EXPECT_EQ(StateInfo::getFixClockState(), 0);
    StateInfo::invalidateWidgets();
    EXPECT_TRUE(StateInfo::isWidgetsUpdated());
    StateInfo::onPreSwapBuffers(API);
    EXPECT_FALSE(StateInfo::isWidgetsUpdated()) << "until the next frame only";
}

TEST_F(FrameHooks, KeysAreFlagsOfTheLastPoll) {
    const struct {
        std::vector<Ostra::KeyEvent> events;
        bool dump, capture;
    } cases[] = {
        {{DUMP_KEY, {24, 0}, CAPTURE_KEY, {25, 0}}, true, true},
        {{{24, 0}, {25, 0}, {24, 2}, {26, 1}, {-24, 1}}, false, false},
        {{CAPTURE_KEY}, false, true},
    };
    KeyEventInterceptor* const keys = KeyEventInterceptor::getInstance();
    for (const auto& c : cases) {
        doubles::companion().keyEvents = c.events;
        keys->updateState();
        EXPECT_TRUE(keys->mIsDumpKeyPressed == c.dump && keys->mIsCaptureKeyPressed == c.capture);
        EXPECT_EQ(StateInfo::isNeedToCaptureData(), c.capture);
    }
    doubles::set({{"devmode", "false"}});
    EXPECT_FALSE(StateInfo::isNeedToCaptureData()) << "developer mode only";
    doubles::set({{"status", "false"}});
    frame({DUMP_KEY});
    EXPECT_EQ(doubles::companion().keyEvents.size(), 1U) << "no poll while the overlay is off";
    EXPECT_TRUE(keys->mIsCaptureKeyPressed) << "the flags keep their values";
    frame();
}

TEST_F(FrameHooks, ADumpHoldsTheFramesAfterTheFirstPressUpToTheSecond) {
    doubles::set({{"devmode", "false"}});
    frame({DUMP_KEY});
    EXPECT_FALSE(StateInfo::isDumpingEnabled()) << "developer mode only, to start";
    doubles::set({{"devmode", "true"}});
    CountingDrawer first(0);
    CountingDrawer second(7);
    CountingDrawer third(7);  // writes the same slot later and wins
    const std::vector<drawer::Drawer*> drawers = {&first, &second, &third};
    calls.clear();
    frame({DUMP_KEY}, drawers);
    const std::uint64_t start = StateInfo::mFrameNumber;
    EXPECT_TRUE(StateInfo::isDumpingEnabled() && StateInfo::mIsNeedToResetFps);
    EXPECT_EQ(doubles::companion().metas.size(), gui::gWidgetsMeta.size());
    third.dumps = 40;

    doubles::setWallClock(1700000000123999);
    frame({}, drawers);
    doubles::set({{"devmode", "false"}});
    frame({DUMP_KEY}, drawers);
    EXPECT_TRUE(StateInfo::isDumpingEnabled());
    doubles::set({{"devmode", "true"}});
    frame({DUMP_KEY}, drawers);
    frame({}, drawers);
    doubles::releaseWallClock();

    EXPECT_FALSE(StateInfo::isDumpingEnabled());
    EXPECT_TRUE(first.clears == 1 && third.clears == 1) << "cleared at the start alone";
    EXPECT_THAT(calls, ElementsAre("startDumping", "addDump", "addDump", "addDump", "finishDumping"));
    for (std::size_t i = 0; i < 3; ++i) {
        const Ostra::FrameDump& dump = doubles::companion().dumps.at(i);
        EXPECT_EQ(dump.frameNumber, start + 1 + i);
        EXPECT_EQ(dump.timestampMs, 1700000000123);
        EXPECT_TRUE(dump.renderPassFrameId == 0 && dump.frameDuration == 0.0F && dump.reserved == 0);
        ASSERT_EQ(dump.values.size(), 11U);
        EXPECT_EQ(dump.values[0].intValue, i + 1);
        EXPECT_EQ(dump.values[1].intValue, 0U) << "an untouched slot is all zero";
        EXPECT_EQ(dump.values[7].intValue, 41 + i);
    }
}

}  // namespace
