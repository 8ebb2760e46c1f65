#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>

/// Verbs that print properties.
namespace control {

/// Fails, and says why on `err`, when the user's properties can be neither read nor written.
ExitCode checkProperties(std::ostream& err);

/// Prints the text of a property; of one of the library's that is not set, its default. Fails for any other
/// that is not set.
ExitCode printProperty(const std::string& name, std::ostream& out, std::ostream& err);

/// Prints the library's properties that are set, a line each: name and text.
ExitCode printSetProperties(std::ostream& out);

/// Prints every property of the library: its value, its default, what it means.
ExitCode listProperties(std::ostream& out);

/// The same as a JSON array, with the texts as the library reads them.
ExitCode listPropertiesAsJson(std::ostream& out);

}  // namespace control
