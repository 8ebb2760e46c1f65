#pragma once

namespace control {

/// What a verb returns to the shell.
enum ExitCode : int {
    SUCCESS = 0,
    FAILURE = 1,      ///< it was understood but could not be done
    USAGE_ERROR = 2,  ///< it was not understood: a wrong option, name or value
};

}  // namespace control
