#pragma once

#include <cstddef>
#include <string>

namespace platform {

/// The longest name, in bytes.
constexpr std::size_t PROPERTY_NAME_LENGTH_MAX = 127;

/// The longest value on the host, in bytes. Longer than bionic's, because some programs' names are their
/// whole command line.
constexpr std::size_t PROPERTY_VALUE_LENGTH_MAX = 4096;

/// Says what is wrong with a property's name, in plain words; empty for a name that bionic would accept:
/// letters, digits and "@:_.-", neither starting nor ending with a dot, without two dots in a row. Refuses
/// null and names longer than PROPERTY_NAME_LENGTH_MAX too.
std::string propertyNameError(const char* name);

/// Whether the name begins with "ro.": such a property can be written only once.
bool isReadOnlyName(const char* name);

}  // namespace platform
