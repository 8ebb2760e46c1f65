#pragma once

#include "dumps/Dump.h"

#include <string>
#include <string_view>

namespace dumps {

/// The texts of a dump's files, whatever their bytes. Each returns an empty text, or why the text as
/// a whole cannot be read: no first row, or a column without which nothing makes sense. A row is malformed,
/// and skipped, when it has another number of fields than the first one, when a field holds something other
/// than the number that belongs there, or when frame numbers do not rise. The frames come first.
std::string parseFrames(std::string_view text, Dump& dump);
std::string parsePasses(std::string_view text, Dump& dump);

/// What the dump is of, from about.csv, which a dump need not have.
void parseSubjects(std::string_view text, Dump& dump);

}  // namespace dumps
