#include "figures/FrameStatistics.h"

#include <algorithm>
#include <cmath>

namespace figures {

namespace {

constexpr double NS_PER_SECOND = 1e9;
constexpr double STABLE_SHARE = 0.2;

}  // namespace

std::size_t FrameStatistics::classOf(std::uint64_t nanoseconds) {
    constexpr std::uint64_t FIRST = std::uint64_t{1} << FIRST_OCTAVE;
    if (nanoseconds < FIRST) {
        return 0;
    }
    const auto octave = 63U - static_cast<unsigned int>(__builtin_clzll(nanoseconds));
    const auto inOctave = static_cast<std::size_t>(nanoseconds >> (octave - CLASS_BITS)) - CLASSES_PER_OCTAVE;
    return std::min((octave - FIRST_OCTAVE) * CLASSES_PER_OCTAVE + inOctave, CLASSES - 1);
}

void FrameStatistics::add(std::uint64_t nanoseconds) {
    if (nanoseconds == 0) {
        return;
    }
    const std::size_t index = classOf(nanoseconds);
    for (Count* const count : {&mClasses[index], &mAll, &mSinceRefresh}) {
        count->nanoseconds += nanoseconds;
        ++count->frames;
    }
    mBelowMedian += index < mMedianClass ? 1 : 0;
    mLongestClass = std::max(mLongestClass, index);
}

void FrameStatistics::refresh() {
    mCurrent = rate(mSinceRefresh);
    mSinceRefresh = {};
    // Only few frames have come since the last time, so the middle one is near its old place.
    const std::uint64_t half = mAll.frames / 2;
    while (mBelowMedian > half) {
        --mMedianClass;
        mBelowMedian -= mClasses[mMedianClass].frames;
    }
    while (mMedianClass < mLongestClass && mBelowMedian + mClasses[mMedianClass].frames <= half) {
        mBelowMedian += mClasses[mMedianClass].frames;
        ++mMedianClass;
    }
}

void FrameStatistics::reset() {
    mClasses.fill({});
    mAll = {};
    mLongestClass = 0;
    mMedianClass = 0;
    mBelowMedian = 0;
}

Reading FrameStatistics::rate(const Count& count) {
    return count.frames == 0 ? Reading()
                             : Reading(static_cast<double>(count.frames) * NS_PER_SECOND /
                                       static_cast<double>(count.nanoseconds));
}

Reading FrameStatistics::average() const {
    return rate(mAll);
}

Reading FrameStatistics::median() const {
    return rate(mClasses[mMedianClass]);
}

Reading FrameStatistics::stability() const {
    const Reading rateOfMedian = median();
    if (!rateOfMedian) {
        return {};
    }
    const double median = NS_PER_SECOND / *rateOfMedian;
    const auto framesInside = [median](const Count& each) {
        const double sum = median * static_cast<double>(each.frames);
        return std::abs(static_cast<double>(each.nanoseconds) - sum) <= sum * STABLE_SHARE ? each.frames : 0;
    };
    const std::size_t first = classOf(static_cast<std::uint64_t>(median * (1.0 - STABLE_SHARE)));
    const std::size_t last = classOf(static_cast<std::uint64_t>(median * (1.0 + STABLE_SHARE)));
    // Only the first and the last class contain a bound.
    std::uint64_t inside = framesInside(mClasses[first]) + (last > first ? framesInside(mClasses[last]) : 0);
    for (std::size_t i = first + 1; i < last; ++i) {
        inside += mClasses[i].frames;
    }
    return 100.0 * static_cast<double>(inside) / static_cast<double>(mAll.frames);
}

Reading FrameStatistics::low(double share) const {
    if (mAll.frames == 0) {
        return {};
    }
    const std::uint64_t wanted =
        std::max(static_cast<std::uint64_t>(static_cast<double>(mAll.frames) * share), std::uint64_t{1});
    Count slow;
    for (std::size_t i = mLongestClass + 1; i > 0 && slow.frames < wanted; --i) {
        const Count& each = mClasses[i - 1];
        const std::uint64_t taken = std::min(each.frames, wanted - slow.frames);
        // Only a part of the last class counts; each of its frames counts with the class's mean.
        slow.nanoseconds +=
            taken == each.frames
                ? each.nanoseconds
                : static_cast<std::uint64_t>(static_cast<double>(each.nanoseconds) *
                                             static_cast<double>(taken) / static_cast<double>(each.frames));
        slow.frames += taken;
    }
    return rate(slow);
}

}  // namespace figures
