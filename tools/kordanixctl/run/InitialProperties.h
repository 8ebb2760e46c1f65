#pragma once

#include "settings/Assignment.h"

#include <optional>
#include <string>
#include <vector>

/// What a run began with, for 'kordanixctl reset' to return to: the file "properties.begin" in its folder.
namespace control {

/// Returns what went wrong, or nothing.
std::string writeInitialProperties(const std::string& folder, const std::vector<Assignment>& assignments);

/// Nothing when the folder is not that of a run.
std::optional<std::vector<Assignment>> readInitialProperties(const std::string& folder);

}  // namespace control
