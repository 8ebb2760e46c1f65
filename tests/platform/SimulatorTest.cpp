#include "doubles/Emulator.h"
#include "simulator/Device.h"
#include "simulator/DeviceSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

using simulator::Curve;
using simulator::Device;
using simulator::Script;
using testing::HasSubstr;

namespace fs = std::filesystem;

const std::string DEVICES = KORDANIX_DEVICES_FOLDER;

struct CurveCase {
    double time;
    double value;
    double stepped;
    double integral;
    double steppedIntegral;
};

// Points (1, 10), (3, 30), (4, 0) in a round of 5 seconds: from (4, 0) it rises to (6, 10), through (5, 5).
TEST(Curve, RunsStraightOrInStepsAndRepeats) {
    const Curve straight({{1, 10}, {3, 30}, {4, 0}}, 5, false);
    const Curve stepped({{1, 10}, {3, 30}, {4, 0}}, 5, true);
    for (const CurveCase& expected :
         {CurveCase{0, 5, 0, 0, 0}, CurveCase{0.5, 7.5, 0, 3.125, 0}, CurveCase{1, 10, 10, 7.5, 0},
          CurveCase{2, 20, 10, 22.5, 10}, CurveCase{3, 30, 30, 47.5, 20}, CurveCase{3.5, 15, 30, 58.75, 35},
          CurveCase{4, 0, 0, 62.5, 50}, CurveCase{4.5, 2.5, 0, 63.125, 50}}) {
        for (const int rounds : {0, 1, 1000}) {
            const double time = expected.time + 5.0 * rounds;
            SCOPED_TRACE(time);
            EXPECT_NEAR(straight.valueAt(time), expected.value, 1e-6);
            EXPECT_NEAR(stepped.valueAt(time), expected.stepped, 1e-6);
            EXPECT_NEAR(straight.integralTo(time), expected.integral + 65.0 * rounds, 1e-6);
            EXPECT_NEAR(stepped.integralTo(time), expected.steppedIntegral + 50.0 * rounds, 1e-6);
        }
    }
    const Curve constant({{0, 7}}, 5, false);
    EXPECT_EQ(constant.valueAt(4.9), 7);
    EXPECT_NEAR(constant.integralTo(12), 84, 1e-9);
}

/// A script whose third line is the one given.
std::string withLine(const std::string& line) {
    return "{\n\"period\": 10,\n" + line + "\n}\n";
}

