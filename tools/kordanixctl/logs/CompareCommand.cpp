#include "logs/CompareCommand.h"

#include "Diagnostic.h"
#include "conversions/ReplacedFile.h"
#include "dumps/DumpReader.h"
#include "dumps/logs/Comparison.h"
#include "dumps/report/ComparisonPage.h"
#include "dumps/report/Html.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace control {

namespace {

/// Returns an empty text, or what went wrong.
std::string writePage(const dumps::Comparison& comparison, const std::string& path) {
    for (const dumps::Dump* const log : comparison.logs) {
        if (isSameFile(path, log->folder)) {
            return path + ": is one of the logs, which is not replaced";
        }
    }
    ReplacedFile file(path);
    std::string error = file.open();
    if (error.empty()) {
        dumps::writeComparison(comparison, file.stream());
        error = file.commit();
    }
    return error;
}

std::string readCompared(const std::string& path, dumps::Dump& log, std::ostream& err) {
    std::string error = dumps::readLog(path, log);
    const std::string losses = error.empty() ? dumps::describeLosses(log) : std::string();
    if (!losses.empty()) {
        printDiagnostic(log.folder + ": " + losses, err);
    }
    return error;
}

}  // namespace

std::optional<double> parsePercent(const std::string& text) {
    double percent = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), percent);
    const std::string rest(result.ptr, text.data() + text.size());
    const bool isRight =
        result.ec == std::errc() && (rest == "%" || rest == " %") && percent >= 0.0 && std::isfinite(percent);
    return isRight ? std::optional(percent / 100.0) : std::nullopt;
}

ExitCode compareFiles(const CompareOptions& options, std::ostream& out, std::ostream& err) {
    dumps::Dump first;
    dumps::Dump second;
    std::string error = readCompared(options.first, first, err);
    error = error.empty() ? readCompared(options.second, second, err) : error;
    if (!error.empty()) {
        return fail(error, err);
    }
    const auto comparison = dumps::compareLogs(first, second, error);
    if (!comparison) {
        return fail(error, err);
    }
    dumps::printComparison(*comparison, out);
    if (!options.page.empty()) {
        error = writePage(*comparison, options.page);
    }
    if (error.empty() && options.failIfSlower && !(comparison->mean.isKnown && comparison->low1.isKnown)) {
        error = "there are too few frames to tell whether " + options.second + " is slower";
    }
    if (error.empty() && options.failIfSlower && dumps::isSlower(*comparison, *options.failIfSlower)) {
        error = options.second + " is slower than " + options.first + " by more than " +
                dumps::fixedPoint(*options.failIfSlower * 100.0, 1) + " %";
    }
    return failUnlessEmpty(error, err);
}

}  // namespace control
