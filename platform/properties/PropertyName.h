#pragma once

#include <cstddef>
#include <string>

namespace platform {

/// The longest name, in bytes.
constexpr std::size_t PROPERTY_NAME_LENGTH_MAX = 127;

/// The longest value on the host, in bytes; longer than bionic's, for names that programs make of their whole
/// command line.
constexpr std::size_t PROPERTY_VALUE_LENGTH_MAX = 4096;

/// What is wrong with a property's name, in plain words; empty for a name that bionic would accept:
/// letters, digits and "@:_.-", neither starting nor ending with a dot, without two dots in a row.
/// Null and names over PROPERTY_NAME_LENGTH_MAX are refused too.
std::string propertyNameError(const char* name);

/// Properties whose names begin with "ro." can be written only once.
bool isReadOnlyName(const char* name);

}  // namespace platform
