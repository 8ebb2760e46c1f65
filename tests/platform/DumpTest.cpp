#include "doubles/FakeThreads.h"
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
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <limits>
#include <tuple>

namespace ostra {
namespace {

using platform::DumpNotice;
using support::ChildProcess;
using support::readFile;
using support::waitUntil;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace fs = std::filesystem;

std::ptrdiff_t rows(const std::string& path) {
    const std::string text = readFile(path);
    return std::count(text.begin(), text.end(), '\n');
}

const std::vector<Ostra::DumpWidgetMeta> METAS = {{android::String8("Fps"), 1, 1},
                                                  {android::String8("Freq, \"MHz\""), 0, 1},
                                                  {android::String8("Mem(Bytes)"), 2, 0}};

void addFrames(int count, std::size_t passes = 0) {
    Ostra::FrameDump dump = {1, 1700000000000, 0, 0, 0, {{}, {}, {}}, {}};
    dump.renderPasses.resize(passes, {1, 2, 0.5});
    for (int i = 0; i < count; ++i) {
        Ostra::addDump(dump);
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
        setenv("KORDANIX_DUMP_DIR", name[0] == '/' ? name.c_str() : mHome.path(name).c_str(), 1);
    }

    const support::TemporaryDirectory mHome;
};

TEST_F(Dump, HoldsTheNumbersOfEveryFrameAndExtraColumns) {
    addFrames(1);
    Ostra::setExtraColumns({"Power(W)", "Fan(rpm)"});
    Ostra::startDumping(METAS);
    Ostra::DumpValue fps = {};
    fps.floatValue = 59.94F;
    Ostra::addDump({UINT64_MAX,
                    1700000000000,
                    -1,
                    16.6F,
                    0,
                    {fps, {585}, {UINT64_MAX}},
                    {{7, 8, 0.1}, {UINT64_MAX, 0, 1e-9}}});
    const double extra[] = {12.25, std::numeric_limits<double>::quiet_NaN(), 7.0};
    Ostra::setExtraValues(extra, std::size(extra));
    fps.floatValue = std::numeric_limits<float>::infinity();
    Ostra::addDump({2, -5, 0, 0, 0, {fps, {}}, {}});
    fps.floatValue = 1e-40F;
    Ostra::addDump({3, 0, 0, 0, 0, {fps, {}, {}, {}, {}}, {}});
    Ostra::setExtraColumns({});
    Ostra::finishDumping();
    addFrames(1);
    const DumpNotice told = ended();
    EXPECT_EQ(told.state, DumpNotice::State::DONE) << told.error;
    EXPECT_EQ(told.frames, 3U);
    EXPECT_THAT(told.folder, MatchesRegex(mHome.path("made/too/ostra_tests-[0-9]{8}-[0-9]{6}-1")));
    EXPECT_THAT(logged(ANDROID_LOG_INFO), ElementsAre(HasSubstr(told.folder)));
    EXPECT_EQ(readFile(told.folder + "/frames.csv"),
              "FrameNumber,TimestampMs,Fps,\"Freq, \"\"MHz\"\"\",Mem(Bytes),RenderPassFrameId,FrameDuration,"
              "Power(W),Fan(rpm)\r\n"
              "18446744073709551615,1700000000000,59.94,585,18446744073709551615,-1,16.6,,\r\n"
              "2,-5,inf,0,,0,0,12.25,\r\n"
              "3,0,1e-40,0,0,0,0,12.25,\r\n");
    EXPECT_EQ(readFile(told.folder + "/passes.csv"),
              "FrameNumber,RenderPassFrameId,Pass,FirstValue,SecondValue,Duration\r\n"
              "18446744073709551615,-1,0,7,8,0.1\r\n"
              "18446744073709551615,-1,1,18446744073709551615,0,1e-09\r\n");
}

TEST_F(Dump, IsFlushedWhileItRunsAndReplacedByNoOther) {
    const std::uint32_t before = notice().number;
    Ostra::startDumping(METAS);
    addFrames(1, 3);
    EXPECT_TRUE(waitUntil([before] { return notice().number == before + 1; }));
    const DumpNotice first = notice();
    EXPECT_EQ(first.state, DumpNotice::State::RUNNING);
    EXPECT_TRUE(waitUntil(
        [&] { return rows(first.folder + "/frames.csv") == 2 && rows(first.folder + "/passes.csv") == 4; }));
    addFrames(1);
    Ostra::startDumping({});
    addFrames(1);
    Ostra::finishDumping();
    const DumpNotice second = ended();
    EXPECT_EQ(second.number, first.number + 1);
    EXPECT_NE(second.folder, first.folder);
    EXPECT_EQ(rows(first.folder + "/frames.csv"), 3);
    EXPECT_EQ(rows(second.folder + "/frames.csv"), 2);
}

TEST_F(Dump, EndsWithOneErrorWhenItCannotBeWritten) {
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {4096, limit.rlim_max};
    mHome.shell("touch file");
    const struct {
        const char* folder;
        std::function<void()> spoil;
        const char* error;
    } cases[] = {
        {"file", [] {}, "Not a directory"},
        {"thread", [] { doubles::refusedThreads() = 1; }, "no thread"},
        {"/proc", [] {}, "/proc"},
        {"full", [] { faults::writeFault = ENOSPC; }, "No space left"},
        {"memory", [] { faults::failingAllocations = 1; }, "out of memory"},
        {"limit", [&] { setrlimit(RLIMIT_FSIZE, &small); }, "frames.csv: File too large"},
    };
    for (const auto& spoilt : cases) {
        SCOPED_TRACE(spoilt.folder);
        useFolder(spoilt.folder);
        spoilt.spoil();
        Ostra::startDumping(METAS);
        addFrames(3000);
        Ostra::finishDumping();
        setrlimit(RLIMIT_FSIZE, &limit);
        faults::writeFault = 0;
        EXPECT_THAT(logged(ANDROID_LOG_ERROR), ElementsAre(HasSubstr(spoilt.error)));
    }
    EXPECT_EQ(ended().state, DumpNotice::State::FAILED);
    EXPECT_THAT(notice().error, HasSubstr("File too large"));
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
        addFrames(1, count);
    }
    faults::writeFault = 0;
    Ostra::finishDumping();
    EXPECT_EQ(ended().frames, 2U);
    EXPECT_EQ(rows(notice().folder + "/passes.csv"), 1 + 16384);
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
        const bool areOwnOpen =
            fcntl(STDERR_FILENO + 1, F_GETFD) >= 0 && fcntl(STDERR_FILENO + 8, F_GETFD) >= 0;
        return areOwnOpen && ended().state == DumpNotice::State::DONE ? 0 : 1;
    });
    EXPECT_EQ(program.wait(), 0);
    const std::string folder = notice(program.id()).folder;
    EXPECT_EQ(rows(folder + "/frames.csv"), 102);
    EXPECT_EQ(rows(folder + "/passes.csv"), 101);
    EXPECT_EQ(fs::file_size(save), 0U);
}

