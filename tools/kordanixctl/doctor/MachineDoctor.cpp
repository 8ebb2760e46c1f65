#include "doctor/MachineDoctor.h"

#include "Diagnostic.h"
#include "figures/sources/MachineFigures.h"
#include "machine/MachineRecorder.h"

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <iomanip>
#include <locale>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>
#include <thread>
#include <vector>

namespace control {

namespace {

using sources::Id;
using sources::MachineFigures;
using sources::Value;

constexpr double INTERVAL_SECONDS = 0.5;
/// How much longer to wait for a driver's library that is still being loaded.
constexpr int PATIENCE_READINGS = 4;
constexpr double BYTES_PER_MIB = 1048576.0;

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string folderError(const std::string& folder) {
    struct stat status = {};
    if (stat(folder.c_str(), &status) != 0) {
        return folder + ": " + std::generic_category().message(errno);
    }
    return S_ISDIR(status.st_mode) ? std::string() : folder + ": is not a folder";
}

/// The readings of a machine, and what they were taken from.
struct Readings {
    sources::FileTree tree;
    std::unique_ptr<MachineFigures> figures;
};

void sleepSeconds(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

std::string readRecorded(const MachineOptions& options, Readings& readings) {
    std::string error = folderError(options.root);
    if (error.empty() && !options.next.empty()) {
        error = folderError(options.next);
    }
    if (!error.empty()) {
        return error;
    }
    readings.tree = sources::FileTree(options.root);
    readings.figures = std::make_unique<MachineFigures>(readings.tree, options.process.value_or(1));
    readings.figures->read(0.0);
    if (!options.next.empty()) {
        readings.tree = sources::FileTree(options.next);
        readings.figures->read(options.interval);
    }
    return {};
}

void readLive(const MachineOptions& options, Readings& readings) {
    readings.figures = std::make_unique<MachineFigures>(readings.tree, options.process.value_or(0));
    readings.figures->read(now());
    sleepSeconds(INTERVAL_SECONDS);
    readings.figures->read(now());
    for (int i = 0; i < PATIENCE_READINGS && readings.figures->isAnswerPending(); ++i) {
        sleepSeconds(INTERVAL_SECONDS);
        readings.figures->read(now());
    }
}

std::string read(const MachineOptions& options, Readings& readings) {
    if (!options.root.empty()) {
        return readRecorded(options, readings);
    }
    readLive(options, readings);
    return {};
}

std::string reasonOf(const MachineFigures& figures, Id id) {
    const Value& value = figures.value(id);
    const std::string advice = figures.advice(id);
    return sources::describe(value.reason) + (advice.empty() ? std::string() : ": " + advice);
}

/// As people read them: memory in MiB, the rest with at most two decimals.
std::string toText(const MachineFigures& figures, Id id) {
    const double number = *figures.value(id).number;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    const bool isMemory = std::string(figures.unit(id)) == "bytes";
    const double shown = isMemory ? number / BYTES_PER_MIB : number;
    text << std::fixed << std::setprecision(shown == std::floor(shown) ? 0 : 1) << shown << ' '
         << (isMemory ? "MiB" : figures.unit(id));
    return text.str();
}

}  // namespace

ExitCode printFiguresAsJson(const MachineOptions& options, std::ostream& out, std::ostream& err) {
    Readings readings;
    const std::string error = read(options, readings);
    if (!error.empty()) {
        return fail(error, err);
    }
    auto all = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < sources::FIGURES; ++i) {
        const Id id = static_cast<Id>(i);
        const Value& value = readings.figures->value(id);
        nlohmann::ordered_json figure;
        figure["figure"] = sources::nameOf(id);
        figure["value"] = value ? nlohmann::ordered_json(*value.number) : nlohmann::ordered_json(nullptr);
        figure["unit"] = readings.figures->unit(id);
        figure["source"] =
            value.source.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(value.source);
        figure["reason"] =
            value ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(reasonOf(*readings.figures, id));
        all.push_back(std::move(figure));
    }
    out << all.dump(2) << '\n';
    return SUCCESS;
}

ExitCode printFigures(const MachineOptions& options, std::ostream& out, std::ostream& err) {
    Readings readings;
    const std::string error = read(options, readings);
    if (!error.empty()) {
        return fail(error, err);
    }
    constexpr int NAME_WIDTH = 20;
    constexpr int VALUE_WIDTH = 16;
    const MachineFigures& figures = *readings.figures;
    out << "Figures of this machine's own files";
    out << (figures.gpu().isKnown() ? ", GPU " + figures.gpu().name() + ":\n" : ":\n") << std::left;
    for (std::size_t i = 0; i < sources::FIGURES; ++i) {
        const Id id = static_cast<Id>(i);
        const Value& value = figures.value(id);
        out << "  " << std::setw(NAME_WIDTH) << sources::nameOf(id);
        if (value) {
            out << std::setw(VALUE_WIDTH) << toText(figures, id) << value.source << '\n';
        } else {
            out << "none: " << reasonOf(figures, id) << '\n';
        }
    }
    return SUCCESS;
}

ExitCode recordMachine(const MachineOptions& options, std::ostream& out, std::ostream& err) {
    const std::string next = options.record + ".next";
    for (const std::string& folder : {options.record, next}) {
        if (mkdir(folder.c_str(), 0755) != 0) {
            return fail(folder + ": " + std::generic_category().message(errno), err);
        }
    }
    MachineRecorder recorder(options.record, options.process.value_or(0));
    Readings readings;
    readings.tree.watch(recorder.watcher());
    readings.figures = std::make_unique<MachineFigures>(readings.tree, options.process.value_or(0));
    readings.figures->read(now());
    sleepSeconds(INTERVAL_SECONDS);
    recorder.continueIn(next);
    readings.figures->read(now());
    if (!recorder.error().empty()) {
        return fail(recorder.error(), err);
    }
    out << "Recorded in " << options.record << " and, " << INTERVAL_SECONDS << " seconds later, in " << next
        << ". To read them: kordanixctl doctor --root " << options.record << " --next " << next
        << " --interval " << INTERVAL_SECONDS << '\n';
    return SUCCESS;
}

}  // namespace control
