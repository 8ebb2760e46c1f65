#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

/// Properties as text, readable for people too. The first line says what the text is, how many properties
/// follow, and the serial of the last write. Then each property has a line, sorted by name: the name, the
/// serial of its last write and its value, escaped as in io/EscapedText.h. One counter gives all serials, so
/// each stands for one write.
namespace platform {

constexpr std::size_t PROPERTY_COUNT_MAX = 1000;
constexpr std::size_t PROPERTY_TEXT_SIZE_MAX = std::size_t{1024} * 1024;

struct Property {
    std::string value;
    std::uint32_t serial = 0;  ///< never 0 for a written property
};

struct PropertyList {
    std::map<std::string, Property, std::less<>> properties;
    std::uint32_t serial = 0;  ///< of the last write of any property; 0 before the first one
};

/// Reads the properties in a text. Returns what is wrong with it, in plain words; then `list` is empty.
/// Accepts any bytes as input, and refuses a text that was cut anywhere.
std::string parseProperties(std::string_view text, PropertyList& list);

std::string formatProperties(const PropertyList& list);

/// Sets a property in the list. Returns in plain words why it did not: the name or the value is not allowed,
/// the property is read-only and exists, or the list is full.
std::string setProperty(PropertyList& list, const std::string& name, const std::string& value);

}  // namespace platform
