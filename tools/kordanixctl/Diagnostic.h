#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string_view>

namespace control {

/// Says on `err` what a user should know, as the line "kordanixctl: TEXT".
void printDiagnostic(std::string_view text, std::ostream& err);

/// Says why something could not be done, and returns what the verb returns then.
ExitCode fail(std::string_view error, std::ostream& err, ExitCode code = FAILURE);

/// Fails unless the error is empty.
ExitCode failUnlessEmpty(std::string_view error, std::ostream& err);

}  // namespace control
