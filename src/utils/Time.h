#pragma once

#include "utils/Export.h"

#include <cstdint>

namespace utils {

/// Readings of the wall clock: the low 32 bits of the time since the Unix epoch, in microseconds (wraps about
/// every 71.6 minutes), milliseconds and seconds. Compare readings by unsigned 32-bit subtraction only, which
/// stays right across a wrap. Any thread.
KORDANIX_EXPORT std::uint32_t getUtcTime_usec();
KORDANIX_EXPORT std::uint32_t getUtcTime_msec();
KORDANIX_EXPORT std::uint32_t getUtcTimes_sec();

}  // namespace utils
