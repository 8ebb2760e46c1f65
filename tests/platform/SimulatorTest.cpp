#include "doubles/Emulator.h"
#include "platform/TemporaryDirectory.h"
#include "simulator/Device.h"
#include "simulator/DeviceSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>

namespace {

using simulator::Curve;
using simulator::Device;
using simulator::Script;
using testing::HasSubstr;

// Points (1, 10), (3, 30), (4, 0) in a round of 5 seconds: from (4, 0) it rises to (6, 10), through (5, 5).
TEST(Curve, RunsStraightOrInStepsAndRepeats) {
    const Curve straight({{1, 10}, {3, 30}, {4, 0}}, 5, false);
    const Curve stepped({{1, 10}, {3, 30}, {4, 0}}, 5, true);
    const struct {
        double time, value, stepped, integral, steppedIntegral;
    } cases[] = {{0, 5, 0, 0, 0},       {0.5, 7.5, 0, 3.125, 0},  {1, 10, 10, 7.5, 0},
                 {2, 20, 10, 22.5, 10}, {3, 30, 30, 47.5, 20},    {3.5, 15, 30, 58.75, 35},
                 {4, 0, 0, 62.5, 50},   {4.5, 2.5, 0, 63.125, 50}};
    for (const auto& expected : cases) {
        for (const int rounds : {0, 1, 1000}) {
            const double time = expected.time + 5.0 * rounds;
            SCOPED_TRACE(time);
            EXPECT_NEAR(straight.valueAt(time), expected.value, 1e-6);
            EXPECT_NEAR(stepped.valueAt(time), expected.stepped, 1e-6);
            EXPECT_NEAR(straight.integralTo(time), expected.integral + 65.0 * rounds, 1e-6);
            EXPECT_NEAR(stepped.integralTo(time), expected.steppedIntegral + 50.0 * rounds, 1e-6);
        }
    }
}

TEST(Script, SaysWhereItIsWrongAndWhatWasExpected) {
    // A script whose third line is the one given; one with a frame whose pass is the fourth.
    const auto line = [](const std::string& text) { return "{\n\"period\": 10,\n" + text + "\n}\n"; };
    const auto curve = [&](const std::string& points) { return line("\"curves\": {\"a\": " + points + "}"); };
    const auto pass = [&](const std::string& text) {
        return line("\"curves\": {}, \"frames\": [{\"duration\": 1, \"passes\": [\n{\"start\": 1, " + text +
                    "}]}]");
    };
    const struct {
        std::string text;
        int line;
        const char* expected;
    } cases[] = {
        {"", 1, "expected JSON"},
        {"{\n\n  \"period\" 5\n}", 3, "expected ':'"},
        {"{\n\"period\": 1e999}", 2, "number overflow"},
        {"{\n\"period\": 1,\n\n\"period\": 2}", 4, "a second \"period\""},
        {"[1]", 1, "an object for an element"},
        {"\n{\"curves\": {}}", 2, "a member \"period\""},
        {"{\n\"period\":\n-1\n,\"curves\": {}}", 3, "a number above 0 for \"period\""},
        {line("\"curve\": {}"), 3, "one of period, curves, totals, counters, frames, found \"curve\""},
        {line("\"curves\": {}, \"frames\": []"), 3, "at least one element in \"frames\""},
        {line("\"curves\": {}, \"totals\": {\"b\": {\"curve\":\n\"c\", \"per_second\": 1}}"), 4,
         "found \"c\""},
        {line("\"curves\": {}, \"counters\": {\"usage\":\n5}"), 4, "name of a curve"},
        {"{\"period\": 1e-7, \"curves\": {}}", 1, "at least 0.000001 for \"period\""},
        {curve("-1.1e15"), 3, "a number of at most 1e15 for \"a\""},
        {curve(std::string(1000000, '[')), 3, "at most 32 lists and objects"},
        {curve("null"), 3, "a number, a list of points or an object for \"a\""},
        {curve("\n[]"), 4, "at least one element in \"a\""},
        {curve("[[0, 1],\n[1]]"), 4, "a pair [seconds, value] in \"a\""},
        {curve("[[0, 1],\n[0, 1]]"), 4, "ascending times"},
        {curve("[[0, 1],\n[10, 1]]"), 4, "ascending times from 0 to below the period"},
        {pass("\"duration\": 1"), 4, "a member \"values\""},
        {pass("\"duration\": 1, \"values\": [1, 2, 3, 4, 5, 6, 7]"), 4, "1 to 6 numbers"},
        {pass("\"duration\": 1, \"values\": [4294967296]"), 4, "a whole number from 0"},
        {pass("\"duration\": 1, \"values\": [1],\n\"repeat\": {\"count\": 0, \"every\": 1}"), 5,
         "a whole number from 1 to 1000 for \"count\""},
    };
    for (const auto& wrong : cases) {
        SCOPED_TRACE(wrong.text);
        const std::string error = Script().read("script.json", wrong.text);
        EXPECT_THAT(error, testing::StartsWith("script.json:" + std::to_string(wrong.line) + ": expected"));
        EXPECT_THAT(error, HasSubstr(wrong.expected));
    }
}

TEST(Script, FramesFollowOneAnother) {
    Script script;
    ASSERT_EQ(script.read("", R"({"period": 1, "curves": {}, "frames": [
        {"duration": 10, "passes": [{"start": 1, "duration": 2, "values": [5]}]},
        {"duration": 20, "passes": [{"start": 3, "duration": 1, "values": [9, 4294967290],
                                     "repeat": {"count": 3, "every": 4, "add": [-5, 5]}}]}]})"),
              "");
    EXPECT_EQ(script.frameAt(0.009)->durationMs, 10);
    for (const double round : {0.0, 30.0, 3000.0}) {
        const auto frame = script.frameAt((round + 15.0) / 1000.0);
        EXPECT_NEAR(frame->startMs, round + 10.0, 1e-6);
        EXPECT_EQ(frame->durationMs, 20);
        ASSERT_EQ(frame->passes.size(), 3U);
        EXPECT_EQ(frame->passes[2].startMs, 11);
        EXPECT_EQ(frame->passes[2].endMs, 12);
        EXPECT_EQ(frame->passes[1].values, (std::vector<std::uint32_t>{4, 4294967295U}));
        EXPECT_EQ(frame->passes[2].values, (std::vector<std::uint32_t>{0, 4294967295U}));
    }
}

