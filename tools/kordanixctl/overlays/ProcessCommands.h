#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <string>

/// Verbs that reach running overlays, all of them or one process.
namespace control {

enum class Key { DUMP, CAPTURE };

/// Presses a key. Of the dump key it is said on `out`, for each process, what became of the dump, which a
/// process tells within a few seconds. Fails, and says why on `err`, when a process takes no key or nothing
/// comes of it.
ExitCode pressKey(Key key, std::optional<pid_t> process, std::ostream& out, std::ostream& err);

/// Tells overlays that their application goes to the background.
ExitCode sendToBackground(std::optional<pid_t> process, std::ostream& out, std::ostream& err);

}  // namespace control
