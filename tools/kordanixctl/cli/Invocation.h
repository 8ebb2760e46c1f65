#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <functional>
#include <optional>

namespace control {

/// What the command line asks for.
struct Invocation {
    /// Whether the verb is about the properties or the overlay of some process.
    enum class Address {
        REQUIRED,
        HELPFUL,  ///< it does its best when several could be meant
        NONE,
    };

    Address address = Address::REQUIRED;
    std::optional<pid_t> process;      ///< that of --process
    std::function<ExitCode()> action;  ///< what the chosen verb does
};

}  // namespace control
