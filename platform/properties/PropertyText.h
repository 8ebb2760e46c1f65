#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

/// Properties as text, for people too: a first line that says what it is, how many properties follow, and the
/// serial of the last write; then a line for each, sorted by name: the name, the serial of its last write and
/// its value, escaped as in io/EscapedText.h. All serials are of one counter, so that each stands for one
/// write.
namespace platform {

constexpr std::size_t PROPERTY_COUNT_MAX = 1000;
constexpr std::size_t PROPERTY_TEXT_SIZE_MAX = std::size_t{1024} * 1024;

struct Property {
    std::string value;
    std::uint32_t serial = 0;  ///< never 0 for one that was written
};

struct PropertyList {
    std::map<std::string, Property, std::less<>> properties;
    std::uint32_t serial = 0;  ///< of the last write of any property; 0: none was ever written
};

/// Takes over the properties in the text. Returns what is wrong with it, in plain words; then `list` is
/// empty. Any bytes will do; one that was cut anywhere is refused.
std::string parseProperties(std::string_view text, PropertyList& list);

std::string formatProperties(const PropertyList& list);

/// Writes a property in the list. Returns what is wrong, in plain words: with the name or the value, a
/// read-only property that exists, or a list that is full.
std::string setProperty(PropertyList& list, const std::string& name, const std::string& value);

}  // namespace platform
