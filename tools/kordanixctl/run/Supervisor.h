#pragma once

#include "ExitCode.h"
#include "processes/Attendant.h"

#include <string>
#include <vector>

/// This process as the parent of the program that 'run' starts. Both are in the same process group, so the
/// program gets the terminal's signals by itself.
namespace control {

/// How a program ended.
struct ProgramEnd {
    int startError = 0;  ///< the error number of execvp(), when it could not be started
    int status = 0;      ///< from waitpid()
};

using Attendants = std::vector<Attendant*>;

/// Starts the program with this process's environment, signal mask and dispositions, but none of its
/// descriptors, and waits for its end. Meanwhile it ignores SIGINT and SIGQUIT, passes SIGTERM, SIGHUP,
/// SIGCONT, SIGUSR1 and SIGUSR2 on to the program, and stops this process when a terminal's signal stops the
/// program. These signals stay blocked afterwards. The attendants, which it does not own, work until the
/// program has ended. Call it in a process with one thread.
ProgramEnd superviseProgram(const std::vector<std::string>& words, const Attendants& attendants = {});

/// If a signal ended the program, ends this process by the same signal, without a core dump; otherwise
/// returns what the program returned.
ExitCode endAs(int status);

}  // namespace control
