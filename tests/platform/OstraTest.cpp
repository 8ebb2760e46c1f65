#include "doubles/Emulator.h"
#include "doubles/FakeLog.h"
#include "ostra/KeyChannel.h"
#include "ostra/ProcessSocket.h"

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostra/Ostra.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <limits>
#include <random>
#include <sstream>
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

/// A folder for the whole run, which the processes that a test starts share.
class TestFolder : public testing::Environment {
public:
    TestFolder() {
        if (std::getenv("OSTRA_TEST_FOLDER") == nullptr) {
            std::string name = (fs::temp_directory_path() / "ostra-test-XXXXXX").string();
            mOwned = mkdtemp(name.data());
            setenv("OSTRA_TEST_FOLDER", mOwned.c_str(), 1);
            setenv("KORDANIX_RUNTIME_DIR", runtime().c_str(), 1);
            fs::create_directory(runtime());
            fs::permissions(runtime(), fs::perms::owner_all);
        }
    }
    ~TestFolder() override {
        if (!mOwned.empty()) {
            fs::remove_all(mOwned);
        }
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    static std::string path() { return std::getenv("OSTRA_TEST_FOLDER"); }
    static std::string runtime() { return path() + "/run"; }

private:
    std::string mOwned;
};

testing::Environment* const folder = testing::AddGlobalTestEnvironment(new TestFolder);

bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
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

ProcessMessage key(int code, int action) {
    ProcessMessage message;
    message.key = {code, action};
    return message;
}

ProcessMessage background() {
    ProcessMessage message;
    message.kind = ProcessMessage::Kind::BACKGROUND;
    return message;
}

std::string send(pid_t process, const ProcessMessage& message) {
    return platform::sendMessage(TestFolder::runtime(), process, message);
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
    for (const Ostra::KeyEvent& event :
         {Ostra::KeyEvent{24, 1}, Ostra::KeyEvent{std::numeric_limits<int>::min(), -1},
          Ostra::KeyEvent{std::numeric_limits<int>::max(), 0}}) {
        const auto read =
            platform::decodeMessage(platform::encodeMessage({ProcessMessage::Kind::KEY, event}));
        ASSERT_TRUE(read);
        EXPECT_EQ(read->key.keyCode, event.keyCode);
        EXPECT_EQ(read->key.action, event.action);
    }
    EXPECT_EQ(platform::decodeMessage("background")->kind, ProcessMessage::Kind::BACKGROUND);
    for (const char* const text :
         {"", "key", "key ", "key 24", "key 24 ", "key 24 1 ", "key 24 1\n", "key  24 1", "key 24 2147483648",
          "key 24 1x", "Key 24 1", "key +24 1", "background ", "backgroun", "key 0x18 1"}) {
        EXPECT_FALSE(platform::decodeMessage(text)) << '"' << text << '"';
    }
    EXPECT_FALSE(platform::decodeMessage(std::string_view("key 24 1\0", 9)));
}

class Keys : public testing::Test {
protected:
    void SetUp() override { Ostra::receiveKeyEvents(); }
    void TearDown() override {
        Ostra::receiveKeyEvents();
        doubles::takeLog();
    }
};

TEST_F(Keys, ArriveInOrder) {
    EXPECT_EQ(platform::listeningProcesses(TestFolder::runtime()), std::vector<pid_t>{getpid()});
    std::vector<int> sent;
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(send(getpid(), key(i, 1)), "");
        sent.push_back(i);
    }
    EXPECT_EQ(takeKeys(sent.size()), sent);
    EXPECT_TRUE(Ostra::receiveKeyEvents().empty());
    EXPECT_THAT(send(1, key(24, 1)), HasSubstr("does not listen"));
}

TEST_F(Keys, ANoticeReachesEveryListenerOnAnotherThread) {
    static std::atomic<int> first;
    static std::atomic<int> second;
    static std::atomic<bool> isOwnThread;
    first = second = 0;
    const auto caller = std::this_thread::get_id();
    Ostra::registerAppBecomeBackgroundListener(nullptr);
    Ostra::registerAppBecomeBackgroundListener([caller] {
        isOwnThread = std::this_thread::get_id() != caller;
        if (++first == 1) {
            Ostra::registerAppBecomeBackgroundListener([] { ++second; });
        }
    });
    ASSERT_EQ(send(getpid(), background()), "");
    ASSERT_EQ(send(getpid(), background()), "");
    EXPECT_TRUE(waitUntil([] { return first == 2 && second == 2; })) << first << ' ' << second;
    EXPECT_TRUE(isOwnThread);
}

