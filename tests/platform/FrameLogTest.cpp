#include "dumps/CsvReader.h"
#include "ostra/ProcessSocket.h"
#include "ostra/logs/FrameRing.h"
#include "ostra/logs/LogNotice.h"
#include "ostra/logs/LogWriter.h"
#include "platform/OstraTesting.h"
#include "properties/RuntimeDirectory.h"
#include "runs/LogPlan.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>
#include <ostra/FrameLog.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <thread>

namespace ostra {
namespace {

using platform::FrameRing;
using platform::LogNotice;
using platform::LogRequest;
using platform::LogWriter;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t NS_PER_MS = 1000000;
constexpr std::uint64_t NS_PER_TICK = 100000;

/// A frame of 10 ms that ended so long before a moment in ticks.
Ostra::LoggedFrame frameAgo(std::uint64_t milliseconds, std::uint32_t moment = FrameRing::now()) {
    const std::uint64_t now = std::uint64_t{moment} * NS_PER_TICK;
    return {now - milliseconds * NS_PER_MS, 10 * NS_PER_MS, 4 * NS_PER_MS, -1};
}

TEST(FrameRing, KeepsTheLastFramesAndSaysWhichAreGone) {
    FrameRing ring(0);
    for (std::uint32_t i = 0; i < FrameRing::FRAMES + 3; ++i) {
        EXPECT_EQ(ring.add({0, i * 100ULL, 0, i == 5 ? 700 : -1}), i);
    }
    ring.setGpu(2, 1);  // is gone
    ring.setGpu(5, 900);
    FrameRing::Frame frame;
    EXPECT_FALSE(ring.read(2, frame));
    ASSERT_TRUE(ring.read(5, frame));
    EXPECT_THAT((std::vector{frame.total, frame.swap, frame.overlay, frame.gpu}),
                ElementsAre(5U, 0U, 7U, 9U));
    ASSERT_TRUE(ring.read(FrameRing::FRAMES + 2, frame));
    EXPECT_EQ(frame.total, FrameRing::FRAMES + 2);
    EXPECT_EQ(frame.gpu, FrameRing::NOT_MEASURED);
    ring.add({0, ~0ULL, 0, -1});
    ASSERT_TRUE(ring.read(ring.count() - 1, frame));
    EXPECT_EQ(frame.total, FrameRing::NOT_MEASURED - 1) << "a frame may take for ever";
}

TEST(FrameRing, AReaderNeverTakesAFrameThatIsBeingWritten) {
    FrameRing ring(2);
    std::atomic<bool> isOver{false};
    std::thread adding([&] {
        for (std::uint64_t i = 0; i < 4 * FrameRing::FRAMES; ++i) {
            ring.add({i * NS_PER_TICK, i * 100, i * 100, static_cast<std::int64_t>(i * 100)});
            const double value = static_cast<double>(i);
            const double values[] = {value, value};
            ring.addRow(values, 2);
        }
        isOver = true;
    });
    std::uint64_t read = 0;
    std::uint64_t torn = 0;
    std::uint32_t row = 0;
    std::vector<double> values(2);
    for (std::uint32_t back = 1; !isOver || read == 0; back = back % FrameRing::FRAMES + 97) {
        FrameRing::Frame frame;
        const std::uint32_t count = ring.count();
        const std::uint32_t number = count - back;
        if (count > back && ring.read(number, frame)) {
            ++read;
            torn += frame.end != number || frame.total != number || frame.swap != number ||
                            frame.overlay != number
                        ? 1
                        : 0;
        }
        ring.readValues(FrameRing::now(), row, values);
        torn += values[0] != values[1] ? 1 : 0;
    }
    adding.join();
    EXPECT_EQ(torn, 0U) << "of " << read;
}

class FrameLogs : public testing::Test {
protected:
    FrameLogs() {
        platform::changeRuntimeDirectory(mRun.path());
        // A frame every 10 ms, the last one now; the second of every four was measured on the GPU.
        const std::uint32_t now = FrameRing::now();
        for (std::uint32_t i = 0; i < 500; ++i) {
            const std::uint32_t number = mRing.add(frameAgo(4990 - 10 * i, now));
            if (number % 4 == 1) {
                mRing.setGpu(number, 2 * NS_PER_MS);
            }
        }
        const double values[] = {60.5, std::nan("")};
        mRing.addRow(values, 2);
    }

    /// The rows of a file, the first one with the names.
    static std::vector<std::vector<std::string>> rowsOf(const std::string& path) {
        const std::string text = support::readFile(path);
        dumps::CsvReader reader(text);
        std::vector<std::vector<std::string>> rows;
        for (std::vector<std::string> row; reader.next(row);) {
            rows.push_back(row);
        }
        return rows;
    }

    std::vector<LogNotice> notices() const { return platform::readLogNotices(mRun.path(), getpid()); }

