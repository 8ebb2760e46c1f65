#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "CsvReader.h"
#include "DumpCommands.h"
#include "DumpReader.h"
#include "Html.h"
#include "Report.h"
#include "Statistics.h"
#include "Trace.h"
#include "ostra/DumpFiles.h"
#include "ostra/FrameQueue.h"
#include "platform/TemporaryDirectory.h"

namespace control {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Rows = std::vector<std::vector<std::string>>;

Rows readCsv(std::string_view text, bool* isCut = nullptr) {
    CsvReader reader(text);
    Rows rows;
    for (std::vector<std::string> row; reader.next(row);) {
        rows.push_back(row);
    }
    if (isCut != nullptr) {
        *isCut = reader.isCut();
    }
    return rows;
}

TEST(CsvReader, TakesFieldsApartAsTheyWerePutTogether) {
    EXPECT_EQ(readCsv("a,b\r\n1,2\n"), (Rows{{"a", "b"}, {"1", "2"}}));
    EXPECT_EQ(readCsv(",\n\n"), (Rows{{"", ""}, {""}}));
    EXPECT_EQ(readCsv("\"a,b\",\"c\"\"d\"\"\",\"e\r\nf\"\r\n"), (Rows{{"a,b", "c\"d\"", "e\r\nf"}}));
    EXPECT_EQ(readCsv("a\"b,\"c\"d,e\rf\n"), (Rows{{"a\"b", "cd", "e\rf"}}));
    EXPECT_EQ(readCsv(std::string_view("\0,\xFF\n", 4)), (Rows{{std::string(1, '\0'), "\xFF"}}));
    bool isCut = false;
    EXPECT_EQ(readCsv("a\nb", &isCut), (Rows{{"a"}}));
    EXPECT_TRUE(isCut);
    EXPECT_EQ(readCsv("a\n\"b\nc\n", &isCut), (Rows{{"a"}}));
    EXPECT_TRUE(isCut);
    EXPECT_EQ(readCsv("a\n", &isCut), (Rows{{"a"}}));
    EXPECT_FALSE(isCut);
}

constexpr const char* FRAMES =
    "FrameNumber,TimestampMs,Fps,CpuLoad(%),MemPss(Bytes),RenderPassFrameId,FrameDuration\r\n"
    "101,1700000000000,0,0,0,0,0\r\n"
    "102,1700000000016,0,12.5,1048576,0,0\r\n"
    "103,1700000000033,59.5,12.5,2097152,90,7.5\r\n"
    "104,1700000000083,59.5,,3145728,0,0\r\n"
    "105,1700000000100,20,80,3145728,91,4\r\n";

constexpr const char* PASSES =
    "FrameNumber,RenderPassFrameId,Pass,FirstValue,SecondValue,Duration\r\n"
    "103,90,0,11,12,2.5\r\n"
    "103,90,1,13,14,1.25\r\n"
    "105,91,0,18446744073709551615,0,4.5\r\n";

Dump smallDump() {
    Dump dump;
    dump.folder = "small";
    EXPECT_EQ(parseFrames(FRAMES, dump), "");
    EXPECT_EQ(parsePasses(PASSES, dump), "");
    return dump;
}

TEST(DumpReader, ReadsFramesValuesAndPasses) {
    const Dump dump = smallDump();
    ASSERT_EQ(dump.frames.size(), 5U);
    EXPECT_EQ(dump.frames[2].number, 103U);
    EXPECT_EQ(dump.frames[2].timestampMs, 1700000000033);
    EXPECT_EQ(dump.frames[2].passFrameId, 90);
    EXPECT_EQ(dump.frames[2].passFrameMs, 7.5);
    ASSERT_EQ(dump.values.size(), 3U);
    EXPECT_EQ(dump.values[1].name, "CpuLoad");
    EXPECT_EQ(dump.values[1].unit, "%");
    EXPECT_EQ(dump.values[2].unit, "Bytes");
    // The zeros before the first measurement are no figures, and neither is an empty field.
    EXPECT_THAT(dump.values[1].figures, ElementsAre(testing::IsNan(), 12.5, 12.5, testing::IsNan(), 80.0));
    ASSERT_EQ(dump.passes.size(), 3U);
    EXPECT_EQ(dump.passes[1].frame, 2U);
    EXPECT_EQ(dump.passes[1].durationMs, 1.25);
    EXPECT_EQ(dump.passes[2].firstValue, 18446744073709551615U);
    EXPECT_EQ(describeLosses(dump), "");
}

TEST(DumpReader, SkipsAndCountsMalformedRows) {
    const std::string names = "FrameNumber,TimestampMs,Fps\n1,10,60\n";
    for (const char* const row : {"2,20", "2,20,60,1", "two,20,60", "2,2e1,60", "2,20,60 ", "2,20,6x",
                                  "-2,20,60", "1,20,60", "0,20,60", "", "99999999999999999999,20,60",
                                  "2,99999999999999999999,60", "2,20,1e999", "2,20,1e300", " 2,20,60"}) {
        Dump dump;
        EXPECT_EQ(parseFrames(names + row + "\n3,30,50\n", dump), "");
        ASSERT_EQ(dump.frames.size(), 2U) << row;
        EXPECT_EQ(dump.frames[1].number, 3U);
        EXPECT_EQ(dump.values[0].figures.back(), 50.0);
        EXPECT_EQ(dump.skippedRows, 1U) << row;
        EXPECT_FALSE(dump.isCut);
        EXPECT_THAT(describeLosses(dump), HasSubstr("1 malformed row skipped"));
    }
    for (const char* const figure : {"inf", "-inf", "nan", ""}) {
        Dump dump;
        EXPECT_EQ(parseFrames(names + "2,20," + figure + "\n", dump), "");
        EXPECT_EQ(dump.skippedRows, 0U) << figure;
        EXPECT_TRUE(std::isnan(dump.values[0].figures.back())) << figure;
    }
    Dump dump;
    EXPECT_EQ(parseFrames(FRAMES, dump), "");
    EXPECT_EQ(parsePasses("FrameNumber,FirstValue,SecondValue,Duration\n103,1,2,nan\n103,1,2,-1\n103,1,-2,1\n"
                          "999,1,2,3\n105,1,2,3\n103,1,2,3\n",
                          dump),
              "");
    EXPECT_EQ(dump.skippedRows, 3U);
    EXPECT_EQ(dump.strayPasses, 1U);
    ASSERT_EQ(dump.passes.size(), 2U);
    EXPECT_EQ(dump.passes[0].frame, 2U);  // in the order of the frames
}

TEST(DumpReader, SaysWhatIsMissingOfATextThatIsNoDump) {
    Dump dump;
    EXPECT_THAT(parseFrames("", dump), HasSubstr("no first row"));
    EXPECT_THAT(parseFrames("FrameNumber,Fps\n", dump), HasSubstr("no column \"TimestampMs\""));
    EXPECT_THAT(parsePasses("FrameNumber\n", dump), HasSubstr("no column \"FirstValue\""));
}

/// The dumps of every length: a writer that was ended at any moment.
TEST(DumpReader, KeepsWhatIsWholeOfADumpCutAtAnyByte) {
    const std::string frames = FRAMES;
    const std::string passes = PASSES;
    const auto wholeRows = [](const std::string& text) {
        const auto lines = std::count(text.begin(), text.end(), '\n');
        return static_cast<std::size_t>(std::max<std::ptrdiff_t>(lines - 1, 0));
    };
    for (std::size_t size = 0; size <= frames.size(); ++size) {
        Dump dump;
        const std::string text = frames.substr(0, size);
        const std::string error = parseFrames(text, dump);
        EXPECT_EQ(error.empty(), text.find('\n') != std::string::npos) << size;
        ASSERT_EQ(dump.frames.size(), wholeRows(text)) << size;
        EXPECT_EQ(dump.skippedRows, 0U) << size;
        if (error.empty()) {
            EXPECT_EQ(dump.isCut, text.back() != '\n') << size;
        }
        std::ostringstream page;
        std::ostringstream trace;
        EXPECT_EQ(writeReport(dump, page).empty(), dump.frames.size() >= 2) << size;
        writeTrace(dump, trace);
        EXPECT_TRUE(nlohmann::json::accept(trace.str())) << size;
    }
    for (std::size_t size = 0; size <= passes.size(); ++size) {
        Dump dump;
        EXPECT_EQ(parseFrames(frames, dump), "");
        parsePasses(passes.substr(0, size), dump);
        EXPECT_EQ(dump.passes.size(), wholeRows(passes.substr(0, size))) << size;
    }
}

TEST(DumpReader, SurvivesAnyBytes) {
    std::mt19937 random(20251124);
    const std::string symbols = std::string("0123456789,.-\"\r\neninfa", 23) + std::string(1, '\0') + '\xFF';
    for (int round = 0; round < 600; ++round) {
        std::string frames = FRAMES;
        std::string passes = PASSES;
        for (std::string* const text : {&frames, &passes}) {
            for (int i = 0; i < 1 + round % 12; ++i) {
                (*text)[random() % text->size()] = symbols[random() % symbols.size()];
            }
        }
        Dump dump;
        if (parseFrames(frames, dump).empty()) {
            parsePasses(passes, dump);
            std::ostringstream page;
            std::ostringstream trace;
            writeReport(dump, page);
            writeTrace(dump, trace);
            ASSERT_TRUE(nlohmann::json::accept(trace.str())) << frames << passes;
            ASSERT_EQ(page.str().find('\0'), std::string::npos);
        }
    }
}

TEST(DumpReader, ReadsWhatTheCompanionLibraryWrites) {
    const platform::TemporaryDirectory folder;
    platform::DumpFiles files({{android::String8("Fps"), 1, 1}, {android::String8("MemPss(Bytes)"), 2, 1}});
    ASSERT_EQ(files.open(folder.path()), "");
    platform::FrameQueue queue(2);
    for (std::uint64_t number = 7; number < 10; ++number) {
        Ostra::FrameDump frame = {};
        frame.frameNumber = number;
        frame.timestampMs = static_cast<std::int64_t>(1700000000000 + number * 20);
        frame.values.resize(2);
        frame.values[0].floatValue = 59.94F;
        frame.values[1].intValue = 5000000000U;
        if (number == 8) {
            frame.renderPassFrameId = 5;
            frame.frameDuration = 3.5F;
            frame.renderPasses = {{1, 2, 1.5}, {3, 4, 2.0}};
        }
        ASSERT_TRUE(queue.push(frame));
        ASSERT_EQ(files.append(queue), "");
        queue.pop();
    }
    ASSERT_EQ(files.close(), "");
    Dump dump;
    ASSERT_EQ(readDump(folder.path(), dump), "");
    EXPECT_EQ(describeLosses(dump), "");
    ASSERT_EQ(dump.frames.size(), 3U);
    EXPECT_EQ(dump.frames[1].passFrameId, 5);
    EXPECT_EQ(dump.frames[1].passFrameMs, 3.5);
    ASSERT_EQ(dump.values.size(), 2U);
    EXPECT_EQ(dump.values[0].figures[2], 59.94);
    EXPECT_EQ(dump.values[1].figures[0], 5e9);
    ASSERT_EQ(dump.passes.size(), 2U);
    EXPECT_EQ(dump.passes[1].secondValue, 4U);
    EXPECT_EQ(dump.passes[1].frame, 1U);
}

TEST(Statistics, PercentilesMediansAndLowRatesAgreeWithCounting) {
    std::mt19937 random(7);
    for (const std::size_t count : {1U, 2U, 3U, 99U, 100U, 101U, 1000U, 1999U}) {
        std::vector<double> figures(count);
        for (double& figure : figures) {
            figure = static_cast<double>(1 + random() % 50);
        }
        std::vector<double> sorted = figures;
        std::sort(sorted.begin(), sorted.end());
        for (const double percent : {1.0, 50.0, 95.0, 99.0, 100.0}) {
            const double found = percentile(sorted, percent);
            const auto below =
                std::count_if(figures.begin(), figures.end(), [&](double f) { return f < found; });
            const auto upTo =
                std::count_if(figures.begin(), figures.end(), [&](double f) { return f <= found; });
            EXPECT_GE(static_cast<double>(upTo) * 100.0, percent * static_cast<double>(count));
            EXPECT_LT(static_cast<double>(below) * 100.0, percent * static_cast<double>(count));
        }
        EXPECT_EQ(median(figures), (sorted[(count - 1) / 2] + sorted[count / 2]) / 2.0);
        const std::size_t slow = std::max<std::size_t>(count / 100, 1);
        double total = 0.0;
        for (std::size_t i = 0; i < slow; ++i) {
            total += sorted[count - 1 - i];
        }
        EXPECT_DOUBLE_EQ(lowRate(sorted, 0.01).value_or(0.0), 1000.0 * static_cast<double>(slow) / total);
        const double center = median(figures);
        const auto inside = std::count_if(figures.begin(), figures.end(),
                                          [&](double f) { return f >= center * 0.8 && f <= center * 1.2; });
        EXPECT_NEAR(stability(figures), 100.0 * static_cast<double>(inside) / static_cast<double>(count),
                    1e-9);
        const Histogram bins = histogram(sorted);
        std::size_t counted = bins.beyond;
        for (std::size_t i = 0; i < bins.counts.size(); ++i) {
            const double first = bins.firstMs + bins.widthMs * static_cast<double>(i);
            EXPECT_EQ(bins.counts[i],
                      static_cast<std::size_t>(std::count_if(figures.begin(), figures.end(), [&](double f) {
                          return f >= first && f < first + bins.widthMs;
                      })));
            counted += bins.counts[i];
        }
        EXPECT_EQ(counted, count);
        EXPECT_LE(bins.counts.size(), 40U);
    }
    EXPECT_FALSE(lowRate({0.0, 0.0}, 1.0).has_value());
    EXPECT_EQ(percentile({16.0, 17.0}, 50.0), 16.0);
}

TEST(Statistics, FrameTimesLeaveOutGapsAndClockSteps) {
    Dump dump;
    ASSERT_EQ(parseFrames("FrameNumber,TimestampMs\n1,100\n2,116\n3,133\n7,500\n8,516\n9,400\n10,417\n"
                          "11,9223372036854775807\n12,-9223372036854775808\n",
                          dump),
              "");
    const FrameTimes times = frameTimes(dump);
    EXPECT_EQ(times.missingFrames, 3U);
    EXPECT_EQ(times.clockSteps, 2U);
    std::vector<double> milliseconds;
    for (const FrameTime& time : times.times) {
        milliseconds.push_back(time.milliseconds);
    }
    EXPECT_THAT(milliseconds, ElementsAre(16.0, 17.0, 16.0, 17.0, 9223372036854775390.0));
    const std::vector<double> elapsed = elapsedTimes(dump);
    EXPECT_EQ(elapsed[5], 416.0);
    EXPECT_TRUE(std::is_sorted(elapsed.begin(), elapsed.end()));
    EXPECT_THAT(slowest(times, 3), ElementsAre(4U, 1U, 3U));
}

TEST(Statistics, TheSummaryOfASmallDumpIsWhatOneReckonsByHand) {
    const Dump dump = smallDump();
    const FrameRateSummary summary = summarize(dump, sortedMilliseconds(frameTimes(dump)));
    EXPECT_DOUBLE_EQ(summary.meanRate.value_or(0.0), 40.0);  // 4 frames in 16 + 17 + 50 + 17 ms
    EXPECT_EQ(summary.medianMs, 17.0);
    EXPECT_EQ(summary.percentile95Ms, 50.0);
    EXPECT_EQ(summary.shortestMs, 16.0);
    EXPECT_EQ(summary.longestMs, 50.0);
    EXPECT_EQ(summary.low1Rate, 20.0);
    EXPECT_TRUE(summary.isStabilityOfRates);
    EXPECT_NEAR(summary.stability, 200.0 / 3.0, 1e-9);  // 59.5, 59.5 and not 20
}

TEST(Trace, HasCountersFramesAndPassesThatDoNotOverlap) {
    std::ostringstream text;
    writeTrace(smallDump(), text);
    const auto trace = nlohmann::json::parse(text.str());
    std::vector<double> cpu;
    std::vector<double> cpuTimes;
    std::vector<std::string> slices;
    double end = 0.0;
    double frameEnd = 0.0;
    for (const auto& event : trace["traceEvents"]) {
        const std::string phase = event["ph"];
        ASSERT_TRUE(event["pid"].is_number() && event["name"].is_string());
        if (phase == "C" && event["name"] == "CpuLoad (%)") {
            cpu.push_back(event["args"]["value"]);
            cpuTimes.push_back(event["ts"]);
        } else if (phase == "X" && event["tid"] == 2) {
            const std::string name = event["name"];
            const double start = event["ts"];
            const double sliceEnd = start + static_cast<double>(event["dur"]);
            slices.push_back(name);
            if (name.rfind("Passes", 0) == 0) {
                EXPECT_GE(start, frameEnd);
                frameEnd = sliceEnd;
            } else {
                EXPECT_GE(start, end);
                EXPECT_LE(sliceEnd, frameEnd);
            }
            end = name.rfind("Passes", 0) == 0 ? start : sliceEnd;
        }
    }
    EXPECT_THAT(cpu, ElementsAre(12.5, 80.0));
    EXPECT_THAT(cpuTimes, ElementsAre(16000.0, 100000.0));
    EXPECT_THAT(slices,
                ElementsAre("Passes of frame 90", "Pass 0", "Pass 1", "Passes of frame 91", "Pass 0"));
    EXPECT_THAT(text.str(),
                AllOf(HasSubstr(R"("dur":50000.0,"name":"Frame 104")"), HasSubstr("18446744073709551615"),
                      HasSubstr(R"("name":"thread_name")"), HasSubstr(R"("displayTimeUnit":"ms")")));
}

TEST(Report, SaysTheFiguresOfTheDumpAndNeedsNothingElse) {
    Dump dump = smallDump();
    dump.folder = "<&\"'";
    dump.skippedRows = 2;
    std::ostringstream text;
    ASSERT_EQ(writeReport(dump, text), "");
    const std::string page = text.str();
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
    EXPECT_THAT(page, AllOf(Not(HasSubstr("http")), Not(HasSubstr("src=")), Not(HasSubstr("<script")),
                            Not(HasSubstr("nan")), Not(HasSubstr("inf\""))));
}

TEST(Report, LongDumpsMakeNoLongPages) {
    Dump dump;
    std::string frames = "FrameNumber,TimestampMs,CpuLoad(%)\n";
    for (int i = 0; i < 50000; ++i) {
        frames += std::to_string(i) + ',' + std::to_string(i * 17 + i % 3) + ',' +
                  std::to_string(1 + i % 90) + '\n';
    }
    ASSERT_EQ(parseFrames(frames, dump), "");
    std::ostringstream page;
    ASSERT_EQ(writeReport(dump, page), "");
    EXPECT_LT(page.str().size(), 300000U);
}

TEST(DumpCommands, WriteTheirFileOrSayWhyNot) {
    const platform::TemporaryDirectory folder;
    const std::string output = folder.path("out");
    std::ostringstream err;
    EXPECT_EQ(makeReport(folder.path("missing"), output, err), FAILURE);
    EXPECT_THAT(err.str(), HasSubstr("there is no such folder"));
    EXPECT_EQ(makeReport(folder.path(), output, err), FAILURE);
    EXPECT_THAT(err.str(), HasSubstr("frames.csv: cannot be read"));
    std::ofstream(folder.path("frames.csv")) << std::string(FRAMES).substr(0, 90);
    err.str({});
    EXPECT_EQ(makeTrace(folder.path(), output, err), FAILURE);
    EXPECT_THAT(err.str(), HasSubstr("the dump is empty"));
    EXPECT_FALSE(std::filesystem::exists(output));

    const std::string cut = std::string(FRAMES) + "106,17000";
    std::ofstream(folder.path("frames.csv")) << cut;
    err.str({});
    EXPECT_EQ(makeReport(folder.path(), output, err), SUCCESS);
    EXPECT_THAT(err.str(), AllOf(HasSubstr("ends in the middle of a line"), HasSubstr("passes.csv")));
    EXPECT_GT(std::filesystem::file_size(output), 1000U);
    EXPECT_EQ(makeTrace(folder.path(), folder.path("none/out"), err), FAILURE);
    EXPECT_THAT(err.str(), HasSubstr("cannot be written: No such file or directory"));
}

}  // namespace
}  // namespace control