TEST_F(Keys, AFloodAndGarbageAreSurvived) {
    static std::atomic<bool> isReached;
    isReached = false;
    Ostra::registerAppBecomeBackgroundListener([] { isReached = true; });

    const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    platform::processSocketPath(TestFolder::runtime(), getpid())
        .copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const auto sendRaw = [&](const std::string& bytes) {
        ASSERT_EQ(::send(descriptor, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    };
    std::mt19937 random(1);
    sendRaw("");
    sendRaw(std::string(60000, 'x'));
    sendRaw("key 24 1" + std::string(platform::MAX_MESSAGE_SIZE, ' '));
    for (int i = 0; i < 1000; ++i) {
        std::string bytes(random() % 100, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        sendRaw(bytes);
    }
    for (int i = 0; i < 100000; ++i) {
        sendRaw("key " + std::to_string(i) + " 1");
    }
    close(descriptor);
    ASSERT_EQ(send(getpid(), background()), "");
    ASSERT_TRUE(waitUntil([] { return isReached.load(); }));

    const std::vector<Ostra::KeyEvent> kept = Ostra::receiveKeyEvents();
    ASSERT_EQ(kept.size(), platform::KeyChannel::MAX_PENDING);
    for (std::size_t i = 0; i < kept.size(); ++i) {
        ASSERT_EQ(kept[i].keyCode, static_cast<int>(i));
    }
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("not understood"), HasSubstr("dropped")));
    ASSERT_EQ(send(getpid(), key(7, 0)), "");
    EXPECT_THAT(takeKeys(1), ElementsAre(7)) << "and it goes on";
}

TEST_F(Keys, AForkedChildHasASocketOfItsOwn) {
    if (doubles::isEmulated()) {
        GTEST_SKIP() << "QEMU 7.2 ends the forked child of a process with threads when it starts a thread";
    }
    const pid_t child = fork();
    if (child == 0) {
        const bool isRight = takeKeys(2) == std::vector<int>{1, 2};
        while (isRight) {
            pause();
        }
        _exit(1);
    }
    ASSERT_TRUE(waitUntil([] { return platform::listeningProcesses(TestFolder::runtime()).size() == 2; }));
    EXPECT_EQ(send(child, key(1, 1)), "");
    EXPECT_EQ(send(getpid(), key(10, 1)), "");
    EXPECT_EQ(send(child, key(2, 1)), "");
    EXPECT_EQ(send(getpid(), key(20, 1)), "");
    EXPECT_THAT(takeKeys(2), ElementsAre(10, 20));

    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status)) << "the child's keys were wrong";
    const std::string left = platform::processSocketPath(TestFolder::runtime(), child);
    EXPECT_TRUE(fs::exists(left));
    EXPECT_EQ(platform::listeningProcesses(TestFolder::runtime()), std::vector<pid_t>{getpid()});
    EXPECT_FALSE(fs::exists(left)) << "what a killed process leaves is cleared away";
}

