#pragma once

#include "dumps/Dump.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace dumps {

constexpr double MS_PER_SECOND = 1000.0;

/// The render passes of one captured frame: a range of the dump's passes.
struct PassGroup {
    std::size_t first;
    std::size_t count;
    double sumMs;
    double lengthMs;  ///< of the frame; at least the sum
};
std::vector<PassGroup> groupPasses(const Dump& dump);

/// What the overlay measured for a frame, in microseconds or, where the value says so, milliseconds; nothing
/// when it did not, or when there are no such times.
std::optional<double> measuredMilliseconds(const DumpedValue* times, std::size_t frame);

/// How long one frame took.
struct FrameTime {
    std::size_t frame;  ///< index of the frame that ended with it
    double milliseconds;
};

/// The frame times of a dump, as the overlay measured them. A dump without those has the time stamp of each
/// frame less that of the frame before it: both are whole milliseconds, so a single frame time is right to
/// within one millisecond, and a sum of them as well.
struct FrameTimes {
    std::vector<FrameTime> times;
    std::uint64_t missingFrames =
        0;                       ///< numbers left out between two recorded frames: no time for the latter
    bool isMeasured = false;     ///< else from time stamps
    std::size_t clockSteps = 0;  ///< frames without a time because the wall clock was set back
};
FrameTimes frameTimes(const Dump& dump);

/// Milliseconds from the first frame to each one, by the frame times where those are measured. Never falls:
/// where the wall clock was set back, no time passes.
std::vector<double> elapsedTimes(const Dump& dump);

/// The smallest of the sorted figures that `percent` of them do not exceed (nearest rank). 0 < percent <=
/// 100; the figures must not be empty.
double percentile(const std::vector<double>& sorted, double percent);

/// Frames per second over the slowest `share` (0..1) of the sorted frame times, at least one of them: their
/// number divided by the time they took together. Nothing when they took no time that could be measured.
std::optional<double> lowRate(const std::vector<double>& sortedMs, double share);

/// Middle of the figures, of an even number the mean of the two in the middle. Must not be empty.
double median(std::vector<double> figures);

/// Percentage of the figures within 20 % of their median. Must not be empty.
double stability(const std::vector<double>& figures);

/// A figure's spread over the frames that have it.
struct Range {
    double lowest;
    double mean;
    double highest;
};
std::optional<Range> rangeOf(const std::vector<double>& figures);

/// The milliseconds of the frame times alone, in rising order.
std::vector<double> sortedMilliseconds(const FrameTimes& times);

/// Everything that the report says about the frame rate.
struct FrameRateSummary {
    std::optional<double> meanRate;  ///< frames per second, as all rates
    double shortestMs = 0.0;
    double medianMs = 0.0;
    double percentile95Ms = 0.0;
    double percentile99Ms = 0.0;
    double longestMs = 0.0;
    std::optional<double> low1Rate;   ///< over the slowest 1 %
    std::optional<double> low01Rate;  ///< over the slowest 0.1 %
    double stability = 0.0;           ///< percent
    bool isStabilityOfRates = false;  ///< from the overlay's own rate figures, else from the frame times;
                                      ///< only when those are not measured
};

/// Of frame times in rising order, which must not be empty.
FrameRateSummary summarize(const Dump& dump, const std::vector<double>& sortedMs, bool isMeasured);

/// Frame times counted in bins of equal width; what is beyond the last bin is counted apart.
struct Histogram {
    double firstMs = 0.0;  ///< where the first bin begins
    double widthMs = 1.0;
    double unitMs = 1.0;  ///< both are multiples of this: 1, 0.1 or 0.01
    std::vector<std::size_t> counts;
    std::size_t beyond = 0;
};

/// At most 40 bins around the bulk of the times; of whole milliseconds unless those are measured. Must not be
/// empty.
Histogram histogram(const std::vector<double>& sortedMs, bool isMeasured);

/// The indices in `times.times` of the slowest, slowest first; of equally slow ones the earlier first.
std::vector<std::size_t> slowest(const FrameTimes& times, std::size_t count);

}  // namespace dumps
