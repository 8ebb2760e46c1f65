#include "doubles/Emulator.h"
#include "faults/FaultHost.h"
#include "ostra/ProcessSocket.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <random>
#include <thread>

namespace faults {
namespace {

namespace fs = std::filesystem;

using support::waitUntil;

/// A runtime directory that the test shares with the hosts it starts, in which the overlay is to be shown.
class FaultTest : public testing::Test {
protected:
    FaultTest() {
        setenv("KORDANIX_RUNTIME_DIR", mRuntime.path().c_str(), 1);
        EXPECT_EQ(showOverlay(), "");
    }

    static bool isShown(FaultHost& host) {
        return waitUntil([&host] { return host.shared().isShown.load(); });
    }

    const support::TemporaryDirectory mRuntime;
};

// The application goes on, the overlay does without what cannot be had, and says so.
TEST_F(FaultTest, ARuntimeDirectoryThatIsOfNoUseIsDoneWithout) {
    const struct {
        const char* prepare;
        const char* complaint;
        bool isShown;  ///< the properties are there to be read
    } cases[] = {
        {"export KORDANIX_RUNTIME_DIR=/nowhere/there", "No such file", false},
        {"D=$KORDANIX_RUNTIME_DIR; mount --bind $D $D; mount -o remount,bind,ro $D", "Read-only file system",
         true},
    };
    for (const auto& [prepare, complaint, isShown] : cases) {
        FaultHost host("", prepare);
        if (!host.waitForFrames(300)) {
            ASSERT_NE(host.end(), 0);
            GTEST_SKIP() << "file systems cannot be mounted here";
        }
        EXPECT_EQ(host.shared().isShown, isShown);
        EXPECT_EQ(host.end(), 0);
        EXPECT_THAT(host.logged(complaint), testing::Not(testing::IsEmpty()))
            << testing::PrintToString(host.logged(""));
        EXPECT_LE(host.logged("").size(), 4U) << testing::PrintToString(host.logged(""));
    }
}

TEST_F(FaultTest, TheRuntimeDirectoryGoesWhileTheOverlayRuns) {
    FaultHost host;
    ASSERT_TRUE(isShown(host) && host.setDumping(true));
    ASSERT_TRUE(waitUntil([this] {  // something may just be written there
        std::error_code ignored;
        fs::remove_all(mRuntime.path(), ignored);
        return !fs::exists(mRuntime.path());
    }));
    EXPECT_TRUE(host.waitForFrames(100));
    EXPECT_TRUE(host.shared().isShown);
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
}

TEST_F(FaultTest, AFloodOfKeysAndGarbageLosesNoFrameOfADump) {
    FaultHost host("adreno-c32");  // whose counters make captures last
    ASSERT_TRUE(isShown(host) && host.waitForFrames(50));
    const std::size_t files = host.entries("fd");
    std::mt19937 random(3);
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    platform::processSocketPath(mRuntime.path(), host.id())
        .copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const auto send = [descriptor](const std::string& bytes) {
        return ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    };
    for (int i = 0; i < 100000; ++i) {
        // Now and then one that starts or ends a dump or a capture, among keys that mean nothing.
        const int kind = static_cast<int>(random() % 2000);
        const int code = kind == 0 ? DUMP_KEY : kind < 20 ? CAPTURE_KEY : kind + 100;
        ASSERT_TRUE(send("key " + std::to_string(code) + (random() % 3 == 0 ? " 0" : " 1")));
        if (i % 50 == 0) {
            ASSERT_TRUE(send(std::string(random() % 200, static_cast<char>(random()))));
        }
    }
    close(descriptor);
    // What still waits to be read may hold the key once more.
    ASSERT_EQ(host.sendToBackground(), "");
    ASSERT_TRUE(host.waitForFrames(100));
    host.shared().reattach = 1;
    ASSERT_TRUE(waitUntil([&host] { return host.shared().reattach == 0 && !host.shared().isDumping; }));
    const std::size_t floodDumps = host.shared().dumpCount;
    EXPECT_GT(floodDumps, 3U);
    EXPECT_TRUE(host.setDumping(true) && host.waitForFrames(60) && host.setDumping(false));
    EXPECT_EQ(host.shared().dumpCount, floodDumps + 1);
    EXPECT_TRUE(host.follows());
    EXPECT_TRUE(waitUntil([&] { return host.entries("fd") <= files; }));
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
    EXPECT_THAT(host.logged("not understood"), testing::SizeIs(1));
}

TEST_F(FaultTest, AThousandLayersLeaveNothingBehind) {
    FaultHost host;
    ASSERT_TRUE(isShown(host));
    const auto come = [&host](int reattached, int renewed) {
        host.shared().reattach = reattached;
        host.shared().renew = renewed;
        return waitUntil([&] { return host.shared().reattach == 0 && host.shared().renew == 0; });
    };
    ASSERT_TRUE(come(50, 50));
    const std::size_t files = host.entries("fd");
    const std::size_t threads = host.entries("task");
    const std::size_t pages = host.residentPages();
    ASSERT_TRUE(come(1000, IS_SANITIZED ? 100 : 1000));
    EXPECT_TRUE(isShown(host));
    // The reader beside the frames may just have one of its files open.
    EXPECT_TRUE(waitUntil([&] { return host.entries("fd") <= files; }));
    EXPECT_TRUE(waitUntil([&] { return host.entries("task") <= threads; }));
    if (!IS_SANITIZED && !doubles::isEmulated()) {  // QEMU 7.2 keeps 170 KiB of every thread that ended
        // Listeners are kept for good, some dozen bytes each; anything more would be a leak.
        EXPECT_LE(host.residentPages(), pages + 100);
    }
    // All those listeners together.
    ASSERT_TRUE(host.setDumping(true));
    ASSERT_EQ(host.sendToBackground(), "");
    ASSERT_TRUE(waitUntil([&host] { return !host.shared().isDumping; }));
    EXPECT_TRUE(host.follows());
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
}

// What an application may do to its process while the overlay is on: fork, execute, exit.

class ProcessFaults : public FaultTest {
protected:
    /// Starts a dump, and a capture of GPU counters that lasts for a tenth of a second.
    static bool keepBusy(FaultHost& host) {
        if (!isShown(host) || !host.setDumping(true)) {
            return false;
        }
        const std::size_t threads = host.entries("task");
        // A capture is as long as the frame before it was.
        host.shared().stallMs = 100;
        return waitUntil([&host] { return host.shared().stallMs == 0; }) && host.press(CAPTURE_KEY).empty() &&
               waitUntil([&] { return host.entries("task") > threads; });
    }

