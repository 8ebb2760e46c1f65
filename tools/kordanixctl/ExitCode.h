#pragma once

namespace control {

/// What a verb returns to the shell.
enum ExitCode : int {
    SUCCESS = 0,
    FAILURE = 1,           ///< we understood the command, but it failed
    USAGE_ERROR = 2,       ///< a wrong option, name or value
    NOT_EXECUTABLE = 126,  ///< as in shells: the program exists but cannot be run
    NOT_FOUND = 127,       ///< as in shells: there is no such program
};

}  // namespace control
