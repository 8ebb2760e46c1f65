#include <gmock/gmock.h>
#include <ostra/Ostra.h>
#include <sys/system_properties.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

#include "ProcessCommands.h"
#include "Properties.h"
#include "PropertyTable.h"
#include "SetCommand.h"
#include "ShowCommands.h"
#include "ValueText.h"
#include "WatchCommand.h"
#include "doubles/Emulator.h"
#include "platform/TemporaryDirectory.h"
#include "properties/SystemProperties.h"

namespace control {
namespace {

using testing::AllOf;
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
    static std::uint32_t generation() {
        return static_cast<std::uint32_t>(std::stoul(get("settingsgeneration")));
    }

    std::ostringstream mOut;
    std::ostringstream mErr;
};

struct ValueCase {
    PropertyType type;
    const char* typed;
    const char* written;  ///< null when it is refused
};

TEST(ValueText, WritesWhatTheLibraryReadsAndRefusesTheRest) {
    using Type = PropertyType;
    const std::string longest(91, 'x');
    const std::string tooLong(92, 'x');
    const ValueCase cases[] = {
        {Type::BOOLEAN, "true", "true"},
        {Type::BOOLEAN, " Off ", "false"},
        {Type::BOOLEAN, "YES", "true"},
        {Type::BOOLEAN, "1", nullptr},
        {Type::BOOLEAN, "", nullptr},
        {Type::POSITION, "TOP_LEFT", "0"},
        {Type::POSITION, "bottom_Right", "7"},
        {Type::POSITION, "CENTER_RIGHT", "4"},
        {Type::POSITION, "6", "6"},
        {Type::POSITION, "8", nullptr},
        {Type::POSITION, "-1", nullptr},
        {Type::POSITION, "CENTER", nullptr},
        {Type::COLOR, "#0084FF", "4278224127"},
        {Type::COLOR, "#0084ff", "4278224127"},
        {Type::COLOR, "#800084FF", "2147517695"},
        {Type::COLOR, "-16743169", "4278224127"},
        {Type::COLOR, "4294967295", "4294967295"},
        {Type::COLOR, "4294967296", nullptr},
        {Type::COLOR, "-2147483649", nullptr},
        {Type::COLOR, "0x0084FF", nullptr},
        {Type::COLOR, "#0084F", nullptr},
        {Type::COLOR, "#-084FF", nullptr},
        {Type::COLOR, "#0084FG", nullptr},
        {Type::COLOR, "#", nullptr},
        {Type::OPACITY, "255", "255"},
        {Type::OPACITY, "+0", "0"},
        {Type::OPACITY, "256", nullptr},
        {Type::OPACITY, "12px", nullptr},
        {Type::API, "-2147483648", "-2147483648"},
        {Type::API, "2147483648", nullptr},
        {Type::API, "99999999999999999999", nullptr},
        {Type::TEXT, " com.example.app ", " com.example.app "},
        {Type::TEXT, "", ""},
        {Type::TEXT, longest.c_str(), longest.c_str()},
        {Type::TEXT, tooLong.c_str(), nullptr},
    };
    for (const ValueCase& value : cases) {
        const auto text = toPropertyText(value.type, value.typed);
        EXPECT_EQ(text.value_or("(refused)"), value.written == nullptr ? "(refused)" : value.written)
            << value.typed << ", expected " << expectedText(value.type);
    }
}

struct DisplayCase {
    const char* name;
    const char* text;
    const char* shown;
    bool isReadable;
};

TEST(ValueText, ShowsWhatTheLibraryMakesOfATextWhateverItIs) {
    const DisplayCase cases[] = {
        {"widget_memory", "true", "true", true},
        {"widget_fps", "TRUE", "true", false},  // the default
        {"widget_memory", "TRUE", "false", false},
        {"widget_fps_position", "7", "BOTTOM_RIGHT", true},
        {"widget_fps_position", "3x", "CENTER_LEFT", false},
        {"widget_fps_position", "9", "9", false},
        {"widget_fps_position", "TOP_RIGHT", "TOP_LEFT", false},
        {"bg_color", "-16743169", "#0084FF", true},
        {"bg_color", "0xFFFFFF", "#000000", false},
        {"bg_color", "white", "#000000", false},
        {"widget_fps_current_color", "white", "#0084FF", false},
        {"bg_transparency", "4294967297", "1", false},  // the low 32 bits
        {"proc", "a b", "a b", true},
    };
    for (const DisplayCase& display : cases) {
        const Property* const property = findProperty(display.name);
        ASSERT_NE(property, nullptr) << display.name;
        EXPECT_EQ(toDisplayText(*property, std::string(display.text)), display.shown) << display.text;
        EXPECT_EQ(isReadable(*property, display.text), display.isReadable) << display.text;
    }
    EXPECT_EQ(toDisplayText(*findProperty("widget_memory_position"), std::nullopt), "TOP_CENTER");
}

TEST_F(ControlTest, SetWritesEveryPairAndThenPublishesOnce) {
    const std::uint32_t before = generation();
    EXPECT_EQ(set({"widget_memory", "on", "debug.kordanix.widget_fps_position", "bottom_left", "bg_color",
                   "#102030", "proc", "my app"}),
              SUCCESS);
    EXPECT_EQ(mErr.str(), "");
    EXPECT_EQ(get("widget_memory"), "true");
    EXPECT_EQ(get("widget_fps_position"), "5");
    EXPECT_EQ(get("bg_color"), "4279246896");
    EXPECT_EQ(get("proc"), "my app");
    EXPECT_EQ(generation(), before + 1);

    EXPECT_EQ(set({"widget_memory", "off"}, {false, false}), SUCCESS);
    EXPECT_EQ(get("widget_memory"), "false");
    EXPECT_EQ(generation(), before + 1);
    EXPECT_EQ(publishProperties(mErr), SUCCESS);
    EXPECT_EQ(generation(), before + 2);
}

TEST_F(ControlTest, APublicationComesAfterTheValuesThatItPublishes) {
    std::string seen;
    std::thread reader([&] {
        const prop_info* const property = __system_property_find("debug.kordanix.settingsgeneration");
        std::uint32_t serial = __system_property_serial(property);
        const timespec patience = {10, 0};
        seen = get("status");
        if (__system_property_wait(property, serial, &serial, &patience)) {
            seen += ' ' + get("status") + ' ' + get("widget_fps_position");
        }
    });
    while (seen.empty()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(set({"status", "true", "widget_fps_position", "2"}), SUCCESS);
    reader.join();
    EXPECT_EQ(seen, "(not set) true 2");
}

TEST_F(ControlTest, NothingIsWrittenUnlessEverythingIsRight) {
    struct Refusal {
        std::vector<std::string> words;
        const char* error;
    };
    const Refusal refusals[] = {
        {{"widget_memory", "true", "widget_fsp", "true"}, "did you mean 'widget_fps'"},
        {{"widget_memory", "true", "nonsense", "true"}, "no property 'nonsense'; see"},
        {{"widget_memory", "true", "bg_color", "red"}, "'red' is no value for 'bg_color'; expected #RRGGBB"},
        {{"widget_memory", "true", "status"}, "'status' has no value"},
        {{"widget_memory", "true", "widget_fps_position", "MIDDLE"}, "TOP_LEFT, TOP_CENTER"},
    };
    const std::uint32_t before = generation();
    for (const Refusal& refusal : refusals) {
        mErr.str({});
        EXPECT_EQ(set(refusal.words), USAGE_ERROR);
        EXPECT_THAT(mErr.str(), HasSubstr(refusal.error));
        EXPECT_EQ(get("widget_memory"), "(not set)") << refusal.error;
    }
    EXPECT_EQ(generation(), before);
    EXPECT_EQ(set({"new_name", "x", "other.name", "y"}, {true, true}), SUCCESS) << mErr.str();
    EXPECT_EQ(get("new_name"), "x");
    EXPECT_EQ(readProperty("other.name"), "y");
    EXPECT_EQ(set({"bad name", "x"}, {true, true}), USAGE_ERROR);
    EXPECT_EQ(set({"widget_fps", "maybe"}, {true, true}), USAGE_ERROR);
}

TEST_F(ControlTest, GetListAndResetAgreeOnWhatIsSet) {
    ASSERT_EQ(set({"widget_memory", "true", "widget_fps_current_color", "#010203", "status", "true"}),
              SUCCESS);
    ASSERT_EQ(platform::setProperty("debug.kordanix.widget_fps", "TRUE"), "");

    EXPECT_EQ(printProperty("widget_fps_current_color", mOut, mErr), SUCCESS);
    EXPECT_EQ(printProperty("widget_fps_median_color", mOut, mErr), SUCCESS);
    EXPECT_EQ(mOut.str(), "4278256131\n4294930944\n");
    EXPECT_EQ(printProperty("widget_fps_curent_color", mOut, mErr), FAILURE);
    EXPECT_THAT(mErr.str(), HasSubstr("did you mean 'widget_fps_current_color'"));

    mOut.str({});
    EXPECT_EQ(printSetProperties(mOut), SUCCESS);
    EXPECT_THAT(mOut.str(), AllOf(HasSubstr("debug.kordanix.status true\n"),
                                  HasSubstr("debug.kordanix.widget_memory true\n"),
                                  testing::Not(HasSubstr("widget_cpu_gpu"))));
    mOut.str({});
    EXPECT_EQ(listProperties(mOut), SUCCESS);
    EXPECT_THAT(mOut.str(), ContainsRegex("widget_memory +true +false +memory widget\n"));
    EXPECT_THAT(mOut.str(), ContainsRegex("widget_fps_current_color +#010203 +#0084FF +its colour\n"));
    EXPECT_THAT(mOut.str(), ContainsRegex("widget_fps +true +true +frame-rate widget .set to \"TRUE\""));

    mOut.str({});
    EXPECT_EQ(resetProperties(true, mErr), SUCCESS);
    EXPECT_EQ(get("widget_memory"), "(not set)");
    EXPECT_EQ(get("status"), "true");
    EXPECT_EQ(listPropertiesAsJson(mOut), SUCCESS);
    const auto list = nlohmann::json::parse(mOut.str());
    ASSERT_EQ(list.size(), properties().count);
    EXPECT_EQ(list[0]["name"], "debug.kordanix.status");
    EXPECT_EQ(list[0]["value"], "true");
    EXPECT_EQ(list[0]["isSet"], true);
    EXPECT_EQ(list[6]["value"], "128");
    const std::uint32_t before = generation();
    EXPECT_EQ(resetProperties(false, mErr), SUCCESS);
    EXPECT_EQ(get("status"), "(not set)");
    EXPECT_EQ(generation(), before + 1);
}

/// A stream's text that one thread writes while another one reads it.
class SharedText : public std::streambuf {
public:
    std::string text() const {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mText;
    }

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        const std::lock_guard<std::mutex> lock(mMutex);
        mText.append(text, static_cast<std::size_t>(size));
        return size;
    }
    int overflow(int symbol) override {
        const char byte = static_cast<char>(symbol);
        xsputn(&byte, 1);
        return symbol;
    }

private:
    mutable std::mutex mMutex;
    std::string mText;
};

TEST_F(ControlTest, WatchPrintsWritesThatHappenWhileItWatches) {
    SharedText shared;
    std::ostream lines(&shared);
    std::atomic<bool> hasEnded{false};
    std::thread watcher([&] {
        watchProperties({40, 20.0}, lines);
        hasEnded = true;
    });
    // Whether it watches yet shows only when it has seen something.
    int number = 0;
    while (shared.text().empty() && !hasEnded) {
        EXPECT_EQ(platform::setProperty("debug.kordanix.begin", std::to_string(number++).c_str()), "");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    const auto awaitLine = [&](const std::string& line) {
        while (shared.text().find(line) == std::string::npos && !hasEnded) {
            std::this_thread::yield();
        }
    };
    EXPECT_EQ(platform::setProperty("other.name", "not the library's"), "");
    EXPECT_EQ(set({"widget_memory", "true"}, {false, false}), SUCCESS);
    awaitLine("widget_memory");
    EXPECT_EQ(set({"widget_fps_position", "3"}), SUCCESS);
    awaitLine("published");
    EXPECT_EQ(platform::setProperty("debug.kordanix.bg_color", "red"), "");
    awaitLine("bg_color");
    EXPECT_EQ(platform::setProperty("debug.kordanix.widget_memory", ""), "");
    awaitLine("default");
    while (!hasEnded) {
        EXPECT_EQ(platform::setProperty("debug.kordanix.end", std::to_string(number++).c_str()), "");
        std::this_thread::yield();
    }
    watcher.join();
    EXPECT_THAT(shared.text(),
                testing::MatchesRegex("(begin [0-9]+\n)+widget_memory true\nwidget_fps_position CENTER_LEFT\n"
                                      "published .[0-9]+.\nbg_color #000000 .\"red\" cannot be read.\n"
                                      "widget_memory false .default.\n(end [0-9]+\n)+"));
    const std::string text = shared.text();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 40);
    std::ostringstream none;
    EXPECT_EQ(watchProperties({1, 0.0}, none), SUCCESS);
    EXPECT_EQ(none.str(), "");
}

TEST_F(ControlTest, KeysAndTheNoticeReachOverlaysThatListen) {
    EXPECT_EQ(pressKey(Key::DUMP, std::nullopt, mOut, mErr), FAILURE);
    EXPECT_THAT(mErr.str(), HasSubstr("no overlay is running"));
    EXPECT_EQ(sendToBackground(getpid(), mOut, mErr), FAILURE);
    EXPECT_THAT(mErr.str(), HasSubstr("process " + std::to_string(getpid()) + " does not listen"));
    mErr.str({});

    std::atomic<bool> isInBackground{false};
    Ostra::registerAppBecomeBackgroundListener([&] { isInBackground = true; });
    EXPECT_EQ(pressKey(Key::DUMP, std::nullopt, mOut, mErr), SUCCESS);
    EXPECT_THAT(mErr.str(), HasSubstr("developer mode"));
    EXPECT_THAT(mOut.str(), HasSubstr("Sent the dump key to process " + std::to_string(getpid())));
    EXPECT_EQ(set({"devmode", "true"}), SUCCESS);
    mErr.str({});
    EXPECT_EQ(pressKey(Key::CAPTURE, getpid(), mOut, mErr), SUCCESS);
    EXPECT_EQ(mErr.str(), "");
    EXPECT_EQ(sendToBackground(std::nullopt, mOut, mErr), SUCCESS);
    std::vector<std::pair<int, int>> keys;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while ((keys.size() < 2 || !isInBackground) && std::chrono::steady_clock::now() < end) {
        for (const Ostra::KeyEvent& event : Ostra::receiveKeyEvents()) {
            keys.emplace_back(event.keyCode, event.action);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_THAT(keys, ElementsAre(std::pair(24, 1), std::pair(25, 1)));
    EXPECT_TRUE(isInBackground);
}

/// What a command printed and returned.
struct Finished {
    int status;
    std::string output;  ///< both streams
};

Finished run(const std::string& arguments, const std::string& environment = {}) {
    Finished result = {-1, {}};
    const std::string command =
        environment + " " + doubles::emulator() + KORDANIXCTL " " + arguments + " 2>&1";
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return result;
    }
    char buffer[4096];
    for (std::size_t size = 0; (size = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0;) {
        result.output.append(buffer, size);
    }
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

TEST_F(ControlTest, TheCommandLineIsUnderstoodOrRefused) {
    struct Line {
        const char* arguments;
        int status;
        const char* output;
    };
    const Line lines[] = {
        {"--version", 0, "kordanixctl "},
        {"--help", 0, "Subcommands"},
        {"", 2, "subcommand is required"},
        {"frobnicate", 2, "frobnicate"},
        {"set", 2, "required"},
        {"set widget_fps maybe", 2, "expected true or false"},
        {"set bg_color -16743169 api -1 --no-publish", 0, ""},
        {"get debug.kordanix.bg_color", 0, "4278224127\n"},
        {"get api", 0, "-1\n"},
        {"get nonsense", 1, "nonsense"},
        {"key volume", 2, "volume"},
        {"key dump --process 2000000000", 1, "does not listen"},
        {"key dump --process 0", 2, "--process"},
        {"background --process 2000000000", 1, "does not listen"},
        {"watch --seconds 0", 0, ""},
        {"trace /nowhere /nowhere/out.json", 1, "no such folder"},
        {"report /nowhere", 2, "required"},
        {"doctor --all", 2, "--all"},
    };
    for (const Line& line : lines) {
        const Finished result = run(line.arguments);
        EXPECT_EQ(result.status, line.status) << line.arguments << '\n' << result.output;
        EXPECT_THAT(result.output, HasSubstr(line.output)) << line.arguments;
    }
    for (const char* const arguments : {"set status true", "get", "list", "watch --seconds 0", "publish",
                                        "reset", "key dump", "background", "doctor"}) {
        const Finished result = run(arguments, "KORDANIX_RUNTIME_DIR=/dev/null");
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_THAT(result.output, HasSubstr("/dev/null")) << arguments;
    }
    for (const char* const verb : {"set", "get", "list", "publish", "watch", "reset", "key", "background",
                                   "doctor", "trace", "report"}) {
        const Finished result = run(std::string(verb) + " --help");
        EXPECT_EQ(result.status, 0) << verb;
        EXPECT_THAT(result.output, HasSubstr("Usage: kordanixctl " + std::string(verb))) << verb;
    }
}

}  // namespace
}  // namespace control
