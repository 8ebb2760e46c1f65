#pragma once

#include "ExitCode.h"
#include "settings/Assignment.h"

#include <ostream>
#include <string>
#include <vector>

/// Verbs that write properties. Each says on `err` what went wrong.
namespace control {

/// Writes the properties and publishes them: all at once, or none.
ExitCode writeAssignments(const std::vector<Assignment>& assignments, bool isPublished, std::ostream& err);

struct SetOptions {
    bool isForced = false;  ///< also write names that the library does not know
    bool isPublished = true;
};

/// Writes properties from words that are names and values in turns, then publishes them together. Nothing is
/// written unless every name and value is right.
ExitCode setProperties(const std::vector<std::string>& words, const SetOptions& options, std::ostream& err);

/// Publishes what others have set.
ExitCode publishProperties(std::ostream& err);

/// Takes the library's properties back to their defaults, or to what the run began with, and publishes that;
/// with `keepsControl`, only the settings and not the properties that say where the overlay is shown.
ExitCode resetProperties(bool keepsControl, std::ostream& err);

}  // namespace control
