#pragma once

#include <optional>
#include <string>

/// This user's properties, through the platform.
namespace control {

/// Returns the property's text; nothing when it is not set. An empty text counts as not set, since a property
/// cannot be deleted.
std::optional<std::string> readProperty(const std::string& name);

/// Returns the generation after the one with this text.
std::string generationAfter(const std::string& last);

/// Returns the text that the next publication writes to the generation property: the number after the present
/// one.
std::string nextGeneration();

/// Publishes what was set. Returns what went wrong, in plain words.
std::string publish();

}  // namespace control
