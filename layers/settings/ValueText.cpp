#include "settings/ValueText.h"

#include "properties/PropertyName.h"
#include "scene/ScaleText.h"
#include "settings/KeyChord.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace control {

namespace {

constexpr std::array<std::string_view, 8> POSITIONS = {"TOP_LEFT",      "TOP_CENTER",   "TOP_RIGHT",
                                                       "CENTER_LEFT",   "CENTER_RIGHT", "BOTTOM_LEFT",
                                                       "BOTTOM_CENTER", "BOTTOM_RIGHT"};
constexpr std::uint32_t OPAQUE = 0xFF000000;
constexpr std::uint32_t RGB_MASK = 0x00FFFFFF;
constexpr std::int64_t MAX_OPACITY = 255;

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

std::string toUpper(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return upper;
}

/// Converts the whole text to a number in the given base.
std::optional<std::int64_t> wholeNumber(std::string_view text, int base = 10) {
    if (base == 10 && text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

std::optional<std::string> numberBetween(std::string_view typed, std::int64_t low, std::int64_t high) {
    const auto number = wholeNumber(typed);
    return number && *number >= low && *number <= high ? std::optional(std::to_string(*number))
                                                       : std::nullopt;
}

std::optional<std::string> parseBoolean(std::string_view typed) {
    const std::string word = toUpper(typed);
    if (word == "TRUE" || word == "ON" || word == "YES") {
        return "true";
    }
    if (word == "FALSE" || word == "OFF" || word == "NO") {
        return "false";
    }
    return std::nullopt;
}

std::optional<std::string> parsePosition(std::string_view typed) {
    const auto* const found = std::find(POSITIONS.begin(), POSITIONS.end(), toUpper(typed));
    if (found != POSITIONS.end()) {
        return std::to_string(found - POSITIONS.begin());
    }
    return numberBetween(typed, 0, POSITIONS.size() - 1);
}

std::optional<std::string> parseColor(std::string_view typed) {
    if (typed.empty() || typed.front() != '#') {
        // Accepts the signed and the unsigned form of the 32 bits.
        const auto number = wholeNumber(typed);
        if (!number || *number < std::numeric_limits<std::int32_t>::min() ||
            *number > std::numeric_limits<std::uint32_t>::max()) {
            return std::nullopt;
        }
        return std::to_string(static_cast<std::uint32_t>(*number));
    }
    const std::string_view digits = typed.substr(1);
    const auto number = wholeNumber(digits, 16);
    if (!number || *number < 0 || digits.front() == '-' || (digits.size() != 6 && digits.size() != 8)) {
        return std::nullopt;
    }
    return std::to_string(static_cast<std::uint32_t>(*number) | (digits.size() == 6 ? OPAQUE : 0));
}

bool isReadableScale(std::string_view text) {
    return scene::parseScale(text).has_value();
}

std::optional<std::string> parseKey(std::string_view typed) {
    const TypedChord chord = readChord(typed);
    return chord.error.empty() ? std::optional(chord.text) : std::nullopt;
}

std::optional<std::string> parseText(std::string_view typed) {
    const bool fits =
        typed.size() <= platform::PROPERTY_VALUE_LENGTH_MAX && typed.find('\0') == std::string_view::npos;
    return fits ? std::optional<std::string>(typed) : std::nullopt;
}

/// Returns the 32 bits that the library reads from a text; nothing when it reads none.
std::optional<std::uint32_t> libraryNumber(const std::string& text) {
    std::intmax_t number = 0;
    if (std::sscanf(text.c_str(), "%jd", &number) != 1) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(number);
}

std::string displayNumber(PropertyType type, std::uint32_t number) {
    if (type == PropertyType::POSITION && number < POSITIONS.size()) {
        return std::string(POSITIONS[number]);
    }
    if (type == PropertyType::COLOR) {
        std::array<char, 8> text{};
        std::snprintf(text.data(), text.size(), "#%06" PRIX32, number & RGB_MASK);
        return text.data();
    }
    return std::to_string(static_cast<std::int32_t>(number));
}

}  // namespace

std::optional<std::string> toPropertyText(PropertyType type, std::string_view typed) {
    switch (type) {
        case PropertyType::BOOLEAN:
            return parseBoolean(trimmed(typed));
        case PropertyType::POSITION:
            return parsePosition(trimmed(typed));
        case PropertyType::COLOR:
            return parseColor(trimmed(typed));
        case PropertyType::OPACITY:
            return numberBetween(trimmed(typed), 0, MAX_OPACITY);
        case PropertyType::API:
            return numberBetween(trimmed(typed), std::numeric_limits<std::int32_t>::min(),
                                 std::numeric_limits<std::int32_t>::max());
        case PropertyType::SCALE:
            return isReadableScale(trimmed(typed)) ? std::optional<std::string>(trimmed(typed))
                                                   : std::nullopt;
        case PropertyType::KEY:
            return parseKey(typed);
        case PropertyType::TEXT:
        case PropertyType::GENERATION:
            break;
    }
    return parseText(typed);
}

std::string_view expectedText(PropertyType type) {
    switch (type) {
        case PropertyType::BOOLEAN:
            return "true or false (or on, off, yes, no)";
        case PropertyType::POSITION:
            return "TOP_LEFT, TOP_CENTER, TOP_RIGHT, CENTER_LEFT, CENTER_RIGHT, BOTTOM_LEFT, BOTTOM_CENTER, "
                   "BOTTOM_RIGHT, or their number, 0 to 7";
        case PropertyType::COLOR:
            return "#RRGGBB, #AARRGGBB (the alpha is ignored) or its 32 bits as a decimal number";
        case PropertyType::OPACITY:
            return "a whole number, 0 (clear) to 255 (opaque)";
        case PropertyType::API:
            return "a whole number of at most 32 bits";
        case PropertyType::SCALE:
            return "a number from 0.5 to 1.8, with at most two decimals";
        case PropertyType::KEY:
            return "X's name of a key, with those of modifiers before it, such as Shift_R+F12, or none";
        case PropertyType::TEXT:
        case PropertyType::GENERATION:
            break;
    }
    return "a text of at most 4096 bytes";
}

std::string toDisplayText(const Property& property, const std::optional<std::string>& text) {
    switch (property.type) {
        case PropertyType::BOOLEAN:
            return text && (*text == "true" || *text == "false") ? *text : defaultText(property);
        case PropertyType::SCALE:
            return text && isReadableScale(*text) ? *text : defaultText(property);
        case PropertyType::KEY:
            return text && parseKey(*text) ? *parseKey(*text) : defaultText(property);
        case PropertyType::TEXT:
        case PropertyType::GENERATION:
            return text.value_or(std::string());
        default:
            break;
    }
    const auto number = text ? libraryNumber(*text) : std::nullopt;
    return displayNumber(property.type, number.value_or(property.defaultValue));
}

bool isReadable(const Property& property, const std::string& text) {
    switch (property.type) {
        case PropertyType::BOOLEAN:
            return text == "true" || text == "false";
        case PropertyType::SCALE:
            return isReadableScale(text);
        case PropertyType::KEY:
            return parseKey(text).has_value();
        case PropertyType::TEXT:
        case PropertyType::GENERATION:
            return true;
        default:
            // The library reads numbers as toPropertyText() writes them, but neither names nor #.
            return wholeNumber(trimmed(text)).has_value() && toPropertyText(property.type, text).has_value();
    }
}

}  // namespace control
