#pragma once

#include "settings/Assignment.h"

#include <optional>
#include <string>
#include <vector>

/// What a run began with, which 'kordanixctl reset' returns to: the file "properties.begin" in its folder.
namespace control {

/// Returns what went wrong, or an empty text.
std::string writeInitialProperties(const std::string& folder, const std::vector<Assignment>& assignments);

/// Nothing when the folder is not a run's.
std::optional<std::vector<Assignment>> readInitialProperties(const std::string& folder);

}  // namespace control
