#include "scene/TextFormat.h"

#include <charconv>
#include <cmath>

namespace scene {

const char* const NOT_AVAILABLE = "N/A";

namespace {

constexpr double MEGABYTE = 1024.0 * 1024.0;
constexpr double GIGABYTE = 1024.0 * MEGABYTE;

/// The font has no minus sign, so a negative number cannot be shown.
std::string print(Reading reading, int decimals, const char* unit = "") {
    if (!reading || !std::isfinite(*reading) || *reading < 0.0) {
        return NOT_AVAILABLE;
    }
    char digits[320];  // the largest double has 309 digits
    const auto result = std::to_chars(digits, digits + sizeof(digits), std::abs(*reading),
                                      std::chars_format::fixed, decimals);
    return std::string(digits, result.ptr).append(unit);
}

Reading scaled(Reading reading, double unit) {
    return reading ? Reading(*reading / unit) : reading;
}

}  // namespace

std::string formatRate(Reading framesPerSecond) {
    return print(framesPerSecond, 1);
}

std::string formatPercent(Reading percent) {
    return print(percent, 0, "%");
}

std::string formatWhole(Reading number) {
    return print(number, 0);
}

std::string formatMegahertz(Reading megahertz) {
    return print(megahertz, 0, "MHz");
}

std::string formatTemperature(Reading celsius) {
    return print(celsius, 0, "C");
}

std::string formatBytes(Reading bytes) {
    const double size = bytes.value_or(0.0);
    // The limits are those of the rounded text: 9.96 would print as "10.0MB".
    if (size < 9.95 * MEGABYTE) {
        return print(scaled(bytes, MEGABYTE), 1, "MB");
    }
    if (size < 999.5 * MEGABYTE) {
        return print(scaled(bytes, MEGABYTE), 0, "MB");
    }
    if (size < 99.95 * GIGABYTE) {
        return print(scaled(bytes, GIGABYTE), 1, "GB");
    }
    return print(scaled(bytes, GIGABYTE), 0, "GB");
}

}  // namespace scene
