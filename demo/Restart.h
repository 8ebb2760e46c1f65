#pragma once

namespace demo {

struct Options;

/// The simulated device and the properties' folder must be set before the library is loaded, and the process
/// must have the demo's name. So the program starts itself again with the right environment. Returns true in
/// the second start, which goes on; false when that start failed, after printing why and setting `exitCode`.
/// Creates a private folder of properties if asked for; removePrivateFolder() removes it.
bool restartIfNeeded(char** argv, const Options& options, int& exitCode);

/// Removes the private folder of properties and its content; does nothing without one.
void removePrivateFolder(const Options& options);

/// The name of the process, for which the overlay is switched on.
extern const char* const PROCESS_NAME;

}  // namespace demo
