#pragma once

#include <optional>
#include <string>

/// The properties of this user, as the platform keeps them.
namespace control {

/// The property's text; nothing when it is not set. A property cannot be taken away again, so that one with
/// an empty text counts as not set.
std::optional<std::string> readProperty(const std::string& name);

/// What the generation property is to be written with, to publish: the number after the one it holds.
std::string nextGeneration();

/// Publishes what was set. Returns what went wrong, in plain words.
std::string publish();

}  // namespace control