class DeviceFolder : public testing::Test {
protected:
    DeviceFolder() {
        write("/script.json", R"({"period": 10, "curves": {"load": [[0, 0], [5, 50]], "temp": 36.25},
            "totals": {"ticks": {"curve": "load", "per_second": 2, "start": 7}}})");
        std::filesystem::create_directory(mFolder.path("sys"));
    }

    void write(const std::string& path, const std::string& text) const {
        std::ofstream(mFolder.path() + path) << text;
    }

    const platform::TemporaryDirectory mFolder;
};

TEST_F(DeviceFolder, FilesShowTheFiguresOfTheMoment) {
    write("/sys/busy", "{load}\n");
    write("/sys/stat", "1 (x) {ticks} {temp.1}{temp}{load.3}");
    write("/properties", "# a comment\n\nro.product.model=QV-B31 = 1\nother=\n");
    Device device;
    ASSERT_EQ(device.load(mFolder.path()), "");
    EXPECT_EQ(device.fileAt("/sys/busy", 12.46), "25\n");
    EXPECT_EQ(device.fileAt("/sys/stat", 10.0), "1 (x) 507 36.2360.000");
    EXPECT_FALSE(device.fileAt("/script.json", 0.0)) << "only what is below proc and sys";
    EXPECT_THAT(device.properties(), testing::ElementsAre(testing::Pair("other", ""),
                                                          testing::Pair("ro.product.model", "QV-B31 = 1")));
}

TEST_F(DeviceFolder, SaysWhichFileIsWrong) {
    const struct {
        const char* path;
        const char* text;
        const char* expected;
    } cases[] = {
        {"/sys/a", "1\n2 {lod}\n", ":2: expected the name of a curve or total of the script, found \"lod\""},
        {"/sys/a", "{load.7}", ":1: expected {NAME} or {NAME.DECIMALS}"},
        {"/sys/a", "\n\n{load", ":3: expected a }"},
        {"/properties", "a=b\n=c\n", ":2: expected NAME=VALUE"},
        {"/script.json", "{\n]", ":2: expected JSON"},
    };
    for (const auto& wrong : cases) {
        write("/properties", "");
        write("/sys/a", "");
        write(wrong.path, wrong.text);
        EXPECT_THAT(Device().load(mFolder.path()), HasSubstr(mFolder.path() + wrong.path + wrong.expected));
    }
}

