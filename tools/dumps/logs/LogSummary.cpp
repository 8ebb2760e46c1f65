#include "dumps/logs/LogSummary.h"

#include "dumps/Statistics.h"
#include "dumps/report/Html.h"

#include <algorithm>
#include <string>

namespace dumps {

namespace {

std::optional<LogSummary::Parts> partsOf(const Dump& log, const FrameTimes& times) {
    const DumpedValue* const swaps = log.findValue("SwapTime");
    const DumpedValue* const gpus = log.findValue("GpuTime");
    const bool isGpuKnown = gpus != nullptr && gpus->hasFigures();
    double whole = 0.0;
    double swapMs = 0.0;
    double gpuMs = 0.0;
    for (const FrameTime& time : times.times) {
        const auto swap = measuredMilliseconds(swaps, time.frame);
        const auto gpu = measuredMilliseconds(gpus, time.frame);
        if (!swap || (isGpuKnown && !gpu)) {
            continue;
        }
        // As the strip of frame times: what the GPU works during the swap counts for the GPU.
        const double worked = std::min(gpu.value_or(0.0), time.milliseconds);
        whole += time.milliseconds;
        gpuMs += worked;
        swapMs += std::min(*swap, time.milliseconds - worked);
    }
    if (!(whole > 0.0)) {
        return std::nullopt;
    }
    LogSummary::Parts parts;
    parts.swap = swapMs / whole;
    parts.gpu = isGpuKnown ? std::optional(gpuMs / whole) : std::nullopt;
    parts.processor = std::max(1.0 - parts.swap - gpuMs / whole, 0.0);
    return parts;
}

std::optional<double> meanOf(const Dump& log, const char* name) {
    const DumpedValue* const value = log.findValue(name);
    double sum = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < log.frames.size(); ++i) {
        if (const auto milliseconds = measuredMilliseconds(value, i)) {
            sum += *milliseconds;
            ++count;
        }
    }
    return count == 0 ? std::nullopt : std::optional(sum / static_cast<double>(count));
}

std::string percent(double share) {
    return fixedPoint(share * 100.0, 0) + " %";
}

void printLine(const char* name, const std::string& text, std::ostream& out) {
    constexpr std::size_t WIDTH = 20;
    std::string label = std::string("  ") + name;
    label.resize(WIDTH, ' ');
    out << label << text << '\n';
}

}  // namespace

std::string rateText(const std::optional<double>& rate) {
    return rate ? fixedPoint(*rate, 1) + " fps" : "-";
}

std::vector<double> logTimes(const Dump& log) {
    std::vector<double> milliseconds;
    for (const FrameTime& time : frameTimes(log).times) {
        milliseconds.push_back(time.milliseconds);
    }
    return milliseconds;
}

std::optional<LogSummary> summarizeLog(const Dump& log) {
    const FrameTimes times = frameTimes(log);
    if (times.times.empty()) {
        return std::nullopt;
    }
    const std::vector<double> sorted = sortedMilliseconds(times);
    const FrameRateSummary rates = summarize(log, sorted, times.isMeasured);
    LogSummary summary;
    summary.frames = times.times.size();
    summary.missingFrames = times.missingFrames;
    summary.meanRate = rates.meanRate;
    summary.medianMs = rates.medianMs;
    summary.low1Rate = rates.low1Rate;
    summary.low01Rate = rates.low01Rate;
    summary.longestMs = rates.longestMs;
    const std::vector<double> elapsed = elapsedTimes(log);
    summary.seconds = elapsed.back() / MS_PER_SECOND;
    const std::size_t longest = slowest(times, 1).front();
    summary.longestAtSeconds = elapsed[times.times[longest].frame] / MS_PER_SECOND;
    summary.parts = partsOf(log, times);
    summary.overlayMs = meanOf(log, "OverlayTime");
    return summary;
}

void printLogSummary(const LogSummary& summary, std::ostream& out) {
    std::string frames = std::to_string(summary.frames) + " in " + fixedPoint(summary.seconds, 1) + " s";
    if (summary.missingFrames > 0) {
        frames += ", and " + std::to_string(summary.missingFrames) + " missing";
    }
    printLine("frames", frames, out);
    printLine("mean", rateText(summary.meanRate), out);
    printLine("median",
              (summary.medianMs > 0.0 ? rateText(MS_PER_SECOND / summary.medianMs) + ", " : std::string()) +
                  fixedPoint(summary.medianMs, 2) + " ms",
              out);
    printLine("1 % low", rateText(summary.low1Rate), out);
    printLine("0.1 % low", rateText(summary.low01Rate), out);
    printLine(
        "longest frame",
        fixedPoint(summary.longestMs, 2) + " ms, after " + fixedPoint(summary.longestAtSeconds, 1) + " s",
        out);
    if (summary.parts) {
        const LogSummary::Parts& parts = *summary.parts;
        printLine("it waited for",
                  "the screen or earlier frames " + percent(parts.swap) + ", graphics " +
                      (parts.gpu ? percent(*parts.gpu) : std::string("not known")) + ", the processor " +
                      percent(parts.processor),
                  out);
    }
    if (summary.overlayMs) {
        const double share =
            *summary.overlayMs * static_cast<double>(summary.frames) / (summary.seconds * 10.0);
        printLine("the overlay took",
                  fixedPoint(*summary.overlayMs, 3) + " ms of a frame, " + fixedPoint(share, 1) + " %", out);
    }
}

}  // namespace dumps
