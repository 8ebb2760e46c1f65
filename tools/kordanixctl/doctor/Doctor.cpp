#include "doctor/Doctor.h"

#include "doctor/MetricChecks.h"
#include "io/ProcessStart.h"
#include "keys/RunKeys.h"
#include "overlays/OverlayState.h"
#include "processes/ProcessInfo.h"
#include "processes/RunDirectories.h"
#include "properties/RuntimeDirectory.h"
#include "properties/ShowCommands.h"
#include "run/Programs32.h"
#include "runs/RunFolder.h"
#include "settings/ProfileFiles.h"
#include "settings/ProgramNames.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"

#include <unistd.h>

#include <algorithm>
#include <iomanip>
#include <string>
#include <utility>
#include <vector>

namespace control {

namespace {

void describeProperties(std::ostream& out) {
    out << "\nProperties that are set (the rest have their defaults, see 'kordanixctl list'):\n";
    bool isAnySet = false;
    for (const Property& property : properties()) {
        const auto text = readProperty(fullName(property));
        if (!text) {
            continue;
        }
        isAnySet = true;
        out << "  " << property.shortName << " = " << toDisplayText(property, text);
        if (!isReadable(property, *text)) {
            out << "   its text \"" << *text << "\" cannot be read; expected " << expectedText(property.type);
        }
        out << '\n';
    }
    if (!isAnySet) {
        out << "  none\n";
    }
}

/// The files that the settings of a run's process come from, and how to have one.
std::string describeProfiles(pid_t process) {
    const std::vector<std::string> names = processNames("/proc/" + std::to_string(process));
    const ProgramProfiles profiles = readProfiles(names);
    std::string files;
    for (const std::string& path : profiles.paths) {
        files += access(path.c_str(), F_OK) == 0 ? (files.empty() ? "" : ", then ") + path : std::string();
    }
    const std::string name = names.empty() ? "NAME" : names.front();
    files = files.empty() ? "none; 'kordanixctl save' makes " + profilePath(name) : files;
    return profiles.errors.empty() ? files : files + " (with errors, see 'kordanixctl profile check')";
}

/// Says that a running process shows the overlay, or why it does not.
std::string describeOverlay(const OverlayState& state, pid_t process) {
    if (isStopped(process)) {
        return "is stopped";
    }
    const std::string obstacle = state.obstacle(process);
    const platform::OverlayNote* const note = state.note(process);
    if (!obstacle.empty()) {
        return obstacle;
    }
    if (note == nullptr) {
        return "shows the overlay, if its graphics API is number " + displayedValue("api");
    }
    if (note->wasShown && note->ownNanoseconds != 0) {
        return "shows the overlay, which takes " + std::to_string(note->ownNanoseconds / 1000) +
               " us of a frame";
    }
    return note->wasShown ? "shows the overlay" : "has not shown the overlay yet";
}

void describeProcesses(const std::string& directory, std::ostream& out) {
    const std::string wanted = displayedValue("proc");
    const OverlayState state(directory);
    out << "\nProcesses with the overlay's library:\n";
    bool isAny = false;
    bool isAnyNamed = false;
    for (const pid_t process : state.processes()) {
        const platform::OverlayNote* const note = state.note(process);
        if (platform::processStart(process)) {
            isAny = true;
            isAnyNamed = isAnyNamed || state.name(process) == wanted;
            out << "  " << process << ' ' << state.name(process) << ": " << describeOverlay(state, process)
                << '\n';
            if (platform::isRunFolder(directory)) {
                out << "    profile: " << describeProfiles(process) << '\n';
            }
        } else if (note != nullptr && !note->reason.empty()) {
            out << "  " << process << ' ' << note->name << ": has ended; it "
                << (note->wasShown ? "no longer showed" : "did not show") << " the overlay: " << note->reason
                << '\n';
        }
    }
    if (!isAny) {
        out << "  none runs\n";
    }
    if (displayedValue("status") != "true") {
        out << "  The overlay is switched off: 'kordanixctl set status true' switches it on.\n";
    }
    if (isAny && !isAnyNamed && !platform::isRunFolder(directory)) {
        out << "  'kordanixctl set proc NAME' chooses the process by the name above.\n";
    }
}

/// Prints which process of a run shows the overlay, and which others have it loaded.
void describeRun(const std::string& directory, std::ostream& out) {
    const OverlayState state(directory);
    for (const pid_t process : state.processes()) {
        const platform::OverlayNote* const note = state.note(process);
        const bool isClaimant = state.claimant() == process;
        out << "    " << process << ' ' << state.name(process) << ": "
            << (state.hasEnded(process) ? "has ended"
                : isClaimant            ? "presented a frame first, so that it has the overlay"
                : state.claimant()      ? "came later, so that it has no overlay"
                                        : "may have the overlay")
            << (note == nullptr || note->reason.empty() ? "" : "; " + note->reason) << '\n';
    }
}

void describeRuns(const std::string& current, std::ostream& out) {
    out << "\nPrograms that 'kordanixctl run' started, each with properties of its own:\n";
    std::string error;
    const std::vector<Run> runs = findRuns(userDirectory(error));
    for (const Run& run : runs) {
        out << "  " << run.process << ' ' << processName(run.process) << ": " << run.directory << '\n';
        if (run.directory != current) {
            describeRun(run.directory, out);
        }
    }
    out << (runs.empty() ? "  none\n"
                         : "  What the overlay logs in one is in the file log of its folder; 'kordanixctl "
                           "--process PID doctor' says more.\n");
}

void describePrograms32(std::ostream& out) {
    const Programs32 programs = ownPrograms32();
    if (!programs.loader.empty()) {
        out << "\n32-bit programs: "
            << (programs.folder.empty() ? "have no overlay: " + programs.obstacle
                                        : "have the overlay, from " + programs.folder)
            << '\n';
    }
}

/// A file's error goes with its advice; several metrics often share it.
using Advice = std::pair<std::string, std::vector<std::string_view>>;

void addAdvice(const MetricCheck& check, std::vector<Advice>& advices) {
    auto found = std::find_if(advices.begin(), advices.end(),
                              [&](const Advice& advice) { return advice.first == check.advice; });
    if (found == advices.end()) {
        found = advices.insert(found, {check.advice, {}});
    }
    std::vector<std::string_view>& paths = found->second;
    if (std::find(paths.begin(), paths.end(), check.path) == paths.end()) {
        paths.push_back(check.path);
    }
}

void describeMetrics(std::ostream& out) {
    constexpr int NAME_WIDTH = 38;
    constexpr int PATH_WIDTH = 39;
    const std::vector<MetricCheck> checks = checkMetrics();
    if (checks.empty()) {
        return;
    }
    out << "\nWhat the GPU's driver tells below /sys/kernel/gpu, which the overlay shows before anything "
           "else:\n"
        << std::left;
    std::vector<Advice> advices;
    for (const MetricCheck& check : checks) {
        out << "  " << std::setw(NAME_WIDTH) << check.metric << std::setw(PATH_WIDTH) << check.path;
        if (check.error.empty()) {
            out << check.value << '\n';
        } else {
            out << "N/A: " << check.error << '\n';
            addAdvice(check, advices);
        }
    }
    if (advices.empty()) {
        return;
    }
    out << "\nWhat to do about the rest:\n";
    for (const auto& [advice, paths] : advices) {
        for (const std::string_view path : paths) {
            out << "  " << path << '\n';
        }
        out << "    " << advice << '\n';
    }
}

}  // namespace

ExitCode runDoctor(std::ostream& out, std::ostream& err) {
    const platform::RuntimeDirectory directory = platform::openRuntimeDirectory();
    const ExitCode result = checkProperties(err);
    if (result == SUCCESS) {
        out << "Runtime directory: " << directory.path << '\n';
        describeProperties(out);
        describeProcesses(directory.path, out);
        describeRuns(directory.path, out);
        out << "\nKeys: " << describeKeys() << '\n';
        describePrograms32(out);
    }
    describeMetrics(out);
    return result;
}

}  // namespace control
