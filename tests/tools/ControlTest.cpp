#include "RunFixture.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SetCommand.h"
#include "properties/ShowCommands.h"
#include "properties/SystemProperties.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"

#include <sys/wait.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <tuple>
#include <vector>

namespace control {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

class ControlTest : public RunFixture {
protected:
    ControlTest() { platform::changeRuntimeDirectory(mHome.path("kordanix")); }

    ExitCode set(const std::vector<std::string>& words, const SetOptions& options = {}) {
        return setProperties(words, options, mErr);
    }

    static std::string get(const std::string& name) {
        return readProperty("debug.kordanix." + name).value_or("(not set)");
    }

    std::ostringstream mOut;
    std::ostringstream mErr;
};

TEST(ValueText, WritesWhatTheLibraryReadsAndRefusesTheRest) {
    const std::string longest(4096, 'x');
    using Texts = std::vector<std::string>;
    using Case = std::tuple<PropertyType, std::map<std::string, std::string>, Texts>;
    const Case cases[] = {
        {PropertyType::BOOLEAN, {{"true", "true"}, {" Off ", "false"}, {"YES", "true"}}, {"1", ""}},
        {PropertyType::POSITION,
         {{"TOP_LEFT", "0"}, {"bottom_Right", "7"}, {"6", "6"}},
         {"8", "-1", "CENTER"}},
        {PropertyType::COLOR,
         {{"#0084FF", "4278224127"}, {"#800084ff", "2147517695"}, {"-16743169", "4278224127"}},
         {"4294967296", "-2147483649", "0x0084FF", "#0084F", "#-084FF", "#0084FG", "#"}},
        {PropertyType::OPACITY, {{"255", "255"}, {"+0", "0"}}, {"256", "12px"}},
        {PropertyType::SCALE,
         {{" 0.5", "0.5"}, {"1.8", "1.8"}, {"1", "1"}},
         {"2", "0.49", "1,5", "1.", "nan", "1.234"}},
        {PropertyType::API, {{"-2147483648", "-2147483648"}}, {"2147483648", "99999999999999999999"}},
        {PropertyType::TEXT, {{" a.b ", " a.b "}, {"", ""}, {longest, longest}}, {longest + 'x'}}};
    for (const auto& [type, typedAndWritten, refused] : cases) {
        for (const auto& [typed, written] : typedAndWritten) {
            EXPECT_EQ(toPropertyText(type, typed).value_or("(refused)"), written) << typed;
        }
        for (const std::string& typed : refused) {
            EXPECT_EQ(toPropertyText(type, typed), std::nullopt) << typed;
        }
    }
}

TEST(ValueText, ShowsWhatTheLibraryMakesOfATextWhateverItIs) {
    using Case = std::tuple<const char*, const char*, const char*, bool>;  // name, text, shown, is readable
    const Case cases[] = {{"widget_memory", "true", "true", true},
                          {"widget_fps", "TRUE", "true", false},  // the default
                          {"widget_memory", "TRUE", "false", false},
                          {"widget_fps_position", "7", "BOTTOM_RIGHT", true},
                          {"widget_fps_position", "3x", "CENTER_LEFT", false},
                          {"widget_fps_position", "9", "9", false},
                          {"widget_fps_position", "TOP_RIGHT", "TOP_LEFT", false},
                          {"bg_color", "-16743169", "#0084FF", true},
                          {"bg_color", "0xFFFFFF", "#000000", false},
                          {"widget_fps_current_color", "white", "#0084FF", false},
                          {"bg_transparency", "4294967297", "1", false},  // the low 32 bits
                          {"proc", "a b", "a b", true}};
    for (const auto& [name, text, shown, readable] : cases) {
        const Property* const property = findProperty(name);
        ASSERT_NE(property, nullptr) << name;
        EXPECT_EQ(toDisplayText(*property, std::string(text)), shown) << text;
        EXPECT_EQ(isReadable(*property, text), readable) << text;
    }
}

TEST_F(ControlTest, NothingIsWrittenUnlessEverythingIsRight) {
    const std::pair<std::vector<std::string>, const char*> refusals[] = {
        {{"widget_fsp", "true"}, "did you mean 'widget_fps'"},
        {{"nonsense", "true"}, "no property 'nonsense'; see"},
        {{"bg_color", "red"}, "'red' is no value for 'bg_color'; expected #RRGGBB"},
        {{"status"}, "'status' has no value"}};
    for (const auto& [words, error] : refusals) {
        std::vector<std::string> all = {"widget_memory", "true"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_EQ(set(all), USAGE_ERROR);
        EXPECT_THAT(mErr.str(), HasSubstr(error));
        EXPECT_EQ(get("widget_memory") + get("settingsgeneration"), "(not set)(not set)") << error;
    }
    EXPECT_EQ(set({"new_name", "x", "other.name", "y"}, {true, true}), SUCCESS) << mErr.str();
    EXPECT_EQ(get("new_name") + readProperty("other.name").value_or(""), "xy");
    EXPECT_EQ(get("settingsgeneration"), "1");
    EXPECT_EQ(set({"bad name", "x"}, {true, true}), USAGE_ERROR);
    EXPECT_EQ(set({"widget_fps", "maybe"}, {true, true}), USAGE_ERROR);
    EXPECT_EQ(set({"bg_color", "#102030"}, {false, false}), SUCCESS);
    EXPECT_EQ(get("bg_color") + ' ' + get("settingsgeneration"), "4279246896 1");
    EXPECT_EQ(publishProperties(mErr), SUCCESS);
    EXPECT_EQ(get("settingsgeneration"), "2");
}

TEST_F(ControlTest, GetListAndResetAgreeOnWhatIsSet) {
    ASSERT_EQ(set({"widget_fps_current_color", "#010203", "status", "true"}), SUCCESS);
    ASSERT_EQ(platform::setProperty("debug.kordanix.widget_fps", "TRUE"), "");
    EXPECT_EQ(printProperty("widget_fps_current_color", mOut, mErr), SUCCESS);
    EXPECT_EQ(printProperty("widget_fps_median_color", mOut, mErr), SUCCESS);
    EXPECT_EQ(printProperty("widget_fps_curent_color", mOut, mErr), FAILURE);
    EXPECT_THAT(mErr.str(), HasSubstr("did you mean 'widget_fps_current_color'"));
    EXPECT_EQ(printSetProperties(mOut), SUCCESS);
    EXPECT_THAT(mOut.str(), testing::StartsWith("4278256131\n4294930944\ndebug.kordanix.status true\n"));
    EXPECT_EQ(listProperties(mOut), SUCCESS);
    EXPECT_THAT(mOut.str(), ContainsRegex("widget_fps_current_color +#010203 +#0084FF +its colour\n"));
    EXPECT_THAT(mOut.str(), ContainsRegex("widget_fps +true +true +frame-rate widget .set to \"TRUE\""));

    mOut.str({});
    EXPECT_EQ(resetProperties(true, mErr), SUCCESS);
    EXPECT_EQ(get("widget_fps"), "(not set)");
    EXPECT_EQ(listPropertiesAsJson(mOut), SUCCESS);
    const auto list = nlohmann::json::parse(mOut.str());
    ASSERT_EQ(list.size(), properties().count);
    EXPECT_EQ(list[0]["name"], "debug.kordanix.status");
    EXPECT_EQ(list[0]["value"], "true");
    EXPECT_EQ(list[6]["value"], "128");
    EXPECT_EQ(resetProperties(false, mErr), SUCCESS);
    EXPECT_EQ(get("status"), "(not set)");
}

TEST_F(ControlTest, WatchPrintsWritesThatHappenWhileItWatches) {
    const support::ChildProcess watch({"/bin/sh", "-c", "exec $CTL watch --properties"});
    EXPECT_TRUE(support::waitUntil([&] {  // whether it watches yet shows only when it has printed something
        platform::setProperty("debug.kordanix.begin", "1");
        return !watch.output().empty();
    }));
    const std::pair<std::vector<std::pair<std::string, std::string>>, const char*> writes[] = {
        {{{"other.name", "x"}, {"debug.kordanix.bg_color", "red"}},
         "\nbg_color #000000 (\"red\" cannot be read)\n"},
        {{{"debug.kordanix.bg_color", ""}}, "bg_color #000000 (default)\n"},
        {{{"debug.kordanix.settingsgeneration", "7"}, {"debug.kordanix.widget_fps_position", "3"}},
         "widget_fps_position CENTER_LEFT\npublished (7)\n"}};
    for (const auto& [written, printed] : writes) {
        EXPECT_EQ(platform::setProperties(written), "");
        EXPECT_TRUE(support::waitUntil([&, text = std::string(printed)] {
            const std::string output = watch.output();
            return output.size() > text.size() && output.substr(output.size() - text.size()) == text;
        })) << printed
            << watch.output();
    }
    EXPECT_THAT(watch.output(), testing::Not(HasSubstr("other")));
}

TEST_F(ControlTest, TheCommandLineIsUnderstoodOrRefused) {
    const struct {
        std::string line;
        int status;
        const char* output;
    } cases[] = {
        {"$CTL --version", 0, "kordanixctl "},
        {"$CTL help", 0, "Usage: kordanixctl [OPTIONS] VERB"},
        {"$CTL help doctor", 0, "Usage: kordanixctl doctor"},
        {"$CTL help set get", 2, "'help' explains one verb; 'get' is a word too many"},
        {"$CTL", 2, "no verb is given; see 'kordanixctl --help'"},
        {"$CTL frobnicate", 2, "frobnicate"},
        {"$CTL set", 2, "NAME is required; see 'kordanixctl set --help'"},
        {"$CTL set widget_fps_position -- -1", 2, "'-1' is no value for"},
        {"$CTL set bg_color -16743169 api -1 --no-publish && $CTL get bg_color && $CTL get api", 0,
         "4278224127\n-1\n"},
        {"$CTL get api status", 2, "not expected: status"},
        {"$CTL key volume", 2, "'volume' is not a key"},
        {"$CTL key dump --process 2000000000", 1, "there is no process"},
        {"$CTL background", 1, "no overlay is running"},
        {"$CTL --process abc list", 2, "--process: 'abc' is not the number of a process;"},
        {"$CTL list --process", 2, "--process needs a value: PID"},
        {"$CTL --process $$ get api; sleep 0", 0, "-1\n"},
        {"$CTL watch --properties --seconds 0", 0, ""},
        {"$CTL watch --properties --seconds nan", 2, "'nan' is not a number of seconds"},
        {"$CTL list >/dev/full", 1, "standard output could not be written"},
        {"$CTL help >/dev/full", 1, "standard output could not be written"},
        {"{ sleep 0.1; $CTL list; echo $? >s; } | true; cat s", 0, "0\n"},
        {"export KORDANIX_RUNTIME_DIR=/dev/null; for v in 'set status true' get list 'watch --properties "
         "--seconds 0' "
         "publish "
         "reset 'key dump' background doctor; do $CTL $v && exit 0; done 2>&1 | grep -c 'ory /dev/null is'",
         0, "9\n"},
    };
    for (const auto& [line, status, output] : cases) {
        const support::Outcome outcome = run(line);
        EXPECT_EQ(outcome.status, status) << line << outcome.out << outcome.err;
        EXPECT_THAT(outcome.out + outcome.err, HasSubstr(output)) << line;
    }
}

}  // namespace
}  // namespace control
