#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeLog.h"
#include "doubles/FakeOstra.h"
#include "doubles/FakeProperties.h"
#include "doubles/RecordingFactory.h"
#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"
#include "scene/GpuCapture.h"
#include "scene/KernelFiles.h"
#include "scene/Metrics.h"
#include "scene/Overlay.h"
#include "scene/RenderPassSource.h"
#include "scene/SlowReader.h"
#include "scene/Style.h"
#include "scene/TextFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

constexpr auto API = static_cast<core::RenderingApiType>(0);
constexpr double MB = 1024.0 * 1024.0;

TEST(TextFormat, KeepsFiguresShortAndInTheFont) {
    using scene::Reading;
    const double infinity = std::numeric_limits<double>::infinity();
    struct Case {
        std::string (*format)(Reading);
        Reading reading;
        const char* text;
    };
    const Case cases[] = {
        {scene::formatRate, 59.94, "59.9"},
        {scene::formatRate, 0.0, "0.0"},
        {scene::formatRate, {}, "N/A"},
        {scene::formatRate, infinity, "N/A"},
        {scene::formatTemperature, -0.4, "N/A"},
        {scene::formatWhole, -0.0, "0"},
        {scene::formatPercent, 42.5, "42%"},
        {scene::formatPercent, 99.6, "100%"},
        {scene::formatTemperature, 44.6, "45C"},
        {scene::formatMegahertz, 585.4, "585MHz"},
        {scene::formatBytes, 0.0, "0.0MB"},
        {scene::formatBytes, 9.94 * MB, "9.9MB"},
        {scene::formatBytes, 9.96 * MB, "10MB"},
        {scene::formatBytes, 999.4 * MB, "999MB"},
        {scene::formatBytes, 999.6 * MB, "1.0GB"},
        {scene::formatBytes, 12.34 * 1024 * MB, "12.3GB"},
        {scene::formatBytes, 99.96 * 1024 * MB, "100GB"},
        {scene::formatBytes, {}, "N/A"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.format(c.reading), c.text);
    }
}

TEST(KernelFiles, AreReadUpToWhatDoesNotParse) {
    const std::pair<const char*, scene::Reading> numbers[] = {
        {"12\n", 12.0},
        {"  7", 7.0},
        {"", {}},
        {"x1", {}},
        {"-3", {}},
        {"18446744073709551615", 18446744073709551615.0},
        {"20000000000000000000", {}}};
    for (const auto& [text, number] : numbers) {
        EXPECT_EQ(scene::leadingNumber(text), number) << text;
    }
    const std::pair<const char*, scene::Reading> ranges[] = {
        {"0-3,6-7\n", 7.0}, {"0", 0.0}, {"", {}}, {"\n", {}}};
    for (const auto& [text, number] : ranges) {
        EXPECT_EQ(scene::lastNumberOfRanges(text), number) << text;
    }
    const char* const text = "Rss: 9 kB\nPss:      1234 kB\nPss_Dirty: 5 kB\nPss: 7 kB\n";
    EXPECT_FALSE(scene::findKilobytes(text, "ss"));
    doubles::setFile("/proc/self/smaps_rollup", text);
    EXPECT_EQ(scene::readProportionalSetSize(), scene::Reading(1234.0 * 1024.0));
    EXPECT_FALSE(scene::findKilobytes("Pss:", "Pss"));
}

// The reader's thread takes none of the application's signals and survives a reading that fails.
TEST(SlowReader, ReadsOnAThreadThatDisturbsNobody) {
    static std::atomic<bool> isFailing{true};
    static std::atomic<bool> isQuiet{false};
    static std::atomic<bool> isNamed{false};
    scene::SlowReader reader([]() -> scene::Reading {
        if (isFailing) {
            throw std::bad_alloc();
        }
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        isQuiet = sigismember(&blocked, SIGTERM) == 1 && sigismember(&blocked, SIGRTMAX) == 1;
        char name[16] = "";
        pthread_getname_np(pthread_self(), name, sizeof(name));
        isNamed = std::string(name) == "kordanix-memory";
        return 7.0;
    });
    reader.start();
    reader.request();
    reader.settle();
    EXPECT_FALSE(reader.latest());
    isFailing = false;
    reader.request();
    reader.settle();
    EXPECT_EQ(reader.latest(), scene::Reading(7.0));
    EXPECT_TRUE(isQuiet);
    EXPECT_TRUE(isNamed);
}

TEST(Metrics, AskForNoVendorWithoutAGpu) {
    doubles::removeAllFiles();
    doubles::takeLog();
    const scene::Metrics metrics;
    EXPECT_TRUE(doubles::takeLog().empty());
}

