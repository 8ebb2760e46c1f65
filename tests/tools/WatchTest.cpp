#include "RunFixture.h"
#include "figures/Catalogue.h"
#include "opengl/context/VirtualDisplay.h"

#include <gmock/gmock.h>
#include <httplib.h>

#include <nlohmann/json.hpp>
#include <sstream>

namespace control {
namespace {

using nlohmann::json;
using support::ChildProcess;
using support::waitUntil;
using testing::HasSubstr;

struct Program {
    const char* name;
    const char* api;
    int size;  ///< of its window, which is a square
};

constexpr Program PROGRAMS[] = {{"glxgears", "OpenGL", 300}, {"vkcube", "Vulkan", 500}};

/// A program that runs with the overlay, and the verbs that look at it from outside.
class Watch : public RunFixture {
protected:
    explicit Watch(const char* program = PROGRAMS[0].name) {
        VirtualDisplay::get();
        setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
        mProgram = std::make_unique<ChildProcess>(std::vector<std::string>{KORDANIXCTL, "run", program});
        EXPECT_TRUE(waitUntil([&] { return run("$CTL watch --json --count 1").status == 0; }));
    }

    void endProgram() {
        mProgram->kill(SIGTERM);
        EXPECT_EQ(mProgram->wait(), -SIGTERM);
    }

    std::string get(const std::string& property) const { return run("$CTL get " + property).out; }

    std::unique_ptr<ChildProcess> mProgram;
};

class WatchOfEach : public Watch, public testing::WithParamInterface<Program> {
protected:
    WatchOfEach() : Watch(GetParam().name) {}
};
INSTANTIATE_TEST_SUITE_P(Program, WatchOfEach, testing::ValuesIn(PROGRAMS),
                         [](const auto& program) { return std::string(program.param.name); });

TEST_P(WatchOfEach, ALineARefreshHasEveryFigureAndEachFrameOnce) {
    const support::Outcome outcome = run("$CTL watch --json --count 5");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    std::istringstream lines(outcome.out);
    std::vector<json> refreshes;
    for (std::string line; std::getline(lines, line);) {
        refreshes.push_back(json::parse(line));
    }
    ASSERT_EQ(refreshes.size(), 5U);
    for (std::size_t i = 0; i < refreshes.size(); ++i) {
        const json& refresh = refreshes[i];
        EXPECT_EQ(refresh["surface"], json({{"width", GetParam().size}, {"height", GetParam().size}}));
        for (const figures::Figure& figure : figures::catalogue()) {
            const json& one = refresh["figures"][figure.id];
            EXPECT_EQ(one["unit"], figure.format.unit);
            EXPECT_NE(one["value"].is_number(), one.contains("reason")) << figure.id;
        }
        // Neither is on the overlay.
        EXPECT_GT(refresh["figures"]["memory.process"]["value"], 1e6);
        EXPECT_GT(refresh["figures"]["fps.low1"]["value"], 0.0);
        if (i > 0) {
            const json& last = refreshes[i - 1];
            EXPECT_GT(refresh["refresh"], last["refresh"]);
            const std::uint64_t frames =
                refresh["frame_count"].get<std::uint64_t>() - last["frame_count"].get<std::uint64_t>();
            EXPECT_EQ(refresh["frames"].size(), std::min<std::uint64_t>(frames, 256));
            for (const json& frame : refresh["frames"]) {
                EXPECT_TRUE(frame["total"] > 0.0 && frame["swap"] <= frame["total"]) << frame;
            }
        }
    }
    EXPECT_THAT(run("$CTL doctor").out, HasSubstr("    profile: none; 'kordanixctl save' makes "));
    ChildProcess endless({KORDANIXCTL, "watch", "--json"});
    EXPECT_TRUE(waitUntil([&] { return !endless.output().empty(); }));
    endProgram();
    EXPECT_EQ(endless.wait(), 0) << endless.errors();
    EXPECT_EQ(countRuns(), 0) << "nothing is left behind";
}

TEST_F(Watch, TheTerminalViewShowsFiguresAndTurnsSwitches) {
    if (run("command -v tmux").status != 0) {
        GTEST_SKIP() << "tmux is not installed";
    }
    const std::string tmux = "tmux -S $XDG_RUNTIME_DIR/tmux ";
    const auto screen = [&] { return run(tmux + "capture-pane -p").out; };
    const auto showsSoon = [&](const std::string& text) {
        return waitUntil([&] { return screen().find(text) != std::string::npos; });
    };
    ASSERT_EQ(run(tmux + "new-session -d -x 100 -y 32 'LC_ALL=C.UTF-8 exec $CTL watch 2>end'").status, 0);
    for (const char* const text : {" glxgears  process ", "300 x 300", "median", "● FPS ", "○ 1% ", "█"}) {
        EXPECT_TRUE(showsSoon(text)) << text << '\n' << screen();
    }
    const struct {
        const char* keys;
        const char* property;
        const char* value;
        const char* shown;
    } cases[] = {
        {"3", "widget_memory", "true\n", "widget_memory is on"},
        {"1", "widget_fps", "false\n", "Frame rate (not on the overlay)"},
        {"Down Space", "widget_fps_median", "false\n", "○ Med "},
        {"o", "status", "false\n", "overlay off"},
    };
    for (const auto& [keys, property, value, shown] : cases) {
        run(tmux + "send-keys " + keys);
        EXPECT_TRUE(showsSoon(shown)) << keys << '\n' << screen();
        EXPECT_EQ(get(property), value);
    }
    EXPECT_TRUE(showsSoon("which is switched off"));
    run(tmux + "resize-window -x 40 -y 10");
    EXPECT_TRUE(waitUntil([&] { return screen().find("space") == std::string::npos; })) << screen();
    endProgram();
    EXPECT_TRUE(waitUntil([&] { return run(tmux + "has-session").status != 0; }));
    EXPECT_THAT(run("cat end").out, HasSubstr("(glxgears) has ended"));
    EXPECT_THAT(run("$CTL watch").err, HasSubstr("no overlay is running"));
}

/// With the page's server.
class Serve : public Watch {
protected:
    explicit Serve(const char* program = PROGRAMS[0].name) : Watch(program), mServer({KORDANIXCTL, "serve"}) {
        EXPECT_TRUE(waitUntil([&] { return mServer.output().find('\n') != std::string::npos; }));
        mAddress = mServer.output().substr(0, mServer.output().find('\n'));
        EXPECT_THAT(mAddress, testing::MatchesRegex("http://127\\.0\\.0\\.1:[0-9]+/[0-9a-f]{32}/"));
        const std::size_t slash = mAddress.find('/', 7);
        mHost = mAddress.substr(7, slash - 7);
        mPath = mAddress.substr(slash);
    }