TEST(Script, SaysWhereItIsWrongAndWhatWasExpected) {
    const std::string curves = "\"curves\": {\"a\": 1}, ";
    const auto frame = [&](const std::string& pass) {
        return withLine(curves + "\"frames\": [{\"duration\": 1, \"passes\": [\n" + pass + "]}]");
    };
    const struct {
        std::string text;
        int line;
        const char* expected;
    } cases[] = {
        {"", 1, "expected JSON"},
        {"{\n\n  \"period\" 5\n}", 3, "expected ':'"},
        {"{\"period\": 1,\n\"curves\": {}", 2, "end of input"},
        {"{\n\"period\": 1,\n\"curves\": {},\n}", 4, "expected string literal"},
        {"{\n\"period\": 1e999}", 2, "number overflow"},
        {"{\n\"period\": 1,\n\n\"period\": 2}", 4, "a second \"period\""},
        {"[1]", 1, "an object for an element"},
        {"\n{\"curves\": {}}", 2, "a member \"period\""},
        {"{\n\"period\":\n-1\n,\"curves\": {}}", 3, "a number above 0 for \"period\""},
        {"{\"curves\": {},\n\"period\": \"1\"}", 2, "a number for \"period\""},
        {withLine("\"curve\": {}"), 3, "one of period, curves, totals, counters, frames, found \"curve\""},
        {withLine("\"curves\": []"), 3, "an object for \"curves\""},
        {withLine("\"curves\": {\"a\": null}"), 3, "a number, a list of points or an object for \"a\""},
        {withLine("\"curves\": {\n\"a\": []}"), 4, "at least one element in \"a\""},
        {withLine("\"curves\": {\"a\": [[0, 1],\n[1]]}"), 4, "a pair [seconds, value] in \"a\""},
        {withLine("\"curves\": {\"a\": [[0, 1],\n[0, 1]]}"), 4, "ascending times"},
        {withLine("\"curves\": {\"a\": [[0, 1],\n[10, 1]]}"), 4,
         "ascending times from 0 to below the period"},
        {withLine("\"curves\": {\"a\": {\"points\": [[0, 1]],\n\"steps\": [[0, 1]]}}"), 3, "either"},
        {withLine("\"curves\": {\"a\": {\"period\":\n0, \"points\": [[0, 1]]}}"), 4, "above 0"},
        {withLine(curves + "\"totals\": {\"b\": {\"curve\":\n\"c\", \"per_second\": 1}}"), 4, "found \"c\""},
        {withLine(curves + "\"totals\": {\"a\": {\"curve\": \"a\", \"per_second\": 1}}"), 3, "another name"},
        {withLine(curves + "\"counters\": {\"usage\": \"a\",\n\"vertex_activity\": 5}"), 4,
         "name of a curve"},
        {withLine(curves + "\"frames\": []"), 3, "at least one element in \"frames\""},
        {frame(""), 3, "at least one element in \"passes\""},
        {frame("{\"start\": -1, \"duration\": 1, \"values\": [1]}"), 4, "0 or more for \"start\""},
        {frame("{\"start\": 1, \"duration\": 1}"), 4, "a member \"values\""},
        {frame("{\"start\": 1, \"duration\": 1, \"values\": [1, 2, 3, 4, 5, 6, 7]}"), 4, "1 to 6 numbers"},
        {frame("{\"start\": 1, \"duration\": 1, \"values\": [4294967296]}"), 4, "a whole number from 0"},
        {frame("{\"start\": 1, \"duration\": 1, \"values\": [0.5]}"), 4, "a whole number from 0"},
        {frame("{\"start\": 1, \"duration\": 1, \"values\": [1],\n\"repeat\": {\"count\": 0, \"every\": 1}}"),
         5, "a whole number from 1 to 1000 for \"count\""},
        {frame("{\"start\": 1, \"duration\": 1, \"values\": [1],\n"
               "\"repeat\": {\"count\": 2, \"every\": 1, \"add\": [1, 2]}}"),
         5, "as many numbers"},
    };
    for (const auto& wrong : cases) {
        SCOPED_TRACE(wrong.text);
        const std::string error = Script().read("some/script.json", wrong.text);
        EXPECT_THAT(error,
                    testing::StartsWith("some/script.json:" + std::to_string(wrong.line) + ": expected"));
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
    EXPECT_EQ(script.frameAt(0.0)->durationMs, 10);
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
    ASSERT_EQ(Script().read("", R"({"period": 1, "curves": {}})"), "");
    EXPECT_FALSE(Script().frameAt(1.0));
}

class DeviceFolder : public testing::Test {
protected:
    DeviceFolder() {
        std::string name = (fs::temp_directory_path() / "device-test-XXXXXX").string();
        mFolder = mkdtemp(name.data());
        write("script.json", R"({"period": 10, "curves": {"load": [[0, 0], [5, 50]], "temp": 36.25},
            "totals": {"ticks": {"curve": "load", "per_second": 2, "start": 7}}})");
        write("properties", "# a comment\n\nro.product.model=QV-B31 = 1\nother=\n");
    }
    ~DeviceFolder() override { fs::remove_all(mFolder); }

    void write(const std::string& path, const std::string& text) const {
        fs::create_directories(fs::path(mFolder + '/' + path).parent_path());
        std::ofstream(mFolder + '/' + path) << text;
    }

    std::string mFolder;
};

TEST_F(DeviceFolder, FilesShowTheFiguresOfTheMoment) {
    write("sys/kernel/gpu/gpu_busy", "{load}\n");
    write("proc/self/stat", "1 (x) {ticks} {temp.1}{temp}{load.3}");
    write("proc/empty", "");
    Device device;
    ASSERT_EQ(device.load(mFolder), "");
    EXPECT_EQ(device.fileAt("/sys/kernel/gpu/gpu_busy", 12.46), "25\n");
    EXPECT_EQ(device.fileAt("/proc/self/stat", 10.0),
              "1 (x) 507 36.236"
              "0.000");
    EXPECT_EQ(device.fileAt("/proc/empty", 1.0), "");
    EXPECT_FALSE(device.fileAt("/script.json", 0.0)) << "only what is below proc and sys";
    EXPECT_FALSE(device.fileAt("/sys/kernel/gpu", 0.0));
    EXPECT_THAT(device.properties(), testing::ElementsAre(testing::Pair("other", ""),
                                                          testing::Pair("ro.product.model", "QV-B31 = 1")));
}