TEST_F(Dump, TakesNoFolderThatIsThere) {
    ASSERT_TRUE(mHome.shell("mkdir victim; ln -s victim name-1; ln -s nowhere name-2; mkfifo name-3"));
    platform::DumpPlan plan;
    plan.base = mHome.path();
    plan.name = "name-";
    std::string error;
    EXPECT_EQ(platform::makeDumpFolder(plan, error), mHome.path("name-4")) << error;
}

TEST(DumpNotices, AreReadAsTheyWereWritten) {
    const support::TemporaryDirectory directory;
    DumpNotice written = {UINT32_MAX, DumpNotice::State::FAILED, UINT64_MAX, "/a\nb", "a b: No\nspace"};
    platform::writeDumpNotice(directory.path(), written);
    const DumpNotice read = platform::readDumpNotice(directory.path(), getpid()).value_or(DumpNotice());
    EXPECT_EQ(std::tie(read.number, read.state, read.frames, read.folder),
              std::tie(written.number, written.state, written.frames, written.folder));
    EXPECT_EQ(read.error, "a b: No space");
    for (const char* const text :
         {"", "1", "1 gone 2 \\n/a", "1 done 2 ", "x done 2 \\n/a", "1 done -x \\n/a"}) {
        ASSERT_TRUE(directory.shell("printf '" + std::string(text) + "' >dump.7"));
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
    EXPECT_EQ(rows(folder + "/frames.csv"), 901);
    EXPECT_EQ(rows(folder + "/passes.csv"), 1801);
}

}  // namespace
}  // namespace ostra
