#pragma once

#include "properties/RunSettings.h"

#include <optional>
#include <string>

/// What a run began with, in its folder: the file "properties.begin", which 'kordanixctl reset' returns to,
/// and "properties.default", which the default preset does.
namespace control {

/// Returns what went wrong, or an empty text.
std::string writeInitialProperties(const std::string& folder, const RunSettings& settings);

/// Nothing when the folder is not a run's.
std::optional<PropertyTexts> readInitialProperties(const std::string& folder);

/// What the default preset returns to; nothing where no program was started.
PropertyTexts readDefaultProperties(const std::string& folder);

}  // namespace control
