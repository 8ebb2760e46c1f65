#include "core/BaseLayer.h"
#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeOstra.h"
#include "doubles/FakeProperties.h"

#include "core/SysPropWatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using core::StateInfo;
using testing::ElementsAre;

constexpr auto API = static_cast<core::RenderingApiType>(2);
constexpr auto OTHER_API = static_cast<core::RenderingApiType>(1);
constexpr const char* COMMAND_LINE = "/proc/self/cmdline";

class CountingLayer : public core::BaseLayer {
public:
    CountingLayer() { mIsAttached = false; }
    void onAttach() override { ++attached; }
    void onDetach() override { ++detached; }
    int attached = 0;
    int detached = 0;
};

TEST(BaseLayer, AttachAndDetachTakeTurns) {
    CountingLayer layer;
    layer.detach();
    EXPECT_EQ(layer.detached, 0);
    layer.attach();
    layer.attach();
    EXPECT_EQ(layer.attached, 1);
    layer.detach();
    layer.detach();
    layer.attach();
    EXPECT_EQ(layer.attached, 2);
    EXPECT_EQ(layer.detached, 1);
}

class OverlaySwitch : public testing::Test {
protected:
    OverlaySwitch() {
        doubles::resetCompanion();
        doubles::setFile(COMMAND_LINE, "com.example.app");
        publish("true", "2", "com.example.app");
    }
    static void publish(const std::string& status, const std::string& api, const std::string& process) {
        doubles::setProperty("debug.kordanix.status", status);
        doubles::setProperty("debug.kordanix.api", api);
        doubles::setProperty("debug.kordanix.proc", process);
        SysPropWatcher::forceReadAllProps();
    }
};

TEST(OverlayDefaults, LeaveItOffForEveryApi) {
    for (int api = 0; api < 4; ++api) {
        EXPECT_FALSE(StateInfo::isOverlayEnabled(static_cast<core::RenderingApiType>(api)));
    }
}

TEST(OverlayDefaults, TheFirstQuestionReadsWhatWasSetSinceLoad) {
    doubles::setFile(COMMAND_LINE, "app");
    doubles::setProperty("debug.kordanix.status", "true");
    doubles::setProperty("debug.kordanix.proc", "app");
    EXPECT_TRUE(StateInfo::isOverlayEnabled(static_cast<core::RenderingApiType>(0)));
    doubles::setProperty("debug.kordanix.status", "false");
    EXPECT_TRUE(StateInfo::isOverlayEnabled(static_cast<core::RenderingApiType>(0))) << "not published";
}

TEST_F(OverlaySwitch, NeedsStatusApiAndProcessToAgree) {
    struct Case {
        const char* status;
        const char* api;
        const char* process;
        const char* commandLine;
        bool isOn;
    };
    const Case cases[] = {
        {"true", "2", "com.example.app", "com.example.app", true},
        {"false", "2", "com.example.app", "com.example.app", false},
        {"true", "1", "com.example.app", "com.example.app", false},
        {"true", "2", "com.example.ap", "com.example.app", false},
        {"true", "2", "com.example.apps", "com.example.app", false},
        {"true", "2", "Com.Example.App", "com.example.app", false},
        {"true", "2", "com.example.app ", "com.example.app", false},  // the property is not trimmed,
        {"true", "2", "com.example.app", " com.example.app ", true},  // the command line is
        {"true", "2", "", "", true},
        {"true", "4294967298", "com.example.app", "com.example.app", true},
    };
    StateInfo::isOverlayEnabled(API);
    for (const Case& c : cases) {
        doubles::setFile(COMMAND_LINE, c.commandLine);
        publish(c.status, c.api, c.process);
        EXPECT_EQ(StateInfo::isOverlayEnabled(API), c.isOn)
            << c.status << " " << c.api << " '" << c.process << "' '" << c.commandLine << "'";
        EXPECT_FALSE(StateInfo::isOverlayEnabled(OTHER_API) && c.isOn);
    }
    doubles::removeFile(COMMAND_LINE);
    publish("true", "2", "");
    EXPECT_TRUE(StateInfo::isOverlayEnabled(API)) << "a process without a name matches an empty property";
}

