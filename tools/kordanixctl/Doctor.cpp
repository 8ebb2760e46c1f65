#include "Doctor.h"

#include "MetricChecks.h"
#include "OverlayState.h"
#include "ProcessInfo.h"
#include "Properties.h"
#include "PropertyTable.h"
#include "RunDirectories.h"
#include "ValueText.h"
#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"

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

void describeProcesses(const std::string& directory, std::ostream& out) {
    const bool isOn = displayedValue("status") == "true";
    const std::string wanted = displayedValue("proc");
    out << "\nProcesses with the overlay's library that listen:\n";
    const std::vector<pid_t> processes = platform::listeningProcesses(directory);
    bool isAnyNamed = false;
    for (const pid_t process : processes) {
        const std::string name = processName(process);
        isAnyNamed = isAnyNamed || name == wanted;
        const std::string obstacle = overlayObstacle(name);
        out << "  " << process << ' ' << name << ": "
            << (obstacle.empty() ? "shows the overlay, if its graphics API is number " + displayedValue("api")
                                 : obstacle)
            << '\n';
    }
    if (processes.empty()) {
        out << "  none\n";
    }
    if (!isOn) {
        out << "  The overlay is switched off: 'kordanixctl set status true' switches it on.\n";
    }
    if (!processes.empty() && !isAnyNamed) {
        out << "  'kordanixctl set proc NAME' chooses the process by the name above.\n";
    }
}

void describeRuns(std::ostream& out) {
    out << "\nPrograms that 'kordanixctl run' started, each with properties of its own:\n";
    std::string error;
    const std::vector<Run> runs = findRuns(userDirectory(error));
    for (const Run& run : runs) {
        out << "  " << run.process << ' ' << processName(run.process) << ": " << run.directory << '\n';
    }
    out << (runs.empty() ? "  none\n"
                         : "  What the overlay logs in one is in the file log of its folder; 'kordanixctl "
                           "--process PID doctor' says "
                           "more.\n");
}

/// A file's error goes with its advice; several metrics often share it.
using Advice = std::pair<std::string, std::vector<std::string_view>>;

void addAdvice(const MetricCheck& check, std::vector<Advice>& advices) {
    auto found = std::find_if(advices.begin(), advices.end(),
                              [&](const Advice& advice) { return advice.first == check.advice; });
    if (found == advices.end()) {
        found = advices.insert(found, {check.advice, {}});
    }
    found->second.push_back(check.path);
}

void describeMetrics(std::ostream& out) {
    constexpr int NAME_WIDTH = 17;
    constexpr int PATH_WIDTH = 39;
    out << "\nWhat can be measured here:\n" << std::left;
    std::vector<Advice> advices;
    for (const MetricCheck& check : checkMetrics()) {
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
        describeRuns(out);
    }
    describeMetrics(out);
    return result;
}

}  // namespace control
