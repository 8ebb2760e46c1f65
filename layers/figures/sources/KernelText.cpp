#include "figures/sources/KernelText.h"

#include <algorithm>
#include <charconv>

namespace sources {

namespace {

constexpr std::string_view BLANKS = " \t\r\n\v\f";
constexpr double BYTES_PER_KB = 1024.0;

}  // namespace

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(BLANKS);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(BLANKS) + 1 - first);
}

std::optional<std::uint64_t> takeNumber(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    std::uint64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return number;
}

std::optional<std::int64_t> leadingInteger(std::string_view text) {
    text = trimmed(text);
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::optional<std::string_view> takeLine(std::string_view& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

std::optional<double> kilobytes(std::string_view text, std::string_view name) {
    while (const auto line = takeLine(text)) {
        if (line->substr(0, name.size()) == name && line->size() > name.size() &&
            (*line)[name.size()] == ':') {
            std::string_view rest = line->substr(name.size() + 1);
            const auto number = takeNumber(rest);
            return number ? std::optional(static_cast<double>(*number) * BYTES_PER_KB) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::uint64_t countRanges(std::string_view text) {
    std::uint64_t count = 0;
    while (const auto first = takeNumber(text)) {
        std::uint64_t last = *first;
        if (!text.empty() && text.front() == '-') {
            text.remove_prefix(1);
            last = takeNumber(text).value_or(*first);
        }
        count += last >= *first && last - *first < 65536 ? last - *first + 1 : 0;
        if (text.empty() || text.front() != ',') {
            break;
        }
        text.remove_prefix(1);
    }
    return count;
}

std::string readWord(const FileTree& tree, const std::string& path) {
    const FileText file = tree.read(path);
    std::string_view text = file.text;
    return std::string(trimmed(takeLine(text).value_or(std::string_view())));
}

Value readScaled(const FileTree& tree, const std::string& path, double scale) {
    const FileText file = tree.read(path);
    if (file.error != 0) {
        return Value::none(reasonOf(file.error), path);
    }
    const auto number = leadingInteger(file.text);
    return number ? Value::of(static_cast<double>(*number) * scale, path)
                  : Value::none(Reason::MALFORMED, path);
}

}  // namespace sources
