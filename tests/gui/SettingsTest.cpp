#include "core/SysPropWatcher.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeThreads.h"
#include "doubles/Settings.h"
#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>

#include <system_error>

namespace {

using doubles::set;
using gui::WidgetsSettings;

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

class Settings : public testing::Test {
protected:
    Settings() {
        doubles::setDefaults();
        WidgetsSettings::load();
    }
    const WidgetsSettings::Widgets& widgets = WidgetsSettings::getWidgets();
};

TEST_F(Settings, ColoursAreDecimalTextsAndOpacitiesIn255ths) {
    const std::pair<const char*, glm::vec4> colours[] = {
        {"-16743169", {0.0F, 0x84 / 255.0F, 1.0F, 1.0F}},
        {"0xFF0084FF", {0.0F, 0.0F, 0.0F, 1.0F}},
        {"none", {1.0F, 0x72 / 255.0F, 0.0F, 1.0F}},
    };
    for (const auto& [text, colour] : colours) {
        set({{"widget_fps_median_color", text}});
        EXPECT_EQ(widgets.mFps.mMedian.getTextColor(), colour) << text;
    }
    set({{"widget_fps_median", "false"}});
    EXPECT_EQ(widgets.mFps.mMedian.getTextColor(), glm::vec4(0.0F));
    for (const auto& [text, alpha] : {std::pair("51", 0.2F), {"255", 1.0F}, {"256", 1.0F}, {"-1", 1.0F}}) {
        set({{"bg_transparency", text}, {"bg_color", "16711935"}});
        EXPECT_EQ(widgets.bgColor(), glm::vec4(1.0F, 0.0F, 1.0F, alpha)) << text;
    }
}

TEST_F(Settings, AWidgetNeedsItsSwitchAndOneGraph) {
    const struct {
        std::function<bool()> isEnabled;
        std::string widget;
        std::vector<std::string> parts;
    } cases[] = {
        {[&] { return widgets.mFps.enabled(); }, "fps", {"_current", "_median", "_stability"}},
        {[&] { return widgets.mCpuGpu.enabled(); }, "cpu_gpu", {"_cpu_load", "_gpu_freq", "_gpu_load"}},
        {[&] { return widgets.mGpuActivity.enabled(); },
         "gpu_activity",
         {"_fragment_load", "_vertex_load", "_renderpass", "_thumbnail"}},
        {[&] { return widgets.mMemory.enabled(); },
         "memory",
         {"_pss", "_gpu_total", "_gpu_surface", "_gpu_texture", "_sys_free"}},
    };
    for (const auto& c : cases) {
        const std::string widget = "widget_" + c.widget;
        set({{widget, "true"}});
        for (const std::string& part : c.parts) {
            set({{widget + part, "false"}});
        }
        EXPECT_FALSE(c.isEnabled()) << widget;
        for (const std::string& part : c.parts) {
            set({{widget + part, "true"}});
            EXPECT_TRUE(c.isEnabled()) << widget << part;
            set({{widget + part, "false"}});
        }
        set({{widget, "false"}, {widget + c.parts[0], "true"}});
        EXPECT_FALSE(c.isEnabled()) << widget;
    }
    set({{"widget_gpu_activity_thumbnail", "true"}});
    EXPECT_FALSE(widgets.mGpuActivity.thumbnailEnabled());
    set({{"widget_gpu_activity", "true"}});
    EXPECT_TRUE(widgets.mGpuActivity.thumbnailEnabled());
}

TEST_F(Settings, AreTakenOverByTheLayoutOnceAfterAChange) {
    gui::LayoutManager* const manager = gui::LayoutManager::getInstance();
    const auto expectPositions = [&](bool isChanged, const std::vector<int>& expected, bool hasMemory) {
        WidgetsSettings::wasChanged = isChanged;
        EXPECT_EQ(manager->updateConfig(), isChanged);
        EXPECT_FALSE(manager->updateConfig());
        for (int i = 0; i < 5; ++i) {
            const gui::Widget& widget = *manager->getWidget(static_cast<gui::WidgetType>(i));
            EXPECT_EQ(widget.mPosition, expected[static_cast<std::size_t>(i)]);
            EXPECT_EQ(widget.mEnabled, i != 4 || hasMemory);
        }
    };
    expectPositions(true, {0, 2, 6, 5, 1}, false);
    set({{"widget_fps_position", "7"},
         {"widget_cpu_gpu_position", "-4"},
         {"widget_gpu_activity_position", "x"},
         {"widget_gpu_activity_thumbnail_position", "3"},
         {"widget_memory", "true"},
         {"widget_memory_position", "2"}});
    expectPositions(false, {0, 2, 6, 5, 1}, false);
    expectPositions(true, {7, -4, 6, 3, 2}, true);
}

}  // namespace
