// What an application may do to its process while the overlay is on: fork, execute, exit.

#include "doubles/Emulator.h"
#include "faults/FaultFixture.h"

#include <csignal>
#include <memory>
#include <thread>
#include <vector>

namespace faults {
namespace {

class ProcessFaults : public FaultTest {
protected:
    void SetUp() override {
        ASSERT_EQ(showOverlay(), "");
        mOptions.device = "adreno-c32";
    }

    /// Starts a dump, and a capture of GPU counters that lasts for a tenth of a second.
    void keepBusy(HostProcess& host) const {
        ASSERT_TRUE(host.waitFor("shown0", 1));
        ASSERT_NO_FATAL_FAILURE(setDumping(host, true));
        const long threads = std::stol(host.report()["threads"]);
        // A capture is as long as the frame before it was.
        host.stall(100);
        ASSERT_EQ(pressKey(host, CAPTURE_KEY), "");
        ASSERT_TRUE(host.waitFor("threads", [threads](long now) { return now > threads; }));
    }
};

TEST_F(ProcessFaults, ForkedChildrenDrawExecuteAndExit) {
    HostProcess host(mOptions);
    keepBusy(host);
    const long files = std::stol(host.report()["files"]);
#ifndef __SANITIZE_THREAD__  // which does not work in a child of a process with threads
    for (const char* const kind : {"frames", "exit", "exec", "frames", "exit", "exec"}) {
        // QEMU 7.2 ends the forked child of a process with threads when it starts a thread.
        if (!doubles::isEmulated() || kind != std::string("frames")) {
            host.tell(std::string("fork ") + kind);
        }
    }
    ASSERT_TRUE(host.waitFor("children", 0));
    EXPECT_EQ(host.report()["failed_children"], "0");
#endif
    {
        // Children that draw meanwhile are not promised anything: another thread may hold a lock when they
        // are forked.
        const Publisher publisher(Publisher::What::ANYTHING, 5);
        for (int i = 0; i < 30; ++i) {
            // QEMU 7.2 has the real processor's system execute what is spawned.
            host.tell(i % 2 == 0 || doubles::isEmulated() ? "fork exec" : "fork spawn");
        }
        ASSERT_TRUE(host.waitFor("children", 0));
        EXPECT_EQ(host.report()["failed_children"], "0");
    }
    expectFollows(host);
    EXPECT_TRUE(host.waitFor("files", [files](long now) { return now <= files; }));
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "") << "children do not write into their parent's dump";
}

class ProcessEnd : public ProcessFaults, public testing::WithParamInterface<std::pair<const char*, bool>> {};

// In the middle of publications, of a capture and of a dump.
TEST_P(ProcessEnd, IsNeitherHeldUpNorACrash) {
    const auto& [kind, isOrderly] = GetParam();  // orderly: what was handed over by now is written
    const Publisher publisher(Publisher::What::TEXT_ALONE, 11);
    std::mt19937 random(1);
    for (int round = 0; round < (IS_SANITIZED ? 4 : 15); ++round) {
        SCOPED_TRACE(round);
        const platform::TemporaryDirectory folder;
        mOptions.folder = folder.path();
        HostProcess host(mOptions);
        ASSERT_NO_FATAL_FAILURE(keepBusy(host));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
        ASSERT_EQ(host.end(kind), 0) << testing::PrintToString(host.logged());
        if (isOrderly) {
            ASSERT_EQ(host.dumpError(), "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, ProcessEnd,
                         testing::Values(std::pair("return", true), std::pair("exit", true),
                                         std::pair("thread", true), std::pair("quick_exit", false),
                                         std::pair("_exit", false)),
                         [](const auto& end) { return std::string("By_") + end.param.first; });

TEST_F(ProcessFaults, SignalsEndTheApplicationAsEver) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGPIPE, SIGKILL}) {
        HostProcess host(mOptions);
        keepBusy(host);
        host.kill(signal);
        EXPECT_EQ(host.wait(), -signal);
    }
    // Those that could not remove their sockets do not stand in anybody's way.
    HostProcess host(mOptions);
    EXPECT_LE(platform::listeningProcesses(mOptions.runtime).size(), 1U);
    keepBusy(host);
    EXPECT_EQ(platform::listeningProcesses(mOptions.runtime), std::vector<pid_t>{host.id()});
    EXPECT_EQ(host.end(), 0);
}

}  // namespace
}  // namespace faults
