#include "dumps/Statistics.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace dumps {

namespace {

constexpr double STABLE_SHARE = 0.2;
constexpr double MAX_BINS = 40.0;

/// The overlay's frame-rate figures of the frames that have one.
std::vector<double> measuredRates(const Dump& dump) {
    std::vector<double> rates;
    if (const DumpedValue* const fps = dump.findValue("Fps")) {
        std::copy_if(fps->figures.begin(), fps->figures.end(), std::back_inserter(rates),
                     [](double rate) { return std::isfinite(rate); });
    }
    return rates;
}

/// Milliseconds between two frames; nothing when the clock was set back in between.
std::optional<double> millisecondsBetween(const DumpedFrame& first, const DumpedFrame& second) {
    if (second.timestampMs < first.timestampMs) {
        return std::nullopt;
    }
    // Unsigned, because the difference of two time stamps need not fit the signed type.
    return static_cast<double>(static_cast<std::uint64_t>(second.timestampMs) -
                               static_cast<std::uint64_t>(first.timestampMs));
}

}  // namespace

std::optional<double> measuredMilliseconds(const DumpedValue* times, std::size_t frame) {
    constexpr double US_PER_MS = 1000.0;
    if (times == nullptr || !(times->figures[frame] >= 0.0)) {
        return std::nullopt;
    }
    return times->figures[frame] / (times->unit == "ms" ? 1.0 : US_PER_MS);
}

std::vector<PassGroup> groupPasses(const Dump& dump) {
    std::vector<PassGroup> groups;
    for (std::size_t i = 0; i < dump.passes.size(); ++i) {
        const DumpedPass& pass = dump.passes[i];
        if (i == 0 || pass.frame != dump.passes[i - 1].frame) {
            groups.push_back({i, 0, 0.0, 0.0});
        }
        ++groups.back().count;
        groups.back().sumMs += pass.durationMs;
    }
    for (PassGroup& group : groups) {
        group.lengthMs = std::max(group.sumMs, dump.frames[dump.passes[group.first].frame].passFrameMs);
    }
    return groups;
}

FrameTimes frameTimes(const Dump& dump) {
    FrameTimes result;
    const DumpedValue* const measured = dump.findValue("FrameTime");
    result.isMeasured = measured != nullptr && measured->hasFigures();
    for (std::size_t i = 1; i < dump.frames.size(); ++i) {
        const DumpedFrame& last = dump.frames[i - 1];
        const DumpedFrame& frame = dump.frames[i];
        const auto milliseconds =
            result.isMeasured ? measuredMilliseconds(measured, i) : millisecondsBetween(last, frame);
        if (frame.number - last.number != 1) {
            result.missingFrames += frame.number - last.number - 1;
        } else if (!milliseconds) {
            result.clockSteps += result.isMeasured ? 0 : 1;
        } else {
            result.times.push_back({i, *milliseconds});
        }
    }
    return result;
}

std::vector<double> elapsedTimes(const Dump& dump) {
    std::vector<double> elapsed;
    const DumpedValue* const measured = dump.findValue("FrameTime");
    elapsed.reserve(dump.frames.size());
    for (std::size_t i = 0; i < dump.frames.size(); ++i) {
        std::optional<double> time;
        if (i > 0 && dump.frames[i].number - dump.frames[i - 1].number == 1) {
            time = measuredMilliseconds(measured, i);
        }
        if (i > 0 && !time) {
            time = millisecondsBetween(dump.frames[i - 1], dump.frames[i]);
        }
        elapsed.push_back((i == 0 ? 0.0 : elapsed.back()) + time.value_or(0.0));
    }
    return elapsed;
}

double percentile(const std::vector<double>& sorted, double percent) {
    const auto count = static_cast<double>(sorted.size());
    const double rank = std::ceil(count * percent / 100.0);
    return sorted[static_cast<std::size_t>(std::clamp(rank, 1.0, count)) - 1];
}

std::optional<double> lowRate(const std::vector<double>& sortedMs, double share) {
    const auto count = static_cast<double>(sortedMs.size());
    const double slow = std::clamp(std::floor(count * share), 1.0, count);
    const double total =
        std::accumulate(sortedMs.end() - static_cast<std::ptrdiff_t>(slow), sortedMs.end(), 0.0);
    return total > 0.0 ? std::optional(slow * MS_PER_SECOND / total) : std::nullopt;
}

