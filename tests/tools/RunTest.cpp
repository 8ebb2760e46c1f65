#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "Pam.h"
#include "RunCommand.h"
#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"
#include "software/Image.h"
#include "software/Png.h"

namespace control {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

namespace fs = std::filesystem;

/// kordanixctl as if it were installed, for a user whose runtime directory is empty.
class RunTest : public testing::Test {
protected:
    RunTest() {
        unsetenv("KORDANIX_RUNTIME_DIR");
        setenv("XDG_RUNTIME_DIR", mHome.path().c_str(), 1);
        for (const char* const folder : {"bin", "lib"}) {
            fs::create_directory(mHome.path(folder));
        }
        fs::copy(KORDANIXCTL, mControl);
        fs::copy(PRELOAD_STAND_IN, mHome.path("lib/libkordanix-preload.so"));
        setenv("CTL", mControl.c_str(), 1);
        // A kordanixctl with that sanitizer minds that anything is preloaded before it.
        setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
    }
    ~RunTest() override {
        for (const pid_t program : mPrograms) {
            end(program);
        }
    }

    struct Outcome {
        int status;  ///< or minus a signal
        std::string out;
        std::string err;
    };

    /// Runs a shell's command line, in which $CTL is kordanixctl.
    Outcome run(const std::string& line) const {
        const pid_t shell = platform::startChild([&] { return exec(line, "out"); });
        const int status = platform::waitForChild(shell);
        return {status, contents("out"), contents("err")};
    }

