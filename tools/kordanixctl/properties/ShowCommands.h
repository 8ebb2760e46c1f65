#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>

/// Verbs that print properties.
namespace control {

/// Fails, and says why on `err`, when the user's properties can be neither read nor written.
ExitCode checkProperties(std::ostream& err);

/// Prints a property's text, or the default when a property of the library is not set. Fails when any other
/// property is not set.
ExitCode printProperty(const std::string& name, std::ostream& out, std::ostream& err);

/// Prints the name and text of each of the library's properties that is set, one a line.
ExitCode printSetProperties(std::ostream& out);

/// Prints every property of the library: its value, its default and its meaning.
ExitCode listProperties(std::ostream& out);

/// Does the same as a JSON array, with the texts as the library reads them.
ExitCode listPropertiesAsJson(std::ostream& out);

}  // namespace control
