#pragma once

#include <string>

namespace dumps {

/// The folder of the dump that is meant by a folder: that one itself if it has a frames.csv, otherwise the
/// newest PROGRAM-YYYYMMDD-HHMMSS-N in it that has one. Empty, with the reason in `error`, when there is
/// none.
std::string findDump(const std::string& folder, std::string& error);

}  // namespace dumps
