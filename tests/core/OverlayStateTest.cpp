#include "core/BaseLayer.h"
#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeOstra.h"
#include "doubles/FakeProperties.h"

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
    EXPECT_TRUE(layer.attached == 2 && layer.detached == 1);
}

class OverlaySwitch : public testing::Test {
protected:
    OverlaySwitch() {
        doubles::resetCompanion();
        doubles::setFile(COMMAND_LINE, "com.example.app");
        publish("false", "9", "nobody");
        // Set but not published: the first question of the process reads it.
        doubles::setProperty("debug.kordanix.status", "true");
        doubles::setProperty("debug.kordanix.api", "2");
        doubles::setProperty("debug.kordanix.proc", "com.example.app");
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

TEST_F(OverlaySwitch, SimultaneousFirstQuestionsAllReadWhatWasSetSinceLoad) {
    std::vector<std::thread> threads;
    std::vector<char> answers(8, 0);
    for (char& answer : answers) {
        threads.emplace_back([&answer] { answer = StateInfo::isOverlayEnabled(API) ? 1 : 0; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(answers, testing::Each(1));
    doubles::setProperty("debug.kordanix.status", "false");
    EXPECT_TRUE(StateInfo::isOverlayEnabled(API)) << "not published";
}

TEST_F(OverlaySwitch, NeedsStatusApiAndProcessToAgree) {
    const struct {
        const char* status;
        const char* api;
        const char* process;
        const char* commandLine;
        bool isOn;
    } cases[] = {
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
    for (const auto& c : cases) {
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

// tests/privilege counts what is opened while the overlay is off.
TEST_F(OverlaySwitch, CachesNothing) {
    ASSERT_TRUE(StateInfo::isOverlayEnabled(API));
    doubles::setFile(COMMAND_LINE, "com.example.other");
    EXPECT_FALSE(StateInfo::isOverlayEnabled(API));
}

TEST_F(OverlaySwitch, AttachFixesOrReleasesTheClocks) {
    std::mutex mutex;
    doubles::setProperty("debug.kordanix.fixclock", "false");
    SysPropWatcher::forceReadAllProps();
    StateInfo::onAttached(mutex);
    EXPECT_THAT(doubles::companion().calls, ElementsAre("registerAppBecomeBackgroundListener", "unfixClock"));
    EXPECT_EQ(StateInfo::getFixClockState(), 0);

    doubles::setProperty("debug.kordanix.fixclock", "true");
    publish("false", "9", "nobody");  // the overlay's switch is not asked
    doubles::resetCompanion();
    doubles::companion().fixClockResult = false;
    StateInfo::onAttached(mutex);
    EXPECT_THAT(doubles::companion().calls, ElementsAre("registerAppBecomeBackgroundListener", "fixClock"));
    EXPECT_EQ(StateInfo::getFixClockState(), 2);
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
    EXPECT_FALSE(StateInfo::isDumpingEnabled());
    EXPECT_EQ(StateInfo::getFixClockState(), 0);
    EXPECT_THAT(doubles::companion().calls, ElementsAre("finishDumping", "unfixClock"));
    EXPECT_TRUE(mutex.try_lock()) << "and gives it back";
    mutex.unlock();
    StateInfo::mIsDumpingEnabled = true;
    StateInfo::onDetached();
    StateInfo::onDetached();
    EXPECT_THAT(doubles::companion().calls,
                ElementsAre("finishDumping", "unfixClock", "finishDumping", "unfixClock", "unfixClock"));
    EXPECT_FALSE(StateInfo::isDumpingEnabled());
}

}  // namespace
