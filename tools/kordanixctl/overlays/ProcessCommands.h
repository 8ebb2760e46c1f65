#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <string>

/// Verbs that reach running overlays, all of them or one process.
namespace control {

enum class Key { DUMP, CAPTURE };

/// Presses a key. For the dump key it prints on `out` what each process says became of its dump, within a few
/// seconds. Fails, and says why on `err`, when a process does not take the key or its dump fails.
ExitCode pressKey(Key key, std::optional<pid_t> process, std::ostream& out, std::ostream& err);

/// Tells overlays that their application has gone to the background.
ExitCode sendToBackground(std::optional<pid_t> process, std::ostream& out, std::ostream& err);

}  // namespace control
