#include "platform/TemporaryDirectory.h"
#include "simulator/Device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

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
    const std::tuple<std::string, int, const char*> cases[] = {
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
    for (const auto& [text, number, expected] : cases) {
        SCOPED_TRACE(text);
        const std::string error = Script().read("script.json", text);
        EXPECT_THAT(error, testing::StartsWith("script.json:" + std::to_string(number) + ": expected"));
        EXPECT_THAT(error, HasSubstr(expected));
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
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"/sys/a", "1\n2 {lod}\n", ":2: expected the name of a curve or total of the script, found \"lod\""},
        {"/sys/a", "{load.7}", ":1: expected {NAME} or {NAME.DECIMALS}"},
        {"/sys/a", "\n\n{load", ":3: expected a }"},
        {"/properties", "a=b\n=c\n", ":2: expected NAME=VALUE"},
        {"/script.json", "{\n]", ":2: expected JSON"},
    };
    for (const auto& [path, text, expected] : cases) {
        write("/properties", "");
        write("/sys/a", "");
        write(path, text);
        EXPECT_THAT(Device().load(mFolder.path()), HasSubstr(mFolder.path() + path + expected));
    }
}

}  // namespace
