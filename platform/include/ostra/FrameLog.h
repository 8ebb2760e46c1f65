#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Tells the companion library of every frame, for logs of frame times that somebody asks for while the
/// program runs. Only the host's companion library has these functions; they are weak, so with another
/// companion library they are null. One thread at a time; after the first call of each none allocates, waits
/// or makes a system call.
namespace Ostra {

/// One frame, in nanoseconds.
struct LoggedFrame {
    std::uint64_t end = 0;     ///< of its swap, by CLOCK_MONOTONIC_RAW
    std::uint64_t total = 0;   ///< from the end of the swap before it
    std::uint64_t swap = 0;    ///< in the application's real swap call
    std::int64_t overlay = 0;  ///< in the layer; negative where that is not known
};

/// Names the columns behind those of the frames. The first call counts; the texts must live as long as the
/// process.
__attribute__((weak)) void setLogColumns(const std::vector<const char*>& names);

/// The values of those columns, in the order of their names, from now on; a NaN leaves a field empty, and so
/// does a count that is too small.
__attribute__((weak)) void setLogValues(const double* values, std::size_t count);

/// Adds a frame. Returns its number, for setLoggedGpuTime().
__attribute__((weak)) std::uint32_t logFrame(const LoggedFrame& frame);

/// How long the GPU worked on a frame, which becomes known some frames later.
__attribute__((weak)) void setLoggedGpuTime(std::uint32_t frame, std::uint64_t nanoseconds);

/// Whether a log is being written, so that the GPU's times are wanted.
__attribute__((weak)) bool isLogging();

}  // namespace Ostra
