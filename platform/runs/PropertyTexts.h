#pragma once

#include <map>
#include <string>

namespace platform {

/// Properties by their full names, and their texts.
using PropertyTexts = std::map<std::string, std::string>;

/// Writes them to a file of a run, such as INITIAL_PROPERTIES, a name and a value a line. Returns what went
/// wrong, in plain words.
std::string writePropertyTexts(const std::string& path, const PropertyTexts& texts);

}  // namespace platform
