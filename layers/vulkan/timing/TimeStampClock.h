#pragma once

#include <cstdint>

namespace vulkan {

/// What the time stamps of one family of queues count.
struct TimeStampClock {
    std::uint64_t mask = 0;  ///< they count modulo this + 1; 0: the family has none
    double period = 0.0;     ///< nanoseconds

    TimeStampClock() = default;
    TimeStampClock(std::uint32_t validBits, float periodNs)
        : mask(validBits >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << validBits) - 1), period(periodNs) {}

    std::uint64_t nanoseconds(std::uint64_t from, std::uint64_t to) const {
        const double time = static_cast<double>((to - from) & mask) * period;
        constexpr double LONGEST = 1e15;  // eleven days: no frame takes that
        return time >= 0.0 && time < LONGEST ? static_cast<std::uint64_t>(time) : 0;
    }
};

}  // namespace vulkan
