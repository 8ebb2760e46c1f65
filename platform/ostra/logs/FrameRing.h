#pragma once

#include <ostra/FrameLog.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace platform {

/// The last frames, and the figures that were shown meanwhile. Allocates all its memory when it is made. One
/// thread at a time adds and never waits; any other may read, and finds out when a frame has been replaced.
class FrameRing {
public:
    /// A minute at up to 1000 frames a second, of figures that change eight times a second. Powers of two, so
    /// that the running counts may wrap.
    static constexpr std::uint32_t FRAMES = std::uint32_t{1} << 16U;
    static constexpr std::uint32_t ROWS = 1024;

    static constexpr std::uint32_t NOT_MEASURED = std::numeric_limits<std::uint32_t>::max();

    /// Moments count on, and wrap after days: compare them with ticksBetween().
    static constexpr std::uint32_t TICKS_PER_SECOND = 10000;

    /// A frame as it is stored.
    struct Frame {
        std::uint32_t end = 0;  ///< in ticks
        // Tenths of a microsecond, up to seven minutes; NOT_MEASURED where nobody knows.
        std::uint32_t total = 0;
        std::uint32_t swap = 0;
        std::uint32_t overlay = NOT_MEASURED;
        std::uint32_t gpu = NOT_MEASURED;
    };

    explicit FrameRing(std::size_t valuesPerRow);

    // The adding thread's. A frame's number is the count of those before it.
    std::uint32_t add(const Ostra::LoggedFrame& frame);
    void setGpu(std::uint32_t number, std::uint64_t nanoseconds);
    void addRow(const double* values, std::size_t count);

    /// How many frames have been added, the first of which may have been replaced.
    std::uint32_t count() const { return mFramesAdded.load(std::memory_order_acquire); }

    /// The oldest that can still be read for a while.
    std::uint32_t oldest() const;

    /// False when the frame has been replaced.
    bool read(std::uint32_t number, Frame& frame) const;

    /// The values that held at a moment, as of the last row that is not younger; `row` is where to look
    /// first, 0 at the beginning, and is moved on. Moments must rise from call to call.
    void readValues(std::uint32_t moment, std::uint32_t& row, std::vector<double>& values) const;

    static std::uint32_t now();
    static std::int32_t ticksBetween(std::uint32_t from, std::uint32_t to) {
        return static_cast<std::int32_t>(to - from);
    }

private:
    /// What another thread reads while this one is being written is thrown away, but it must not be a race.
    struct StoredFrame {
        std::array<std::atomic<std::uint32_t>, 4> words;
        std::atomic<std::uint32_t> gpu;
    };

    bool readRow(std::uint32_t number, std::uint32_t& moment, std::vector<double>& values) const;

    std::size_t mValuesPerRow;
    std::unique_ptr<StoredFrame[]> mFrames;
    std::unique_ptr<std::atomic<double>[]> mValues;
    std::array<std::atomic<std::uint32_t>, ROWS> mMoments{};  ///< of the rows

    // Running counts: advanced with release order when a slot has been written, after the slot's own count
    // said that it would be.
    std::atomic<std::uint32_t> mFramesBegun{0};
    std::atomic<std::uint32_t> mFramesAdded{0};
    std::atomic<std::uint32_t> mRowsBegun{0};
    std::atomic<std::uint32_t> mRowsAdded{0};
};

}  // namespace platform
