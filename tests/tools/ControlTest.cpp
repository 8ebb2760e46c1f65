#include <gmock/gmock.h>
#include <sys/system_properties.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "doubles/Emulator.h"
#include "platform/TemporaryDirectory.h"
#include "properties/SetCommand.h"
#include "properties/ShowCommands.h"
#include "properties/SystemProperties.h"
#include "properties/WatchCommand.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"
#include "support/ChildProcess.h"

namespace control {
namespace {

using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;

/// The whole process works in a runtime directory of its own: a process maps its properties only once.
class RuntimeDirectoryEnvironment : public testing::Environment {
public:
    void SetUp() override { setenv("KORDANIX_RUNTIME_DIR", mDirectory.path().c_str(), 1); }

private:
    const platform::TemporaryDirectory mDirectory;
};

[[maybe_unused]] const auto* const gEnvironment =
    testing::AddGlobalTestEnvironment(new RuntimeDirectoryEnvironment);

/// Begins with every property at its default.
class ControlTest : public testing::Test {
protected:
    ControlTest() { EXPECT_EQ(resetProperties(false, mErr), SUCCESS) << mErr.str(); }

    ExitCode set(const std::vector<std::string>& words, const SetOptions& options = {}) {
        return setProperties(words, options, mErr);
    }

    static std::string get(const std::string& name) {
        return readProperty("debug.kordanix." + name).value_or("(not set)");
    }

