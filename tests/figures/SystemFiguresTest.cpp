#include "doubles/FakeLog.h"
#include "figures/sources/SystemFigures.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace {

using sources::Reason;
using sources::Value;

TEST(SystemFigures, AreWhatAnApplicationOfAndroidMayAsk) {
    const support::TemporaryDirectory root;
    const sources::FileTree tree(root.path());
    sources::SystemFigures system(tree);
    const struct {
        double time;
        const char* headroom;
        Value load;
    } cases[] = {
        {100.0, "62.5", Value::of(37.5, "")},
        {101.0, "10", Value::of(37.5, "")},  // the device wants 2 seconds between two questions
        {102.5, "10", Value::of(90.0, "")},
        {105.0, "nan", Value::none(Reason::NOT_ANSWERING)},
        {108.0, "E95", Value::none(Reason::NOT_SUPPORTED)},
        {111.0, "E32", Value::none(Reason::NOT_ANSWERING)},
    };
    for (const auto& [time, headroom, load] : cases) {
        setenv("FAKE_HEADROOM", headroom, 1);
        const Value value = system.gpuLoad(time);
        EXPECT_EQ(value.number, load.number) << time;
        EXPECT_EQ(value.reason, load.reason) << time;
    }
    const std::string driver = root.path() + "/sys/class/kgsl/kgsl-3d0/";
    std::filesystem::create_directories(driver);
    std::ofstream(driver + "gpu_busy_percentage") << "37 %\n";
    std::ofstream(driver + "gpuclk") << "585000000\n";
    EXPECT_EQ(system.gpuLoad(112.0).number, 37.0);
    EXPECT_EQ(system.gpuClock().number, 585.0);
    EXPECT_EQ(system.gpuMaxClock().reason, Reason::NO_FILE);
    for (const auto& [status, number] :
         {std::pair("3", std::optional(3.0)), std::pair("-1", std::optional<double>())}) {
        setenv("FAKE_STATUS", status, 1);
        EXPECT_EQ(system.thermalStatus().number, number);
    }
}

TEST(SystemFigures, ThatAreMissingAreSaidOnce) {
    for (int i = 0; i < 2; ++i) {
        sources::noteMissing("gpu.power", Value::none(Reason::NOT_ALLOWED, "/sys/x"));
    }
    std::vector<std::string> texts;
    for (const doubles::LogLine& line : doubles::takeLog()) {
        texts.push_back(line.text);
    }
    EXPECT_THAT(texts, testing::ElementsAre(
                           "The device does not tell gpu.power: this user may not read it (/sys/x)"));
}

}  // namespace
