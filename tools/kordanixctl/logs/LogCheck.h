#pragma once

#include "dumps/logs/LogSummary.h"

#include <optional>
#include <string>
#include <string_view>

namespace control {

/// A condition on a log, such as "low1<55": a figure, one of < <= > >=, and a number. The figures are mean,
/// median, low1 and low01 in frames per second, longest and overlay in milliseconds, and frames.
struct LogCheck {
    std::string text;
    std::string_view figure;  ///< as long as the process
    std::string_view sign;
    double limit = 0.0;
};

/// Nothing, with the reason in `error`, when the text is no condition.
std::optional<LogCheck> parseLogCheck(const std::string& text, std::string& error);

/// Whether the condition holds; nothing when the log does not have the figure.
std::optional<bool> holds(const LogCheck& check, const dumps::LogSummary& summary);

/// The figure's value, for people; "not known" where there is none.
std::string valueText(const LogCheck& check, const dumps::LogSummary& summary);

}  // namespace control
