#include "scene/TextFormat.h"

#include <cmath>
#include <cstdio>

namespace scene {

const char* const NOT_AVAILABLE = "N/A";

namespace {

constexpr double MEGABYTE = 1024.0 * 1024.0;
constexpr double GIGABYTE = 1024.0 * MEGABYTE;

std::string print(const char* format, Reading reading) {
    if (!reading || !std::isfinite(*reading)) {
        return NOT_AVAILABLE;
    }
    // The longest text is a finite double with one decimal and a unit.
    char text[400];
    std::snprintf(text, sizeof(text), format, *reading);
    return text;
}

Reading scaled(Reading reading, double unit) {
    return reading ? Reading(*reading / unit) : reading;
}

}  // namespace

std::string formatRate(Reading framesPerSecond) {
    return print("%.1f", framesPerSecond);
}

std::string formatPercent(Reading percent) {
    return print("%.0f%%", percent);
}

std::string formatWhole(Reading number) {
    return print("%.0f", number);
}

std::string formatMegahertz(Reading megahertz) {
    return print("%.0fMHz", megahertz);
}

std::string formatTemperature(Reading celsius) {
    return print("%.0fC", celsius);
}

std::string formatBytes(Reading bytes) {
    const double size = bytes.value_or(0.0);
    // The limits are those of the rounded text: 9.96 would print as "10.0MB".
    if (size < 9.95 * MEGABYTE) {
        return print("%.1fMB", scaled(bytes, MEGABYTE));
    }
    if (size < 999.5 * MEGABYTE) {
        return print("%.0fMB", scaled(bytes, MEGABYTE));
    }
    if (size < 99.95 * GIGABYTE) {
        return print("%.1fGB", scaled(bytes, GIGABYTE));
    }
    return print("%.0fGB", scaled(bytes, GIGABYTE));
}

}  // namespace scene