TEST_F(DeviceFolder, SaysWhichFileIsWrong) {
    EXPECT_THAT(Device().load(mFolder + "/none"), HasSubstr("no such device folder"));
    const struct {
        const char* path;
        std::string text;
        const char* expected;
    } cases[] = {
        {"sys/a", "1\n2 {lod}\n",
         "/sys/a:2: expected the name of a curve or total of the script, found \"lod\""},
        {"sys/a", "{load.}", "/sys/a:1: expected {NAME} or {NAME.DECIMALS}"},
        {"sys/a", "{load.7}", "/sys/a:1: expected {NAME} or {NAME.DECIMALS}"},
        {"sys/a", "\n\n{load", "/sys/a:3: expected a }"},
        {"properties", "a=b\n=c\n", "/properties:2: expected NAME=VALUE"},
        {"properties", "a=" + std::string(92, 'x'), "/properties:1: expected a value of at most 91 bytes"},
        {"script.json", "{\n]", "/script.json:2: expected JSON"},
    };
    for (const auto& wrong : cases) {
        fs::remove_all(mFolder + "/sys");
        write(wrong.path, wrong.text);
        EXPECT_THAT(Device().load(mFolder), HasSubstr(mFolder + wrong.expected));
        if (std::string(wrong.path) != "sys/a") {
            write(wrong.path, "");
        }
    }
    fs::remove(mFolder + "/script.json");
    EXPECT_THAT(Device().load(mFolder), HasSubstr("script.json: No such file"));
}

// The frames of the devices are what the render-pass rows are looked at with.
TEST(Devices, HaveFramesOfManyKinds) {
    const std::vector<std::string> names = simulator::deviceNames();
    EXPECT_THAT(names, testing::ElementsAre("adreno-c32", "mali-b31"));
    std::set<std::size_t> passCounts;
    std::set<std::size_t> valueCounts;
    bool hasOverlap = false;
    bool hasShort = false;
    bool hasPastEnd = false;
    for (const std::string& name : names) {
        Device device;
        ASSERT_EQ(device.load(DEVICES + '/' + name), "");
        ASSERT_TRUE(device.script().counters);
        for (const simulator::ScriptedFrame& frame : device.script().frames) {
            passCounts.insert(frame.passes.size());
            double end = 0.0;
            for (const simulator::ScriptedPass& pass : frame.passes) {
                valueCounts.insert(pass.values.size());
                hasOverlap = hasOverlap || pass.startMs < end;
                hasShort = hasShort || pass.endMs - pass.startMs < 0.01 * frame.durationMs;
                end = pass.endMs;
            }
            hasPastEnd = hasPastEnd || end > frame.durationMs;
        }
    }
    EXPECT_EQ(*passCounts.begin(), 2U);
    EXPECT_EQ(*passCounts.rbegin(), 40U);
    EXPECT_EQ(*valueCounts.begin(), 1U);
    EXPECT_EQ(*valueCounts.rbegin(), 6U);
    EXPECT_TRUE(hasOverlap && hasShort && hasPastEnd);
}

/// What the library sees in a process of its own, by the names that the probe gives its figures.
std::map<std::string, std::string> probe(const std::string& device, double seconds) {
    const std::string command = "KORDANIX_DEVICE='" + device + "' " + doubles::emulator() +
                                "'" SIMULATOR_PROBE "' " + std::to_string(seconds) + " 2>&1";
    std::map<std::string, std::string> figures;
    FILE* const output = popen(command.c_str(), "r");
    std::array<char, 512> line{};
    while (fgets(line.data(), line.size(), output) != nullptr) {
        std::string text = line.data();
        text.erase(text.find_last_not_of('\n') + 1);
        const std::size_t equals = std::min(text.find('='), text.size());
        figures[text.substr(0, equals)] = text.substr(std::min(equals + 1, text.size()));
    }
    figures["exit"] = std::to_string(pclose(output));
    return figures;
}

double number(const std::string& text) {
    return std::strtod(text.c_str(), nullptr);
}

struct DeviceCase {
    const char* name;
    int index;
    int vendor;
    double maxClock;
    double hertz;  ///< ticks for each percent of CPU load and second
};

class SimulatedDevice : public testing::TestWithParam<DeviceCase> {};