TEST(Clocks, AreLeftAloneAndThatIsSaidOnce) {
    doubles::takeLog();
    EXPECT_FALSE(Ostra::fixClock(1, 2));
    EXPECT_FALSE(Ostra::fixClock(1, 2));
    Ostra::unfixClock();
    EXPECT_THAT(logged(ANDROID_LOG_INFO), ElementsAre(HasSubstr("not fixed")));
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::size_t countRows(const std::string& text) {
    std::size_t rows = 0;
    for (std::size_t i = text.find("\r\n"); i != std::string::npos; i = text.find("\r\n", i + 2)) {
        ++rows;
    }
    return rows;
}

const std::vector<Ostra::DumpWidgetMeta> METAS = {
    {"Fps", 1, 1}, {"Freq, \"MHz\"", 0, 1}, {"Mem(Bytes)", 2, 0}};

Ostra::FrameDump frame(std::uint64_t number, std::size_t passes = 0) {
    Ostra::FrameDump dump = {};
    dump.frameNumber = number;
    dump.timestampMs = 1700000000000;
    dump.values.resize(METAS.size());
    dump.renderPasses.resize(passes, {1, 2, 0.5});
    return dump;
}

class Dump : public testing::Test {
protected:
    Dump() {
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        mFolder = TestFolder::path() + '/' + name;
        setenv("KORDANIX_DUMP_DIR", mFolder.c_str(), 1);
        doubles::takeLog();
    }
    ~Dump() override { Ostra::finishDumping(); }

    std::string frames() const { return readFile(mFolder + "/frames.csv"); }
    std::string passes() const { return readFile(mFolder + "/passes.csv"); }

    std::string mFolder;
};

TEST_F(Dump, HoldsTheNumbersOfEveryFrame) {
    mFolder += "/made/too";
    setenv("KORDANIX_DUMP_DIR", mFolder.c_str(), 1);
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
    Ostra::finishDumping();
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
    Ostra::addDump(frame(1, 3));
    EXPECT_TRUE(waitUntil([&] { return countRows(frames()) == 2 && countRows(passes()) == 4; }));
    Ostra::addDump(frame(2));
    const std::string first = mFolder;
    mFolder += "2";
    setenv("KORDANIX_DUMP_DIR", mFolder.c_str(), 1);
    Ostra::startDumping({});
    EXPECT_EQ(countRows(readFile(first + "/frames.csv")), 3U);
    Ostra::addDump(frame(3));
    Ostra::finishDumping();
    EXPECT_EQ(countRows(readFile(first + "/frames.csv")), 3U);
    EXPECT_EQ(frames(), "FrameNumber,TimestampMs,RenderPassFrameId,FrameDuration\r\n3,1700000000000,0,0\r\n");
    setenv("KORDANIX_DUMP_DIR", first.c_str(), 1);
    Ostra::startDumping(METAS);
    Ostra::finishDumping();
    EXPECT_EQ(countRows(readFile(first + "/frames.csv")), 1U) << "an earlier dump is replaced";
}

TEST_F(Dump, EndsWithOneErrorWhenTheDiskFails) {
    const struct {
        const char* name;
        std::function<void()> spoil;
        const char* error;
    } cases[] = {
        {"full", [&] { fs::create_symlink("/dev/full", mFolder + "/frames.csv"); }, "No space left"},
        {"passes", [&] { fs::create_directory(mFolder + "/passes.csv"); }, "passes.csv: Is a directory"},
        {"folder",
         [&] {
             fs::remove(mFolder);
             std::ofstream(mFolder) << "a file";
         },
         "Not a directory"},
    };
    const std::string base = mFolder;
    for (const auto& spoilt : cases) {
        SCOPED_TRACE(spoilt.name);
        mFolder = base + spoilt.name;
        fs::create_directories(mFolder);
        spoilt.spoil();
        setenv("KORDANIX_DUMP_DIR", mFolder.c_str(), 1);
        Ostra::startDumping(METAS);
        for (std::uint64_t i = 0; i < 3000; ++i) {
            Ostra::addDump(frame(i, 2));
        }
        Ostra::finishDumping();
        const std::vector<std::string> errors = logged(ANDROID_LOG_ERROR);
        ASSERT_EQ(errors.size(), 1U);
        EXPECT_THAT(errors[0], testing::AllOf(HasSubstr(mFolder), HasSubstr(spoilt.error)));
    }
    mFolder = base;
    setenv("KORDANIX_DUMP_DIR", mFolder.c_str(), 1);
    Ostra::startDumping(METAS);
    Ostra::addDump(frame(1));
    Ostra::finishDumping();
    EXPECT_EQ(countRows(frames()), 2U) << "the next one is not affected";
}

TEST_F(Dump, DropsFramesThatTheDiskIsTooSlowFor) {
    fs::create_directory(mFolder);
    ASSERT_EQ(mkfifo((mFolder + "/frames.csv").c_str(), 0600), 0);
    Ostra::startDumping(METAS);
    for (std::uint64_t i = 0; i < 3000; ++i) {
        Ostra::addDump(frame(i, 1));  // would never return if it waited: nobody reads yet
    }
    auto content = std::async(std::launch::async, [this] { return frames(); });
    Ostra::finishDumping();
    const std::string text = content.get();
    EXPECT_EQ(countRows(text), 1U + 1024U);
    EXPECT_THAT(text, HasSubstr("\r\n1023,1700000000000,"));
    EXPECT_EQ(countRows(passes()), 1U + 1024U);
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("1976 frames")));

    // The passes of all waiting frames are bounded too, and a frame that does not fit leaves no trace.
    fs::remove(mFolder + "/frames.csv");
    ASSERT_EQ(mkfifo((mFolder + "/frames.csv").c_str(), 0600), 0);
    Ostra::startDumping(METAS);
    Ostra::addDump(frame(1, 16000));
    Ostra::addDump(frame(2, 500));
    Ostra::addDump(frame(3, 384));
    content = std::async(std::launch::async, [this] { return frames(); });
    Ostra::finishDumping();
    EXPECT_EQ(countRows(content.get()), 3U);
    EXPECT_EQ(countRows(passes()), 1U + 16384U);
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("1 frames")));
}