    /// How often anything was published.
    static int generation() { return std::stoi(get("settingsgeneration")); }

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
         {{"TOP_LEFT", "0"}, {"bottom_Right", "7"}, {"CENTER_RIGHT", "4"}, {"6", "6"}},
         {"8", "-1", "CENTER"}},
        {PropertyType::COLOR,
         {{"#0084FF", "4278224127"},
          {"#800084ff", "2147517695"},
          {"-16743169", "4278224127"},
          {"4294967295", "4294967295"}},
         {"4294967296", "-2147483649", "0x0084FF", "#0084F", "#-084FF", "#0084FG", "#"}},
        {PropertyType::OPACITY, {{"255", "255"}, {"+0", "0"}}, {"256", "12px"}},
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

TEST_F(ControlTest, APublicationComesAfterTheValuesThatItPublishes) {
    const int before = generation();
    std::string seen;
    std::thread reader([&] {
        while (generation() == before) {
            std::this_thread::yield();
        }
        seen = get("status") + ' ' + get("widget_fps_position") + ' ' + get("bg_color") + ' ' + get("proc");
    });
    EXPECT_EQ(set({"status", "on", "debug.kordanix.widget_fps_position", "bottom_left", "bg_color", "#102030",
                   "proc", "my app"}),
              SUCCESS);
    reader.join();
    EXPECT_EQ(seen, "true 5 4279246896 my app");
    EXPECT_EQ(set({"status", "off"}, {false, false}), SUCCESS);
    EXPECT_EQ(get("status") + std::to_string(generation()), "false" + std::to_string(before + 1));
    EXPECT_EQ(publishProperties(mErr), SUCCESS);
    EXPECT_EQ(generation(), before + 2);
}

TEST_F(ControlTest, NothingIsWrittenUnlessEverythingIsRight) {
    const std::pair<std::vector<std::string>, const char*> refusals[] = {
        {{"widget_fsp", "true"}, "did you mean 'widget_fps'"},
        {{"nonsense", "true"}, "no property 'nonsense'; see"},
        {{"bg_color", "red"}, "'red' is no value for 'bg_color'; expected #RRGGBB"},
        {{"status"}, "'status' has no value"}};
    const int before = generation();
    for (const auto& [words, error] : refusals) {
        std::vector<std::string> all = {"widget_memory", "true"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_EQ(set(all), USAGE_ERROR);
        EXPECT_THAT(mErr.str(), HasSubstr(error));
        EXPECT_EQ(get("widget_memory"), "(not set)") << error;
    }
    EXPECT_EQ(generation(), before);
    EXPECT_EQ(set({"new_name", "x", "other.name", "y"}, {true, true}), SUCCESS) << mErr.str();
    EXPECT_EQ(get("new_name") + readProperty("other.name").value_or(""), "xy");
    EXPECT_EQ(set({"bad name", "x"}, {true, true}), USAGE_ERROR);
    EXPECT_EQ(set({"widget_fps", "maybe"}, {true, true}), USAGE_ERROR);
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

std::string contents(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

TEST_F(ControlTest, WatchPrintsWritesThatHappenWhileItWatches) {
    const platform::TemporaryDirectory directory;
    const std::string path = directory.path("lines");
    std::atomic<bool> hasEnded{false};
    std::thread watcher([&] {
        std::ofstream out(path);
        watchProperties({40, 20.0}, out);
        hasEnded = true;
    });
    const auto await = [&](const char* line, const char* rewritten) {
        while (!hasEnded && contents(path).find(line) == std::string::npos) {
            EXPECT_TRUE(rewritten == nullptr || platform::setProperty(rewritten, "1").empty());
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    };
    await("begin",
          "debug.kordanix.begin");  // whether it watches yet shows only when it has printed something
    EXPECT_EQ(platform::setProperty("other.name", "not the library's"), "");
    EXPECT_EQ(set({"widget_fps_position", "3"}), SUCCESS);
    await("published", nullptr);
    EXPECT_EQ(platform::setProperty("debug.kordanix.bg_color", "red"), "");
    await("red", nullptr);
    EXPECT_EQ(platform::setProperty("debug.kordanix.bg_color", ""), "");
    await("never printed", "debug.kordanix.end");
    watcher.join();
    EXPECT_THAT(contents(path),
                testing::MatchesRegex("(begin 1\n)+widget_fps_position CENTER_LEFT\npublished .[0-9]+.\n"
                                      "bg_color #000000 .\"red\" cannot be read.\n(end 1\n)*"
                                      "bg_color #000000 .default.\n(end 1\n)+"));
}

TEST_F(ControlTest, TheCommandLineIsUnderstoodOrRefused) {
    const platform::TemporaryDirectory directory;
    struct Line {
        std::string arguments;
        int status;
        const char* output;
        const char* environment = "";
    };
    std::vector<Line> lines = {{"--version", 0, "kordanixctl "},
                               {"-V", 0, "kordanixctl "},
                               {"version", 0, "kordanixctl "},
                               {"help", 0, "Usage: kordanixctl [OPTIONS] VERB"},
                               {"help doctor", 0, "Usage: kordanixctl doctor"},
                               {"doctor --help", 0, "Usage: kordanixctl doctor"},
                               {"", 2, "no verb is given; see 'kordanixctl --help'"},
                               {"frobnicate", 2, "frobnicate"},
                               {"set", 2, "NAME is required; see 'kordanixctl set --help'"},
                               {"set widget_fps maybe", 2, "expected true or false"},
                               {"set widget_fps_position -- -1", 2, "'-1' is no value for"},
                               {"set bg_color -16743169 api -1 --no-publish", 0, ""},
                               {"get debug.kordanix.bg_color", 0, "4278224127\n"},
                               {"get api", 0, "-1\n"},
                               {"get api status", 2, "not expected: status"},
                               {"key volume", 2, "'volume' is not a key"},
                               {"key dump --process 2000000000", 1, "there is no process"},
                               {"--process abc list", 2, "--process: 'abc' is not the number of a process;"},
                               {"list --process", 2, "--process needs a value: PID"},
                               {"watch --seconds 0", 0, ""},
                               {"watch --seconds nan", 2, "'nan' is not a number of seconds"},
                               {"trace /nowhere /nowhere/out.json", 1, "No such file or directory"},
                               {"list >/dev/full", 1, "standard output could not be written"},
                               {"help >/dev/full", 1, "standard output could not be written"}};
    for (const char* const verb : {"set status true", "get", "list", "watch --seconds 0", "publish", "reset",
                                   "key dump", "background", "doctor"}) {
        lines.push_back({verb, 1, "/dev/null", "KORDANIX_RUNTIME_DIR=/dev/null "});
    }
    for (const auto& [arguments, expected, output, environment] : lines) {
        const std::string command = "exec >" + directory.path("out") + " 2>&1; " + environment +
                                    doubles::emulator() + KORDANIXCTL " " + arguments;
        const int status = std::system(command.c_str());
        const std::string printed = contents(directory.path("out"));
        EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, expected) << arguments << printed;
        EXPECT_THAT(printed, HasSubstr(output)) << arguments;
    }
}

TEST_F(ControlTest, APipeThatNobodyReadsIsNoFailure) {
    const std::string command =
        "{ sleep 0.1; " + doubles::emulator() + KORDANIXCTL " list; echo $? >&3; } 2>&3 | true";
    EXPECT_EQ(support::run({"bash", "-c", "exec 3>&1; " + command}).out, "0\n");
}

}  // namespace
}  // namespace control
