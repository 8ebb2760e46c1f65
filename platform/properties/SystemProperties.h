#pragma once

#include <string>
#include <utility>
#include <vector>

#include "properties/RuntimeDirectory.h"

namespace platform {

/// What the host offers beyond bionic's own functions, for tools. Any thread.

/// Writes a property as __system_property_set does, and says what went wrong; empty when it was written.
/// There is no deleting, as on Android: to take a property back to its default, write the empty text
/// (which every reader of switches, numbers and names takes for "not set") and publish.
std::string setProperty(const char* name, const char* value);

/// The same for several, of names and values: all are written at once, in that order, or none.
std::string setProperties(const std::vector<std::pair<std::string, std::string>>& properties);

/// Why properties can be neither read nor written, in plain words: no runtime directory, a damaged or
/// foreign file. Looks at the file anew at every call. Empty when all is well, also when no property was
/// ever written and so there is no file yet.
std::string propertyAreaError();

}  // namespace platform
