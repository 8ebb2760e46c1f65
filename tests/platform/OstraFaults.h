#pragma once

#include <atomic>

/// What goes wrong on threads other than the main one.
namespace faults {

/// Files that cannot be written: 0 for none, an error number, or HANGS for writes that end only when this
/// changes.
inline std::atomic<int> writeFault{0};
constexpr int HANGS = -1;

/// How many of the next allocations fail.
inline std::atomic<int> failingAllocations{0};

}  // namespace faults
