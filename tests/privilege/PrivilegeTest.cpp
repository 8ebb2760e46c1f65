#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <fnmatch.h>
#include <gmock/gmock.h>

#include <fstream>
#include <regex>

namespace {

constexpr unsigned FRAMES = 100;  ///< of each phase

using CallCounts = std::map<std::string, unsigned>;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::Key;

/// What the host asked of the kernel in a phase: the calls of its first thread and of all others, and by path
/// what any thread was going to open, whether it was there or not.
struct Calls {
    CallCounts main, others, opened;
};

struct Trace {
    std::map<std::string, Calls> phases;
    CallCounts openedForFigures;  // by the thread that reads them, at any time
    std::set<std::string> handledSignals, socketFamilies;
    unsigned programs = 0;
    unsigned processes = 0;
};

Trace readTrace(const std::string& path) {
    static const std::regex CALL(R"((\d+) +(\w+)\(([^,]*)(.*))");
    static const std::regex MARK(R"re(.*"phase:(.*)".*)re");
    static const std::regex PATH(R"([^"]*"([^"]*)\".*)");
    Trace trace;
    std::ifstream file(path);
    std::string process;
    std::set<std::string> readers;
    Calls* calls = &trace.phases[""];
    std::smatch call;
    std::smatch match;
    for (std::string line; std::getline(file, line);) {
        if (!std::regex_match(line, call, CALL)) {
            continue;  // the rest of a call that was interrupted, a signal, the end
        }
        const std::string name = call[2];
        const std::string first = call[3];
        const std::string rest = call[4];
        process = process.empty() ? call[1].str() : process;
        if (std::regex_match(line, match, MARK)) {
            calls = &trace.phases[match[1]];
            continue;
        }
        if (name == "prctl" && line.find("kordanix-figure") != std::string::npos) {
            readers.insert(call[1]);
        }
        if (readers.count(call[1]) != 0) {
            if (name.find("open") == 0 && std::regex_match(line, match, PATH)) {
                ++trace.openedForFigures[match[1]];
            }
            continue;
        }
        ++(call[1] == process ? calls->main : calls->others)[name];
        if (name.find("open") == 0 && std::regex_match(line, match, PATH)) {
            ++calls->opened[match[1]];
        } else if (name == "socket") {
            trace.socketFamilies.insert(first);
        } else if (name == "rt_sigaction" && rest.find(", {") == 0) {
            trace.handledSignals.insert(first);
        } else if (name == "execve") {
            ++trace.programs;
        } else if (name.find("fork") != std::string::npos || name.find("clone") == 0) {
            trace.processes += line.find("CLONE_THREAD") == std::string::npos ? 1 : 0;
        }
    }
    return trace;
}

/// The patterns of files.txt, with the folders of this run.
std::vector<std::string> listedFiles(const std::string& runtime, const std::string& dumps) {
    std::vector<std::string> patterns = {"*.so", "*.so.*", "/etc/ld.so.cache"};
    std::ifstream list(PRIVILEGE_FILES);
    for (std::string owner, path, line; std::getline(list, line);) {
        if (std::istringstream(line) >> owner >> path && owner != "#") {
            path = std::regex_replace(path, std::regex(R"(^\$RUNTIME)"), runtime);
            patterns.push_back(std::regex_replace(path, std::regex(R"(^\$DUMPS)"), dumps));
        }
    }
    return patterns;
}

TEST(Privilege, OfAProcessWithTheOverlay) {
    const support::TemporaryDirectory runtime;
    const support::TemporaryDirectory dumps;
    if (support::run({"strace", "-o", "/dev/null", "true"}).status != 0) {
        GTEST_SKIP() << "processes cannot be traced here";
    }
    const std::string file = runtime.path() + "/trace";
    const support::Outcome outcome =
        support::run({"strace", "-f", "-qq", "-s", "500", "-o", file, PRIVILEGE_HOST, std::to_string(FRAMES)},
                     {{"KORDANIX_RUNTIME_DIR", runtime.path()}, {"KORDANIX_DUMP_DIR", dumps.path()}});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    Trace trace = readTrace(file);

    const CallCounts named = {{"openat", FRAMES}, {"read", FRAMES}, {"close", FRAMES}};
    for (const std::string phase :
         {"off", "other API", "other process", "between refreshes", "captures", "dumping"}) {
        SCOPED_TRACE(phase);
        ASSERT_EQ(trace.phases.count(phase), 1U);
        const bool readsName = phase != "off" && phase != "other API";
        const Calls& calls = trace.phases[phase];
        EXPECT_EQ(calls.main, readsName ? named : CallCounts{});
        EXPECT_EQ(calls.opened, readsName ? (CallCounts{{"/proc/self/cmdline", FRAMES}}) : CallCounts{});
        EXPECT_EQ(calls.others, CallCounts{}) << "no other thread runs meanwhile";
    }
    for (const std::string phase : {"refreshes", "memory refreshes"}) {
        SCOPED_TRACE(phase);
        for (const auto& [name, count] : trace.phases[phase].main) {
            EXPECT_THAT(name, AnyOf("openat", "read", "close", "futex"));
            EXPECT_LE(count, FRAMES) << name;
        }
        EXPECT_EQ(trace.phases[phase].others, CallCounts{});
    }
    EXPECT_THAT(trace.openedForFigures, Contains(Key("/proc/self/smaps_rollup")));

    const std::vector<std::string> patterns = listedFiles(runtime.path(), dumps.path());
    trace.phases.erase("looking on");
    trace.phases["figures"].opened = trace.openedForFigures;
    for (const auto& [phase, calls] : trace.phases) {
        for (const auto& opened : calls.opened) {
            EXPECT_TRUE(std::any_of(patterns.begin(), patterns.end(),
                                    [&](const std::string& pattern) {
                                        return fnmatch(pattern.c_str(), opened.first.c_str(), 0) == 0;
                                    }))
                << opened.first << " is not listed";
        }
    }

    EXPECT_EQ(trace.programs, 1U);
    EXPECT_EQ(trace.processes, 0U);
    EXPECT_THAT(trace.handledSignals, Each(AnyOf("SIGRTMIN", "SIGRT_1"))) << "the C library's, for threads";
    EXPECT_THAT(trace.socketFamilies, Each("AF_UNIX"));
}

}  // namespace
