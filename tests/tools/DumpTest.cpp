#include "conversions/DumpCommands.h"
#include "dumps/DumpReader.h"
#include "dumps/DumpText.h"
#include "dumps/Statistics.h"
#include "dumps/Trace.h"
#include "dumps/report/Report.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <locale>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

namespace dumps {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string FRAMES =
    "FrameNumber,TimestampMs,Fps,CpuLoad(%),MemPss(Bytes),RenderPassFrameId,FrameDuration\r\n"
    "101,1700000000000,0,0,0,0,0\r\n"
    "102,1700000000016,0,12.5,1048576,0,0\r\n"
    "103,1700000000033,59.5,12.5,2097152,90,7.5\r\n"
    "104,1700000000083,59.5,,3145728,0,0\r\n"
    "105,1700000000100,20,80,3145728,91,4\r\n";

const std::string PASSES =
    "FrameNumber,RenderPassFrameId,Pass,FirstValue,SecondValue,Duration\r\n"
    "103,90,0,11,12,2.5\r\n"
    "103,90,1,13,14,1.25\r\n"
    "105,91,0,18446744073709551615,0,4.5\r\n";

Dump makeDump(const std::string& frames, const std::string& passes = {}) {
    Dump dump;
    dump.folder = "small";
    EXPECT_EQ(parseFrames(frames, dump), "");
    EXPECT_EQ(passes.empty() ? "" : parsePasses(passes, dump), "");
    return dump;
}

TEST(DumpReader, SkipsAndCountsMalformedRows) {
    const std::string names = "FrameNumber,TimestampMs,\"Fps, \"\"now\"\"\n\"\n1,10,60\n";
    for (const char* const row :
         {"2,20", "2,20,60,1", "two,20,60", "2,2e1,60", "2,20,60 ", "-2,20,60", "1,20,60", "",
          "99999999999999999999,20,60", "2,99999999999999999999,60", "2,20,1e999", "2,20,1e300"}) {
        const Dump dump = makeDump(names + row + "\n3,30,50\n");
        ASSERT_EQ(dump.frames.size(), 2U) << row;
        EXPECT_EQ(dump.values[0].name, "Fps, \"now\"\n");
        EXPECT_EQ(dump.values[0].figures.back(), 50.0);
        EXPECT_THAT(describeLosses(dump), HasSubstr("1 malformed row skipped")) << row;
    }
    for (const char* const figure : {"inf", "-inf", "nan", ""}) {
        const Dump dump = makeDump(names + "2,20," + figure + "\n");
        EXPECT_EQ(dump.skippedRows, 0U) << figure;
        EXPECT_TRUE(std::isnan(dump.values[0].figures.back())) << figure;
    }
    Dump dump = makeDump(FRAMES,
                         "FrameNumber,FirstValue,SecondValue,Duration\n103,1,2,nan\n103,1,2,-1\n103,1,-2,1\n"
                         "999,1,2,3\n105,1,2,3\n103,1,2,3\n");
    EXPECT_EQ(dump.skippedRows, 3U);
    EXPECT_EQ(dump.strayPasses, 1U);
    ASSERT_EQ(dump.passes.size(), 2U);
    EXPECT_EQ(dump.passes[0].frame, 2U) << "in the order of the frames";
    EXPECT_THAT(parseFrames("FrameNumber,Fps\n", dump), HasSubstr("no column \"TimestampMs\""));
    EXPECT_THAT(parsePasses("FrameNumber\n", dump), HasSubstr("no column \"FirstValue\""));
}

/// The dumps of every length: a writer that was ended at any moment.
TEST(DumpReader, KeepsWhatIsWholeOfADumpCutAtAnyByte) {
    const auto lines = [](const std::string& text) {
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    };
    for (std::size_t size = 0; size <= FRAMES.size(); ++size) {
        Dump dump;
        const std::string text = FRAMES.substr(0, size);
        const bool isRead = parseFrames(text, dump).empty();
        EXPECT_EQ(isRead, lines(text) > 0) << size;
        EXPECT_EQ(dump.frames.size() + (isRead ? 1 : 0), lines(text)) << size;
        EXPECT_EQ(dump.skippedRows, 0U) << size;
        EXPECT_TRUE(!isRead || dump.isCut == (text.back() != '\n')) << size;
    }
}

TEST(Statistics, FrameTimesLeaveOutGapsAndClockSteps) {
    const Dump dump = makeDump(
        "FrameNumber,TimestampMs\n1,100\n2,116\n3,133\n7,500\n8,516\n9,400\n10,417\n"
        "11,9223372036854775807\n12,-9223372036854775808\n");
    const FrameTimes times = frameTimes(dump);
    EXPECT_EQ(times.missingFrames, 3U);
    EXPECT_EQ(times.clockSteps, 2U);
    EXPECT_THAT(sortedMilliseconds(times), ElementsAre(16.0, 16.0, 17.0, 17.0, 9223372036854775390.0));
    EXPECT_THAT(slowest(times, 3), ElementsAre(4U, 1U, 3U));
    EXPECT_EQ(lowRate({10.0, 20.0, 30.0, 50.0}, 0.5), std::optional(25.0));
    EXPECT_EQ(lowRate({0.0, 0.0}, 1.0), std::nullopt);
    EXPECT_EQ(percentile({10.0, 20.0, 30.0, 50.0}, 51.0), 30.0);
    const std::vector<double> elapsed = elapsedTimes(dump);
    EXPECT_EQ(elapsed[5], 416.0);
    EXPECT_TRUE(std::is_sorted(elapsed.begin(), elapsed.end()));
}

TEST(Trace, HasCountersFramesAndPassesThatDoNotOverlap) {
    Dump dump = makeDump(FRAMES, PASSES);
    dump.frames[2].passFrameMs = 70.0;  // beyond the moment at which the next passes were recorded
    std::ostringstream text;
    writeTrace(dump, text);
    std::vector<std::string> events;
    const auto trace = nlohmann::json::parse(text.str());
    for (const auto& event : trace["traceEvents"]) {
        if (event["ph"] != "M") {
            const auto& figure = event["ph"] == "X" ? event["dur"] : event["args"]["value"];
            events.push_back(event["name"].get<std::string>() + ": " + event["ts"].dump() + ' ' +
                             figure.dump());
        }
    }
    // Figures that did not change, zeros before the first measurement and empty fields make no event.
    EXPECT_THAT(events, ElementsAre("Fps: 33000.0 59.5", "Fps: 100000.0 20.0", "CpuLoad (%): 16000.0 12.5",
                                    "CpuLoad (%): 100000.0 80.0", "MemPss (Bytes): 16000.0 1048576.0",
                                    "MemPss (Bytes): 33000.0 2097152.0", "MemPss (Bytes): 83000.0 3145728.0",
                                    "MemPss (Bytes): 100000.0 3145728.0", "Frame: 0.0 16000.0",
                                    "Frame time (ms): 0.0 16.0", "Frame: 16000.0 17000.0",
                                    "Frame time (ms): 16000.0 17.0", "Frame: 33000.0 50000.0",
                                    "Frame time (ms): 33000.0 50.0", "Frame: 83000.0 17000.0",
                                    "Frame time (ms): 83000.0 17.0", "Passes of frame 90: 33000.0 70000.0",
                                    "Pass 0: 33000.0 2500.0", "Pass 1: 35500.0 1250.0",
                                    "Passes of frame 91: 103000.0 4500.0", "Pass 0: 103000.0 4500.0"));
    EXPECT_THAT(text.str(), AllOf(HasSubstr("18446744073709551615"), HasSubstr(R"("name":"thread_name")")));
}

TEST(Report, SaysTheFiguresOfTheDumpAndNeedsNothingElse) {
    Dump dump = makeDump(FRAMES, PASSES);
    dump.folder = "<&\"'";
    dump.skippedRows = 2;
    std::ostringstream text;
    ASSERT_EQ(writeReport(dump, text), "");
    std::string page = text.str();
    // 4 frames in 16 + 17 + 50 + 17 ms; rates of 59.5, 59.5 and not 20.
    for (const char* const part :
         {"<b>40.0 <small>fps</small></b><span>mean frame rate",
          "<b>20.0 <small>fps</small></b><span>1 % low", "<b>17 <small>ms</small></b><span>median frame time",
          "<b>50 <small>ms</small></b><span>95th percentile", "<b>66.7 <small>%</small></b><span>stability",
          "&lt;&amp;&quot;&#39;", "2 malformed rows skipped", "2023-11-14 22:13:20 UTC",
          "<td>104</td><td>0.1 s</td><td>50 ms</td><td>N/A</td><td>N/A</td>", "1.0 to 3.0, mean 2.2 MiB",
          "Frame 90: 7.50 ms", "Frame 91: 4.50 ms", "the longest is pass 0 with 2.50 ms"}) {
        EXPECT_THAT(page, HasSubstr(part));
    }
    EXPECT_LT(page.find("Frame 90: 7.50 ms"), page.find("Frame 91: 4.50 ms"));
    for (const char* const part : {"http", "src=", "<script", "nan", "inf\""}) {
        EXPECT_EQ(page.find(part), std::string::npos) << part;
    }
}

TEST(Report, TakesMeasuredFrameTimesAndTellsWhatTheyAreOf) {
    std::string frames = "FrameNumber,TimestampMs,Fps,FrameTime(us),GpuTime(us)\n";
    for (int i = 0; i < 200; ++i) {
        frames += std::to_string(i + 1) + "," + std::to_string(1700000000000 + i) + ",1500," +
                  (i == 50 ? "4000" : "666.7") + (i < 3 ? ",\n" : ",250\n");
    }
    Dump dump = makeDump(frames);
    parseSubjects("GPU,\"llvmpipe, 256 bits\"\nSize,740 x 360\nProgram,/usr/bin/gears\nnothing\n", dump);
    std::ostringstream text;
    ASSERT_EQ(writeReport(dump, text), "");
    for (const char* const part :
         {"<title>/usr/bin/gears, llvmpipe, 256 bits, 740 x 360, 2023-11-14 22:13:20 UTC</title>",
          "<b>1463.2 <small>fps</small></b><span>mean", "<b>250.0 <small>fps</small></b><span>1 % low",
          "<b>0.67 <small>ms</small></b><span>median", "<b>99.5 <small>%</small></b><span>stability",
          "<td>51</td><td>0.0 s</td><td>4.00 ms</td>", "0.67 ms: 198 frames"}) {
        EXPECT_THAT(text.str(), HasSubstr(part));
    }
    EXPECT_TRUE(std::isnan(dump.findValue("GpuTime")->figures[2]));
}

using control::ExitCode;
using control::FAILURE;
using control::SUCCESS;

class DumpCommands : public testing::Test {
protected:
    DumpCommands() {
        std::ofstream(mHome.path("frames")) << FRAMES;
        std::ofstream(mHome.path("passes")) << PASSES;
        makeDumps("dump");
    }