// Every figure that the library's own readers return, against the curves: kHz and MHz, tenths of degrees.
TEST_P(SimulatedDevice, IsWhatTheLibraryMeasures) {
    constexpr double TIME = 11.25;
    const DeviceCase& expected = GetParam();
    Device device;
    ASSERT_EQ(device.load(DEVICES + '/' + expected.name), "");
    const auto curve = [&](const char* name) { return device.script().figureAt(name, TIME); };
    const double clockUnit = expected.vendor == 0 ? 1000.0 : 1.0;
    const double temperatureUnit = expected.vendor == 0 ? 1.0 : 10.0;

    auto figures = probe(expected.name, TIME);
    EXPECT_EQ(figures["exit"], "0");
    EXPECT_EQ(figures["error"], "");
    EXPECT_EQ(number(figures["deviceModel"]), expected.index);
    EXPECT_EQ(number(figures["vendor"]), expected.vendor);
    EXPECT_NEAR(number(figures["gpuMaxClock"]), expected.maxClock, 1e-3);
    EXPECT_NEAR(number(figures["gpuClock"]), curve("gpu_clock") / clockUnit, 1e-3);
    EXPECT_EQ(number(figures["gpuUsage"]), std::round(curve("gpu_load")));
    EXPECT_NEAR(number(figures["gpuTemperature"]), curve("gpu_temperature") / temperatureUnit, 0.051);
    EXPECT_NEAR(number(figures["cpuTemperature"]), curve("cpu_temperature") / 1000.0, 1e-3);
    EXPECT_EQ(number(figures["gpuMemory"]), std::round(curve("gpu_mem_total")));
    EXPECT_THAT(figures["process"], testing::EndsWith("simulator_probe")) << "passed through";
    // The probe lets a second go by on the device's clock.
    const double load = device.script().curves.at("cpu_load").integralTo(TIME + 1.0) -
                        device.script().curves.at("cpu_load").integralTo(TIME);
    EXPECT_NEAR(number(figures["cpuTicks"]), load * expected.hertz, 2.0);
    const double used = number(figures["memoryUsage"]) + std::round(curve("mem_free_kb")) +
                        std::round(curve("mem_cached_kb"));
    EXPECT_THAT(*device.fileAt("/proc/meminfo", 0),
                HasSubstr(' ' + std::to_string(std::lround(used)) + " kB"))
        << "together, all of it";

    // A capture: from the start of a frame, half a millisecond between samples, figures of the curves.
    EXPECT_EQ(number(figures["counterState"]), 1);
    const double start = device.script().frameAt(TIME)->startMs / 1000.0;
    const double samples = number(figures["samples"]);
    EXPECT_GE(samples, 1);
    EXPECT_NEAR(number(figures["firstTime"]), start + 0.0005, 2e-6);
    EXPECT_NEAR(number(figures["lastTime"]), start + samples * 0.0005, 2e-6);
    EXPECT_NEAR(number(figures["lastVertex"]),
                device.script().figureAt("vertex_activity", start + samples * 0.0005), 1e-4);
    EXPECT_NEAR(number(figures["lastFragment"]),
                device.script().figureAt("fragment_activity", start + samples * 0.0005), 1e-4);
    EXPECT_NEAR(number(figures["counterUsage"]), curve("gpu_load"), 1e-3);
}

INSTANTIATE_TEST_SUITE_P(Devices, SimulatedDevice,
                         testing::Values(DeviceCase{"mali-b31", 1, 0, 585.0, 8.0},
                                         DeviceCase{"adreno-c32", 8, 1, 587.0, 8.0}),
                         [](const auto& device) { return device.index == 0 ? "Mali" : "Adreno"; });

TEST(NoDevice, IsTheMachineItself) {
    auto machine = probe("", 0.0);
    EXPECT_EQ(machine["exit"], "0");
    EXPECT_EQ(machine["error"], "");
    EXPECT_EQ(number(machine["counterState"]), 3);
    EXPECT_EQ(number(machine["samples"]), 0);
    EXPECT_GT(number(machine["memoryUsage"]), 0);

    auto unknown = probe("toaster", 0.0);
    EXPECT_EQ(unknown["exit"], "0");
    EXPECT_EQ(unknown["error"], "there is no device \"toaster\"");
    EXPECT_EQ(unknown["deviceModel"], machine["deviceModel"]);
    EXPECT_EQ(unknown["gpuMaxClock"], machine["gpuMaxClock"]);
}

}  // namespace
