#pragma once

#include "properties/RuntimeDirectory.h"

#include <string>
#include <utility>
#include <vector>

namespace platform {

/// What the host offers beyond bionic's own functions, for tools. Any thread.

/// Writes a property as __system_property_set does. Returns what went wrong; empty when it was written. Like
/// Android, it cannot delete: to return a property to its default, write the empty text (which every reader
/// of switches, numbers and names takes for "not set") and publish.
std::string setProperty(const char* name, const char* value);

/// Writes several properties, given as names and values: all at once, in that order, or none.
std::string setProperties(const std::vector<std::pair<std::string, std::string>>& properties);

/// Says why properties can be neither read nor written, in plain words: no runtime directory, a damaged or
/// foreign file. Looks at the file at every call. Empty when all is well, and also when there is no file
/// because nobody has written a property yet.
std::string propertyAreaError();

}  // namespace platform
