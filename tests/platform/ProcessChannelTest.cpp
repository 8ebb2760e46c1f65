#include "doubles/Emulator.h"
#include "doubles/FakeThreads.h"
#include "ostra/PictureRequest.h"
#include "ostra/ProcessChannel.h"
#include "ostra/ProcessSocket.h"
#include "platform/OstraFaults.h"
#include "platform/OstraTesting.h"
#include "properties/RuntimeDirectory.h"
#include "runs/RunFolder.h"
#include "support/ChildProcess.h"

#include <android/log.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <ostra/Ostra.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <atomic>
#include <filesystem>
#include <numeric>
#include <stdexcept>
#include <thread>

// A forked child opens a socket of its own, with a thread of its own.
extern "C" const char* __tsan_default_options() {
    return "die_after_fork=0:report_thread_leaks=0";
}

namespace ostra {
namespace {

using support::ChildProcess;
using support::waitUntil;
using testing::ElementsAre;
using testing::HasSubstr;

namespace fs = std::filesystem;

void send(pid_t process, const char* text) {
    const auto message = platform::decodeMessage(text);
    ASSERT_TRUE(message);
    ASSERT_EQ(platform::sendMessage(runtimeDirectory(), process, *message), "");
}

/// Waits for this many key codes.
std::vector<int> takeKeys(std::size_t count) {
    std::vector<int> codes;
    waitUntil([&] {
        for (const Ostra::KeyEvent& event : Ostra::receiveKeyEvents()) {
            codes.push_back(event.keyCode);
        }
        return codes.size() >= count;
    });
    return codes;
}

TEST(ProcessMessages, OnlyWhatIsWrittenTheRightWayIsRead) {
    for (const char* const text : {"background", "picture", "key -2147483648 -1", "key 2147483647 0",
                                   "log start", "log stop", "log toggle", "log last 0", "log last 3600"}) {
        EXPECT_EQ(platform::encodeMessage(platform::decodeMessage(text).value()), text);
    }
    for (const char* const text :
         {"", "key", "key 24 ", "key 24 1 ", "key  24 1", "key +24 1", "key 24 2147483648", "Key 24 1",
          "background ", "picture properties", "log", "log ", "log last", "log last -1", "log last 3601",
          "log last 1 ", "log /tmp"}) {
        EXPECT_FALSE(platform::decodeMessage(text)) << '"' << text << '"';
    }
}

class Channel : public testing::Test {
protected:
    Channel() {
        runtimeDirectory();
        doubles::takeLog();
    }
};

TEST_F(Channel, ANoticeReachesEveryListenerOnAnotherThread) {
    static std::atomic<int> first{0};
    static std::atomic<int> second{0};
    static std::atomic<bool> isOwnThread{false};
    Ostra::receiveKeyEvents();
    Ostra::registerAppBecomeBackgroundListener(nullptr);
    Ostra::registerAppBecomeBackgroundListener([] { throw std::runtime_error("a listener's own"); });
    Ostra::registerAppBecomeBackgroundListener([caller = std::this_thread::get_id()] {
        isOwnThread = std::this_thread::get_id() != caller;
        if (++first == 1) {
            Ostra::registerAppBecomeBackgroundListener([] { ++second; });
        }
    });
    send(getpid(), "background");
    send(getpid(), "background");
    EXPECT_TRUE(waitUntil([] { return first == 2 && second == 2 && isOwnThread; })) << first << second;
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("listener for the background")));
}

TEST_F(Channel, KeysThatNobodyTakesAndAFailedAllocationAreSurvived) {
    constexpr int COUNT = platform::ProcessChannel::MAX_PENDING;
    Ostra::receiveKeyEvents();
    faults::failingAllocations = 1;
    send(getpid(), "key 0 1");
    ASSERT_TRUE(waitUntil([] { return faults::failingAllocations == 0; }));
    for (int i = 0; i <= COUNT; ++i) {
        send(getpid(), ("key " + std::to_string(i) + " 1").c_str());
    }
    std::vector<std::string> warnings;
    EXPECT_TRUE(waitUntil([&] {
        for (std::string& text : logged(ANDROID_LOG_WARN)) {
            warnings.push_back(std::move(text));
        }
        return warnings.size() >= 2;
    }));
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("out of memory"), HasSubstr("dropped")));
    std::vector<int> kept(COUNT);
    std::iota(kept.begin(), kept.end(), 0);
    EXPECT_EQ(takeKeys(kept.size()), kept);
    send(getpid(), "key 7 0");
    EXPECT_THAT(takeKeys(1), ElementsAre(7)) << "and it goes on";
}

