#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string_view>

namespace control {

/// Tells the user something on `err`, as the line "kordanixctl: TEXT".
void printDiagnostic(std::string_view text, std::ostream& err);

/// Prints why something failed, and returns what the verb should return.
ExitCode fail(std::string_view error, std::ostream& err, ExitCode code = FAILURE);

/// Calls fail() unless the error is empty; then returns SUCCESS.
ExitCode failUnlessEmpty(std::string_view error, std::ostream& err);

}  // namespace control
