#pragma once

#include "figures/Reading.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace figures {

/// Statistics of the frame times since the last reset: right from 1 to 10,000 frames a second, for any number
/// of frames. Counts times in classes that are at most 0.8 % wide, each with the sum of its times. So means
/// and lows are as exact as the times; the median and the bounds of the stability are exact to the width of a
/// class. Allocates nothing.
class FrameStatistics {
public:
    /// Adds a frame that took this many nanoseconds. Ignores 0: the clock stands still.
    void add(std::uint64_t nanoseconds);

    /// Call it before asking for figures: makes the frames since the last call the current ones.
    void refresh();

    /// Removes all frames except the current ones.
    void reset();

    // Frames per second; empty while there is no frame.

    /// Of the frames between the last two refreshes.
    Reading current() const { return mCurrent; }

    /// The number of frames divided by their total time.
    Reading average() const;

    /// The rate of the frame in the middle.
    Reading median() const;

    /// Percentage of the frames whose time is within 20 % of the median.
    Reading stability() const;

    /// The rate over the slowest `share` (0..1) of the frames, at least one of them.
    Reading low(double share) const;

private:
    // Octaves from 2^15 ns (33 us) to 2^33 ns (8.6 s), each in equal classes. Shorter and longer times count
    // in the first or the last class.
    static constexpr unsigned int FIRST_OCTAVE = 15;
    static constexpr unsigned int OCTAVES = 18;
    static constexpr unsigned int CLASS_BITS = 7;
    static constexpr std::size_t CLASSES_PER_OCTAVE = std::size_t{1} << CLASS_BITS;
    static constexpr std::size_t CLASSES = OCTAVES * CLASSES_PER_OCTAVE;

    struct Count {
        std::uint64_t nanoseconds = 0;
        std::uint64_t frames = 0;
    };

    static std::size_t classOf(std::uint64_t nanoseconds);
    static Reading rate(const Count& count);

    std::array<Count, CLASSES> mClasses = {};
    std::size_t mLongestClass = 0;   ///< that has a frame
    std::size_t mMedianClass = 0;    ///< of the frame in the middle, at the last refresh
    std::uint64_t mBelowMedian = 0;  ///< frames in classes below that
    Count mAll;
    Count mSinceRefresh;
    Reading mCurrent;
};

}  // namespace figures
