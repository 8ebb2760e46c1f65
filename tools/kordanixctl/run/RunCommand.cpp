#include "run/RunCommand.h"

#include "Diagnostic.h"
#include "io/WriteSignalsBlocked.h"
#include "keys/KeysWatch.h"
#include "processes/ProcessInfo.h"
#include "processes/RunDirectories.h"
#include "properties/InitialProperties.h"
#include "properties/RunSettings.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SetCommand.h"
#include "run/ProfileWatch.h"
#include "run/ProgramFile.h"
#include "run/ScreenRate.h"
#include "run/Supervisor.h"
#include "run/Verdict.h"
#include "run/WaysIn.h"
#include "runs/OverlayClaim.h"
#include "runs/RunFolder.h"
#include "settings/Presets.h"
#include "settings/ProgramNames.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr const char* LOG_FILE = "KORDANIX_LOG_FILE";

ExitCode readAssignments(const std::vector<std::string>& texts, std::vector<Assignment>& assignments,
                         std::ostream& err) {
    ExitCode result = SUCCESS;
    for (const std::string& text : texts) {
        const std::size_t sign = text.find('=');
        Assignment assignment;
        const std::string error =
            sign == std::string::npos
                ? "'" + text + "' has no value; expected NAME=VALUE"
                : readAssignment(text.substr(0, sign), text.substr(sign + 1), false, assignment);
        result = error.empty() ? result : fail(error, err, USAGE_ERROR);
        assignments.push_back(std::move(assignment));
    }
    return result;
}

bool isSet(const char* name, const std::vector<Assignment>& assignments) {
    return std::any_of(assignments.begin(), assignments.end(),
                       [&](const Assignment& assignment) { return assignment.name == name; });
}

/// What every run begins with: the overlay is on, and the frame times have a line at the screen's rate, which
/// the overlay cannot ask for in the program.
std::vector<Assignment> everyRuns(bool isClaimed) {
    std::vector<Assignment> all{{"debug.kordanix.status", "true"}};
    if (!isClaimed) {
        all.push_back({"debug.kordanix.api", "0"});
    }
    if (const std::optional<int> rate = screenRate()) {
        all.push_back({"debug.kordanix.screen_rate", std::to_string(*rate)});
    }
    return all;
}

std::vector<std::string> namesOf(const std::vector<std::string>& words, const std::string& path) {
    std::error_code ignored;
    const fs::path file = fs::canonical(path, ignored);
    return programNames({file.empty() ? path : file.string(), words, fs::current_path(ignored).string()});
}

/// Removes ended runs, except those in some process's environment, which may still show the overlay.
void removeEndedRuns(const std::string& user) {
    std::set<std::string> used;
    for (const pid_t process : allProcesses()) {
        used.insert(environmentVariable(process, "KORDANIX_RUNTIME_DIR").value_or(""));
    }
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(user, ignored)) {
        if (used.count(entry.path()) == 0) {
            platform::removeEndedRun(entry.path());
        }
    }
}

/// Sends the layers' log to a file, so that the program's standard error stays its own.
void keepLog(const std::string& folder) {
    // NOLINTBEGIN(concurrency-mt-unsafe): this process has one thread
    const char* const chosen = std::getenv(LOG_FILE);
    if (chosen == nullptr || chosen[0] == '\0') {
        setenv(LOG_FILE, (folder + "/log").c_str(), 1);
    }
    // NOLINTEND(concurrency-mt-unsafe)
}

/// Writes the run's initial properties into its folder, which is now this process's runtime directory.
ExitCode prepareFolder(const std::string& folder, const RunSettings& settings, bool isNamed, bool isApiSet,
                       std::ostream& err) {
    const platform::WriteSignalsBlocked blocked;
    std::vector<Assignment> assignments;
    for (const auto& [name, text] : settings.all()) {
        assignments.push_back({name, text});
    }
    const ExitCode written = writeAssignments(assignments, true, err);
    if (written != SUCCESS) {
        return written;
    }
    std::string error = writeInitialProperties(folder, settings);
    if (error.empty() && !isApiSet) {
        error = platform::openOverlayClaim(folder, isNamed);
    }
    return failUnlessEmpty(error, err);
}

}  // namespace

