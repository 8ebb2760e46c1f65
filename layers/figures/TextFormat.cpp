#include "figures/TextFormat.h"

#include "figures/Catalogue.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace figures {

const char* const NOT_AVAILABLE = "N/A";

namespace {

constexpr double MEGABYTE = 1024.0 * 1024.0;
constexpr double GIGABYTE = 1024.0 * MEGABYTE;

}  // namespace

std::string format(const Figure& figure, const Reading& reading) {
    return figure.format.kind == Kind::MEMORY
               ? formatBytes(reading)
               : formatNumber(reading, figure.format.decimals,
                              reading.suffix() != nullptr ? reading.suffix() : figure.format.suffix);
}

std::string formatWithTop(const Figure& figure, const Reading& reading, double top) {
    const auto unitAt = [](const std::string& text) {
        const std::size_t last = text.find_last_of("0123456789");
        return last == std::string::npos ? text.size() : last + 1;
    };
    std::string value = format(figure, reading);
    const std::string scale = format(figure, top);
    const std::size_t unit = unitAt(value);
    if (value.compare(unit, std::string::npos, scale, unitAt(scale), std::string::npos) == 0) {
        value.resize(unit);
    }
    return value + '/' + scale;
}

std::string formatNumber(const Reading& reading, int decimals, const char* suffix) {
    // The font has no minus sign.
    if (!reading || !std::isfinite(*reading) || *reading < 0.0) {
        return NOT_AVAILABLE;
    }
    constexpr double LONG = 999.95;
    if (*reading >= LONG) {
        decimals = 0;
    }
    // By hand: in a layer with a C++ library of its own, std::to_chars for this comes with 100 KB of tables.
    std::uint64_t ones = 1;
    for (int i = 0; i < decimals; ++i) {
        ones *= 10;
    }
    const double rounded = std::floor(std::abs(*reading) * static_cast<double>(ones) + 0.5);
    constexpr double LARGEST = 1e19;
    if (rounded >= LARGEST) {
        char digits[320];  // the largest double has 309
        std::snprintf(digits, sizeof(digits), "%.0f", rounded);
        return std::string(digits).append(suffix);
    }
    const auto number = static_cast<std::uint64_t>(rounded);
    std::string text = std::to_string(number / ones);
    if (decimals > 0) {
        const std::string fraction = std::to_string(number % ones);
        text += '.';
        text.append(static_cast<std::size_t>(decimals) - fraction.size(), '0').append(fraction);
    }
    return text.append(suffix);
}

std::string formatBytes(const Reading& bytes) {
    const auto formatIn = [&bytes](double unit, int decimals, const char* suffix) {
        return formatNumber(bytes ? Reading(*bytes / unit) : bytes, decimals, suffix);
    };
    const double size = bytes.value_or(0.0);
    // The limits are those of the rounded text: 9.96 would print as "10.0MB".
    if (size < 9.95 * MEGABYTE) {
        return formatIn(MEGABYTE, 1, "MB");
    }
    if (size < 999.5 * MEGABYTE) {
        return formatIn(MEGABYTE, 0, "MB");
    }
    if (size < 99.95 * GIGABYTE) {
        return formatIn(GIGABYTE, 1, "GB");
    }
    return formatIn(GIGABYTE, 0, "GB");
}

}  // namespace figures
