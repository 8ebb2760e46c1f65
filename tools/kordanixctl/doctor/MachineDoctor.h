#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <string>

namespace control {

/// What 'doctor' looks at.
struct MachineOptions {
    std::optional<pid_t> process;
    std::string root;       ///< a recorded machine's folder; empty for this machine
    std::string next;       ///< the same machine a moment later, for figures that are rates; empty for none
    double interval = 0.5;  ///< seconds between the two
    std::string record;     ///< where to write what was read; empty for nowhere
};

/// Prints a JSON array with an object for each figure: "figure", "value" (null when there is none), "unit",
/// "source" and "reason" (null when there is a value). Takes two readings half a second apart of this
/// machine.
ExitCode printFiguresAsJson(const MachineOptions& options, std::ostream& out, std::ostream& err);

/// The same for people, with one command where that would make a figure readable.
ExitCode printFigures(const MachineOptions& options, std::ostream& out, std::ostream& err);

/// Writes the files that the figures are read from into a new folder, the first reading as DIR and the second
/// as DIR.next: nothing in them names the user, the host or other processes.
ExitCode recordMachine(const MachineOptions& options, std::ostream& out, std::ostream& err);

}  // namespace control
