#pragma once

#include "settings/Assignment.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Arrangements of the overlay to choose from: which widgets and figures it shows. A preset governs the
/// switches of the widgets and what comes with them, and leaves everything else alone, such as colours.
namespace control {

/// In a run's properties: the preset that was chosen last. Not set: "default".
constexpr const char* PRESET_PROPERTY = "kordanix.run.preset";

inline constexpr std::string_view DEFAULT_PRESET = "default";

/// The presets' names, in the order in which they follow each other.
const std::vector<std::string>& presetNames();

/// Returns an empty text, or that there is no such preset, with those that there are.
std::string presetError(const std::string& name);

/// The preset that follows the one of this name; an empty name stands for the default one.
std::string presetAfter(const std::string& name);

/// What a preset sets: every property that presets govern, and PRESET_PROPERTY. What it says nothing about
/// has the text it has in `base`, by full name, or none. A text that is the library's own default is left out
/// too, so that it does not count as set by hand. The name must be one of a preset.
std::vector<Assignment> presetAssignments(const std::string& name,
                                          const std::map<std::string, std::string>& base);

}  // namespace control