    const support::TemporaryDirectory mRun;
    const support::TemporaryDirectory mHome;
    FrameRing mRing{2};
    const std::vector<const char*> mColumns = {"Fps", "GpuLoad(%)"};
    LogWriter mWriter{mRing, mColumns, mHome.path("deep/logs"), ""};
};

TEST_F(FrameLogs, TheRunsPlanIsKeptToTheFrame) {
    const std::string folder = mHome.path("a\nfolder");
    ASSERT_EQ(platform::writeLogPlan(mRun.path(), {folder, true, 1000, 2000}), 0);
    EXPECT_FALSE(mWriter.step(false)) << "all of it lies in the past";
    const auto said = notices();
    ASSERT_EQ(said.size(), 1U);
    EXPECT_EQ(said[0].state, LogNotice::State::DONE) << said[0].error;
    EXPECT_EQ(std::filesystem::path(said[0].path).parent_path(), folder);
    const auto rows = rowsOf(said[0].path);
    ASSERT_EQ(rows.size(), 202U) << "the first after a second, and the one that ends two seconds later";
    EXPECT_EQ(said[0].frames, 201U);
    EXPECT_THAT(rows[0], ElementsAre("FrameNumber", "TimestampMs", "FrameTime(ms)", "SwapTime(ms)",
                                     "GpuTime(ms)", "OverlayTime(ms)", "Fps", "GpuLoad(%)"));
    EXPECT_THAT(rows[1], ElementsAre("101", testing::_, "10", "4", "", "", "", ""));
    EXPECT_THAT(rows[2], ElementsAre("102", testing::_, "10", "4", "2", "", "", ""));
    EXPECT_EQ(std::stoll(rows[201][1]) - std::stoll(rows[1][1]), 2000);
}

TEST_F(FrameLogs, ALogIsStartedAndStoppedAndTheLastSecondsAreSavedBeside) {
    EXPECT_FALSE(mWriter.step(false)) << "nobody wants one";
    mWriter.handle({LogRequest::Kind::STOP});
    mWriter.handle({LogRequest::Kind::TOGGLE});
    EXPECT_TRUE(mWriter.step(false));
    mWriter.handle({LogRequest::Kind::START});  // is already
    usleep(2000);
    mRing.add(frameAgo(0));
    mRing.add(frameAgo(0));
    mWriter.handle({LogRequest::Kind::LAST, 2});
    EXPECT_TRUE(mWriter.step(false));
    mWriter.handle({LogRequest::Kind::TOGGLE});
    EXPECT_TRUE(support::waitUntil([&] { return !mWriter.step(false); }));
    const auto said = notices();
    ASSERT_EQ(said.size(), 2U);
    EXPECT_EQ(said[0].frames, 2U) << "only those after its start";
    EXPECT_THAT(said[1].path, HasSubstr("-last.csv"));
    EXPECT_NEAR(static_cast<double>(said[1].frames), 202.0, 30.0) << "2 s, less what this test took";
    EXPECT_THAT(rowsOf(said[1].path).back(), ElementsAre("502", testing::_, "10", "4", "", "", "60.5", ""))
        << "with the figures of then";
}

TEST_F(FrameLogs, AFailureIsTold) {
    std::ofstream(mHome.path("deep")) << "a file";
    mWriter.handle({LogRequest::Kind::START});
    EXPECT_FALSE(mWriter.step(false));
    LogWriter homeless(mRing, mColumns, "", "there is no home");
    homeless.handle({LogRequest::Kind::LAST, 1});
    EXPECT_EQ(notices().back().error, "there is no home");
    std::filesystem::remove(mHome.path("deep"));
    mWriter.handle({LogRequest::Kind::LAST, 3});
    const auto said = notices();
    ASSERT_EQ(said.size(), 2U);
    EXPECT_EQ(said[0].state, LogNotice::State::FAILED);
    EXPECT_THAT(said[0].error, HasSubstr("Not a directory"));
    EXPECT_EQ(said[1].state, LogNotice::State::DONE) << "and the next one is whole";
}

TEST_F(FrameLogs, AnOrderlyEndWritesTheRestAndMessagesReachTheProcess) {
    ASSERT_EQ(platform::writeLogPlan(mRun.path(), {mHome.path(), true, 0, std::nullopt}), 0);
    support::ChildProcess program([] {
        Ostra::setLogColumns({"Fps"});
        for (int i = 0; i < 40; ++i) {
            Ostra::logFrame(frameAgo(0));
            usleep(i < 20 ? 10000 : 0);
        }
        exit(3);
        return 0;
    });
    EXPECT_EQ(program.wait(), 3);
    const std::vector<pid_t> logged = platform::processesWithLogs(mRun.path());
    EXPECT_THAT(logged, testing::Each(program.id())) << "none outside of a run stays";
    std::string path;
    for (const auto& entry : std::filesystem::directory_iterator(mHome.path())) {
        path = entry.path();
    }
    EXPECT_EQ(rowsOf(path).size(), 41U) << path;
}

}  // namespace
}  // namespace ostra
