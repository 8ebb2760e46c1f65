#pragma once

#include <string_view>

namespace dumps {

/// The report's style sheet: light or dark as the reader's system is.
extern const std::string_view REPORT_STYLE;

}  // namespace dumps
