#include "ostra/FigureReport.h"

#include "ostra/PerProcess.h"
#include "ostra/ProcessChannel.h"

#include <cstring>

namespace platform {

namespace {

FigureExchange* exchange() {
    ProcessChannel* const channel = PerProcess<ProcessChannel>::find();
    return channel == nullptr ? nullptr : channel->figures();
}

}  // namespace

std::string askerPath(const std::string& directory, std::uint32_t asker) {
    return directory + "/asker." + std::to_string(asker) + ".sock";
}

std::optional<FigureReport> decodeReport(std::string_view bytes) {
    FigureReport report;
    if (bytes.size() != sizeof(report)) {
        return std::nullopt;
    }
    std::memcpy(&report, bytes.data(), sizeof(report));
    for (FigureReport::Figure& figure : report.figures) {
        figure.suffix[sizeof(figure.suffix) - 1] = '\0';
    }
    return report;
}

FigureReport* figuresToFill() {
    FigureExchange* const figures = exchange();
    return figures != nullptr && figures->isAsked() ? &figures->back() : nullptr;
}

void handOutFigures() {
    if (FigureExchange* const figures = exchange()) {
        figures->handOut();
    }
}

}  // namespace platform
