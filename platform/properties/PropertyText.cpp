#include "properties/PropertyText.h"

#include "io/EscapedText.h"
#include "properties/PropertyName.h"

#include <charconv>
#include <chrono>
#include <optional>

namespace platform {

namespace {

constexpr std::string_view HEADER = "kordanix-properties version=1";
constexpr std::string_view SERIAL_KEY = " serial=";
constexpr std::string_view COUNT_KEY = " lines=";

/// Takes a whole number off the front of the text; nothing when there is none or it does not fit.
std::optional<std::uint32_t> takeNumber(std::string_view& text) {
    std::uint32_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return number;
}

/// Takes `key` and the number after it off the front of the text.
std::optional<std::uint32_t> takeNumber(std::string_view& text, std::string_view key) {
    if (text.substr(0, key.size()) != key) {
        return std::nullopt;
    }
    text.remove_prefix(key.size());
    return takeNumber(text);
}

/// Takes a line off the front of the text and returns it without its end; nothing when the line has no end.
std::optional<std::string_view> takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return line;
}

bool parseProperty(std::string_view line, PropertyList& list) {
    const std::size_t nameEnd = line.find(' ');
    if (nameEnd == std::string_view::npos) {
        return false;
    }
    std::string name(line.substr(0, nameEnd));
    line.remove_prefix(nameEnd + 1);
    const auto serial = takeNumber(line);
    // An empty value leaves a blank at the end of the line, which some editors remove.
    if (!serial || *serial == 0 || (!line.empty() && line.front() != ' ')) {
        return false;
    }
    line.remove_prefix(line.empty() ? 0 : 1);
    auto value = unescapeText(line);
    return value && value->size() <= PROPERTY_VALUE_LENGTH_MAX && value->find('\0') == std::string::npos &&
           propertyNameError(name.c_str()).empty() && name.find('\0') == std::string::npos &&
           list.properties.emplace(std::move(name), Property{*std::move(value), *serial}).second;
}

/// The serial of the first write to a new file. It should differ from the serials of an earlier file that
/// somebody deleted, since others may still be waiting for its properties to change.
std::uint32_t firstSerial() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count() | 1);
}

}  // namespace

std::string parseProperties(std::string_view text, PropertyList& list) {
    list = {};
    std::string_view header = takeLine(text).value_or(std::string_view());
    if (header.substr(0, HEADER.size()) != HEADER) {
        return "does not begin with \"" + std::string(HEADER) + "\"";
    }
    header.remove_prefix(HEADER.size());
    const auto serial = takeNumber(header, SERIAL_KEY);
    const auto count = takeNumber(header, COUNT_KEY);
    if (!serial || *serial == 0 || !count || *count > PROPERTY_COUNT_MAX || !header.empty()) {
        return "has a damaged first line";
    }
    PropertyList all;
    all.serial = *serial;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto line = takeLine(text);
        if (!line) {
            return "was cut: it has " + std::to_string(i) + " of " + std::to_string(*count) + " properties";
        }
        if (!parseProperty(*line, all)) {
            return "is damaged in line " + std::to_string(i + 2);
        }
    }
    if (!text.empty()) {
        return "has more lines than the first one says";
    }
    list = std::move(all);
    return {};
}

std::string formatProperties(const PropertyList& list) {
    std::string text;
    text.append(HEADER).append(SERIAL_KEY).append(std::to_string(list.serial));
    text.append(COUNT_KEY).append(std::to_string(list.properties.size())).append("\n");
    for (const auto& [name, property] : list.properties) {
        text.append(name).append(" ").append(std::to_string(property.serial)).append(" ");
        text.append(escapeText(property.value)).append("\n");
    }
    return text;
}

std::string setProperty(PropertyList& list, const std::string& name, const std::string& value) {
    std::string error = propertyNameError(name.c_str());
    if (error.empty() && value.size() > PROPERTY_VALUE_LENGTH_MAX) {
        error = "the value has more than " + std::to_string(PROPERTY_VALUE_LENGTH_MAX) + " bytes";
    }
    if (!error.empty()) {
        return error;
    }
    const bool isNew = list.properties.find(name) == list.properties.end();
    if (!isNew && isReadOnlyName(name.c_str())) {
        return "the property is read-only and was written before";
    }
    if (isNew && list.properties.size() >= PROPERTY_COUNT_MAX) {
        return "there are " + std::to_string(PROPERTY_COUNT_MAX) + " properties already";
    }
    list.serial = list.serial == 0 ? firstSerial() : list.serial == UINT32_MAX ? 1 : list.serial + 1;
    list.properties[name] = {value, list.serial};
    return {};
}

}  // namespace platform
