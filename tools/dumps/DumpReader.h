#pragma once

#include "dumps/Dump.h"

#include <string>

namespace dumps {

/// Reads frames.csv, passes.csv and about.csv of a dump's folder as far as they go. Returns an empty text, or
/// why there is nothing to be read: without a whole frame there is no dump, without render passes there still
/// is. A file that is not a regular one, or larger than 1 GiB, is not read.
std::string readDump(const std::string& folder, Dump& dump);

/// Reads a log, which is a file in the form of frames.csv; a folder stands for the dump in it, or else for
/// the newest log. `folder` of the result is the path that was read. Returns an empty text, or why there is
/// nothing to be read.
std::string readLog(const std::string& path, Dump& dump);

/// What was left out in reading, in sentences for people; empty when the dump was whole.
std::string describeLosses(const Dump& dump);

}  // namespace dumps
