#include "watch/ReportJson.h"

#include "figures/Catalogue.h"
#include "figures/TextFormat.h"
#include "figures/sources/Value.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>

namespace control {

namespace {

using Json = nlohmann::ordered_json;
using platform::FigureReport;

/// To the microsecond. The library writes a float with all its digits, as a double.
Json milliseconds(float time) {
    return time < 0.0F ? Json(nullptr) : Json(std::round(static_cast<double>(time) * 1e3) / 1e3);
}

const char* unitOf(const figures::Figure& figure, const figures::Reading& reading) {
    return reading.suffix() != nullptr && std::string_view(reading.suffix()) == "%" ? "percent"
                                                                                    : figure.format.unit;
}

}  // namespace

figures::Reading readingOf(const FigureReport& report, const figures::Figure& figure) {
    const FigureReport::Figure& told = report.figures[figures::indexOf(figure)];
    if (told.isThere == 0 || !std::isfinite(told.value)) {
        const auto last = static_cast<std::uint16_t>(sources::Reason::NOT_ANSWERING);
        return static_cast<sources::Reason>(std::min(told.reason, last));
    }
    figures::Reading reading = told.value;
    if (told.suffix[0] != '\0') {
        reading.setSuffix(std::string_view(told.suffix) == "%" ? "%" : "");
    }
    return reading;
}

Json toJson(const FigureReport& report, std::uint64_t seenFrames) {
    Json all;
    all["refresh"] = report.refreshes;
    all["api"] = report.api;
    all["surface"] = {{"width", report.width}, {"height", report.height}};
    Json& figures = all["figures"] = Json::object();
    for (const figures::Figure& figure : figures::catalogue()) {
        const figures::Reading reading = readingOf(report, figure);
        Json& one = figures[figure.id];
        one["value"] = reading ? Json(*reading) : Json(nullptr);
        one["unit"] = unitOf(figure, reading);
        if (reading) {
            one["text"] = figures::format(figure, reading);
        } else {
            one["reason"] = sources::describe(reading.reason());
        }
    }
    all["frame_count"] = report.frames;
    Json& frames = all["frames"] = Json::array();
    const std::uint64_t fresh = report.frames - std::min(seenFrames, report.frames);
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(fresh, report.lastFrames.size()));
    for (std::size_t i = report.lastFrames.size() - count; i < report.lastFrames.size(); ++i) {
        const FigureReport::Frame& frame = report.lastFrames[i];
        frames.push_back({{"total", milliseconds(frame.total)},
                          {"swap", milliseconds(frame.swap)},
                          {"gpu", milliseconds(frame.gpu)},
                          {"overlay", milliseconds(frame.overlay)}});
    }
    return all;
}

}  // namespace control