    /// Makes folders with a whole dump.
    void makeDumps(const std::string& names) const {
        EXPECT_TRUE(
            mHome.shell("for d in " + names +
                        "; do rm -rf $d; mkdir $d; cp frames $d/frames.csv; cp passes $d/passes.csv; done"));
    }

    ExitCode report(const std::string& folder, const std::string& path) {
        mOut.str({});
        mErr.str({});
        return control::makeReport(mHome.path(folder), mHome.path(path), mOut, mErr);
    }

    const support::TemporaryDirectory mHome;
    std::ostringstream mOut;
    std::ostringstream mErr;
};

TEST_F(DumpCommands, SayWhyThereIsNothingToRead) {
    const std::pair<const char*, const char*> refusals[] = {
        {"rm -r dump", "No such file or directory"},
        {"rm dump/*", "holds no dump"},
        {"head -c90 frames >dump/frames.csv", "frames.csv: it is empty"},
        {"head -n2 frames >dump/frames.csv", "has no two frames in a row"},
        {"rm dump/frames.csv; mkfifo dump/frames.csv", "frames.csv: it is not a regular file"},
        {"truncate -s 2G dump/frames.csv", "it is larger than 1 GiB"}};
    for (const auto& [command, error] : refusals) {
        makeDumps("dump");
        ASSERT_TRUE(mHome.shell("echo old >out; " + std::string(command)));
        EXPECT_EQ(report("dump", "out"), FAILURE);
        EXPECT_THAT(mErr.str(), HasSubstr(error));
        EXPECT_EQ(support::readFile(mHome.path("out")), "old\n") << error;
    }
}

TEST_F(DumpCommands, WriteTheirFileAndNeverTheDump) {
    makeDumps("other");
    ASSERT_TRUE(mHome.shell("mkfifo pipe; ln dump/passes.csv linked; ln -s page shortcut; echo old >page"));
    const std::pair<const char*, const char*> refusals[] = {
        {"dump/frames.csv", "a file of a dump"},
        {"other/passes.csv", "a file of a dump"},
        {"linked", "a file of a dump"},
        {"none/out", "cannot be written: No such file or directory"},
        {"dump", "cannot be written: Is a directory"},
        {"pipe", "cannot be written: it is not a regular file"}};
    for (const auto& [path, error] : refusals) {
        EXPECT_EQ(report("dump", path), FAILURE) << path;
        EXPECT_THAT(mErr.str(), HasSubstr(error));
    }
    ASSERT_TRUE(mHome.shell("(printf '\\357\\273\\277'; cat frames; printf 106,17000) >dump/frames.csv"));
    EXPECT_EQ(report("dump", "shortcut"), SUCCESS);
    EXPECT_THAT(mErr.str(), HasSubstr("ends in the middle of a line"));
    EXPECT_GT(std::filesystem::file_size(mHome.path("page")), 1000U);
    EXPECT_EQ(mOut.str(), "");
}

TEST_F(DumpCommands, TakeTheNewestDumpOfAFolder) {
    makeDumps(
        "b-20260101-120000-9 a-b-20260101-120000-10 z-20251231-235959-1 x-20270101-1200-1 "
        "20270101-120000-1 x-20270101-120000-");
    mHome.shell("mkdir y-20280101-120000-1");
    EXPECT_EQ(report("", "out"), SUCCESS) << mErr.str();
    EXPECT_EQ(mOut.str(), "The newest dump: " + mHome.path("a-b-20260101-120000-10") + "\n");
}

TEST_F(DumpCommands, WriteTheSameNumbersInEveryLocale) {
    struct Grouped : std::numpunct<char> {
        std::string do_grouping() const override { return "\1"; }
    };
    EXPECT_EQ(report("dump", "before"), SUCCESS);
    const std::locale classic = std::locale::global(std::locale(std::locale::classic(), new Grouped));
    EXPECT_EQ(report("dump", "after"), SUCCESS);
    std::locale::global(classic);
    EXPECT_TRUE(mHome.shell("cmp before after"));
}

}  // namespace
}  // namespace dumps
