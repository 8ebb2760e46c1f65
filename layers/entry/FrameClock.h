#pragma once

#include <time.h>

#include <cstdint>

namespace entry {

/// Milliseconds of a clock that is cheap to read and only counts on.
inline std::int64_t nowMs() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1000000;
}

}  // namespace entry
