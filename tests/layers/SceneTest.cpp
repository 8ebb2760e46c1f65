#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "doubles/Emulator.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeLog.h"
#include "doubles/FakeOstra.h"
#include "doubles/RecordingFactory.h"
#include "doubles/Settings.h"
#include "figures/FrameStatistics.h"
#include "figures/KernelFiles.h"
#include "figures/MachineReader.h"
#include "figures/TextFormat.h"
#include "figures/sources/KernelText.h"
#include "gui/WidgetsSettings.h"
#include "scene/Canvas.h"
#include "scene/FrameTimer.h"
#include "scene/GpuCapture.h"
#include "scene/NoticeText.h"
#include "scene/Overlay.h"
#include "scene/Style.h"
#include "support/ChildProcess.h"
#include "utils/SystemInfoHelper.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using testing::AllOf;
using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

constexpr auto API = static_cast<core::RenderingApiType>(0);
constexpr double MB = 1024.0 * 1024.0;

TEST(TextFormat, KeepsFiguresShortAndInTheFont) {
    using figures::formatNumber;
    const std::pair<std::string, const char*> cases[] = {
        {formatNumber(59.94, 1, ""), "59.9"},
        {formatNumber({}, 1, ""), "N/A"},
        {formatNumber(std::numeric_limits<double>::infinity(), 1, ""), "N/A"},
        {formatNumber(-0.4, 0, "C"), "N/A"},
        {formatNumber(-0.0, 0, ""), "0"},
        {formatNumber(99.6, 0, "%"), "100%"},
        {figures::formatBytes(9.94 * MB), "9.9MB"},
        {figures::formatBytes(9.96 * MB), "10MB"},
        {figures::formatBytes(999.4 * MB), "999MB"},
        {figures::formatBytes(999.6 * MB), "1.0GB"},
        {figures::formatBytes(99.96 * 1024 * MB), "100GB"},
        {figures::formatBytes({}), "N/A"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(text, expected);
    }
}

TEST(KernelFiles, AreReadUpToWhatDoesNotParse) {
    using figures::Reason;
    const std::pair<const char*, figures::Reading> texts[] = {
        {"  7", 7.0},
        {"", Reason::MALFORMED},
        {"\n", Reason::MALFORMED},
        {"-3", Reason::MALFORMED},
        {"18446744073709551615", 18446744073709551615.0},
        {"20000000000000000000", Reason::MALFORMED}};
    for (const auto& [text, expected] : texts) {
        doubles::setFile("/sys/kernel/gpu/gpu_mem_total", text);
        EXPECT_EQ(figures::readGpuMemoryTotal(), expected) << text;
    }
    EXPECT_EQ(sources::countRanges("0-3,6-7"), 6U);
    doubles::setFile("/proc/self/smaps_rollup", "Rss: 9 kB\nPss_Dirty: 5 kB\nPss:      1234 kB\nPss: 7 kB\n");
    EXPECT_EQ(figures::readProportionalSetSize(), figures::Reading(1234.0 * 1024.0));
    EXPECT_EQ(figures::readGpuMemorySurface().reason(), Reason::NO_FILE);
    EXPECT_EQ(figures::whyUnreadable("/proc/self/smaps_rollup"), Reason::MALFORMED);
}

// A forked child has no thread, and must neither wait for one nor go without.
TEST(MachineReader, ReadsThisProcessAndItsChildOnAThreadOfTheirOwn) {
    const sources::Wanted memory(1U << static_cast<unsigned>(sources::Id::MEMORY_PROCESS));
    figures::MachineReader reader;
    const auto isRead = [&] {
        reader.want(memory);
        reader.settle();
        return reader.value(sources::Id::MEMORY_PROCESS).value_or(0.0) > 0.0 &&
               !reader.value(sources::Id::MEMORY_FREE);
    };
    EXPECT_TRUE(isRead());
    // Neither the thread sanitizer nor QEMU lets a forked child of a process with threads start one.
#ifndef __SANITIZE_THREAD__
    if (doubles::isEmulated()) {
        return;
    }
    EXPECT_EQ(support::runForked([&] { return isRead() ? 0 : 1; }), 0);
#endif
}

/// Frames of these lengths in microseconds, and so many of each.
struct Pace {
    const char* name;
    std::vector<std::pair<std::uint64_t, int>> frames;
    double average, median, stability, low1, low01;
};

TEST(FrameStatistics, AreTrueAtAnyRate) {
    const Pace paces[] = {
        {"one a second", {{1000000, 20}}, 1, 1, 100, 1, 1},
        {"ten thousand", {{100, 30000}}, 10000, 10000, 100, 10000, 10000},
        {"a second slow, a second fast",
         {{1000000 / 27, 135}, {1000000 / 120, 600}},
         73.5,
         120,
         81.6,
         27,
         27},
        {"on the bounds of stability", {{8001, 100}, {10000, 900}, {11999, 100}}, 100, 100, 100, 83.3, 83.3},
        {"beyond them", {{7800, 100}, {10000, 900}, {12200, 100}}, 100, 100, 81.8, 82, 82},
        {"hiccups", {{5000, 9900}, {50000, 90}, {400000, 10}}, 172.1, 200, 99, 11.765, 2.5},
        {"of no class", {{1, 100}, {60000000, 1}}, 1.683, 1e6, 99, 0.01667, 0.01667},
        {"none", {{0, 5}}, -1, -1, -1, -1, -1},
    };
    for (const Pace& pace : paces) {
        figures::FrameStatistics statistics;
        for (const auto& [microseconds, count] : pace.frames) {
            for (int i = 0; i < count; ++i) {
                statistics.add(microseconds * 1000);
            }
        }
        statistics.refresh();
        const std::pair<figures::Reading, double> figures[] = {{statistics.average(), pace.average},
                                                               {statistics.median(), pace.median},
                                                               {statistics.stability(), pace.stability},
                                                               {statistics.low(0.01), pace.low1},
                                                               {statistics.low(0.001), pace.low01}};
        for (const auto& [figure, expected] : figures) {
            EXPECT_NEAR(figure.value_or(-1), expected, std::abs(expected) * 0.002)
                << pace.name << ' ' << &figure - &figures[0].first;
        }
    }
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
    bool readFrame(gui::FrameData& frame, figures::Reading /*captureStart*/) override {
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
        doubles::setDefaults();
        doubles::set({{"status", "true"}, {"proc", "app"}, {"devmode", "true"}});
        mOverlay.attach();
    }
    ~SceneOverlay() override {
        mOverlay.detach();
        core::StateInfo::mVendor = utils::Vendor::UNKNOWN;
        doubles::releaseWallClock();
    }

    /// What a publication does, without waiting for the watcher.
    static void publish(const std::vector<std::pair<std::string, std::string>>& properties) {
        gui::WidgetsSettings::getWidgets();
        doubles::set(properties);
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

// A widget and a figure that a user has switched on by hand are there in any case.
TEST_F(SceneOverlay, WhatCannotBeReadTakesNoRoomUnlessItsUserWantsIt) {
    for (const char* const text : {"", "-5000\n"}) {
        for (const char* const path :
             {"/sys/class/thermal/thermal_zone0/temp", "/sys/kernel/gpu/gpu_tmu", "/sys/kernel/gpu/gpu_busy",
              "/sys/kernel/gpu/gpu_clock", "/sys/kernel/gpu/gpu_mem_total"}) {
            doubles::setFile(path, text);
        }
        doubles::setDefaults();
        publish({{"status", "true"}, {"proc", "app"}});
        frames(20);
        EXPECT_THAT(drawn(), AllOf(Not(Contains("N/A")), Not(Contains("GPU")), Contains("Avg 62.5")));
        publish({{"widget_cpu_gpu_gpu_freq", "true"}});
        frames(20);
        EXPECT_THAT(drawn(), AllOf(IsSupersetOf({"MHz", "N/A"}), Not(Contains("GPU"))));
        publish({{"widget_memory", "true"}});
        frames(20);
        EXPECT_THAT(drawn(), IsSupersetOf({"PSS", "SysFree"}));
    }
    doubles::setFile("/sys/kernel/gpu/gpu_busy", "37\n");
    frames(10);
    EXPECT_THAT(drawn(), IsSupersetOf({"GPU", "37%"})) << "read since";
    doubles::removeFile("/sys/kernel/gpu/gpu_busy");
    frames(10);
    EXPECT_THAT(drawn(), Contains("37%")) << "for a moment";
    frames(80);
    EXPECT_THAT(drawn(), Not(Contains("37%")));
}

TEST_F(SceneOverlay, ShowsTheFiguresOfTheFiles) {
    doubles::setFile("/sys/kernel/gpu/gpu_busy", "37\n");
    doubles::setFile("/sys/kernel/gpu/gpu_freq_table", "338 598\n");
    doubles::setFile("/sys/kernel/gpu/gpu_clock", "450\n");
    doubles::setFile("/sys/kernel/gpu/gpu_mem_total", "104857600\n");
    doubles::setFile(
        "/proc/meminfo",
        "MemTotal: 9216 kB\nMemFree: 2048 kB\nMemAvailable: 6144 kB\nBuffers: 1 kB\nCached: 4096 kB\n");
    publish({{"widget_memory", "true"}, {"widget_cpu_gpu_gpu_freq", "true"}});
    frames(12);
    const unsigned before = doubles::timesOpened("/proc/meminfo");
    frames(8);
    EXPECT_EQ(doubles::timesOpened("/proc/meminfo"), before + 1) << "all of a refresh comes from one text";
    EXPECT_THAT(drawn(), IsSupersetOf({"37%", "450/598", "100/125MB", "6.0/9.0MB", "Used 3.0MB"}));
    EXPECT_THAT(drawn(), Contains(testing::HasSubstr("62.5"))) << "frames of 16 ms";
}

TEST_F(SceneOverlay, FollowsThePublishedSwitches) {
    publish({{"widget_cpu_gpu", "true"}});
    frames(10);
    EXPECT_THAT(drawn(), AllOf(Contains("CPU app"), Contains("thumbnail"), Not(Contains("PSS"))));
    publish(
        {{"widget_memory", "true"}, {"widget_cpu_gpu", "false"}, {"widget_gpu_activity_thumbnail", "false"}});
    frame();
    EXPECT_THAT(drawn(), AllOf(Contains("PSS"), Not(Contains("CPU app")), Not(Contains("thumbnail"))));
    publish({{"status", "false"}});
    frame();
    EXPECT_TRUE(drawn().empty());
    publish({{"status", "true"}});
    frame();
    EXPECT_THAT(drawn(), Contains("PSS"));
}

TEST_F(SceneOverlay, ANoticeStandsForASecondEvenWhenTheOverlayIsSwitchedOff) {
    const auto notice = [] {
        return std::pair<std::string, std::string>("notice", scene::encodeNotice("Overlay off"));
    };
    constexpr std::size_t BACKDROP_AND_TEXT = 2;
    publish({notice()});
    doubles::advanceWallClock(5000000);
    frame();
    EXPECT_THAT(drawn(), Not(Contains("Overlay off"))) << "it was written before this process looked";
    publish({notice()});
    frame();
    EXPECT_THAT(drawn(), Contains("Overlay off"));
    publish({{"status", "false"}, notice()});
    for (int i = 0; i < 60; ++i) {
        frame();
        ASSERT_EQ(drawn().size(), BACKDROP_AND_TEXT);
        ASSERT_EQ(drawn().back(), "Overlay off");
    }
    frames(5);
    EXPECT_TRUE(drawn().empty());
    publish({{"proc", "another"}, notice()});
    frame();
    EXPECT_TRUE(drawn().empty());
    publish({{"proc", "app"}, {"status", "true"}, {"notice", "7 text that nobody wrote!"}});
    frame();
    EXPECT_THAT(drawn(), AllOf(Contains("thumbnail"), Not(Contains("text that nobody wrote!"))));
}

// Two widgets that are lines of their figures stand in one line, without graphs, notes and a gap.
TEST_F(SceneOverlay, AWidgetCanBeALineAsWideAsItsFigures) {
    doubles::setFile("/sys/kernel/gpu/gpu_busy", "37\n");
    publish({{"graphs", "false"},
             {"fit_width", "true"},
             {"hide_unreadable", "true"},
             {"widget_cpu_gpu_position", "0"},
             {"widget_cpu_gpu_gpu_power", "true"},
             {"widget_frame_time", "false"},
             {"widget_gpu_activity", "false"}});
    frames(20);
    EXPECT_THAT(drawn(), AllOf(Contains("FPS 62.5"), Contains("37%"), Not(Contains("grid")),
                               Not(Contains("fill")), Not(Contains("Avg 62.5")), Not(Contains("Power"))));
    std::vector<doubles::DrawCall> strips;
    for (const doubles::DrawCall& call : doubles::drawCalls()) {
        if (call.what == "background") {
            strips.push_back(call);
        }
    }
    ASSERT_EQ(strips.size(), 2U);
    EXPECT_FLOAT_EQ(strips[0].position.x + strips[0].size.x, strips[1].position.x);
    EXPECT_EQ(strips[0].position.y, strips[1].position.y);
    EXPECT_LT(strips[1].size.x, strips[0].size.x) << "one short figure";
    publish({{"graphs", ""}, {"fit_width", ""}});
    frames(10);
    EXPECT_THAT(drawn(), IsSupersetOf({"fill", "Avg 62.5"})) << "and back";
}

// 735 frames in 10 seconds, a second slow and a second fast in turn; then a dump, whose start forgets them.
TEST_F(SceneOverlay, TheMeanRateIsFramesByTimeSinceADumpBegan) {
    mFactory.mSize *= 2U;
    publish({{"widget_fps_low1", "true"}});
    frame();
    for (int second = 0; second < 10; ++second) {
        for (int i = 0, rate = second % 2 == 0 ? 27 : 120; i < rate; ++i) {
            doubles::advanceWallClock(1000000 / rate - 16000);
            frame();
        }
    }
    frames(12);
    EXPECT_THAT(drawn(), AllOf(IsSupersetOf({"Avg 73.4", "1% 27.0"}), Not(Contains("Dump"))));
    publish({{"scale", "1.8"}});
    doubles::companion().keyEvents = {{24, 1}};
    frames(20);
    EXPECT_THAT(drawn(), IsSupersetOf({"Avg 62.5", "Dump"}));
    for (const doubles::DrawCall& call : doubles::drawCalls()) {
        EXPECT_TRUE(call.what != "Dump" || call.position.y >= 0.0F) << "it leaves the surface";
    }
}

/// A GPU that works 4 ms on each frame, and says so two frames later.
class SlowTimer : public scene::FrameTimer {
public:
    void beginFrame(std::uint32_t frame, bool isTimed) override {
        mFrame = frame;
        mIsTimed = isTimed;
    }
    bool take(Time& time) override {
        time = {mFrame - 2, 4000000};
        return std::exchange(mIsTimed, false);
    }

private:
    std::uint32_t mFrame = 0;
    bool mIsTimed = false;
};

TEST_F(SceneOverlay, BarsHaveAPartForTheSwapTheGpuAndTheRest) {
    publish({{"widget_gpu_activity", "false"}});
    mFactory.mSize *= 2U;
    frames(20);
    EXPECT_THAT(drawn(), AllOf(Contains("@Swap"), Not(Contains("@GPU")))) << "nobody times it";
    mOverlay.detach();
    SlowTimer timer;
    scene::Overlay overlay(mFactory, API, &mPasses, &timer);
    overlay.attach();
    publish({{"widget_gpu_activity", "false"}, {"screen_rate", "75"}});
    for (int i = 0; i < 60; ++i) {
        doubles::advanceWallClock(i == 30 ? 110000 : 6000);
        overlay.beginFrame();
        doubles::drawCalls().clear();
        overlay.draw();
        doubles::advanceWallClock(10000);
        overlay.endFrame();
    }
    EXPECT_THAT(drawn(), IsSupersetOf({"Frame 16.0ms  99% 120ms  Max 120ms", "25%", "75", "30", "@GPU"}));
    std::vector<float> tops;
    for (const doubles::DrawCall& call : doubles::drawCalls()) {
        if (call.what == "bars") {
            tops.push_back((1.0F - call.mesh->mVertices.at(1).y) / 2.0F * 80.0F);
            for (const gui::Vertex& corner : call.mesh->mVertices) {
                const float x = (1.0F - corner.x) / 2.0F * call.size.x * static_cast<float>(mFactory.mSize.x);
                EXPECT_NEAR(x, std::round(x), 0.02F) << "bars are whole pixels wide";
            }
        }
    }
    // In milliseconds, on a scale that ends at 80, above 4 times the median, to the nearest row of pixels.
    EXPECT_THAT(tops, testing::Pointwise(testing::FloatNear(0.8F), {16.0F, 6.0F, 2.0F}));
    overlay.detach();
    mOverlay.attach();
}

// Every text is legible and stays on the surface, and no two texts of the overlay lie on each other, save for
// the legend, whose second half covers the end of the first.
TEST_F(SceneOverlay, TextsNeitherLeaveTheirWidgetNorOverlap) {
    glm::vec2 lastPosition(0.0F);
    const std::tuple<const char*, glm::uvec2, const char*> cases[] = {
        {"1", {740, 360}, ""},     {"1", {360, 740}, ""},        {"1.5", {740, 360}, ""},
        {"0.6", {360, 740}, ""},   {"1", {320, 240}, ""},        {"1", {240, 320}, ""},
        {"1", {480, 320}, ""},     {"1", {3840, 1080}, ""},      {"1.8", {640, 480}, ""},
        {"0.5", {1280, 720}, ""},  {"1", {740, 360}, "true"},    {"1", {640, 480}, "true"},
        {"1", {360, 740}, "true"}, {"1.4", {1280, 720}, "true"}, {"1", {300, 300}, "true"}};
    for (const auto& [scale, size, isFitted] : cases) {
        mFactory.mSize = size;
        publish({{"widget_memory", "true"},
                 {"widget_cpu_gpu_gpu_freq", "true"},
                 {"scale", scale},
                 {"fit_width", isFitted},
                 {"widget_fps_low1", isFitted},
                 {"widget_fps_low01", isFitted}});
        frames(20);
        std::vector<doubles::DrawCall> texts;
        for (const doubles::DrawCall& call : doubles::drawCalls()) {
            const std::vector<std::string> others = {"fill",       "line",      "grid", "bars",
                                                     "background", "thumbnail", "clip", "unclip"};
            if (std::find(others.begin(), others.end(), call.what) == others.end() && call.what[0] != '@') {
                texts.push_back(call);
            }
        }
        ASSERT_GE(texts.size(), size.x * size.y < 740 * 360 ? 6U : 14U) << size.x;
        const auto fps = std::find_if(texts.begin(), texts.end(),
                                      [](const auto& call) { return call.what.rfind("FPS", 0) == 0; });
        ASSERT_NE(fps, texts.end());
        EXPECT_NEAR(fps->size.y * static_cast<float>(size.y),
                    std::max(scene::LINE_PIXELS,
                             12.0F * std::strtof(scale, nullptr) * scene::Canvas(size).pixelsPerUnit()),
                    0.5F)
            << scale;
        EXPECT_NE(std::exchange(lastPosition, texts.back().position), texts.back().position);
        for (const doubles::DrawCall& text : texts) {
            const glm::vec2 end = text.position + text.size;
            EXPECT_TRUE(glm::all(glm::greaterThanEqual(text.position, glm::vec2(0.0F))) && end.x <= 1.0F &&
                        end.y <= 1.0F)
                << text.what;
            EXPECT_GE(text.size.y * static_cast<float>(size.y), scene::LINE_PIXELS - 0.5F)
                << text.what << " at " << size.x << " times " << scale;
            for (const doubles::DrawCall* other = &text + 1; other <= &texts.back(); ++other) {
                const glm::vec2 common =
                    glm::min(end, other->position + other->size) - glm::max(text.position, other->position);
                EXPECT_FALSE(common.x > 0.0005F && common.y > 0.0005F)
                    << text.what << " and " << other->what << " at " << size.x << " times " << scale;
            }
        }
    }
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
    EXPECT_THAT(drawn(), IsSupersetOf({" 4 11 22 ", "4", "clip", "unclip"}));
    EXPECT_THAT(drawn(), Contains(testing::MatchesRegex("[0-9]+\\(10\\.0ms\\)")));
    EXPECT_EQ(mPasses.questions, static_cast<int>(scene::GpuCapture::LONGEST_WAIT)) << "asked once a frame";

    int abandoned = 0;
    for (const Progress end : {Progress::PENDING, Progress::PENDING, Progress::NONE}) {
        abandoned += end == Progress::PENDING ? 1 : 0;
        mPasses.progress = end;
        capture();
        frames(scene::GpuCapture::LONGEST_WAIT + 3);
        EXPECT_EQ(mPasses.reads, 1) << "passes that are not known are not read";
        EXPECT_EQ(mPasses.abandonments, abandoned);
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
    doubles::set({{"status", "false"}});
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
    doubles::set({{"api", "1"}});
    doubles::companion().keyEvents = {{24, 1}};
    other.beginFrame();
    other.endFrame();
    EXPECT_TRUE(core::StateInfo::isDumpingEnabled());
}

}  // namespace