TEST_F(OverlaySwitch, CachesNothingAndOpensNothingWhileOff) {
    ASSERT_TRUE(StateInfo::isOverlayEnabled(API));
    doubles::setFile(COMMAND_LINE, "com.example.other");
    EXPECT_FALSE(StateInfo::isOverlayEnabled(API));
    publish("false", "2", "com.example.other");
    const unsigned opened = doubles::timesOpened(COMMAND_LINE);
    EXPECT_FALSE(StateInfo::isOverlayEnabled(API));
    EXPECT_FALSE(StateInfo::isOverlayEnabled(OTHER_API));
    EXPECT_EQ(doubles::timesOpened(COMMAND_LINE), opened);
}

TEST(OverlayStart, SimultaneousFirstQuestionsAllSeeThePropertiesRead) {
    doubles::setFile(COMMAND_LINE, "app");
    doubles::setProperty("debug.kordanix.status", "true");
    doubles::setProperty("debug.kordanix.proc", "app");
    std::vector<std::thread> threads;
    std::vector<char> answers(8, 0);
    for (std::size_t i = 0; i < answers.size(); ++i) {
        threads.emplace_back([&answers, i] {
            answers[i] = StateInfo::isOverlayEnabled(static_cast<core::RenderingApiType>(0)) ? 1 : 0;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(answers, testing::Each(1));
}

TEST_F(OverlaySwitch, AttachFixesOrReleasesTheClocks) {
    std::mutex mutex;
    doubles::setProperty("debug.kordanix.fixclock", "false");
    SysPropWatcher::forceReadAllProps();
    StateInfo::onAttached(mutex);
    EXPECT_THAT(doubles::companion().calls, ElementsAre("registerAppBecomeBackgroundListener", "unfixClock"));
    EXPECT_EQ(StateInfo::getFixClockState(), 0);

    publish("false", "9", "nobody");  // the overlay's switch is not asked
    doubles::setProperty("debug.kordanix.fixclock", "true");
    SysPropWatcher::forceReadAllProps();
    doubles::resetCompanion();
    doubles::companion().fixClockResult = false;
    StateInfo::onAttached(mutex);
    EXPECT_THAT(doubles::companion().calls, ElementsAre("registerAppBecomeBackgroundListener", "fixClock"));
    EXPECT_EQ(StateInfo::getFixClockState(), 2);
}

TEST_F(OverlaySwitch, BackgroundEndsTheDumpUnderTheLayersMutex) {
    std::mutex mutex;
    StateInfo::onAttached(mutex);
    ASSERT_EQ(doubles::companion().listeners.size(), 1U);
    const std::function<void()> listener = doubles::companion().listeners[0];

    StateInfo::mIsDumpingEnabled = true;
    StateInfo::mFixClockState = 1;
    doubles::companion().calls.clear();
    mutex.lock();
    std::thread background(listener);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(StateInfo::isDumpingEnabled()) << "waits for the mutex";
    mutex.unlock();
    background.join();
    EXPECT_FALSE(StateInfo::isDumpingEnabled());
    EXPECT_EQ(StateInfo::getFixClockState(), 0);
    EXPECT_THAT(doubles::companion().calls, ElementsAre("finishDumping", "unfixClock"));
    EXPECT_TRUE(mutex.try_lock()) << "and gives it back";
    mutex.unlock();
}

TEST_F(OverlaySwitch, DetachEndsTheDumpOnce) {
    StateInfo::mIsDumpingEnabled = true;
    StateInfo::onDetached();
    StateInfo::onDetached();
    EXPECT_THAT(doubles::companion().calls, ElementsAre("finishDumping", "unfixClock", "unfixClock"));
    EXPECT_FALSE(StateInfo::isDumpingEnabled());
}

}  // namespace