double median(std::vector<double> figures) {
    const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
    std::nth_element(figures.begin(), middle, figures.end());
    if (figures.size() % 2 != 0) {
        return *middle;
    }
    return (*std::max_element(figures.begin(), middle) + *middle) / 2.0;
}

double stability(const std::vector<double>& figures) {
    const double center = median(figures);
    const double tolerance = center * STABLE_SHARE;
    const auto inside = std::count_if(figures.begin(), figures.end(),
                                      [&](double figure) { return std::abs(figure - center) <= tolerance; });
    return static_cast<double>(inside) * 100.0 / static_cast<double>(figures.size());
}

std::optional<Range> rangeOf(const std::vector<double>& figures) {
    Range range = {INFINITY, 0.0, -INFINITY};
    double count = 0.0;
    for (const double figure : figures) {
        if (std::isfinite(figure)) {
            count += 1.0;
            range.lowest = std::min(range.lowest, figure);
            range.highest = std::max(range.highest, figure);
            range.mean += (figure - range.mean) / count;
        }
    }
    return count > 0.0 ? std::optional(range) : std::nullopt;
}

std::vector<double> sortedMilliseconds(const FrameTimes& times) {
    std::vector<double> sorted;
    sorted.reserve(times.times.size());
    for (const FrameTime& time : times.times) {
        sorted.push_back(time.milliseconds);
    }
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

FrameRateSummary summarize(const Dump& dump, const std::vector<double>& sortedMs, bool isMeasured) {
    FrameRateSummary summary;
    summary.meanRate = lowRate(sortedMs, 1.0);
    summary.shortestMs = sortedMs.front();
    summary.medianMs = percentile(sortedMs, 50.0);
    summary.percentile95Ms = percentile(sortedMs, 95.0);
    summary.percentile99Ms = percentile(sortedMs, 99.0);
    summary.longestMs = sortedMs.back();
    summary.low1Rate = lowRate(sortedMs, 0.01);
    summary.low01Rate = lowRate(sortedMs, 0.001);
    const std::vector<double> rates = isMeasured ? std::vector<double>() : measuredRates(dump);
    summary.isStabilityOfRates = !rates.empty();
    summary.stability = stability(rates.empty() ? sortedMs : rates);
    return summary;
}

Histogram histogram(const std::vector<double>& sortedMs, bool isMeasured) {
    Histogram result;
    // A few very slow frames must not press all others into one bin.
    const double bulk = std::max(percentile(sortedMs, 99.0) * 1.25, percentile(sortedMs, 50.0) * 2.0);
    const double rough = std::min(sortedMs.back(), bulk) - sortedMs.front();
    result.unitMs = !isMeasured || rough > MAX_BINS ? 1.0 : rough > MAX_BINS / 10.0 ? 0.1 : 0.01;
    const double unit = result.unitMs;
    result.firstMs = std::floor(sortedMs.front() / unit) * unit;
    const double last = std::min(std::floor(sortedMs.back() / unit), std::ceil(bulk / unit)) * unit;
    const double span = std::max(std::round((last - result.firstMs) / unit) + 1.0, 1.0);
    const double width = std::ceil(span / MAX_BINS);
    result.widthMs = width * unit;
    result.counts.resize(static_cast<std::size_t>(std::ceil(span / width)));
    for (const double time : sortedMs) {
        const double bin = std::max(std::floor((time - result.firstMs) / result.widthMs), 0.0);
        if (bin < static_cast<double>(result.counts.size())) {
            ++result.counts[static_cast<std::size_t>(bin)];
        } else {
            ++result.beyond;
        }
    }
    return result;
}

std::vector<std::size_t> slowest(const FrameTimes& times, std::size_t count) {
    std::vector<std::size_t> order(times.times.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto end = order.begin() + static_cast<std::ptrdiff_t>(std::min(count, order.size()));
    std::partial_sort(order.begin(), end, order.end(), [&](std::size_t a, std::size_t b) {
        const double left = times.times[a].milliseconds;
        const double right = times.times[b].milliseconds;
        return left != right ? left > right : a < b;
    });
    order.erase(end, order.end());
    return order;
}

}  // namespace dumps
