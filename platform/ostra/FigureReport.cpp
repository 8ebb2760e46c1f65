#include "ostra/FigureReport.h"

#include <cstring>

namespace platform {

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

}  // namespace platform
