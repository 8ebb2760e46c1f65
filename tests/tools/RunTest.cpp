#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "RunFixture.h"
#include "overlays/Pam.h"
#include "software/Image.h"

namespace control {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

namespace fs = std::filesystem;

/// Stand-ins for programs with the overlay, each in a run of its own.
class RunTest : public RunFixture {
protected:
    /// Starts one with the options of 'run' and waits until it listens. Returns the process of 'run'.
    pid_t start(const std::string& options, const std::string& command = RUN_PROBE) {
        mPrograms.push_back(std::make_unique<support::ChildProcess>(
            std::vector<std::string>{"/bin/sh", "-c", "exec $CTL run " + options + " -- " + command}));
        const support::ChildProcess& program = *mPrograms.back();
        EXPECT_TRUE(support::waitUntil([&] { return program.output() == "ready\n"; })) << program.errors();
        return program.id();
    }

    void end(pid_t process) {
        for (auto& program : mPrograms) {
            if (program->id() == process) {
                program->kill(SIGTERM);
                program->wait();
            }
        }
    }

    ~RunTest() override {
        for (auto& program : mPrograms) {
            end(program->id());
        }
    }

private:
    std::vector<std::unique_ptr<support::ChildProcess>> mPrograms;
};

TEST_F(RunTest, AVerbIsAboutTheProcessThatIsMeant) {
    EXPECT_EQ(run("$CTL set proc nobody; $CTL get proc").out, "nobody\n");
    const pid_t first = start("--set proc=first");
    EXPECT_EQ(run("$CTL get proc").out, "first\n");
    const pid_t second = start("--set proc=second", "sh -c '" RUN_PROBE " & wait'");
    const support::Outcome several = run("$CTL get proc");
    EXPECT_EQ(several.status, 1);
    EXPECT_THAT(
        several.err,
        MatchesRegex("kordanixctl: several programs.*\n  [0-9]+ .*run_probe\n  [0-9]+ .*run_probe\n.*"))
        << "who has the overlay, not the shell that started it";
    EXPECT_THAT(run("$CTL doctor").out, HasSubstr("run_probe: " + mHome.path()));
    const std::string ofSecond = "--process " + std::to_string(second);
    EXPECT_EQ(run("$CTL " + ofSecond + " set proc third; $CTL get proc " + ofSecond).out, "third\n");
    EXPECT_EQ(run("$CTL --process " + std::to_string(first) + " get proc").out, "first\n");
    EXPECT_EQ(run("$CTL --process $$ get proc").out, "nobody\n");
    EXPECT_EQ(run("KORDANIX_RUNTIME_DIR=$XDG_RUNTIME_DIR/kordanix $CTL get proc").out, "nobody\n");
    EXPECT_THAT(run("$CTL --process 2000000000 get proc").err, HasSubstr("there is no process 2000000000"));

    end(first);
    EXPECT_EQ(run("$CTL get proc").out, "third\n");
    kill(second, SIGKILL);
    EXPECT_EQ(run("$CTL get proc").out, "third\n") << "what the program started goes on";
    EXPECT_EQ(run("$CTL background").status, 0) << "and ends with that";
    const char* const untilItHasEnded =
        "for i in $(seq 100); do [ \"$($CTL get proc)\" != third ] && break; "
        "sleep 0.1; done; ";
    EXPECT_EQ(run(std::string(untilItHasEnded) + "$CTL get proc").out, "nobody\n");
    EXPECT_THAT(run("$CTL background").err, HasSubstr("no overlay is running"));
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