/// The pass of a frame that the test times. At first a source that knows at once.
class OnePass : public scene::RenderPassSource {
public:
    void startCapture() override { ++starts; }
    Progress advanceCapture() override {
        ++questions;
        return progress;
    }
    void abandonCapture() override { ++abandonments; }
    bool readFrame(gui::FrameData& frame, scene::Reading /*captureStart*/) override {
        gui::RenderPassData pass(0.0F, {11, 22});
        pass.setIndex(4);
        pass.addTimestampInfo(2, 6);
        frame.addRenderPassInfo(pass);
        frame.addFrameTimeInfo(0, 10);
        ++reads;
        return true;
    }
    Progress progress = Progress::READY;
    int starts = 0;
    int questions = 0;
    int abandonments = 0;
    int reads = 0;
};

class SceneOverlay : public testing::Test {
protected:
    SceneOverlay() : mOverlay(mFactory, API, &mPasses) {
        doubles::resetCompanion();
        doubles::removeAllFiles();
        doubles::setFile("/proc/self/cmdline", "app");
        doubles::setWallClock(1795555555000000);
        for (const auto& [name, value] :
             std::vector<std::pair<const char*, const char*>>{{"status", "true"},
                                                              {"proc", "app"},
                                                              {"devmode", "true"},
                                                              {"widget_cpu_gpu", "true"},
                                                              {"widget_cpu_gpu_gpu_freq", "false"},
                                                              {"widget_gpu_activity_thumbnail", "true"},
                                                              {"widget_memory", "false"}}) {
            doubles::setProperty(std::string("debug.kordanix.") + name, value);
        }
        SysPropWatcher::forceReadAllProps();
        mOverlay.attach();
    }
    ~SceneOverlay() override {
        mOverlay.detach();
        doubles::releaseWallClock();
    }

    /// What a publication does, without waiting for the watcher.
    static void publish(const std::vector<std::pair<std::string, std::string>>& properties) {
        gui::WidgetsSettings::getWidgets();
        for (const auto& [name, value] : properties) {
            doubles::setProperty("debug.kordanix." + name, value);
        }
        SysPropWatcher::forceReadAllProps();
        gui::WidgetsSettings::wasChanged = true;
    }

    /// One frame of 16 ms; what it draws is in doubles::drawCalls().
    void frame() {
        doubles::advanceWallClock(16000);
        doubles::drawCalls().clear();
        mOverlay.beginFrame();
        mOverlay.draw();
        mOverlay.endFrame();
    }

    void frames(int count) {
        for (int i = 0; i < count; ++i) {
            frame();
        }
    }

    static std::vector<std::string> drawn() { return doubles::drawnNames(); }

    doubles::RecordingFactory mFactory;
    OnePass mPasses;
    scene::Overlay mOverlay;
};

TEST_F(SceneOverlay, ShowsNotAvailableForWhatCannotBeRead) {
    publish({{"widget_memory", "true"}, {"widget_cpu_gpu_gpu_freq", "true"}});
    for (const char* const text : {"", "-5000\n"}) {
        for (const char* const path :
             {"/sys/class/thermal/thermal_zone0/temp", "/sys/kernel/gpu/gpu_tmu", "/sys/kernel/gpu/gpu_busy",
              "/sys/kernel/gpu/gpu_clock", "/sys/kernel/gpu/gpu_mem_total"}) {
            doubles::setFile(path, text);
        }
        frames(20);
        const std::vector<std::string> names = drawn();
        // CPU load, GPU clock, GPU load and five memory figures.
        EXPECT_GE(std::count(names.begin(), names.end(), "N/A"), 8) << text;
        EXPECT_THAT(names, Contains("CPU N/A  GPU N/A  Max N/A"));
    }
}

// Upright and so narrow that each of them would fill the row.
TEST_F(SceneOverlay, TheCaptionsTextsStandSideBySide) {
    mFactory.mSize = {60, 740};
    publish({});
    frame();
    const auto& calls = doubles::drawCalls();
    const auto legend = std::find_if(calls.begin(), calls.end(),
                                     [](const auto& call) { return call.what == "@Vertex @Fragment"; });
    ASSERT_NE(legend, calls.end());
    const glm::vec2 pixels = legend->size * glm::vec2(mFactory.mSize);
    EXPECT_LT((scene::lineWidth("N/A") + scene::lineWidth(legend->what)) * pixels.y / 2.0F, pixels.x);
    EXPECT_EQ((legend + 1)->what, "@Fragment");
    EXPECT_EQ((legend + 1)->size.y, legend->size.y) << "it covers the end of the other one";
}

