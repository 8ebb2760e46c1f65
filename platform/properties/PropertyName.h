#pragma once

#include <cstddef>
#include <string>

namespace platform {

/// The longest name that the area has room for, in bytes.
constexpr std::size_t PROPERTY_NAME_LENGTH_MAX = 127;

/// What is wrong with a property's name, in plain words; empty for a name that bionic would accept:
/// letters, digits and "@:_.-", neither starting nor ending with a dot, without two dots in a row.
/// Null and names over PROPERTY_NAME_LENGTH_MAX are refused too.
std::string propertyNameError(const char* name);

/// Properties whose names begin with "ro." can be written only once.
bool isReadOnlyName(const char* name);

}  // namespace platform