    ChildProcess mServer;
    std::string mAddress;
    std::string mHost;  ///< with the port
    std::string mPath;  ///< "/TOKEN/"
};

TEST_F(Serve, OnlyThisPageIsAnswered) {
    httplib::Client client("http://" + mHost);
    const std::string port = mHost.substr(mHost.find(':'));
    // Whoever connects and says nothing more holds nobody up.
    const ChildProcess silent({"bash", "-c",
                               "for i in $(seq 40); do exec {c}<>/dev/tcp/127.0.0.1/" + port.substr(1) +
                                   " && printf GET >&$c; done; echo all; exec sleep 100"});
    EXPECT_TRUE(waitUntil([&] { return silent.output() == "all\n"; })) << silent.errors();
    std::string wrong = mPath;
    wrong[20] = wrong[20] == '0' ? '1' : '0';
    const struct {
        std::string path;
        httplib::Headers headers;
        int status;
    } cases[] = {
        {mPath, {}, 200},
        {mPath, {{"Host", "localhost" + port}}, 200},
        {mPath, {{"Origin", "http://" + mHost}}, 200},
        {mPath + "figures", {}, 200},
        {mPath + "properties", {}, 200},
        {mPath + "other", {}, 404},
        {"/", {}, 403},
        {"//", {}, 403},
        {"/figures", {}, 403},
        {mPath.substr(0, mPath.size() - 1), {}, 403},
        {wrong, {}, 403},
        {wrong + "properties", {}, 403},
        {"/a" + mPath, {}, 403},
        {mPath, {{"Host", "evil.example" + port}}, 403},
        {mPath, {{"Host", "127.0.0.1"}}, 403},
        {mPath, {{"Host", "127.0.0.1" + port + "0"}}, 403},
        {mPath, {{"Origin", "http://evil.example"}}, 403},
        {mPath, {{"Origin", "https://" + mHost}}, 403},
        {mPath, {{"Origin", "http://localhost" + port}}, 403},
        {mPath, {{"Origin", "null"}}, 403},
    };
    for (const auto& [path, headers, status] : cases) {
        const auto read = client.Get(path.c_str(), headers);
        ASSERT_TRUE(read) << path;
        EXPECT_EQ(read->status, status) << path;
        const bool isJson = read->get_header_value("Content-Type") == "application/json";
        EXPECT_TRUE(status == 200 || isJson);
        const auto written =
            client.Post((path + "properties").c_str(), headers, R"({"scale":"1.5"})", "application/json");
        ASSERT_TRUE(written) << path;
        EXPECT_TRUE(written->status == 403 || path.compare(0, mPath.size(), mPath) == 0) << path;
        EXPECT_EQ(status == 403, written->status == 403) << path;
        EXPECT_EQ(get("scale"), written->status == 200 ? "1.5\n" : "1\n") << path;
        run("$CTL reset --settings-only");
    }
}

TEST_F(Serve, PropertiesAreSetAllOrNone) {
    httplib::Client client("http://" + mHost);
    const std::string path = mPath + "properties";
    const struct {
        std::string body;
        const char* type;
        int status;
        const char* error;
    } cases[] = {
        {R"({"scale":"9","bg_color":"#102030"})", "application/json", 400, "'9' is no value for 'scale'"},
        {R"({"scal":"1"})", "application/json", 400, "did you mean 'scale'?"},
        {R"({"scale":1.5})", "application/json", 400, "is no text"},
        {"[1]", "application/json", 400, "expected a JSON object"},
        {"{", "application/json", 400, "expected a JSON object"},
        {R"({"scale":"1.5"})", "text/plain", 415, "expected application/json"},
        {std::string(70000, ' '), "application/json", 413, ""},
    };
    for (const auto& [body, type, status, error] : cases) {
        const auto answer = client.Post(path.c_str(), body, type);
        ASSERT_TRUE(answer) << error;
        EXPECT_EQ(answer->status, status) << error;
        EXPECT_THAT(answer->body, HasSubstr(error));
    }
    EXPECT_EQ(get("bg_color") + get("scale"), "4278190080\n1\n");
    const auto set = client.Post(
        path.c_str(), R"({"widget_memory":"true","widget_fps_current_color":"#ff00ff"})", "application/json");
    EXPECT_TRUE(set && set->status == 200);
    EXPECT_EQ(get("widget_memory") + get("widget_fps_current_color"), "true\n4294902015\n");
    const auto reset = client.Post((mPath + "reset").c_str(), "{}", "application/json");
    EXPECT_TRUE(reset && reset->status == 200);
    EXPECT_EQ(get("widget_memory"), "false\n");
    const auto picture = client.Get((mPath + "picture.png").c_str());
    EXPECT_TRUE(picture && picture->body.compare(0, 4, "\x89PNG") == 0);
    run("$CTL set status false");
    const auto none = client.Get((mPath + "picture.png").c_str());
    EXPECT_TRUE(none && none->status == 503);
    EXPECT_THAT(none->body, HasSubstr("switched off"));
    endProgram();
    EXPECT_EQ(mServer.wait(), 0) << "it ends with the program";
    EXPECT_EQ(countRuns(), 0) << "of which it is no part";
    EXPECT_THAT(mServer.errors(), HasSubstr("has ended"));
}

class ServeOfEach : public Serve, public testing::WithParamInterface<Program> {
protected:
    ServeOfEach() : Serve(GetParam().name) {}
};
INSTANTIATE_TEST_SUITE_P(Program, ServeOfEach, testing::ValuesIn(PROGRAMS),
                         [](const auto& program) { return std::string(program.param.name); });

TEST_P(ServeOfEach, ABrowserShowsLiveFiguresAndEverySwitch) {
    if (run("command -v chromium").status != 0) {
        GTEST_SKIP() << "chromium is not installed";
    }
    const support::Outcome page =
        run("HOME=$PWD/home chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
            "--disable-background-networking --disable-component-update --disable-sync "
            "--user-data-dir=$PWD/browser --virtual-time-budget=5000 --enable-logging=stderr --dump-dom " +
            mAddress);
    EXPECT_EQ(page.status, 0);
    const auto& [name, api, width] = GetParam();
    const std::string size = std::to_string(width);
    for (const std::string& text : {std::string("data-state=\"live\""), '>' + std::string(name) + "</h1>",
                                    " · " + std::string(api) + " · " + size + " × " + size,
                                    std::string("aria-label=\"widget_memory_pss\""),
                                    std::string("aria-label=\"widget_cpu_gpu_gpu_power_color\""),
                                    std::string("aria-label=\"scale\"")}) {
        EXPECT_THAT(page.out, HasSubstr(text));
    }
    EXPECT_THAT(page.out, testing::ContainsRegex("Current frame rate</p><b>[0-9]+"));
    EXPECT_THAT(page.err, testing::Not(HasSubstr("CONSOLE"))) << "no error of the script or the policy";
    mServer.kill(SIGINT);
    EXPECT_EQ(mServer.wait(), -SIGINT);
}

}  // namespace
}  // namespace control
