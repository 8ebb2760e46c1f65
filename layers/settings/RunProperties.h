#pragma once

#include "runs/PropertyTexts.h"

#include <string>

namespace control {

using platform::PropertyTexts;

/// Changes and publishes the properties of the run in `folder`, which began with `before` and is to begin
/// with `now`: what somebody has changed in it meanwhile stays. Returns what went wrong, in plain words.
std::string changeBeginning(const std::string& folder, const PropertyTexts& before, const PropertyTexts& now);

}  // namespace control
