#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <locale>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "conversions/DumpCommands.h"
#include "dumps/DumpReader.h"
#include "dumps/Statistics.h"
#include "dumps/Trace.h"
#include "dumps/report/Report.h"
#include "ostra/DumpFiles.h"
#include "ostra/FrameQueue.h"
#include "platform/TemporaryDirectory.h"

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
    const std::string names = "FrameNumber,TimestampMs,Fps\n1,10,60\n";
    for (const char* const row : {"2,20", "2,20,60,1", "two,20,60", "2,2e1,60", "2,20,60 ", "2,20,6x",
                                  "-2,20,60", "1,20,60", "0,20,60", "", "99999999999999999999,20,60",
                                  "2,99999999999999999999,60", "2,20,1e999", "2,20,1e300", " 2,20,60"}) {
        const Dump dump = makeDump(names + row + "\n3,30,50\n");
        ASSERT_EQ(dump.frames.size(), 2U) << row;
        EXPECT_EQ(dump.frames[1].number, 3U);
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
    EXPECT_EQ(dump.passes[0].frame, 2U);  // in the order of the frames
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

TEST(DumpReader, ReadsWhatTheCompanionLibraryWrites) {
    const platform::TemporaryDirectory folder;
    platform::DumpFiles files(
        {{android::String8("Fps, \"now\"\n"), 1, 1}, {android::String8("MemPss(Bytes)"), 2, 1}},
        {"Power(W)", "Fan(rpm)"});
    ASSERT_EQ(files.open(folder.path()), "");
    platform::FrameQueue queue(2, 2);
    Ostra::FrameDump frame = {7, 1700000000140, 5, 3.5F, 0, {{}, {}}, {{1, 2, 1.5}, {3, 4, 2.0}}};
    frame.values[0].floatValue = 59.94F;
    frame.values[1].intValue = 5000000000U;
    ASSERT_TRUE(queue.push(frame, {12.25}));
    ASSERT_EQ(files.append(queue), "");
    ASSERT_EQ(files.close(), "");
    Dump dump;
    EXPECT_EQ(readDump(folder.path(), dump), "");
    EXPECT_EQ(describeLosses(dump), "");
    ASSERT_EQ(dump.frames.size(), 1U);
    EXPECT_EQ(dump.frames[0].timestampMs, 1700000000140);
    EXPECT_EQ(dump.frames[0].passFrameMs, 3.5);
    ASSERT_EQ(dump.values.size(), 4U);
    EXPECT_EQ(dump.values[2].unit, "W");
    EXPECT_THAT(dump.values[2].figures, ElementsAre(12.25));
    EXPECT_TRUE(std::isnan(dump.values[3].figures.at(0))) << "nobody gave it a value";
    EXPECT_EQ(dump.values[0].name, "Fps, \"now\"\n");
    EXPECT_THAT(dump.values[0].figures, ElementsAre(59.94));
    EXPECT_THAT(dump.values[1].figures, ElementsAre(5e9));
    ASSERT_EQ(dump.passes.size(), 2U);
    EXPECT_EQ(dump.passes[1].secondValue, 4U);
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
                                    "MemPss (Bytes): 100000.0 3145728.0", "Frame 102: 0.0 16000.0",
                                    "Frame time (ms): 0.0 16.0", "Frame 103: 16000.0 17000.0",
                                    "Frame time (ms): 16000.0 17.0", "Frame 104: 33000.0 50000.0",
                                    "Frame time (ms): 33000.0 50.0", "Frame 105: 83000.0 17000.0",
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

using control::ExitCode;
using control::FAILURE;
using control::SUCCESS;

class DumpCommands : public testing::Test {
protected:
    /// A folder with a whole dump.
    std::string makeFolder(const std::string& name) const {
        std::filesystem::create_directory(mFolder.path(name));
        std::ofstream(mFolder.path(name + "/frames.csv")) << FRAMES;
        std::ofstream(mFolder.path(name + "/passes.csv")) << PASSES;
        return mFolder.path(name);
    }

    ExitCode report(const std::string& folder, const std::string& path) {
        mOut.str({});
        mErr.str({});
        return control::makeReport(folder, path, mOut, mErr);
    }

    const platform::TemporaryDirectory mFolder;
    std::ostringstream mOut;
    std::ostringstream mErr;
};

TEST_F(DumpCommands, SayWhyThereIsNothingToRead) {
    const std::string folder = mFolder.path("dump");
    const std::string output = mFolder.path("out");
    std::ofstream(output) << "an older page";
    std::ofstream(mFolder.path("copy")) << FRAMES;
    const std::pair<const char*, const char*> refusals[] = {
        {"rm -r dump", "No such file or directory"},
        {"rm dump/*", "holds no dump"},
        {"head -c90 copy > dump/frames.csv", "frames.csv: the dump is empty"},
        {"head -n2 copy > dump/frames.csv", "has no two frames in a row"},
        {"rm dump/frames.csv; mkfifo dump/frames.csv", "frames.csv: it is not a regular file"},
        {"truncate -s 2G dump/frames.csv", "it is larger than 1 GiB"}};
    for (const auto& [command, error] : refusals) {
        makeFolder("dump");
        ASSERT_EQ(std::system(("cd " + mFolder.path() + "; " + command).c_str()), 0);
        EXPECT_EQ(report(folder, output), FAILURE);
        EXPECT_THAT(mErr.str(), HasSubstr(error));
        EXPECT_EQ(std::filesystem::file_size(output), 13U) << error;
        std::filesystem::remove_all(folder);
    }
}

TEST_F(DumpCommands, WriteTheirFileAndNeverTheDump) {
    const std::string folder = makeFolder("dump");
    ASSERT_EQ(mkfifo(mFolder.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_hard_link(folder + "/passes.csv", mFolder.path("linked"));
    std::filesystem::create_symlink(mFolder.path("page"), mFolder.path("shortcut"));
    const std::pair<std::string, const char*> refusals[] = {
        {folder + "/frames.csv", "a file of a dump"},
        {makeFolder("other") + "/passes.csv", "a file of a dump"},
        {mFolder.path("linked"), "a file of a dump"},
        {mFolder.path("none/out"), "cannot be written: No such file or directory"},
        {folder, "cannot be written: Is a directory"},
        {mFolder.path("pipe"), "cannot be written: it is not a regular file"}};
    for (const auto& [path, error] : refusals) {
        EXPECT_EQ(report(folder, path), FAILURE) << path;
        EXPECT_THAT(mErr.str(), HasSubstr(error));
    }
    std::ofstream(mFolder.path("page")) << "old";
    std::ofstream(folder + "/frames.csv") << "\xEF\xBB\xBF" << FRAMES << "106,17000";
    EXPECT_EQ(report(folder, mFolder.path("shortcut")), SUCCESS);
    EXPECT_THAT(mErr.str(), HasSubstr("ends in the middle of a line"));
    EXPECT_GT(std::filesystem::file_size(mFolder.path("page")), 1000U);
    EXPECT_EQ(mOut.str(), "");
}

TEST_F(DumpCommands, TakeTheNewestDumpOfAFolder) {
    for (const char* const name : {"b-20260101-120000-9", "a-b-20260101-120000-10", "z-20251231-235959-1",
                                   "x-20270101-1200-1", "20270101-120000-1", "x-20270101-120000-"}) {
        makeFolder(name);
    }
    std::filesystem::create_directory(mFolder.path("y-20280101-120000-1"));
    EXPECT_EQ(report(mFolder.path(), mFolder.path("out")), SUCCESS) << mErr.str();
    EXPECT_EQ(mOut.str(), "The newest dump: " + mFolder.path("a-b-20260101-120000-10") + "\n");
}

TEST_F(DumpCommands, WriteTheSameNumbersInEveryLocale) {
    struct Grouped : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\1"; }
    };
    const std::string folder = makeFolder("dump");
    EXPECT_EQ(report(folder, mFolder.path("before")), SUCCESS);
    const std::locale classic = std::locale::global(std::locale(std::locale::classic(), new Grouped));
    EXPECT_EQ(report(folder, mFolder.path("after")), SUCCESS);
    std::locale::global(classic);
    EXPECT_EQ(std::system(("cmp " + mFolder.path("before") + ' ' + mFolder.path("after")).c_str()), 0);
}

}  // namespace
}  // namespace dumps