ExitCode runProgram(const RunOptions& options, const std::vector<std::string>& words, std::ostream& err) {
    std::vector<Assignment> chosen;
    const ExitCode understood = readAssignments(options.assignments, chosen, err);
    if (understood != SUCCESS) {
        return understood;
    }
    const std::string wrongPreset = options.preset.empty() ? std::string() : presetError(options.preset);
    if (!wrongPreset.empty()) {
        return fail(wrongPreset, err, USAGE_ERROR);
    }
    RunLog log(options.logs);
    const ExitCode loggable = log.prepare(err);
    if (loggable != SUCCESS) {
        return loggable;
    }
    const bool isNamed = isSet("debug.kordanix.proc", chosen);
    const bool isApiSet = isSet("debug.kordanix.api", chosen);
    if (!isNamed && isApiSet) {
        return fail(
            "the process that shows the overlay sets 'api' itself; --set proc=NAME chooses another way", err,
            USAGE_ERROR);
    }
    const std::string& name = words.front();
    const ProgramFile program = findProgram(name);
    if (program.result != SUCCESS) {
        return fail(name + (program.result == NOT_FOUND ? ": there is no such program"
                                                        : ": this is no program that you may run"),
                    err, program.result);
    }
    const ProgramKind kind = inspectProgram(program.path);
    std::string error = kind.isHarmedByUs ? std::string() : openWaysIn();
    const std::string user = error.empty() ? userDirectory(error) : std::string();
    if (user.empty()) {
        return fail(error, err);
    }
    removeEndedRuns(user);
    const std::string folder = platform::makeRunFolder(user, error);
    if (folder.empty()) {
        return fail(error, err);
    }
    platform::RunHold hold;
    hold.take(folder);
    platform::changeRuntimeDirectory(folder);
    const std::vector<std::string> names = namesOf(words, program.path);
    RunSettings settings(everyRuns(!isNamed), options.preset, std::move(chosen));
    settings.readProfilesOf(names);
    ExitCode prepared = prepareFolder(folder, settings, isNamed, isApiSet, err);
    prepared = prepared == SUCCESS ? failUnlessEmpty(log.tellRun(folder), err) : prepared;
    if (prepared != SUCCESS) {
        hold.forget();
        platform::removeEndedRun(folder);
        return prepared;
    }
    for (const std::string& wrong : firstErrors(settings.profiles())) {
        const platform::WriteSignalsBlocked blocked;
        printDiagnostic(wrong, err);
    }
    keepLog(folder);
    KeysWatch keys(folder, hold);
    ProfileWatch profiles(folder, std::move(settings), names, err);
    const ProgramEnd end = superviseProgram(words, {&profiles, &keys, &log});
    const std::string told = keys.finish();
    const std::string reason = end.startError == 0 ? notShownReason(folder, kind.obstacle) : std::string();
    std::optional<ExitCode> judged;
    if (end.startError == 0) {
        const platform::WriteSignalsBlocked blocked;
        judged = log.finish(err);
    }
    hold.forget();
    removeEndedRuns(user);
    if (!told.empty()) {
        const platform::WriteSignalsBlocked blocked;
        err << told;
    }
    if (end.startError != 0) {
        return fail(name + ": " + std::generic_category().message(end.startError), err,
                    end.startError == ENOENT ? NOT_FOUND : NOT_EXECUTABLE);
    }
    if (!reason.empty()) {
        const platform::WriteSignalsBlocked blocked;
        printDiagnostic("the overlay was not shown: " + reason, err);
    }
    return judged ? *judged : endAs(end.status);
}

}  // namespace control
