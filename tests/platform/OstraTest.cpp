#include "doubles/Emulator.h"
#include "doubles/FakeLog.h"
#include "ostra/PictureRequest.h"
#include "ostra/ProcessChannel.h"
#include "ostra/ProcessSocket.h"
#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostra/Ostra.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <limits>
#include <random>
#include <thread>

// A forked child opens a socket of its own, with a thread of its own.
extern "C" const char* __tsan_default_options() {
    return "die_after_fork=0";
}

namespace {

using platform::ProcessMessage;
using testing::ElementsAre;
using testing::HasSubstr;

namespace fs = std::filesystem;

/// The runtime directory, which the processes of the death tests share.
const std::string FOLDER = [] {
    if (std::getenv("OSTRA_TEST_FOLDER") == nullptr) {
        static const platform::TemporaryDirectory folder;
        setenv("OSTRA_TEST_FOLDER", folder.path().c_str(), 1);
        setenv("KORDANIX_RUNTIME_DIR", folder.path().c_str(), 1);
    }
    return std::string(std::getenv("OSTRA_TEST_FOLDER"));
}();

bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
}

std::vector<std::string> logged(int priority) {
    std::vector<std::string> texts;
    for (const doubles::LogLine& line : doubles::takeLog()) {
        if (line.priority >= priority) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

void send(pid_t process, const char* text) {
    const auto message = platform::decodeMessage(text);
    ASSERT_TRUE(message);
    ASSERT_EQ(platform::sendMessage(FOLDER, process, *message), "");
}

/// Waits for this many key codes.
std::vector<int> takeKeys(std::size_t count) {
    std::vector<int> codes;
    for (int i = 0; i < 10000 && codes.size() < count; ++i) {
        for (const Ostra::KeyEvent& event : Ostra::receiveKeyEvents()) {
            codes.push_back(event.keyCode);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return codes;
}

TEST(ProcessMessages, OnlyWhatIsWrittenTheRightWayIsRead) {
    for (const char* const text :
         {"background", "key 24 1", "key -2147483648 -1", "key 2147483647 0", "picture"}) {
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

TEST(Keys, ANoticeReachesEveryListenerOnAnotherThread) {
    static std::atomic<int> first{0};
    static std::atomic<int> second{0};
    static std::atomic<bool> isOwnThread{false};
    Ostra::receiveKeyEvents();
    Ostra::registerAppBecomeBackgroundListener(nullptr);
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
}

TEST(Keys, AFloodAndGarbageAreSurvived) {
    static std::atomic<bool> isReached{false};
    doubles::takeLog();
    Ostra::receiveKeyEvents();
    Ostra::registerAppBecomeBackgroundListener([] { isReached = true; });
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    platform::processSocketPath(FOLDER, getpid()).copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const auto sendRaw = [&](const std::string& bytes) {
        ASSERT_EQ(::send(descriptor, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    };
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
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("not understood"), HasSubstr("dropped")));
    send(getpid(), "key 7 0");
    EXPECT_THAT(takeKeys(1), ElementsAre(7)) << "and it goes on";
}

TEST(Keys, AForkedChildHasASocketOfItsOwn) {
    if (doubles::isEmulated()) {
        GTEST_SKIP() << "QEMU 7.2 ends the forked child of a process with threads when it starts a thread";
    }
    Ostra::receiveKeyEvents();
    const pid_t child = platform::startChild([] {
        const bool isRight = takeKeys(2) == std::vector<int>{1, 2};
        while (isRight) {
            pause();
        }
        return 1;
    });
    ASSERT_TRUE(waitUntil([] { return platform::listeningProcesses(FOLDER).size() == 2; }));
    for (const auto& [process, text] :
         {std::pair(child, "key 1 1"), {getpid(), "key 10 1"}, {child, "key 2 1"}, {getpid(), "key 20 1"}}) {
        send(process, text);
    }
    EXPECT_THAT(takeKeys(2), ElementsAre(10, 20));

    kill(child, SIGKILL);
    EXPECT_EQ(platform::waitForChild(child), -SIGKILL) << "the child's keys were wrong";
    const std::string left = platform::processSocketPath(FOLDER, child);
    EXPECT_TRUE(fs::exists(left));
    EXPECT_EQ(platform::listeningProcesses(FOLDER), std::vector<pid_t>{getpid()});
    EXPECT_FALSE(fs::exists(left)) << "what a killed process leaves is cleared away";
}

TEST(Pictures, AreTakenOnceAndOnlyWhileTheyAreWaitedFor) {
    const std::string path = platform::picturePath(FOLDER, getpid());
    const auto ask = [&](bool isAwaited) {
        if (isAwaited) {
            std::ofstream(path).put('\0');
        }
        send(getpid(), "picture");
        send(getpid(), "key 1 1");
        EXPECT_THAT(takeKeys(1), ElementsAre(1));
    };
    EXPECT_EQ(platform::takePictureRequest(), std::nullopt);
    Ostra::receiveKeyEvents();
    ask(false);
    EXPECT_EQ(platform::takePictureRequest(), std::nullopt);
    ask(true);
    const pid_t child = platform::startChild([] { return platform::takePictureRequest() ? 1 : 0; });
    EXPECT_EQ(platform::waitForChild(child), 0) << "a child does not answer for its parent";
    EXPECT_EQ(platform::takePictureRequest(), path);
    EXPECT_EQ(platform::takePictureRequest(), std::nullopt);
    fs::remove(path);
}

TEST(Clocks, AreLeftAloneAndThatIsSaidOnce) {
    doubles::takeLog();
    EXPECT_FALSE(Ostra::fixClock(1, 2) || Ostra::fixClock(1, 2));
    EXPECT_THAT(logged(ANDROID_LOG_INFO), ElementsAre(HasSubstr("not fixed")));
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::size_t countRows(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

const std::vector<Ostra::DumpWidgetMeta> METAS = {{android::String8("Fps"), 1, 1},
                                                  {android::String8("Freq, \"MHz\""), 0, 1},
                                                  {android::String8("Mem(Bytes)"), 2, 0}};

Ostra::FrameDump frame(std::uint64_t number, std::size_t passes = 0) {
    Ostra::FrameDump dump = {};
    dump.frameNumber = number;
    dump.timestampMs = 1700000000000;
    dump.values.resize(METAS.size());
    dump.renderPasses.resize(passes, {1, 2, 0.5});
    return dump;
}

void addFrames(std::uint64_t count, std::size_t passes = 0) {
    for (std::uint64_t i = 0; i < count; ++i) {
        Ostra::addDump(frame(i, passes));
    }
}

class Dump : public testing::Test {
protected:
    Dump() {
        useFolder(std::string("/") + testing::UnitTest::GetInstance()->current_test_info()->name());
        doubles::takeLog();
    }
    ~Dump() override { Ostra::finishDumping(); }

    void useFolder(const std::string& name) {
        mFolder = FOLDER + name;
        setenv("KORDANIX_DUMP_DIR", mFolder.c_str(), 1);
    }
    std::string frames() const { return readFile(mFolder + "/frames.csv"); }
    std::string passes() const { return readFile(mFolder + "/passes.csv"); }
    /// Makes a dump of which nothing can be written until somebody reads.
    void makeHangingFile() const {
        fs::create_directory(mFolder);
        fs::remove(mFolder + "/frames.csv");
        ASSERT_EQ(mkfifo((mFolder + "/frames.csv").c_str(), 0600), 0);
    }

    std::string mFolder;
};

TEST_F(Dump, HoldsTheNumbersOfEveryFrame) {
    useFolder("/made/too");
    Ostra::addDump(frame(1));
    Ostra::startDumping(METAS);
    Ostra::FrameDump dump = frame(18446744073709551615U);
    dump.values[0].floatValue = 59.94F;
    dump.values[1].intValue = 585;
    dump.values[2].intValue = 18446744073709551615U;
    dump.renderPassFrameId = -1;
    dump.frameDuration = 16.6F;
    dump.renderPasses = {{7, 8, 0.1}, {18446744073709551615U, 0, 1e-9}};
    Ostra::addDump(dump);
    dump = frame(2);
    dump.timestampMs = -5;
    dump.values[0].floatValue = std::numeric_limits<float>::infinity();
    dump.values.resize(2);
    Ostra::addDump(dump);
    dump = frame(3);
    dump.values[0].floatValue = 1e-40F;
    dump.values.resize(9);
    Ostra::addDump(dump);
    Ostra::finishDumping();
    Ostra::addDump(frame(4));
    EXPECT_EQ(
        frames(),
        "FrameNumber,TimestampMs,Fps,\"Freq, \"\"MHz\"\"\",Mem(Bytes),RenderPassFrameId,FrameDuration\r\n"
        "18446744073709551615,1700000000000,59.94,585,18446744073709551615,-1,16.6\r\n"
        "2,-5,inf,0,,0,0\r\n"
        "3,1700000000000,1e-40,0,0,0,0\r\n");
    EXPECT_EQ(passes(),
              "FrameNumber,RenderPassFrameId,Pass,FirstValue,SecondValue,Duration\r\n"
              "18446744073709551615,-1,0,7,8,0.1\r\n"
              "18446744073709551615,-1,1,18446744073709551615,0,1e-09\r\n");
    EXPECT_THAT(logged(ANDROID_LOG_WARN), testing::IsEmpty());
}

TEST_F(Dump, IsFlushedWhileItRunsAndFinishedByTheNextStart) {
    Ostra::startDumping(METAS);
    addFrames(1, 3);
    EXPECT_TRUE(waitUntil([&] { return countRows(frames()) == 2 && countRows(passes()) == 4; }));
    addFrames(1);
    const std::string first = mFolder;
    useFolder("/second");
    Ostra::startDumping({});
    addFrames(1);
    Ostra::finishDumping();
    EXPECT_EQ(countRows(readFile(first + "/frames.csv")), 3U);
    EXPECT_EQ(frames(), "FrameNumber,TimestampMs,RenderPassFrameId,FrameDuration\r\n0,1700000000000,0,0\r\n");
    Ostra::startDumping(METAS);
    Ostra::finishDumping();
    EXPECT_EQ(countRows(frames()), 1U) << "an earlier dump is replaced";
}

TEST_F(Dump, EndsWithOneErrorWhenTheDiskFails) {
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const struct {
        const char* folder;
        std::function<void()> spoil;
        const char* error;
    } cases[] = {
        {"/full", [&] { fs::create_symlink("/dev/full", mFolder + "/frames.csv"); }, "No space left"},
        {"/passes", [&] { fs::create_directory(mFolder + "/passes.csv"); }, "passes.csv: Is a directory"},
        {"/full/frames.csv", [] {}, "Not a directory"},
        {"/limit",
         [&] {
             const rlimit small = {4096, limit.rlim_max};
             setrlimit(RLIMIT_FSIZE, &small);
         },
         "frames.csv: File too large"},
    };
    for (const auto& spoilt : cases) {
        SCOPED_TRACE(spoilt.folder);
        useFolder(spoilt.folder);
        std::error_code ignored;
        fs::create_directory(mFolder, ignored);
        spoilt.spoil();
        Ostra::startDumping(METAS);
        addFrames(3000);
        Ostra::finishDumping();
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_THAT(logged(ANDROID_LOG_ERROR),
                    ElementsAre(testing::AllOf(HasSubstr(mFolder), HasSubstr(spoilt.error))));
    }
    Ostra::startDumping(METAS);
    addFrames(1);
    Ostra::finishDumping();
    EXPECT_EQ(countRows(frames()), 2U) << "the next one is not affected";
}

TEST_F(Dump, DropsFramesThatTheDiskIsTooSlowFor) {
    const auto finish = [this] {
        auto content = std::async(std::launch::async, [this] { return frames(); });
        Ostra::finishDumping();
        return content.get();
    };
    makeHangingFile();
    Ostra::startDumping(METAS);
    addFrames(3000, 1);  // would never return if it waited: nobody reads yet
    const std::string text = finish();
    EXPECT_EQ(countRows(text), 1U + 1024U);
    EXPECT_THAT(text, HasSubstr("\r\n1023,1700000000000,"));
    EXPECT_EQ(countRows(passes()), 1U + 1024U);
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("1976 frames")));

    // The passes of all waiting frames are bounded too, and a frame that does not fit leaves no trace.
    makeHangingFile();
    Ostra::startDumping(METAS);
    for (const std::size_t count : {16000U, 500U, 384U}) {
        Ostra::addDump(frame(1, count));
    }
    EXPECT_EQ(countRows(finish()), 3U);
    EXPECT_EQ(countRows(passes()), 1U + 16384U);
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("1 frames")));
}

class ExitDeathTest : public Dump {
protected:
    ExitDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    /// A process that ends while its dump runs.
    static void dumpAndExit() {
        Ostra::receiveKeyEvents();
        Ostra::startDumping(METAS);
        addFrames(900, 2);
        std::exit(fs::exists(platform::processSocketPath(FOLDER, getpid())) ? 0 : 1);
    }
};

TEST_F(ExitDeathTest, WritesWhatWasHandedOverAndRemovesTheSocket) {
    EXPECT_EXIT(dumpAndExit(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(countRows(frames()), 901U);
    EXPECT_EQ(countRows(passes()), 1801U);
    for (const auto& entry : fs::directory_iterator(FOLDER)) {
        EXPECT_TRUE(entry.path().extension() != ".sock" ||
                    entry.path() == platform::processSocketPath(FOLDER, getpid()));
    }
}

TEST_F(ExitDeathTest, IsNotHeldUpByADiskThatHangs) {
    makeHangingFile();
    EXPECT_EXIT(dumpAndExit(), testing::ExitedWithCode(0), "");
}

}  // namespace
