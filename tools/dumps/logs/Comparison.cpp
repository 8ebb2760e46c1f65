#include "dumps/logs/Comparison.h"

#include "dumps/report/Html.h"

#include <cmath>
#include <utility>

namespace dumps {

namespace {

/// In the order of Comparison's members.
const std::vector<double> SHARES = {1.0, 0.01, 0.001};

std::string signedPercent(double change) {
    const std::string text = fixedPoint(change * 100.0, 1);
    return change > 0.0 && text != "0.0" ? '+' + text : text == "-0.0" ? "0.0" : text;
}

std::string padded(std::string text, std::size_t width, bool isLeft = false) {
    if (text.size() < width) {
        text.insert(isLeft ? text.size() : 0, width - text.size(), ' ');
    }
    return text;
}

void printRow(const std::array<std::string, 6>& cells, std::ostream& out) {
    constexpr std::size_t WIDTHS[] = {14, 11, 11, 10, 20};
    std::string line = "  ";
    for (std::size_t i = 0; i < std::size(WIDTHS); ++i) {
        line += padded(cells[i], WIDTHS[i], i == 0);
    }
    line += cells[5].empty() ? "" : "  " + cells[5];
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

void printRates(const char* name, const RateDifference& difference, std::ostream& out) {
    printRow({name, rateText(difference.first), rateText(difference.second), changeText(difference.change),
              intervalText(difference), verdictOf(difference)},
             out);
}

void printTimes(const char* name, double first, double second, std::ostream& out) {
    printRow({name, fixedPoint(first, 2) + " ms", fixedPoint(second, 2) + " ms",
              first > 0.0 ? changeText(second / first - 1.0) : std::string(), "", ""},
             out);
}

}  // namespace

std::optional<Comparison> compareLogs(const Dump& first, const Dump& second, std::string& error) {
    Comparison comparison;
    comparison.logs = {&first, &second};
    for (std::size_t i = 0; i < comparison.logs.size(); ++i) {
        const Dump& log = *comparison.logs[i];
        auto summary = summarizeLog(log);
        if (!summary) {
            error = log.folder + ": the log has no frame times";
            return std::nullopt;
        }
        comparison.summaries[i] = *summary;
        comparison.times[i] = logTimes(log);
    }
    const auto rates = compareRates(comparison.times[0], comparison.times[1], SHARES);
    comparison.mean = rates[0];
    comparison.low1 = rates[1];
    comparison.low01 = rates[2];
    return comparison;
}

std::string changeText(double change) {
    return signedPercent(change) + " %";
}

std::string intervalText(const RateDifference& difference) {
    return difference.isKnown ? signedPercent(difference.low) + " to " + signedPercent(difference.high) + " %"
                              : std::string();
}

std::string verdictOf(const RateDifference& difference) {
    if (!difference.isKnown) {
        return "too few frames to tell";
    }
    if (!difference.isMoreThanNoise()) {
        return "no difference beyond noise";
    }
    return difference.change < 0.0 ? "slower" : "faster";
}

std::string conclusionOf(const Comparison& comparison) {
    std::string text;
    const std::pair<const RateDifference*, const char*> rates[] = {
        {&comparison.mean, "on average"},
        {&comparison.low1, "in its slowest 1 %"},
        {&comparison.low01, "in its slowest 0.1 %"}};
    for (const auto& [rate, where] : rates) {
        if (rate->isMoreThanNoise()) {
            text += (text.empty() ? "B is " : ", ") + verdictOf(*rate) + " by " +
                    fixedPoint(std::abs(rate->change) * 100.0, 1) + " % " + where;
        }
    }
    if (!comparison.mean.isKnown) {
        return "There are too few frames to tell.";
    }
    return text.empty() ? "There is no difference beyond noise." : text + "; that is more than noise.";
}

void printComparison(const Comparison& comparison, std::ostream& out) {
    for (std::size_t i = 0; i < comparison.logs.size(); ++i) {
        const LogSummary& summary = comparison.summaries[i];
        out << (i == 0 ? 'A' : 'B') << "  " << comparison.logs[i]->folder << ": " << summary.frames
            << " frames in " << fixedPoint(summary.seconds, 1) << " s\n";
    }
    out << '\n';
    printRow({"", "A", "B", "change", "95 % between", ""}, out);
    printRates("mean", comparison.mean, out);
    printRates("1 % low", comparison.low1, out);
    printRates("0.1 % low", comparison.low01, out);
    printTimes("median", comparison.summaries[0].medianMs, comparison.summaries[1].medianMs, out);
    printTimes("longest frame", comparison.summaries[0].longestMs, comparison.summaries[1].longestMs, out);
    out << '\n' << conclusionOf(comparison) << '\n';
}

bool isSlower(const Comparison& comparison, double share) {
    const auto isWorse = [share](const RateDifference& difference) {
        return difference.isMoreThanNoise() && difference.change < -share;
    };
    return isWorse(comparison.mean) || isWorse(comparison.low1);
}

}  // namespace dumps
