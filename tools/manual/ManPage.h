#pragma once

#include "manual/Description.h"

#include <iosfwd>

namespace manual {

/// Writes the page of kordanixctl in section 1, in the language of man(7), with its verbs, the library's
/// properties and the variables of its environment.
void writeManPage(const Description& program, std::ostream& out);

}  // namespace manual
