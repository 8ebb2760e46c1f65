#include "platform/TemporaryDirectory.h"
#include "privilege/Phases.h"
#include "support/ChildProcess.h"

#include <fnmatch.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace privilege {

namespace {

using CallCounts = std::map<std::string, unsigned>;
using testing::AnyOf;
using testing::Each;

/// What the host asked of the kernel, by phase: the calls of its first thread and of all others, and by path
/// what any thread was going to open, whether it was there or not.
struct Trace {
    std::map<int, CallCounts> main, others, opened;
    std::set<std::string> handledSignals, socketFamilies;
    unsigned programs = 0;
    unsigned processes = 0;
};

Trace readTrace(const std::string& path) {
    static const std::regex CALL(R"((\d+) +(\w+)\((.*))");
    static const std::regex MARK("^" + std::to_string(MARKER) + R"(, F_SETOWN, (\d+).*)");
    static const std::regex PATH(R"([^"]*"([^"]*)\".*)");
    Trace trace;
    std::ifstream file(path);
    std::string process;
    int phase = BEFORE_MAIN;
    std::smatch call;
    std::smatch match;
    for (std::string line; std::getline(file, line);) {
        if (!std::regex_match(line, call, CALL)) {
            continue;  // the rest of a call that was interrupted, a signal, the end
        }
        const std::string name = call[2];
        const std::string arguments = call[3];
        process = process.empty() ? call[1].str() : process;
        if (std::regex_match(arguments, match, MARK)) {
            phase = std::stoi(match[1]);
            continue;
        }
        ++(call[1] == process ? trace.main : trace.others)[phase][name];
        trace.programs += name == "execve" ? 1 : 0;
        const bool isThread = arguments.find("CLONE_THREAD") != std::string::npos;
        trace.processes +=
            name.find("fork") != std::string::npos || (name.find("clone") == 0 && !isThread) ? 1 : 0;
        const std::string first = arguments.substr(0, arguments.find(','));
        if (name.find("open") == 0 && std::regex_match(arguments, match, PATH)) {
            ++trace.opened[phase][match[1]];
        } else if (name == "socket") {
            trace.socketFamilies.insert(first);
        } else if (name == "rt_sigaction" && arguments.find(", {") == first.size()) {
            trace.handledSignals.insert(first);
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
    const platform::TemporaryDirectory runtime;
    const platform::TemporaryDirectory dumps;
    if (support::run({"strace", "-o", "/dev/null", "true"}).status != 0) {
        GTEST_SKIP() << "processes cannot be traced here";
    }
    const std::string file = runtime.path() + "/trace";
    const support::Outcome outcome =
        support::run({"strace", "-f", "-qq", "-s", "500", "-o", file, PRIVILEGE_HOST, dumps.path()},
                     {{"KORDANIX_RUNTIME_DIR", runtime.path()}, {"KORDANIX_DUMP_DIR", dumps.path()}});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    Trace trace = readTrace(file);

    const CallCounts named = {{"openat", FRAMES}, {"read", FRAMES}, {"close", FRAMES}};
    for (const Phase phase : {SWITCHED_OFF, OTHER_API, OTHER_PROCESS, BETWEEN_REFRESHES, CAPTURES, DUMPING}) {
        SCOPED_TRACE(phase);
        const bool readsName = phase != SWITCHED_OFF && phase != OTHER_API;
        EXPECT_EQ(trace.main[phase], readsName ? named : CallCounts{});
        EXPECT_EQ(trace.opened[phase],
                  readsName ? (CallCounts{{"/proc/self/cmdline", FRAMES}}) : CallCounts{});
        EXPECT_EQ(trace.others[phase], CallCounts{}) << "no other thread runs meanwhile";
    }
    // Which of a device's files there are differs from machine to machine; what is done with each does not.
    for (const Phase phase : {REFRESHES, MEMORY_REFRESHES}) {
        SCOPED_TRACE(phase);
        const bool hasMemory = phase == MEMORY_REFRESHES;
        for (const auto& [path, times] : trace.opened[phase]) {
            // The GPU's clock and its highest value both need the table, as long as there has been none.
            const bool isForTwo = path == "/sys/kernel/gpu/gpu_freq_table" || path == "/proc/meminfo";
            EXPECT_LE(times, (isForTwo ? 2 : 1) * FRAMES) << path;
        }
        CallCounts& calls = trace.main[phase];
        EXPECT_LE(calls["close"], calls["openat"]);
        EXPECT_LE(calls["read"], 2 * calls["close"]);
        // The memory figures' files are read with the C library's own buffers; the slow one of them is asked
        // for from another thread.
        for (const auto& [name, count] : calls) {
            EXPECT_THAT(name, AnyOf("openat", "read", "close", "newfstatat", "fstat", "futex"));
            EXPECT_TRUE(name.find("stat") == std::string::npos || count <= (hasMemory ? 4 * FRAMES : 0))
                << name;
            EXPECT_TRUE(name != "futex" || count <= (hasMemory ? 2 * FRAMES : 0));
        }
        for (const auto& [name, count] : trace.others[phase]) {
            EXPECT_THAT(name, AnyOf("openat", "newfstatat", "fstat", "read", "close", "futex"));
            EXPECT_LE(count, hasMemory ? 2 * FRAMES : 0) << name;
        }
    }

    const std::vector<std::string> patterns = listedFiles(runtime.path(), dumps.path());
    trace.opened.erase(LOOKING_ON);
    bool hasSeenEveryWidget = false;
    for (const auto& [phase, paths] : trace.opened) {
        for (const auto& [path, times] : paths) {
            hasSeenEveryWidget = hasSeenEveryWidget || path == "/proc/self/smaps_rollup";
            EXPECT_TRUE(std::any_of(patterns.begin(), patterns.end(),
                                    [&path = path](const std::string& pattern) {
                                        return fnmatch(pattern.c_str(), path.c_str(), 0) == 0;
                                    }))
                << path << " is not listed";
        }
    }
    EXPECT_TRUE(hasSeenEveryWidget);

    EXPECT_EQ(trace.programs, 1U);
    EXPECT_EQ(trace.processes, 0U);
    EXPECT_THAT(trace.handledSignals, Each(AnyOf("SIGRTMIN", "SIGRT_1"))) << "the C library's, for threads";
    EXPECT_THAT(trace.socketFamilies, Each("AF_UNIX"));
}

}  // namespace

}  // namespace privilege
