#pragma once

#include "settings/PropertyTable.h"

#include <map>
#include <string>
#include <string_view>

/// The text of a profile, as we write it.
namespace control {

/// Whether a profile that we write has lines for it: what the overlay shows, but not where, whether and how.
bool isSaved(const Property& property);

/// Returns `old`, the text of a profile or nothing, with lines for exactly these values, by short name and as
/// people write them. Keeps comments, wrong lines, lines for what isSaved() does not mean, and their order;
/// new lines come at the end.
std::string updateProfile(std::string_view old, std::map<std::string_view, std::string> values);

/// A profile to begin with: says how its lines look, with a comment for every property.
std::string profileTemplate(const std::string& name);

}  // namespace control
