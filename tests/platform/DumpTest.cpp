#include "doubles/Emulator.h"
#include "ostra/DumpNotice.h"
#include "ostra/DumpPlan.h"
#include "ostra/ProcessSocket.h"
#include "platform/OstraFaults.h"
#include "platform/OstraTesting.h"
#include "support/ChildProcess.h"

#include <android/log.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostra/ExtraColumns.h>
#include <ostra/Ostra.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>

namespace ostra {
namespace {

using platform::DumpNotice;
using support::ChildProcess;
using support::waitUntil;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace fs = std::filesystem;

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

DumpNotice notice(pid_t process = getpid()) {
    return platform::readDumpNotice(runtimeDirectory(), process).value_or(DumpNotice());
}

/// Waits until the latest dump of the process has ended.
DumpNotice ended() {
    waitUntil([] { return notice().state != DumpNotice::State::RUNNING; });
    return notice();
}

class Dump : public testing::Test {
protected:
    Dump() {
        runtimeDirectory();
        useFolder("made/too");
        doubles::takeLog();
    }
    ~Dump() override {
        faults::writeFault = 0;
        Ostra::finishDumping();
    }

    void useFolder(const std::string& name) {
        mBase = mHome.path(name);
        setenv("KORDANIX_DUMP_DIR", mBase.c_str(), 1);
    }