TEST_F(SceneOverlay, ShowsTheFiguresOfTheFiles) {
    doubles::setFile("/sys/kernel/gpu/gpu_busy", "37\n");
    doubles::setFile("/sys/kernel/gpu/gpu_freq_table", "338 598\n");
    doubles::setFile("/sys/kernel/gpu/gpu_clock", "450\n");
    doubles::setFile("/sys/kernel/gpu/gpu_mem_total", "104857600\n");
    publish({{"widget_memory", "true"}, {"widget_cpu_gpu_gpu_freq", "true"}});
    frames(20);
    EXPECT_THAT(drawn(), IsSupersetOf({"37%", "450", "100MB"}));
    EXPECT_THAT(drawn(), Contains(testing::HasSubstr("62.5"))) << "frames of 16 ms";
}

TEST_F(SceneOverlay, IsRefreshedEvery120Milliseconds) {
    doubles::setFile("/sys/kernel/gpu/gpu_busy", "10\n");
    publish({});
    frames(20);
    const unsigned before = doubles::timesOpened("/sys/kernel/gpu/gpu_busy");
    frames(80);  // 1280 ms
    const unsigned readings = doubles::timesOpened("/sys/kernel/gpu/gpu_busy") - before;
    EXPECT_GE(readings, 9U);
    EXPECT_LE(readings, 11U);
}

TEST_F(SceneOverlay, FollowsThePublishedSwitches) {
    publish({});
    frames(10);
    EXPECT_THAT(drawn(), Contains("CPU"));
    EXPECT_THAT(drawn(), Contains("thumbnail"));
    EXPECT_THAT(drawn(), Not(Contains("PSS")));
    publish(
        {{"widget_memory", "true"}, {"widget_cpu_gpu", "false"}, {"widget_gpu_activity_thumbnail", "false"}});
    frame();
    EXPECT_THAT(drawn(), Contains("PSS"));
    EXPECT_THAT(drawn(), Not(Contains("CPU")));
    EXPECT_THAT(drawn(), Not(Contains("thumbnail")));
    publish({{"status", "false"}});
    frame();
    EXPECT_TRUE(drawn().empty());
    publish({{"status", "true"}});
    frame();
    EXPECT_THAT(drawn(), Contains("PSS"));
}

// Every text stays inside its widget, and no two texts of the overlay lie on each other, save for the legend,
// whose second half covers the end of the first.
TEST_F(SceneOverlay, TextsNeitherLeaveTheirWidgetNorOverlap) {
    publish({{"widget_memory", "true"}, {"widget_cpu_gpu_gpu_freq", "true"}});
    glm::vec2 lastPosition(0.0F);
    for (const glm::uvec2 size : {glm::uvec2(740, 360), glm::uvec2(360, 740)}) {
        mFactory.mSize = size;
        frames(20);
        std::vector<doubles::DrawCall> texts;
        for (const doubles::DrawCall& call : doubles::drawCalls()) {
            const bool isText = call.what != "fill" && call.what != "line" && call.what != "grid" &&
                                call.what != "background" && call.what != "thumbnail" &&
                                call.what != "clip" && call.what != "unclip" && call.what[0] != '@';
            if (isText) {
                texts.push_back(call);
            }
        }
        ASSERT_GE(texts.size(), 15U);
        EXPECT_NE(std::exchange(lastPosition, texts.back().position), texts.back().position);
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const glm::vec2 start = texts[i].position;
            const glm::vec2 end = start + texts[i].size;
            EXPECT_TRUE(start.x >= 0.0F && start.y >= 0.0F && end.x <= 1.0F && end.y <= 1.0F)
                << texts[i].what;
            for (std::size_t k = i + 1; k < texts.size(); ++k) {
                const glm::vec2 otherStart = texts[k].position;
                const glm::vec2 otherEnd = otherStart + texts[k].size;
                const float epsilon = 0.0005F;
                EXPECT_FALSE(start.x + epsilon < otherEnd.x && otherStart.x + epsilon < end.x &&
                             start.y + epsilon < otherEnd.y && otherStart.y + epsilon < end.y)
                    << texts[i].what << " and " << texts[k].what << " at " << size.x;
            }
        }
    }
}

TEST_F(SceneOverlay, ACaptureShowsTheFramesPasses) {
    publish({});
    frames(3);
    EXPECT_EQ(mPasses.reads, 0);
    doubles::companion().keyEvents = {{25, 1}};
    frame();
    for (int i = 0; i < 2000 && mPasses.reads == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        frame();
    }
    frame();
    ASSERT_EQ(mPasses.reads, 1);
    EXPECT_THAT(drawn(), IsSupersetOf({" 4 11 22 ", "4"}));
    EXPECT_THAT(drawn(), Contains(testing::MatchesRegex("[0-9]+\\(10\\.0ms\\)")));
    EXPECT_THAT(drawn(), IsSupersetOf({"clip", "unclip"}));
}

