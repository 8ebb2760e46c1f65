#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <functional>
#include <optional>

namespace control {

/// What the command line asks for.
struct Invocation {
    /// Whether the verb works on the properties or the overlay of a process.
    enum class Address {
        REQUIRED,
        HELPFUL,  ///< when several processes could be meant, it goes on without choosing one
        NONE,
    };

    Address address = Address::REQUIRED;
    std::optional<pid_t> process;      ///< the value of --process
    std::function<ExitCode()> action;  ///< what the chosen verb does
};

}  // namespace control
