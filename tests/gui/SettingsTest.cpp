#include "core/SysPropWatcher.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeThreads.h"
#include "doubles/Settings.h"
#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

using gui::WidgetsSettings;

using doubles::set;

// The first load of the process finds no thread to be had.
TEST(SettingsWatcher, IsAskedForOnceASecondUntilItRuns) {
    doubles::setWallClock(1700000000000000);
    const std::size_t listeners = SysPropWatcher::mListeners.size();
    doubles::refusedThreads() = 2;
    EXPECT_THROW(WidgetsSettings::load(), std::system_error);
    EXPECT_TRUE(WidgetsSettings::isInited);
    EXPECT_TRUE(WidgetsSettings::load()) << "goes on with what there is";
    doubles::advanceWallClock(999000);
    EXPECT_FALSE(WidgetsSettings::load());
    EXPECT_EQ(doubles::refusedThreads(), 1) << "not asked for within the second";
    doubles::advanceWallClock(1000);
    EXPECT_FALSE(WidgetsSettings::load());
    EXPECT_EQ(doubles::refusedThreads(), 0);
    EXPECT_FALSE(SysPropWatcher::mWatcherThread.joinable());
    doubles::advanceWallClock(1000000);
    EXPECT_FALSE(WidgetsSettings::load());
    EXPECT_TRUE(SysPropWatcher::mWatcherThread.joinable());
    EXPECT_EQ(SysPropWatcher::mListeners.size(), listeners + 1);
    doubles::setProperty("debug.kordanix.settingsgeneration", "1");
    EXPECT_TRUE(support::waitUntil([] { return WidgetsSettings::wasChanged.load(); }));
}

/// A text that is no value gives a property its default back: each test starts from the defaults.
class Settings : public testing::Test {
protected:
    Settings() {
        WidgetsSettings::getWidgets();
        for (SysPropBase* const prop : SysPropWatcher::mProps) {
            doubles::setProperty(prop->mName, "");
        }
        set({});
    }
};

TEST_F(Settings, LoadReportsAChangeOnce) {
    EXPECT_TRUE(WidgetsSettings::wasChanged || WidgetsSettings::isInited) << "the first call counts as one";
    WidgetsSettings::wasChanged = true;
    EXPECT_TRUE(WidgetsSettings::load());
    EXPECT_FALSE(WidgetsSettings::load());
}

TEST_F(Settings, ColoursAreDecimalTexts) {
    const WidgetsSettings::Widgets& widgets = WidgetsSettings::getWidgets();
    const std::pair<const char*, glm::vec4> cases[] = {
        {"-16743169", {0.0F, 0x84 / 255.0F, 1.0F, 1.0F}},
        {"0xFF0084FF", {0.0F, 0.0F, 0.0F, 1.0F}},
        {"none", {1.0F, 0x72 / 255.0F, 0.0F, 1.0F}},
    };
    for (const auto& [text, colour] : cases) {
        set({{"widget_fps_median_color", text}});
        EXPECT_EQ(widgets.mFps.mMedian.getTextColor(), colour) << text;
    }
    set({{"widget_fps_median", "false"}});
    EXPECT_EQ(widgets.mFps.mMedian.getTextColor(), glm::vec4(0.0F));
}

TEST_F(Settings, BackgroundOpacityIsIn255ths) {
    const WidgetsSettings::Widgets& widgets = WidgetsSettings::getWidgets();
    const std::pair<const char*, float> cases[] = {
        {"0", 0.0F}, {"51", 0.2F}, {"255", 1.0F}, {"256", 1.0F}, {"-1", 1.0F}};
    for (const auto& [text, alpha] : cases) {
        set({{"bg_transparency", text}, {"bg_color", "16711935"}});
        EXPECT_EQ(widgets.bgColor(), glm::vec4(1.0F, 0.0F, 1.0F, alpha)) << text;
    }
}

TEST_F(Settings, AWidgetNeedsItsSwitchAndOneGraph) {
    const WidgetsSettings::Widgets& widgets = WidgetsSettings::getWidgets();
    const struct {
        std::function<bool()> isEnabled;
        std::string widget;
        std::vector<std::string> parts;
    } cases[] = {
        {[&] { return widgets.mFps.enabled(); }, "widget_fps", {"_current", "_median", "_stability"}},
        {[&] { return widgets.mCpuGpu.enabled(); },
         "widget_cpu_gpu",
         {"_cpu_load", "_gpu_freq", "_gpu_load"}},
        {[&] { return widgets.mGpuActivity.enabled(); },
         "widget_gpu_activity",
         {"_fragment_load", "_vertex_load", "_renderpass", "_thumbnail"}},
        {[&] { return widgets.mMemory.enabled(); },
         "widget_memory",
         {"_pss", "_gpu_total", "_gpu_surface", "_gpu_texture", "_sys_free"}},
    };
    for (const auto& c : cases) {
        set({{c.widget, "true"}});
        for (const std::string& part : c.parts) {
            set({{c.widget + part, "false"}});
        }
        EXPECT_FALSE(c.isEnabled()) << c.widget;
        for (const std::string& part : c.parts) {
            set({{c.widget + part, "true"}});
            EXPECT_TRUE(c.isEnabled()) << c.widget << part;
            set({{c.widget + part, "false"}});
        }
        set({{c.widget, "false"}, {c.widget + c.parts[0], "true"}});
        EXPECT_FALSE(c.isEnabled()) << c.widget;
    }
    set({{"widget_gpu_activity", "true"}, {"widget_gpu_activity_thumbnail", "true"}});
    EXPECT_TRUE(widgets.mGpuActivity.thumbnailEnabled());
    set({{"widget_gpu_activity", "false"}});
    EXPECT_FALSE(widgets.mGpuActivity.thumbnailEnabled());
}

TEST_F(Settings, AreTakenOverByTheLayoutOnlyAfterAChange) {
    gui::LayoutManager* const manager = gui::LayoutManager::getInstance();
    gui::WidgetsSettings::wasChanged = true;
    ASSERT_TRUE(manager->updateConfig());
    const auto widget = [manager](int type) {
        return manager->getWidget(static_cast<gui::WidgetType>(type));
    };
    const auto expectPositions = [&](std::vector<int> expected, bool hasMemory) {
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(widget(i)->mPosition, expected[static_cast<std::size_t>(i)]);
            EXPECT_EQ(widget(i)->mEnabled, i != 4 || hasMemory);
        }
    };
    expectPositions({0, 2, 6, 5, 1}, false);
    set({{"widget_fps_position", "7"},
         {"widget_cpu_gpu_position", "-4"},
         {"widget_gpu_activity_position", "x"},
         {"widget_gpu_activity_thumbnail_position", "3"},
         {"widget_memory", "true"},
         {"widget_memory_position", "2"}});
    EXPECT_FALSE(manager->updateConfig());
    expectPositions({0, 2, 6, 5, 1}, false);
    gui::WidgetsSettings::wasChanged = true;
    EXPECT_TRUE(manager->updateConfig());
    expectPositions({7, -4, 6, 3, 2}, true);
}

}  // namespace