TEST_F(Dump, IsWholeWhenThreadsStartFinishAndAdd) {
    std::atomic<bool> isDone{false};
    std::thread adder([&] {
        for (std::size_t i = 0; !isDone; ++i) {
            Ostra::addDump(frame(i, i % 3));
        }
    });
    std::thread finisher([&] {
        while (!isDone) {
            Ostra::finishDumping();
        }
    });
    for (int i = 0; i < 50; ++i) {
        Ostra::startDumping(METAS);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    isDone = true;
    finisher.join();
    adder.join();
    Ostra::finishDumping();
    std::istringstream rows(frames());
    std::string row;
    std::getline(rows, row);
    for (std::uint64_t last = 0; std::getline(rows, row);) {
        ASSERT_EQ(std::count(row.begin(), row.end(), ','), 6);
        ASSERT_EQ(row.back(), '\r');
        ASSERT_GT(std::stoull(row) + 1, last);
        last = std::stoull(row) + 1;
    }
    EXPECT_THAT(logged(ANDROID_LOG_ERROR), testing::IsEmpty());
}

class ExitDeathTest : public Dump {
protected:
    ExitDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ExitDeathTest, WritesWhatWasHandedOverAndRemovesTheSocket) {
    const auto dumpAndExit = [] {
        Ostra::receiveKeyEvents();
        Ostra::startDumping(METAS);
        for (std::uint64_t i = 0; i < 900; ++i) {
            Ostra::addDump(frame(i, 2));
        }
        std::exit(fs::exists(platform::processSocketPath(TestFolder::runtime(), getpid())) ? 0 : 1);
    };
    EXPECT_EXIT(dumpAndExit(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(countRows(frames()), 901U);
    EXPECT_EQ(countRows(passes()), 1801U);
    for (const auto& entry : fs::directory_iterator(TestFolder::runtime())) {
        EXPECT_THAT(entry.path().filename().string(), testing::AnyOf(testing::Not(testing::EndsWith(".sock")),
                                                                     HasSubstr(std::to_string(getpid()))));
    }
}

TEST_F(ExitDeathTest, IsNotHeldUpByADiskThatHangs) {
    fs::create_directories(mFolder);
    mkfifo((mFolder + "/frames.csv").c_str(), 0600);
    const auto dumpAndExit = [] {
        Ostra::startDumping(METAS);
        Ostra::addDump(frame(1));
        std::exit(0);
    };
    EXPECT_EXIT(dumpAndExit(), testing::ExitedWithCode(0), "");
}

TEST_F(ExitDeathTest, AFileSizeLimitEndsTheDumpAlone) {
    const auto dumpBeyondTheLimit = [] {
        const rlimit limit = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        Ostra::startDumping(METAS);
        for (std::uint64_t i = 0; i < 1000; ++i) {
            Ostra::addDump(frame(i));
        }
        Ostra::finishDumping();
        const std::vector<std::string> errors = logged(ANDROID_LOG_ERROR);
        _exit(errors.size() == 1 && errors[0].find("frames.csv: File too large") != std::string::npos ? 0
                                                                                                      : 1);
    };
    EXPECT_EXIT(dumpBeyondTheLimit(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(frames().size(), 4096U);
}

}  // namespace