TEST_F(SceneOverlay, ACaptureWaitsForThePassesButNotForEver) {
    using Progress = scene::RenderPassSource::Progress;
    publish({});
    frames(3);
    const auto capture = [this] {
        doubles::companion().keyEvents = {{25, 1}};
        frame();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // the counters' end, in vain
    };
    mPasses.progress = Progress::PENDING;
    capture();
    EXPECT_EQ(mPasses.questions, 0) << "nothing can be known in the frame that starts the capture";
    doubles::companion().keyEvents = {{25, 1}};
    frames(scene::GpuCapture::LONGEST_WAIT - 1);
    EXPECT_EQ(mPasses.starts, 1) << "one capture at a time";
    EXPECT_EQ(mPasses.abandonments, 0);
    mPasses.progress = Progress::READY;
    frames(3);
    EXPECT_EQ(mPasses.reads, 1);
    EXPECT_EQ(mPasses.questions, static_cast<int>(scene::GpuCapture::LONGEST_WAIT)) << "asked once a frame";

    for (const Progress end : {Progress::PENDING, Progress::NONE}) {
        mPasses.progress = end;
        capture();
        frames(scene::GpuCapture::LONGEST_WAIT + 3);
        EXPECT_EQ(mPasses.reads, 1) << "passes that are not known are not read";
        EXPECT_EQ(mPasses.abandonments, 1);
        EXPECT_THAT(drawn(), Contains(" 4 11 22 ")) << "what was captured before stays";
    }
    mPasses.progress = Progress::READY;
    capture();
    frames(3);
    EXPECT_EQ(mPasses.reads, 2) << "the next capture is a new one";
}

// Switched off, which is in force at once, but not yet published: shown without a poll of the keys.
TEST_F(SceneOverlay, AKeyIsNotPressedAgainInFramesWithoutAPoll) {
    publish({});
    frames(3);
    doubles::companion().keyEvents = {{24, 1}, {25, 1}};
    frame();
    ASSERT_TRUE(core::StateInfo::isDumpingEnabled());
    doubles::setProperty("debug.kordanix.status", "false");
    SysPropWatcher::forceReadAllProps();
    for (int i = 0; i < 50; ++i) {
        frame();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));  // a capture may end and start anew
        ASSERT_TRUE(mOverlay.isShown());
        ASSERT_TRUE(core::StateInfo::isDumpingEnabled()) << i;
    }
    EXPECT_EQ(mPasses.starts, 1);
    publish({});
    frame();
    EXPECT_FALSE(mOverlay.isShown());
    EXPECT_TRUE(core::StateInfo::isDumpingEnabled());
}

TEST_F(SceneOverlay, ADumpKeyBelongsToTheShownOverlay) {
    scene::Overlay other(mFactory, static_cast<core::RenderingApiType>(1), nullptr);
    other.attach();
    publish({});
    frames(3);
    doubles::companion().keyEvents = {{24, 1}};
    mOverlay.beginFrame();
    other.beginFrame();
    other.endFrame();
    EXPECT_FALSE(core::StateInfo::isDumpingEnabled());
    mOverlay.endFrame();
    EXPECT_TRUE(core::StateInfo::isDumpingEnabled());
    // On by the settings, but not yet published: it takes the keys and shows nothing.
    doubles::setProperty("debug.kordanix.api", "1");
    SysPropWatcher::forceReadAllProps();
    doubles::companion().keyEvents = {{24, 1}};
    other.beginFrame();
    other.endFrame();
    EXPECT_TRUE(core::StateInfo::isDumpingEnabled());
    doubles::setProperty("debug.kordanix.api", "0");
}

TEST_F(SceneOverlay, ADumpHoldsWhatIsShown) {
    doubles::setFile("/sys/kernel/gpu/gpu_busy", "37\n");
    doubles::setFile("/sys/kernel/gpu/gpu_mem_total", "104857600\n");
    publish({{"widget_memory", "true"}});
    frames(10);
    doubles::companion().keyEvents = {{24, 1}};
    frames(30);
    ASSERT_GE(doubles::companion().dumps.size(), 20U);
    const Ostra::FrameDump& last = doubles::companion().dumps.back();
    EXPECT_NEAR(last.values[0].floatValue, 62.5F, 0.5F);
    EXPECT_FLOAT_EQ(last.values[4].floatValue, 37.0F);
    EXPECT_EQ(last.values[7].intValue, 104857600U);
    EXPECT_EQ(last.values[1].intValue, 0U) << "the median has no graph";
}

}  // namespace
