#include "conversions/DumpCommands.h"
#include "dumps/DumpReader.h"
#include "dumps/DumpText.h"
#include "dumps/Statistics.h"
#include "dumps/logs/Bootstrap.h"
#include "dumps/logs/Comparison.h"
#include "dumps/logs/LogSummary.h"
#include "logs/CompareCommand.h"
#include "logs/LogCheck.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>
#include <sstream>

namespace dumps {
namespace {

using testing::HasSubstr;

/// Frame times around 10 ms, each with so much of the deviation of the one before it.
std::vector<double> makeTimes(std::size_t count, double memory, std::uint64_t seed, double mean = 10.0) {
    std::mt19937_64 random(seed);
    std::vector<double> times;
    double deviation = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        double noise = -6.0;  // the sum of twelve is nearly normal
        for (int k = 0; k < 12; ++k) {
            noise += static_cast<double>(random() >> 11U) / 9007199254740992.0;
        }
        deviation = memory * deviation + std::sqrt(1.0 - memory * memory) * noise;
        times.push_back(mean + deviation);
    }
    return times;
}

TEST(Bootstrap, TheIntervalIsThatOfTheTextbook) {
    const struct {
        double memory;
        double widening;  ///< of the error of a mean, sqrt((1 + memory) / (1 - memory))
    } cases[] = {{0.0, 1.0}, {0.5, 1.732}, {0.8, 3.0}};
    for (const auto& [memory, widening] : cases) {
        constexpr std::size_t COUNT = 1500;
        double width = 0.0;
        constexpr std::uint64_t PAIRS = 4;
        for (std::uint64_t pair = 0; pair < PAIRS; ++pair) {
            const auto found = compareRates(makeTimes(COUNT, memory, 2 * pair),
                                            makeTimes(COUNT, memory, 2 * pair + 1), {1.0});
            width += (found[0].high - found[0].low) / PAIRS;
        }
        // Of two means of 10 ms with a deviation of 1 ms.
        const double expected = 2.0 * 1.96 * std::sqrt(2.0 / COUNT) * widening / 10.0;
        EXPECT_NEAR(width / expected, 1.0, 0.15) << memory;
    }
}

TEST(Bootstrap, SeldomSeesADifferenceWhereThereIsNoneAndSeesOneWhereThereIs) {
    int alarms = 0;
    int found = 0;
    constexpr int PAIRS = 60;
    for (int pair = 0; pair < PAIRS; ++pair) {
        const auto seed = static_cast<std::uint64_t>(pair);
        const std::vector<double> first = makeTimes(400, 0.3, 1000 + 3 * seed);
        const std::vector<double> same = makeTimes(400, 0.3, 1001 + 3 * seed);
        const std::vector<double> slower = makeTimes(400, 0.3, 1002 + 3 * seed, 10.5);
        const auto rates = compareRates(first, same, {1.0});
        alarms += rates[0].isMoreThanNoise() ? 1 : 0;
        const RateDifference difference = compareRates(first, slower, {1.0})[0];
        found += difference.isMoreThanNoise() && difference.change < 0.0 ? 1 : 0;
    }
    EXPECT_LE(alarms, 8) << "of " << PAIRS << ", where 3 are to be expected";
    EXPECT_GE(alarms, 1);
    EXPECT_GE(found, 57);
}

TEST(Bootstrap, ExactTimesHaveExactAnswersAndFewHaveNone) {
    std::vector<double> even(1000, 10.0);
    std::vector<double> slow(1000, 12.5);
    const std::vector<double> shares = {1.0, 0.01, 0.001};
    const auto same = compareRates(even, even, shares);
    EXPECT_TRUE(same[0].isKnown && same[1].isKnown && !same[2].isKnown) << "a thousandth is one frame";
    EXPECT_FALSE(same[0].isMoreThanNoise());
    for (const RateDifference& difference : compareRates(even, slow, shares)) {
        EXPECT_EQ(difference.first, 100.0);
        EXPECT_EQ(difference.second, 80.0);
        EXPECT_NEAR(difference.low, -0.2, 1e-12);
        EXPECT_NEAR(difference.high, -0.2, 1e-12);
    }
    EXPECT_FALSE(compareRates({10.0, 10.0}, {30.0}, {1.0})[0].isKnown);
    EXPECT_FALSE(compareRates({0.0, 0.0}, {30.0}, {1.0})[0].isKnown);
    std::vector<double> uneven = makeTimes(3000, 0.0, 1);
    const auto first = compareRates(uneven, slow, shares);
    const auto again = compareRates(uneven, slow, shares);
    EXPECT_EQ(first[1].low, again[1].low) << "it is the same every time";
    std::sort(uneven.begin(), uneven.end());
    EXPECT_DOUBLE_EQ(*first[1].first, *lowRate(uneven, 0.01)) << "as everywhere else";
}

/// A log of frames that take `even` ms, every hundredth `slow` ms.
std::string makeLog(int frames, double even, double slow) {
    std::string text =
        "FrameNumber,TimestampMs,FrameTime(ms),SwapTime(ms),GpuTime(ms),OverlayTime(ms),Fps\r\n";
    for (int i = 1; i <= frames; ++i) {
        const double time = i % 100 == 50 ? slow : even;
        text += std::to_string(i) + ',' + std::to_string(1700000000000 + 10 * i) + ',' +
                std::to_string(time) + ',' + std::to_string(time / 2) + ",2,0.25,\r\n";
    }
    return text;
}

TEST(LogSummary, SaysWhatTheLogSays) {
    Dump log;
    ASSERT_EQ(parseFrames(makeLog(1001, 10.0, 50.0), log), "");
    const auto summary = summarizeLog(log);
    ASSERT_TRUE(summary);
    std::ostringstream text;
    printLogSummary(*summary, text);
    // A thousand times, ten of them slow, since the first frame's is another's.
    for (const char* const part :
         {"frames          ", "1000 in 10.4 s", "96.2 fps", "100.0 fps, 10.00 ms",
          "1 % low           20.0 fps", "50.00 ms, after 0.5 s",
          "earlier frames 50 %, graphics 19 %, the processor 31 %", "0.250 ms of a frame, 2.4 %"}) {
        EXPECT_THAT(text.str(), HasSubstr(part));
    }
    const std::tuple<const char*, bool, const char*> checks[] = {
        {"low1<20.1", true, "20.00 fps"},    {"low1<20", false, "20.00 fps"},
        {"low1 <= 20", true, "20.00 fps"},   {"mean>=96", true, "96.15 fps"},
        {"median>100", false, "100.00 fps"}, {"longest>49.9", true, "50.00 ms"},
        {"frames<1000", false, "1000"},      {"overlay>0.2", true, "0.25 ms"}};
    for (const auto& [words, isTrue, value] : checks) {
        std::string error;
        const auto check = control::parseLogCheck(words, error);
        ASSERT_TRUE(check) << error;
        EXPECT_EQ(control::holds(*check, *summary), isTrue) << words;
        EXPECT_EQ(control::valueText(*check, *summary), value);
    }
    for (const char* const words :
         {"", "low1", "low1<", "low1=5", "low<5", "<5", "low1<5x", "low1<nan", "low1<<5"}) {
        std::string error;
        EXPECT_FALSE(control::parseLogCheck(words, error)) << words;
        EXPECT_THAT(error, HasSubstr("such as low1<55"));
    }
}

TEST(CompareCommand, SetsLogsSideBySideAndFailsWhenAsked) {
    const support::TemporaryDirectory home;
    std::ofstream(home.path("a.csv")) << makeLog(2000, 10.0, 30.0);
    std::ofstream(home.path("b.csv")) << makeLog(2000, 10.5, 30.0);
    std::ofstream(home.path("few.csv")) << makeLog(1, 10.0, 10.0);
    std::ofstream(home.path("hundred.csv")) << makeLog(100, 10.0, 10.0);
    std::ofstream(home.path("four.csv")) << makeLog(4, 10.0, 10.0);
    const std::tuple<std::string, std::string, const char*, int, const char*> cases[] = {
        {"a.csv", "four.csv", "3%", 1, "too few frames"},
        {"a.csv", "hundred.csv", "3%", 1, "too few frames"},
        {"a.csv", "b.csv", "3%", 1, "is slower than"},
        {"a.csv", "b.csv", "5%", 0, ""},
        {"b.csv", "a.csv", "0%", 0, ""},
        {"a.csv", "few.csv", "3%", 1, "no frame times"},
        {"a.csv", "none.csv", "3%", 1, "cannot be read"},
    };
    for (const auto& [first, second, limit, status, reason] : cases) {
        std::ostringstream out;
        std::ostringstream err;
        const control::CompareOptions options = {home.path(first), home.path(second), home.path("page.html"),
                                                 control::parsePercent(limit)};
        EXPECT_EQ(control::compareFiles(options, out, err), status) << first << second << limit;
        EXPECT_THAT(err.str(), HasSubstr(reason));
    }
    std::ostringstream out;
    EXPECT_EQ(
        control::compareFiles({home.path("a.csv"), home.path("b.csv"), home.path("a.csv"), {}}, out, out), 1)
        << "a log is not replaced";
    EXPECT_THAT(out.str(), HasSubstr("slower by 4.6 % on average"));
    const std::string page = support::readFile(home.path("page.html"));
    for (const char* const part :
         {"<td>93.5 fps</td><td>98.0 fps</td><td>+4.9 %</td>", "<td>faster</td>", "</html>"}) {
        EXPECT_NE(page.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(page.find("nan"), std::string::npos);
    for (const char* const text : {"3", "%", "-3%", "3%%", "nan%"}) {
        EXPECT_FALSE(control::parsePercent(text)) << text;
    }
    std::ostringstream said;
    EXPECT_EQ(control::makeReport(home.path("a.csv"), home.path("report.html"), said, said), 0) << said.str();
    EXPECT_THAT(support::readFile(home.path("report.html")),
                HasSubstr("<b>98.0 <small>fps</small></b><span>mean"));
    EXPECT_EQ(control::makeReport(home.path("a.csv"), home.path("a.csv"), said, said), 1);
    Dump newest;
    std::filesystem::last_write_time(home.path("b.csv"),
                                     std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    EXPECT_EQ(readLog(home.path(), newest), "");
    EXPECT_EQ(newest.folder, home.path("b.csv"));
}

}  // namespace
}  // namespace dumps
