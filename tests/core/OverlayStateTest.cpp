#include "core/BaseLayer.h"
#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeOstra.h"
#include "doubles/Settings.h"

#include <gmock/gmock.h>

#include <mutex>
#include <thread>

namespace {

using core::StateInfo;
using testing::ElementsAre;

constexpr auto SOME_API = static_cast<core::RenderingApiType>(2);
constexpr const char* COMMAND_LINE = "/proc/self/cmdline";

TEST(BaseLayer, AttachAndDetachTakeTurns) {
    struct : core::BaseLayer {
        void onAttach() override { calls += 'a'; }
        void onDetach() override { calls += 'd'; }
        std::string calls;
    } layer;
    for (const bool isAttached : {false, true, true, false, false, true}) {
        isAttached ? layer.attach() : layer.detach();
    }
    EXPECT_EQ(layer.calls, "ada");
}

class OverlaySwitch : public testing::Test {
protected:
    OverlaySwitch() {
        doubles::resetCompanion();
        doubles::setFile(COMMAND_LINE, "com.example.app");
        doubles::set({{"status", "false"}, {"api", "9"}, {"proc", "nobody"}});
        // Set but not published: the first question of the process reads it.
        doubles::setProperty("debug.kordanix.status", "true");
        doubles::setProperty("debug.kordanix.api", "2");
        doubles::setProperty("debug.kordanix.proc", "com.example.app");
    }
};

TEST(OverlayDefaults, LeaveItOffForEveryApi) {
    for (int api = 0; api < 4; ++api) {
        EXPECT_FALSE(StateInfo::isOverlayEnabled(static_cast<core::RenderingApiType>(api)));
    }
}

TEST_F(OverlaySwitch, SimultaneousFirstQuestionsAllReadWhatWasSetSinceLoad) {
    std::vector<std::thread> threads;
    std::vector<char> answers(8, 0);
    for (char& answer : answers) {
        threads.emplace_back([&answer] { answer = StateInfo::isOverlayEnabled(SOME_API) ? 1 : 0; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(answers, testing::Each(1));
    doubles::setProperty("debug.kordanix.status", "false");
    EXPECT_TRUE(StateInfo::isOverlayEnabled(SOME_API)) << "not published";
}

TEST_F(OverlaySwitch, NeedsStatusApiAndProcessToAgree) {
    const struct {
        const char *status, *api, *process, *commandLine;
        bool isOn;
    } cases[] = {
        {"true", "2", "com.example.app", "com.example.app", true},
        {"true", "2", "com.example.ap", "com.example.app", false},
        {"true", "2", "com.example.app ", "com.example.app", false},  // the property is not trimmed,
        {"true", "2", "com.example.app", " com.example.app ", true},  // the command line is
        {"true", "2", "", "", true},
    };
    StateInfo::isOverlayEnabled(SOME_API);
    for (const auto& c : cases) {
        doubles::setFile(COMMAND_LINE, c.commandLine);
        doubles::set({{"status", c.status}, {"api", c.api}, {"proc", c.process}});
        EXPECT_EQ(StateInfo::isOverlayEnabled(SOME_API), c.isOn) << &c - cases;
    }
}

TEST_F(OverlaySwitch, AttachFixesOrReleasesTheClocksWhetherOnOrOff) {
    std::mutex mutex;
    const struct {
        const char* fixClock;
        bool isPossible;
        const char* call;
        int state;
    } cases[] = {
        {"false", true, "unfixClock", 0}, {"true", true, "fixClock", 1}, {"true", false, "fixClock", 2}};
    for (const auto& c : cases) {
        doubles::resetCompanion();
        doubles::companion().fixClockResult = c.isPossible;
        doubles::set({{"fixclock", c.fixClock}, {"status", "false"}});
        StateInfo::onAttached(mutex);
        EXPECT_THAT(doubles::companion().calls, ElementsAre("registerAppBecomeBackgroundListener", c.call));
        EXPECT_EQ(StateInfo::getFixClockState(), c.state);
    }
}

TEST_F(OverlaySwitch, BackgroundAndDetachEndTheDumpOnceTheFirstUnderTheLayersMutex) {
    std::mutex mutex;
    StateInfo::onAttached(mutex);
    ASSERT_EQ(doubles::companion().listeners.size(), 1U);
    StateInfo::mIsDumpingEnabled = true;
    StateInfo::mFixClockState = 1;
    doubles::companion().calls.clear();
    mutex.lock();
    std::thread background(doubles::companion().listeners[0]);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(StateInfo::isDumpingEnabled()) << "waits for the mutex";
    mutex.unlock();
    background.join();
    EXPECT_EQ(StateInfo::getFixClockState(), 0);
    EXPECT_TRUE(mutex.try_lock()) << "and gives it back";
    mutex.unlock();
    StateInfo::mIsDumpingEnabled = true;
    StateInfo::onDetached();
    StateInfo::onDetached();
    EXPECT_THAT(doubles::companion().calls,
                ElementsAre("finishDumping", "unfixClock", "finishDumping", "unfixClock", "unfixClock"));
}

}  // namespace
