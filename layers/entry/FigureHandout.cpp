#include "entry/FigureHandout.h"

#include "figures/Catalogue.h"
#include "ostra/FigureReport.h"
#include "scene/Overlay.h"

#include <algorithm>
#include <cstring>

namespace entry {

namespace {

using platform::FigureReport;

float milliseconds(std::int64_t nanoseconds) {
    constexpr float NS_PER_MS = 1e6F;
    return nanoseconds < 0 ? -1.0F : static_cast<float>(nanoseconds) / NS_PER_MS;
}

void copyFigures(const figures::Metrics& metrics, FigureReport& report) {
    for (const figures::Figure& figure : figures::catalogue()) {
        const figures::Reading& reading = metrics.reading(figure);
        FigureReport::Figure& copy = report.figures[figures::indexOf(figure)];
        copy = {};
        copy.value = reading.value_or(0.0);
        copy.isThere = reading.has_value() ? 1 : 0;
        copy.reason = static_cast<std::uint16_t>(reading.reason());
        if (reading.suffix() != nullptr) {
            std::strncpy(copy.suffix, reading.suffix(), sizeof(copy.suffix) - 1);
        }
    }
}

void copyFrames(const scene::FrameTimes& times, FigureReport& report) {
    report.frames = times.count();
    const std::size_t known = std::min(times.size(), report.lastFrames.size());
    std::fill(report.lastFrames.begin(), report.lastFrames.end(), FigureReport::Frame());
    for (std::size_t ago = 0; ago < known; ++ago) {
        const scene::FrameTime& frame = times.ago(ago);
        report.lastFrames[report.lastFrames.size() - 1 - ago] = {
            milliseconds(static_cast<std::int64_t>(frame.total)),
            milliseconds(static_cast<std::int64_t>(frame.swap)), milliseconds(frame.gpu),
            milliseconds(frame.overlay)};
    }
}

}  // namespace

void handOutFigures(scene::Overlay& overlay, core::RenderingApiType api) {
    scene::Scene& scene = overlay.mScene;
    if (!overlay.isShown() || !scene.isRefreshed()) {
        return;
    }
    FigureReport* const report = platform::figuresToFill();
    // Figures that nobody wanted before have no values before the next refresh.
    const bool isNew = report != nullptr && !scene.isWatched();
    scene.setWatched(report != nullptr);
    if (report == nullptr || isNew) {
        return;
    }
    static const std::uint32_t LAYOUT = figures::catalogueSignature();
    report->layout = LAYOUT;
    report->refreshes = scene.refreshes();
    report->api = static_cast<std::int32_t>(api);
    report->width = overlay.surfaceSize().x;
    report->height = overlay.surfaceSize().y;
    copyFigures(scene.metrics(), *report);
    copyFrames(scene.mFrameTimes, *report);
    platform::handOutFigures();
}

}  // namespace entry
