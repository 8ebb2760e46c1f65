#pragma once

#include "ExitCode.h"
#include "settings/Assignment.h"

#include <ostream>
#include <string>
#include <vector>

/// Verbs that write properties. Each says on `err` what went wrong.
namespace control {

/// Writes the properties and publishes them: all at once, or none. Refuses
/// to give one key two things to do.
ExitCode writeAssignments(const std::vector<Assignment>& assignments, bool isPublished, std::ostream& err);

struct SetOptions {
    bool isForced = false;  ///< also write names that the library does not know
    bool isPublished = true;
};

/// Takes alternating names and values, writes the properties and publishes them together. Writes nothing
/// unless every name and value is valid.
ExitCode setProperties(const std::vector<std::string>& words, const SetOptions& options, std::ostream& err);

/// Publishes what others have written.
ExitCode publishProperties(std::ostream& err);

/// Returns the library's properties to their defaults, or to what the run began with, and publishes them.
/// With `keepsControl`, only the settings, not the properties that say where the overlay is shown.
ExitCode resetProperties(bool keepsControl, std::ostream& err);

}  // namespace control
