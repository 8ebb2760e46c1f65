#include "doubles/Emulator.h"
#include "faults/FaultHost.h"
#include "ostra/ProcessSocket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

namespace faults {
namespace {

namespace fs = std::filesystem;

using support::ChildProcess;
using support::waitUntil;

/// A runtime directory that the test shares with the hosts it starts, in which the overlay is to be shown.
class FaultTest : public testing::Test {
protected:
    FaultTest() {
        setenv("KORDANIX_RUNTIME_DIR", mRuntime.path().c_str(), 1);
        EXPECT_EQ(showOverlay(), "");
    }

    static bool isShown(FaultHost& host) {
        return waitUntil([&host] { return host.shared().isShown[0].load(); });
    }

    const support::TemporaryDirectory mRuntime;
};

// Settings.

TEST_F(FaultTest, SettingsAreFollowedThoughTheirWritersAreKilled) {
    FaultHost host;
    ASSERT_TRUE(isShown(host));
    const Publisher other(Publisher::What::ANYTHING, 1, std::chrono::milliseconds(5));
    std::mt19937 random(7);
    for (unsigned round = 0; round < (IS_SANITIZED ? 60 : 300); ++round) {
        const Publisher writer(Publisher::What::ANYTHING, round);
        // Long enough for some of them to get as far as a publication.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % (IS_SANITIZED ? 8000 : 1500)));
    }
    EXPECT_TRUE(waitUntil([&host] { return host.shared().changes > 10; }));
    EXPECT_EQ(host.shared().tornTexts, 0);
}

// The application goes on, the overlay does without what cannot be had, and says so.
TEST_F(FaultTest, ARuntimeDirectoryThatIsOfNoUseIsDoneWithout) {
    const std::string mountSmall =
        "mkdir \"$KORDANIX_RUNTIME_DIR-kept\"; cp -a \"$KORDANIX_RUNTIME_DIR/.\" "
        "\"$KORDANIX_RUNTIME_DIR-kept\"; "
        "mount -t tmpfs -o size=512k,mode=0700 small \"$KORDANIX_RUNTIME_DIR\"; "
        "cp -a \"$KORDANIX_RUNTIME_DIR-kept/.\" \"$KORDANIX_RUNTIME_DIR\"; rm -r "
        "\"$KORDANIX_RUNTIME_DIR-kept\"; ";
    const struct {
        std::string prepare;
        const char* complaint;
        bool isShown;  ///< the properties are there to be read
    } cases[] = {
        {"export KORDANIX_RUNTIME_DIR=/nowhere/there", "No such file", false},
        {mountSmall + "mount -o remount,ro \"$KORDANIX_RUNTIME_DIR\"", "Read-only file system", true},
    };
    for (const auto& [prepare, complaint, isShown] : cases) {
        SCOPED_TRACE(complaint);
        HostOptions options;
        options.prepare = prepare;
        FaultHost host(options);
        if (!host.waitForFrames(300)) {
            ASSERT_NE(host.end(), 0);
            GTEST_SKIP() << "file systems cannot be mounted here";
        }
        EXPECT_EQ(host.shared().isShown[0], isShown);
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
    EXPECT_TRUE(host.shared().isShown[0]);
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
}

// Keys.

TEST_F(FaultTest, AFloodOfKeysAndGarbageLosesNoFrameOfADump) {
    HostOptions options;
    options.device = "adreno-c32";  // whose counters make captures last
    FaultHost host(options);
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

// Layers of several APIs in one process, and layers that come and go.

TEST_F(FaultTest, TheOverlayMovesFromOneApiToTheOther) {
    HostOptions options;
    options.apis = "01";
    FaultHost host(options);
    ASSERT_TRUE(isShown(host));
    HostShared& shared = host.shared();
    for (std::size_t round = 0; round < 10; ++round) {
        SCOPED_TRACE(round);
        const std::size_t api = (round + 1) % 2;
        ASSERT_EQ(set("api", std::to_string(api)), "");
        ASSERT_EQ(publish(), "");
        ASSERT_TRUE(waitUntil([&] { return shared.isShown[api] && !shared.isShown[1 - api]; }));
        // A key is one press for the layer that is shown, and none for the other.
        ASSERT_TRUE(host.setDumping(true) && host.waitForFrames(20));
        EXPECT_TRUE(shared.isDumping);
        ASSERT_TRUE(host.setDumping(false));
    }
    EXPECT_EQ(shared.dumpCount, 10U);
    EXPECT_TRUE(host.follows());
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
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
    EXPECT_EQ(host.entries("task"), threads);
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
    ProcessFaults() { mOptions.device = "adreno-c32"; }

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

    HostOptions mOptions;
};

TEST_F(ProcessFaults, ForkedChildrenDrawExecuteAndExit) {
    FaultHost host(mOptions);
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
    {
        // Children that draw meanwhile are not promised anything: another thread may hold a lock when they
        // are forked.
        const Publisher publisher(Publisher::What::ANYTHING, 5);
        for (int i = 0; i < 30; ++i) {
            // QEMU 7.2 has the real processor's system execute what is spawned.
            EXPECT_TRUE(host.startChild(i % 2 == 0 || doubles::isEmulated() ? Order::CHILD_EXECUTES
                                                                            : Order::CHILD_IS_SPAWNED));
        }
        EXPECT_TRUE(areChildrenRight(host));
    }
    EXPECT_TRUE(host.follows());
    EXPECT_TRUE(waitUntil([&] { return host.entries("fd") <= files; }));
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "") << "children do not write into their parent's dump";
}

// In the middle of publications, of a capture and of a dump.
TEST_F(ProcessFaults, AnEndIsNeitherHeldUpNorACrash) {
    const Publisher publisher(Publisher::What::TEXT_ALONE, 11);
    std::mt19937 random(1);
    const struct {
        End kind;
        bool isOrderly;  ///< what was handed over by now is written
    } ends[] = {{End::RETURN, true},
                {End::EXIT, true},
                {End::EXIT_ON_A_THREAD, true},
                {End::QUICK_EXIT, false},
                {End::UNDERSCORE_EXIT, false}};
    for (const auto& [kind, isOrderly] : ends) {
        for (int round = 0; round < (IS_SANITIZED ? 3 : 8); ++round) {
            SCOPED_TRACE(static_cast<int>(kind));
            FaultHost host(mOptions);
            ASSERT_TRUE(keepBusy(host));
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
            ASSERT_EQ(host.end(kind), 0) << testing::PrintToString(host.logged(""));
            ASSERT_EQ(isOrderly ? host.dumpError() : "", "");
        }
    }
}

TEST_F(ProcessFaults, SignalsEndTheApplicationAsEver) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGPIPE, SIGKILL}) {
        FaultHost host(mOptions);
        EXPECT_TRUE(keepBusy(host));
        host.kill(signal);
        EXPECT_EQ(host.wait(), -signal);
    }
    // Those that could not remove their sockets do not stand in anybody's way.
    FaultHost host(mOptions);
    EXPECT_TRUE(keepBusy(host));
    EXPECT_EQ(platform::listeningProcesses(mRuntime.path()), std::vector<pid_t>{host.id()});
    EXPECT_EQ(host.end(), 0);
}

}  // namespace
}  // namespace faults
