#include "dumps/DumpReader.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ContainsRegex;
using testing::Each;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;

support::Outcome control(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), KORDANIXCTL);
    return support::run(arguments);
}

support::Outcome press(const char* key) {
    return control({"key", key});
}

// A dump and a capture asked for from outside hold what the device's script says was on the screen, and
// whoever asked is told what becomes of them.
TEST(DeveloperMode, ADumpOfTheRunningDemoHoldsWhatItShowed) {
    const support::TemporaryDirectory folder;
    setenv("KORDANIX_RUNTIME_DIR", folder.path().c_str(), 1);
    setenv("KORDANIX_DUMP_DIR", folder.path("dump").c_str(), 1);
    const support::ChildProcess demo({KORDANIX_DEMO, "--device", "mali-b31", "--size", "200x100", "--seconds",
                                      "100", "--set", "devmode=true", "--set", "widget_memory=true", "--set",
                                      "widget_cpu_gpu_gpu_freq=true", "--png", folder.path("picture.png")});
    ASSERT_TRUE(support::waitUntil([] { return press("capture").status == 0; }));
    std::this_thread::sleep_for(500ms);  // the first figures are there
    ASSERT_TRUE(folder.shell("touch dump"));
    const support::Outcome failed = press("dump");
    EXPECT_EQ(failed.status, 1);
    EXPECT_THAT(failed.err, HasSubstr(" failed: "));
    EXPECT_THAT(press("dump").err, HasSubstr("this press ended the one that had failed"));
    ASSERT_TRUE(folder.shell("rm dump"));
    EXPECT_THAT(press("dump").out, HasSubstr(" dumps into " + folder.path("dump/kordanix-demo-")));
    std::this_thread::sleep_for(1s);
    EXPECT_EQ(press("capture").status, 0);
    std::this_thread::sleep_for(500ms);
    EXPECT_THAT(press("dump").out,
                ContainsRegex(" has ended its dump: [0-9]+ frames in .*/dump/kordanix-demo-"));

    dumps::Dump dump;
    const std::string dumped = std::filesystem::directory_iterator(folder.path("dump"))->path();
    ASSERT_EQ(dumps::readDump(dumped, dump), "");
    ASSERT_GE(dump.frames.size(), 10U);
    EXPECT_EQ(dump.skippedRows, 0U);
    for (std::size_t i = 1; i < dump.frames.size(); ++i) {
        EXPECT_EQ(dump.frames[i].number, dump.frames[i - 1].number + 1) << "no frame is missing";
        EXPECT_GE(dump.frames[i].timestampMs, dump.frames[i - 1].timestampMs);
    }
    // The bounds of the device's curves; frames that were held up are made up for.
    for (const auto& [name, smallest, largest] : {std::tuple("Fps", 1.0, 200.0),
                                                  {"GpuLoad", 10.0, 100.0},
                                                  {"GpuFreq", 100.0, 585.0},
                                                  {"MemGpu", 100e6, 400e6},
                                                  {"MemSysFreeHeap", 1e9, 4e9}}) {
        const dumps::DumpedValue* const value = dump.findValue(name);
        ASSERT_NE(value, nullptr) << name;
        EXPECT_THAT(value->figures, Each(AllOf(Ge(smallest), Le(largest)))) << name;
    }
    ASSERT_GE(dump.passes.size(), 2U) << "of the captured frame";
    for (const dumps::DumpedPass& pass : dump.passes) {
        EXPECT_GT(pass.durationMs, 0.0);
        EXPECT_LE(pass.durationMs, dump.frames[pass.frame].passFrameMs + 0.001);
    }
    EXPECT_EQ(control({"trace", dumped, folder.path("trace.json")}).status, 0);
    EXPECT_EQ(control({"report", dumped, folder.path("report.html")}).status, 0);
}

TEST(Options, NumbersThatMeanNothingAreRefused) {
    const std::pair<const char*, const char*> cases[] = {
        {"--every", "-1"}, {"--every", "0"},  {"--seconds", "nan"},    {"--seconds", "-1"},
        {"--rate", "inf"}, {"--rate", "nan"}, {"--capture-at", "nan"}, {"--size", "0x0"}};
    for (const auto& [option, text] : cases) {
        const support::Outcome outcome =
            support::run({KORDANIX_DEMO, "--private", "--png", "/dev/null", option, text});
        EXPECT_NE(outcome.status, 0);
        EXPECT_THAT(outcome.err, testing::HasSubstr("expected")) << option << ' ' << text;
    }
}

}  // namespace
