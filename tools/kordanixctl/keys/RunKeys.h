#pragma once

#include "processes/SideProcess.h"
#include "runs/RunFolder.h"

#include <string>

namespace control {

/// Whether the property `keys` of this process's runtime directory is on.
bool areKeysOn();

/// Says for 'doctor' whether 'run' could hear keys, or why not, in a line.
std::string describeKeys();

/// Listens to the keys of the run in `folder`, which is this process's runtime directory and locked by
/// `hold`, in a process of its own until it is finished. That returns what is to be told on the terminal.
/// None without an X server.
SideProcess listenForRun(const std::string& folder, platform::RunHold& hold);

}  // namespace control
