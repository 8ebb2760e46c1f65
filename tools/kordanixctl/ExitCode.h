#pragma once

namespace control {

/// What a verb returns to the shell.
enum ExitCode : int {
    SUCCESS = 0,
    FAILURE = 1,           ///< it was understood but could not be done
    USAGE_ERROR = 2,       ///< it was not understood: a wrong option, name or value
    NOT_EXECUTABLE = 126,  ///< as shells say it: a program is there but cannot be run
    NOT_FOUND = 127,       ///< there is no such program
};

}  // namespace control
