#pragma once

#include "utils/Export.h"

#include <cstdint>

namespace utils {

/// The wall clock: the low 32 bits of the time since the Unix epoch, in microseconds (wraps about every 71.6
/// minutes), milliseconds and seconds. Compare readings only by unsigned 32-bit subtraction, which is right
/// across a wrap. Any thread.
KORDANIX_EXPORT std::uint32_t getUtcTime_usec();
KORDANIX_EXPORT std::uint32_t getUtcTime_msec();
KORDANIX_EXPORT std::uint32_t getUtcTimes_sec();

}  // namespace utils