    /// Starts the stand-in for a program with the overlay and waits until it listens.
    pid_t start(const std::string& options, const std::string& command = RUN_PROBE " nothing") {
        const std::string out = "out" + std::to_string(mPrograms.size());
        const pid_t program =
            platform::startChild([&] { return exec("exec $CTL run " + options + " -- " + command, out); });
        mPrograms.push_back(program);
        for (int i = 0; i < 10000 && contents(out) != "ready\n"; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_EQ(contents(out), "ready\n") << contents("err");
        return program;
    }

    static void end(pid_t program) {
        if (kill(program, SIGKILL) == 0) {
            platform::waitForChild(program);
        }
    }

    std::string contents(const std::string& name) const {
        std::ifstream file(mHome.path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// How many runtime directories there are of programs that were run.
    std::ptrdiff_t countRuns() const {
        std::error_code ignored;
        return std::distance(fs::directory_iterator(mHome.path("kordanix"), ignored), {});
    }

    const platform::TemporaryDirectory mHome;
    const std::string mControl = mHome.path("bin/kordanixctl");

private:
    int exec(const std::string& line, const std::string& out) const {
        const std::string redirected = "exec >" + mHome.path(out) + " 2>" + mHome.path("err") + "; " + line;
        execl("/bin/sh", "sh", "-c", redirected.c_str(), nullptr);
        return 1;
    }

    std::vector<pid_t> mPrograms;
};

TEST_F(RunTest, TheProgramRunsAsIfByItself) {
    const std::string preload = mHome.path("lib/libkordanix-preload.so");
    const struct {
        std::string line;
        int status;
        std::string out;  ///< with `err`, a regular expression
        std::string err = "";
    } cases[] = {
        {"$CTL run -- sh -c 'echo out; echo err >&2; exit 3'", 3, "out\n", "err\n"},
        {"$CTL run printf '%s,' -- --set -h -1 --process", 0, "--,--set,-h,-1,--process,"},
        {"exec $CTL run -- sh -c 'kill -TERM $$'", -SIGTERM, ""},
        {"echo text | $CTL run cat", 0, "text\n"},
        {"LD_PRELOAD= $CTL run -- sh -c 'echo $LD_PRELOAD'", 0, preload + "\n"},
        {"LD_PRELOAD=" + preload + " $CTL run sh -c 'echo $LD_PRELOAD'", 0, preload + ":" + preload + "\n"},
        {"$CTL run --set widget_fps=off --set api=-1 -- sh -c '$CTL get'", 0,
         "debug.kordanix.status true\ndebug.kordanix.api -1\ndebug.kordanix.proc sh\n"
         "debug.kordanix.widget_fps false\ndebug.kordanix.settingsgeneration 1\n"},
        {"$CTL run --set proc=a=b -- sh -c '$CTL get proc'", 0, "a=b\n"},
        {"$CTL run -- nonsense", 127, "", "kordanixctl: nonsense: there is no such program\n"},
        {"$CTL run -- /etc/passwd", 126, "", "kordanixctl: /etc/passwd: this is no program.*"},
        {"$CTL run --set widget_fsp=1 ls", 2, "", ".*did you mean 'widget_fps'.\n"},
        {"$CTL run --set status ls", 2, "", ".*'status' has no value; expected NAME=VALUE\n"},
        {"$CTL run", 2, "", ".*which program.*"},
        {"$CTL --process 1 run ls", 2, "", ".*has no --process\n"},
        {"$XDG_RUNTIME_DIR/elsewhere/bin/kordanixctl run ls", 1, "",
         ".*libkordanix-preload.so.*not installed.*"},
        {"mkdir -p $XDG_RUNTIME_DIR/" + std::string(90, 'x') + "; XDG_RUNTIME_DIR=$XDG_RUNTIME_DIR/" +
             std::string(90, 'x') + " $CTL run ls",
         1, "", ".*too long for the sockets.*"},
    };
    fs::create_directories(mHome.path("elsewhere/bin"));
    fs::copy(mControl, mHome.path("elsewhere/bin/kordanixctl"));
    for (const auto& [line, status, out, err] : cases) {
        const Outcome outcome = run(line);
        EXPECT_EQ(outcome.status, status) << line << outcome.err;
        EXPECT_EQ(outcome.out, out) << line;
        EXPECT_THAT(outcome.err, MatchesRegex(err)) << line;
    }
    run("$CTL run true");
    EXPECT_EQ(countRuns(), 1) << "each run clears away what the ones before it left";
}

TEST_F(RunTest, AScriptGoesByTheNameOfItsInterpreter) {
    const std::pair<const char*, const char*> cases[] = {{"#!/bin/sh\nls", "/bin/sh"},
                                                         {"#! /usr/bin/python3 -E\n", "/usr/bin/python3"},
                                                         {"#!/usr/bin/env -S A=1 python3 -E\n", "python3"},
                                                         {"ls\n", "/bin/sh"},
                                                         {"\x7F"
                                                          "ELF",
                                                          "name"}};
    for (const auto& [text, name] : cases) {
        std::ofstream(mHome.path("script")) << text;
        EXPECT_EQ(commandName(mHome.path("script"), "name"), name) << text;
    }
}

TEST_F(RunTest, AVerbIsAboutTheProcessThatIsMeant) {
    EXPECT_EQ(run("$CTL set proc nobody; $CTL get proc").out, "nobody\n");
    const pid_t first = start("--set proc=first");
    EXPECT_EQ(run("$CTL get proc").out, "first\n");
    const pid_t second = start("--set proc=second", "sh -c '" RUN_PROBE " nothing & wait'");
    const Outcome several = run("$CTL get proc");
    EXPECT_EQ(several.status, 1);
    EXPECT_THAT(several.err, MatchesRegex("kordanixctl: several programs.*\n  " + std::to_string(first) +
                                          " .*run_probe\n  " + std::to_string(second) + " sh\n.*"));
    EXPECT_THAT(run("$CTL doctor").out, HasSubstr(std::to_string(second) + " sh: " + mHome.path()));
    const std::string ofSecond = "--process " + std::to_string(second);
    EXPECT_EQ(run("$CTL " + ofSecond + " set proc third; $CTL get proc " + ofSecond).out, "third\n");
    EXPECT_EQ(run("$CTL --process " + std::to_string(first) + " get proc").out, "first\n");
    EXPECT_EQ(run("$CTL --process $$ get proc").out, "nobody\n");
    EXPECT_EQ(run("KORDANIX_RUNTIME_DIR=$XDG_RUNTIME_DIR/kordanix $CTL get proc").out, "nobody\n");
    EXPECT_THAT(run("$CTL --process 2000000000 get proc").err, HasSubstr("there is no process 2000000000"));

    end(first);
    EXPECT_EQ(run("$CTL get proc").out, "third\n");
    kill(second, SIGKILL);
    waitpid(second, nullptr, 0);
    EXPECT_EQ(run("$CTL get proc").out, "third\n") << "what the program started goes on";
    EXPECT_EQ(run("$CTL background").status, 0) << "and ends with that";
    const char* const untilItHasEnded =
        "for i in $(seq 100); do [ \"$($CTL get proc)\" != third ] && break; "
        "sleep 0.1; done; ";
    EXPECT_EQ(run(std::string(untilItHasEnded) + "$CTL get proc").out, "nobody\n");
    EXPECT_THAT(run("$CTL background").err, HasSubstr("no overlay is running"));
}

TEST_F(RunTest, APictureIsSavedOrItIsSaidWhyNot) {
    const std::string out = mHome.path("out.png");
    const auto picture = [&](const std::string& process) {
        return run("$CTL picture " + process + " --seconds 0.3 " + out);
    };
    EXPECT_THAT(picture("").err, HasSubstr("no overlay is running"));
    EXPECT_THAT(picture("2000000000").err, HasSubstr("there is no process"));
    EXPECT_EQ(picture("x").status, 2);
    pid_t program = start("", "sh -c 'echo ready; exec sleep 60'");
    EXPECT_THAT(picture(std::to_string(program)).err, HasSubstr("does not show an overlay"));
    end(program);

    program = start("", RUN_PROBE " picture");
    for (const std::string& process : {std::string(), std::to_string(program)}) {
        const Outcome outcome = picture(process);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out + outcome.err, "");
        software::Image image;
        std::string error;
        ASSERT_TRUE(software::readPng(out, image, error)) << error;
        EXPECT_EQ(image.mWidth, 2U);
        EXPECT_TRUE(image.mPixels[1] == (software::Pixel{'e', 'f', 'g', 'h'}));
        fs::remove(out);
    }
    EXPECT_THAT(run("$CTL picture /nowhere/out.png").err,
                HasSubstr("cannot write /nowhere/out.png: No such"));
    EXPECT_THAT(run("$CTL set status off; $CTL picture " + out).err, HasSubstr("switched off"));
    end(program);
    program = start("", RUN_PROBE " failure");
    EXPECT_THAT(picture("").err, HasSubstr("could not write its picture"));
    end(program);
    program = start("", RUN_PROBE " garbage");
    EXPECT_THAT(picture("").err, HasSubstr("something other than a picture"));
    end(program);
    program = start("");
    EXPECT_THAT(picture("").err, HasSubstr("presented no frame"));
    EXPECT_EQ(run("timeout 0.2 $CTL picture " + out).status, 124);
    EXPECT_FALSE(fs::exists(out));
    for (const auto& entry : fs::recursive_directory_iterator(mHome.path("kordanix"))) {
        EXPECT_THAT(entry.path(), testing::Not(HasSubstr("picture")));
    }
}

TEST(Pam, OnlyAWholePictureIsRead) {
    const std::string whole =
        "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nabcdefgh";
    software::Image image;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        EXPECT_FALSE(parsePam(whole.substr(0, i), image)) << i;
    }
    for (const char* const side : {"0", "-2", "32769", "99999999999", "1", "+2"}) {
        EXPECT_FALSE(parsePam(std::string(whole).replace(9, 1, side), image)) << side;
    }
    EXPECT_FALSE(parsePam(whole + 'i', image));
    EXPECT_TRUE(parsePam(whole, image));
}

}  // namespace
}  // namespace control