    const platform::TemporaryDirectory mHome;
    std::string mBase;
};

TEST_F(Dump, HoldsTheNumbersOfEveryFrame) {
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
    const DumpNotice told = ended();
    EXPECT_EQ(told.state, DumpNotice::State::DONE) << told.error;
    EXPECT_EQ(told.frames, 3U);
    EXPECT_THAT(told.folder, testing::MatchesRegex(mBase + "/ostra_tests-[0-9]{8}-[0-9]{6}-1"));
    EXPECT_THAT(logged(ANDROID_LOG_INFO), ElementsAre(HasSubstr(told.folder)));
    EXPECT_EQ(
        readFile(told.folder + "/frames.csv"),
        "FrameNumber,TimestampMs,Fps,\"Freq, \"\"MHz\"\"\",Mem(Bytes),RenderPassFrameId,FrameDuration\r\n"
        "18446744073709551615,1700000000000,59.94,585,18446744073709551615,-1,16.6\r\n"
        "2,-5,inf,0,,0,0\r\n"
        "3,1700000000000,1e-40,0,0,0,0\r\n");
    EXPECT_EQ(readFile(told.folder + "/passes.csv"),
              "FrameNumber,RenderPassFrameId,Pass,FirstValue,SecondValue,Duration\r\n"
              "18446744073709551615,-1,0,7,8,0.1\r\n"
              "18446744073709551615,-1,1,18446744073709551615,0,1e-09\r\n");
}

TEST_F(Dump, HasExtraColumnsBesideTheLibrarys) {
    Ostra::setExtraColumns({"Power(W)", "Fan(rpm)"});
    Ostra::startDumping({});
    addFrames(1);
    const double values[] = {12.25, std::numeric_limits<double>::quiet_NaN(), 7.0};
    Ostra::setExtraValues(values, std::size(values));
    addFrames(1);
    Ostra::setExtraColumns({});
    Ostra::finishDumping();
    EXPECT_EQ(readFile(ended().folder + "/frames.csv"),
              "FrameNumber,TimestampMs,RenderPassFrameId,FrameDuration,Power(W),Fan(rpm)\r\n"
              "0,1700000000000,0,0,,\r\n"
              "0,1700000000000,0,0,12.25,\r\n");
}

TEST_F(Dump, IsFlushedWhileItRunsAndReplacedByNoOther) {
    const std::uint32_t before = notice().number;
    Ostra::startDumping(METAS);
    addFrames(1, 3);
    EXPECT_TRUE(waitUntil([before] { return notice().number == before + 1; }));
    const DumpNotice first = notice();
    EXPECT_EQ(first.state, DumpNotice::State::RUNNING);
    EXPECT_TRUE(waitUntil([&] {
        return countRows(readFile(first.folder + "/frames.csv")) == 2 &&
               countRows(readFile(first.folder + "/passes.csv")) == 4;
    }));
    addFrames(1);
    Ostra::startDumping({});
    addFrames(1);
    Ostra::finishDumping();
    const DumpNotice second = ended();
    EXPECT_EQ(second.number, first.number + 1);
    EXPECT_NE(second.folder, first.folder);
    EXPECT_EQ(countRows(readFile(first.folder + "/frames.csv")), 3U);
    EXPECT_EQ(readFile(second.folder + "/frames.csv"),
              "FrameNumber,TimestampMs,RenderPassFrameId,FrameDuration\r\n0,1700000000000,0,0\r\n");
}

TEST_F(Dump, EndsWithOneErrorWhenItCannotBeWritten) {
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    std::ofstream(mHome.path("file")).flush();
    const struct {
        const char* folder;
        std::function<void()> spoil;
        const char* error;
    } cases[] = {
        {"file", [] {}, "Not a directory"},
        {"/proc", [] {}, "/proc"},
        {"full", [] { faults::writeFault = ENOSPC; }, "No space left"},
        {"memory", [] { faults::failingAllocations = 1; }, "out of memory"},
        {"limit",
         [&] {
             const rlimit small = {4096, limit.rlim_max};
             setrlimit(RLIMIT_FSIZE, &small);
         },
         "frames.csv: File too large"},
    };
    for (const auto& spoilt : cases) {
        SCOPED_TRACE(spoilt.folder);
        useFolder(spoilt.folder);
        if (*spoilt.folder == '/') {
            setenv("KORDANIX_DUMP_DIR", spoilt.folder, 1);
        }
        spoilt.spoil();
        Ostra::startDumping(METAS);
        addFrames(3000);
        Ostra::finishDumping();
        setrlimit(RLIMIT_FSIZE, &limit);
        faults::writeFault = 0;
        EXPECT_THAT(logged(ANDROID_LOG_ERROR), ElementsAre(HasSubstr(spoilt.error)));
    }
    const DumpNotice failed = ended();
    EXPECT_EQ(failed.state, DumpNotice::State::FAILED);
    EXPECT_THAT(failed.error, HasSubstr("File too large"));
    // QEMU starts threads whatever the limit.
    if (!doubles::isEmulated()) {
        {
            const NoThreads noThreads;
            Ostra::startDumping(METAS);
        }
        EXPECT_EQ(notice().number, failed.number + 1);
        EXPECT_THAT(notice().error, HasSubstr("no thread"));
    }
    Ostra::startDumping(METAS);
    addFrames(1);
    Ostra::finishDumping();
    EXPECT_EQ(ended().frames, 1U) << "the next one is not affected";
}

TEST_F(Dump, ThatHangsIsLeftToItsThread) {
    faults::writeFault = faults::HANGS;
    Ostra::startDumping(METAS);
    addFrames(3000, 1);
    Ostra::finishDumping();
    doubles::takeLog();
    Ostra::startDumping(METAS);
    EXPECT_THAT(logged(ANDROID_LOG_ERROR), ElementsAre(HasSubstr("waits for its disk")));
    faults::writeFault = 0;
    EXPECT_TRUE(waitUntil([] { return notice().state == DumpNotice::State::DONE; }));
    EXPECT_EQ(notice().frames, 1024U) << "what does not fit is left out, the newest first";
    EXPECT_THAT(logged(ANDROID_LOG_WARN), ElementsAre(HasSubstr("1976 frames")));

    // The passes of all waiting frames are bounded too, and a frame that does not fit leaves no trace.
    faults::writeFault = faults::HANGS;
    Ostra::startDumping(METAS);
    for (const std::size_t count : {16000U, 500U, 384U}) {
        Ostra::addDump(frame(1, count));
    }
    faults::writeFault = 0;
    Ostra::finishDumping();
    EXPECT_EQ(ended().frames, 2U);
    EXPECT_EQ(countRows(readFile(notice().folder + "/passes.csv")), 1U + 16384U);
}

// A program that closes what it does not know, and has a file of its own under one of our numbers.
TEST_F(Dump, DescriptorsThatTheProgramTookAreItsOwn) {
    const std::string save = mHome.path("save.game");
    ChildProcess program([&] {
        Ostra::startDumping(METAS);
        addFrames(1);
        waitUntil([] { return !notice().folder.empty(); });
        closefrom(STDERR_FILENO + 1);
        for (int i = 0; i < 8; ++i) {
            open(save.c_str(), O_WRONLY | O_CREAT, 0600);
        }
        addFrames(100, 1);
        Ostra::finishDumping();
        addFrames(1);
        const bool areOwnOpen =
            fcntl(STDERR_FILENO + 1, F_GETFD) >= 0 && fcntl(STDERR_FILENO + 8, F_GETFD) >= 0;
        return areOwnOpen && ended().state == DumpNotice::State::DONE ? 0 : 1;
    });
    EXPECT_EQ(program.wait(), 0);
    const DumpNotice told = notice(program.id());
    EXPECT_EQ(countRows(readFile(told.folder + "/frames.csv")), 102U);
    EXPECT_EQ(countRows(readFile(told.folder + "/passes.csv")), 101U);
    EXPECT_EQ(fs::file_size(save), 0U);
}

TEST_F(Dump, TakesNoFolderThatIsThere) {
    fs::create_directories(mHome.path("victim"));
    fs::create_symlink("victim", mHome.path("name-1"));
    fs::create_symlink("nowhere", mHome.path("name-2"));
    ASSERT_EQ(mkfifo(mHome.path("name-3").c_str(), 0600), 0);
    platform::DumpPlan plan;
    plan.base = mHome.path();
    plan.name = "name-";
    std::string error;
    EXPECT_EQ(platform::makeDumpFolder(plan, error), mHome.path("name-4")) << error;
}

TEST(DumpNotices, AreReadAsTheyWereWritten) {
    const platform::TemporaryDirectory directory;
    DumpNotice written;
    written.number = 4294967295U;
    written.state = DumpNotice::State::FAILED;
    written.frames = 18446744073709551615U;
    written.folder = "/a folder\nof two lines";
    written.error = "a b: No space\nleft";
    platform::writeDumpNotice(directory.path(), written);
    const DumpNotice read = platform::readDumpNotice(directory.path(), getpid()).value_or(DumpNotice());
    EXPECT_EQ(read.number, written.number);
    EXPECT_EQ(read.state, written.state);
    EXPECT_EQ(read.frames, written.frames);
    EXPECT_EQ(read.folder, written.folder);
    EXPECT_EQ(read.error, "a b: No space left");
    for (const char* const text :
         {"", "1", "1 gone 2 \n/a", "1 done 2 ", "x done 2 \n/a", "1 done -x \n/a"}) {
        std::ofstream(directory.path("dump.7")) << text;
        EXPECT_FALSE(platform::readDumpNotice(directory.path(), 7)) << text;
    }
}

TEST_F(Dump, OfAProcessThatExits) {
    for (const int fault : {0, faults::HANGS}) {
        SCOPED_TRACE(fault);
        useFolder(fault == 0 ? "written" : "hanging");
        ChildProcess program([fault] {
            faults::writeFault = fault;
            Ostra::receiveKeyEvents();
            Ostra::startDumping(METAS);
            addFrames(900, 2);
            std::exit(fs::exists(platform::processSocketPath(runtimeDirectory(), getpid())) ? 0 : 1);
            return 1;
        });
        EXPECT_EQ(program.wait(), 0);
        EXPECT_FALSE(fs::exists(platform::processSocketPath(runtimeDirectory(), program.id())));
        EXPECT_FALSE(platform::readDumpNotice(runtimeDirectory(), program.id()));
    }
    const std::string folder = fs::directory_iterator(mHome.path("written"))->path();
    EXPECT_EQ(countRows(readFile(folder + "/frames.csv")), 901U);
    EXPECT_EQ(countRows(readFile(folder + "/passes.csv")), 1801U);
}

}  // namespace
}  // namespace ostra
