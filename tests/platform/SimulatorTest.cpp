#include "simulator/Device.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

namespace {

using simulator::Curve;
using simulator::Device;
using simulator::Script;
using testing::HasSubstr;

// From (4, 0) a straight one rises to (6, 10), through (5, 5).
TEST(Curve, RunsStraightOrInStepsAndRepeats) {
    const Curve straight({{1, 10}, {3, 30}, {4, 0}}, 5, false);
    const Curve stepped({{1, 10}, {3, 30}, {4, 0}}, 5, true);
    const struct {
        double time, value, stepped, integral, steppedIntegral;
    } cases[] = {
        {0, 5, 0, 0, 0},     {1, 10, 10, 7.5, 0},       {2, 20, 10, 22.5, 10},       {3.5, 15, 30, 58.75, 35},
        {4, 0, 0, 62.5, 50}, {4.5, 2.5, 0, 63.125, 50}, {4504, 0, 0, 58562.5, 45050}};
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.time);
        EXPECT_NEAR(straight.valueAt(expected.time), expected.value, 1e-6);
        EXPECT_NEAR(stepped.valueAt(expected.time), expected.stepped, 1e-6);
        EXPECT_NEAR(straight.integralTo(expected.time), expected.integral, 1e-6);
        EXPECT_NEAR(stepped.integralTo(expected.time), expected.steppedIntegral, 1e-6);
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
        {"{\"period\": 1e999}", "", "number overflow"},
        {"{\"period\": 1, \"period\": 2}", "", "a second \"period\""},
        {"{\"period\": -1, \"curves\": {}}", ": /period", "at least 0.000001"},
        {script("\"curve\": {}"), ": /curve", "one of period, curves, totals, counters, frames"},
        {script("\"curves\": {}, \"totals\": {\"b\": {\"curve\": \"c\", \"per_second\": 1}}"),
         ": /totals/b/curve", "the name of a curve"},
        {curve("-1.1e15"), ": /curves/a", "a number of at most 1e15"},
        {curve(std::string(100000, '[')), ":1", "JSON"},
        {curve("[[0, 1], [1]]"), ": /curves/a/1", "a pair [seconds, value]"},
        {curve("[[0, 1], [10, 1]]"), ": /curves/a/1", "ascending times from 0 to below the period"},
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
        EXPECT_TRUE(mFolder.shell(R"(mkdir sys; echo '{"period": 10,
            "curves": {"load": [[0, 0], [5, 50]], "temp": 36.25},
            "totals": {"ticks": {"curve": "load", "per_second": 2, "start": 7}}}' >script.json)"));
    }

    const support::TemporaryDirectory mFolder;
};

TEST_F(DeviceFolder, FilesShowTheFiguresOfTheMoment) {
    ASSERT_TRUE(mFolder.shell(R"(echo '{load}' >sys/busy; printf '1 {ticks} {temp.1}{temp}{load.3}' >sys/stat
        printf '# a comment\n\nro.product.model=QV-B31 = 1\nother=\n' >properties)"));
    Device device;
    ASSERT_EQ(device.load(mFolder.path()), "");
    EXPECT_EQ(device.fileAt("/sys/busy", 12.46), "25\n");
    EXPECT_EQ(device.fileAt("/sys/stat", 10.0), "1 507 36.2360.000");
    EXPECT_FALSE(device.fileAt("/script.json", 0.0)) << "only what is below proc and sys";
    EXPECT_THAT(device.properties(), testing::ElementsAre(testing::Pair("other", ""),
                                                          testing::Pair("ro.product.model", "QV-B31 = 1")));
}

TEST_F(DeviceFolder, SaysWhichFileIsWrong) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"/sys/a", "1\\n2 {lod}", ":2: expected the name of a curve or total of the script, found \"lod\""},
        {"/sys/a", "{load.7}", ":1: expected {NAME} or {NAME.DECIMALS}"},
        {"/sys/a", "\\n\\n{load", ":3: expected a }"},
        {"/properties", "a=b\\n=c", ":2: expected NAME=VALUE"},
        {"/script.json", "{\\n]", ":2: expected JSON"},
    };
    for (const auto& [path, text, expected] : cases) {
        mFolder.shell(": >properties >sys/a; printf '" + std::string(text) + "' >." + path);
        EXPECT_THAT(Device().load(mFolder.path()), HasSubstr(mFolder.path() + path + expected));
    }
}

}  // namespace
