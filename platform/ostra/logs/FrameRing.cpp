#include "ostra/logs/FrameRing.h"

#include <time.h>

#include <algorithm>

namespace platform {

namespace {

constexpr std::uint64_t NS_PER_SECOND = 1000000000;
constexpr std::uint64_t NS_PER_TICK = NS_PER_SECOND / FrameRing::TICKS_PER_SECOND;

/// Rows that are about to be replaced are not worth a look.
constexpr std::uint32_t MARGIN = 8;

std::uint32_t toTicks(std::uint64_t nanoseconds) {
    return static_cast<std::uint32_t>(nanoseconds / NS_PER_TICK);
}

std::uint32_t toTenths(std::uint64_t nanoseconds) {
    constexpr std::uint64_t NS_PER_TENTH = 100;
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(nanoseconds / NS_PER_TENTH, FrameRing::NOT_MEASURED - 1));
}

constexpr auto RELAXED = std::memory_order_relaxed;
// What is in a slot is stored after the word that says so, and read before it.
constexpr auto STORE = std::memory_order_release;
constexpr auto LOAD = std::memory_order_acquire;

/// Says that the slot of the next number is being written.
std::uint32_t begin(std::atomic<std::uint32_t>& begun) {
    const std::uint32_t number = begun.load(RELAXED);
    begun.store(number + 1, RELAXED);
    return number;
}

/// Whether a slot that has just been read was left alone meanwhile.
bool wasKept(std::uint32_t number, const std::atomic<std::uint32_t>& begun, std::uint32_t slots) {
    return begun.load(RELAXED) - number <= slots;
}

}  // namespace

FrameRing::FrameRing(std::size_t valuesPerRow)
    : mValuesPerRow(valuesPerRow),
      mFrames(new StoredFrame[FRAMES]),
      mValues(new std::atomic<double>[ROWS * valuesPerRow]) {}

std::uint32_t FrameRing::add(const Ostra::LoggedFrame& frame) {
    const std::uint32_t number = begin(mFramesBegun);
    StoredFrame& stored = mFrames[number % FRAMES];
    stored.words[0].store(toTicks(frame.end), STORE);
    stored.words[1].store(toTenths(frame.total), STORE);
    stored.words[2].store(toTenths(frame.swap), STORE);
    stored.words[3].store(
        frame.overlay < 0 ? NOT_MEASURED : toTenths(static_cast<std::uint64_t>(frame.overlay)), STORE);
    stored.gpu.store(NOT_MEASURED, STORE);
    mFramesAdded.store(number + 1, STORE);
    return number;
}

void FrameRing::setGpu(std::uint32_t number, std::uint64_t nanoseconds) {
    const std::uint32_t added = mFramesAdded.load(RELAXED);
    if (added - number - 1 < FRAMES) {
        mFrames[number % FRAMES].gpu.store(toTenths(nanoseconds), STORE);
    }
}

void FrameRing::addRow(const double* values, std::size_t count) {
    const std::uint32_t number = begin(mRowsBegun);
    mMoments[number % ROWS].store(now(), STORE);
    std::atomic<double>* const row = &mValues[(number % ROWS) * mValuesPerRow];
    for (std::size_t i = 0; i < mValuesPerRow; ++i) {
        row[i].store(i < count ? values[i] : std::numeric_limits<double>::quiet_NaN(), STORE);
    }
    mRowsAdded.store(number + 1, STORE);
}

std::uint32_t FrameRing::oldest() const {
    const std::uint32_t added = count();
    return added - std::min(added, FRAMES - MARGIN);
}

bool FrameRing::read(std::uint32_t number, Frame& frame) const {
    const StoredFrame& stored = mFrames[number % FRAMES];
    frame.end = stored.words[0].load(LOAD);
    frame.total = stored.words[1].load(LOAD);
    frame.swap = stored.words[2].load(LOAD);
    frame.overlay = stored.words[3].load(LOAD);
    frame.gpu = stored.gpu.load(LOAD);
    return wasKept(number, mFramesBegun, FRAMES);
}

bool FrameRing::readRow(std::uint32_t number, std::uint32_t& moment, std::vector<double>& values) const {
    moment = mMoments[number % ROWS].load(LOAD);
    const std::atomic<double>* const row = &mValues[(number % ROWS) * mValuesPerRow];
    std::transform(row, row + mValuesPerRow, values.begin(),
                   [](const auto& value) { return value.load(LOAD); });
    return wasKept(number, mRowsBegun, ROWS);
}

void FrameRing::readValues(std::uint32_t moment, std::uint32_t& row, std::vector<double>& values) const {
    const std::uint32_t added = mRowsAdded.load(LOAD);
    if (added - row > ROWS - MARGIN) {
        row = added - std::min(added, ROWS - MARGIN);
    }
    std::vector<double> next(mValuesPerRow);
    for (std::uint32_t begun = 0; row != added; ++row) {
        if (readRow(row, begun, next)) {
            if (ticksBetween(begun, moment) < 0) {
                return;
            }
            values.swap(next);
        }
    }
}

std::uint32_t FrameRing::now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_RAW, &time);
    return toTicks(static_cast<std::uint64_t>(time.tv_sec) * NS_PER_SECOND +
                   static_cast<std::uint64_t>(time.tv_nsec));
}

}  // namespace platform
