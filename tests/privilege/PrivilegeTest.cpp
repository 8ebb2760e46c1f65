#include "platform/TemporaryDirectory.h"
#include "privilege/Phases.h"
#include "privilege/Tracer.h"

#include <fnmatch.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace privilege {
namespace {

/// One run of privilege_host for all tests of the process.
class PrivilegeTest : public testing::Test {
protected:
    struct Run {
        platform::TemporaryDirectory runtime;
        platform::TemporaryDirectory dumps;
        Trace trace;
        std::string obstacle;
    };

    static Run& run() {
        static const std::unique_ptr<Run> instance = [] {
            auto fresh = std::make_unique<Run>();
            setenv("KORDANIX_RUNTIME_DIR", fresh->runtime.path().c_str(), 1);
            setenv("KORDANIX_DUMP_DIR", fresh->dumps.path().c_str(), 1);
            traceProgram({PRIVILEGE_HOST, fresh->dumps.path()}, fresh->trace, fresh->obstacle);
            return fresh;
        }();
        return *instance;
    }

    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "sanitizers make system calls of their own";
#endif
        if (!run().obstacle.empty()) {
            GTEST_SKIP() << run().obstacle;
        }
        ASSERT_EQ(trace().exitCode, 0);
    }

    static Trace& trace() {
        return run().trace;
    }
};

struct Budget {
    const char* name;
    Phase phase;
    bool readsName;  ///< each frame opens, reads and closes /proc/self/cmdline; otherwise nothing is called
};

void PrintTo(const Budget& budget, std::ostream* stream) {
    *stream << budget.name;
}

class FrameBudget : public PrivilegeTest, public testing::WithParamInterface<Budget> {};

TEST_P(FrameBudget, IsKept) {
    const auto& [name, phase, readsName] = GetParam();
    const CallCounts calls = {{"openat", FRAMES}, {"read", FRAMES}, {"close", FRAMES}};
    const CallCounts opened = {{"/proc/self/cmdline", FRAMES}};
    EXPECT_EQ(trace().main[phase], readsName ? calls : CallCounts{});
    EXPECT_EQ(trace().opened[phase], readsName ? opened : CallCounts{});
    EXPECT_EQ(trace().others[phase], CallCounts{}) << "no other thread runs meanwhile";
}

INSTANTIATE_TEST_SUITE_P(Phases, FrameBudget,
                         testing::Values(Budget{"SwitchedOff", SWITCHED_OFF, false},
                                         Budget{"OtherApi", OTHER_API, false},
                                         Budget{"OtherProcess", OTHER_PROCESS, true},
                                         Budget{"BetweenRefreshes", BETWEEN_REFRESHES, true},
                                         Budget{"Captures", CAPTURES, true},
                                         Budget{"Dumping", DUMPING, true}),
                         [](const auto& budget) { return budget.param.name; });

// Which of a device's files there are differs from machine to machine; what is done with each does not.
TEST_F(PrivilegeTest, ARefreshOpensReadsAndClosesItsFilesAndNothingElse) {
    for (const Phase phase : {REFRESHES, MEMORY_REFRESHES}) {
        SCOPED_TRACE(phase);
        for (const auto& [path, times] : trace().opened[phase]) {
            // The GPU's clock and its highest value both need the table, as long as there has been none;
            // memory in use is the library's figure, and free memory the layer's.
            const bool isForTwo = path == "/sys/kernel/gpu/gpu_freq_table" || path == "/proc/meminfo";
            EXPECT_LE(times, (isForTwo ? 2 : 1) * FRAMES) << path;
        }
        CallCounts calls = trace().main[phase];
        EXPECT_LE(calls["close"], calls["openat"]);
        EXPECT_LE(calls["read"], 2 * calls["close"]);
        // The memory figures' files are read with the C library's own buffers; the slow one of them is asked
        // for from another thread.
        EXPECT_LE(calls["fstat"], phase == MEMORY_REFRESHES ? 4 * FRAMES : 0);
        EXPECT_LE(calls["futex"], phase == MEMORY_REFRESHES ? 2 * FRAMES : 0);
        for (const char* const name : {"openat", "read", "close", "fstat", "futex"}) {
            calls.erase(name);
        }
        EXPECT_EQ(calls, CallCounts{});
    }
    EXPECT_EQ(trace().others[REFRESHES], CallCounts{});
    const CallCounts& slow = trace().others[MEMORY_REFRESHES];
    for (const auto& [name, count] : slow) {
        EXPECT_THAT(name, testing::AnyOf("openat", "fstat", "read", "close", "futex"));
        EXPECT_LE(count, 2 * FRAMES) << name;
    }
}

bool isLibrary(const std::string& path) {
    return fnmatch("*.so", path.c_str(), 0) == 0 || fnmatch("*.so.*", path.c_str(), 0) == 0;
}

TEST_F(PrivilegeTest, OnlyListedFilesAreOpened) {
    std::vector<std::string> patterns;
    std::ifstream list(PRIVILEGE_FILES);
    for (std::string line; std::getline(list, line);) {
        std::istringstream words(line);
        std::string owner;
        std::string path;
        if (!(words >> owner >> path) || owner == "#") {
            continue;
        }
        for (const auto& [name, value] :
             {std::pair{"$RUNTIME", run().runtime.path()}, {"$DUMPS", run().dumps.path()}}) {
            if (path.rfind(name, 0) == 0) {
                path.replace(0, std::string(name).size(), value);
            }
        }
        patterns.push_back(path);
    }
    ASSERT_GT(patterns.size(), 10U);
    CallCounts all;
    for (auto& [phase, paths] : trace().opened) {
        all.merge(paths);
    }
    for (const auto& [path, times] : all) {
        const bool isListed =
            std::any_of(patterns.begin(), patterns.end(), [&path = path](const std::string& pattern) {
                return fnmatch(pattern.c_str(), path.c_str(), 0) == 0;
            });
        EXPECT_TRUE(isListed || isLibrary(path) || path == "/etc/ld.so.cache") << path;
    }
    EXPECT_EQ(all.count("/proc/self/smaps_rollup"), 1U) << "the run has seen every widget";
}

TEST_F(PrivilegeTest, NothingIsStartedHandledOrConnected) {
    EXPECT_EQ(trace().programs, 1U);
    EXPECT_EQ(trace().processes, 0U);
    // Two signals are the C library's own, for threads.
    EXPECT_THAT(trace().handledSignals, testing::IsSubsetOf({32, 33}));
    EXPECT_THAT(trace().socketFamilies, testing::IsSubsetOf({AF_UNIX}));
}

}  // namespace
}  // namespace privilege
