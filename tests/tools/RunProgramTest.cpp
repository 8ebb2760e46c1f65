#include "RunFixture.h"
#include "run/ProgramFile.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace control {
namespace {

using support::ChildProcess;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace fs = std::filesystem;

const std::string NOT_SHOWN = "kordanixctl: the overlay was not shown: no frame of OpenGL.*\n";

using RunProgram = RunFixture;

TEST_F(RunProgram, RunsAsIfByItself) {
    const std::string preload =
        fs::path(KORDANIXCTL).parent_path().parent_path() / "lib/kordanix/libkordanix-preload.so";
    const std::string vulkan = "1 " + (fs::path(KORDANIXCTL).parent_path().parent_path() / "lib").string() +
                               "/[^:]*kordanix(:[^:]*)?";
    // By $LIB where 32-bit programs have the overlay too.
    const std::string preloaded = ".*/kordanix/libkordanix-preload.so";
    const struct {
        std::string line;
        int status;
        std::string out;  // with `err`, a regular expression
        std::string err = NOT_SHOWN;
    } cases[] = {
        {"$CTL run -- sh -c 'echo out; echo err >&2; exit 3'", 3, "out\n", "err\n" + NOT_SHOWN},
        {"$CTL run printf '%s,' -- --set -h -1 --process", 0, "--,--set,-h,-1,--process,"},
        {"exec $CTL run -- sh -c 'kill -TERM $$'", -SIGTERM, ""},
        {"ulimit -c unlimited; $CTL run -- sh -c 'ulimit -c 0; kill -SEGV $$'; ls | grep core", 1, "", ".*"},
        {"echo text | $CTL run cat", 0, "text\n"},
        {"LD_PRELOAD= $CTL run -- sh -c 'echo $LD_PRELOAD'", 0, preloaded + "\n"},
        {"XDG_CONFIG_DIRS= $CTL run -- sh -c 'echo $KORDANIX $XDG_CONFIG_DIRS'", 0, vulkan + ":/etc/xdg\n"},
        {"XDG_CONFIG_DIRS=/a:/b $CTL run -- sh -c 'echo $KORDANIX $XDG_CONFIG_DIRS'", 0, vulkan + ":/a:/b\n"},
        {"LD_PRELOAD=" + preload + " $CTL run sh -c 'echo $LD_PRELOAD'", 0, preloaded + ":" + preload + "\n"},
        {"P='env --ignore-signal=CHLD,INT --block-signal=USR2,TERM'; S='grep -E Sig(Blk|Ign) "
         "/proc/self/status';"
         "[ \"$($P $S)\" = \"$($P $CTL run $S)\" ] && [ \"$(ls /proc/self/fd)\" = \"$($CTL run ls "
         "/proc/self/fd)\" ]",
         0, "", NOT_SHOWN + NOT_SHOWN},
        {"$CTL run ls /proc/self/fd <&- 2>&1", 0, "0\n1\n2\nkor.*", ""},
        {"$CTL run sh -c 'exit 3' 2>&-", 3, "", ""},
        {"{ $CTL run sh -c 'sleep 0.1; exit 4' 2>&1; echo $? >s; } | true; cat s", 0, "4\n", ""},
        {"$CTL run --set widget_fps=off -- sh -c '$CTL get'", 0,
         "debug.kordanix.status true\ndebug.kordanix.widget_fps false\n"
         "debug.kordanix.settingsgeneration 1\n"},
        {"$CTL run --set proc=a=b -- sh -c '$CTL get proc; $CTL get api'", 0, "a=b\n0\n"},
        {"$CTL run --set widget_fps=off -- sh -c '$CTL set widget_fps on status off proc x devmode on; $CTL "
         "reset; $CTL get'",
         0, "debug.kordanix.status true\ndebug.kordanix.widget_fps false\n.*"},
        {"unset PATH; $CTL run sh -c 'exit 7'", 7, ""},
        {"cp /bin/false f; PATH=/nowhere: $CTL run f", 1, ""},
        {"$CTL run -- nonsense", 127, "", "kordanixctl: nonsense: there is no such program\n"},
        {"$CTL run -- /etc/passwd", 126, "", "kordanixctl: /etc/passwd: this is no program.*"},
        {"printf '#!/nowhere\n' >s; chmod 700 s; $CTL run ./s", 127, "", "kordanixctl: ./s: No such file.*"},
        {"$CTL run --set widget_fsp=1 ls", 2, "", ".*did you mean 'widget_fps'.\n"},
        {"$CTL run --set status ls", 2, "", ".*'status' has no value; expected NAME=VALUE\n"},
        {"$CTL run --set api=1 ls", 2, "", ".*--set proc=NAME.*"},
        {"$CTL run", 2, "", ".*no program is given.*"},
        {"$CTL --process 1 run ls", 2, "", ".*has no --process.*"},
#ifndef __SANITIZE_THREAD__  // whose runtime writes a file before main() begins
        {"(ulimit -f 0; exec $CTL run ls 2>&1) | cat", 0, "kordanixctl: .*File too large.*", ""},
#endif
        {"mkdir -p a/bin; cp $CTL a/bin; a/bin/kordanixctl run ls", 1, "", ".*preload.so.*not installed.*"},
        {"mkdir -p a/lib/kordanix; cp " + preload +
             " a/lib/kordanix; mv a 'a b'; 'a b'/bin/kordanixctl run ls",
         1, "", ".*blank.*"},
        {"mv 'a b' 'a${LIB}b'; 'a${LIB}b'/bin/kordanixctl run ls", 1, "", ".*means something else.*"},
        {"D=" + std::string(90, 'x') + "; mkdir $D; XDG_RUNTIME_DIR=$PWD/$D $CTL run ls", 1, "",
         ".*too long for the sockets.*"},
    };
    for (const auto& [line, status, out, err] : cases) {
        const support::Outcome outcome = run(line);
        EXPECT_EQ(outcome.status, status) << line << outcome.err;
        EXPECT_THAT(outcome.out, MatchesRegex(out)) << line;
        EXPECT_THAT(outcome.err, MatchesRegex(err)) << line;
    }
    EXPECT_EQ(countRuns(), 0);
}

TEST_F(RunProgram, SaysThatTheKernelDoesNotTellWhatItNeeds) {
    const std::string without = "unshare -rm sh -c 'mount -t tmpfs none /proc && exec $CTL ";
    if (run(without + "--version'").status != 0) {
        GTEST_SKIP() << "/proc cannot be hidden here";
    }
    EXPECT_THAT(run(without + "run true'").err, HasSubstr("is /proc mounted?"));
}

TEST_F(RunProgram, IsSentWhatIsSentToItsParent) {
    ChildProcess program({KORDANIXCTL, "run", "sh", "-c",
                          "for s in HUP CONT USR1 USR2 INT QUIT; do trap \"echo $s\" $s; done;"
                          "trap 'echo TERM; exit 9' TERM; echo ready; while :; do sleep 0.01; done"});
    std::string expected = "ready\n";
    const auto hasCome = [&] { return program.output() == expected; };
    ASSERT_TRUE(support::waitUntil(hasCome)) << program.errors();
    const std::pair<int, const char*> signals[] = {
        {SIGINT, ""},  {SIGHUP, "HUP\n"},   {SIGCONT, "CONT\n"}, {SIGUSR1, "USR1\n"},
        {SIGQUIT, ""}, {SIGUSR2, "USR2\n"}, {SIGTERM, "TERM\n"}};
    for (const auto& [signal, answer] : signals) {
        expected += answer;
        program.kill(signal);
        EXPECT_TRUE(support::waitUntil(hasCome)) << signal << program.output();
    }
    EXPECT_EQ(program.wait(), 9);
}

TEST_F(RunProgram, StopsAndGoesOnWithItsParent) {
    const std::pair<const char*, bool> cases[] = {
        {"kill -TSTP $$; exit 5", true},
        {"kill -TSTP 0; exit 5", true},
        {"trap '' TSTP; kill -TSTP 0; exit 5", false},
        // Whoever stops the program alone lets it go on alone.
        {"(sleep 0.2; kill -CONT $$) & kill -STOP $$; exit 5", false},
    };
    for (const auto& [script, isStopped] : cases) {
        ChildProcess program([&, text = script] {
            setpgid(0, 0);
            return execl(KORDANIXCTL, "kordanixctl", "run", "sh", "-c", text, nullptr);
        });
        siginfo_t state = {};
        waitid(P_PID, static_cast<id_t>(program.id()), &state, WEXITED | WSTOPPED | WNOWAIT);
        EXPECT_EQ(state.si_code, isStopped ? CLD_STOPPED : CLD_EXITED) << script;
        kill(-program.id(), SIGCONT);
        EXPECT_EQ(program.wait(), 5) << script;
    }
}

TEST_F(RunProgram, OutlivesAParentThatIsKilledAndKeepsItsFolder) {
    ChildProcess program(
        {KORDANIXCTL, "run", "sh", "-c",
         "cd $XDG_RUNTIME_DIR; echo ready; while [ ! -e end ]; do sleep 0.01; done; touch ended"});
    ASSERT_TRUE(support::waitUntil([&] { return program.output() == "ready\n"; }));
    program.kill(SIGKILL);
    EXPECT_EQ(program.wait(), -SIGKILL);
    run("$CTL run true");
    EXPECT_EQ(countRuns(), 1);
    run("touch end; while [ ! -e ended ]; do sleep 0.01; done");
    EXPECT_TRUE(support::waitUntil([&] {
        run("$CTL run true");
        return countRuns() == 0;
    }));
}

TEST_F(RunProgram, WhatKeepsTheOverlayOutIsKnownBeforeItStarts) {
    const std::string sound = support::readFile("/bin/env");
    const std::string path = mHome.path("program");
    const auto obstacleOf = [&](const std::string& bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
        return inspectProgram(path).obstacle;
    };
    const auto changed = [&](std::size_t offset, const std::string& bytes) {
        return std::string(sound).replace(offset, bytes.size(), bytes);
    };
    EXPECT_EQ(obstacleOf(sound), "");
    EXPECT_EQ(obstacleOf("#!/bin/sh -e\n"), "");
    EXPECT_EQ(obstacleOf("#!" + path), "") << "a script that is its own interpreter";
    // Of 32 bits, for the processor of 64 bits: that is said where others have the overlay.
    EXPECT_THAT(obstacleOf(changed(4, "\1")),
                MatchesRegex(path + " is a (32-bit program, and .*|program for another kind of processor)"));
    EXPECT_EQ(obstacleOf(changed(18, "\xF3")), path + " is a program for another kind of processor");
    EXPECT_EQ(inspectProgram(STATIC_PROGRAM).obstacle, STATIC_PROGRAM " is statically linked");
    for (std::size_t size = 0; size < 512; size += 3) {
        obstacleOf(sound.substr(0, size));
        obstacleOf(changed(size, "\xFF"));
    }
    // A loader of another C library, which would end over our library.
    const std::string other =
        changed(sound.find("ld-linux") - std::string("/lib64/").size(), std::string("ld-other.so\0", 12));
    EXPECT_THAT(obstacleOf(other), HasSubstr("another C library (its loader is ld-other.so)"));
    const support::Outcome outcome =
        run("ln -s /lib64/ld-linux* ld-other.so; chmod 700 program; $CTL run ./program");
    EXPECT_THAT(outcome.out, testing::Not(HasSubstr("libkordanix-preload.so"))) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("not shown: ./program uses another C library"));

    obstacleOf(sound);
    const bool isRoot = geteuid() == 0;
    ASSERT_TRUE(!isRoot || (chown(path.c_str(), 65534, 65534) == 0 && chmod(path.c_str(), 04755) == 0));
    EXPECT_THAT(inspectProgram(isRoot ? path : "/usr/bin/passwd").obstacle, HasSubstr("runs with rights"));
}

}  // namespace
}  // namespace control
