#include "watch/FigureLines.h"

#include "Diagnostic.h"
#include "processes/EndSignals.h"
#include "watch/FigureFeed.h"
#include "watch/ReportJson.h"
#include "watch/WatchTarget.h"

#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace control {

namespace {

/// The figures are brought up to date each 120 ms.
constexpr std::chrono::milliseconds PERIOD{40};

double now() {
    using std::chrono::duration;
    const double seconds = duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    return std::round(seconds * 1e3) / 1e3;
}

}  // namespace

ExitCode printFigureLines(std::optional<pid_t> process, const WatchOptions& options, std::ostream& out,
                          std::ostream& err) {
    const auto begin = std::chrono::steady_clock::now();
    const auto isTimeUp = [&] {
        return options.seconds &&
               std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() >=
                   *options.seconds;
    };
    WatchTarget target;
    std::string error = chooseWatchTarget(process, target);
    if (!error.empty()) {
        return fail(error, err);
    }
    const EndSignals signals;
    FigureFeed feed(target.directory, target.process);
    error = feed.open();
    std::uint64_t seenFrames = 0;
    std::string told;
    for (std::uint64_t count = 0; count < options.count && error.empty() && out && !isTimeUp();) {
        if (const auto report = feed.ask()) {
            nlohmann::ordered_json line = {{"time", now()}, {"process", target.process}};
            // Of the first line the last frames might be minutes old.
            const bool isFirst = count == 0;
            line.update(toJson(*report, isFirst ? report->frames : seenFrames));
            seenFrames = report->frames;
            out << line.dump() << std::endl;  // flushed, so that a reader gets each line at once
            ++count;
        }
        error = feed.error();
        const std::string standstill = describeStandstill(feed);
        if (standstill != std::exchange(told, standstill) && !standstill.empty() && !feed.hasEnded()) {
            printDiagnostic(standstill, err);
        }
        if (feed.hasEnded() || !signals.wait(PERIOD)) {
            break;
        }
    }
    return failUnlessEmpty(error, err);
}

}  // namespace control
