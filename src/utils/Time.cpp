#include "utils/Time.h"

#include <chrono>

namespace utils {

namespace {

std::int64_t microsecondsSinceEpoch() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count();
}

}  // namespace

std::uint32_t getUtcTime_usec() {
    return static_cast<std::uint32_t>(microsecondsSinceEpoch());
}

std::uint32_t getUtcTime_msec() {
    return static_cast<std::uint32_t>(microsecondsSinceEpoch() / 1000);
}

std::uint32_t getUtcTimes_sec() {
    return static_cast<std::uint32_t>(microsecondsSinceEpoch() / 1000000);
}

}  // namespace utils