/// What the library sees in a process of its own, by the names that the probe gives its figures.
std::map<std::string, std::string> probe(const std::string& device, double seconds) {
    const std::string command = "KORDANIX_DEVICE='" + device + "' " + doubles::emulator() +
                                "'" SIMULATOR_PROBE "' " + std::to_string(seconds) + " 2>&1";
    std::map<std::string, std::string> figures;
    FILE* const output = popen(command.c_str(), "r");
    std::array<char, 512> line{};
    while (fgets(line.data(), line.size(), output) != nullptr) {
        const std::string text = line.data();
        const std::size_t equals = std::min(text.find('='), text.size() - 1);
        figures[text.substr(0, equals)] = text.substr(equals + 1, text.size() - equals - 2);
    }
    figures["exit"] = std::to_string(pclose(output));
    return figures;
}

// Every figure that the library's own readers return, against the curves: kHz and MHz, tenths of degrees.
TEST(SimulatedDevice, IsWhatTheLibraryMeasures) {
    constexpr double TIME = 11.25;
    const struct {
        const char* name;
        int index, vendor;
        double maxClock, clockUnit, temperatureUnit;
    } devices[] = {{"mali-b31", 1, 0, 585.0, 1000.0, 1.0}, {"adreno-c32", 8, 1, 587.0, 1.0, 10.0}};
    for (const auto& expected : devices) {
        SCOPED_TRACE(expected.name);
        Device device;
        ASSERT_EQ(device.load(std::string(KORDANIX_DEVICES_FOLDER "/") + expected.name), "");
        const Script& script = device.script();
        const auto curve = [&](const char* name) { return script.figureAt(name, TIME); };
        auto figures = probe(expected.name, TIME);
        const auto number = [&](const char* name) { return std::strtod(figures[name].c_str(), nullptr); };
        EXPECT_EQ(figures["exit"], "0");
        EXPECT_EQ(figures["error"], "");
        EXPECT_THAT(figures["process"], testing::EndsWith("simulator_probe")) << "passed through";
        EXPECT_EQ(number("deviceModel"), expected.index);
        EXPECT_EQ(number("vendor"), expected.vendor);
        EXPECT_NEAR(number("gpuMaxClock"), expected.maxClock, 1e-3);
        EXPECT_NEAR(number("gpuClock"), curve("gpu_clock") / expected.clockUnit, 1e-3);
        EXPECT_EQ(number("gpuUsage"), std::round(curve("gpu_load")));
        EXPECT_NEAR(number("gpuTemperature"), curve("gpu_temperature") / expected.temperatureUnit, 0.051);
        EXPECT_NEAR(number("cpuTemperature"), curve("cpu_temperature") / 1000.0, 1e-3);
        // The probe lets a second go by on the device's clock.
        const Curve& load = script.curves.at("cpu_load");
        EXPECT_NEAR(number("cpuTicks"), (load.integralTo(TIME + 1.0) - load.integralTo(TIME)) * 8.0, 2.0);
        const long memory = std::lround(number("memoryUsage") + std::round(curve("mem_free_kb")) +
                                        std::round(curve("mem_cached_kb")));
        EXPECT_THAT(*device.fileAt("/proc/meminfo", 0), HasSubstr(' ' + std::to_string(memory) + " kB"));

        // A capture: from the start of a frame, half a millisecond between samples, figures of the curves.
        EXPECT_EQ(number("counterState"), 1);
        const double start = script.frameAt(TIME)->startMs / 1000.0;
        const double end = start + number("samples") * 0.0005;
        EXPECT_GE(number("samples"), 1);
        EXPECT_NEAR(number("firstTime"), start + 0.0005, 2e-6);
        EXPECT_NEAR(number("lastTime"), end, 2e-6);
        EXPECT_NEAR(number("lastVertex"), script.figureAt("vertex_activity", end), 1e-4);
        EXPECT_NEAR(number("lastFragment"), script.figureAt("fragment_activity", end), 1e-4);
        EXPECT_NEAR(number("counterUsage"), curve("gpu_load"), 1e-3);
    }
}

TEST(SimulatedDevice, AnUnknownOneIsTheMachineItself) {
    auto machine = probe("", 0.0);
    auto unknown = probe("toaster", 0.0);
    EXPECT_EQ(machine["exit"] + machine["error"], "0");
    EXPECT_EQ(machine["samples"], "0.0000000");
    EXPECT_NE(machine["memoryUsage"], "0.0000000");
    EXPECT_EQ(unknown["exit"], "0");
    EXPECT_EQ(unknown["error"], "there is no device \"toaster\"");
    EXPECT_EQ(unknown["deviceModel"], machine["deviceModel"]);
}

}  // namespace
