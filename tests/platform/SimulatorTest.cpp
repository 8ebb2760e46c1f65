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
    const auto script = [](const std::string& text) { return "{\"period\": 10, " + text + "}"; };
    const auto curve = [&](const std::string& points) {
        return script("\"curves\": {\"a\": " + points + "}");
    };
    const auto pass = [&](const std::string& text) {
        return script("\"curves\": {}, \"frames\": [{\"duration\": 1, \"passes\": [{\"start\": 1, " + text +
                      "}]}]");
    };
    const std::string thePass = ": /frames/0/passes/0";
    const std::tuple<std::string, std::string, const char*> cases[] = {
        {"", ":1", "JSON"},
        {"{\n\n  \"period\" 5\n}", ":3", "expected ':'"},
        {"{\"period\": 1e999}", "", "number overflow"},
        {"{\"period\": 1, \"period\": 2}", "", "a second \"period\""},
        {"[1]", "", "an object"},
        {"{\"curves\": {}}", "", "a member \"period\""},
        {"{\"period\": -1, \"curves\": {}}", ": /period", "at least 0.000001"},
        {script("\"curve\": {}"), ": /curve", "one of period, curves, totals, counters, frames"},
        {script("\"curves\": {}, \"frames\": []"), ": /frames", "at least one element"},
        {script("\"curves\": {}, \"totals\": {\"b\": {\"curve\": \"c\", \"per_second\": 1}}"),
         ": /totals/b/curve", "the name of a curve"},
        {curve("-1.1e15"), ": /curves/a", "a number of at most 1e15"},
        {curve(std::string(100000, '[')), ":1", "JSON"},
        {curve("null"), ": /curves/a", "a number, a list of points or an object"},
        {curve("[[0, 1], [1]]"), ": /curves/a/1", "a pair [seconds, value]"},
        {curve("[[0, 1], [10, 1]]"), ": /curves/a/1", "ascending times from 0 to below the period"},
        {pass("\"duration\": 1"), thePass, "a member \"values\""},
        {pass("\"duration\": 1, \"values\": [1, 2, 3, 4, 5, 6, 7]"), thePass + "/values", "1 to 6 numbers"},
        {pass("\"duration\": 1, \"values\": [1], \"repeat\": {\"count\": 0, \"every\": 1}"),
         thePass + "/repeat/count", "a whole number from 1 to 1000"},
    };
    for (const auto& [text, where, expected] : cases) {
        const std::string error = Script().read("script.json", text);
        EXPECT_THAT(error, testing::StartsWith("script.json" + where + ": expected ")) << text.substr(0, 100);
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
