#include "scene/NoticeText.h"

#include <time.h>

#include <algorithm>
#include <charconv>
#include <system_error>

namespace scene {

namespace {

/// A line that is still legible on a small surface.
constexpr std::size_t MAX_LENGTH = 48;

bool hasGlyph(char symbol) {
    constexpr std::string_view OTHERS = "#%(),./:";
    return (symbol >= '0' && symbol <= '9') || (symbol >= 'A' && symbol <= 'Z') ||
           (symbol >= 'a' && symbol <= 'z') || OTHERS.find(symbol) != std::string_view::npos;
}

}  // namespace

std::uint64_t noticeTime() {
    constexpr std::uint64_t NS_PER_SECOND = 1000000000;
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_RAW, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * NS_PER_SECOND + static_cast<std::uint64_t>(time.tv_nsec);
}

std::string encodeNotice(std::string_view text) {
    std::string line(text.substr(0, MAX_LENGTH));
    std::replace_if(
        line.begin(), line.end(), [](char symbol) { return !hasGlyph(symbol); }, ' ');
    return std::to_string(noticeTime()) + ' ' + line;
}

std::optional<NoticeText> decodeNotice(std::string_view value) {
    NoticeText notice;
    const char* const end = value.data() + value.size();
    const auto number = std::from_chars(value.data(), end, notice.writtenAt);
    if (number.ec != std::errc() || number.ptr == end || *number.ptr != ' ' ||
        end - number.ptr - 1 > static_cast<std::ptrdiff_t>(MAX_LENGTH)) {
        return std::nullopt;
    }
    notice.text.assign(number.ptr + 1, end);
    const auto isDrawn = [](char symbol) { return symbol == ' ' || hasGlyph(symbol); };
    return std::all_of(notice.text.begin(), notice.text.end(), isDrawn) ? std::optional(std::move(notice))
                                                                        : std::nullopt;
}

}  // namespace scene