    static bool areChildrenRight(FaultHost& host) {
        return waitUntil([&host] { return host.shared().children == 0; }) &&
               host.shared().failedChildren == 0;
    }
};

TEST_F(ProcessFaults, ForkedChildrenDrawExecuteAndExit) {
    FaultHost host("adreno-c32");
    ASSERT_TRUE(keepBusy(host));
    const std::size_t files = host.entries("fd");
#ifndef __SANITIZE_THREAD__  // which does not work in a child of a process with threads
    for (int i = 0; i < 2; ++i) {
        for (const Order order : {Order::CHILD_DRAWS, Order::CHILD_EXITS, Order::CHILD_EXECUTES}) {
            // QEMU 7.2 ends the forked child of a process with threads when it starts a thread.
            EXPECT_TRUE((doubles::isEmulated() && order == Order::CHILD_DRAWS) || host.startChild(order));
        }
    }
    EXPECT_TRUE(areChildrenRight(host));
#endif
    // Children that draw meanwhile are not promised anything: another thread may hold a lock when they are
    // forked. Each publisher is killed at some moment.
    for (unsigned i = 0; i < 30; ++i) {
        const Publisher publisher(i);
        // QEMU 7.2 has the real processor's system execute what is spawned.
        EXPECT_TRUE(host.startChild(i % 2 == 0 || doubles::isEmulated() ? Order::CHILD_EXECUTES
                                                                        : Order::CHILD_IS_SPAWNED));
    }
    EXPECT_TRUE(areChildrenRight(host));
    EXPECT_TRUE(host.follows());
    EXPECT_TRUE(waitUntil([&] { return host.entries("fd") <= files; }));
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "") << "children do not write into their parent's dump";
}

// In the middle of publications, of a capture and of a dump.
TEST_F(ProcessFaults, AnEndIsNeitherHeldUpNorACrash) {
    std::mt19937 random(1);
    const auto busyHost = [&random] {
        auto host = std::make_unique<FaultHost>("adreno-c32");
        EXPECT_TRUE(keepBusy(*host));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
        return host;
    };
    const struct {
        End kind;
        bool isOrderly;  ///< what was handed over by now is written
    } ends[] = {{End::RETURN, true},
                {End::EXIT, true},
                {End::EXIT_ON_A_THREAD, true},
                {End::QUICK_EXIT, false},
                {End::UNDERSCORE_EXIT, false}};
    const Publisher publisher(11);
    for (const auto& [kind, isOrderly] : ends) {
        for (int round = 0; round < (IS_SANITIZED ? 3 : 8); ++round) {
            SCOPED_TRACE(static_cast<int>(kind));
            const auto host = busyHost();
            ASSERT_EQ(host->end(kind), 0) << testing::PrintToString(host->logged(""));
            ASSERT_EQ(isOrderly ? host->dumpError() : "", "");
        }
    }
    for (const int signal : {SIGTERM, SIGPIPE, SIGKILL}) {
        const auto host = busyHost();
        host->kill(signal);
        EXPECT_EQ(host->wait(), -signal);
    }
    // Those that could not remove their sockets do not stand in anybody's way.
    const auto host = busyHost();
    EXPECT_EQ(platform::listeningProcesses(mRuntime.path()), std::vector<pid_t>{host->id()});
}

}  // namespace
}  // namespace faults
