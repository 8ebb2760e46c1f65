#pragma once

#include "ExitCode.h"

#include <optional>
#include <ostream>
#include <string>

namespace control {

struct CompareOptions {
    std::string first;  ///< a log, or a folder with logs: then its newest
    std::string second;
    std::string page;                    ///< a file to write; empty for none
    std::optional<double> failIfSlower;  ///< a share: 0.03 is 3 %
};

/// Sets two logs side by side on `out`, and in a page if one is wanted. FAILURE also when the second is
/// slower than the first by more than the share, and by more than noise; `err` says so.
ExitCode compareFiles(const CompareOptions& options, std::ostream& out, std::ostream& err);

/// "3%" or "3 %" as the share 0.03; nothing for any other text.
std::optional<double> parsePercent(const std::string& text);

}  // namespace control
