#pragma once

#include <optional>
#include <string>

/// The properties of this user, as the platform keeps them.
namespace control {

/// The property's text; nothing when it is not set. A property cannot be taken away again, so that one with
/// an empty text counts as not set.
std::optional<std::string> readProperty(const std::string& name);

/// Publishes what was set: writes the generation property, with the number after the one it holds. Returns an
/// empty text, or what went wrong.
std::string publish();

}  // namespace control