TEST_F(Channel, AForkedChildHasASocketOfItsOwn) {
    if (doubles::isEmulated()) {
        GTEST_SKIP() << "QEMU 7.2 ends the forked child of a process with threads when it starts a thread";
    }
    Ostra::receiveKeyEvents();
    ChildProcess child([] {
        const bool isRight = takeKeys(2) == std::vector<int>{1, 2};
        while (isRight) {
            pause();
        }
        return 1;
    });
    ASSERT_TRUE(waitUntil([] { return platform::listeningProcesses(runtimeDirectory()).size() == 2; }));
    send(child.id(), "key 1 1");
    send(getpid(), "key 10 1");
    send(child.id(), "key 2 1");
    send(getpid(), "key 20 1");
    EXPECT_THAT(takeKeys(2), ElementsAre(10, 20));

    child.kill(SIGKILL);
    EXPECT_EQ(child.wait(), -SIGKILL) << "the child's keys were wrong";
    const std::string left = platform::processSocketPath(runtimeDirectory(), child.id());
    EXPECT_TRUE(fs::exists(left));
    EXPECT_EQ(platform::listeningProcesses(runtimeDirectory()), std::vector<pid_t>{getpid()});
    EXPECT_FALSE(fs::exists(left)) << "what a killed process leaves is cleared away";
}

TEST_F(Channel, AChildWithoutForkHandlersLeavesItsParentsSocketWhenItExits) {
    ChildProcess parent([] {
        Ostra::receiveKeyEvents();
        const auto child =
            static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr));
        if (child == 0) {
            std::exit(0);
        }
        waitpid(child, nullptr, 0);
        return fs::exists(platform::processSocketPath(runtimeDirectory(), getpid())) ? 0 : 1;
    });
    EXPECT_EQ(parent.wait(), 0);
}

// A program that closes what it does not know, and then has sockets and files of its own under our numbers.
#ifndef __SANITIZE_THREAD__  // which takes what this program does for a mistake
TEST_F(Channel, DescriptorsThatTheProgramTookAreItsOwn) {
    std::string error;
    const std::string run = platform::makeRunFolder(runtimeDirectory(), error);
    ASSERT_EQ(error, "");
    ChildProcess program([&run] {
        platform::changeRuntimeDirectory(run);
        Ostra::receiveKeyEvents();
        EXPECT_TRUE(platform::isRunHeld(run));
        closefrom(STDERR_FILENO + 1);
        int own[8][2] = {};
        for (auto& pair : own) {
            socketpair(AF_UNIX, SOCK_DGRAM, 0, pair);
        }
        EXPECT_TRUE(waitUntil([&] { return platform::isRunHeld(run); })) << "held again";
        const auto sendOwn = [&own] {
            return std::all_of(own, own + 8, [](int* pair) { return ::send(pair[1], "own", 3, 0) == 3; });
        };
        platform::ProcessMessage key;
        for (int i = 1; i <= 25; ++i) {
            EXPECT_TRUE(sendOwn());
            key.key = {i, 1};
            EXPECT_TRUE(waitUntil([&] { return platform::sendMessage(run, getpid(), key).empty(); }));
            EXPECT_THAT(takeKeys(1), ElementsAre(i));
            for (const auto& pair : own) {
                char bytes[4] = {};
                EXPECT_EQ(recv(pair[0], bytes, 4, MSG_DONTWAIT), 3);
            }
        }
        // A forked child has them as well, and does not hold its parent's run.
        EXPECT_EQ(support::runForked([&] { return sendOwn() ? 0 : 1; }), 0);
        return HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(program.wait(), 0);
    EXPECT_FALSE(platform::isRunHeld(run));
}
#endif

TEST_F(Channel, AThreadThatIsRefusedIsAskedForAgain) {
    if (doubles::isEmulated()) {
        GTEST_SKIP() << "QEMU 7.2 starts no thread in the forked child of a process with threads";
    }
    ChildProcess program([] {
        const std::string path = platform::processSocketPath(runtimeDirectory(), getpid());
        doubles::refusedThreads() = 1;
        Ostra::receiveKeyEvents();
        Ostra::receiveKeyEvents();
        EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("no thread")));
        EXPECT_FALSE(fs::exists(path));
        EXPECT_TRUE(waitUntil([&path] {
            Ostra::receiveKeyEvents();
            return fs::exists(path);
        }));
        send(getpid(), "key 3 1");
        EXPECT_THAT(takeKeys(1), ElementsAre(3));
        return HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Channel, APictureIsAskedForOnceAndOnlyWhileItIsWaitedFor) {
    const std::string path = platform::picturePath(runtimeDirectory(), getpid());
    const auto ask = [] {
        send(getpid(), "picture");
        send(getpid(), "key 1 1");
        EXPECT_THAT(takeKeys(1), ElementsAre(1));
    };
    Ostra::receiveKeyEvents();
    ask();
    EXPECT_EQ(platform::takePictureRequest(), std::nullopt);
    close(creat(path.c_str(), 0600));
    ask();
    EXPECT_EQ(support::runForked([] { return platform::takePictureRequest() ? 1 : 0; }), 0)
        << "a child does not answer for its parent";
    EXPECT_EQ(platform::takePictureRequest(), path);
    EXPECT_EQ(platform::takePictureRequest(), std::nullopt);
    fs::remove(path);
}

TEST_F(Channel, ClocksAreLeftAloneAndThatIsSaidOnce) {
    EXPECT_FALSE(Ostra::fixClock(1, 2) || Ostra::fixClock(1, 2));
    EXPECT_THAT(logged(ANDROID_LOG_INFO), ElementsAre(HasSubstr("not fixed")));
}

}  // namespace
}  // namespace ostra
