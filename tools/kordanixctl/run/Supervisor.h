#pragma once

#include "ExitCode.h"

#include <string>
#include <vector>

/// This process as the parent of the program that 'run' starts. Both are in one process group, so what the
/// terminal sends reaches the program without help.
namespace control {

/// How a program ended.
struct ProgramEnd {
    int startError = 0;  ///< the error number of execvp(), when it could not be started
    int status = 0;      ///< as of waitpid()
};

/// Starts the program with this process's environment, signal mask and dispositions and none of its
/// descriptors, and waits for its end. Meanwhile SIGINT and SIGQUIT do nothing here; SIGTERM, SIGHUP,
/// SIGCONT, SIGUSR1 and SIGUSR2 are passed on to the program; and when a terminal's signal stops the program,
/// this process stops too. These signals stay blocked afterwards. In a process with one thread.
ProgramEnd superviseProgram(const std::vector<std::string>& words);

/// Ends this process by the signal that ended the program, without a core dump; otherwise returns what the
/// program returned.
ExitCode endAs(int status);

}  // namespace control
