#pragma once

#include "dumps/Dump.h"

#include <string>
#include <string_view>

namespace dumps {

/// Reads frames.csv, passes.csv and about.csv of a dump's folder as far as they go. Returns an empty text, or
/// why there is nothing to be read: without a whole frame there is no dump, without render passes there still
/// is. A file that is not a regular one, or larger than 1 GiB, is not read.
std::string readDump(const std::string& folder, Dump& dump);

/// Reads a log, which is a file in the form of frames.csv; a folder stands for the dump in it, or else for
/// the newest log. `folder` of the result is the path that was read. Returns an empty text, or why there is
/// nothing to be read.
std::string readLog(const std::string& path, Dump& dump);

/// The parts of readDump(), for texts in memory and any bytes. Each returns an empty text, or why the text as
/// a whole cannot be read: no first row, or a column without which nothing makes sense. A row is malformed,
/// and skipped, when it has another number of fields than the first one, when a field holds something other
/// than the number that belongs there, or when frame numbers do not rise. The frames come first.
std::string parseFrames(std::string_view text, Dump& dump);
std::string parsePasses(std::string_view text, Dump& dump);

/// What the dump is of, from about.csv, which a dump need not have.
void parseSubjects(std::string_view text, Dump& dump);

/// What was left out in reading, in sentences for people; empty when the dump was whole.
std::string describeLosses(const Dump& dump);

}  // namespace dumps
