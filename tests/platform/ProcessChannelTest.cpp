#include "ostra/ProcessChannel.h"

#include "doubles/Emulator.h"
#include "ostra/PictureRequest.h"
#include "ostra/ProcessSocket.h"
#include "platform/OstraFaults.h"
#include "platform/OstraTesting.h"
#include "runs/RunFolder.h"
#include "support/ChildProcess.h"

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostra/Ostra.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
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
    for (const char* const text :
         {"background", "picture", "key 24 1", "key -2147483648 -1", "key 2147483647 0"}) {
        const auto message = platform::decodeMessage(text);
        ASSERT_TRUE(message) << text;
        EXPECT_EQ(platform::encodeMessage(*message), text);
    }
    for (const char* const text :
         {"", "key", "key 24 ", "key 24 1 ", "key 24 1\n", "key  24 1", "key +24 1", "key 24 2147483648",
          "Key 24 1", "background ", "key 0x18 1", "picture ", "picture properties"}) {
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
    EXPECT_TRUE(waitUntil([] { return first == 2 && second == 2; })) << first << ' ' << second;
    EXPECT_TRUE(isOwnThread);
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("listener for the background")));
}

TEST_F(Channel, AFloodGarbageAndAFailedAllocationAreSurvived) {
    static std::atomic<bool> isReached{false};
    Ostra::receiveKeyEvents();
    Ostra::registerAppBecomeBackgroundListener([] { isReached = true; });
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    platform::processSocketPath(runtimeDirectory(), getpid())
        .copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const auto sendRaw = [&](const std::string& bytes) {
        ASSERT_EQ(::send(descriptor, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    };
    faults::failingAllocations = 1;
    sendRaw("key 0 1");
    ASSERT_TRUE(waitUntil([] { return faults::failingAllocations == 0; }));
    std::mt19937 random(1);
    sendRaw("");
    sendRaw("key 24 1" + std::string(platform::MAX_MESSAGE_SIZE, ' '));
    for (int i = 0; i < 1000; ++i) {
        std::string bytes(random() % 100, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        sendRaw(bytes);
    }
    for (int i = 0; i < 100000; ++i) {
        sendRaw("key " + std::to_string(i) + " 1");
    }
    close(descriptor);
    send(getpid(), "background");
    ASSERT_TRUE(waitUntil([] { return isReached.load(); }));

    const std::vector<Ostra::KeyEvent> kept = Ostra::receiveKeyEvents();
    ASSERT_EQ(kept.size(), platform::ProcessChannel::MAX_PENDING);
    for (std::size_t i = 0; i < kept.size(); ++i) {
        ASSERT_EQ(kept[i].keyCode, static_cast<int>(i));
    }
    EXPECT_THAT(logged(ANDROID_LOG_WARN),
                ElementsAre(HasSubstr("out of memory"), HasSubstr("not understood"), HasSubstr("dropped")));
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
    for (const auto& [process, text] : {std::pair(child.id(), "key 1 1"),
                                        {getpid(), "key 10 1"},
                                        {child.id(), "key 2 1"},
                                        {getpid(), "key 20 1"}}) {
        send(process, text);
    }
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
        setenv("KORDANIX_RUNTIME_DIR", run.c_str(), 1);
        Ostra::receiveKeyEvents();
        const bool isHeldAtFirst = platform::isRunHeld(run);
        closefrom(STDERR_FILENO + 1);
        int own[8][2] = {};
        for (auto& pair : own) {
            socketpair(AF_UNIX, SOCK_DGRAM, 0, pair);
        }
        const bool isHeldAgain = waitUntil([&] { return platform::isRunHeld(run); });
        platform::ProcessMessage key;
        bool areKeysTaken = true;
        bool areOwnLeftAlone = true;
        for (int i = 1; i <= 25; ++i) {
            for (const auto& pair : own) {
                areOwnLeftAlone = ::send(pair[1], "own", 3, 0) == 3 && areOwnLeftAlone;
            }
            key.key = {i, 1};
            areKeysTaken = platform::sendMessage(run, getpid(), key).empty() && areKeysTaken &&
                           takeKeys(1) == std::vector<int>{i};
            for (const auto& pair : own) {
                char bytes[4] = {};
                areOwnLeftAlone = recv(pair[0], bytes, 4, MSG_DONTWAIT) == 3 && areOwnLeftAlone;
            }
        }
        // A forked child has them as well, and does not hold its parent's run.
        ChildProcess child([&own] {
            for (const auto& pair : own) {
                if (::send(pair[1], "own", 3, 0) != 3) {
                    return 1;
                }
            }
            return 0;
        });
        return isHeldAtFirst && isHeldAgain && areKeysTaken && areOwnLeftAlone && child.wait() == 0
                   ? 0
                   : 1 + isHeldAtFirst + 2 * isHeldAgain + 4 * areKeysTaken + 8 * areOwnLeftAlone;
    });
    EXPECT_EQ(program.wait(), 0);
    EXPECT_FALSE(platform::isRunHeld(run));
}
#endif

TEST_F(Channel, AThreadThatIsRefusedIsAskedForAgain) {
    if (doubles::isEmulated()) {
        GTEST_SKIP() << "QEMU starts threads whatever the limit";
    }
    ChildProcess program([] {
        const std::string path = platform::processSocketPath(runtimeDirectory(), getpid());
        {
            const NoThreads noThreads;
            Ostra::receiveKeyEvents();
            Ostra::receiveKeyEvents();
        }
        EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("no thread")));
        EXPECT_FALSE(fs::exists(path));
        EXPECT_TRUE(waitUntil([&path] {
            Ostra::receiveKeyEvents();
            return fs::exists(path);
        }));
        send(getpid(), "key 3 1");
        EXPECT_THAT(takeKeys(1), ElementsAre(3));
        return testing::Test::HasFailure() ? 1 : 0;
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
    std::ofstream(path).flush();
    ask();
    ChildProcess child([] { return platform::takePictureRequest() ? 1 : 0; });
    EXPECT_EQ(child.wait(), 0) << "a child does not answer for its parent";
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
