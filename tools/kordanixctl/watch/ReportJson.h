#pragma once

#include "figures/Reading.h"
#include "ostra/FigureReport.h"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>

namespace figures {
struct Figure;
}

namespace control {

/// A figure's value in a report whose layout is ours.
figures::Reading readingOf(const platform::FigureReport& report, const figures::Figure& figure);

/// Everything in the report: all figures by their ids, with unit, and with a value or the reason why there is
/// none; the surface; and the last frames' times in milliseconds, of those after the first `seenFrames`, the
/// oldest first. What was not measured is null.
nlohmann::ordered_json toJson(const platform::FigureReport& report, std::uint64_t seenFrames);

}  // namespace control
